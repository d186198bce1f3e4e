// SPDX-License-Identifier: GPL-3.0-or-later
// Every fault at every byte of a shot: the program always has a way out, nothing measured before
// is lost, and no damaged record passes for a whole one where that can be known at all.

#include <iostream>
#include <set>

#include "common/text.h"
#include "tests/support/random_rounds.h"
#include "tests/support/testing.h"
#include "tests/testing/shot_script.h"

namespace davo::test {
namespace {

enum class Kind { Cut, Stall, Noise, Erase, Double, Blank, Flip, Unplug };

struct Fault {
    Kind kind = Kind::Cut;
    std::size_t at = 0;
    char noise = 0;
    unsigned bit = 0;

    std::string Name() const {
        constexpr const char* kNames[] = {"cut",    "stall", "noise", "erase",
                                          "double", "blank", "flip",  "unplug"};
        return std::string(kNames[static_cast<int>(kind)]) + " at " + std::to_string(at) + ", " +
               std::to_string(static_cast<unsigned char>(noise)) + ", " + std::to_string(bit);
    }
};

struct Counts {
    int cases = 0;
    int whole = 0;
    int damageShown = 0;
    int damageUnseen = 0;
    int silenceShown = 0;  // not completed, and the window says for how long nothing has come
    int waiting = 0;       // not completed before anything had come in the step
    int startedAgain = 0;
    int ratioChanged = 0;
    int ratioTold = 0;  // of these, and said
};

bool IsDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}

void Unplug(SequenceRig& rig) {
    rig.port.open = false;
    rig.state.portOpen = false;
    rig.sequence.PortLost();
}

void DeliverFaulty(SequenceRig& rig, std::string part, std::size_t position, const Fault& fault) {
    const bool silent = fault.kind == Kind::Cut || fault.kind == Kind::Unplug;
    if (silent && fault.at < position) return;
    const bool here = fault.at >= position && fault.at < position + part.size();
    const std::size_t at = fault.at - position;
    std::size_t pauseAt = part.size();
    if (here) {
        switch (fault.kind) {
            case Kind::Cut:
            case Kind::Unplug:
                part.resize(at);
                break;
            case Kind::Stall:
                pauseAt = at;
                break;
            case Kind::Noise:
                part.insert(at, 1, fault.noise);
                break;
            case Kind::Erase:
                part.erase(at, 1);
                break;
            case Kind::Double:
                part.insert(at, 1, part[at]);
                break;
            case Kind::Blank:
                part[at] = ' ';
                break;
            case Kind::Flip:
                part[at] = static_cast<char>(part[at] ^ (1U << fault.bit));
                break;
        }
    }
    DeliverLines(rig, part.substr(0, pauseAt));
    for (int tick = 0; tick < 3; ++tick) {
        rig.sequence.Timer1_Timer();
    }
    DeliverLines(rig, part.substr(std::min(pauseAt, part.size())));
    if (here && fault.kind == Kind::Unplug) Unplug(rig);
}

class FaultMatrixTest : public testing::TestWithParam<bool> {
  protected:
    FaultMatrixTest() {
        const std::string bytes = script_.Bytes();
        const std::size_t data = bytes.find("DATA") + 4;
        const std::size_t done = bytes.find("DONE");
        for (std::size_t at = data; at < done; ++at) {
            if (IsDigit(bytes[at])) digits_.insert(at);
        }
    }

    std::vector<Fault> Faults() const {
        std::vector<Fault> faults;
        for (std::size_t at = 0; at < script_.Size(); ++at) {
            faults.push_back({Kind::Cut, at});
            faults.push_back({Kind::Stall, at});
            faults.push_back({Kind::Unplug, at});
            for (const char noise : {'\xff', '\0', '7', 'D', ' ', '\r', '\n', '='}) {
                faults.push_back({Kind::Noise, at, noise});
            }
            for (const Kind kind : {Kind::Erase, Kind::Double, Kind::Blank})
                faults.push_back({kind, at});
            for (unsigned bit = 0; bit < 8; ++bit) {
                faults.push_back({Kind::Flip, at, 0, bit});
            }
        }
        return faults;
    }

    // A digit that became another digit: without a checksum on the line nobody can tell.
    bool CannotBeSeen(const Fault& fault) const {
        if (fault.kind != Kind::Flip || !digits_.contains(fault.at)) return false;
        const char flipped = static_cast<char>(script_.Bytes()[fault.at] ^ (1U << fault.bit));
        return IsDigit(flipped);
    }

    void RunCase(const Fault& fault);
    void ExpectSilenceShown(SequenceRig& rig);
    void StartAgain(SequenceRig& rig, const std::string& before);

