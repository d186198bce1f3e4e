// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmSetDescr.h"

#include <QApplication>
#include <QDialog>
#include <QHeaderView>
#include <QTextEdit>
#include <QToolTip>

#include <optional>

#include "tests/support/controls.h"
#include "tests/support/data_folder.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/pause.h"
#include "ui/page_input.h"

namespace davo::test {
namespace {

const char* const kNotSaved =
    "The changes to the file 'T1' are not saved. Do you want to leave without them?";
const char* const kChangedMeanwhile =
    "The file 'T1' has been changed since it was chosen. Do you want to write the header "
    "information into the changed file?";
const std::string kSaveAllTheSame =
    "What belongs there would be lost. Do you want to save 'T1' anyway?";

// The editor over a folder with the records T1 (three tests, with texts and notes) and T2 (one
// test, without); its real lists, boxes and buttons are used.
class SetDescrWindow : public ::testing::Test, public DataFolder, public Controls {
  protected:
    SetDescrWindow() {
        Put("T1", HeaderOfT1("North", "12") +
                      ShotText(1, "TEST DESCRIPTION: first               \r\n") +
                      ShotText(2, "TEST NOTES: dry                 \r\n") + ShotText(3) +
                      "NOTES:\r\nkeep\r\nthis\r\n");
        Put("T2", HeaderOfT1("South", "7") + ShotText(1));
    }
    ~SetDescrWindow() override { delete window; }

    QWidget& Window() override { return *window; }
    void Put(const char* name, const std::string& text) { ReplaceFile(PathOf(name), text); }
    QString PathOf(const char* name) const { return DataFile(QLatin1String(name)); }
    std::string Bytes(const char* name) const { return ReadWholeFile(PathOf(name)); }
    RecordHeaders Headers(const char* name) const { return ReadRecordHeaders(Bytes(name)); }

    void Open() {
        ListRecords();
        window = new frmSetDescr(directory, settings.dataPath, settings.kneepointType, prompts);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->OnUnload = [this] { ++unloads; };
        window->Form_Load();
        window->resize(1000, 620);
        ASSERT_TRUE(ShowActive(*window));
    }
    void ClickFile(const char* name) {
        ClickRecord(name);
        QApplication::processEvents();
    }
    void OpenAt(const char* file, std::optional<int> test = {}) {
        Open();
        ClickFile(file);
        if (test) ClickTest(*test);
    }
    // Of a file with a line that the rewrite takes for another one; No leaves it as it is.
    void ExpectQuestionBeforeSaving(const std::string& file) {
        Put("T1", file);
        OpenAt("T1");
        Type("txtHeader6", "plain");
        prompts.answers = {Answer::No};
        Click("cmdSave");
        EXPECT_THAT(Shown(),
                    ElementsAre("A line of the file 'T1' would be taken for another one, and what "
                                "belongs there would be lost. Do you want to save anyway?"));
        EXPECT_EQ(Bytes("T1"), file);
    }
    QTextEdit* OpenNotepad() {
        Click("cmdNotes");
        notepad = Find<QDialog>("frmNotepad");
        EXPECT_TRUE(QTest::qWaitForWindowActive(notepad));
        return notepad->findChild<QTextEdit*>(u"rt"_s);
    }
    void TypeNotes(const char* text) {
        QTextEdit* rt = OpenNotepad();
        rt->selectAll();
        for (const QChar c : QString::fromLatin1(text)) {
            if (c == QLatin1Char('\n')) {
                QTest::keyClick(rt, Qt::Key_Return);
            } else {
                QTest::keyClick(rt, c.toLatin1());
            }
        }
        notepad->close();
        ASSERT_TRUE(Until([this] { return notepad.isNull(); }));
    }
    bool WaitClosed() {
        return Until([this] { return window.isNull(); });
    }

