// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/frmCControl.h"

#include <QCloseEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSettings>
#include <utility>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "testing/card_texts.h"
#include "ui/fit_label.h"
#include "ui/page_header.h"

namespace davo {

namespace {

constexpr int kPollInterval = 100;   // ms; text that arrives makes a pass of its own
constexpr int kClockInterval = 20;   // ms
constexpr int kBeepInterval = 500;   // ms
constexpr int kLookInterval = 1000;  // ms

bool IsEscape(const QEvent& event) {
    return event.type() == QEvent::KeyPress &&
           static_cast<const QKeyEvent&>(event).key() == Qt::Key_Escape;
}

// Whether the focus goes to another control, rather than to a menu or another program.
bool MovesFocus(const QEvent& event) {
    if (event.type() != QEvent::FocusOut) return false;
    const Qt::FocusReason reason = static_cast<const QFocusEvent&>(event).reason();
    return reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason;
}

}  // namespace

frmCControl::frmCControl(const TestSurroundings& around, Settings& settings, QWidget* parent)
    : QWidget(parent),
      sequence_(around),
      settings_(settings),
      handlers_(around.prompts),
      controls_(this),
      live_(this) {
    setObjectName(QStringLiteral("frmCControl"));
    controls_.PlaceBesidePrompt(live_.Chart());
    ConnectEvents();
    RestoreErrorLimit();
    painted_ = sequence_.Screen();
    controls_.Paint(nullptr, painted_);
}

void frmCControl::RestoreErrorLimit() {
    const QString key = QStringLiteral("frmCControl/errorLimit");
    const QString file = WindowFile(sequence_.Around().places);
    QLineEdit* box = controls_.txtErrorLimit;
    box->setText(QSettings(file, QSettings::IniFormat).value(key).toString());
    if (!box->hasAcceptableInput()) box->clear();
    connect(box, &QLineEdit::editingFinished, this, [this, key, file] {
        handlers_.Run([&] {
            RemoveLinkOrPipe(file + QStringLiteral(".lock"));
            QSettings(file, QSettings::IniFormat).setValue(key, controls_.txtErrorLimit->text());
        });
    });
    for (QLineEdit* typed : {box, controls_.txtHVolt, controls_.txtXVolt})
        connect(typed, &QLineEdit::textEdited, this, [this] { PaintCard(); });
}

frmCControl::~frmCControl() {
    // The window goes with its program: nobody may call it any more.
    if (!closing_) ListenToLink(false);
}

void frmCControl::ConnectEvents() {
    const auto handsDown = [this](QPushButton* button, void (ShotSequence::*handler)()) {
        connect(button, &QPushButton::clicked, this, [this, button, handler] {
            // A shortcut presses a button without giving it the focus; the box that is left is to
            // know.
            button->setFocus();
            Act(handler);
        });
    };
    handsDown(controls_.cmdStart, &ShotSequence::cmdStart_Click);
    handsDown(controls_.cmdContinue, &ShotSequence::cmdContinue_Click);
    handsDown(controls_.cmdCancel, &ShotSequence::cmdCancel_Click);
    connect(controls_.cmdHeader, &QPushButton::clicked, this, [this] { cmdHeader_Click(); });
    connect(controls_.cmdExit, &QPushButton::clicked, this, [this] { cmdExit_Click(); });
    const auto every = [this](int interval, QTimer& timer, auto act) {
        timer.setInterval(interval);
        connect(&timer, &QTimer::timeout, this, act);
    };
    every(kPollInterval, Timer1_, [this] { Timer1_Timer(); });
    every(kClockInterval, timDateTime_, [this] {
        handlers_.RunAlone([this] { sequence_.timDateTime_Timer(); });
        if (painted_.lblTime != sequence_.Screen().lblTime) Refresh();
    });
    every(kLookInterval, lookAround_, [this] {
        handlers_.RunAlone([this] { sequence_.LookAround(); });
        Refresh();
    });
    every(kBeepInterval, timBeep_, [this] {
        handlers_.RunAlone([this] { sequence_.timBeep_Timer(); });
        Refresh();
    });
    controls_.txtHVolt->installEventFilter(this);
    controls_.txtXVolt->installEventFilter(this);
    sequence_.OnShow = [this] { Paint(); };
    sequence_.OnReadings = [this](std::string_view window) {
        if (sequence_.Saturating()) live_.AddReadings(window);
    };
    sequence_.OnFocus = [this](const char* control) { FocusControl(control); };
}

void frmCControl::ListenToLink(bool listens) {
    Link& link = sequence_.Around().link;
    link.OnTextWaiting = nullptr;
    link.OnLost = nullptr;
    if (!listens) return;
    link.OnTextWaiting = [this] { Timer1_Timer(); };
    link.OnLost = [this] {
        handlers_.Run([this] { sequence_.PortLost(); });
        ShowCurve();
        Refresh();
    };
}

void frmCControl::Form_Load() {
    SetSessionAside(sequence_.Around().places.scratchFolder);
    sequence_.Form_Load();
    ListenToLink(true);
    Refresh();
}

void frmCControl::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (shown_) return;
    shown_ = true;
    // Esc is to work wherever the focus is, on the menu bar too.
    window()->installEventFilter(this);
    QTimer::singleShot(0, this, [this] {
        handlers_.RunAlone([this] { sequence_.ResetTestWindow(); });
        Refresh();
        if (!closing_) controls_.cmdStart->setFocus();
    });
}

