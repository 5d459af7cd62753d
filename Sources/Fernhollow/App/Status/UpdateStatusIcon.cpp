#include "App/Status/UpdateStatusIcon.h"

#include "App/Widgets/Symbol.h"
#include "App/Widgets/Theme.h"

#include <QPainter>
#include <QStyle>
#include <QTimerEvent>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr double frameSide = 12; // points
constexpr double ringSide = 10;
constexpr double ringStroke = 2;
constexpr double ringGroundOpacity = 0.3;

// A spoke further ten times a second reads as turning and costs next to nothing.
constexpr int spokes = 8;
constexpr int turnInterval = 100; // ms
constexpr double spokeStroke = 1.5;
constexpr double faintestSpoke = 0.25;

constexpr int fullCircle = 360 * 16; // as QPainter counts angles
constexpr int top = 90 * 16;

} // namespace

UpdateStatusIcon::UpdateStatusIcon(QWidget* parent) : QWidget(parent) {
    const int side = Theme::scaled(frameSide);
    setFixedSize(side, side);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void UpdateStatusIcon::show(Kind kind, const QString& name, const QColor& color) {
    kind_ = kind;
    color_ = color;
    setObjectName(name);
    turnWhileSeen();
    update();
}

void UpdateStatusIcon::showSymbol(const QString& name, const QColor& color) {
    if (kind_ == Kind::symbol && name == objectName() && color == color_) {
        return;
    }
    symbol_.load(colouredSymbol(name, color));
    symbol_.setAspectRatioMode(Qt::KeepAspectRatio);
    show(Kind::symbol, name, color);
}

void UpdateStatusIcon::showSpinner(const QColor& color) {
    show(Kind::spinner, QStringLiteral("spinner"), color);
}

void UpdateStatusIcon::showRing(double progress, const QColor& color) {
    progress_ = std::clamp(progress, 0.0, 1.0);
    show(Kind::ring, QStringLiteral("ring"), color);
}

void UpdateStatusIcon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    switch (kind_) {
    case Kind::symbol:
        return symbol_.render(&painter, QRectF(rect()));
    case Kind::spinner:
        return paintSpinner(painter);
    case Kind::ring:
        return paintRing(painter);
    }
}

void UpdateStatusIcon::paintSpinner(QPainter& painter) const {
    const double unit = width() / frameSide;
    painter.translate(QRectF(rect()).center());
    QColor color = color_;
    for (int i = 0; i < spokes; ++i) {
        const int age = (step_ - i + spokes) % spokes; // 0 is the foremost
        color.setAlphaF(
            static_cast<float>(std::max(faintestSpoke, 1 - static_cast<double>(age) / (spokes - 1))));
        painter.setPen(QPen(color, spokeStroke * unit, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(360.0 * i / spokes);
        painter.drawLine(QPointF(0, -2.5 * unit), QPointF(0, -5 * unit));
        painter.restore();
    }
}

void UpdateStatusIcon::paintRing(QPainter& painter) const {
    const double unit = width() / frameSide;
    // The stroke lies half inside and half outside of the circle.
    const double side = (ringSide - ringStroke) * unit;
    QRectF circle(0, 0, side, side);
    circle.moveCenter(QRectF(rect()).center());
    QColor ground = color_;
    ground.setAlphaF(static_cast<float>(ringGroundOpacity));
    painter.setPen(QPen(ground, ringStroke * unit));
    painter.drawEllipse(circle);
    if (progress_ > 0) {
        painter.setPen(QPen(color_, ringStroke * unit, Qt::SolidLine, Qt::FlatCap));
        painter.drawArc(circle, top, -qRound(progress_ * fullCircle));
    }
}

void UpdateStatusIcon::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    turnWhileSeen();
}

void UpdateStatusIcon::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    turnWhileSeen();
}

void UpdateStatusIcon::turnWhileSeen() {
    const bool animates = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (kind_ != Kind::spinner || !isVisible() || !animates) {
        turn_.stop();
    } else if (!turn_.isActive()) {
        turn_.start(turnInterval, this);
    }
}

void UpdateStatusIcon::timerEvent(QTimerEvent* event) {
    if (event->timerId() != turn_.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    step_ = (step_ + 1) % spokes;
    update();
}

} // namespace fernhollow
