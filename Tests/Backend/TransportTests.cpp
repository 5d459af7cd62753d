#include "Backend/RunningBackend.h"
#include "local/Descriptor.h"

#include <arpa/inet.h>
#include <atomic>
#include <poll.h>
#include <sys/socket.h>
#include <vector>

namespace fernhollow::backend::tests {

namespace {

using namespace std::chrono_literals;

constexpr auto call = "/rest/v1/rpc/get_account_today_total";
constexpr auto arguments = R"({"p_email":"x","p_day":"2026-03-05"})";

int ask(httplib::Client& client) {
    const auto answer = client.Post(call, clientHeaders(), arguments, "application/json");
    return answer ? answer->status : 0;
}

/// A client that keeps to no rule.
class RawClient {
public:
    explicit RawClient(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }

    void send(const std::string& text) { ::send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL); }

    /// Everything until the server closes the connection; nothing more than that within `patience`.
    std::string readToEnd(std::chrono::milliseconds patience = 10s) {
        std::string text;
        std::array<char, 4096> part{};
        pollfd state{socket_.get(), POLLIN, 0};
        while (poll(&state, 1, static_cast<int>(patience.count())) > 0) {
            const auto size = recv(socket_.get(), part.data(), part.size(), 0);
            if (size <= 0) {
                return text + "(end)";
            }
            text.append(part.data(), static_cast<std::size_t>(size));
        }
        return text;
    }

private:
    Descriptor socket_;
};

std::string head(const std::string& method, const std::string& more = "") {
    return method + " " + call + " HTTP/1.1\r\nHost: x\r\napikey: " DEFAULT_KEY "\r\n" + more + "\r\n";
}

std::size_t answersIn(const std::string& text) {
    std::size_t count = 0;
    for (auto at = text.find("HTTP/1.1 "); at != std::string::npos; at = text.find("HTTP/1.1 ", at + 1)) {
        ++count;
    }
    return count;
}

} // namespace

TEST(Transport, ServesManyClientsThatKeepTheirConnections) {
    RunningBackend backend;
    std::vector<httplib::Client> clients;
    for (int i = 0; i < 60; ++i) {
        clients.push_back(backend.client());
        ASSERT_EQ(ask(clients.back()), 200);
    }
    const auto started = std::chrono::steady_clock::now();
    std::atomic<int> answered = 0;
    std::vector<std::thread> people;
    for (auto& client : clients) {
        people.emplace_back([&] {
            for (int i = 0; i < 5; ++i) {
                answered += ask(client) == 200;
            }
        });
    }
    for (auto& person : people) {
        person.join();
    }
    EXPECT_EQ(answered, 300);
    EXPECT_LT(std::chrono::steady_clock::now() - started, 20s)
        << "nobody waits for another's connection to end";
    EXPECT_LE(
        std::stoi(Postgres::value("select count(*) from pg_stat_activity where usename = 'authenticator'")),
        8);
}

TEST(Transport, IsNotHeldUpByClientsThatSayNothingOrTrickle) {
    RunningBackend backend({.requestTime = 500ms, .idleTime = 1s});
    std::vector<RawClient> silent;
    std::vector<RawClient> trickling;
    for (int i = 0; i < 20; ++i) {
        silent.emplace_back(backend.port());
        trickling.emplace_back(backend.port()).send("POST / HTTP/1.1\r\nHos");
    }
    auto client = backend.client();
    EXPECT_EQ(ask(client), 200);
    EXPECT_EQ(silent.front().readToEnd(), "(end)");
    EXPECT_THAT(trickling.front().readToEnd(), testing::EndsWith("(end)"));
}

TEST(Transport, KeepsRequestsApart) {
    RunningBackend backend({.requestTime = 500ms, .idleTime = 500ms});
    const std::string smuggled = head("DELETE", "Content-Length: 0\r\n");
    const auto length = "Content-Length: " + std::to_string(smuggled.size()) + "\r\n";
    const auto body = "Content-Type: application/json\r\nContent-Length: 36\r\n";
    struct Case {
        const char* what;
        std::string sent;
        std::size_t answers;
        const char* contains;
    };
    const Case cases[] = {
        {"a GET with a body", head("GET", length) + smuggled, 1, " 405 "},
        {"a GET with chunks", head("GET", "Transfer-Encoding: chunked\r\n") + smuggled, 1, " 405 "},
        {"a method that is none", "STEAL / HTTP/1.1\r\n\r\n" + smuggled, 1, " 400 "},
        {"no HTTP", std::string(300, '\0'), 0, ""},
        {"a body cut off", head("POST", body) + "{\"p_em", 0, ""},
        {"two in one piece", head("POST", body) + arguments + head("POST", body) + arguments, 2, " 200 "},
        {"no length at all", head("POST") + smuggled, 2, "PGRST202"},
        {"an encoding", head("POST", "Content-Encoding: gzip\r\n" + std::string(body)) + arguments, 1,
         " 200 "},
        {"a range", head("POST", "Range: bytes=0-0\r\n" + std::string(body)) + arguments, 1, " 200 "},
    };
    for (const auto& [what, sent, answers, contains] : cases) {
        RawClient client(backend.port());
        client.send(sent);
        const auto received = client.readToEnd();
        EXPECT_EQ(answersIn(received), answers) << what << ": " << received;
        EXPECT_THAT(received, testing::HasSubstr(contains)) << what;
        EXPECT_THAT(received, testing::EndsWith("(end)")) << what;
    }
}

TEST(Transport, RefusesWhatIsTooLarge) {
    RunningBackend backend({.requestTime = 5s});
    const std::string large(1024 * 1024 + 1, ' ');
    auto client = backend.client();
    EXPECT_EQ(client.Post(call, clientHeaders(), large, "application/json")->status, 413);
    EXPECT_EQ(ask(client), 200) << "on the same connection";
    const auto inChunks = client.Post(
        call, clientHeaders(),
        [&](std::size_t, httplib::DataSink& sink) {
            sink.write(large.data(), large.size());
            sink.done();
            return true;
        },
        "application/json");
    EXPECT_EQ(inChunks->status, 413);
    EXPECT_EQ(client.Get("/rest/v1/devices?" + std::string(9000, 'a'), clientHeaders())->status, 414);
    RawClient endless(backend.port());
    for (int i = 0; i < 9000; ++i) {
        endless.send("X-More: " + std::string(1000, 'x') + "\r\n");
    }
    EXPECT_THAT(endless.readToEnd(), testing::EndsWith("(end)"));
}

TEST(Transport, SurvivesARestartOfTheDatabase) {
    RunningBackend backend;
    auto client = backend.client();
    ASSERT_EQ(ask(client), 200);
    Postgres::stop();
    const auto answer = client.Post(call, clientHeaders(), arguments, "application/json");
    EXPECT_EQ(answer->status, 503);
    EXPECT_EQ(json::parse(answer->body)["code"], "PGRST000");
    EXPECT_THAT(answer->body, testing::Not(testing::HasSubstr("host"))) << "nothing about our surroundings";
    Postgres::start();
    EXPECT_EQ(ask(client), 200);
}

TEST(Transport, OutlivesTheEndOfItsConnectionsAtOnce) {
    RunningBackend backend;
    auto client = backend.client();
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(ask(client), 200);
    }
    Postgres::stop();
    Postgres::start(); // every connection that the server holds is dead now
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(ask(client), 200);
    }
}

} // namespace fernhollow::backend::tests
