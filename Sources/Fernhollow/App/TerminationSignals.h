#pragma once

#include <QObject>

namespace fernhollow {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the event loop, so that they end the program the way
/// a click on Quit does.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    /// Holds the signals back from now on. Called first in main(), before any thread exists that could
    /// still be struck by one.
    static void block();

    /// Reports the signals that were held back and those that come.
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    int file_;
};

} // namespace fernhollow
