#include "Platform/StatusItem/CountIcon.h"

#include "Support/Testing.h"

namespace fernhollow::tests {

TEST(CountIcon, KeepsItsTextInsideThePlateAndFillsIt) {
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        for (const auto& text : {QStringLiteral("7"), QStringLiteral("888"), QStringLiteral("1.2k"),
                                 QStringLiteral("888k"), QStringLiteral("\u221212M")}) {
            const QImage image = CountIcon(text).drawSquare(side);
            EXPECT_LT(qGray(CountIcon({}).drawSquare(side).pixel(side / 2, side / 2)), 70) << "a dark plate";
            QRect ink;
            for (int pixel = 0; pixel < side * side; ++pixel) {
                if (const QPoint at(pixel % side, pixel / side); qGray(image.pixel(at)) > 90) {
                    ink |= QRect(at, QSize(1, 1));
                }
            }
            SCOPED_TRACE(text.toStdString() + " at " + std::to_string(side));
            EXPECT_TRUE(QRect(1, 1, side - 2, side - 2).contains(ink));
            EXPECT_GE(ink.height(), side * 3 / 10);
            EXPECT_NEAR(ink.center().x(), side / 2.0, 0.1 * side);
        }
    }
}

} // namespace fernhollow::tests
