#pragma once

#include <QTimer>
#include <QWidget>

#include <chrono>
#include <functional>
#include <utility>

namespace fernhollow {

/// Draws a view once for any number of changes that ask for it, at most once a frame, and never while the
/// view is hidden. Owned by the view, which draws itself as it is shown.
class Redraw {
public:
    static constexpr std::chrono::milliseconds frame{16};

    Redraw(QWidget& view, std::function<void()> refresh) : view_(view) {
        timer_.setSingleShot(true);
        QObject::connect(&timer_, &QTimer::timeout, &view, std::move(refresh));
    }

    void request(std::chrono::milliseconds within = frame) {
        if (view_.isVisible() && (!timer_.isActive() || timer_.remainingTimeAsDuration() > within)) {
            timer_.start(within);
        }
    }

private:
    QWidget& view_;
    QTimer timer_;
};

} // namespace fernhollow
