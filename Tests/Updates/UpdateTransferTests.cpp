#include "InstallerFixture.h"
#include "Support/RecordingServer.h"
#include "Support/SignedFeed.h"

#include <cstdint>

namespace fernhollow::tests {
namespace {

using Answer = RecordingServer::Answer;
using Request = RecordingServer::Request;

class UpdateTransferTest : public testing::Test {
protected:
    UpdateTransferTest() {
        server_.answer = [this](const Request& request) {
            const auto found = answers_.find(request.path);
            return found != answers_.end() ? found->second : Answer{.status = 404};
        };
    }

    static Answer redirection(const std::string& location) {
        return {.raw = "HTTP/1.1 302 Found\r\nLocation: " + location + "\r\nContent-Length: 0\r\n\r\n"};
    }

    std::string feed(const std::string& path = "/appcast.xml") {
        return outcome([&] { return awaitAs<std::string>(transfer_.feed(server_.url() + path, {})); });
    }

    std::shared_ptr<DownloadedUpdate> download(const AppcastItem& item, std::stop_token stop = {}) {
        return awaitAs<std::shared_ptr<DownloadedUpdate>>(transfer_.package(
            item, maker_.publicKey(), [this](auto received, auto) { progress_.push_back(received); },
            std::move(stop)));
    }

    /// The package's bytes, or why there are none; nothing of it is then left in the folder.
    std::string package(const AppcastItem& item, std::stop_token stop = {}) {
        const std::string result = outcome([&] { return contents(download(item, std::move(stop))->file()); });
        EXPECT_THAT(left(), IsEmpty()) << result;
        return result;
    }

    AppcastItem release(const std::string& path = "/p") const {
        return maker_.release("0.2.0", bytes_, server_.url() + path);
    }

    std::set<std::string> left() const {
        return std::filesystem::exists(folder_) ? namesIn(folder_) : std::set<std::string>();
    }

    template<class Work>
    static std::string outcome(Work work) {
        try {
            return work();
        } catch (const UpdateError& error) {
            switch (error.reason()) {
            case UpdateError::Reason::cancelled:
                return "cancelled";
            case UpdateError::Reason::signature:
                return "signature: " + std::string(error.what());
            default:
                return "error: " + std::string(error.what());
            }
        }
    }

