#include "App/Updates/UpdateWindow.h"

#include "App/Widgets/Theme.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

constexpr int margin = 20;
constexpr int columnSpacing = 16;
constexpr int rowSpacing = 10;
constexpr int buttonSpacing = 8;
constexpr double windowWidth = 500; // points; the longest row of buttons and the icon fit
constexpr double iconSide = 56;
constexpr double notesHeight = 180;
constexpr double progressHeight = 10;
constexpr int progressSteps = 1000;
constexpr int longestVersion = 32;
constexpr int longestWord = 40;
constexpr int longestText = 600;

constexpr QChar zeroWidthSpace(0x200B);

QLabel* makeWrapped(Theme::TextStyle style, const QColor& color) {
    auto* label = Theme::makeLabel({}, style, color);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeading | Qt::AlignTop);
    return label;
}

QLabel* makeIcon() {
    const int side = Theme::scaled(iconSide);
    auto* icon = new QLabel;
    icon->setPixmap(QIcon(QStringLiteral(":/fernhollow.svg")).pixmap(side, side));
    icon->setFixedSize(side, side);
    return icon;
}

QPlainTextEdit* makeNotes() {
    auto* notes = new QPlainTextEdit;
    notes->setReadOnly(true);
    notes->setTabChangesFocus(true);
    notes->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    notes->setFont(Theme::font(Theme::TextStyle::callout));
    notes->setAccessibleName(QStringLiteral("Release notes"));
    notes->setMinimumHeight(Theme::scaled(notesHeight));
    return notes;
}

} // namespace

QString shortenedVersion(const QString& text) {
    QString line = text.simplified();
    if (line.size() <= longestVersion) {
        return line;
    }
    return line.left(longestVersion / 2) + QChar(u'…') + line.right(longestVersion / 2 - 1);
}

QString breakable(const QString& text) {
    QString result;
    int word = 0;
    for (const QChar character : text.left(longestText)) {
        word = character.isSpace() ? 0 : word + 1;
        if (word > longestWord && !character.isLowSurrogate()) {
            result += zeroWidthSpace;
            word = 1;
        }
        result += character;
    }
    return text.size() > longestText ? result + QChar(u'…') : result;
}

UpdateWindow::UpdateWindow(QWidget* parent)
    : QDialog(parent, Qt::Window), title_(makeWrapped(Theme::TextStyle::headline, Theme::primary)),
      text_(makeWrapped(Theme::TextStyle::body, Theme::secondary)), notes_(makeNotes()),
      progress_(new QProgressBar), detail_(Theme::makeLabel({}, Theme::TextStyle::caption, Theme::secondary)),
      buttons_(new QHBoxLayout) {
    setWindowTitle(QStringLiteral("Software Update"));
    setWindowIcon(QIcon(QStringLiteral(":/fernhollow.svg")));
    setModal(false);
    progress_->setTextVisible(false);
    progress_->setFixedHeight(Theme::scaled(progressHeight));
    progress_->setAccessibleName(QStringLiteral("Progress"));
    buttons_->setSpacing(buttonSpacing);

    auto* column = new QVBoxLayout;
    column->setSpacing(rowSpacing);
    column->addWidget(title_);
    column->addWidget(text_);
    column->addWidget(notes_, 1);
    column->addWidget(progress_);
    column->addWidget(detail_);
    column->addStretch();
    auto* top = new QHBoxLayout;
    top->setSpacing(columnSpacing);
    top->addWidget(makeIcon(), 0, Qt::AlignTop);
    top->addLayout(column, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(margin);
    layout->addLayout(top, 1);
    layout->addLayout(buttons_);
}

void UpdateWindow::setPage(UpdatePage page) {
    closed_ = std::move(page.closed);
    title_->setText(breakable(page.title));
    text_->setText(breakable(page.text));
    text_->setVisible(!page.text.isEmpty());
    setAccessibleDescription(page.title);
    notes_->setPlainText(page.notes.value_or(QString()));
    notes_->setVisible(page.notes.has_value());
    progress_->setVisible(page.progress != UpdatePage::Progress::none);
    progress_->setRange(0, page.progress == UpdatePage::Progress::measured ? progressSteps : 0);
    progress_->setValue(0);
    detail_->setText({});
    detail_->setVisible(page.progress == UpdatePage::Progress::measured);
    addButtons(std::move(page.buttons));
    fit();
}

void UpdateWindow::addButtons(std::vector<UpdatePage::Button> buttons) {
    while (QLayoutItem* item = buttons_->takeAt(0)) {
        if (QWidget* old = item->widget()) {
            old->hide();
            old->deleteLater(); // it may be the one that was just chosen
        }
        delete item;
    }
    const bool hasDefault = std::ranges::any_of(buttons, &UpdatePage::Button::isDefault);
    bool isStretched = false;
    for (auto& [text, chosen, isDefault, isApart] : buttons) {
        if (!isApart && !std::exchange(isStretched, true)) {
            buttons_->addStretch();
        }
        auto* button = new QPushButton(text, this);
        button->setProperty(isDefault ? "prominent" : "secondary", true);
        button->setFont(Theme::font(Theme::TextStyle::body));
        button->setAutoDefault(hasDefault);
        button->setDefault(isDefault);
        connect(button, &QPushButton::clicked, this, [choose = std::move(chosen)] {
            const auto chosenNow = choose; // outlives the button
            chosenNow();
        });
        buttons_->addWidget(button);
        button->show(); // now, not in a later turn of the event loop: the size depends on it
        if (isDefault) {
            button->setFocus();
        }
    }
}

// Wrapped texts need a height for their width, which top-level windows do not ask for by themselves.
void UpdateWindow::fit() {
    layout()->activate();
    const int width = std::max(Theme::scaled(windowWidth), layout()->totalMinimumSize().width());
    const int height = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width)
                                                     : layout()->totalSizeHint().height();
    setMinimumSize(width, height);
    resize(width, height);
}

void UpdateWindow::setProgress(double fraction, const QString& detail) {
    progress_->setRange(0, progressSteps);
    progress_->setValue(qRound(fraction * progressSteps));
    detail_->setText(detail);
}

void UpdateWindow::showInFront(const ActivationToken& token) {
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    if (!std::exchange(isPlaced_, true)) {
        move(screen()->availableGeometry().center() - rect().center());
    }
    bringToFront(*this, token);
}

void UpdateWindow::showQuietly() {
    setAttribute(Qt::WA_ShowWithoutActivating);
    if (!std::exchange(isPlaced_, true)) {
        move(screen()->availableGeometry().center() - rect().center());
    }
    show();
}

void UpdateWindow::reject() {
    hide();
    if (const auto closed = std::exchange(closed_, nullptr)) {
        closed();
    }
}

} // namespace fernhollow
