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
#include <QVBoxLayout>

#include "common/text.h"
#include "ui/big_button.h"
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
    const QColor middle((ink.red() + ground.red()) / 2, (ink.green() + ground.green()) / 2,
                        (ink.blue() + ground.blue()) / 2);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, middle);
    }
    window->setPalette(palette);
}

QLabel* Caption(QWidget* window, const char* name, const char* text) {
    return MakeLabel(window, name, QLatin1String(text), kCaptionGrowth);
}

// A box that shows a result: it can be read and copied, and is no stop of the Tab key.
QLineEdit* ResultBox(QWidget* window, const char* name, QLabel* label) {
    auto* box = Named(new QLineEdit(window), name);
    box->setReadOnly(true);
    box->setFocusPolicy(Qt::ClickFocus);
    box->setAccessibleName(label->text());
    Enlarge(box, kBoxGrowth);
    return box;
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

void MakeReading(QLineEdit* box) {
    EnlargeTo(box, kReadingCapitals);
    box->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    MakeRoomFor(box, "0000.00");
}

}  // namespace

ShotControls::ShotControls(QWidget* window) {
    DarkenDisabledText(window);
    auto* column = Tight(BuildButtons(window)->Body());
    column->addLayout(BuildTopRow(window));
    BuildMessage(window);
    promptRow_ = new QHBoxLayout;
    promptRow_->addWidget(frmeMessage, 1);
    column->addLayout(promptRow_, 1);
    column->addLayout(BuildResults(window));
}

QHBoxLayout* ShotControls::BuildTopRow(QWidget* window) {
    lblTest = Caption(window, "lblTest", "");
    EnlargeTo(lblTest, kHeadingCapitals);
    lblTest->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    KeepRoomWhenHidden(lblTest);
    Frame1 = Named(new QGroupBox(QStringLiteral("Hit the ESC key to Abort Test && Exit"), window),
                   "Frame1");
    // It frames nothing: a line of text, like the time.
    Frame1->setFixedSize(Frame1->fontMetrics().size(Qt::TextShowMnemonic, Frame1->title()));
    lblTime = Caption(window, "lblTime", "");
    auto* row = new QHBoxLayout;
    row->addWidget(lblTest, 1);
    row->addWidget(Frame1);
    row->addWidget(lblTime);
    return row;
}

