#include "App/Onboarding/OnboardingSteps.h"

#include "App/Widgets/Symbol.h"
#include "App/Widgets/Theme.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace fernhollow {
namespace {

using Text = std::function<QString(const OnboardingTexts&)>;

constexpr int sideMargin = 24;
constexpr int stepMargin = 16;
constexpr int columnWidth = 372;
constexpr int partSpacing = 24;
constexpr int textSpacing = 12;
constexpr QSize largeSymbol{80, 80};
constexpr QSize page{100, 120};
constexpr int pageRadius = 12;
constexpr int pageSpacing = 8;
constexpr int pageSymbol = 40;
constexpr int iconFrame = 44;
constexpr int iconSize = 22;
constexpr int iconRadius = 10;
constexpr int featureSpacing = 16;
constexpr int featureGap = 14;
constexpr int featureTextSpacing = 4;
constexpr int noteRadius = 8;
constexpr int noteSpacing = 8;
constexpr int noteSymbol = 18;

/// A step's parts from top to bottom, in the middle of the room that there is, no wider than is easily read.
class Step : public QWidget {
public:
    Step() : layout_(new QVBoxLayout(this)) {
        layout_->setContentsMargins(sideMargin, stepMargin, sideMargin, stepMargin);
        layout_->setSpacing(partSpacing);
        layout_->addStretch();
    }

    void add(QWidget* part, Qt::Alignment alignment = {}) { layout_->addWidget(part, 0, alignment); }
    void end() { layout_->addStretch(); }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        const int side = std::max(sideMargin, (width() - Theme::scaled(columnWidth)) / 2);
        layout_->setContentsMargins(side, stepMargin, side, stepMargin);
    }

private:
    QVBoxLayout* layout_;
};

QLabel* makeText(OnboardingLabels& labels, const QFont& font, const QColor& color, Text text) {
    QLabel* label = Theme::makeLabel({}, font, color);
    label->setWordWrap(true);
    labels.emplace_back(label, std::move(text));
    return label;
}

QLabel* makeCentred(OnboardingLabels& labels, const QFont& font, const QColor& color, Text text) {
    QLabel* label = makeText(labels, font, color, std::move(text));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

/// A title over a text.
QWidget* makeHeading(OnboardingLabels& labels, Text title, Text text) {
    auto* heading = new QWidget;
    auto* layout = new QVBoxLayout(heading);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(textSpacing);
    layout->addWidget(makeCentred(labels, Theme::font(Theme::TextStyle::title, QFont::Bold), Theme::primary,
                                  std::move(title)));
    layout->addWidget(
        makeCentred(labels, Theme::font(Theme::TextStyle::body), Theme::secondary, std::move(text)));
    return heading;
}

QString rgba(const QColor& color, double opacity) {
    return QStringLiteral("rgba(%1, %2, %3, %4%)")
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(qRound(opacity * 100));
}

QFrame* makeRounded(const QString& color, int radius) {
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("rounded"));
    frame->setStyleSheet(QStringLiteral("#rounded { background: %1; border-radius: %2px; }")
                             .arg(color, QString::number(radius)));
    return frame;
}

/// A text that takes one line where there is room for it, and no more room than its lines.
class NoteText : public QLabel {
public:
    explicit NoteText(int widest) : widest_(widest) {
        setTextFormat(Qt::PlainText);
        setWordWrap(true);
        setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    }

    QSize sizeHint() const override {
        const int line = fontMetrics().horizontalAdvance(text()) + 1;
        const int width = std::min(line, Theme::scaled(widest_));
        return {width, heightForWidth(width)};
    }

private:
    int widest_;
};

struct Note {
    QString symbol;
    QColor symbolColor;
    QString background;
    QFont font;
    QMargins padding;
    Qt::Alignment alignment;
};

/// A symbol beside a text on a ground of its own.
QWidget* makeNote(OnboardingLabels& labels, const Note& note, Text text) {
    auto* frame = makeRounded(note.background, noteRadius);
    auto* layout = new QHBoxLayout(frame);
    layout->setContentsMargins(note.padding);
    layout->setSpacing(noteSpacing);
    const int side = Theme::scaled(noteSymbol);
    layout->addWidget(new Symbol(note.symbol, note.symbolColor, {side, side}), 0, note.alignment);
    auto* label =
        new NoteText(columnWidth - note.padding.left() - note.padding.right() - noteSpacing - noteSymbol);
    label->setFont(note.font);
    Theme::setTextColor(*label, Theme::primary);
    labels.emplace_back(label, std::move(text));
    layout->addWidget(label);
    return frame;
}

