#pragma once

#include "Platform/Activation.h"

#include <QPointer>
#include <QSize>
#include <QString>
#include <QWidget>

#include <functional>
#include <string>

namespace fernhollow {

/// One window of the program: made when it is first shown, afterwards hidden and shown again, never remade.
/// Main thread only; lives as long as the process and holds nothing after close(). Size and place of the
/// window are kept for the next start.
class WindowController {
public:
    /// Destroys the window, at the end of the program.
    void close();

    /// Whether the window has been shown in this run.
    bool hasBeenShown() const { return window_ != nullptr; }

    bool isVisible() const { return window_ && window_->isVisible() && !window_->isMinimized(); }

    /// Called after the window was shown or hidden.
    std::function<void()> visibilityChanged;

protected:
    struct Frame {
        QString title;
        std::string key; ///< under which the user defaults keep its size and place
        /// In the middle of the screen; larger with a large font, and smaller where the screen is.
        QSize initial;
        QSize minimum;
    };

    WindowController() = default;
    ~WindowController() = default;
    WindowController(const WindowController&) = delete;
    WindowController& operator=(const WindowController&) = delete;

    /// Takes over what is the window from now on.
    void setWindow(QWidget* window, const Frame& frame);

    QPointer<QWidget> window_;
};

} // namespace fernhollow
