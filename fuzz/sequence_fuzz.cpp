// SPDX-License-Identifier: GPL-3.0-or-later
// A session under any text of the line and any acts of the operator: a shot that is complete is in
// the journal or in the capture file until the operator drops it, and what is left behind is
// offered again, shot for shot.
#include "testing/shot_sequence.h"

#include <QCoreApplication>

#include "fuzz/fuzzing.h"
#include "records/record_file.h"
#include "records/unsaved_sessions.h"
#include "testing/session_save.h"
#include "tests/testing/sequence_rig.h"

namespace {

using namespace davo;
using fuzz::Require;

// What the instrument says in a shot, so that an input of a few bytes has a whole one.
std::string Said(int line, fuzz::Input& input) {
    switch (line) {
        case 0:
            return "MESSAGE=TURN VOLTAGE DRIVE TO ZERO...\r\n";
        case 1:
            return "MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH\r\n";
        case 2:
            return "MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)\r\n";
        case 3:
            return "MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)\r\n";
        case 4:
            return "I=0.0123 V=152.4\r\n";
        case 5:
            return "MESSAGE=S-L-O-W-L-Y LOWER CURRENT NOW...\r\n";
        case 6:
            return "RATIO=" + input.Text() + "\r\nPOLARITY=+\r\n";
        case 7:
            return "MESSAGE=VOLTAGE TOO HIGH!\r\n";
        case 8:
            return test::RecordOf(test::Digits(static_cast<char>('0' + input.Below(10))));
        case 9:
            return "DATA" + input.Text() + "DONE\r\n";
        default:
            return input.Text();
    }
}

class Session {
  public:
    explicit Session(fuzz::Input& input) : input_(input) {
        settings_.dataPath = rig_.folder.Path("Shots_Data/");
        QDir().mkpath(settings_.dataPath);
        rig_.prompts.onQuestion = [this](const QString& text) { Answer_(text); };
        rig_.reopens = true;
        rig_.OpenFor(input.Flag());
        rig_.header.Field(2) = "C";
    }

    // False when the window has closed.
    bool Act() {
        const bool pending = rig_.sequence.ShotPending();
        const std::string block = pending ? rig_.sequence.ShotTrailer() : std::string();
        dropped_ = false;
        const bool goesOn = Do(input_.Below(kActs));
        if (goesOn) CheckDisk(pending, block);
        return goesOn;
    }

    // The program ends in the middle, and the next one looks for what was left.
    void CheckLeft() {
        const std::size_t shots = CapturedShots(written_).size() + (Pending() ? 1 : 0);
        rig_.sequence.Capture().Close();
        const auto sessions = SetAsideUnsavedSessions(rig_.places.scratchFolder);
        Require(sessions.size() == (shots > 0 ? 1U : 0U), "a session with a shot is offered");
        if (shots == 0) return;
        Require(static_cast<std::size_t>(sessions.front().shots) == shots, "shot for shot");
    }

  private:
    static constexpr unsigned kActs = 16;

    ShotScreen& Screen() { return rig_.Screen(); }
    bool Pending() { return rig_.sequence.ShotPending(); }
    static bool Usable(const ControlView& view) { return view.enabled && view.visible; }

    bool Do(int act) {
        switch (act) {
            case 0:
                if (Usable(Screen().cmdStart)) rig_.sequence.cmdStart_Click();
                return true;
            case 1:
                dropped_ = rig_.sequence.RepeatOffered();
                if (Usable(Screen().cmdContinue)) rig_.sequence.cmdContinue_Click();
                return true;
            case 2:
                if (Usable(Screen().cmdCancel)) rig_.sequence.cmdCancel_Click();
                return true;
            case 3:
                rig_.port.open = false;
                rig_.link.State().portOpen = false;
                rig_.sequence.PortLost();
                return true;
            case 4:
                rig_.sequence.LookAround();
                return true;
            case 5:
                rig_.clock.Advance(std::chrono::milliseconds(50 * input_.Below(100)));
                rig_.sequence.timDateTime_Timer();
                rig_.sequence.timBeep_Timer();
                rig_.sequence.Timer1_Timer();
                return true;
            case 6:
                Screen().txtHVolt.text = input_.Text();
                Screen().txtXVolt.text = input_.Text();
                rig_.sequence.txtXVolt_LostFocus();
                return true;
            case 7:
                // Somebody cleans up; the window looks once a second.
                rig_.DeleteFolder();
                rig_.sequence.LookAround();
                return true;
            case 8:
                return !Usable(Screen().cmdExit) || !Exit();
            default:
                Say(Said(input_.Below(11), input_));
                return true;
        }
    }

