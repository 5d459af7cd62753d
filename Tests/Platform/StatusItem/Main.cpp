#include "Support/TemporaryHome.h"

#include <QApplication>
#include <QProcess>
#include <gmock/gmock.h>

using fernhollow::tests::EnvironmentGuard;

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    const fernhollow::tests::TemporaryHome home;
    // A session bus for this program alone. libdbus reads the address once, so it lasts as long as we do.
    QProcess bus;
    bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    bus.waitForReadyRead();
    const EnvironmentGuard address("DBUS_SESSION_BUS_ADDRESS", bus.readLine().trimmed().toStdString());
    const EnvironmentGuard platform("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    bus.kill();
    bus.waitForFinished();
    return result;
}
