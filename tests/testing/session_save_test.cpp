// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/session_save.h"

#include <QDir>

#include "common/places.h"
#include "common/text.h"
#include "records/unsaved_sessions.h"
#include "tests/support/read_record.h"
#include "tests/support/testing.h"
#include "tests/testing/sequence_rig.h"

namespace davo::test {
namespace {

const QString kSaveQuestion = u"Do you want to save the test record? "_s;
const QString kNotSavedQuestion = u"The test record is not saved. Do you still want to exit? "_s;
const QString kInnerDot = u"Filename cannot contain ''.''  Please Re-enter."_s;
const QString kViewQuestion = u"Do you want to view test results? "_s;

const std::string kLostQuestion =
    "The shots of this session are only in memory and will be lost. Do you still want to exit? ";

std::vector<std::string> Utf8(const std::vector<QString>& texts) {
    std::vector<std::string> result;
    result.reserve(texts.size());
    for (const QString& text : texts)
        result.push_back(text.toStdString());
    return result;
}

// A session with a data folder of its own.
class SessionSave : public ::testing::Test {
  protected:
    SessionSave() {
        settings.dataPath = rig.folder.Path("Shots_Data/");
        EXPECT_TRUE(QDir().mkpath(settings.dataPath));
        rig.OpenFor(true);
    }

    SaveOutcome Exit(bool offerResults = false) {
        return ExitAndSave(rig.sequence, settings, offerResults);
    }
    // "folder|*.txt" as the prompts keep it.
    QString Dialog(const QString& folder) const { return folder + u"|*.txt"_s; }
    QString Data(const char* name) const { return settings.dataPath + QLatin1String(name); }
    std::vector<std::string> Shown() const { return Utf8(rig.prompts.shown); }

