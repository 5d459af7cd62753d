#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class QCustomPlot;

namespace fernhollow {

class StackedBars;

/// Bars of stacked segments over a row of columns of equal width, column 0 on the left.
///
/// Draws again only when a pixel of it would change, so that it may be given its figures with each press.
class BarChart : public QWidget {
    Q_OBJECT

public:
    struct Segment {
        int column = 0;
        std::int64_t count = 0;
        QColor color;
    };

    /// A grid line and a label at a column. Labels for which there is no room beside the one before are left
    /// out.
    struct Mark {
        int column = 0;
        QString label;

        bool operator==(const Mark&) const = default;
    };

    /// Lifts one column out: its bar is covered up to `top`.
    struct Highlight {
        int column = 0;
        std::int64_t top = 0;

        bool operator==(const Highlight&) const = default;
    };

    struct Style {
        int columns = 24;
        int height = 0; ///< of the whole chart with its labels, in points beside a body text of 13
        bool hasCountAxis = false;
        QString columnTitle = {}; ///< of the axis; none when empty
        QString countTitle = {};
    };

    explicit BarChart(Style style, QWidget* parent = nullptr);

    void setColumns(int columns);
    /// The segments of a column lie on each other in the order given.
    void setSegments(const std::vector<Segment>& segments);
    void setMarks(std::vector<Mark> marks);
    void setHighlight(std::optional<Highlight> highlight);

    int columns() const { return style_.columns; }
    /// Where the column lies in this widget's coordinates, without the labels.
    QRectF columnRect(int column) const;
    /// The column at `x` in this widget's coordinates; none beside the plot.
    std::optional<int> columnAt(double x) const;

Q_SIGNALS:
    /// The pointer is over this column's bar or above it; nothing when it is over none any more.
    void columnPointedAt(std::optional<int> column);

protected:
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void applyStyle();
    void layOut();
    void placeMarks();
    QMargins margins() const;

    Style style_;
    QCustomPlot* plot_;
    StackedBars* bars_;
    std::vector<Mark> marks_;
    double top_ = 0; // of the count axis
};

/// What is said of an hour of a chart: "14:00 – 15:00: 1,234".
QString hourReading(int hour, const std::string& count);

} // namespace fernhollow
