#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

#include <cstdint>
#include <optional>
#include <vector>

class QCPItemRect;
class QCustomPlot;

namespace fernhollow {

class BarsPlottable;

/// Bars of stacked segments over a row of columns of equal width, from column 0 on the left.
///
/// Draws again only when a pixel of it would change, so that it may be given its figures with each press.
class BarChart : public QWidget {
public:
    struct Segment {
        int column = 0;
        std::int64_t count = 0;
        QColor color;
    };

    /// A grid line and a label at a column.
    struct Mark {
        int column = 0;
        QString label;

        bool operator==(const Mark&) const = default;
    };

    struct Highlight {
        int column = 0;
        std::int64_t top = 0;

        bool operator==(const Highlight&) const = default;
    };

    struct Style {
        int columns = 24;
        int height = 0; ///< of the whole chart, axis labels included
        bool hasCountAxis = false;
        QString columnTitle = {}; ///< under the axis; none when empty
        QString countTitle = {};
    };

    explicit BarChart(Style style, QWidget* parent = nullptr);
    ~BarChart() override;

    /// The segments of a column lie on each other in the order given.
    void setSegments(std::vector<Segment> segments);
    void setMarks(std::vector<Mark> marks);
    void setHighlight(std::optional<Highlight> highlight);

    /// Where the column of that number lies in this widget's coordinates, axis labels left out.
    QRect columnRect(int column) const;
    /// The column at `x` in this widget's coordinates; none beside the plot.
    std::optional<int> columnAt(double x) const;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
};

} // namespace fernhollow
