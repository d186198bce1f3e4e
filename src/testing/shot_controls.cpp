// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/shot_controls.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMargins>
#include <QPalette>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "common/text.h"
#include "ui/contrast.h"
#include "ui/fit_label.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"
#include "ui/page_input.h"

namespace davo {

namespace {

// Of the chart's width in the prompt's row, in parts of a hundred, at most.
constexpr int kChartShare = 40;
constexpr int kLeastChart = 300;
constexpr int kLeastCard = 640;
constexpr const char* kLongestPrompt = "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)";
constexpr double kPromptGrowth = 2.0;
constexpr double kConfirmCapitals = 5.5;  // mm
constexpr double kDamageCapitals = 4.0;   // mm
constexpr double kUnitCapitals = 5.0;     // mm
constexpr double kCardCapitals = 6.1;     // mm, 24 point
constexpr double kCardGrowth = 1.3;       // to 32 point
constexpr double kDiskCapitals = 3.2;     // mm
constexpr double kDiskGrowth = 1.25;
constexpr double kDamageGrowth = kPromptCapitals / kDamageCapitals;
constexpr int kDamageStretch = 3;         // mostly it comes when the prompt is empty
constexpr int kPromptStretch = 9;         // that must be readable beside it
constexpr double kHeadingCapitals = 5.0;  // mm
constexpr double kCaptionGrowth = 1.2;
constexpr double kBoxGrowth = 1.4;
constexpr int kInputHeight = 34;  // a glove meets it
constexpr QMargins kMargins(8, 5, 8, 6);
constexpr int kSmallestScreen = 1024;
constexpr int kIndent = 12;  // between the readings and the results
constexpr int kSpacing = 4;  // what is saved here is the prompt's on a small screen

void EnlargeTo(QWidget* widget, double capitals) {
    QFont font = widget->font();
    font.setBold(true);
    font.setPixelSize(PixelSizeForCapitals(font, capitals, *widget));
    widget->setFont(font);
}

// What is disabled is still to be read in sunlight: half way between the ink and the ground.
void DarkenDisabledText(QWidget* window) {
    QPalette palette = window->palette();
    const QColor ink = palette.color(QPalette::Active, QPalette::WindowText);
    const QColor ground = palette.color(QPalette::Active, QPalette::Window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, Mixed(ink, ground, 0.5));
    window->setPalette(palette);
}

QLabel* Caption(QWidget* window, const char* name, const char* text) {
    return MakeLabel(window, name, QLatin1String(text), kCaptionGrowth);
}

QLineEdit* Box(QWidget* frame, const char* name, const QLabel* label) {
    auto* box = Named(new QLineEdit(frame), name);
    box->setAccessibleName(label->text());
    Enlarge(box, kBoxGrowth);
    return box;
}

// A box that shows a result: it can be read and copied, and is no stop of the Tab key.
QLineEdit* ResultBox(QWidget* frame, const char* name, const QLabel* label) {
    QLineEdit* box = Box(frame, name, label);
    box->setReadOnly(true);
    box->setFocusPolicy(Qt::ClickFocus);
    return box;
}

QGroupBox* Frame(QWidget* window, const char* name, const char* title = "") {
    return Named(new QGroupBox(QLatin1String(title), window), name);
}

template <class Layout>
Layout* Tight(Layout* layout) {
    layout->setContentsMargins(kMargins);
    layout->setSpacing(kSpacing);
    return layout;
}

// As wide as text at least.
void MakeRoomFor(QLineEdit* box, const char* text) {
    const int frame = box->sizeHint().width() -
                      box->fontMetrics().horizontalAdvance(QString(17, QLatin1Char('x')));
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QLatin1String(text)) + frame);
}

// As wide as the widest of its captions: the buttons keep their places in a shot.
BigButton* ButtonOfWidest(QWidget* window, const char* name,
                          std::initializer_list<const char*> captions) {
    auto* button = new BigButton(window, name);
    for (const char* caption : captions) {
        button->setText(QLatin1String(caption));
        button->setMinimumWidth(std::max(button->minimumWidth(), button->sizeHint().width()));
    }
    return button;
}

QHBoxLayout* BuildTopRow(QWidget* window) {
    QLabel* test = Caption(window, "lblTest", "");
    EnlargeTo(test, kHeadingCapitals);
    test->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    KeepRoomWhenHidden(test);
    QGroupBox* escape = Frame(window, "Frame1", "Hit the ESC key to Abort Test && Exit");
    // It frames nothing: a line of text, like the time.
    escape->setFixedSize(escape->fontMetrics().size(Qt::TextShowMnemonic, escape->title()));
    auto* row = new QHBoxLayout;
    row->addWidget(test, 1);
    row->addWidget(escape);
    row->addWidget(Caption(window, "lblTime", ""));
    return row;
}