    const ShotScript script_ = RecordScript(5, GetParam(), 3);
    std::set<std::size_t> digits_;  // places of the record's digits
    Counts counts_;
};

void FaultMatrixTest::RunCase(const Fault& fault) {
    ++counts_.cases;
    SequenceRig rig;
    rig.OpenFor(GetParam());
    ASSERT_TRUE(PlayShot(rig, script_, [](SequenceRig& to, const std::string& part, std::size_t) {
        DeliverLines(to, part);
    }));
    const std::string before = rig.sequence.ShotTrailer();
    const CapturedShot whole = CapturedShots(before).at(0);

    PlayShot(
        rig, script_,
        [&](SequenceRig& to, const std::string& part, std::size_t position) {
            DeliverFaulty(to, part, position, fault);
        },
        fault.kind == Kind::Cut || fault.kind == Kind::Unplug);
    if (fault.kind == Kind::Unplug && rig.sequence.TestState() != kStateShotComplete) {
        StartAgain(rig, before);
        return;
    }
    ASSERT_TRUE(rig.sequence.TestState() == kStateShotComplete || rig.sequence.Polling());
    if (rig.sequence.TestState() != kStateShotComplete) {
        ASSERT_NE(fault.kind, Kind::Stall) << "a stalled line comes back";
        ExpectSilenceShown(rig);
        ASSERT_TRUE(rig.Screen().cmdCancel.enabled);
        rig.sequence.cmdCancel_Click();
    }
    ASSERT_TRUE(rig.Screen().cmdExit.enabled);
    ASSERT_EQ(rig.CaptureBytes(), before) << "the shot before";
    if (!rig.sequence.ShotPending()) return;

    rig.sequence.WriteShotTrailer();
    const auto shots = CapturedShots(rig.CaptureBytes());
    ASSERT_EQ(shots.size(), 2U);
    ASSERT_EQ(shots[0].hexText, whole.hexText);
    ASSERT_EQ(shots[0].measuredRatio, whole.measuredRatio);
    const bool damaged = shots[1].hexText != whole.hexText;
    const std::string& said = rig.Screen().lblDamage.text;
    const bool shown = Contains(said, "The record of this shot is damaged");
    const bool ratioTold = Contains(said, "The ratio of this shot is no plain number");
    ASSERT_EQ(rig.prompts.shown.size(), (GetParam() ? 0U : 1U) + (shown ? 1U : 0U));
    ASSERT_EQ(shown, damaged && !CannotBeSeen(fault));
    ASSERT_EQ(damaged && !shown, CannotBeSeen(fault));
    counts_.whole += damaged ? 0 : 1;
    counts_.damageShown += shown ? 1 : 0;
    counts_.damageUnseen += damaged && !shown ? 1 : 0;
    const bool ratioChanged = shots[1].measuredRatio != whole.measuredRatio;
    ASSERT_TRUE(ratioChanged || !ratioTold);
    const bool legible =
        shots[1].measuredRatio.find_first_not_of("0123456789.:+- EeDd") == std::string::npos;
    ASSERT_TRUE(legible || ratioTold);
    ASSERT_EQ(rig.Screen().lblDamage.visible, shown || ratioTold);
    counts_.ratioChanged += ratioChanged ? 1 : 0;
    counts_.ratioTold += ratioTold ? 1 : 0;
    if (fault.kind == Kind::Stall) {
        ASSERT_EQ(rig.CaptureBytes(), before + before);
    }
}

// Nothing more comes: no reading on the screen can be taken for one of now.
void FaultMatrixTest::ExpectSilenceShown(SequenceRig& rig) {
    rig.clock.Advance(std::chrono::seconds(2));
    rig.sequence.Timer1_Timer();
    const ShotScreen& screen = rig.Screen();
    ++(screen.lblNotice.visible ? counts_.silenceShown : counts_.waiting);
    for (const ControlView* reading : {&screen.txtCur, &screen.txtVolt})
        ASSERT_TRUE(reading->text.empty() || !reading->enabled);
    ASSERT_TRUE(screen.lblNotice.visible || !screen.lblMessage.text.empty())
        << "neither a prompt nor a word";
}

// The cable is back: the shot that was lost is run again in the same session.
void FaultMatrixTest::StartAgain(SequenceRig& rig, const std::string& before) {
    ++counts_.startedAgain;
    ASSERT_EQ(rig.Screen().lblNotice.text, "CONNECTION LOST");
    ASSERT_TRUE(rig.Screen().lblNotice.visible);
    ASSERT_EQ(rig.Screen().lblMessage.text + rig.Screen().txtCur.text + rig.Screen().txtVolt.text,
              "");
    ASSERT_TRUE(rig.Screen().cmdExit.enabled);
    ASSERT_TRUE(rig.Screen().cmdStart.enabled);
    ASSERT_EQ(rig.CaptureBytes(), before);
    rig.reopens = true;
    ASSERT_TRUE(PlayShot(rig, script_, [](SequenceRig& to, const std::string& part, std::size_t) {
        DeliverLines(to, part);
    }));
    rig.sequence.WriteShotTrailer();
    ASSERT_EQ(rig.CaptureBytes(), before + before);
    ASSERT_EQ(rig.session.shotCount, 2);
}

TEST_P(FaultMatrixTest, EveryFaultAtEveryByte) {
    int unseenExpected = 0;
    Share share;
    for (const Fault& fault : Faults()) {
        if (!share.Takes()) continue;
        unseenExpected += CannotBeSeen(fault) ? 1 : 0;
        RunCase(fault);
        if (HasFatalFailure()) FAIL() << fault.Name();
    }
    EXPECT_EQ(counts_.damageUnseen, unseenExpected);
    EXPECT_EQ(counts_.whole + counts_.damageShown + counts_.damageUnseen + counts_.silenceShown +
                  counts_.waiting + counts_.startedAgain,
              counts_.cases);
    std::cout << counts_.cases << " cases over " << script_.Size() << " bytes: " << counts_.whole
              << " records whole, " << counts_.damageShown << " damaged and shown, "
              << counts_.damageUnseen
              << " with one digit turned into another (no checksum on the line, cannot be seen), "
              << counts_.silenceShown << " stopped and said for how long, " << counts_.waiting
              << " stopped before a reading had come in the step, which shows its prompt, "
              << counts_.startedAgain << " unplugged, said and started again; in "
              << counts_.ratioChanged
              << " completed ones the text of the ratio line was changed or lost, said in "
              << counts_.ratioTold << ", else a number or nothing was left" << std::endl;
}

INSTANTIATE_TEST_SUITE_P(Shots, FaultMatrixTest, testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "RatioOnly" : "Full");
});

}  // namespace
}  // namespace davo::test
