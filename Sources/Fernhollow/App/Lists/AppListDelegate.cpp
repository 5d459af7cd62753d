#include "App/Lists/AppListDelegate.h"

#include "App/Widgets/Theme.h"

#include <QAbstractItemView>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr int radius = 6;
constexpr int horizontalPadding = 8;
constexpr int rowGap = 4;
constexpr int circlePoints = 10;
constexpr int circleGap = 8;
constexpr int columnGap = 12;
constexpr double percentagePoints = 12;
constexpr int leastNameLines = 3; // the least width of a name, in heights of a line

QFont fixedWidthFont(double points) {
    QFont font = Theme::font(points);
    font.setFamilies({QFontDatabase::systemFont(QFontDatabase::FixedFont).family()});
    font.setStyleHint(QFont::Monospace);
    return font;
}

const AppListModel::Row& rowAt(const QModelIndex& index) {
    return static_cast<const AppListModel*>(index.model())->row(index);
}

int widestDigit(const QFontMetrics& metrics, const QString& text) {
    int widest = 0;
    for (const QChar character : text) {
        widest = character.isDigit() ? std::max(widest, metrics.horizontalAdvance(character)) : widest;
    }
    return widest;
}

} // namespace

AppListDelegate::AppListDelegate(const Style& style, QObject* parent)
    : QAbstractItemDelegate(parent), nameFont_(Theme::font(style.points)),
      percentageFont_(fixedWidthFont(percentagePoints)),
      countFont_(Theme::font(style.points, style.countWeight)), verticalPadding_(style.verticalPadding),
      background_(style.background),
      percentageWidth_(QFontMetrics(percentageFont_).horizontalAdvance(QStringLiteral("100.0%"))) {}

bool AppListDelegate::reserve(const QString& widestCount) {
    const QFontMetrics metrics(countFont_);
    const int digit = widestDigit(metrics, widestCount);
    int width = 0;
    for (const QChar character : widestCount) {
        width += character.isDigit() ? digit : metrics.horizontalAdvance(character);
    }
    return std::exchange(countWidth_, width) != width;
}

AppListDelegate::Places AppListDelegate::places(const QStyleOptionViewItem& option,
                                                const AppListModel::Row& row) const {
    Places places;
    places.background = option.rect.adjusted(0, 0, 0, -rowGap);
    const QRect content = places.background.adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    const int side = Theme::scaled(circlePoints);
    places.circle = {content.left(), content.center().y() - (side - 1) / 2, side, side};
    places.count = content;
    places.count.setLeft(content.right() + 1 -
                         std::max(countWidth_, QFontMetrics(countFont_).horizontalAdvance(row.countText)));
    places.name = content;
    places.name.setLeft(places.circle.right() + 1 + circleGap);
    places.name.setRight(places.count.left() - 1 - columnGap);
    // In a narrow list a large font leaves room for the name or for the share.
    const int least = leastNameLines * QFontMetrics(nameFont_).height();
    if (!row.percentageText.isEmpty() && places.name.width() - percentageWidth_ - columnGap >= least) {
        places.percentage = places.name;
        places.percentage.setLeft(places.name.right() + 1 - percentageWidth_);
        places.name.setRight(places.percentage.left() - 1 - columnGap);
    }
    for (QRect* rect : {&places.circle, &places.name, &places.percentage, &places.count}) {
        *rect = QStyle::visualRect(option.direction, places.background, *rect);
    }
    return places;
}

void AppListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const auto& row = rowAt(index);
    const Places at = places(option, row);
    const bool hasFocus = option.state & QStyle::State_HasFocus;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(hasFocus ? QPen(Theme::tint, 2) : QPen(Qt::NoPen));
    painter->setBrush(background_);
    const double inset = hasFocus ? 1 : 0; // half the pen: the frame lies within the row
    painter->drawRoundedRect(QRectF(at.background).adjusted(inset, inset, -inset, -inset), radius, radius);
    painter->setPen(Qt::NoPen);
    painter->setBrush(row.color);
    painter->drawEllipse(at.circle);

    const auto draw = [&](const QRect& rect, const QFont& font, const QColor& color, const QString& text,
                          Qt::Alignment side) {
        painter->setFont(font);
        painter->setPen(color);
        const auto visual = QStyle::visualAlignment(option.direction, side) | Qt::AlignAbsolute;
        painter->drawText(rect, static_cast<int>(visual | Qt::AlignVCenter) | Qt::TextSingleLine, text);
    };
    painter->setLayoutDirection(Qt::LayoutDirectionAuto); // a name is written as its own script is
    draw(at.name, nameFont_, Theme::primary,
         QFontMetrics(nameFont_).elidedText(row.name, Qt::ElideRight, at.name.width()), Qt::AlignLeft);
    if (!at.percentage.isEmpty()) {
        draw(at.percentage, percentageFont_, Theme::tertiary, row.percentageText, Qt::AlignRight);
    }
    draw(at.count, countFont_, Theme::secondary, row.countText, Qt::AlignRight);
    painter->restore();
}

QSize AppListDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const int text = std::max(QFontMetrics(nameFont_).height(), QFontMetrics(percentageFont_).height());
    return {0, text + 2 * verticalPadding_ + rowGap};
}

bool AppListDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.isValid()) {
        return false;
    }
    const auto& row = rowAt(index);
    const bool isElided =
        QFontMetrics(nameFont_).horizontalAdvance(row.name) > places(option, row).name.width();
    // A name with an angle bracket is not markup.
    const QString text =
        isElided ? QStringLiteral("<span>%1</span>").arg(row.name.toHtmlEscaped()) : QString();
    QToolTip::showText(event->globalPos(), text, view);
    return true;
}

} // namespace fernhollow