QGroupBox* BuildData(QWidget* window) {
    QGroupBox* frame = Frame(window, "Frame3", "DATA");
    auto* grid = Tight(new QGridLayout(frame));
    const auto add = [&](QLabel* caption, const char* name, int line, int lines, int column) {
        QLineEdit* box = ResultBox(frame, name, caption);
        grid->addWidget(caption, line, column, lines, 1);
        grid->addWidget(box, line, column + 1, lines, 1);
        return box;
    };
    // Six lines, so that two large readings are beside three results.
    const auto addReading = [&](QLabel* caption, const char* name, QLabel* unit, int line) {
        QLineEdit* box = add(caption, name, line, 3, 0);
        EnlargeTo(box, kReadingCapitals);
        box->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        MakeRoomFor(box, "0000.00");
        EnlargeTo(unit, kUnitCapitals);
        grid->addWidget(unit, line, 2, 3, 1);
    };
    const auto addResult = [&](QLabel* caption, const char* name, int line) {
        caption->setIndent(kIndent);
        return add(caption, name, line, 2, 3);
    };
    const auto caption = [frame](const char* name, const char* text) {
        return Caption(frame, name, text);
    };
    addReading(caption("Label1", "Current:"), "txtCur", caption("lblAmperes", "A"), 0);
    addReading(caption("Label2", "Voltage:"), "txtVolt", caption("lblVolts", "V"), 3);
    addResult(caption("Label3", "Ratio:"), "txtRatio", 0);
    MakeRoomFor(addResult(caption("Label4", "Polarity:"), "txtPolarity", 2), "UNDETERMINED");
    addResult(caption("lblPE", "Percent Error:"), "txtPE", 4);
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(4, 2);
    return frame;
}

QGroupBox* BuildCounters(QWidget* window) {
    QGroupBox* frame = Frame(window, "Frame5");
    auto* column = Tight(new QVBoxLayout(frame));
    for (const char* name : {"lblSatCount", "lblRatioCount", "lblCRCount"}) {
        QLabel* label = Caption(frame, name, "");
        label->setMinimumWidth(
            label->fontMetrics().horizontalAdvance(QStringLiteral("Ratio - 100 ")));
        column->addWidget(label);
    }
    return frame;
}

// What shows a member of the mirror, by its name.
constexpr std::pair<const char*, ControlView ShotScreen::*> kMirrored[] = {
    {"lblTest", &ShotScreen::lblTest},
    {"lblTime", &ShotScreen::lblTime},
    {"lblMessage", &ShotScreen::lblMessage},
    {"lblConfirm", &ShotScreen::lblConfirm},
    {"lblDamage", &ShotScreen::lblDamage},
    {"lblNotice", &ShotScreen::lblNotice},
    {"lblPE", &ShotScreen::lblPE},
    {"lblCRatio", &ShotScreen::lblCRatio},
    {"lblCRCount", &ShotScreen::lblCRCount},
    {"lblRatioCount", &ShotScreen::lblRatioCount},
    {"lblSatCount", &ShotScreen::lblSatCount},
    {"txtCur", &ShotScreen::txtCur},
    {"txtVolt", &ShotScreen::txtVolt},
    {"txtRatio", &ShotScreen::txtRatio},
    {"txtPolarity", &ShotScreen::txtPolarity},
    {"txtPE", &ShotScreen::txtPE},
    {"txtHVolt", &ShotScreen::txtHVolt},
    {"txtXVolt", &ShotScreen::txtXVolt},
    {"txtCRatio", &ShotScreen::txtCRatio},
    {"cmdStart", &ShotScreen::cmdStart},
    {"cmdContinue", &ShotScreen::cmdContinue},
    {"cmdCancel", &ShotScreen::cmdCancel},
    {"cmdHeader", &ShotScreen::cmdHeader},
    {"cmdExit", &ShotScreen::cmdExit}};

}  // namespace

ShotControls::ShotControls(QWidget* window) {
    window->setWindowTitle(QStringLiteral("Computer Control"));
    window->setFont(FittingFont(*window));
    Build(window);
}

// Found by trial: what the controls need depends on the system's letters and their shapes.
QFont ShotControls::FittingFont(const QWidget& window) {
    constexpr double kSmaller = 0.95;
    constexpr double kLeastPoints = 8;
    const int room = std::max(kSmallestScreen, window.screen()->availableSize().width());
    ShotScreen widest;
    widest.lblTest.text = "SATURATION TEST";
    widest.lblTime.text = "00/00/0000 - 00:00:00 PM";
    for (QFont font = window.font();; font.setPointSizeF(font.pointSizeF() * kSmaller)) {
        QWidget trial;
        trial.setWindowTitle(window.windowTitle());
        trial.setFont(font);
        ShotControls controls;
        controls.Build(&trial);
        controls.Paint(nullptr, widest);
        const bool fits = trial.minimumSizeHint().width() <= room;
        if (fits || font.pointSizeF() <= kLeastPoints) return font;
    }
}