void frmCControl::TakeTyped() {
    ShotScreen& screen = sequence_.Screen();
    // The boxes refuse what is not in the page.
    screen.txtHVolt.text = ToPage(controls_.txtHVolt->text()).value();
    screen.txtXVolt.text = ToPage(controls_.txtXVolt->text()).value();
    painted_.txtHVolt.text = screen.txtHVolt.text;
    painted_.txtXVolt.text = screen.txtXVolt.text;
}

void frmCControl::Act(void (ShotSequence::*handler)()) {
    handlers_.RunAlone([this, handler] {
        TakeTyped();
        // In a window that is not the active one no box is told that it is left.
        sequence_.txtXVolt_LostFocus();
        (sequence_.*handler)();
        if (sequence_.Polling()) sequence_.Timer1_Timer();
    });
    ShowCurve();
    Refresh();
}

void frmCControl::ShowCurve() {
    for (const ShotEvent event : sequence_.TakeEvents()) {
        switch (event) {
            case ShotEvent::Started:
                live_.StartShot(sequence_.Around().modes.testRatioOnlyMode);
                break;
            case ShotEvent::SaturationBegun:
                live_.BeginSaturation();
                break;
            case ShotEvent::Complete:
                live_.CompleteShot(sequence_.ShotTrailer());
                break;
            case ShotEvent::Dropped:
                live_.DropShot();
                break;
            case ShotEvent::Lost:
                live_.LoseShot();
                break;
        }
    }
    controls_.ShowBesidePrompt(live_.Wanted());
}

void frmCControl::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    ShowCurve();
}

void frmCControl::LostFocus(void (ShotSequence::*handler)()) {
    if (handlers_.Running()) {
        // A step took the focus away; the box has its turn when the step is done.
        lostFocusDue_ = handler;
    } else {
        Act(handler);
    }
}

void frmCControl::Timer1_Timer() {
    if (!sequence_.Polling()) return;
    handlers_.RunAlone([this] {
        TakeTyped();
        sequence_.Timer1_Timer();
    });
    ShowCurve();
    Refresh();
}

void frmCControl::cmdHeader_Click() {
    handlers_.RunAlone([this] {
        if (!OnHeader) return;
        OnHeader([this] {
            TakeTyped();
            sequence_.UpdateJournal();
        });
    });
}

void frmCControl::cmdExit_Click() {
    if (viewing_) {
        Reports.leave();
        return;
    }
    if (handlers_.Running()) {
        // The window waits for the instrument: that ends, and so does the window.
        Link& link = sequence_.Around().link;
        closeWanted_ = closeWanted_ || link.CurrentWait().has_value();
        link.EndWait();
        return;
    }
    controls_.cmdExit->setFocus();
    handlers_.Run([this] {
        TakeTyped();
        // In a window that is not the active one no box was told that it was left.
        sequence_.txtXVolt_LostFocus();
        const SaveOutcome outcome =
            ExitAndSave(sequence_, settings_, static_cast<bool>(Reports.make));
        closeWanted_ = outcome.closeWindow;
        if (OnSaved && !outcome.savedFile.isEmpty()) OnSaved(outcome.savedFile);
        if (outcome.viewResults) ViewResults(outcome.savedFile);
    });
    Refresh();
}

void frmCControl::ViewResults(const QString& savedFile) {
    const QScopedValueRollback viewing(viewing_, true);
    setWindowTitle(QLatin1String(kPlottingCaption));
    ShotScreen& screen = sequence_.Screen();
    for (ControlView* button :
         {&screen.cmdStart, &screen.cmdContinue, &screen.cmdCancel, &screen.cmdHeader}) {
        button->enabled = false;
    }
    screen.lblConfirm.visible = false;
    const auto show = [this](const QString& text) {
        sequence_.Screen().ShowMessage(text.toStdString());
        Paint();
    };
    show(QLatin1String(kPlottingCaption));
    // The key that answered the question, still held down, must not leave the report.
    setFocus();
    Reports.make(savedFile, show);
}

bool frmCControl::Exit() {
    if (sequence_.Screen().cmdExit.enabled) {
        cmdExit_Click();
    } else if (!handlers_.Running() && !refusing_) {
        // Not as a handler: the shot goes on behind the box.
        const QScopedValueRollback refusing(refusing_, true);
        sequence_.Around().prompts.Message(
            QStringLiteral("A test is running. Cancel it before you leave, or hit the ESC key."));
    }
    return closing_;
}

void frmCControl::Form_KeyDown() {
    if (closing_) return;
    if (viewing_) Reports.leave();
    const bool ran = sequence_.Polling();
    bool leaves = true;
    handlers_.Run([this] {
        sequence_.EscapePressed();
        sequence_.Around().link.EndWait();
    });
    handlers_.Run([&] {
        // What is viewed is saved.
        leaves = viewing_ || sequence_.MayLeave();
        if (!leaves && ran) sequence_.cmdCancel_Click();
    });
    closeWanted_ = closeWanted_ || leaves;
    Refresh();
}

