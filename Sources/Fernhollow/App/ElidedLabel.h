#pragma once

#include <QLabel>
#include <QString>

namespace fernhollow {

/// One line of text, shortened in the middle to the width that there is. The whole text is its
/// tooltip while it is shortened, and always what a screen reader speaks.
class ElidedLabel : public QLabel {
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    void setFullText(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void elide();

    QString fullText_;
};

} // namespace fernhollow