    SequenceRig rig;
    Settings settings;
    std::deque<Answer>& answers = rig.prompts.answers;
    std::deque<QString>& files = rig.prompts.files;
};

TEST_F(SessionSave, BeepsTwiceAndStopsTheTimers) {
    rig.RunRatioShot();
    rig.beeps = 0;
    answers = {Answer::No, Answer::Yes};
    Exit();
    EXPECT_EQ(rig.beeps, 2);
    EXPECT_FALSE(rig.sequence.Polling());
    EXPECT_FALSE(rig.sequence.Clocking());
}

TEST_F(SessionSave, ClosesWithoutAQuestionWhenNoShotWasTaken) {
    const SaveOutcome outcome = Exit();
    EXPECT_TRUE(outcome.closeWindow);
    EXPECT_TRUE(rig.prompts.shown.empty());
}

TEST_F(SessionSave, StaysOpenAfterTheShotWasDropped) {
    rig.RunRatioShot();
    rig.sequence.cmdContinue_Click();  // "&Repeat Test"
    const SaveOutcome outcome = Exit();
    EXPECT_FALSE(outcome.closeWindow);
    EXPECT_FALSE(rig.sequence.Clocking());
    EXPECT_TRUE(rig.prompts.shown.empty());
}

TEST_F(SessionSave, AfterADroppedShotTheWindowSaysWhatIsPossible) {
    rig.RunRatioShot();
    rig.sequence.cmdContinue_Click();  // "&Repeat Test"
    Exit();
    EXPECT_EQ(rig.Screen().lblNotice,
              (ControlView{"SHOT DROPPED.\nPRESS NEXT TEST, OR ESC.", true, true}));
    EXPECT_FALSE(rig.Screen().noticeWarns);
    rig.RunRatioShot();
    EXPECT_FALSE(rig.Screen().lblNotice.visible);
}

TEST_F(SessionSave, AfterTheRefusedShotExitAsksToSave) {
    rig.RunRatioShot("241.2");
    rig.session.shotCount = kShotRefusal;
    rig.RunRatioShot("333.3");
    rig.session.shotCount = 1;
    rig.prompts.shown.clear();
    answers = {Answer::Yes};
    files = {Data("T1.txt")};
    const SaveOutcome outcome = Exit();
    EXPECT_TRUE(outcome.closeWindow);
    EXPECT_EQ(rig.prompts.shown.at(0), kSaveQuestion);
    const TestRecordFile record = ReadTestRecordFile(Data("T1.txt"));
    ASSERT_EQ(record.records.size(), 1U);
    EXPECT_EQ(record.records[0].measuredRatio, "241.2");
}

TEST_F(SessionSave, WritesTheRecordFile) {
    rig.header.Field(0) = PadRight("ACME", 20);
    rig.session.testNotes = "first\r\nsecond";
    rig.RunRatioShot("241.2");
    rig.RunRatioShot("238.8");
    answers = {Answer::Yes};
    files = {Data("T1.txt")};
    const SaveOutcome outcome = Exit();
    EXPECT_TRUE(outcome.closeWindow);
    EXPECT_FALSE(outcome.viewResults);
    EXPECT_EQ(outcome.savedFile, Data("T1.txt"));
    EXPECT_THAT(Shown(),
                ElementsAre(kSaveQuestion.toStdString(), Dialog(settings.dataPath).toStdString()));
    EXPECT_THAT(rig.prompts.presets, ElementsAre(Answer::Yes));
    const TestRecordFile record = ReadTestRecordFile(Data("T1.txt"));
    EXPECT_EQ(record.headers.at(0).testNumber, "T1");
    EXPECT_EQ(record.headers.at(0).date, "11/21/26");
    EXPECT_EQ(record.headers.at(0).time, "14:05");
    EXPECT_EQ(record.headers.at(0).shots, "02");
    EXPECT_EQ(TrimBlanks(record.headers.at(0).fields[0]), "ACME");
    ASSERT_EQ(record.records.size(), 2U);
    EXPECT_EQ(record.records[0].measuredRatio, "241.2");
    EXPECT_EQ(record.records[1].measuredRatio, "238.8");
    EXPECT_THAT(record.notes, ElementsAre("first\r\nsecond\r\n"));
}

TEST_F(SessionSave, MarksTheJournalSavedOnlyAfterASave) {
    rig.RunRatioShot();
    EXPECT_FALSE(rig.Journal().saved);
    answers = {Answer::Yes};
    files = {Data("T1.txt")};
    rig.prompts.onMessage = [](const QString& text) { FAIL() << text.toStdString(); };
    Exit();
    EXPECT_TRUE(rig.Journal().saved);
    EXPECT_TRUE(SetAsideUnsavedSessions(rig.places.scratchFolder).empty());
}

TEST_F(SessionSave, ADeclinedSessionCanStillBeRecovered) {
    rig.RunRatioShot();
    answers = {Answer::No, Answer::Yes};
    const SaveOutcome outcome = Exit();
    EXPECT_TRUE(outcome.closeWindow);
    EXPECT_TRUE(outcome.savedFile.isEmpty());
    EXPECT_THAT(Shown(), ElementsAre(kSaveQuestion.toStdString(), kNotSavedQuestion.toStdString()));
    EXPECT_THAT(rig.prompts.presets, ElementsAre(Answer::Yes, Answer::No));
    const auto sessions = SetAsideUnsavedSessions(rig.places.scratchFolder);
    ASSERT_EQ(sessions.size(), 1U);
    EXPECT_EQ(sessions.front().shots, 1);
}

TEST_F(SessionSave, DecliningToExitAsksAgainWhetherToSave) {
    rig.RunRatioShot();
    answers = {Answer::No, Answer::No, Answer::Yes};
    files = {Data("T1.txt")};
    EXPECT_EQ(Exit().savedFile, Data("T1.txt"));
    EXPECT_THAT(Shown(),
                ElementsAre(kSaveQuestion.toStdString(), kNotSavedQuestion.toStdString(),
                            kSaveQuestion.toStdString(), Dialog(settings.dataPath).toStdString()));
}

TEST_F(SessionSave, AnEmptyNameClosesWithoutSaving) {
    rig.RunRatioShot();
    answers = {Answer::Yes};
    files = {QString()};
    const SaveOutcome outcome = Exit(true);
    EXPECT_TRUE(outcome.closeWindow);
    EXPECT_TRUE(outcome.savedFile.isEmpty());
    EXPECT_EQ(rig.prompts.shown.back(),
              u"No test record was saved. The session is kept and will be offered again."_s);
    EXPECT_FALSE(rig.Journal().saved);
    EXPECT_TRUE(QDir(settings.dataPath).isEmpty());
}

TEST_F(SessionSave, AnInnerDotIsRefusedAndTheDialogShownAgain) {
    rig.RunRatioShot();
    answers = {Answer::Yes};
    files = {Data("My.Test.txt"), Data("My.Test"), Data("T1.dat"), Data("T1.txt")};
    Exit();
    const std::string dialog = Dialog(settings.dataPath).toStdString();
    const std::string refused = kInnerDot.toStdString();
    EXPECT_THAT(Shown(), ElementsAre(kSaveQuestion.toStdString(), dialog, refused, dialog, refused,
                                     dialog, refused, dialog));
    EXPECT_EQ(QDir(settings.dataPath).entryList(QDir::Files), QStringList(u"T1.txt"_s));
}

TEST_F(SessionSave, ANameWithoutAnExtensionGetsOne) {
    rig.RunRatioShot();
    answers = {Answer::Yes};
    files = {Data("T1")};
    EXPECT_EQ(Exit().savedFile, Data("T1.txt"));
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).headers.at(0).testNumber, "T1");
}