void ShotControls::BuildMessage(QWidget* window) {
    frmeMessage = Named(new QGroupBox(QStringLiteral("MESSAGE"), window), "frmeMessage");
    lblMessage = Named(new FitLabel(kPromptCapitals, kPromptGrowth, frmeMessage), "lblMessage");
    lblConfirm = Named(new FitLabel(kConfirmCapitals, 1.0, frmeMessage), "lblConfirm");
    lblConfirm->SetCallToAct([this] { cmdContinue->click(); });
    lblDamage = Named(new FitLabel(kDamageCapitals, kDamageGrowth, frmeMessage), "lblDamage");
    lblDamage->SetAlert(true);
    lblNotice = Named(new FitLabel(kPromptCapitals, kPromptGrowth, frmeMessage), "lblNotice");
    // The prompt keeps its size when the call to confirm comes and goes.
    lblConfirm->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    KeepRoomWhenHidden(lblConfirm);
    lblDamage->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    lblMessage->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    // One line below a prompt, and all the room where there is none.
    lblNotice->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
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

QHBoxLayout* ShotControls::BuildResults(QWidget* window) {
    BuildData(window);
    BuildInputs(window);
    BuildCounters(window);
    auto* row = new QHBoxLayout;
    row->addWidget(Frame3, 3);
    row->addWidget(Frame4, 2);
    row->addWidget(Frame5);
    return row;
}

void ShotControls::BuildData(QWidget* window) {
    Frame3 = Named(new QGroupBox(QStringLiteral("DATA"), window), "Frame3");
    auto* grid = Tight(new QGridLayout(Frame3));
    auto* current = Caption(Frame3, "Label1", "Current:");
    auto* voltage = Caption(Frame3, "Label2", "Voltage:");
    auto* ratio = Caption(Frame3, "Label3", "Ratio:");
    auto* polarity = Caption(Frame3, "Label4", "Polarity:");
    lblPE = Caption(Frame3, "lblPE", "Percent Error:");
    txtCur = ResultBox(Frame3, "txtCur", current);
    txtVolt = ResultBox(Frame3, "txtVolt", voltage);
    txtRatio = ResultBox(Frame3, "txtRatio", ratio);
    txtPolarity = ResultBox(Frame3, "txtPolarity", polarity);
    txtPE = ResultBox(Frame3, "txtPE", lblPE);
    MakeReading(txtCur);
    MakeReading(txtVolt);
    MakeRoomFor(txtPolarity, "UNDETERMINED");
    auto* amperes = Caption(Frame3, "lblAmperes", "A");
    auto* volts = Caption(Frame3, "lblVolts", "V");
    EnlargeTo(amperes, kUnitCapitals);
    EnlargeTo(volts, kUnitCapitals);
    // Six lines, so that two large readings stand beside three results.
    grid->addWidget(current, 0, 0, 3, 1);
    grid->addWidget(txtCur, 0, 1, 3, 1);
    grid->addWidget(amperes, 0, 2, 3, 1);
    grid->addWidget(voltage, 3, 0, 3, 1);
    grid->addWidget(txtVolt, 3, 1, 3, 1);
    grid->addWidget(volts, 3, 2, 3, 1);
    grid->addWidget(ratio, 0, 3, 2, 1);
    grid->addWidget(txtRatio, 0, 4, 2, 1);
    grid->addWidget(polarity, 2, 3, 2, 1);
    grid->addWidget(txtPolarity, 2, 4, 2, 1);
    grid->addWidget(lblPE, 4, 3, 2, 1);
    grid->addWidget(txtPE, 4, 4, 2, 1);
    ratio->setIndent(kIndent);
    polarity->setIndent(kIndent);
    lblPE->setIndent(kIndent);
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(4, 2);
}

void ShotControls::BuildInputs(QWidget* window) {
    Frame4 = Named(new QGroupBox(QStringLiteral("Operator Inputs (Nameplate Currents)"), window),
                   "Frame4");
    auto* grid = Tight(new QGridLayout(Frame4));
    const auto input = [this](const char* name, const QLabel* label) {
        auto* box = Named(new QLineEdit(Frame4), name);
        box->setAccessibleName(label->text());
        Enlarge(box, kBoxGrowth);
        box->setMinimumHeight(kInputHeight);
        KeepToPage(box);
        return box;
    };
    auto* primary = Caption(Frame4, "Label5", "H Current:");
    auto* secondary = Caption(Frame4, "Label6", "X Current:");
    lblCRatio = Caption(Frame4, "lblCRatio", "Calculated Ratio:");
    txtHVolt = input("txtHVolt", primary);
    txtXVolt = input("txtXVolt", secondary);
    txtCRatio = ResultBox(Frame4, "txtCRatio", lblCRatio);
    grid->addWidget(primary, 0, 0);
    grid->addWidget(txtHVolt, 0, 1);
    grid->addWidget(secondary, 1, 0);
    grid->addWidget(txtXVolt, 1, 1);
    grid->addWidget(lblCRatio, 2, 0);
    grid->addWidget(txtCRatio, 2, 1);
}

void ShotControls::BuildCounters(QWidget* window) {
    Frame5 = Named(new QGroupBox(window), "Frame5");
    auto* column = Tight(new QVBoxLayout(Frame5));
    lblSatCount = Caption(Frame5, "lblSatCount", "");
    lblRatioCount = Caption(Frame5, "lblRatioCount", "");
    lblCRCount = Caption(Frame5, "lblCRCount", "");
    for (QLabel* label : {lblSatCount, lblRatioCount, lblCRCount}) {
        column->addWidget(label);
    }
    lblRatioCount->setMinimumWidth(
        lblRatioCount->fontMetrics().horizontalAdvance(QStringLiteral("Ratio - 100 ")));
}

PageHeader* ShotControls::BuildButtons(QWidget* window) {
    cmdCancel = new BigButton(window, "cmdCancel");
    // Between the two that matter in a shot; disabled then, it keeps a hand from the wrong one.
    cmdHeader = new BigButton(window, "cmdHeader");
    // The longest of its captions: the buttons keep their places in a shot.
    cmdContinue = new BigButton(window, "cmdContinue", kCaptionContinueTest);
    cmdContinue->setMinimumWidth(cmdContinue->sizeHint().width());
    cmdStart = new BigButton(window, "cmdStart");
    cmdExit = new BigButton(window, "cmdExit");
    return new PageHeader(window, {cmdCancel, cmdHeader, cmdContinue, cmdStart, cmdExit});
}

void ShotControls::Paint(const ShotScreen* painted, const ShotScreen& screen) {
    const auto paint = [painted, &screen](auto* control, ControlView ShotScreen::*member) {
        const ControlView& view = screen.*member;
        if (painted != nullptr && painted->*member == view) return;
        const QString text = FromPage(view.text);
        // The same text set again would move the cursor of a box that the operator types in.
        if (control->text() != text) control->setText(text);
        control->setEnabled(view.enabled);
        control->setVisible(view.visible);
    };
    paint(lblTest, &ShotScreen::lblTest);
    paint(lblTime, &ShotScreen::lblTime);
    paint(lblMessage, &ShotScreen::lblMessage);
    paint(lblConfirm, &ShotScreen::lblConfirm);
    paint(lblDamage, &ShotScreen::lblDamage);
    paint(lblNotice, &ShotScreen::lblNotice);
    paint(lblPE, &ShotScreen::lblPE);
    paint(lblCRatio, &ShotScreen::lblCRatio);
    paint(lblCRCount, &ShotScreen::lblCRCount);
    paint(lblRatioCount, &ShotScreen::lblRatioCount);
    paint(lblSatCount, &ShotScreen::lblSatCount);
    paint(txtCur, &ShotScreen::txtCur);
    paint(txtVolt, &ShotScreen::txtVolt);
    paint(txtRatio, &ShotScreen::txtRatio);
    paint(txtPolarity, &ShotScreen::txtPolarity);
    paint(txtPE, &ShotScreen::txtPE);
    paint(txtHVolt, &ShotScreen::txtHVolt);
    paint(txtXVolt, &ShotScreen::txtXVolt);
    paint(txtCRatio, &ShotScreen::txtCRatio);
    paint(cmdStart, &ShotScreen::cmdStart);
    paint(cmdContinue, &ShotScreen::cmdContinue);
    paint(cmdCancel, &ShotScreen::cmdCancel);
    paint(cmdHeader, &ShotScreen::cmdHeader);
    paint(cmdExit, &ShotScreen::cmdExit);
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
