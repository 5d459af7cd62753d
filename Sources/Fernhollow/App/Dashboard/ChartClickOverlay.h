#pragma once

#include "App/Charts/ChartProxy.h"

#include <QWidget>

#include <optional>
#include <vector>

class QAbstractButton;

namespace fernhollow {

/// What makes a chart of days answer: a clear layer over it that turns a place into a day.
///
/// The pointer's day is selected while it moves and opened by a click; once it leaves, the day that has the
/// keyboard is selected, if one has. For the keyboard and a screen reader
/// each day is a button of its own: one of them takes the focus, the arrow keys go on to its neighbours.
class ChartClickOverlay : public QWidget {
    Q_OBJECT

public:
    struct Day {
        Instant noon;
        QString name; ///< as it is spoken

        bool operator==(const Day&) const = default;
    };

    explicit ChartClickOverlay(BarChart* chart);

    /// One day for each column of the chart, which `proxy` reads.
    void setDays(ChartProxy proxy, std::vector<Day> days);

Q_SIGNALS:
    /// Nothing when no day is selected any more.
    void daySelected(std::optional<fernhollow::Instant> day);
    void dayClicked(fernhollow::Instant day);

protected:
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void handleHover(double x);
    void handleTap(double x);
    void selectFocused();
    std::optional<Instant> dateAtLocation(double x) const;
    void setButtons(std::size_t count);
    QAbstractButton* addButton();
    void placeButtons();
    bool moveFocus(int from, int key);
    int indexOf(const QObject* button) const;

    BarChart* chart_;
    std::optional<ChartProxy> proxy_;
    std::vector<Day> days_;
    std::vector<QAbstractButton*> buttons_;
};

} // namespace fernhollow