TEST_F(SessionSave, ANameThatRenameRefusesIsRefusedInWords) {
    const QString device = u"The name %1 is that of a device and cannot be a file's."_s;
    const QString character =
        u"The name %1 has a character that a file name cannot have.\r\n"
        "These are not possible: \\ / : * ? \" < > | . !"_s;
    const std::pair<const char*, QString> names[] = {
        {"A!B", character.arg(u"A!B"_s)},
        {"a:b.txt", character.arg(u"a:b"_s)},
        {"CON", device.arg(u"CON"_s)},
        {"lpt1.TXT", device.arg(u"lpt1"_s)},
        {"..txt", character.arg(u"."_s)},
        {".txt", u"The test record needs a name."_s},
        {" .TXT ", u"The test record needs a name."_s}};
    rig.RunRatioShot();
    answers = {Answer::Yes};
    for (const auto& [name, said] : names)
        files.push_back(Data(name));
    files.push_back(Data("T1"));
    EXPECT_EQ(Exit().savedFile, Data("T1.txt"));
    for (std::size_t i = 0; i < std::size(names); ++i) {
        ASSERT_GT(rig.prompts.shown.size(), 2 + 2 * i);
        EXPECT_EQ(rig.prompts.shown.at(2 + 2 * i), names[i].second) << names[i].first;
    }
    EXPECT_EQ(QDir(settings.dataPath).entryList(QDir::Files), QStringList(u"T1.txt"_s));
}

TEST_F(SessionSave, ANameLosesItsBlanksAndEndsInTheExtension) {
    const std::pair<const char*, const char*> names[] = {
        {"A ", "A.txt"}, {"UP.TXT", "UP.txt"}, {" B .txt", "B.txt"}, {"C.Txt ", "C.txt"}};
    for (const auto& [name, written] : names) {
        rig.OpenFor(true);
        rig.RunRatioShot();
        answers = {Answer::Yes};
        files = {Data(name)};
        EXPECT_EQ(Exit().savedFile, Data(written));
        EXPECT_EQ(ReadTestRecordFile(Data(written)).headers.at(0).testNumber + ".txt", written);
    }
    EXPECT_EQ(QDir(settings.dataPath).entryList(QDir::Files).size(), 4);
}

TEST_F(SessionSave, ANameOutsideThePageIsRefusedInWords) {
    rig.RunRatioShot();
    answers = {Answer::Yes};
    files = {settings.dataPath + u"\u03A9.txt"_s, settings.dataPath + u"M\u00FCller.txt"_s};
    EXPECT_EQ(Exit().savedFile, settings.dataPath + u"M\u00FCller.txt"_s);
    EXPECT_EQ(rig.prompts.shown.at(2),
              u"The name \u03A9 has a character that a record file cannot hold."_s);
    EXPECT_EQ(ReadTestRecordFile(settings.dataPath + u"M\u00FCller.txt"_s).headers.at(0).testNumber,
              "M\xFCller");
}

