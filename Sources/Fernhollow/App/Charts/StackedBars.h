#pragma once

#include "App/Charts/BarChart.h"
#include "App/Charts/QCustomPlotHeader.h"

namespace fernhollow {

/// The bars of a BarChart, as its plotting library draws them: the keys are columns, the values counts.
class StackedBars : public QCPAbstractPlottable {
public:
    /// A piece of a bar between two counts.
    struct Piece {
        int column = 0;
        double from = 0;
        double to = 0;
        QColor color;
        bool isTop = false; ///< nothing lies on it
    };

    StackedBars(QCPAxis* columns, QCPAxis* counts);

    /// Whether what is seen of the bars differs from before; `pixels` is the height of one count.
    bool setPieces(std::vector<Piece> pieces, double pixels);
    bool setHighlight(std::optional<BarChart::Highlight> highlight);

    double selectTest(const QPointF& position, bool onlySelectable, QVariant* details) const override;
    QCPRange getKeyRange(bool& found, QCP::SignDomain domain) const override;
    QCPRange getValueRange(bool& found, QCP::SignDomain domain, const QCPRange& keys) const override;

protected:
    void draw(QCPPainter* painter) override;
    void drawLegendIcon(QCPPainter* painter, const QRectF& rect) const override;

private:
    QRectF rect(int column, double from, double to) const;
    void drawPiece(QCPPainter& painter, const Piece& piece) const;
    void drawHighlight(QCPPainter& painter) const;

    std::vector<Piece> pieces_;
    std::vector<int> shown_; // the edges of the pieces in pixels, to see a change
    std::optional<BarChart::Highlight> highlight_;
};

} // namespace fernhollow
