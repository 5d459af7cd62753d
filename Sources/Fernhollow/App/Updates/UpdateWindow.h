#pragma once

#include "Platform/Activation.h"

#include <QDialog>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

class QBoxLayout;
class QLabel;
class QPlainTextEdit;
class QProgressBar;

namespace fernhollow {

/// What the window of updates shows at one time. All texts are plain: some come from the network.
struct UpdatePage {
    enum class Progress { none, busy, measured };

    struct Button {
        QString text{};
        std::function<void()> chosen{};
        bool isDefault = false;
        bool isApart = false; ///< at the leading edge, away from the others
    };

    QString title{};
    QString text{};
    std::optional<QString> notes{};
    Progress progress = Progress::none;
    std::vector<Button> buttons{};
    std::function<void()> closed{}; ///< by Escape or the window manager; the window is hidden by then
};

/// The one window of updates, whose page changes from step to step. It never blocks the others.
class UpdateWindow : public QDialog {
public:
    explicit UpdateWindow(QWidget* parent = nullptr);

    /// Puts the page in the place of the one before, whether or not the window is visible.
    void setPage(UpdatePage page);

    void setProgress(double fraction, const QString& detail);

    /// In front, with the keyboard.
    void showInFront(const ActivationToken& token);

    /// Visible, but what has the keyboard keeps it.
    void showQuietly();

    /// As Escape does.
    void reject() override;

private:
    void addButtons(std::vector<UpdatePage::Button> buttons);
    void fit();

    QLabel* title_;
    QLabel* text_;
    QPlainTextEdit* notes_;
    QProgressBar* progress_;
    QLabel* detail_;
    QBoxLayout* buttons_;
    std::function<void()> closed_;
    bool isPlaced_ = false;
};

/// `text` on one line, cut in the middle when it is longer than a version has any reason to be.
QString shortenedVersion(const QString& text);

/// `text` with places to break its longest words, which otherwise would widen a window without end.
QString breakable(const QString& text);

} // namespace fernhollow
