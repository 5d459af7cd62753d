#include "App/Charts/StackedBars.h"

#include "App/Widgets/Theme.h"

#include <algorithm>
#include <cmath>

namespace fernhollow {
namespace {

constexpr double barWidth = 0.76; // of its column
constexpr double cornerRadius = 2.5;
// Neighbours in a bar may have colours that are hard to tell apart.
constexpr double hairline = 1;
constexpr double leastHeightForHairline = 4; // a lower piece would be mostly line
constexpr float highlightOpacity = 0.45F;
constexpr float columnOpacity = 0.06F; // behind a highlighted bar, which may be too low to be seen

QPainterPath roundedAtTheTop(const QRectF& rect) {
    const double radius = std::min({cornerRadius, rect.height(), rect.width() / 2});
    QPainterPath path(rect.bottomLeft());
    path.lineTo(rect.left(), rect.top() + radius);
    path.quadTo(rect.topLeft(), {rect.left() + radius, rect.top()});
    path.lineTo(rect.right() - radius, rect.top());
    path.quadTo(rect.topRight(), {rect.right(), rect.top() + radius});
    path.lineTo(rect.bottomRight());
    path.closeSubpath();
    return path;
}

} // namespace

StackedBars::StackedBars(QCPAxis* columns, QCPAxis* counts) : QCPAbstractPlottable(columns, counts) {
    setSelectable(QCP::stNone);
}

bool StackedBars::setPieces(std::vector<Piece> pieces, double pixels) {
    std::vector<int> shown;
    shown.reserve(pieces.size() * 3);
    for (const Piece& piece : pieces) {
        const int to = static_cast<int>(std::lround(piece.to * pixels));
        if (to != static_cast<int>(std::lround(piece.from * pixels))) {
            shown.insert(shown.end(), {piece.column, to, static_cast<int>(piece.color.rgba())});
        }
    }
    pieces_ = std::move(pieces);
    return std::exchange(shown_, std::move(shown)) != shown_;
}

bool StackedBars::setHighlight(std::optional<BarChart::Highlight> highlight) {
    return std::exchange(highlight_, highlight) != highlight_;
}

QRectF StackedBars::rect(int column, double from, double to) const {
    const double ratio = mParentPlot->bufferDevicePixelRatio();
    const auto crisp = [ratio](double pixel) { return std::round(pixel * ratio) / ratio; };
    const QPointF topLeft = coordsToPixels(column - barWidth / 2, to);
    const QPointF bottomRight = coordsToPixels(column + barWidth / 2, from);
    return {QPointF(crisp(topLeft.x()), crisp(topLeft.y())),
            QPointF(crisp(bottomRight.x()), crisp(bottomRight.y()))};
}

void StackedBars::draw(QCPPainter* painter) {
    painter->setPen(Qt::NoPen);
    painter->setAntialiasing(true);
    if (highlight_) {
        QColor color = Theme::primary;
        color.setAlphaF(columnOpacity);
        const QCPRange counts = valueAxis()->range();
        painter->fillRect(QRectF(coordsToPixels(highlight_->column - 0.5, counts.upper),
                                 coordsToPixels(highlight_->column + 0.5, counts.lower)),
                          color);
    }
    for (const Piece& piece : pieces_) {
        drawPiece(*painter, piece);
    }
    if (highlight_) {
        drawHighlight(*painter);
    }
}

void StackedBars::drawPiece(QCPPainter& painter, const Piece& piece) const {
    QRectF bar = rect(piece.column, piece.from, piece.to);
    if (bar.height() <= 0) {
        return;
    }
    if (!piece.isTop && bar.height() >= leastHeightForHairline) {
        bar.adjust(0, hairline, 0, 0);
    }
    if (piece.isTop) {
        painter.setBrush(piece.color);
        painter.drawPath(roundedAtTheTop(bar));
    } else {
        painter.fillRect(bar, piece.color);
    }
}

void StackedBars::drawHighlight(QCPPainter& painter) const {
    const QRectF bar = rect(highlight_->column, 0, static_cast<double>(highlight_->top));
    if (bar.height() > 0) {
        QColor color = Theme::highlight;
        color.setAlphaF(highlightOpacity);
        painter.setBrush(color);
        painter.drawPath(roundedAtTheTop(bar));
    }
}

void StackedBars::drawLegendIcon(QCPPainter*, const QRectF&) const {} // there is no legend

double StackedBars::selectTest(const QPointF&, bool, QVariant*) const {
    return -1; // what the pointer does is not the plot's matter
}

QCPRange StackedBars::getKeyRange(bool& found, QCP::SignDomain) const {
    found = false; // the chart sets the ranges of its axes itself
    return {};
}

QCPRange StackedBars::getValueRange(bool& found, QCP::SignDomain, const QCPRange&) const {
    found = false;
    return {};
}

} // namespace fernhollow