void frmCControl::keyPressEvent(QKeyEvent* event) {
    if (IsEscape(*event)) {
        Form_KeyDown();
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool frmCControl::eventFilter(QObject* watched, QEvent* event) {
    if (watched == controls_.txtHVolt && MovesFocus(*event)) {
        LostFocus(&ShotSequence::txtHVolt_LostFocus);
    } else if (watched == controls_.txtXVolt && MovesFocus(*event)) {
        LostFocus(&ShotSequence::txtXVolt_LostFocus);
    } else if (watched == window() && watched != this && IsEscape(*event)) {
        Form_KeyDown();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void frmCControl::Refresh() {
    Paint();
    const auto run = [this](QTimer& timer, bool wanted) {
        if (!wanted || closing_) timer.stop();
        if (wanted && !closing_ && !timer.isActive()) timer.start();
    };
    // What is left of a flood is examined as soon as the operator has had his turn.
    const int interval = sequence_.Unexamined() ? 0 : kPollInterval;
    if (Timer1_.interval() != interval) Timer1_.setInterval(interval);
    run(Timer1_, sequence_.Polling());
    run(timDateTime_, sequence_.Clocking());
    run(timBeep_, sequence_.Beeping());
    run(lookAround_, true);
    if (closing_ || handlers_.Running()) return;
    if (closeWanted_) {
        closing_ = true;
        Refresh();
        CloseForm(*this);
    } else if (lostFocusDue_ != nullptr) {
        Act(std::exchange(lostFocusDue_, nullptr));
    }
}

void frmCControl::Paint() {
    LeaveFocusSafely(sequence_.Screen());
    controls_.Paint(&painted_, sequence_.Screen());
    painted_ = sequence_.Screen();
    PaintCard();
    controls_.ShowBesidePrompt(live_.Wanted());
}

void frmCControl::PaintCard() {
    const bool idle =
        !sequence_.Polling() && painted_.lblMessage.text.empty() && !painted_.lblNotice.visible;
    controls_.lblCard->setVisible(idle);
    controls_.cardLine->setVisible(idle);
    if (!idle) return;
    controls_.lblCard->setText(painted_.shotShown > 0
                                   ? ResultsCard(painted_, live_.Polarity(), live_.Knees(),
                                                 settings_.kneepointType,
                                                 controls_.txtErrorLimit->text())
                                   : StepsCard(painted_, sequence_.Around().header));
    const bool typing = controls_.txtHVolt->text() != FromPage(painted_.txtHVolt.text) ||
                        controls_.txtXVolt->text() != FromPage(painted_.txtXVolt.text);
    controls_.lblDisk->setText(DiskLine(painted_, typing));
    controls_.lblDisk->SetAlert(painted_.shotShown > 0 && !painted_.shotOnDisk);
}

void frmCControl::LeaveFocusSafely(const ShotScreen& next) {
    // A control that is disabled hands the focus to the next one: Enter, pressed once more, would
    // cancel the test or leave. And what confirmed a step must not drop the shot.
    // Behind a box the window has its focus widget all the same, to which the box's key goes next.
    const QWidget* focused = window()->focusWidget();
    const bool wasOffered = std::exchange(repeatOffered_, sequence_.RepeatOffered());
    if (repeatOffered_ && !wasOffered && (focused == controls_.cmdContinue || focused == this)) {
        controls_.cmdStart->setEnabled(next.cmdStart.enabled);
        controls_.cmdStart->setFocus();
    }
    const std::pair<QPushButton*, bool> losing[] = {
        {controls_.cmdStart, next.cmdStart.enabled},
        {controls_.cmdContinue, next.cmdContinue.enabled},
        {controls_.cmdCancel, next.cmdCancel.enabled},
        {controls_.cmdHeader, next.cmdHeader.enabled},
        {controls_.cmdExit, next.cmdExit.enabled}};
    for (const auto& [button, enabled] : losing) {
        if (!enabled && button == window()->focusWidget()) setFocus();
    }
}

void frmCControl::FocusControl(const char* name) {
    Paint();
    if (auto* control = findChild<QWidget*>(QLatin1String(name))) control->setFocus();
}

void frmCControl::closeEvent(QCloseEvent* event) {
    if (closing_) {
        Form_Unload();
        event->accept();
        return;
    }
    // Closing by the window's frame is the exit button; questions are asked outside this event.
    event->ignore();
    QTimer::singleShot(0, this, [this] { Exit(); });
}

void frmCControl::Form_Unload() {
    window()->removeEventFilter(this);
    const TestSurroundings& around = sequence_.Around();
    ListenToLink(false);
    around.session.testWindowOpen = false;
    if (around.link.State().portOpen) around.link.CloseComPort();
    // Some systems can neither rename nor delete a file that is open.
    sequence_.Capture().Close();
    if (OnUnload) OnUnload();
}

}  // namespace davo
