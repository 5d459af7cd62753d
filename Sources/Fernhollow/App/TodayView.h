#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace fernhollow {

/// Today's number, as large as the window allows.
class TodayView : public QWidget {
public:
    explicit TodayView(QWidget* parent = nullptr);

    void setCount(const QString& formatted);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fitNumber();

    QLabel* number_;
};

} // namespace fernhollow