TEST_F(SessionSave, AFolderWithoutADataFolderGetsOne) {
    rig.RunRatioShot();
    const QString before = settings.dataPath;
    const QString other = rig.folder.Path("Other/");
    ASSERT_TRUE(QDir().mkpath(other));
    answers = {Answer::Yes};
    files = {other + u"T1.txt"_s};
    const QString target = ShownPath(other + u"Shots_Data/T1.txt"_s);
    EXPECT_EQ(Exit().savedFile, target);
    EXPECT_EQ(ReadTestRecordFile(target).headers.at(0).testNumber, "T1");
    EXPECT_FALSE(FileExists(before + u"T1.txt"_s));
    EXPECT_EQ(settings.dataPath, before) << "the data path is put back";
}

TEST_F(SessionSave, AnotherDataFolderThatExistsIsNotWrittenTo) {
    rig.RunRatioShot();
    const QString other = rig.folder.Path("Other/Shots_Data/");
    ASSERT_TRUE(QDir().mkpath(other));
    answers = {Answer::Yes};
    files = {rig.folder.Path("Other/T1.txt")};
    EXPECT_EQ(Exit().savedFile, Data("T1.txt"));
    EXPECT_TRUE(QDir(other).isEmpty());

    rig.OpenFor(true);
    rig.RunRatioShot();
    answers = {Answer::Yes};
    files = {other + u"T2.txt"_s};
    EXPECT_EQ(Exit().savedFile, Data("T2.txt"));
    EXPECT_TRUE(QDir(other).isEmpty());
}

TEST_F(SessionSave, AnExistingFileIsReplacedOnlyAfterYes) {
    rig.RunRatioShot("241.2");
    ReplaceFile(Data("T1.txt"), "old");
    answers = {Answer::Yes, Answer::No, Answer::Yes, Answer::Yes};
    files = {Data("T1.txt"), Data("T1.txt")};
    Exit();
    const std::string dialog = Dialog(settings.dataPath).toStdString();
    const std::string exists = "File 'T1.txt' exists. Do you want to override? ";
    EXPECT_THAT(Shown(), ElementsAre(kSaveQuestion.toStdString(), dialog, exists,
                                     kSaveQuestion.toStdString(), dialog, exists));
    EXPECT_THAT(rig.prompts.presets, ElementsAre(Answer::Yes, Answer::No, Answer::Yes, Answer::No));
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).records.at(0).measuredRatio, "241.2");
}

TEST_F(SessionSave, ARefusedOverrideKeepsTheOldFile) {
    rig.RunRatioShot();
    ReplaceFile(Data("T1.txt"), "old");
    answers = {Answer::Yes, Answer::No, Answer::No, Answer::Yes};
    files = {Data("T1.txt")};
    EXPECT_TRUE(Exit().savedFile.isEmpty());
    EXPECT_EQ(ReadWholeFile(Data("T1.txt")), "old");
}

TEST_F(SessionSave, AFailedSaveIsSaidAndCanBeDoneElsewhere) {
    rig.RunRatioShot();
    // A file where a folder is needed: nothing can be written in it.
    const QString blocked = rig.folder.Path("blocked");
    ReplaceFile(blocked, "");
    const QString before = settings.dataPath;
    answers = {Answer::Yes, Answer::Yes};
    files = {blocked + u"/T1.txt"_s, Data("T2.txt")};
    const SaveOutcome outcome = Exit();
    EXPECT_EQ(outcome.savedFile, before + u"T2.txt"_s);
    EXPECT_EQ(settings.dataPath, before);
    ASSERT_EQ(rig.prompts.shown.size(), 5U);
    EXPECT_THAT(rig.prompts.shown.at(2).toStdString(),
                HasSubstr("The test record was not saved.\r\nRun-time error '"));
    EXPECT_EQ(rig.prompts.shown.at(3), kSaveQuestion);
}