void ShotControls::Build(QWidget* window) {
    DarkenDisabledText(window);
    auto* column = Tight(BuildButtons(window)->Body());
    column->addLayout(BuildTopRow(window));
    BuildMessage(window);
    promptRow_ = new QHBoxLayout;
    promptRow_->addWidget(frmeMessage, 1);
    column->addLayout(promptRow_, 1);
    auto* results = new QHBoxLayout;
    results->addWidget(BuildData(window), 3);
    results->addWidget(BuildInputs(window), 2);
    results->addWidget(BuildCounters(window));
    column->addLayout(results);
    for (const auto& [name, member] : kMirrored)
        mirrored_.push_back(window->findChild<QWidget*>(QLatin1String(name)));
}

void ShotControls::BuildMessage(QWidget* window) {
    frmeMessage = Frame(window, "frmeMessage", "MESSAGE");
    const auto add = [this](const char* name, double capitals, double growth,
                            QSizePolicy::Policy height) {
        auto* label = Named(new FitLabel(capitals, growth, frmeMessage), name);
        label->setSizePolicy(QSizePolicy::Expanding, height);
        return label;
    };
    lblMessage = add("lblMessage", kPromptCapitals, kPromptGrowth, QSizePolicy::Expanding);
    // The prompt keeps its size when the call to confirm comes and goes.
    lblConfirm = add("lblConfirm", kConfirmCapitals, 1.0, QSizePolicy::Fixed);
    KeepRoomWhenHidden(lblConfirm);
    lblConfirm->SetCallToAct([this] { cmdContinue->click(); });
    lblDamage = add("lblDamage", kDamageCapitals, kDamageGrowth, QSizePolicy::Expanding);
    lblDamage->SetAlert(true);
    // One line below a prompt, and all the room where there is none.
    lblNotice = add("lblNotice", kPromptCapitals, kPromptGrowth, QSizePolicy::Preferred);
    BuildCard();
    auto* grid = Tight(new QGridLayout(frmeMessage));
    grid->addWidget(lblMessage, 0, 0);
    grid->addWidget(lblCard, 0, 0);
    grid->addWidget(lblNotice, 1, 0);
    grid->addWidget(lblConfirm, 2, 0);
    grid->addWidget(cardLine, 2, 0);
    grid->addWidget(lblDamage, 3, 0);
}

void ShotControls::BuildCard() {
    lblCard = Named(new FitLabel(kCardCapitals, kCardGrowth, frmeMessage), "lblCard");
    lblCard->setTextFormat(Qt::RichText);
    lblCard->setFont(frmeMessage->font());
    lblCard->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    cardLine = new QWidget(frmeMessage);
    lblDisk = Named(new FitLabel(kDiskCapitals, kDiskGrowth, cardLine), "lblDisk");
    lblDisk->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    txtErrorLimit = Named(new QLineEdit(cardLine), "txtErrorLimit");
    Enlarge(txtErrorLimit, kBoxGrowth);
    MakeRoomFor(txtErrorLimit, "00.00");
    txtErrorLimit->setMaximumWidth(txtErrorLimit->minimumWidth());
    txtErrorLimit->setMinimumHeight(kInputHeight);
    txtErrorLimit->setPlaceholderText(QStringLiteral("off"));
    static const QRegularExpression percent(QStringLiteral("[0-9]{0,2}([.,][0-9]{0,2})?"));
    txtErrorLimit->setValidator(new QRegularExpressionValidator(percent, txtErrorLimit));
    auto* caption = Caption(cardLine, "lblErrorLimit", "Error &limit (%):");
    caption->setBuddy(txtErrorLimit);
    auto* row = WithMargin(new QHBoxLayout(cardLine), 0);
    row->addWidget(lblDisk, 1);
    row->addWidget(caption);
    row->addWidget(txtErrorLimit);
}

QGroupBox* ShotControls::BuildInputs(QWidget* window) {
    QGroupBox* frame = Frame(window, "Frame4", "Operator Inputs (Nameplate Currents)");
    auto* grid = Tight(new QGridLayout(frame));
    const auto add = [grid](int row, QLabel* caption, QLineEdit* box) {
        grid->addWidget(caption, row, 0);
        grid->addWidget(box, row, 1);
    };
    const auto addInput = [&](int row, QLabel* caption, const char* name) {
        QLineEdit* box = Box(frame, name, caption);
        box->setMinimumHeight(kInputHeight);
        KeepToPage(box);
        add(row, caption, box);
        return box;
    };
    txtHVolt = addInput(0, Caption(frame, "Label5", "H Current:"), "txtHVolt");
    txtXVolt = addInput(1, Caption(frame, "Label6", "X Current:"), "txtXVolt");
    QLabel* ratio = Caption(frame, "lblCRatio", "Calculated Ratio:");
    add(2, ratio, ResultBox(frame, "txtCRatio", ratio));
    return frame;
}

