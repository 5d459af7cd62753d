#include "Support/TemporaryHome.h"

#include <QApplication>
#include <QProcess>
#include <gmock/gmock.h>

using fernhollow::tests::EnvironmentGuard;
using fernhollow::tests::TemporaryHome;

namespace {

/// A session bus for this program alone. libdbus reads the address once, so it lasts as long as we do.
class PrivateBus {
public:
    PrivateBus() {
        daemon_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                      QStringLiteral("--print-address")});
        daemon_.waitForReadyRead();
        address_.emplace("DBUS_SESSION_BUS_ADDRESS", daemon_.readLine().trimmed().toStdString());
    }
    ~PrivateBus() {
        daemon_.kill();
        daemon_.waitForFinished();
    }

private:
    QProcess daemon_;
    std::optional<EnvironmentGuard> address_;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    const TemporaryHome home;
    const PrivateBus bus;
    const EnvironmentGuard platform("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