TEST_F(SessionSave, AVanishedDataFolderIsSaidAndTheSessionKept) {
    rig.RunRatioShot();
    // It vanishes between the question and the writing; no folder is made, for it was there.
    answers = {Answer::Yes, Answer::No, Answer::Yes};
    const QString other = rig.folder.Path("Other/Shots_Data/");
    ASSERT_TRUE(QDir().mkpath(other));
    files = {other + u"T1.txt"_s};
    ASSERT_TRUE(QDir(settings.dataPath).removeRecursively());
    EXPECT_TRUE(Exit().savedFile.isEmpty());
    EXPECT_THAT(rig.prompts.shown.at(2).toStdString(), HasSubstr("Path not found"));
    EXPECT_EQ(SetAsideUnsavedSessions(rig.places.scratchFolder).size(), 1U);
}

TEST_F(SessionSave, WhereAVanishedDataFolderSendsTheRecordIsAskedBefore) {
    rig.RunRatioShot();
    ASSERT_TRUE(QDir(settings.dataPath).removeRecursively());
    const QString elsewhere = rig.folder.Path("Elsewhere/");
    ASSERT_TRUE(QDir().mkpath(elsewhere));
    const QString target = ShownPath(elsewhere + u"Shots_Data/T1.txt"_s);
    answers = {Answer::Yes, Answer::No, Answer::Yes, Answer::Yes};
    files = {elsewhere + u"T1.txt"_s, elsewhere + u"T1.txt"_s};
    bool madeBefore = false;
    rig.prompts.onQuestion = [&](const QString&) {
        madeBefore = madeBefore || FolderExists(elsewhere + u"Shots_Data"_s);
    };
    EXPECT_EQ(Exit().savedFile, target);
    const QString question =
        u"The data folder is not there any more. Do you want to save the test record as '%1'? "_s
            .arg(target);
    EXPECT_EQ(rig.prompts.shown.at(2), question);
    EXPECT_EQ(rig.prompts.shown.at(3), kSaveQuestion);
    EXPECT_EQ(rig.prompts.shown.at(5), question);
    EXPECT_EQ(rig.prompts.presets.at(1), Answer::No) << "the Escape key makes no folder";
    EXPECT_FALSE(madeBefore);
    EXPECT_EQ(ReadTestRecordFile(target).headers.at(0).testNumber, "T1");
}

TEST_F(SessionSave, ADeletedSessionFolderDoesNotKeepTheSessionFromBeingSaved) {
    rig.RunRatioShot("241.2");
    rig.RunRatioShot("238.8");
    answers = {Answer::Yes};
    files = {Data("T1.txt")};
    rig.prompts.onQuestion = [&](const QString&) {
        EXPECT_TRUE(QDir(rig.places.scratchFolder).removeRecursively());
    };
    EXPECT_EQ(Exit().savedFile, Data("T1.txt"));
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).records.size(), 2U);
}

TEST_F(SessionSave, WhatIsSaidToBeKeptIsOnTheDisk) {
    rig.RunRatioShot();
    answers = {Answer::Yes};
    files = {QString()};
    rig.prompts.onFile = [&] { rig.DeleteFolder(); };
    EXPECT_TRUE(Exit().closeWindow);
    EXPECT_EQ(rig.prompts.shown.back(),
              u"No test record was saved. The session is kept and will be offered again."_s);
    EXPECT_EQ(SetAsideUnsavedSessions(rig.places.scratchFolder).size(), 1U);
}

TEST_F(SessionSave, WhatIsOnlyInMemoryIsNotSaidToBeKept) {
    rig.RunRatioShot();
    answers = {Answer::Yes, Answer::No, Answer::No, Answer::Yes, Answer::Yes};
    files = {QString()};
    rig.prompts.onFile = [&] { rig.LoseFolder(); };
    const SaveOutcome outcome = Exit();
    EXPECT_TRUE(outcome.closeWindow);
    EXPECT_THAT(Shown(),
                ElementsAre(kSaveQuestion.toStdString(), Dialog(settings.dataPath).toStdString(),
                            kLostQuestion, kSaveQuestion.toStdString(),
                            kNotSavedQuestion.toStdString(), kLostQuestion));
    EXPECT_EQ(rig.prompts.presets.at(1), Answer::No);
}

