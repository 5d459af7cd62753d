#include "Platform/StatusItem/CountIcon.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

/// The pixels that the text has lightened, whatever the plate's own colour is.
QRect ink(const QImage& image) {
    const int plate = qGray(CountIcon(QString()).draw(image.size()).pixel(image.rect().center()));
    QRect bounds;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) == 255 && qGray(image.pixel(x, y)) > plate + 20) {
                bounds |= QRect(x, y, 1, 1);
            }
        }
    }
    return bounds;
}

const QStringList texts{u"7"_qs, u"42"_qs, u"888"_qs, u"1.2k"_qs, u"88k"_qs, u"888k"_qs, u"\u221212M"_qs};

} // namespace

TEST(CountIcon, KeepsItsTextInsideThePlateAndFillsIt) {
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        for (const auto& text : texts) {
            const QRect bounds = ink(CountIcon(text).drawSquare(side));
            EXPECT_TRUE(QRect(1, 1, side - 2, side - 2).contains(bounds))
                << text.toStdString() << " at " << side;
            EXPECT_GE(bounds.height(), side * 3 / 10) << text.toStdString() << " at " << side;
            EXPECT_NEAR(bounds.center().x(), side / 2.0, 0.1 * side) << text.toStdString() << " at " << side;
        }
    }
}

TEST(CountIcon, ReadsOnDarkAndOnLightPanels) {
    const QImage image = CountIcon(u"888"_qs).drawSquare(22);
    int lightest = 0;
    int darkest = 255;
    for (int x = 0; x < image.width(); ++x) {
        lightest = std::max(lightest, qGray(image.pixel(x, 11)));
        darkest = std::min(darkest, qGray(image.pixel(x, 11)));
    }
    EXPECT_GT(lightest, 220);
    EXPECT_LT(darkest, 70);
}

TEST(CountIcon, DiffersFromTextToText) {
    for (const auto& [one, other] :
         {std::pair{u"1.2k"_qs, u"1.3k"_qs}, {u"12k"_qs, u"12M"_qs}, {u"0"_qs, u""_qs}}) {
        EXPECT_NE(CountIcon(one).drawSquare(22), CountIcon(other).drawSquare(22)) << one.toStdString();
    }
}

// Hosts that take the largest picture must find the whole text there, not the largest square.
TEST(CountIcon, IsLargerThanEverySquareWhenWide) {
    const QSize size = CountIcon(u"1,234"_qs).wideSize(48);
    EXPECT_EQ(size.height(), 48);
    EXPECT_GT(size.width() * size.height(), 64 * 64);
    EXPECT_EQ(CountIcon(u"7"_qs).wideSize(48), QSize(48, 48));
}

} // namespace fernhollow::tests
