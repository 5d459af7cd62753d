#pragma once

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <QUrlQuery>
#include <nlohmann/json.hpp>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fernhollow::tests {

/// A web server on the loopback interface that remembers every request and answers as a test says.
class RecordingServer {
public:
    struct Request {
        std::string method;
        std::string path;  ///< without the query
        std::string query; ///< as it came
        /// In their order; names in lower case, because their case means nothing (RFC 9110, 5.1) and differs
        /// between versions of the toolkit.
        std::vector<std::pair<std::string, std::string>> headers;
        std::string body;
        int connection = 0; ///< counted from 1

        nlohmann::json json() const { return nlohmann::json::parse(body); }
        std::string header(const std::string& name) const {
            for (const auto& [key, value] : headers) {
                if (key == name) {
                    return value;
                }
            }
            return {};
        }
    };

    struct Answer {
        int status = 200;
        std::string body = "[]";
        std::string raw{};     ///< sent instead, to the letter, when it is not empty
        bool isSilent = false; ///< nothing is sent at all
        bool closes = false;   ///< the connection ends after the answer
    };

    RecordingServer() {
        server_.listen(QHostAddress::LocalHost);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
            auto* socket = server_.nextPendingConnection();
            const int number = ++connections_;
            QObject::connect(socket, &QTcpSocket::readyRead, &server_, [this, socket, number] {
                buffers_[socket] += socket->readAll().toStdString();
                while (const auto request = take(buffers_[socket], number)) {
                    requests.push_back(*request);
                    const Answer given = answer ? answer(*request) : Answer{};
                    reply(*socket, given);
                    unanswered_[socket] += given.isSilent ? 1 : 0;
                }
            });
            QObject::connect(socket, &QTcpSocket::disconnected, &server_,
                             [this, socket] { unanswered_.erase(socket); });
        });
    }

    std::string url() const { return "http://127.0.0.1:" + std::to_string(server_.serverPort()); }
    int connections() const { return connections_; }

    /// How many clients still wait for an answer that they do not get.
    std::size_t unanswered() const {
        std::size_t count = 0;
        for (const auto& [socket, waiting] : unanswered_) {
            count += waiting;
        }
        return count;
    }

    /// The requests whose path ends with `name`.
    std::vector<Request> to(const std::string& name) const {
        std::vector<Request> found;
        for (const auto& request : requests) {
            if (request.path.ends_with("/" + name)) {
                found.push_back(request);
            }
        }
        return found;
    }

    std::vector<Request> requests;
    std::function<Answer(const Request&)> answer;

private:
    static std::optional<Request> take(std::string& buffer, int connection) {
        const auto end = buffer.find("\r\n\r\n");
        if (end == std::string::npos) {
            return std::nullopt;
        }
        Request request;
        request.connection = connection;
        std::size_t line = buffer.find("\r\n");
        const std::string start = buffer.substr(0, line);
        const auto target = start.find(' ') + 1;
        request.method = start.substr(0, target - 1);
        const std::string resource = start.substr(target, start.rfind(' ') - target);
        const auto question = resource.find('?');
        request.path = resource.substr(0, question);
        request.query = question == std::string::npos ? "" : resource.substr(question + 1);
        while (line < end) {
            const auto next = buffer.find("\r\n", line + 2);
            const std::string header = buffer.substr(line + 2, next - line - 2);
            const auto colon = header.find(": ");
            const auto name = QByteArray::fromStdString(header.substr(0, colon)).toLower();
            request.headers.emplace_back(name.toStdString(), header.substr(colon + 2));
            line = next;
        }
        const std::string length = request.header("content-length");
        const std::size_t size = length.empty() ? 0 : std::stoul(length);
        if (buffer.size() < end + 4 + size) {
            return std::nullopt;
        }
        request.body = buffer.substr(end + 4, size);
        buffer.erase(0, end + 4 + size);
        return request;
    }

    static void reply(QTcpSocket& socket, const Answer& answer) {
        if (answer.isSilent) {
            return;
        }
        const std::string whole = "HTTP/1.1 " + std::to_string(answer.status) +
                                  " -\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\n\r\n" +
                                  answer.body;
        socket.write(QByteArray::fromStdString(answer.raw.empty() ? whole : answer.raw));
        if (answer.closes) {
            socket.disconnectFromHost();
        }
    }

    QTcpServer server_;
    std::map<QTcpSocket*, std::string> buffers_;
    std::map<QTcpSocket*, std::size_t> unanswered_;
    int connections_ = 0;
};

} // namespace fernhollow::tests