TEST_F(SessionSave, ExitWithoutAPendingShotAsksBeforeItLosesTheOthers) {
    rig.RunRatioShot();
    rig.sequence.cmdStart_Click();
    rig.sequence.cmdCancel_Click();
    rig.LoseFolder();
    answers = {Answer::No};
    EXPECT_FALSE(Exit().closeWindow);
    EXPECT_THAT(Shown(), ElementsAre(kLostQuestion));
    EXPECT_THAT(rig.prompts.presets, ElementsAre(Answer::No));
    rig.FindFolder();
    EXPECT_TRUE(Exit().closeWindow);
    EXPECT_EQ(SetAsideUnsavedSessions(rig.places.scratchFolder).size(), 1U);
}

TEST_F(SessionSave, WithoutAShotNothingIsLost) {
    rig.LoseFolder();
    EXPECT_TRUE(Exit().closeWindow);
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(SessionSave, APendingShotThatIsOnlyInMemoryKeepsTheWindow) {
    rig.RunRatioShot();
    rig.LoseFolder();
    EXPECT_FALSE(Exit().closeWindow);
    EXPECT_THAT(
        Shown(),
        ElementsAre("The session cannot be saved: its folder is gone and its shots are only "
                    "in memory. Do not leave this window."));
    rig.FindFolder();
    answers = {Answer::Yes};
    files = {Data("T1.txt")};
    EXPECT_EQ(Exit().savedFile, Data("T1.txt"));
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).records.size(), 1U);
}

TEST_F(SessionSave, APendingShotThatCannotBeWrittenKeepsTheWindow) {
    rig.RunRatioShot();
    rig.sequence.Capture().Close();  // as after the loss of its disk
    const SaveOutcome outcome = Exit();
    EXPECT_FALSE(outcome.closeWindow);
    ASSERT_EQ(rig.prompts.shown.size(), 1U);
    EXPECT_THAT(rig.prompts.shown.front().toStdString(),
                HasSubstr("The last shot could not be written; the session is kept.\r\n"
                          "Run-time error '"));
    EXPECT_TRUE(rig.sequence.ShotPending());
}

TEST_F(SessionSave, ProposesTheCircuitAndTheDate) {
    rig.header.Field(2) = PadRight("FEEDER 1.2/A", 20);
    rig.header.Field(5) = PadRight("4711", 20);
    rig.RunRatioShot();
    rig.header.headerFields[kHeaderDate] = "11/21/26";
    answers = {Answer::Yes};
    files = {Data("FEEDER 1-2-A 11-21-26")};
    Exit();
    EXPECT_THAT(Utf8(rig.prompts.proposed), ElementsAre("FEEDER 1-2-A 11-21-26"));
    EXPECT_TRUE(FileExists(Data("FEEDER 1-2-A 11-21-26.txt")));
}

TEST_F(SessionSave, ProposesTheSerialNumberWithoutACircuitAndNeverAnExistingName) {
    rig.header.Field(2) = std::string(20, ' ');
    rig.header.Field(5) = PadRight("4711", 20);
    rig.RunRatioShot();
    rig.header.headerFields[kHeaderDate] = "11/21/26";
    ReplaceFile(Data("4711 11-21-26.txt"), "there");
    ReplaceFile(Data("4711 11-21-26 (2).txt"), "there");
    answers = {Answer::Yes};
    files = {Data("a.b.txt"), Data("T1.txt")};
    Exit();
    EXPECT_THAT(Utf8(rig.prompts.proposed), ElementsAre("4711 11-21-26 (3)", "4711 11-21-26 (3)"));
}

TEST_F(SessionSave, AsksForTheResultsWhenThereIsAReport) {
    rig.RunRatioShot();
    answers = {Answer::Yes, Answer::Yes};
    files = {Data("T1.txt")};
    EXPECT_TRUE(Exit(true).viewResults);
    EXPECT_EQ(rig.prompts.shown.back(), kViewQuestion);

    rig.OpenFor(true);
    rig.RunRatioShot();
    answers = {Answer::Yes, Answer::No};
    files = {Data("T2.txt")};
    const SaveOutcome outcome = Exit(true);
    EXPECT_FALSE(outcome.viewResults);
    EXPECT_TRUE(outcome.closeWindow);
}