    const TemporaryHome home_;
    const Maker maker_{home_.path() / "key"};
    const std::string bytes_ = std::string(300'000, 'x') + std::string("\0\n\r", 3);
    const std::filesystem::path folder_ = home_.path() / "cache" / "updates";
    RecordingServer server_;
    std::map<std::string, Answer> answers_;
    FakeClock clock_{Instant(std::chrono::sys_days(std::chrono::year(2026) / 3 / 5))};
    UpdateTransfer transfer_{clock_, folder_};
    std::vector<std::uint64_t> progress_;
};

TEST_F(UpdateTransferTest, BringsTheFeedAndTheVerifiedPackage) {
    answers_["/appcast.xml"] = redirection("feeds/current.xml");
    answers_["/feeds/current.xml"] = {.body = "<rss/>"};
    EXPECT_EQ(feed(), "<rss/>");
    EXPECT_EQ(server_.requests.back().header("accept-encoding"), "identity");
    EXPECT_EQ(server_.requests.back().header("cookie"), "");

    answers_["/p"] = {.body = bytes_};
    const auto update = download(release());
    EXPECT_EQ(contents(update->file()), bytes_);
    EXPECT_EQ(progress_.back(), bytes_.size());
    EXPECT_EQ(modeOf(update->file()), 0600);
    EXPECT_EQ(modeOf(update->file().parent_path()), 0700);
    EXPECT_EQ(modeOf(folder_), 0700);
}

TEST_F(UpdateTransferTest, DeletesWhatIsNotTheMakersPackage) {
    std::string changed = bytes_;
    changed[1000] ^= 1;
    answers_["/p"] = {.body = changed};
    EXPECT_THAT(package(release()), StartsWith("signature: "));
    answers_["/p"] = {.body = bytes_};
    AppcastItem item = release();
    item.edSignature = Maker(home_.path() / "another").release("0.2.0", bytes_, "").edSignature;
    EXPECT_THAT(package(item), StartsWith("signature: "));
    for (const std::size_t length : {std::size_t{0}, std::size_t{10}, item.edSignature.size() - 1}) {
        item.edSignature.resize(length);
        EXPECT_THAT(package(item), StartsWith("signature: "));
    }
}

TEST_F(UpdateTransferTest, TakesExactlyTheLengthThatTheFeedTells) {
    const std::string wrong = "error: The update is not as long as the feed says.";
    answers_["/p"] = {.body = bytes_ + "x"};
    EXPECT_EQ(package(release()), wrong);
    answers_["/p"] = {.body = bytes_.substr(1)};
    EXPECT_EQ(package(release()), wrong);
    const std::string endless = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
    answers_["/p"] = {.raw = endless + bytes_ + std::string(3'000'000, 'y')};
    EXPECT_EQ(package(release()), wrong);
    answers_["/p"] = {.raw = endless + bytes_.substr(0, 5000), .closes = true};
    EXPECT_EQ(package(release()), wrong);
    answers_["/p"] = {.raw = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bytes_.size()) +
                             "\r\n\r\n" + bytes_.substr(0, 5000),
                      .closes = true};
    EXPECT_THAT(package(release()), StartsWith("error: The update server cannot be reached"));
    AppcastItem item = release();
    item.length = UpdateTransfer::maximumPackage + 1;
    EXPECT_THAT(package(item), HasSubstr("length"));
}

TEST_F(UpdateTransferTest, FollowsNobodyElsewhere) {
    RecordingServer elsewhere;
    elsewhere.answer = [](const Request&) { return Answer{.body = "<rss/>"}; };
    for (const std::string& location :
         {elsewhere.url() + "/appcast.xml", std::string("http://updates.example/a"),
          std::string("https://127.0.0.1/a"), std::string("file:///etc/passwd"),
          std::string("//evil.example/a")}) {
        answers_["/appcast.xml"] = redirection(location);
        answers_["/p"] = redirection(location);
        EXPECT_THAT(feed(), HasSubstr("redirects to another place")) << location;
        EXPECT_THAT(package(release()), HasSubstr("redirects to another place")) << location;
    }
    EXPECT_THAT(elsewhere.requests, IsEmpty());
    answers_["/appcast.xml"] = redirection("/appcast.xml");
    EXPECT_THAT(feed(), HasSubstr("in circles"));
    EXPECT_THAT(outcome([&] { return awaitAs<std::string>(transfer_.feed("http://updates.example/a", {})); }),
                HasSubstr("are not downloaded from http://updates.example/a"));
}

TEST_F(UpdateTransferTest, BreaksLongFeedsOff) {
    const std::string tooLong = "error: The update feed is too long.";
    answers_["/appcast.xml"] = {.raw = "HTTP/1.1 200 OK\r\nContent-Length: 1073741824\r\n\r\n<rss>"};
    EXPECT_EQ(feed(), tooLong);
    answers_["/appcast.xml"] = {.raw = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" +
                                       std::string(UpdateTransfer::maximumFeed + 1, ' ')};
    EXPECT_EQ(feed(), tooLong);
    // What claims to be packed is not unpacked: ten bytes could become a gigabyte.
    answers_["/appcast.xml"] = {
        .raw = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 5\r\n\r\n\x1f\x8b\x08zz"};
    EXPECT_EQ(feed(), "\x1f\x8b\x08zz");
    // Nor is a refusal read, however long it is.
    answers_["/appcast.xml"] = {.raw = "HTTP/1.1 500 No\r\nConnection: close\r\n\r\n" +
                                       std::string(3'000'000, 'x')};
    EXPECT_EQ(feed(), "error: The update server answers with 500.");
    answers_.clear();
    EXPECT_EQ(feed(), "error: The update server answers with 404.");
    EXPECT_EQ(package(release()), "error: The update server answers with 404.");
}

TEST_F(UpdateTransferTest, EndsWhenNothingComesOrNobodyWants) {
    answers_["/appcast.xml"] = {.isSilent = true};
    auto silent = transfer_.feed(server_.url() + "/appcast.xml", {});
    ASSERT_TRUE(waitUntil([this] { return server_.unanswered() == 1; }));
    clock_.advance(60s);
    EXPECT_EQ(outcome([&] { return awaitAs<std::string>(std::move(silent)); }),
              "error: The update server stopped answering.");

    answers_["/p"] = {.raw = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bytes_.size()) +
                             "\r\n\r\n" + bytes_.substr(0, 5000)};
    std::stop_source stop;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [&] {
            waitUntil([this] { return !progress_.empty(); });
            EXPECT_EQ(left().size(), 1);
            stop.request_stop();
        },
        Qt::QueuedConnection);
    EXPECT_EQ(package(release(), stop.get_token()), "cancelled");
}

TEST_F(UpdateTransferTest, WritesOnlyWhereOthersCannot) {
    answers_["/p"] = {.body = bytes_};
    std::filesystem::create_directories(home_.path() / "elsewhere");
    std::filesystem::create_directories(folder_.parent_path());
    std::filesystem::create_directory_symlink(home_.path() / "elsewhere", folder_);
    EXPECT_THAT(package(release()), HasSubstr("is not a folder of yours alone"));
    std::filesystem::remove(folder_);
    std::filesystem::create_directory(folder_);
    std::filesystem::permissions(folder_, std::filesystem::perms::all);
    EXPECT_THAT(package(release()), HasSubstr("is not a folder of yours alone"));
}

TEST_F(UpdateTransferTest, RemovesItsOwnLeftoversAndNothingElse) {
    std::filesystem::create_directories(folder_ / "download-abc123" / "deep");
    std::filesystem::create_directories(folder_ / "downloads");
    std::filesystem::create_directories(home_.path() / "precious");
    std::ofstream(home_.path() / "precious" / "file") << "kept";
    std::filesystem::create_directory_symlink(home_.path() / "precious", folder_ / "download-link00");
    std::filesystem::create_directory_symlink(home_.path() / "precious",
                                              folder_ / "download-abc123" / "deep" / "link");
    transfer_.removeLeftovers();
    EXPECT_THAT(left(), testing::ElementsAre("download-link00", "downloads"));
    EXPECT_EQ(contents(home_.path() / "precious" / "file"), "kept");
}

} // namespace
} // namespace fernhollow::tests
