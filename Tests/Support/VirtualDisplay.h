#pragma once

#include <QProcess>

#include <csignal>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>

namespace fernhollow::tests {

/// An X server without a screen of its own, for as long as the object lives. It takes the first free
/// display number, so tests can run side by side.
class VirtualDisplay {
public:
    /// Starts Xvfb and waits until it accepts clients. Throws std::runtime_error when it does not.
    explicit VirtualDisplay(const QStringList& options = {}) {
        server_.setStandardErrorFile(QProcess::nullDevice());
        // A crashed test leaves no server behind.
        server_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        server_.start(
            QStringLiteral("Xvfb"),
            QStringLiteral("-displayfd 1 -noreset -nolisten tcp -screen 0 1024x768x24").split(u' ') +
                options);
        while (!server_.canReadLine() && server_.waitForReadyRead(20'000)) {
        }
        name_ = ":" + server_.readLine().trimmed().toStdString();
        if (name_ == ":") {
            throw std::runtime_error("Xvfb does not start");
        }
    }
    ~VirtualDisplay() { kill(); }
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    /// What DISPLAY has to be, for example ":3".
    const std::string& name() const { return name_; }

    /// Ends the server now, under its clients' feet. Returns when it is gone.
    void kill() {
        server_.terminate(); // the orderly way removes its socket and lock file
        server_.waitForFinished(5'000);
    }

private:
    QProcess server_;
    std::string name_;
};

} // namespace fernhollow::tests