// Sessions of an earlier run: the program was killed while rig ran them.
class UnsavedSessions : public SessionSave {
  protected:
    std::vector<UnsavedSession> Listed() {
        return SetAsideUnsavedSessions(rig.places.scratchFolder);
    }
    // Saves the only one; the path of the record file.
    QString Save() {
        const QString saved = SaveUnsavedSession(Listed().at(0), rig.prompts, settings);
        EXPECT_TRUE(answers.empty());
        EXPECT_TRUE(files.empty());
        return saved;
    }
};

TEST_F(UnsavedSessions, OneIsSavedWithItsOwnHeaderAndNotes) {
    rig.header.Field(1) = PadRight("NORTH", 20);
    rig.session.testNotes = "old notes";
    rig.RunRatioShot("241.2");
    rig.RunRatioShot("238.8");
    rig.header = {};
    rig.session = {};
    files = {Data("Old.txt")};
    EXPECT_EQ(Save(), Data("Old.txt"));
    const TestRecordFile record = ReadTestRecordFile(Data("Old.txt"));
    EXPECT_EQ(record.headers.at(0).shots, "02");
    EXPECT_EQ(record.headers.at(0).date, "11/21/26");
    EXPECT_EQ(TrimBlanks(record.headers.at(0).fields[1]), "NORTH");
    EXPECT_THAT(record.notes, ElementsAre("old notes\r\n"));
    ASSERT_EQ(record.records.size(), 2U);
    EXPECT_EQ(record.records[1].measuredRatio, "238.8");
    EXPECT_THAT(Listed(), IsEmpty());
}

TEST_F(UnsavedSessions, WithoutANameItIsStillThere) {
    rig.RunRatioShot();
    files = {QString()};
    EXPECT_EQ(Save(), QString());
    EXPECT_EQ(Listed().size(), 1U);
    files = {Data("Old.txt")};
    EXPECT_EQ(Save(), Data("Old.txt"));
    EXPECT_EQ(ReadTestRecordFile(Data("Old.txt")).records.size(), 1U);
}

TEST_F(UnsavedSessions, AFailedSaveIsSaidAndAsksForTheFileAgain) {
    rig.RunRatioShot();
    const QString blocked = rig.folder.Path("blocked");
    ReplaceFile(blocked, "");
    files = {blocked + u"/T1.txt"_s, Data("T2.txt")};
    EXPECT_EQ(Save(), Data("T2.txt"));
    EXPECT_THAT(rig.prompts.shown.at(1).toStdString(), HasSubstr("The test record was not saved."));
    EXPECT_EQ(ReadTestRecordFile(Data("T2.txt")).records.size(), 1U);
}

// The record is there: an error alone would have the operator save it once more.
TEST_F(UnsavedSessions, OneWhoseFilesCannotBeDeletedIsSavedAllTheSame) {
    const QString held = u"/proc/version"_s;  // a file that nobody can delete
    if (!FileExists(held)) GTEST_SKIP() << "there is no such file here";
    rig.RunRatioShot();
    UnsavedSession session = Listed().at(0);
    session.journalPath = held;
    files = {Data("T1.txt")};
    EXPECT_EQ(SaveUnsavedSession(session, rig.prompts, settings), Data("T1.txt"));
    EXPECT_EQ(ReadTestRecordFile(Data("T1.txt")).records.size(), 1U);
    EXPECT_THAT(rig.prompts.shown.back().toStdString(),
                StartsWith("The session is saved as " + Data("T1.txt").toStdString() +
                           ". Its files in the program's own folder could not be deleted, it may "
                           "be offered again.\r\nRun-time error '"));
}

TEST_F(UnsavedSessions, AFileThatExistsIsNotReplacedWithoutAQuestion) {
    rig.RunRatioShot();
    ReplaceFile(Data("T1.txt"), "another");
    files = {Data("T1.txt"), QString()};
    answers = {Answer::No};
    EXPECT_EQ(Save(), QString());
    EXPECT_EQ(ReadWholeFile(Data("T1.txt")), "another");
    EXPECT_EQ(Listed().size(), 1U);
}

}  // namespace
}  // namespace davo::test
