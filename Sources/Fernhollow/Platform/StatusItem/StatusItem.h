#pragma once

#include "Platform/StatusItem/StatusMenu.h"
#include "Platform/StatusItem/Tray.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

namespace fernhollow {

/// Which pictures are offered. Hosts that take the largest and squeeze it into a square need the square ones;
/// of the wide ones the largest shows the whole text.
enum class StatusIcons { square, wide };

/// One item in the desktop's status bar whose title is a short text, here today's count.
///
/// Where the desktop's hosts show labels the title is the exact text; for hosts that only show icons
/// it is drawn into the icon, shortened when it does not fit. The item appears, disappears and
/// appears again as hosts come and go. Main thread only.
class StatusItem : public QObject {
    Q_OBJECT

public:
    /// `tray`, which may be null, shows the item where no host of the StatusNotifierItem protocol does.
    explicit StatusItem(StatusIcons icons, std::unique_ptr<Tray> tray = nullptr);
    ~StatusItem() override;

    /// The text to show. Cheap: an unchanged text does nothing, and quick changes reach the host
    /// at a rate that a person can still read.
    void setTitle(const QString& title);
    QString title() const;

    /// A sentence that the item's tooltip adds to the title; empty for none.
    void setNote(const QString& note);

    /// Whether the text is to look as if it stood still: nothing is counted.
    void setHalted(bool halted);

    /// What a right click offers. Cheap: entries whose labels are the same are taken for the same, so an open
    /// menu stays as it is.
    void setMenu(const StatusMenu& menu);

    /// Whether any host shows the item now.
    bool isShown() const;

Q_SIGNALS:
    /// `activationToken` is the leave for a window to come to the front, empty where the host gave none.
    void clicked(const QByteArray& activationToken);
    void shownChanged(bool shown);
    /// A host that is still there no longer shows the item.
    void dropped();

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace fernhollow
