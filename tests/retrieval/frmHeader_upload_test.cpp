// SPDX-License-Identifier: GPL-3.0-or-later
#include <QTimer>

#include "tests/retrieval/header_line.h"
#include "tests/retrieval/header_window.h"
#include "tests/support/random_seed.h"

namespace davo::test {
namespace {

using instrument::FaultKind;
using std::chrono::milliseconds;

const QString kLeaveQuestion =
    u"The DAVO has erased its headers and does not have all of the new ones yet.\r\n"
    "The headers that are not sent stay empty.\r\n"
    "Do you want to leave anyway?"_s;
// What the instrument says before the first echo: twice "RDY" and a line end, the slots and one,
// "ERASING...", "H:" and a line end.
constexpr double kBeforeEchoes = 5 + 1602 + 5 + 10 + 4;

constexpr std::chrono::minutes kAmplePatience{10};

// The window on the line to the simulated instrument.
class HeaderUploadWindow : public HeaderWindowOn<HeaderLine> {
  protected:
    // No machine is so busy that an answer that comes takes longer.
    HeaderUploadWindow() { patience = {kAmplePatience, kAmplePatience, kAmplePatience}; }
    std::string Slot(int slot) {
        return line.Instrument().HeaderMemory().substr(static_cast<std::size_t>(slot - 1) * 160,
                                                       160);
    }
    void Fault(FaultKind kind, double first, double second = 0) {
        line.Instrument().SetFaults({{kind, first, second}});
    }
    // Presses cmdExit as soon as the status is text.
    void ExitAt(const char* text) {
        auto* timer = new QTimer(window);
        QObject::connect(timer, &QTimer::timeout, window, [this, timer, text] {
            if (Status() != text) return;
            timer->stop();
            Click("cmdExit");
        });
        timer->start(0);
    }
};

TEST_F(HeaderUploadWindow, SavesAllSlotsAndShowsHowFarItIs) {
    OpenAndRead();
    EXPECT_EQ(Text(0), "CENTRAL POWER");
    Choose(3);
    Type(0, "XB");
    Type(7, "J. DOE");
    std::vector<std::string> seen;
    bool bar = false;
    auto* timer = new QTimer(window);
    QObject::connect(timer, &QTimer::timeout, window, [&] {
        if (seen.empty() || seen.back() != Status()) seen.push_back(Status());
        bar = bar || Find<QProgressBar>("pbarProgress")->isVisible();
    });
    timer->start(0);
    const std::string others = Slot(1) + Slot(2);
    Save();
    EXPECT_EQ(Status(), "The DAVO has stored all ten headers.");
    EXPECT_EQ(Slot(3), PadRight("XB", 140) + PadRight("J. DOE", 20));
    EXPECT_EQ(Slot(1) + Slot(2), others);
    EXPECT_THAT(seen, IsSupersetOf({"slot 1 of 10", "slot 5 of 10", "slot 10 of 10"}));
    EXPECT_TRUE(bar);
    EXPECT_FALSE(Find<QProgressBar>("pbarProgress")->isVisible());
    EXPECT_THAT(line.prompts.shown, IsEmpty());
}

TEST_F(HeaderUploadWindow, ClearedBoxesAreUploadedAsCode255) {
    OpenAndRead();
    for (int i = 0; i < 8; ++i)
        Type(i, "");
    Save();
    EXPECT_EQ(slots[0], std::string(160, '\xFF'));
    EXPECT_EQ(Slot(1), std::string(160, '\xFF'));
    const std::string sent = line.Instrument().AllFromPc();
    EXPECT_EQ(sent.substr(sent.find("Fh") + 2, 160), std::string(160, '\xFF'));
}

TEST_F(HeaderUploadWindow, ABoxOfTwentyFiveIsCutBeforeTheUpload) {
    OpenAndRead();
    Type(1, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    Save();
    EXPECT_EQ(Text(1), "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(Slot(1).substr(20, 20), "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(Status(), "The DAVO has stored all ten headers.\nSTATION was cut to 20 characters.");
    Choose(2);
    EXPECT_EQ(Status(), "") << "nothing was typed since";
}

TEST_F(HeaderUploadWindow, LeavingInTheMiddleAsksAndNoGoesOn) {
    OpenAndRead();
    line.prompts.answers = {Answer::No};
    ExitAt("slot 4 of 10");
    Type(0, "STAYS");
    Save();
    EXPECT_THAT(line.prompts.shown, ElementsAre(kLeaveQuestion));
    EXPECT_THAT(line.prompts.presets, ElementsAre(Answer::No));
    ASSERT_FALSE(window.isNull());
    EXPECT_EQ(Status(), "The DAVO has stored all ten headers.");
    EXPECT_EQ(unloads, 0);
}

TEST_F(HeaderUploadWindow, YesLeavesWithEverySlotWholeOrEmpty) {
    OpenAndRead();
    line.prompts.answers = {Answer::Yes};
    ExitAt("slot 2 of 10");
    Type(0, "FIRST");
    const std::string second = Slot(2);
    Click("cmdSave");
    ASSERT_TRUE(Until([this] { return window.isNull(); }));
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(Slot(1).substr(0, 20), PadRight("FIRST", 20));
    EXPECT_EQ(Slot(2), second);
    EXPECT_EQ(Slot(4), std::string(160, '\xFF'));
    EXPECT_EQ(line.link.SendCommand("B", "RDY\r\n"), "RDY\r\n");
    EXPECT_THAT(line.prompts.shown, ElementsAre(kLeaveQuestion));
}

TEST_F(HeaderUploadWindow, LeavingWhileItErasesAsksOnceTheUploadRuns) {
    OpenAndRead();
    line.prompts.answers = {Answer::No};
    std::string at;
    ExitAt("The DAVO is erasing its headers...");
    Save();
    EXPECT_THAT(line.prompts.shown, ElementsAre(kLeaveQuestion));
    EXPECT_EQ(Status(), "The DAVO has stored all ten headers.");
}

TEST_F(HeaderUploadWindow, UnpluggingKeepsTheBoxesAndTheUploadCanBeRepeated) {
    Fault(FaultKind::Unplugged, kBeforeEchoes + 500);
    OpenAndRead();
    Type(0, "KEPT");
    Save();
    EXPECT_THAT(line.prompts.shown, ElementsAre(Link::LostMessage()));
    EXPECT_EQ(Status(), "Not all headers were saved. Please save them again.");
    EXPECT_EQ(Text(0), "KEPT");
    line.Instrument().SetFaults({});
    line.Instrument().PlugIn();
    Save();
    EXPECT_EQ(Status(), "The DAVO has stored all ten headers.");
    EXPECT_EQ(Slot(1).substr(0, 20), PadRight("KEPT", 20));
    EXPECT_EQ(Slot(2).substr(0, 20), PadRight("CENTRAL POWER", 20));
    EXPECT_EQ(line.prompts.shown.size(), 1U);
}

TEST_F(HeaderUploadWindow, UnpluggedTheSecondTimeSaysNotReady) {
    OpenAndRead();
    line.Instrument().Unplug();
    ASSERT_TRUE(Until([this] { return !line.state.portOpen; }));
    line.prompts.shown.clear();
    Save();
    EXPECT_THAT(line.prompts.shown, ElementsAre(kNotReady));
    EXPECT_EQ(Text(0), "CENTRAL POWER");
}

TEST_F(HeaderUploadWindow, ASlotThatWasNotStoredAsSentIsNamed) {
    Fault(FaultKind::Flip, kBeforeEchoes + 1600 + 5 + 3 * 160 + 1, 0);
    OpenAndRead();
    Save();
    EXPECT_THAT(line.prompts.shown, ElementsAre(u"The DAVO did not store header slot 4 as sent.\r\n"
                                                "Please save the headers to the DAVO again."_s));
    EXPECT_EQ(Status(), "The DAVO has not stored all headers as sent.");
}

TEST_F(HeaderUploadWindow, SlotsThatDoNotComeBackAreSaid) {
    patience.reply = milliseconds(2000);
    Fault(FaultKind::Cut, kBeforeEchoes + 1600 + 5 + 700);
    OpenAndRead();
    Save();
    EXPECT_THAT(line.prompts.shown,
                ElementsAre(u"The headers were sent to the DAVO but could not be read back.\r\n"
                            "Please save them to the DAVO again."_s));
    EXPECT_EQ(Status(), "The headers were sent and not read back.");
}

TEST_F(HeaderUploadWindow, RandomHeadersAreShownAgainAsTheyWereSaved) {
    std::mt19937_64 random(RandomSeed(77));
    std::array<HeaderBoxes, 10> shown;
    OpenAndRead();
    for (int slot = 1; slot <= 10; ++slot) {
        Choose(slot);
        for (int i = 0; i < 8; ++i) {
            Box(i)->setText(FromPage(RandomHeaderText(random)));
        }
        Choose(slot % 10 + 1);
        Choose(slot);
        for (int i = 0; i < 8; ++i)
            shown.at(static_cast<std::size_t>(slot - 1)).at(static_cast<std::size_t>(i)) = Text(i);
    }
    Save();
    ASSERT_EQ(Status(), "The DAVO has stored all ten headers.");
    delete window;
    slots = {};
    OpenAndRead();
    for (int slot = 1; slot <= 10; ++slot) {
        Choose(slot);
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(Text(i),
                      shown.at(static_cast<std::size_t>(slot - 1)).at(static_cast<std::size_t>(i)));
    }
}

}  // namespace
}  // namespace davo::test
