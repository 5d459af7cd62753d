#pragma once

#include <QLabel>
#include <QString>

namespace fernhollow {

/// One line of text, shortened to the width that there is. The whole text is its
/// tooltip while it is shortened, and always what a screen reader speaks.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(Qt::TextElideMode mode = Qt::ElideMiddle, QWidget* parent = nullptr);

    void setFullText(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void elide();

    Qt::TextElideMode mode_;
    QString fullText_;
};

} // namespace fernhollow