QWidget* makeFeatureRow(OnboardingLabels& labels, const QString& symbol, std::size_t feature) {
    auto* icon = makeRounded(rgba(Theme::tint, 0.15), iconRadius);
    icon->setFixedSize(iconFrame, iconFrame);
    auto* iconLayout = new QVBoxLayout(icon);
    iconLayout->setContentsMargins(0, 0, 0, 0);
    iconLayout->addWidget(new Symbol(symbol, Theme::tint, {iconSize, iconSize}), 0, Qt::AlignCenter);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(featureTextSpacing);
    texts->addStretch();
    texts->addWidget(
        makeText(labels, Theme::font(Theme::TextStyle::headline), Theme::primary,
                 [feature](const OnboardingTexts& all) { return all.features.at(feature).title; }));
    texts->addWidget(
        makeText(labels, Theme::font(Theme::TextStyle::subheadline), Theme::secondary,
                 [feature](const OnboardingTexts& all) { return all.features.at(feature).description; }));
    texts->addStretch();

    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(featureGap);
    layout->addWidget(icon, 0, Qt::AlignVCenter);
    layout->addLayout(texts, 1);
    return row;
}

/// A blank page that says 0.
QWidget* makePage() {
    auto* frame = makeRounded(Theme::control.name(), pageRadius);
    frame->setFixedSize(page);
    auto* layout = new QVBoxLayout(frame);
    layout->setSpacing(pageSpacing);
    layout->addStretch();
    layout->addWidget(new Symbol(QStringLiteral("file-text"), Theme::tertiary, {pageSymbol, pageSymbol}), 0,
                      Qt::AlignHCenter);
    auto* zero = Theme::makeLabel(QStringLiteral("0"), Theme::font(24.0, QFont::Bold), Theme::secondary);
    layout->addWidget(zero, 0, Qt::AlignHCenter);
    layout->addStretch();
    return frame;
}

} // namespace

QWidget* makeWelcomeStep(OnboardingLabels& labels) {
    auto* step = new Step;
    step->add(new Symbol(QStringLiteral("keyboard-fill"), Theme::primary, largeSymbol), Qt::AlignHCenter);
    step->add(makeHeading(
        labels, [](const OnboardingTexts& texts) { return texts.welcomeTitle; },
        [](const OnboardingTexts& texts) { return texts.welcomeSubtitle; }));
    step->end();
    return step;
}

QWidget* makeDayOneStep(OnboardingLabels& labels) {
    auto* step = new Step;
    step->add(makePage(), Qt::AlignHCenter);
    step->add(makeHeading(
        labels, [](const OnboardingTexts& texts) { return texts.dayOneTitle; },
        [](const OnboardingTexts& texts) { return texts.dayOneExplanation; }));
    step->add(makeNote(labels,
                       {QStringLiteral("stars"), Theme::yellow, rgba(Theme::yellow, 0.15),
                        Theme::font(Theme::TextStyle::callout, QFont::Medium), QMargins(16, 10, 16, 10),
                        Qt::AlignVCenter},
                       [](const OnboardingTexts& texts) { return texts.dayOneHighlight; }),
              Qt::AlignHCenter);
    step->end();
    return step;
}

QWidget* makeHowItWorksStep(OnboardingLabels& labels) {
    auto* step = new Step;
    step->add(makeCentred(labels, Theme::font(Theme::TextStyle::title, QFont::Bold), Theme::primary,
                          [](const OnboardingTexts& texts) { return texts.howItWorksTitle; }));
    auto* features = new QWidget;
    auto* layout = new QVBoxLayout(features);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(featureSpacing);
    std::size_t feature = 0;
    for (const auto& symbol :
         {QStringLiteral("window"), QStringLiteral("bar-chart-fill"), QStringLiteral("cloud-fill")}) {
        layout->addWidget(makeFeatureRow(labels, symbol, feature++));
    }
    step->add(features);
    step->end();
    return step;
}

QWidget* makeReadyStep(OnboardingLabels& labels) {
    auto* step = new Step;
    step->add(new Symbol(QStringLiteral("check-circle-fill"), Theme::success, largeSymbol), Qt::AlignHCenter);
    step->add(makeHeading(
        labels, [](const OnboardingTexts& texts) { return texts.readyTitle; },
        [](const OnboardingTexts& texts) { return texts.readySubtitle; }));
    step->add(makeNote(labels,
                       {QStringLiteral("shield-lock-fill"), Theme::success, Theme::control.name(),
                        Theme::font(Theme::TextStyle::caption), QMargins(12, 12, 12, 12), Qt::AlignVCenter},
                       [](const OnboardingTexts& texts) { return texts.privacyNote; }),
              Qt::AlignHCenter);
    step->end();
    return step;
}

} // namespace fernhollow
