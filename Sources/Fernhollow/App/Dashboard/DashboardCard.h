#pragma once

#include "App/Widgets/Theme.h"

#include <QFrame>
#include <QString>

class QLabel;
class QVBoxLayout;

namespace fernhollow {

class ElidedLabel;

/// One card of the dashboard.
class DashboardCard : public QFrame {
protected:
    /// `name` is what a screen reader calls the card.
    explicit DashboardCard(const QString& name, QWidget* parent = nullptr);

    static QLabel* makeTitle(const QString& text);
    /// What the bar says that is pointed at; empty while there is none.
    static ElidedLabel* makeReading();
    /// The value over its caption, both at the same side.
    static QWidget* makeFigure(QLabel* value, const QString& caption, Theme::TextStyle captionStyle,
                               Qt::Alignment alignment);

    QVBoxLayout* body_;
};

} // namespace fernhollow