    void Say(const std::string& text) {
        const std::size_t step = input_.Flag() ? 1 + input_.Below(40) : std::string::npos;
        for (std::size_t from = 0; from < text.size(); from += std::min(step, text.size())) {
            rig_.Say(text.substr(from, step));
            said_ += text.size();
        }
        Require(rig_.sequence.Reply().sessionPending.size() <= said_, "no more than was said");
        Require(rig_.sequence.Reply().sessionWindow.size() <= kSessionLimit,
                "a window has its size");
    }

    // True when the window closes.
    bool Exit() {
        questions_ = 0;
        const std::size_t shots = CapturedShots(written_).size() + (Pending() ? 1 : 0);
        rig_.prompts.files.assign(1, settings_.dataPath + QStringLiteral("T1.txt"));
        const SaveOutcome outcome = ExitAndSave(rig_.sequence, settings_, false);
        if (!outcome.savedFile.isEmpty()) {
            const TestRecordFile file = ParseTestRecordFile(ReadWholeFile(outcome.savedFile));
            Require(file.records.size() == shots, "the record file has every shot");
            Require(SetAsideUnsavedSessions(rig_.places.scratchFolder).empty(), "it is saved");
            saved_ = true;
        } else if (outcome.closeWindow) {
            written_ = rig_.CaptureBytes();
            Require(CapturedShots(written_).size() == shots, "the capture file has every shot");
        }
        return outcome.closeWindow;
    }

    void Answer_(const QString& text) {
        const bool isSave = text.startsWith(QLatin1String("Do you want to save"));
        // Somebody who never says yes to anything stays for ever.
        const bool yes = ++questions_ > 8 ? !isSave : !input_.Flag();
        rig_.prompts.answers.push_back(yes ? Answer::Yes : Answer::No);
    }

    // What the disk has after an act, with what was there before.
    void CheckDisk(bool pending, const std::string& block) {
        const std::string bytes = rig_.CaptureBytes();
        if (bytes != written_) {
            Require(pending && bytes == written_ + block, "only a complete shot is appended");
            Require(CapturedShots(block).size() == 1, "it is one shot");
            written_ = bytes;
        } else if (pending && !Pending()) {
            Require(dropped_, "a complete shot is dropped by the operator only");
        }
        const std::size_t shots = CapturedShots(written_).size() + (Pending() ? 1 : 0);
        Require(static_cast<std::size_t>(rig_.session.shotCount) == shots,
                "the count is the disk's");
        if (!Pending()) return;
        const SessionJournal journal = rig_.Journal();
        Require(journal.pendingShot == rig_.sequence.ShotTrailer(), "the journal has the shot");
        Require(static_cast<std::size_t>(journal.shotsInCapture) == shots - 1, "and those before");
    }

  public:
    bool Saved() const { return saved_; }

  private:
    fuzz::Input& input_;
    test::SequenceRig rig_;
    Settings settings_;
    std::string written_;
    std::size_t said_ = 0;
    int questions_ = 0;
    bool dropped_ = false;
    bool saved_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static int count = 1;
    static char name[] = "sequence";
    static char* names[] = {name, nullptr};
    static const QCoreApplication application(count, names);
    constexpr int kMostActs = 300;
    fuzz::Input input(data, size);
    Session session(input);
    int acts = 0;
    while (!input.AtEnd() && acts < kMostActs && session.Act())
        ++acts;
    if (!session.Saved()) session.CheckLeft();
    return 0;
}
