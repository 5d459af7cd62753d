#pragma once

#include "Support/TemporaryHome.h"

#include <QProcess>
#include <gmock/gmock.h>

namespace fernhollow::tests {

/// Runs the tests with a home and a session bus for this program alone. libdbus reads the address once, so
/// the bus lasts as long as the program does.
template<class Application>
int runOnABusOfItsOwn(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    const TemporaryHome home;
    QProcess bus;
    bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    bus.waitForReadyRead();
    const EnvironmentGuard address("DBUS_SESSION_BUS_ADDRESS", bus.readLine().trimmed().toStdString());
    const EnvironmentGuard platform("QT_QPA_PLATFORM", "offscreen");
    const Application application(argc, argv);
    const int result = RUN_ALL_TESTS();
    bus.kill();
    bus.waitForFinished();
    return result;
}

} // namespace fernhollow::tests