PageHeader* ShotControls::BuildButtons(QWidget* window) {
    cmdCancel = new BigButton(window, "cmdCancel");
    // Between the two that matter in a shot; disabled then, it keeps a hand from the wrong one.
    cmdHeader = new BigButton(window, "cmdHeader");
    cmdContinue = ButtonOfWidest(window, "cmdContinue", {kCaptionContinueTest, kCaptionRepeat});
    cmdStart = ButtonOfWidest(window, "cmdStart", {kCaptionStart, kCaptionNext});
    cmdExit = new BigButton(window, "cmdExit");
    return new PageHeader(window, {cmdCancel, cmdHeader, cmdContinue, cmdStart, cmdExit});
}

void ShotControls::Paint(const ShotScreen* painted, const ShotScreen& screen) {
    for (std::size_t i = 0; i < mirrored_.size(); ++i) {
        const auto member = kMirrored[i].second;
        const ControlView& view = screen.*member;
        if (painted != nullptr && painted->*member == view) continue;
        // The same text set again would move the cursor of a box that the operator types in.
        const QString text = FromPage(view.text);
        if (mirrored_[i]->property("text") != text) mirrored_[i]->setProperty("text", text);
        mirrored_[i]->setEnabled(view.enabled);
        mirrored_[i]->setVisible(view.visible);
    }
    lblMessage->SetAlert(screen.messageWarns);
    lblNotice->SetAlert(screen.noticeWarns);
    const bool prompts = !screen.lblMessage.text.empty();
    lblMessage->setVisible(prompts || !screen.lblNotice.visible);
    auto* grid = static_cast<QGridLayout*>(frmeMessage->layout());
    const bool fills = prompts || screen.shotShown > 0;
    const int alone = !fills && screen.lblNotice.visible ? 1 : 0;
    grid->setRowStretch(0, fills ? kPromptStretch : 1 - alone);
    grid->setRowStretch(1, alone);
    grid->setRowStretch(3, screen.lblDamage.visible ? kDamageStretch : 0);
}

void ShotControls::PlaceBesidePrompt(QWidget* chart) {
    besidePrompt_ = chart;
    promptRow_->addWidget(chart);
}

void ShotControls::ShowBesidePrompt(bool wanted) {
    const QSize room = PromptRoom();
    const QString prompt = lblMessage->text();
    const QString notice = lblNotice->isHidden() ? QString() : lblNotice->text();
    if (room != promptRoom_ || notice != promptNotice_) {
        promptRoom_ = room;
        promptNotice_ = notice;
        widthBeside_ = WidthBeside(room, notice, !prompt.isEmpty() || notice.isEmpty());
    }
    const bool silent = prompt.isEmpty() && notice.isEmpty() && lblDamage->text().isEmpty();
    int width = widthBeside_;
    // Where there is room beside a prompt nothing moves when a shot ends.
    if (silent && width == 0 && room.width() >= kLeastCard + kLeastChart) width = kLeastChart;
    // All three have no room beside each other.
    const bool crowded = !lblDamage->isHidden() && !prompt.isEmpty();
    const bool shows = wanted && width > 0 && !crowded;
    if (shows) {
        promptRow_->setStretch(0, room.width() - width);
        promptRow_->setStretch(1, width);
    }
    if (besidePrompt_->isHidden() == shows) besidePrompt_->setVisible(shows);
}

// The row's width, and the height that message, notice and damage have together.
QSize ShotControls::PromptRoom() const {
    // Of the frame: what is in it may not be laid out yet.
    const int inside = frmeMessage->contentsRect().height() - kMargins.top() - kMargins.bottom();
    return {promptRow_->geometry().width() - promptRow_->spacing(),
            inside - lblConfirm->height() - kSpacing};
}

int ShotControls::WidthBeside(QSize room, const QString& notice, bool prompt) const {
    constexpr int kStep = 8;
    const int around = frmeMessage->width() - lblConfirm->width();
    const QString longest = QLatin1String(kLongestPrompt);
    for (int width = room.width() * kChartShare / 100; width >= kLeastChart; width -= kStep) {
        QSize left(room.width() - width - around, room.height());
        if (prompt && !notice.isEmpty()) {
            const QSize line(left.width(), lblNotice->minimumSizeHint().height());
            if (!lblNotice->HasRoomFor(notice, line)) continue;
            left.rheight() -= line.height() + kSpacing;
        }
        if (lblMessage->HasRoomFor(prompt ? longest : notice, left)) return width;
    }
    return 0;
}

}  // namespace davo
