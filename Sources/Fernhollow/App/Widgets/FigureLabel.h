#pragma once

#include <QLabel>
#include <QString>

namespace fernhollow {

/// A number that may change with each press: it takes the room of its widest digits, so that the widgets
/// around it are laid out again only when it gets another length, and the height of its digits, because a
/// line of large text is mostly blank.
class FigureLabel : public QLabel {
public:
    FigureLabel(const QFont& font, const QColor& color, Qt::Alignment alignment = Qt::AlignLeading,
                QWidget* parent = nullptr);

    void setFigure(const QString& text);

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void reserveRoom();

    int baseline_ = 0; // from the top
};

} // namespace fernhollow
