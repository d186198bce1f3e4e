// SPDX-License-Identifier: GPL-3.0-or-later
#include <QTimer>
#include <QToolTip>
#include <optional>

#include "tests/retrieval/header_window.h"
#include "tests/support/pause.h"
#include "tests/support/processor_share.h"
#include "tests/support/scripted_link.h"

namespace davo::test {
namespace {

using std::chrono::milliseconds;

class HeaderModes : public HeaderWindowOn<ScriptedLine> {
  protected:
    HeaderModes() {
        patience = {milliseconds(20), milliseconds(200), milliseconds(200)};
        filled[0] = PadRight("ACME", 20) + PadRight("North", 20) + std::string(120, ' ');
        filled[1] = PadRight("OTHER", 160);
    }
    void AnswerRead(const std::string& memory) {
        line.port.OnOutput("B", "RDY\r\n").OnOutput("Fr", memory + "\r\n");
    }
    bool Visible(const char* name) { return Find<QWidget>(name)->isVisible(); }
    std::string Caption() { return Text("cmdSave"); }

    HeaderSlots filled;
};

TEST_F(HeaderModes, Mode1ShowsTheHeaderWithoutNotepadAndSlots) {
    header.Field(0) = "ACME                ";
    header.Field(7) = "J. DOE              ";
    Open(HeaderMode::Pc);
    EXPECT_EQ(window->windowTitle(), u"Test Record Header Information"_s);
    EXPECT_EQ(Caption(), "&Save");
    EXPECT_FALSE(Visible("cmdNotes"));
    EXPECT_FALSE(Visible("cboHeader"));
    EXPECT_FALSE(Visible("lblHeader"));
    EXPECT_EQ(Text(0), "ACME");
    EXPECT_EQ(Text(7), "J. DOE");
    EXPECT_THAT(line.port.sent, IsEmpty());
}

TEST_F(HeaderModes, Mode1SavesTheHeaderFileToo) {
    Open(HeaderMode::Pc);
    Type(0, "ACME");
    Type(5, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    int changes = 0;
    window->OnChanged = [&] { ++changes; };
    Save();
    EXPECT_EQ(header.Field(0), "ACME                ");
    EXPECT_EQ(header.Field(5), "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(header.Field(1), "");
    EXPECT_EQ(Text(5), "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(Status(),
              "This header is saved and used for the tests that follow.\n"
              "SN was cut to 20 characters.");
    EXPECT_THAT(ReadLines(folder.Path("Davo.ini")),
                ElementsAre("COMPANY:ACME                ", "STATION:", "CIRCUIT:", "MFR:",
                            "MODEL:", "SN:ABCDEFGHIJKLMNOPQRST", "COMMENTS:", "OPERATOR:"));
    Click("cmdExit");
    EXPECT_EQ(unloads, 1);
}

TEST_F(HeaderModes, Mode1SaysWhenTheFileCannotBeWritten) {
    ASSERT_TRUE(QDir().mkpath(folder.Path("Davo.ini")));
    Open(HeaderMode::Pc);
    Type(0, "ACME");
    Save();
    ASSERT_EQ(line.prompts.shown.size(), 1U);
    EXPECT_EQ(Status(), "Not saved yet. Press Save.");
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Text(0), "ACME");
}

TEST_F(HeaderModes, Mode1AsksAboutATextThatWouldBeReadBackAsAnotherField) {
    header.Field(0) = "OLD                 ";
    Open(HeaderMode::Pc);
    Type(0, "ACME");
    Type(6, " SEE SN: 5");
    Type(7, "MODEL:X COMPANY:Y");
    const QString question =
        u"The text \"SEE SN: 5\" of COMMENTS would be read back as SN.\r\n"
        "The text \"MODEL:X COMPANY:Y\" of OPERATOR would be read back as COMPANY.\r\n"
        "Do you want to save the header anyway?"_s;
    line.prompts.answers = {Answer::No, Answer::Yes};
    Save();
    EXPECT_THAT(line.prompts.shown, ElementsAre(question));
    EXPECT_THAT(line.prompts.presets, ElementsAre(Answer::No));
    EXPECT_FALSE(FileExists(folder.Path("Davo.ini")));
    EXPECT_EQ(header.Field(0), "OLD                 ");
    EXPECT_EQ(Text(6), " SEE SN: 5");
    EXPECT_EQ(Status(), "Not saved yet. Press Save.");
    Save();
    EXPECT_THAT(line.prompts.shown, ElementsAre(question, question));
    EXPECT_EQ(header.Field(6), "SEE SN: 5           ");
    HeaderTable readBack;
    LoadHeaderFile(readBack, folder.Path(""));
    EXPECT_THAT(readBack.Field(5), StartsWith(" 5")) << "what the question warns of";
    EXPECT_THAT(readBack.Field(0), StartsWith("Y"));
}

TEST_F(HeaderModes, Mode1DoesNotAskAboutATextThatIsReadBackAsItIs) {
    Open(HeaderMode::Pc);
    Type(0, "OPERATOR: SN:1");
    Type(5, "SN 5, COMMENTS:");
    Type(7, "SN:5 beyond twenty MODEL:");
    Type(6, "12345678901234567890SN:");
    Type(7, "OPERATOR:");
    Save();
    EXPECT_THAT(line.prompts.shown, IsEmpty());
    HeaderTable readBack;
    LoadHeaderFile(readBack, folder.Path(""));
    for (int i = 0; i < kHeaderFieldCount; ++i)
        EXPECT_EQ(readBack.Field(i), PadRight(header.Field(i), 20)) << i;
}

TEST_F(HeaderModes, ExitDoesNotSave) {
    Open(HeaderMode::Pc);
    Type(0, "ACME");
    Click("cmdExit");
    EXPECT_FALSE(FileExists(folder.Path("Davo.ini")));
    EXPECT_EQ(header.Field(0), "");
    EXPECT_EQ(unloads, 1);
}

TEST_F(HeaderModes, Mode2ReadsAndShowsTheSlots) {
    AnswerRead(JoinSlots(filled));
    header.Field(0) = "NOT THIS            ";
    OpenAndRead();
    EXPECT_EQ(Caption(), "Save to &DAVO");
    EXPECT_FALSE(Visible("cmdNotes"));
    EXPECT_TRUE(Visible("cboHeader"));
    EXPECT_EQ(Text("lblHeader"), "HEADER:");
    EXPECT_TRUE(Visible("lblHeader"));
    const auto* cboHeader = Find<QComboBox>("cboHeader");
    ASSERT_EQ(cboHeader->count(), 10);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(cboHeader->itemText(i), QString::number(i + 1));
    EXPECT_EQ(Text(0), "ACME");
    EXPECT_EQ(Text(1), "North");
    Choose(2);
    EXPECT_EQ(Text(0), "OTHER");
    EXPECT_EQ(Text(1), "");
    Choose(3);
    EXPECT_EQ(Text(0), "");
    EXPECT_EQ(Status(), "") << "nothing was typed";
    EXPECT_THAT(line.prompts.shown, IsEmpty());
}

TEST_F(HeaderModes, ControlCharactersAreShownReplacedAndTold) {
    header.Field(0) = "AC\x01ME\x7F             ";
    Open(HeaderMode::Pc);
    EXPECT_EQ(Text(0), "AC?ME?");
    EXPECT_EQ(Status(), "The header of the PC has control characters, shown as \"?\".");
    Save();
    EXPECT_EQ(header.Field(0), "AC?ME?              ");
    EXPECT_THAT(ReadLines(folder.Path("Davo.ini")), Contains("COMPANY:AC?ME?              "));
}

TEST_F(HeaderModes, Mode2ShowsAndSendsControlCharactersReplaced) {
    filled[1][2] = '\x02';
    AnswerRead(JoinSlots(filled));
    OpenAndRead();
    EXPECT_EQ(Status(), "The header of the DAVO has control characters, shown as \"?\".");
    EXPECT_EQ(Text(0), "ACME");
    Choose(2);
    EXPECT_EQ(Text(0), "OT?ER");
    EXPECT_EQ(slots[1], PadRight("OT?ER", 160)) << "what is sent";
}

TEST_F(HeaderModes, Mode2TellsNothingOfWhatAnEmptySlotHolds) {
    std::string memory = JoinSlots(filled);
    memory.replace(kHeaderSlotWidth, kHeaderSlotWidth, std::string(kHeaderSlotWidth, '\0'));
    memory[kHeaderSlotWidth] = kEmptySlotFill;
    AnswerRead(memory);
    OpenAndRead();
    EXPECT_EQ(Status(), "");
    EXPECT_EQ(Text(0), "ACME");
}

TEST_F(HeaderModes, Mode2SaysWhenTheInstrumentIsSilentAndStaysUsable) {
    OpenAndRead();
    EXPECT_THAT(line.prompts.shown, ElementsAre(kNotReady));
    EXPECT_EQ(Status(), "The headers of the DAVO were not read.");
    Click("cmdExit");
    EXPECT_EQ(unloads, 1);
}

TEST_F(HeaderModes, AReplyOf1601CharactersIsIgnoredWithoutAMessage) {
    slots[0] = PadRight("AS IT WAS", 160);
    AnswerRead(std::string(1599, 'x'));
    OpenAndRead();
    EXPECT_EQ(Text(0), "AS IT WAS");
    EXPECT_THAT(line.prompts.shown, IsEmpty());
    EXPECT_EQ(Status(), "The headers of the DAVO were not read.");
}

TEST_F(HeaderModes, ASlotIsPackedWhenTheSelectionLeavesIt) {
    AnswerRead(JoinSlots(filled));
    OpenAndRead();
    Type(1, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    EXPECT_EQ(Status(), "Not in the DAVO yet. Press Save to DAVO.");
    Choose(3);
    EXPECT_EQ(Status(),
              "Not in the DAVO yet. Press Save to DAVO.\nSTATION was cut to 20 characters.");
    EXPECT_EQ(slots[0], PadRight("ACME", 20) + "ABCDEFGHIJKLMNOPQRST" + std::string(120, ' '));
    Type(0, "NEW");
    Choose(1);
    EXPECT_EQ(Text(1), "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(slots[2], PadRight("NEW", 160));
    Type(0, "");
    Type(1, "");
    Choose(2);
    EXPECT_EQ(slots[0], std::string(160, '\xFF'));
    EXPECT_THAT(line.port.sent, ElementsAre("B", "Fr"));
}

TEST_F(HeaderModes, SavingSlotsThatWereNotReadAsksFirst) {
    OpenAndRead();
    line.prompts.shown.clear();
    line.prompts.answers = {Answer::No};
    Type(0, "ACME");
    Type(1, "ABCDEFGHIJKLMNOPQRSTUVWXY");
    Save();
    EXPECT_EQ(Status(),
              "Not in the DAVO yet. Press Save to DAVO.\nSTATION was cut to 20 characters.");
    EXPECT_THAT(line.prompts.shown,
                ElementsAre(u"The headers of the DAVO were not read.\r\n"
                            "All ten are replaced by those of this window, empty ones too.\r\n"
                            "Do you want to save them to the DAVO anyway?"_s));
    EXPECT_THAT(line.prompts.presets, ElementsAre(Answer::No));
    EXPECT_THAT(line.port.sent, ElementsAre("B"));
    EXPECT_EQ(Text(0), "ACME");
    line.prompts.shown.clear();
    line.prompts.answers = {Answer::Yes};
    Save();
    EXPECT_EQ(line.prompts.shown.back(), kNotReady) << "it is still silent";
    EXPECT_EQ(Status(), "Not all headers were saved. Please save them again.");
}

// What the operator does in a wait comes from the wait's own event loop.
TEST_F(HeaderModes, ExitEndsAWaitWithoutAQuestion) {
    patience.reply = milliseconds(60000);
    line.port.OnOutput("B", "RDY\r\n").OnOutputDo("Fr", [this] {
        QTimer::singleShot(50, window, [this] {
            EXPECT_TRUE(Enabled("cmdExit"));
            EXPECT_FALSE(Enabled("cmdSave"));
            EXPECT_FALSE(Box(0)->isEnabled());
            EXPECT_FALSE(Find<QComboBox>("cboHeader")->isEnabled());
            Click("cmdExit");
        });
    });
    Make(HeaderMode::Davo);
    EXPECT_TRUE(Until([this] { return window.isNull(); }));
    EXPECT_EQ(unloads, 1);
    EXPECT_THAT(line.prompts.shown, IsEmpty());
}

TEST_F(HeaderModes, AWaitUsesNoProcessorAndLeavesTheWindowAlive) {
    patience.reply = milliseconds(60000);
    std::optional<ProcessorShare> share;
    double used = 1;
    std::string status;
    line.port.OnOutput("B", "RDY\r\n").OnOutputDo("Fr", [&] {
        QTimer::singleShot(100, window, [&] { share.emplace(); });
        QTimer::singleShot(700, window, [&] {
            used = share.value().Now();
            status = Status();
            line.port.Deliver(JoinSlots(filled) + "\r\n");
        });
    });
    OpenAndRead();
    EXPECT_LT(used, kMostOfACore);
    EXPECT_EQ(status, "Reading the headers of the DAVO...");
    EXPECT_EQ(Text(0), "ACME");
}

TEST_F(HeaderModes, EnterInABoxGoesToTheNextAndDoesNotUpload) {
    AnswerRead(JoinSlots(filled));
    OpenAndRead();
    for (int i = 0; i < 8; ++i) {
        EXPECT_TRUE(Box(i)->hasFocus()) << i;
        QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    }
    EXPECT_TRUE(Find<QPushButton>("cmdSave")->hasFocus());
    EXPECT_THAT(line.port.sent, ElementsAre("B", "Fr"));
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    EXPECT_THAT(line.port.sent, ElementsAre("B", "Fr", "B")) << "a button is pressed by Enter";
}

TEST_F(HeaderModes, TheCharacterThatMarksAnEmptySlotIsRefusedInWords) {
    AnswerRead(JoinSlots(filled));
    OpenAndRead();
    for (const QChar c : {QChar(0xFF), QChar(0x3A9)}) {
        Type(2, "");
        QToolTip::hideText();
        QTest::sendKeyEvent(QTest::Click, Box(2), Qt::Key_unknown, QString(c), {});
        EXPECT_EQ(Text(2), "");
        EXPECT_EQ(QToolTip::text(), u"The DAVO cannot store this character in a header."_s);
    }
}

TEST_F(HeaderModes, NoTextIsCutAndEveryMnemonicIsUnique) {
    for (const HeaderMode mode : {HeaderMode::Pc, HeaderMode::Davo}) {
        if (mode == HeaderMode::Davo) AnswerRead(JoinSlots(filled));
        Open(mode);
        ASSERT_TRUE(Until([this] { return Idle(); }));
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
        EXPECT_TRUE(FitsItsScreen(*window));
        auto mnemonics = MnemonicsOf(*window);
        std::sort(mnemonics.begin(), mnemonics.end());
        EXPECT_EQ(std::unique(mnemonics.begin(), mnemonics.end()), mnemonics.end());
        delete window;
    }
}

TEST_F(HeaderModes, NoStatusIsCut) {
    AnswerRead(JoinSlots(filled));
    OpenAndRead();
    for (const char* text : {"slot 10 of 10, 1600 characters not answered",
                             "Not all headers were saved. Please save them again.",
                             "The DAVO has not stored all headers as sent.",
                             "Not in the DAVO yet. Press Save to DAVO.\n"
                             "8 fields were cut to 20 characters."}) {
        Find<QLabel>("lblUsed")->setText(QLatin1String(text));
        test::Pause(20);
        EXPECT_THAT(CutTextsOf(*window), IsEmpty()) << text;
    }
}

TEST_F(HeaderModes, TheTabKeyFollowsTheEye) {
    AnswerRead(JoinSlots(filled));
    OpenAndRead();
    EXPECT_THAT(
        TabOrderOf(*window),
        ElementsAre("cboHeader", "txtHeader0", "txtHeader1", "txtHeader2", "txtHeader3",
                    "txtHeader4", "txtHeader5", "txtHeader6", "txtHeader7", "cmdSave", "cmdExit"));
}

}  // namespace
}  // namespace davo::test
