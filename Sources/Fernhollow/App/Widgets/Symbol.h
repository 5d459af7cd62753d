#pragma once

#include <QByteArray>
#include <QColor>
#include <QString>
#include <QSvgRenderer>
#include <QWidget>

namespace fernhollow {

/// The SVG document of a symbol in one colour, empty when there is none of that name.
QByteArray colouredSymbol(const QString& name, const QColor& color);

/// A symbol of the program's own set in one colour, crisp at any size, as large as its widget allows. Its
/// object name is the symbol's.
class Symbol : public QWidget {
public:
    /// `name` is the file's name without its ending. To assistive technology it is decoration.
    Symbol(const QString& name, const QColor& color, QSize size, QWidget* parent = nullptr);

    void setName(const QString& name);

    QSize sizeHint() const override { return size_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor color_;
    QSvgRenderer renderer_;
    QSize size_;
};

} // namespace fernhollow
