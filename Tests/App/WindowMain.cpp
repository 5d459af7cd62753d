#include "App/Widgets/Theme.h"

#include <QApplication>
#include <gmock/gmock.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    fernhollow::Theme::applyDark();
    return RUN_ALL_TESTS();
}
