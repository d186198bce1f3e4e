// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "command_input.h"
#include "look.h"

namespace davo::test {

// One thing to do: when missing() has nothing to say any more, act() runs. A limit passed ends
// the process.
struct Step {
    QString line;                      // as the script has it, for the log
    std::function<QString()> missing;  // empty: go; else what is waited for
    std::function<void()> act;
    int limitMs = 0;
    bool logged = true;
    bool inParts = false;  // several events, of which each lets the program work
};

// Plays a script of operator's acts inside a running program: the file named by
// DAVO_DRIVER_SCRIPT, one command per line, or "-": commands as they come on the standard input,
// whose end ends the program.
// It works from single-shot timers, each scheduled before the act it follows, so that an act that
// opens a modal dialog (and returns only when that closes) does not stop it.
//
//   wait W [ms]              until W is visible            waitGone W [ms]
//   waitText W TEXT [ms]     until W shows exactly TEXT    waitContains W TEXT [ms]
//   waitEnabled W [ms]       waitDisabled W [ms]
//   click W [ms]             once it can be pressed
//   menu ACTION [ms]         through its menus, from the menu bar
//   type W TEXT [ms]         replaces W's text, key by key
//   focusOut                 the Tab key
//   key NAME                 one key, by its portable name, to the widget with the focus
//   answer BUTTON [TEXT] [ms]  a button of the prompt "msgBox", once it shows exactly TEXT
//   chooseFile NAME [ms]     in the dialog "cdFile", to save or to open
//   grab NAME [W [C...]]     NAME.png of W or of the window in front, in DAVO_DRIVER_PICTURES, with
//                            a number at each control C in it
//   colours dark             all windows go to dark colours; any other word: back
//   close W                  closes the window as its frame does
//   row W N [double]         a click on row N (from 0) of a list
//   look                     writes what could be done now, as one line of JSON (see look.h)
//   watch W                  from now on writes each text that W is painted with
//   lenient                  from now on a limit passed does not end the process: that line is
//                            left out; what a click or a key presses is said with its text
//   state                    writes what all windows show, as one line of JSON
//   sleep MS   log TEXT   quit
class Driver : public QObject {
  public:
    explicit Driver(const QString& script);

  private:
    void EndWithInput();
    void AddLine(const QString& line);
    void Schedule(int ms);
    void GiveUp(const QString& missing);
    void SayPressed(const QWidget* pressed);
    bool MayGoOn();
    void Tick();
    [[noreturn]] void Fail(const QString& reason);

    Step Build(const QString& line, const QStringList& words);
    Step BuildWait(const QString& command, const QStringList& args);
    Step BuildAct(const QString& command, const QStringList& args);
    Step BuildSaying(const QString& command, const QString& word);
    Step BuildClick(const QString& widget);
    Step BuildKey(const QString& key);
    Step BuildType(const QString& widget, const QString& text);
    Step BuildAnswer(const QStringList& args);
    Step BuildMenu(const QString& action);
    Step BuildChooseFile(const QString& name);
    Step BuildGrab(const QStringList& args);
    Step BuildClose(const QString& widget);
    Step BuildRow(const QStringList& args);
    Step BuildColours(const QString& name);

    std::deque<Step> steps_;
    QElapsedTimer sinceStep_;
    bool timing_ = false;
    bool scheduled_ = false;
    bool lenient_ = false;
    bool acted_ = false;
    int actingIn_ = 0;  // the level of the event loop in which something is done in parts
    std::vector<std::unique_ptr<Watch>> watches_;
    std::unique_ptr<CommandInput> input_;
};

}  // namespace davo::test
