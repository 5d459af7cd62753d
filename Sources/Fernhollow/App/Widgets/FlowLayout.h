#pragma once

#include <QLayout>

#include <memory>
#include <vector>

namespace fernhollow {

/// Items side by side from the left, on as many lines as the width asks for: figures that stand in one line
/// where they fit, and below each other in a large font or a narrow window.
class FlowLayout : public QLayout {
public:
    enum class Columns {
        packed, ///< each item is as wide as it wants to be
        equal,  ///< all columns have the same width and fill the line
    };

    explicit FlowLayout(int spacing, Columns columns = Columns::packed);
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(items_.size()); }
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    Qt::Orientations expandingDirections() const override { return {}; }
    void setGeometry(const QRect& rect) override;

private:
    /// Where each item goes in a rectangle of this width.
    std::vector<QRect> places(int width) const;
    int columnWidth(int width) const;
    QSize largest() const;

    Columns columns_;
    std::vector<std::unique_ptr<QLayoutItem>> items_;
};

} // namespace fernhollow
