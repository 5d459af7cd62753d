#pragma once

#include "Platform/Activation.h"
#include "Support/FileDescriptor.h"

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <optional>
#include <string_view>

namespace fernhollow {

/// What a later start of the program asks of the one that runs.
enum class InstanceRequest { activate, toggle, pause, resume, quit };

/// Sees to it that one program counts for a user's data folder, and lets later starts talk to it.
///
/// The lock is an flock(2) on a file in the data folder, which the system lets go with the process
/// however it ends; requests travel over a local socket that only the user may open.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    SingleInstance();
    ~SingleInstance() override;

    /// True when this process is the one that runs from now on.
    bool acquire();

    /// Takes requests; only after acquire().
    void listen();
    /// Takes no more requests; who waits for the end of the program still hears of it.
    void stopListening() { server_.close(); }

    /// Hands a request to the process that runs and waits until it has taken it, for `quit` until it has
    /// ended; false when it does not answer. No event loop is needed.
    bool send(InstanceRequest request, const ActivationToken& token = {});

Q_SIGNALS:
    void requested(InstanceRequest request, const ActivationToken& token);

private:
    void receive();

    FileDescriptor lock_; ///< let go after the server, so that the next program finds no socket of ours
    QLocalServer server_;
};

} // namespace fernhollow
