#pragma once

#include <QApplication>
#include <QLabel>
#include <QWidget>

#include <algorithm>
#include <vector>

namespace fernhollow::tests {

/// The visible widgets of a kind in a window, in their order.
template<class Widget>
std::vector<Widget*> shown(const QWidget& window) {
    std::vector<Widget*> found;
    for (Widget* widget : window.findChildren<Widget*>()) {
        if (widget->isVisible()) {
            found.push_back(widget);
        }
    }
    return found;
}

/// The visible widget that says `text` to a person or to a screen reader; null when there is none.
template<class Widget>
Widget* shown(const QWidget& window, const QString& text) {
    const auto widgets = shown<Widget>(window);
    const auto found = std::ranges::find_if(widgets, [&](const Widget* widget) {
        return widget->text() == text || widget->accessibleName() == text;
    });
    return found == widgets.end() ? nullptr : *found;
}

inline bool shows(const QWidget& window, const char* text) {
    return shown<QLabel>(window, QString::fromUtf8(text)) != nullptr;
}

/// The window, visible or not, whose title begins so; null when there is none.
inline QWidget* windowTitled(const QString& beginning) {
    const auto windows = QApplication::topLevelWidgets();
    const auto found = std::ranges::find_if(
        windows, [&](const QWidget* window) { return window->windowTitle().startsWith(beginning); });
    return found == windows.end() ? nullptr : *found;
}

} // namespace fernhollow::tests
