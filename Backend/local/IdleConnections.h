#pragma once

#include "local/Descriptor.h"

#include <chrono>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

struct pollfd;

namespace fernhollow::backend {

/// Keeps the connections of clients that ask nothing at the moment, so that none of them costs a worker:
/// one thread waits for all, hands on those that speak and closes those that stay silent too long, or the
/// longest silent one when there are too many.
///
/// The waiting thread alone knows them; others hand one over through a pipe. Owned by the server.
class IdleConnections {
public:
    using Resume = std::function<void(Descriptor socket)>;

    /// `resume` runs on the waiting thread and takes the socket over.
    IdleConnections(std::size_t maximum, std::chrono::milliseconds patience, Resume resume);
    ~IdleConnections();
    IdleConnections(const IdleConnections&) = delete;
    IdleConnections& operator=(const IdleConnections&) = delete;

    /// From any thread.
    void add(Descriptor socket);

private:
    struct Connection {
        Descriptor socket;
        std::chrono::steady_clock::time_point deadline;
    };

    void run();
    void resumeThose(const std::vector<pollfd>& watched);
    bool takeNew();
    void dismissSilent();
    int nextTimeout() const;

    std::size_t maximum_;
    std::chrono::milliseconds patience_;
    Resume resume_;
    Descriptor outlet_; // of the pipe
    Descriptor inlet_;
    std::deque<Connection> connections_; // the longest silent first
    std::thread thread_;
};

} // namespace fernhollow::backend
