#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QString>
#include <QSvgRenderer>
#include <QWidget>

namespace fernhollow {

/// The small picture beside the state of updates: a symbol, an indeterminate progress indicator or a progress
/// ring. The indicator turns only while it can be seen and the style animates. Decoration to assistive
/// technology.
class UpdateStatusIcon : public QWidget {
    Q_OBJECT

public:
    explicit UpdateStatusIcon(QWidget* parent = nullptr);

    /// The object name becomes `name`.
    void showSymbol(const QString& name, const QColor& color);
    void showSpinner(const QColor& color);
    /// `progress` from 0 to 1.
    void showRing(double progress, const QColor& color);

    bool isTurning() const { return turn_.isActive(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    enum class Kind { symbol, spinner, ring };

    void show(Kind kind, const QString& name, const QColor& color);
    void paintSpinner(QPainter& painter) const;
    void paintRing(QPainter& painter) const;
    void turnWhileSeen();

    Kind kind_ = Kind::symbol;
    QColor color_;
    QSvgRenderer symbol_;
    double progress_ = 0;
    int step_ = 0;
    QBasicTimer turn_;
};

} // namespace fernhollow
