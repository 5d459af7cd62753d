#include "App/Shell/SingleInstance.h"

#include "KeypressCore/DailyCountsStore.h"
#include "Support/DebugLog.h"
#include "Support/FileDescriptor.h"
#include "Support/UserDirectories.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalSocket>

#include <array>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

using namespace std::chrono_literals;

// A program that is just starting listens within this time; one that ends has written its last presses.
constexpr auto answerLimit = 5s;
constexpr auto endLimit = 10s;

constexpr std::array<std::pair<InstanceRequest, const char*>, 5> words{
    {{InstanceRequest::activate, "activate"},
     {InstanceRequest::toggle, "toggle"},
     {InstanceRequest::pause, "pause"},
     {InstanceRequest::resume, "resume"},
     {InstanceRequest::quit, "quit"}}};
constexpr const char* accepted = "ok\n";
constexpr qint64 longestLine = 512;

fs::path runtimeFolder() {
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder != nullptr && *folder == '/') {
        return folder;
    }
    std::error_code error;
    if (fs::path folder = "/run/user/" + std::to_string(::getuid()); fs::is_directory(folder, error)) {
        return folder;
    }
    return "/tmp";
}

/// The folder whose counts are ours, or nothing where the user has no home.
fs::path dataFolder() {
    try {
        return DailyCountsStore::databaseDirectory();
    } catch (const fs::filesystem_error& error) {
        debugLog(std::string("[SingleInstance] ") + error.what());
        return {};
    }
}

/// The same for every start with the same data folder, short enough for a socket's name.
std::string instanceName() {
    const QByteArray folder = QByteArray::fromStdString(dataFolder().native());
    const auto hash = QCryptographicHash::hash(folder, QCryptographicHash::Sha256).left(8).toHex();
    return "fernhollow-" + std::to_string(::getuid()) + "-" + hash.toStdString();
}

QString socketName() {
    return QString::fromStdString((runtimeFolder() / (instanceName() + ".socket")).native());
}

/// In the data folder; where that cannot be written to, beside the socket.
std::vector<fs::path> lockFiles() {
    std::vector<fs::path> files;
    if (const fs::path folder = dataFolder(); !folder.empty()) {
        try {
            createPrivateDirectories(folder);
            files.push_back(folder / "fernhollow.lock");
        } catch (const fs::filesystem_error& error) {
            debugLog(std::string("[SingleInstance] ") + error.what());
        }
    }
    files.push_back(runtimeFolder() / (instanceName() + ".lock"));
    return files;
}

/// Hears of what is new in a folder.
class FolderNews {
public:
    explicit FolderNews(const fs::path& folder) : file_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        if (file_) {
            ::inotify_add_watch(file_.get(), folder.c_str(), IN_CREATE | IN_MOVED_TO);
        }
    }

    /// Until there is some, `limit` at most.
    void wait(std::chrono::milliseconds limit) const {
        pollfd news{file_.get(), POLLIN, 0};
        ::poll(&news, 1, static_cast<int>(limit.count()));
        std::array<char, 4096> passed{};
        while (file_ && ::read(file_.get(), passed.data(), passed.size()) > 0) {
        }
    }

private:
    FileDescriptor file_;
};

/// The program that holds the lock may be about to listen.
bool connectToRunning(QLocalSocket& socket) {
    const FolderNews news(runtimeFolder());
    const QDeadlineTimer deadline(answerLimit);
    constexpr int connectLimit = 100;
    for (;;) {
        socket.connectToServer(socketName());
        if (socket.waitForConnected(connectLimit) || deadline.hasExpired()) {
            return socket.state() == QLocalSocket::ConnectedState;
        }
        news.wait(std::chrono::ceil<std::chrono::milliseconds>(deadline.remainingTimeAsDuration()));
    }
}

} // namespace

SingleInstance::SingleInstance() {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::receive);
}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::acquire() {
    for (const fs::path& file : lockFiles()) {
        FileDescriptor lock(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!lock) {
            lock = FileDescriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
        }
        if (!lock) {
            continue;
        }
        if (::flock(lock.get(), LOCK_EX | LOCK_NB) == 0) {
            lock_ = std::move(lock);
            return true;
        }
        if (errno == EWOULDBLOCK) {
            return false;
        } // else the file system knows no locks
    }
    debugLog("[SingleInstance] No place for a lock file; a second start would not be noticed");
    return true;
}

void SingleInstance::listen() {
    QLocalServer::removeServer(socketName()); // the lock is ours, so a socket there is a dead program's
    if (!server_.listen(socketName())) {
        debugLog("[SingleInstance] Cannot listen on " + socketName().toStdString() + ": " +
                 server_.errorString().toStdString());
    }
}

void SingleInstance::receive() {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine()) {
                return;
            }
            const QByteArray word = socket->readLine(longestLine).trimmed();
            const QByteArray token =
                socket->readLine(longestLine).trimmed(); // travels with the word, if at all
            for (const auto& [request, name] : words) {
                if (word == name) {
                    socket->write(accepted);
                    socket->flush();
                    Q_EMIT requested(request, token);
                    return;
                }
            }
            socket->abort();
        });
    }
}

bool SingleInstance::send(InstanceRequest request, const ActivationToken& token) {
    QLocalSocket socket;
    if (!connectToRunning(socket)) {
        return false;
    }
    for (const auto& [known, name] : words) {
        if (known == request) {
            // In one piece. A version that knows no token reads the first line alone.
            socket.write(QByteArray(name) + '\n' + (token.isEmpty() ? token : token + '\n'));
        }
    }
    const auto milliseconds = [](auto limit) {
        return static_cast<int>(std::chrono::milliseconds(limit).count());
    };
    if (!socket.waitForReadyRead(milliseconds(answerLimit)) || socket.readLine(longestLine) != accepted) {
        return false;
    }
    // The other side keeps the connection open until its process has ended.
    return request != InstanceRequest::quit || socket.waitForDisconnected(milliseconds(endLimit));
}

} // namespace fernhollow
