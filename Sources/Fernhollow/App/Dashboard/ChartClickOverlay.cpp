#include "App/Dashboard/ChartClickOverlay.h"

#include "App/Widgets/Theme.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr double focusRadius = 4;

/// A day as a button, seen only by its focus. The pointer goes through it to the overlay.
class DayButton : public QAbstractButton {
public:
    explicit DayButton(QWidget* parent) : QAbstractButton(parent) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        if (hasFocus()) {
            QPainter painter(this);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(Theme::tint, 2));
            painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), focusRadius, focusRadius);
        }
    }
};

} // namespace

ChartClickOverlay::ChartClickOverlay(BarChart* chart) : QWidget(chart), chart_(chart) {
    setMouseTracking(true);
    setCursor(Qt::PointingHandCursor);
    chart_->installEventFilter(this);
    setGeometry(chart_->rect());
    setButtons(static_cast<std::size_t>(chart_->columns())); // now: their turn by Tab is that of their making
}

void ChartClickOverlay::setDays(ChartProxy proxy, std::vector<Day> days) {
    proxy_ = std::move(proxy);
    days_ = std::move(days);
    setButtons(days_.size());
    for (std::size_t i = 0; i < days_.size(); ++i) {
        buttons_[i]->setAccessibleName(days_[i].name);
    }
    placeButtons();
}

void ChartClickOverlay::setButtons(std::size_t count) {
    while (buttons_.size() > count) {
        delete buttons_.back();
        buttons_.pop_back();
    }
    while (buttons_.size() < count) {
        buttons_.push_back(addButton());
    }
    for (QAbstractButton* button : buttons_) {
        button->setFocusPolicy(button == buttons_.back() ? Qt::TabFocus : Qt::NoFocus);
    }
}

QAbstractButton* ChartClickOverlay::addButton() {
    auto* button = new DayButton(this);
    button->installEventFilter(this);
    connect(button, &QAbstractButton::clicked, this, [this, button] {
        const auto index = static_cast<std::size_t>(indexOf(button));
        Q_EMIT daySelected(days_[index].noon);
        Q_EMIT dayClicked(days_[index].noon);
    });
    button->show();
    return button;
}

void ChartClickOverlay::placeButtons() {
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        buttons_[i]->setGeometry(chart_->columnRect(static_cast<int>(i)).toAlignedRect());
    }
}

std::optional<Instant> ChartClickOverlay::dateAtLocation(double x) const {
    if (!proxy_) {
        return std::nullopt;
    }
    std::vector<Instant> noons;
    std::ranges::transform(days_, std::back_inserter(noons), &Day::noon);
    return fernhollow::dateAtLocation(proxy_->date(x), std::move(noons), Calendar::autoupdatingCurrent());
}

void ChartClickOverlay::handleHover(double x) {
    if (const auto day = dateAtLocation(x)) {
        Q_EMIT daySelected(day);
    }
}

void ChartClickOverlay::handleTap(double x) {
    if (const auto day = dateAtLocation(x)) {
        Q_EMIT daySelected(day);
        Q_EMIT dayClicked(*day);
    }
}

void ChartClickOverlay::mouseMoveEvent(QMouseEvent* event) {
    handleHover(event->position().x());
}

void ChartClickOverlay::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(event->button() == Qt::LeftButton);
}

void ChartClickOverlay::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) {
        handleTap(event->position().x());
    }
}

void ChartClickOverlay::leaveEvent(QEvent*) {
    selectFocused();
}

void ChartClickOverlay::selectFocused() {
    const auto focused =
        std::ranges::find_if(buttons_, [](const auto* button) { return button->hasFocus(); });
    Q_EMIT daySelected(focused == buttons_.end()
                           ? std::nullopt
                           : std::optional(days_[static_cast<std::size_t>(indexOf(*focused))].noon));
}

int ChartClickOverlay::indexOf(const QObject* button) const {
    return static_cast<int>(std::ranges::find(buttons_, button) - buttons_.begin());
}

bool ChartClickOverlay::moveFocus(int from, int key) {
    const int last = static_cast<int>(buttons_.size()) - 1;
    int to = from;
    switch (key) {
    case Qt::Key_Left:
        to = std::max(from - 1, 0);
        break;
    case Qt::Key_Right:
        to = std::min(from + 1, last);
        break;
    case Qt::Key_Home:
        to = 0;
        break;
    case Qt::Key_End:
        to = last;
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        buttons_[static_cast<std::size_t>(from)]->click();
        return true;
    default:
        return false;
    }
    buttons_[static_cast<std::size_t>(to)]->setFocus(Qt::OtherFocusReason);
    return true;
}

bool ChartClickOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched == chart_) {
        if (event->type() == QEvent::Resize) {
            setGeometry(chart_->rect());
            placeButtons();
        }
        return false;
    }
    switch (event->type()) {
    case QEvent::FocusIn:
        Q_EMIT daySelected(days_[static_cast<std::size_t>(indexOf(watched))].noon);
        return false;
    case QEvent::FocusOut:
        Q_EMIT daySelected(std::nullopt);
        return false;
    case QEvent::KeyPress:
        return moveFocus(indexOf(watched), static_cast<QKeyEvent*>(event)->key());
    default:
        return false;
    }
}

} // namespace fernhollow
