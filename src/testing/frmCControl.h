// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "reports/report_hooks.h"
#include "testing/live_curve.h"
#include "testing/session_save.h"
#include "testing/shot_controls.h"
#include "testing/shot_sequence.h"
#include "ui/event_handlers.h"

namespace davo {

// "Computer Control": the window in which tests are run. It shows what the test sequence says and
// hands the operator's acts down to it.
class frmCControl : public QWidget {
  public:
    // Everything of around, and settings, must outlive the window.
    frmCControl(const TestSurroundings& around, Settings& settings, QWidget* parent = nullptr);
    ~frmCControl() override;

    // Sets a session that was never saved aside, then opens a new one. Throws RunTimeError when
    // that is not possible or the capture file cannot be made; the window must not be shown then.
    void Form_Load();

    // cmdExit pressed from outside. True when the window has closed.
    bool Exit();
    // The window closes when the handler under way has come to its end.
    bool CloseWanted() const { return closeWanted_; }

    // The session is saved as the record file of that path.
    std::function<void(const QString& record)> OnSaved;
    // The window has closed: Form_Unload is done.
    std::function<void()> OnUnload;
    // Opens the header window over this one; changed is to be called when the header or the notes
    // have changed.
    std::function<void(const std::function<void()>& changed)> OnHeader;
    ReportHooks Reports;

  protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void ConnectEvents();
    void ListenToLink(bool listens);
    // Runs one of the operator's acts: what he has typed is taken before it, the sequence makes a
    // pass after it.
    void Act(void (ShotSequence::*handler)());
    void LostFocus(void (ShotSequence::*handler)());
    void cmdExit_Click();
    void ViewResults(const QString& savedFile);
    void cmdHeader_Click();
    void Timer1_Timer();
    void Form_KeyDown();
    void Form_Unload();

    void TakeTyped();
    // Shows the sequence's screen, runs the timers that it wants, and does what had to wait for
    // the end of the handler under way.
    void Refresh();
    void Paint();
    void PaintCard();
    void RestoreErrorLimit();
    // Brings the chart up to what has become of the shot.
    void ShowCurve();
    void LeaveFocusSafely(const ShotScreen& next);
    void FocusControl(const char* name);

    ShotSequence sequence_;
    Settings& settings_;
    EventHandlers handlers_;
    ShotControls controls_;
    LiveCurve live_;
    ShotScreen painted_;
    bool repeatOffered_ = false;  // as painted
    QTimer Timer1_;
    QTimer timDateTime_;
    QTimer timBeep_;
    QTimer lookAround_;
    void (ShotSequence::*lostFocusDue_)() = nullptr;
    bool shown_ = false;
    bool closeWanted_ = false;
    bool closing_ = false;
    bool viewing_ = false;   // a report is being made
    bool refusing_ = false;  // the box of a refused exit is open
};

}  // namespace davo
