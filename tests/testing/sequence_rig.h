// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <string>
#include <vector>

#include "common/files.h"
#include "records/session_journal.h"
#include "testing/shot_sequence.h"
#include "tests/support/scripted_link.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

// The 296 digits of a record without any point, ratio 240.0000.
inline std::string Digits(char fill = '0') {
    return std::string(296, fill);
}
inline std::string RecordOf(const std::string& digits) {
    return "DATA" + digits + "\r\nDONE";
}

// What is around a test session.
template <class Port = FakeSerialPort>
struct SessionParts : ScriptedLineOn<Port> {
    SessionParts() = default;
    explicit SessionParts(const Places& use) : places(use) {}

    TemporaryFolder folder;
    Places places = folder.MakePlaces();
    // The folder of the running session is deleted, and so that it cannot be made again.
    void DeleteFolder() const { EXPECT_TRUE(QDir(places.scratchFolder).removeRecursively()); }
    void LoseFolder() const {
        DeleteFolder();
        ReplaceFile(InTheWay(), "");
    }
    void FindFolder() const { DeleteFile(InTheWay()); }
    QString InTheWay() const { return QDir::cleanPath(places.scratchFolder); }

    FakeClock clock{QDateTime(QDate(2026, 11, 21), QTime(14, 5, 9))};
    TestModes modes;
    SessionState session;
    HeaderTable header;
    int beeps = 0;
};

// A test sequence on an open port with everything around it; text arrives when Say is called.
class SequenceRig : public SessionParts<> {
  public:
    SequenceRig() { link.OpenComPort(1); }
    explicit SequenceRig(const Places& use) : SessionParts(use) { link.OpenComPort(1); }

    void OpenFor(bool ratioOnly) {
        modes.testBothMode = !ratioOnly;
        modes.testRatioOnlyMode = ratioOnly;
        sequence.Form_Load();
    }
    // What is on the line arrives, and the window looks at it.
    void Say(const std::string& text) {
        port.waiting += text;
        sequence.Timer1_Timer();
    }
    void SayLine(const std::string& line) { Say(line + "\r\n"); }
    void Confirm() {
        sequence.cmdContinue_Click();
        sequence.Timer1_Timer();
    }
    // The prompts of a full shot up to the saturation test.
    void StartFullShot() {
        sequence.cmdStart_Click();
        SayLine("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
        SayLine("MESSAGE=SET THE VOLTAGE RANGE SELECTOR SWITCH");
        Confirm();
        SayLine("MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES (MAX 1000V)");
    }
    void EndShot(const std::string& ratio = "240.0", const std::string& digits = Digits()) {
        SayLine("MESSAGE=RATIO TEST, 100V MAX (LESS IF RATIO LESS THAN 10:1)");
        SayLine("RATIO=" + ratio);
        SayLine("POLARITY=+");
        SayLine(RecordOf(digits));
    }
    void RunFullShot(const std::string& ratio = "240.0", const std::string& digits = Digits()) {
        StartFullShot();
        EndShot(ratio, digits);
    }
    void RunRatioShot(const std::string& ratio = "240.0", const std::string& digits = Digits()) {
        sequence.cmdStart_Click();
        SayLine("MESSAGE=TURN VOLTAGE DRIVE TO ZERO...");
        EndShot(ratio, digits);
    }

    ShotScreen& Screen() { return sequence.Screen(); }
    std::string CaptureBytes() const {
        return ReadWholeFile(places.scratchFolder + QLatin1String(kCaptureFileName));
    }
    QString JournalPath() const { return places.scratchFolder + QLatin1String(kJournalFileName); }
    SessionJournal Journal() const { return SessionJournal::Read(JournalPath()); }
    std::vector<std::string> TakeSent() { return std::exchange(port.sent, {}); }

    bool reopens = false;  // what reopening the port does
    int reopenings = 0;
    ShotSequence sequence{{link, prompts, clock, places, modes, session, header,
                           [this] { ++beeps; },
                           [this] {
                               ++reopenings;
                               return reopens && link.OpenComPort(1);
                           }}};
};

}  // namespace davo::test
