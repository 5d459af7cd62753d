// The X server's stream of recorded events: the same bytes say the same however they are cut into pieces, no
// more presses than fit into them, and a stream that is over says so.

#include "Fuzz.h"
#include "Platform/X11/RecordStream.h"

#include <algorithm>
#include <array>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

// All that a stream needs of libxcb. A real connection would begin with an agreement between two threads,
// which takes many times as long as what follows.
struct xcb_connection_t {
    int socket;
};

extern "C" int xcb_get_file_descriptor(xcb_connection_t* connection) {
    return connection->socket;
}

extern "C" void xcb_disconnect(xcb_connection_t* connection) {
    ::close(connection->socket);
    delete connection;
}

namespace fernhollow::fuzz {
namespace {

using Item = RecordStream::Item;

constexpr std::size_t unit = 32; // bytes of an event

/// A stream, and the end of it that is the server's.
class Served {
public:
    Served() {
        std::array<int, 2> ends{};
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0, "there are sockets");
        server_ = ends[0];
        stream_.emplace(XcbConnection(new xcb_connection_t{ends[1]}));
    }
    Served(const Served&) = delete;
    Served& operator=(const Served&) = delete;
    ~Served() { ::close(server_); }

    /// What the stream says of `bytes`, which come in pieces of `size`, up to its end.
    std::vector<Item> items(std::string_view bytes, std::size_t size) {
        std::vector<Item> all;
        while (!bytes.empty()) {
            send(bytes.substr(0, size));
            bytes.remove_prefix(std::min(size, bytes.size()));
            if (take(all) == Item::ended) {
                return all;
            }
        }
        ::shutdown(server_, SHUT_WR);
        require(take(all) == Item::ended, "a stream that is over says so");
        return all;
    }

private:
    void send(std::string_view bytes) const {
        require(::send(server_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
                    static_cast<ssize_t>(bytes.size()),
                "the server's bytes can be sent");
    }

    Item take(std::vector<Item>& all) {
        stream_->receive();
        Item item = stream_->next(modifiers_);
        for (; item != Item::nothing && item != Item::ended; item = stream_->next(modifiers_)) {
            all.push_back(item);
        }
        return item;
    }

    int server_ = -1;
    std::optional<RecordStream> stream_;
    ModifierKeys modifiers_;
};

} // namespace

void check(std::string_view input) {
    if (input.empty()) {
        return;
    }
    const std::size_t size = 1 + static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    const auto items = Served().items(input, size);
    require(items == Served().items(input, 1024), "the pieces do not matter");
    require(items.size() <= input.size() / unit, "there is at most one item an event");
}

} // namespace fernhollow::fuzz
