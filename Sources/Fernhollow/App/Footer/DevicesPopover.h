#pragma once

#include "Support/RelativeTime.h"

#include <QFrame>

#include <string>
#include <vector>

class QLabel;
class QScrollArea;
class QVBoxLayout;

namespace fernhollow {

class Clock;
class ElidedLabel;
struct DeviceInfo;

/// The list of the account's machines, above the widget that opened it, its anchor.
///
/// Lies in the anchor's window, not in one of its own, which a screen reader would not find. It takes the
/// keyboard; Escape, a press outside and another window in front close it and give the keyboard back. It
/// exists only while it is open: closing it deletes it. Keeps nothing of the records but what it shows.
class DevicesPopover : public QFrame {
    Q_OBJECT

public:
    DevicesPopover(const Clock& clock, QWidget* anchor);

    /// `thisDevice` is the identifier of this machine, which is marked. Rows keep their places while the list
    /// is open, whichever machine was seen last.
    void setDevices(std::vector<DeviceInfo> devices, const std::string& thisDevice);

Q_SIGNALS:
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Row {
        QWidget* widget;
        ElidedLabel* name;
        QLabel* lastSeen;
        QLabel* mark; ///< of this machine
    };

    void keepOrder(std::vector<DeviceInfo>& devices);
    Row addRow();
    bool isOutside(QObject* widget) const;
    void place();

    const Clock& clock_;
    QWidget* anchor_;
    RelativeTime relativeTime_;
    QScrollArea* scroll_;
    QVBoxLayout* list_;
    QLabel* empty_;
    std::vector<Row> rows_;
    std::vector<std::string> order_; // of the identifiers, as they are shown
};

} // namespace fernhollow