    int unloads = 0;
    QPointer<frmSetDescr> window;
    QPointer<QDialog> notepad;
};

TEST_F(SetDescrWindow, MarksTheKneepointsThatAreChosenByThenInACertificate) {
    settings.kneepointType = QLatin1String(kKneeIeee45);
    Put("T3", FileText(1));
    OpenAt("T3");
    settings.kneepointType = QLatin1String(kKneeIeee30);
    window->resize(1300, 700);  // room for the panel
    const QString page = settings.dataPath + u"page.html"_s;
    prompts.files = {page};
    ASSERT_TRUE(Until([this] { return Find<QPushButton>("cmdSavePdf")->isEnabled(); }));
    Click("cmdSavePdf");
    EXPECT_THAT(ReadWholeFile(page), HasSubstr("Kneepoint by IEEE 30"));
}

TEST_F(SetDescrWindow, ShowsItsCaptionsAndTheRecords) {
    Open();
    EXPECT_EQ(window->windowTitle(), u"TEST Directory"_s);
    EXPECT_EQ(Find<QGroupBox>("Frame1")->title(), u"Test Header Information"_s);
    EXPECT_EQ(Find<QLabel>("lblTest")->text(),
              u"Test(s) - Choose a Filename, then Click on Test(s) to Modify Test "
              "Header Information"_s);
    EXPECT_EQ(Text("cmdNotes"), "&Notepad");
    EXPECT_EQ(Text("cmdSave"), "&Save");
    EXPECT_EQ(Text("cmdExit"), "&Exit");
    std::map<std::string, std::string> labels;
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        if (label->buddy() == nullptr) continue;
        labels[label->buddy()->objectName().toStdString()] = label->text().toStdString();
    }
    const std::map<std::string, std::string> expected = {
        {"txtFilenameData", "Filename:"}, {"txtTimeData", "Time:"},
        {"txtTestNumData", "Test#:"},     {"txtTestDescr", "Test Descr:"},
        {"txtTestNotes", "Test Notes:"},  {"txtHeader0", "Company:"},
        {"txtHeader1", "Station:"},       {"txtHeader2", "Circuit:"},
        {"txtHeader3", "MFR:"},           {"txtHeader4", "Model:"},
        {"txtHeader5", "Serial #:"},      {"txtHeader6", "Comments:"},
        {"txtHeader7", "Operator:"}};
    EXPECT_EQ(labels, expected);
    auto* lvTest = List();
    EXPECT_EQ(lvTest->columnCount(), 3);
    EXPECT_EQ(lvTest->headerItem()->text(0), u"Filename"_s);
    EXPECT_EQ(lvTest->headerItem()->text(1), u"Date"_s);
    EXPECT_EQ(lvTest->headerItem()->text(2), u"Tests"_s);
    EXPECT_EQ(lvTest->topLevelItemCount(), 2);
    EXPECT_EQ(lvTest->topLevelItem(0)->text(1), u"11/21/26"_s);
    EXPECT_EQ(lvTest->topLevelItem(0)->text(2), u"03"_s);
    for (const char* name : {"cmdSave", "cmdNotes", "txtHeader0", "txtTestDescr"})
        EXPECT_FALSE(Find<QWidget>(name)->isEnabled()) << name;
    EXPECT_TRUE(Enabled("cmdExit"));
}

TEST_F(SetDescrWindow, AChosenFileShowsItsHeaderAndTests) {
    OpenAt("T1");
    EXPECT_TRUE(Enabled("cmdSave"));
    EXPECT_TRUE(Enabled("cmdNotes"));
    EXPECT_EQ(Text("lblFilename"), "T1 ** 11/21/26 ** 03");
    EXPECT_EQ(Find<QListWidget>("lstTest")->count(), 3);
    EXPECT_EQ(Find<QListWidget>("lstTest")->item(0)->text(), u"Test 1   first"_s);
    EXPECT_EQ(Find<QListWidget>("lstTest")->item(1)->text(), u"Test 2"_s);
    EXPECT_EQ(Find<QListWidget>("lstTest")->currentRow(), -1);
    EXPECT_EQ(Text("txtHeader1"), "North");
    EXPECT_EQ(Text("txtTestDescr"), "");
    EXPECT_FALSE(Box("txtTestDescr")->isEnabled());
    ClickTest(0);
    EXPECT_EQ(Text("txtFilenameData"), "T1");
    EXPECT_EQ(Text("txtTimeData"), "10:15");
    EXPECT_EQ(Text("txtTestNumData"), "1");
    EXPECT_EQ(Text("txtTestDescr"), "first");
    EXPECT_EQ(Text("txtTestNotes"), "");
    ClickTest(1);
    EXPECT_EQ(Text("txtTestNumData"), "2");
    EXPECT_EQ(Text("txtTestDescr"), "");
    EXPECT_EQ(Text("txtTestNotes"), "dry");
    ClickFile("T2");
    EXPECT_EQ(Text("lblFilename"), "T2 ** 11/21/26 ** 03");
    EXPECT_EQ(Text("txtTestNotes"), "");
    EXPECT_EQ(Text("txtHeader1"), "South");
    EXPECT_EQ(Find<QListWidget>("lstTest")->count(), 1);
    // Nothing was edited.
    const std::string before = Bytes("T1");
    Click("cmdExit");
    EXPECT_TRUE(WaitClosed());
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(Bytes("T1"), before);
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(SetDescrWindow, SavingLosesNothingOfTestsThatWereNotClicked) {
    OpenAt("T1");
    const RecordHeaders before = Headers("T1");
    ClickTest(2);
    Type("txtTestDescr", " third ");
    Type("txtTestNotes", "new");
    EXPECT_EQ(Find<QListWidget>("lstTest")->item(2)->text(), u"Test 3   third"_s);
    Click("cmdSave");
    RecordHeaders expected = before;
    expected.testDescriptions[2] = "third";
    expected.testNotes[2] = "new";
    EXPECT_EQ(Headers("T1"), expected);
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_TRUE(window->isVisible());
    // What is saved is not written again.
    QFile::remove(PathOf("T1"));
    Click("cmdExit");
    EXPECT_TRUE(WaitClosed());
    EXPECT_FALSE(FileExists(PathOf("T1")));
}

TEST_F(SetDescrWindow, AHeaderOfTwentyFiveIsSavedAndShownAsItsFirstTwenty) {
    OpenAt("T1");
    Type("txtHeader0", "ABCDEFGHIJKLMNOPQRSTUVWXY");
    EXPECT_EQ(Box("txtHeader0")->text().size(), 25);
    Click("cmdSave");
    EXPECT_EQ(Text("txtHeader0"), "ABCDEFGHIJKLMNOPQRST");
    EXPECT_THAT(Bytes("T1"), HasSubstr("\r\nCOMPANY: ABCDEFGHIJKLMNOPQRST\r\n"));
    EXPECT_EQ(Headers("T1").fileNotes, "keep\r\nthis");
}

TEST_F(SetDescrWindow, BlanksBeforeAHeaderTakeNoRoom) {
    OpenAt("T1");
    Type("txtHeader0", "  ABCDEFGHIJKLMNOPQRST");
    Click("cmdSave");
    EXPECT_EQ(Headers("T1").header[0], "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(Text("lblState"), "T1 is saved.");
}

TEST_F(SetDescrWindow, CountsTheCharactersAndSaysWhatIsCut) {
    const auto count = [this](const char* box) {
        const auto* label = FindIn<QLabel>(*Box(box), "lblLength");
        return label->isVisible() ? label->text().toStdString() : std::string();
    };
    Open();
    ClickFile("T1");
    EXPECT_EQ(Text("lblState"), "");
    Type("txtHeader0", "ACME");
    EXPECT_EQ(count("txtHeader0"), "4 of 20");
    Type("txtHeader5", "ABCDEFGHIJKLMNOPQRSTUVWXY");
    EXPECT_EQ(count("txtHeader0"), "");
    EXPECT_EQ(count("txtHeader5"), "25 of 20");
    ClickTest(0);
    Type("txtTestDescr", "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(count("txtTestDescr"), "20 of 20");
    EXPECT_EQ(Text("lblState"), "");
    QTest::keyClick(Box("txtTestDescr"), Qt::Key_U);
    EXPECT_EQ(Text("lblState"), "Cut to 20 characters: Test Descr.");
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    Click("cmdSave");
    EXPECT_EQ(Text("lblState"), "T1 is saved. Cut to 20 characters: Serial #.");
    EXPECT_EQ(count("txtHeader5"), "");
    EXPECT_TRUE(prompts.shown.empty()) << "no box to be closed";
}

TEST_F(SetDescrWindow, SaysNoLongerThatItIsSavedWhenItIsNot) {
    OpenAt("T1");
    Click("cmdSave");
    EXPECT_EQ(Text("lblState"), "T1 is saved.");
    TypeNotes("more");
    EXPECT_EQ(Text("lblState"), "");
    Click("cmdSave");
    EXPECT_EQ(Text("lblState"), "T1 is saved.");
    DeleteFile(PathOf("T1"));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    QTest::keyClick(Box("txtHeader0"), Qt::Key_F5);
    EXPECT_EQ(Text("lblFilename"), "");
    EXPECT_EQ(Text("lblState"), "");
}

TEST_F(SetDescrWindow, SaysWhatIsSavedByEveryWay) {
    std::vector<std::string> said;
    Open();
    window->OnSaved = [&](const QString& text) { said.push_back(text.toStdString()); };
    ClickFile("T1");
    Type("txtHeader0", "one");
    Click("cmdSave");
    EXPECT_EQ(Text("lblState"), "T1 is saved.");
    Type("txtHeader0", "two");
    ClickFile("T2");
    EXPECT_EQ(Text("lblState"), "T1 is saved.");
    Type("txtHeader0", "three");
    ClickFile("T1");
    EXPECT_EQ(Text("lblState"), "T2 is saved.");
    ClickFile("T2");
    EXPECT_EQ(Text("lblState"), "") << "nothing was changed";
    Type("txtHeader0", "four");
    window->close();
    EXPECT_TRUE(WaitClosed());
    EXPECT_THAT(said, ElementsAre("T1 is saved.", "T1 is saved.", "T2 is saved.", "T2 is saved."));
}

TEST_F(SetDescrWindow, ATestsTextIsCutToTwentyAsItIsTyped) {
    OpenAt("T1", 0);
    Type("txtTestDescr", "ABCDEFGHIJKLMNOPQRSTUVWXY");
    EXPECT_EQ(Text("txtTestDescr"), "ABCDEFGHIJKLMNOPQRST");
    Type("txtTestNotes", "abcdefghijklmnopqrstu");
    EXPECT_EQ(Text("txtTestNotes"), "abcdefghijklmnopqrst");
    ClickTest(1);
    ClickTest(0);
    EXPECT_EQ(Text("txtTestDescr"), "ABCDEFGHIJKLMNOPQRST");
    Click("cmdSave");
    EXPECT_EQ(Headers("T1").testDescriptions[0], "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(Headers("T1").testNotes[0], "abcdefghijklmnopqrst");
}

TEST_F(SetDescrWindow, EmptyingADescriptionRemovesItsLine) {
    OpenAt("T1", 0);
    Type("txtTestDescr", "");
    Click("cmdSave");
    EXPECT_THAT(Bytes("T1"), Not(HasSubstr("TEST DESCRIPTION")));
    EXPECT_EQ(Find<QListWidget>("lstTest")->item(0)->text(), u"Test 1"_s);
}

TEST_F(SetDescrWindow, NotesOfAFileWithoutSomeAreAppended) {
    OpenAt("T2");
    TypeNotes("line 1\nline 2");
    Click("cmdSave");
    EXPECT_THAT(Bytes("T2"), EndsWith("50%CUR\r\nNOTES:\r\nline 1\r\nline 2\r\n"));
}

TEST_F(SetDescrWindow, UnsavedEditsOutliveTheChoiceOfAnotherTest) {
    OpenAt("T1", 0);
    Type("txtHeader2", "Feeder");
    TypeNotes("all new");
    ClickTest(1);
    EXPECT_EQ(Text("txtHeader2"), "Feeder");
    EXPECT_EQ(OpenNotepad()->toPlainText(), u"all new"_s);
    notepad->close();
    Click("cmdSave");
    EXPECT_EQ(Headers("T1").header[2], "Feeder");
    EXPECT_EQ(Headers("T1").fileNotes, "all new");
}

TEST_F(SetDescrWindow, EachKindOfEditIsWrittenBackByEveryWayOut) {
    const std::vector<std::function<void()>> edits = {
        [this] { Type("txtHeader7", "Miller"); }, [this] { Type("txtTestDescr", "changed"); },
        [this] { Type("txtTestNotes", "changed"); }, [this] { TypeNotes("changed"); }};
    const std::vector<std::function<void()>> leaves = {[this] { Click("cmdExit"); },
                                                       [this] { window->close(); }};
    int round = 0;
    for (const auto& leave : leaves) {
        for (const auto& edit : edits) {
            SCOPED_TRACE(round++);
            Put("T1", HeaderOfT1("North", "12") + ShotText(1));
            const RecordHeaders before = Headers("T1");
            OpenAt("T1", 0);
            edit();
            EXPECT_EQ(Headers("T1"), before);
            leave();
            ASSERT_TRUE(WaitClosed());
            EXPECT_NE(Headers("T1"), before);
            EXPECT_EQ(unloads, round);
        }
    }
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(SetDescrWindow, ChoosingAnotherFileWritesThePreviousOneBack) {
    OpenAt("T1", 1);
    Type("txtTestDescr", "second");
    EXPECT_EQ(Headers("T1").testDescriptions[1], "");
    ClickFile("T2");
    EXPECT_EQ(Headers("T1").testDescriptions[1], "second");
    EXPECT_EQ(Headers("T1").testNotes[1], "dry");
    EXPECT_EQ(Headers("T2").testDescriptions[0], "");
    EXPECT_EQ(Text("txtHeader1"), "South");
}

TEST_F(SetDescrWindow, AFullDiskIsSaidAndTheTextKept) {
    OpenAt("T1", 0);
    Type("txtTestDescr", "kept");
    const std::string before = Bytes("T1");
    {
        const FileSizeLimit disk(16);
        Click("cmdSave");
        ASSERT_EQ(prompts.shown.size(), 1U);
        EXPECT_THAT(Shown()[0], StartsWith("Run-time error '61': Disk full"));
        prompts.answers = {Answer::No};
        window->close();
        EXPECT_TRUE(window->isVisible());
        ASSERT_EQ(prompts.shown.size(), 2U);
        EXPECT_THAT(Shown()[1], StartsWith("Run-time error '61': Disk full"));
        EXPECT_THAT(Shown()[1], HasSubstr(std::string("\r\n\r\n") + kNotSaved));
        EXPECT_EQ(prompts.presets.back(), Answer::No);
        // Nor can another file be chosen unless the operator says so.
        prompts.answers = {Answer::No};
        ClickFile("T2");
        QApplication::processEvents();
        EXPECT_EQ(List()->currentItem()->text(0), u"T1"_s);
        EXPECT_TRUE(List()->currentItem()->isSelected());
        EXPECT_EQ(prompts.shown.size(), 3U);
    }
    EXPECT_EQ(Bytes("T1"), before);
    EXPECT_EQ(NamesIn(settings.dataPath).size(), 3U);
    EXPECT_EQ(Text("txtTestDescr"), "kept");
    EXPECT_EQ(unloads, 0);
    window->close();
    ASSERT_TRUE(WaitClosed());
    EXPECT_EQ(Headers("T1").testDescriptions[0], "kept");
}

TEST_F(SetDescrWindow, TheOperatorCanLeaveWithoutWhatCannotBeSaved) {
    OpenAt("T1");
    Type("txtHeader0", "lost");
    QFile::remove(PathOf("T1"));
    Click("cmdSave");
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(Shown()[0], StartsWith("Run-time error '53': File not found"));
    prompts.answers = {Answer::Yes};
    Click("cmdExit");
    EXPECT_TRUE(WaitClosed());
    EXPECT_EQ(unloads, 1);
    EXPECT_THAT(Shown()[1], StartsWith("Run-time error '53': File not found"));
    EXPECT_FALSE(FileExists(PathOf("T1")));
}

TEST_F(SetDescrWindow, AFileThatAnotherProgramChangedIsAskedAbout) {
    OpenAt("T1");
    Type("txtHeader0", "mine");
    const std::string changed = HeaderOfT1("North", "12") + ShotText(1) + ShotText(2) +
                                ShotText(3) + ShotText(4, "TEST NOTES: theirs\r\n");
    Put("T1", changed);
    prompts.answers = {Answer::No, Answer::No};
    window->close();
    EXPECT_THAT(Shown(), ElementsAre(kChangedMeanwhile, kNotSaved));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No, Answer::No));
    EXPECT_EQ(Bytes("T1"), changed);
    EXPECT_TRUE(window->isVisible());
    prompts.answers = {Answer::Yes};
    Click("cmdSave");
    EXPECT_EQ(Headers("T1").header[0], "mine");
    EXPECT_EQ(Headers("T1").testDescriptions[0], "") << "they removed it";
    EXPECT_EQ(Headers("T1").testNotes[3], "theirs");
    EXPECT_EQ(Find<QListWidget>("lstTest")->count(), 4);
    window->close();
    EXPECT_TRUE(WaitClosed());
    EXPECT_EQ(prompts.shown.size(), 3U);
}

TEST_F(SetDescrWindow, WhatIsWrittenWhileTheQuestionIsOpenStays) {
    Open();
    ClickFile("T1");
    Type("txtHeader0", "mine");
    const auto theirs = [](const char* station) {
        return HeaderOfT1(station, "12.5") + ShotText(1) + ShotText(2) + ShotText(3);
    };
    Put("T1", theirs("East"));
    prompts.answers = {Answer::Yes, Answer::Yes};
    prompts.onQuestion = [&](const QString&) { Put("T1", theirs("West")); };
    Click("cmdSave");
    EXPECT_THAT(Shown(), ElementsAre(kChangedMeanwhile, kChangedMeanwhile));
    std::string expected = theirs("West");
    expected.replace(expected.find(Padded("ACME")), 20, Padded("mine"));
    EXPECT_EQ(Bytes("T1"), expected);
}

TEST_F(SetDescrWindow, WhatIsWrittenWhileATextIsAskedAboutStays) {
    Open();
    ClickFile("T1");
    Type("txtHeader6", "SN: 5");
    const std::string theirs = HeaderOfT1("West", "12.5") + ShotText(1) + ShotText(2) + ShotText(3);
    prompts.answers = {Answer::Yes, Answer::Yes, Answer::Yes};
    prompts.onQuestion = [&](const QString&) { Put("T1", theirs); };
    Click("cmdSave");
    std::string expected = theirs;
    const std::string comments = "COMMENTS: ";
    expected.replace(expected.find(comments) + comments.size(), 20, Padded("SN: 5"));
    EXPECT_EQ(Bytes("T1"), expected);
}

// What another program wrote meanwhile stays, character for character.
TEST_F(SetDescrWindow, IntoAChangedFileOnlyWhatTheOperatorChangedIsWritten) {
    Open();
    ClickFile("T1");
    Type("txtHeader0", "mine");
    ClickTest(2);
    Type("txtTestDescr", "third");
    const std::string theirs =
        HeaderOfT1("South of their own, long", "12.5") +
        ShotText(1, "TEST DESCRIPTION: theirs\r\nTEST NOTES: theirs, too\r\n") + ShotText(2) +
        ShotText(3, "TEST NOTES: of them\r\n") + "NOTES:\r\ntheir\n notes";
    Put("T1", theirs);
    prompts.answers = {Answer::Yes};
    Click("cmdSave");
    EXPECT_THAT(Shown(), ElementsAre(kChangedMeanwhile));
    const std::string expected =
        std::string(HeaderOfT1("South of their own, long", "12.5"))
            .replace(theirs.find(Padded("ACME")), 20, Padded("mine")) +
        ShotText(1, "TEST DESCRIPTION: theirs\r\nTEST NOTES: theirs, too\r\n") + ShotText(2) +
        ShotText(3, "TEST DESCRIPTION: " + Padded("third") +
                        "\r\nTEST NOTES: " + Padded("of them") + "\r\n") +
        "NOTES:\r\ntheir\n notes";
    EXPECT_EQ(Bytes("T1"), expected);
    EXPECT_EQ(Text("txtHeader1"), "South of their own, long");
    EXPECT_EQ(Find<QListWidget>("lstTest")->item(0)->text(), u"Test 1   theirs"_s);
    window->close();
    EXPECT_TRUE(WaitClosed());
    EXPECT_EQ(Bytes("T1"), expected) << "nothing more was changed";
}

TEST_F(SetDescrWindow, NotesThatTheOperatorChangedTakeThePlaceOfTheirs) {
    Open();
    ClickFile("T1");
    TypeNotes("mine");
    const std::string tests = HeaderOfT1("Away", "12") + ShotText(1) + ShotText(2) + ShotText(3);
    Put("T1", tests + "NOTES:\r\ntheirs\r\n");
    prompts.answers = {Answer::Yes};
    Click("cmdSave");
    EXPECT_EQ(Bytes("T1"), tests + "NOTES:\r\nmine\r\n");
}

TEST_F(SetDescrWindow, ATextGoesToItsTestWhereTheTestsHaveOtherPlaces) {
    Open();
    ClickFile("T1");
    ClickTest(1);
    Type("txtTestDescr", "second");
    const std::string header = HeaderOfT1("North", "12");
    Put("T1", header + ShotText(2) + ShotText(3));
    prompts.answers = {Answer::Yes};
    Click("cmdSave");
    EXPECT_EQ(Bytes("T1"),
              header + ShotText(2, "TEST DESCRIPTION: " + Padded("second") + "\r\n") + ShotText(3));
}

TEST_F(SetDescrWindow, ATextOfATestThatIsGoneIsToldAndNotWritten) {
    Open();
    ClickFile("T1");
    ClickTest(2);
    Type("txtTestDescr", "third");
    Type("txtHeader0", "mine");
    const std::string theirs = HeaderOfT1("North", "12") + ShotText(1);
    Put("T1", theirs);
    prompts.answers = {Answer::Yes};
    Click("cmdSave");
    EXPECT_THAT(Shown(), ElementsAre(kChangedMeanwhile,
                                     "The file 'T1' has no test 3 any more. What was typed for it "
                                     "is not saved."));
    EXPECT_EQ(Headers("T1").header[0], "mine");
    EXPECT_EQ(Headers("T1").recNumbers, std::vector<std::string>{"1"});
    EXPECT_EQ(Headers("T1").testDescriptions[2], "");
}

TEST_F(SetDescrWindow, ARowOfTheSameNameIsItsOwnFile) {
    const QString dots = settings.dataPath + u"T1.dots.txt"_s;
    ReplaceFile(dots, HeaderOfT1("Dots", "1") + ShotText(1));
    const std::string before = Bytes("T1");
    Open();
    ASSERT_THAT(Column(0), ElementsAre("T1", "T1", "T2"));
    ClickRow(0);
    QApplication::processEvents();
    EXPECT_EQ(Text("lblFilename"), "T1.dots ** 11/21/26 ** 03");
    EXPECT_EQ(Text("txtHeader1"), "Dots");
    Type("txtHeader1", "changed");
    Click("cmdSave");
    EXPECT_EQ(ReadRecordHeaders(ReadWholeFile(dots)).header[1], "changed");
    EXPECT_EQ(Bytes("T1"), before);
}

TEST_F(SetDescrWindow, ATextWithTheKeyOfAnotherLineIsAskedAbout) {
    OpenAt("T1");
    const std::string before = Bytes("T1");
    Type("txtHeader6", "SN: 5");
    prompts.answers = {Answer::No};
    Click("cmdSave");
    EXPECT_THAT(Shown(),
                ElementsAre("The text \"SN: 5\" of COMMENTS would be read back as SN.\r\n" +
                            kSaveAllTheSame));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));
    EXPECT_EQ(Bytes("T1"), before);
    prompts.answers = {Answer::Yes};
    Click("cmdSave");
    EXPECT_EQ(Headers("T1").header[6], "SN: 5");
}

TEST_F(SetDescrWindow, EveryTextWithTheKeyOfAnotherLineIsNamed) {
    OpenAt("T1", 1);
    Type("txtHeader1", "see NOTES");
    Type("txtTestDescr", "MODEL: A");
    Type("txtTestNotes", "REC NUMBER: 2");
    const std::string theirs = HeaderOfT1("North", "99") + ShotText(1) + ShotText(2) + ShotText(3);
    Put("T1", theirs);
    prompts.answers = {Answer::Yes, Answer::No, Answer::No};
    window->close();
    ASSERT_GE(prompts.shown.size(), 2U);
    EXPECT_EQ(Shown()[0], kChangedMeanwhile);
    EXPECT_EQ(Shown()[1],
              "The text \"see NOTES\" of STATION would be read back as NOTES.\r\n"
              "The text \"MODEL: A\" of TEST DESCRIPTION 2 would be read back as MODEL.\r\n"
              "The text \"REC NUMBER: 2\" of TEST NOTES 2 would be read back as REC NUMBER.\r\n" +
                  kSaveAllTheSame);
    EXPECT_EQ(Bytes("T1"), theirs);
}

TEST_F(SetDescrWindow, ALineOfTheFileThatIsTakenForAnotherIsAskedAbout) {
    ExpectQuestionBeforeSaving(HeaderOfT1("North", "12") + "NOTES\r\n" + ShotText(1));
}

TEST_F(SetDescrWindow, AReadingThatIsTakenForATextIsAskedAbout) {
    std::string reading = ShotText(1);
    reading.insert(reading.find("VOLTAGE:"), "TEST NOTES: ");
    ExpectQuestionBeforeSaving(HeaderOfT1("North", "12") + reading);
}

TEST_F(SetDescrWindow, AFileOfMoreThanAHundredTestsIsRefusedUntouched) {
    std::string many = HeaderOfT1("North", "12");
    for (int i = 1; i <= 101; ++i)
        many += ShotText(i);
    Put("T1", many);
    OpenAt("T2");
    ClickFile("T1");
    EXPECT_THAT(Shown(),
                ElementsAre("Run-time error '9': Subscript out of range: the file holds more than "
                            "100 tests"));
    EXPECT_EQ(Bytes("T1"), many);
    EXPECT_FALSE(Enabled("cmdSave"));
    EXPECT_EQ(Find<QListWidget>("lstTest")->count(), 0);
    EXPECT_EQ(Find<QLabel>("lblFilename")->text(), QString());
    ClickFile("T2");
    EXPECT_EQ(Find<QListWidget>("lstTest")->count(), 1);
}

TEST_F(SetDescrWindow, AFileThatHasGoneIsSaid) {
    Open();
    QFile::remove(PathOf("T2"));
    ClickFile("T2");
    ASSERT_EQ(prompts.shown.size(), 1U);
    EXPECT_THAT(Shown()[0], StartsWith("Run-time error '53': File not found"));
    EXPECT_FALSE(Enabled("cmdSave"));
}

TEST_F(SetDescrWindow, CharactersOutsideThePageAreRefusedInWords) {
    OpenAt("T1", 0);
    for (const char* name : {"txtHeader3", "txtTestDescr", "txtTestNotes"}) {
        const QString before = Box(name)->text();
        Box(name)->setFocus();
        QTest::sendKeyEvent(QTest::Click, Box(name), Qt::Key_unknown, u"\u03A9"_s, {});
        EXPECT_EQ(Box(name)->text(), before);
        EXPECT_EQ(QToolTip::text(), NotInPageMessage());
        QToolTip::hideText();
    }
    Box("txtHeader3")->end(false);
    QTest::sendKeyEvent(QTest::Click, Box("txtHeader3"), Qt::Key_unknown, u"\u20AC"_s, {});
    Click("cmdSave");
    EXPECT_EQ(Headers("T1").header[3], "Maker\x80");
}

TEST_F(SetDescrWindow, AnOpenNotepadIsTakenOverWhenTheWindowCloses) {
    OpenAt("T1");
    QTextEdit* rt = OpenNotepad();
    rt->selectAll();
    QTest::keyClicks(rt, u"typed last"_s);
    window->close();
    ASSERT_TRUE(WaitClosed());
    EXPECT_EQ(Headers("T1").fileNotes, "typed last");
}

TEST_F(SetDescrWindow, TheEndOfTheProgramWritesBack) {
    OpenAt("T1");
    Type("txtHeader0", "late");
    delete window;
    EXPECT_EQ(Headers("T1").header[0], "late");
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(SetDescrWindow, TheKeysReachEverythingInTheOrderOfTheEye) {
    OpenAt("T1", 0);
    EXPECT_THAT(
        TabOrderOf(*window),
        ElementsAre("cmdRecord", "cmdNotes", "cmdSave", "cmdExit", "txtFilter", "lvTest", "lstTest",
                    "txtTestDescr", "txtTestNotes", "txtHeader0", "txtHeader1", "txtHeader2",
                    "txtHeader3", "txtHeader4", "txtHeader5", "txtHeader6", "txtHeader7"));
    EXPECT_THAT(MnemonicsOf(*window), UnorderedElementsAre("Alt+N", "Alt+S", "Alt+E", "Alt+H"));
}

TEST_F(SetDescrWindow, EverythingIsChosenByTheKeyboard) {
    Open();
    auto* lvTest = List();
    auto* lstTest = Find<QListWidget>("lstTest");
    Find<QWidget>("cmdExit")->setFocus();
    QTest::keyClick(Find<QWidget>("cmdExit"), Qt::Key_Tab);
    EXPECT_TRUE(Box("txtFilter")->hasFocus());
    QTest::keyClick(Box("txtFilter"), Qt::Key_Tab);
    EXPECT_TRUE(lvTest->hasFocus());
    QApplication::processEvents();
    EXPECT_THAT(Text("lblFilename"), StartsWith("T1 **"));
    QTest::keyClick(lvTest, Qt::Key_Tab);
    EXPECT_TRUE(lstTest->hasFocus());
    EXPECT_EQ(Text("txtTestNumData"), "1");
    QTest::keyClick(lstTest, Qt::Key_Down);
    EXPECT_EQ(Text("txtTestNumData"), "2");
    lvTest->setFocus(Qt::TabFocusReason);
    QTest::keyClick(lvTest, Qt::Key_Down);
    QApplication::processEvents();
    EXPECT_THAT(Text("lblFilename"), StartsWith("T2 **"));
}

TEST_F(SetDescrWindow, EscapeLeavesWhatHasNotChanged) {
    OpenAt("T1", 0);
    const std::string before = Bytes("T1");
    QTest::keyClick(Box("txtHeader0"), Qt::Key_Escape);
    EXPECT_TRUE(WaitClosed());
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(Bytes("T1"), before);
}

TEST_F(SetDescrWindow, EscapeNeitherDropsNorSavesWhatWasTyped) {
    OpenAt("T1", 0);
    const std::string before = Bytes("T1");
    Type("txtHeader0", "typed");
    QTest::keyClick(Box("txtHeader0"), Qt::Key_Escape);
    test::Pause(20);
    ASSERT_FALSE(window.isNull());
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Box("txtHeader0")->text(), u"typed"_s);
    EXPECT_EQ(Bytes("T1"), before);
    EXPECT_EQ(Text("lblState"), "Not saved yet. Press Save, or Exit, which saves, too.");
    Click("cmdSave");
    QTest::keyClick(Box("txtHeader0"), Qt::Key_Escape);
    EXPECT_TRUE(WaitClosed());
    EXPECT_EQ(Headers("T1").header[0], "typed");
}

TEST_F(SetDescrWindow, F5ReadsTheFolderAgainAndKeepsTheFileInHand) {
    OpenAt("T1", 1);
    Type("txtHeader0", "typed");
    Put("T0", HeaderOfT1("East", "1") + ShotText(1));
    QTest::keyClick(Box("txtHeader0"), Qt::Key_F5);
    test::Pause(20);
    EXPECT_THAT(Column(0), UnorderedElementsAre("T0", "T1", "T2"));
    EXPECT_THAT(Text("lblFilename"), StartsWith("T1 **"));
    EXPECT_EQ(Text("txtTestNumData"), "2");
    EXPECT_EQ(Box("txtHeader0")->text(), u"typed"_s);
    EXPECT_EQ(Headers("T1").header[0], "typed") << "as when another record is chosen";
    ASSERT_THAT(List()->selectedItems(), SizeIs(1));
    EXPECT_EQ(List()->selectedItems().front()->text(0), u"T1"_s);
    DeleteFile(PathOf("T1"));
    QTest::keyClick(Box("txtHeader0"), Qt::Key_F5);
    test::Pause(20);
    EXPECT_EQ(Text("lblFilename"), "");
    EXPECT_FALSE(Enabled("cmdSave"));
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(SetDescrWindow, AHeadingSortsAndTheFileInHandStays) {
    OpenAt("T1");
    QHeaderView* header = List()->header();
    for (int click = 0; click < 2; ++click) {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionPosition(0) + 5, header->height() / 2));
    }
    ASSERT_THAT(Column(0), ElementsAre("T2", "T1"));
    QApplication::processEvents();
    EXPECT_THAT(Text("lblFilename"), StartsWith("T1 **"));
    ClickRow(0);
    QApplication::processEvents();
    EXPECT_THAT(Text("lblFilename"), StartsWith("T2 **"));
}

TEST_F(SetDescrWindow, AClickBesideTheRowsKeepsTheFile) {
    OpenAt("T1");
    auto* lvTest = List();
    const QPoint below(20, lvTest->viewport()->height() - 2);
    ASSERT_EQ(lvTest->itemAt(below), nullptr);
    QTest::mouseClick(lvTest->viewport(), Qt::LeftButton, {}, below);
    QApplication::processEvents();
    ASSERT_EQ(lvTest->selectedItems().size(), 1);
    EXPECT_EQ(lvTest->selectedItems().front()->text(0), u"T1"_s);
    EXPECT_TRUE(Enabled("cmdSave"));
}

TEST_F(SetDescrWindow, NothingIsCut) {
    OpenAt("T1", 0);
    // Also in the room that a laptop's screen leaves at 150 %.
    for (const QSize& size : {QSize(1000, 620), QSize(900, 448)}) {
        window->resize(size);
        QApplication::processEvents();
        EXPECT_EQ(window->size(), size);
        EXPECT_THAT(CutTextsOf(*window), IsEmpty());
        EXPECT_GE(Box("txtTestNotes")->y() - Box("txtTestDescr")->geometry().bottom(), 3);
    }
    // Beside the main window's own bars there is room for it on a laptop's screen at 150 %.
    EXPECT_LE(window->minimumSizeHint().width(), 1366 / 1.5);
    EXPECT_LE(window->minimumSizeHint().height(), 768 / 1.5 - 60);
}

TEST_F(SetDescrWindow, FiltersTheRecordsAndKeepsTheFileInHand) {
    OpenAt("T1");
    Type("txtHeader1", "Westend");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F, Qt::ControlModifier);
    ASSERT_TRUE(Box("txtFilter")->hasFocus());
    QTest::keyClicks(Box("txtFilter"), u"south"_s);
    QApplication::processEvents();
    EXPECT_THAT(Column(0), ElementsAre("T2"));
    EXPECT_EQ(Text("lblFiltered"), "1 of 2 records");
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_THAT(Bytes("T1"), HasSubstr("North")) << "to hide a record is not to leave it";
    EXPECT_EQ(Text("txtHeader1"), "Westend");
    QTest::keyClick(Box("txtFilter"), Qt::Key_Escape);
    QApplication::processEvents();
    ASSERT_THAT(List()->selectedItems(), SizeIs(1));
    EXPECT_EQ(List()->selectedItems().front()->text(0), u"T1"_s);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Text("txtHeader1"), "Westend");
}

}  // namespace
}  // namespace davo::test
