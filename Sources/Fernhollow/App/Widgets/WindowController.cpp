#include "App/Widgets/WindowController.h"

#include "App/Widgets/AccessibleRole.h"
#include "App/Widgets/Theme.h"
#include "Platform/UserDefaults.h"
#include "Support/ApplicationIdentity.h"

#include <QEvent>
#include <QIcon>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

constexpr int titleBarHeight = 40; // about what a window manager adds; on a low screen it must stay in reach

/// Keeps the window's frame whenever the window is hidden, so that a power cut takes little.
class FrameKeeper : public QObject {
public:
    FrameKeeper(QWidget& window, std::string key, const std::function<void()>& visibilityChanged)
        : QObject(&window), window_(window), key_(std::move(key)), visibilityChanged_(visibilityChanged) {
        window_.installEventFilter(this);
    }

    bool restore() {
        const auto kept = UserDefaults::data(key_);
        return kept && window_.restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*kept)));
    }

    void keep() {
        const QByteArray frame = window_.saveGeometry().toBase64();
        if (std::exchange(kept_, frame) != frame) {
            UserDefaults::setData(key_, frame.toStdString());
        }
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Hide) {
            keep();
        }
        const bool isChange = event->type() == QEvent::Hide || event->type() == QEvent::Show ||
                              event->type() == QEvent::WindowStateChange;
        if (isChange && visibilityChanged_) {
            visibilityChanged_();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget& window_;
    std::string key_;
    QByteArray kept_;
    const std::function<void()>& visibilityChanged_; // of the controller, which outlives the window
};

} // namespace

void WindowController::setWindow(QWidget* window, const Frame& frame) {
    window_ = window;
    window->setWindowTitle(frame.title);
    window->setWindowIcon(QIcon(QStringLiteral(":/fernhollow.svg")));
    window->setMinimumSize(frame.minimum);
    setAccessibleRole(*window, QAccessible::Window);
    auto* keeper =
        new FrameKeeper(*window, std::string(applicationIdentifier) + '.' + frame.key, visibilityChanged);
    if (keeper->restore()) {
        return;
    }
    const QSize size(std::max(frame.initial.width(), Theme::scaled(frame.initial.width())),
                     std::max(frame.initial.height(), Theme::scaled(frame.initial.height())));
    const QRect available = window->screen()->availableGeometry().adjusted(0, titleBarHeight, 0, 0);
    QRect place({}, size.boundedTo(available.size()).expandedTo(frame.minimum));
    place.moveCenter(available.center());
    window->setGeometry(place);
}

void WindowController::close() {
    if (window_) {
        window_->hide(); // which keeps its frame
        delete window_.data();
    }
}

} // namespace fernhollow
