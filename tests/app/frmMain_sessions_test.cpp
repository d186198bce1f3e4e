// SPDX-License-Identifier: GPL-3.0-or-later
// Sessions that were never saved, as the start page offers them.
#include <QStatusBar>

#include "records/unsaved_sessions.h"
#include "tests/app/main_window.h"
#include "tests/records/captures.h"
#include "tests/support/pause.h"
#include "tests/support/read_record.h"

namespace davo::test {
namespace {

class SessionsOnTheStartPage : public MainWindow {
  protected:
    // What a killed program has left: a session with a header of its own.
    void LeaveSession(const char* station, const char* time = "09:32") {
        ReplaceFile(places.scratchFolder + QLatin1String(kCaptureFileName),
                    CaptureBlock(EncodeRecordImage(ImageWithPoints(3)), station));
        SessionJournal journal;
        journal.header.headerFields[kHeaderDate] = "11/20/26";
        journal.header.headerFields[kHeaderTime] = time;
        journal.header.Field(1) = station;
        journal.shotsInCapture = 1;
        journal.Write(places.scratchFolder + QLatin1String(kJournalFileName));
    }
    // A file that every user may open, and none can read.
    static bool MakeUnreadable(const QString& path) {
        return QFile::link(u"/proc/self/mem"_s, path) && QFileInfo(path).isFile();
    }
    void SetAside() const { SetAsideUnsavedSessions(places.scratchFolder); }
    bool CardShown(const char* name = "session0") {
        const auto* card = window->findChild<QWidget*>(QLatin1String(name));
        return card != nullptr && card->isVisible();
    }
    // The notice that names the file, whose box was shown; the test uses it on.
    QPushButton* NoticeOf(const QString& file) {
        auto* notice = Find<QPushButton>("cmdNotice");
        EXPECT_TRUE(notice->isVisible());
        EXPECT_EQ(notice->text(), u"Sessions not listed"_s);
        notice->click();
        EXPECT_EQ(prompts.Texts().size(), 1U);
        EXPECT_THAT(prompts.Texts(),
                    testing::Each(testing::EndsWith(ShownPath(file).toStdString())));
        prompts.shown.clear();
        return notice;
    }
    QStringList Kept() const {
        return QDir(places.scratchFolder).entryList({u"TESTFILE*"_s}, QDir::Files);
    }
};

TEST_F(SessionsOnTheStartPage, AreOfferedAsSoonAsTheProgramHasStartedWithoutAnInstrument) {
    LeaveSession("NORTH");
    port.failOpen = ErrorNumber::InvalidPortNumber;
    Open();
    ASSERT_TRUE(CardShown());
    EXPECT_THAT(Text("lblWhen0"), ::testing::MatchesRegex("11/20/26, 09:32 to ..:..:.., 1 shot"));
    EXPECT_EQ(Text("lblWhere0"), "Station NORTH, no serial number");
    EXPECT_TRUE(prompts.shown.empty()) << "nobody is kept from working";
}

TEST_F(SessionsOnTheStartPage, WithoutOneThereIsNoCard) {
    Open();
    EXPECT_FALSE(CardShown());
}

TEST_F(SessionsOnTheStartPage, TwoOfOneMinuteHaveTwoCardsThatDiffer) {
    LeaveSession("NORTH");
    SetAside();
    LeaveSession("SOUTH");
    Open();
    ASSERT_TRUE(CardShown("session1"));
    EXPECT_NE(Text("lblWhen0"), Text("lblWhen1"));
}

TEST_F(SessionsOnTheStartPage, SaveMakesARecordThatIsListed) {
    LeaveSession("NORTH");
    Open();
    prompts.files = {DataFolder() + u"Old.txt"_s};
    Click("cmdSaveSession0");
    EXPECT_FALSE(CardShown());
    EXPECT_EQ(ReadTestRecordFile(DataFolder() + u"Old.txt"_s).headers.at(0).date, "11/20/26");
    const auto* list = Find<QTreeWidget>("lvNewest");
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(0), u"Old"_s);
    EXPECT_TRUE(Enabled("mnuFileUtil"));
    EXPECT_EQ(window->statusBar()->currentMessage(),
              u"The session is saved as "_s + DataFolder() + u"Old.txt"_s);
    EXPECT_THAT(Kept(), IsEmpty());
    EXPECT_TRUE(port.sent.empty());
}

TEST_F(SessionsOnTheStartPage, OfOneThatIsSavedACertificateIsOffered) {
    AddRecord("Newer.txt", "11/22/26");
    LeaveSession("NORTH");
    Open();
    prompts.files = {DataFolder() + u"Old.txt"_s};
    Click("cmdSaveSession0");
    EXPECT_EQ(Text("lblSaved"),
              "Old is saved. With Certificate... you make a page of it for the customer.");
    EXPECT_EQ(Find<QTreeWidget>("lvNewest")->selectedItems().value(0)->text(0), u"Old"_s);
    EXPECT_TRUE(Find<QPushButton>("cmdCertificate")->isEnabled());
}

TEST_F(SessionsOnTheStartPage, ADayOfManyRecordsStillShowsTheOneThatWasJustSaved) {
    for (std::size_t i = 0; i < kNewestRecords; ++i)
        AddRecord(u"T%1.txt"_s.arg(i).toLatin1().constData(), "11/20/26");
    LeaveSession("NORTH", "16:40");
    Open();
    prompts.files = {DataFolder() + u"Z.txt"_s};
    Click("cmdSaveSession0");
    EXPECT_THAT(Text("lblSaved"), ::testing::StartsWith("Z is saved."));
    const auto* list = Find<QTreeWidget>("lvNewest");
    EXPECT_EQ(list->topLevelItem(0)->text(0), u"Z"_s) << "the latest of the day";
    EXPECT_EQ(list->topLevelItem(1)->text(0), u"T0"_s) << "those of one minute keep their order";
    EXPECT_EQ(list->topLevelItemCount(), static_cast<int>(kNewestRecords));
    EXPECT_TRUE(Find<QPushButton>("cmdCertificate")->isEnabled());
}

TEST_F(SessionsOnTheStartPage, WithoutANameItsCardStays) {
    LeaveSession("NORTH");
    Open();
    prompts.files = {QString()};
    Click("cmdSaveSession0");
    EXPECT_TRUE(CardShown());
    EXPECT_EQ(Kept().size(), 2);
}

TEST_F(SessionsOnTheStartPage, LaterLeavesItForTheNextStartOfTheProgram) {
    LeaveSession("NORTH");
    Open();
    Click("cmdLater0");
    EXPECT_FALSE(CardShown());
    EXPECT_EQ(Text("lblLater"), "1 session is left for later.");
    window->close();
    Open();
    EXPECT_TRUE(CardShown());
}

TEST_F(SessionsOnTheStartPage, ATestBeginsWithoutAQuestionAndLosesNone) {
    LeaveSession("NORTH");
    Open();
    Choose("mnuBoth");
    ASSERT_NE(TestWindow(), nullptr);
    EXPECT_TRUE(prompts.shown.empty());
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    test::Pause(50);
    Click("cmdExit");
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    EXPECT_TRUE(CardShown());
}

// From the last shot to the page in the customer's hands.
TEST_F(SessionsOnTheStartPage, ACertificateIsMadeOfTheSessionThatWasJustSaved) {
    AddRecord("Newer.txt", "11/22/26");
    Open();
    CompleteAShot();
    prompts.answers = {Answer::Yes};
    prompts.files = {DataFolder() + u"T9.txt"_s};
    Click("cmdExit");
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    EXPECT_EQ(Find<QTreeWidget>("lvNewest")->selectedItems().value(0)->text(0), u"T9"_s);
    EXPECT_EQ(Text("lblSaved"),
              "T9 is saved. With Certificate... you make a page of it for the customer.");
    prompts.shown.clear();
    prompts.proposed.clear();
    prompts.files = {folder.Path("T9")};
    Click("cmdCertificate");
    EXPECT_EQ(prompts.shown.at(0), QDir::cleanPath(DataFolder()) + u"|*.pdf;;*.html"_s);
    EXPECT_THAT(prompts.proposed, ElementsAre(u"T9.pdf"_s));
    EXPECT_THAT(ReadWholeFile(folder.Path("T9.pdf")), StartsWith("%PDF-"));
    EXPECT_EQ(QString::fromStdString(Text("lblSaved")).remove(QChar(0x200B)),
              u"Saved: "_s + ShownPath(folder.Path("T9.pdf")));
    prompts.files = {folder.Path("T9.html")};
    Click("cmdCertificate");
    EXPECT_THAT(ReadWholeFile(folder.Path("T9.html")),
                HasSubstr("<title>T9 - Test Certificate</title>"));
}

TEST_F(SessionsOnTheStartPage, WhyThereIsNoCertificateIsSaid) {
    const QString record = DataFolder() + u"Old.txt"_s;
    QDir().mkpath(DataFolder());
    ReplaceFile(record, RecordFileText("Old") + RecordText());
    Open();
    const auto said = [this](const QString& file) {
        prompts.shown.clear();
        prompts.files = {file};
        Click("cmdCertificate");
        EXPECT_EQ(Text("lblSaved"), "");
        return prompts.Texts().empty() ? std::string() : prompts.Texts().back();
    };
    EXPECT_THAT(said({}), EndsWith("|*.pdf;;*.html")) << "rather not";
    EXPECT_THAT(said(folder.Path("none/page.pdf")),
                StartsWith("The file was not saved. Run-time error '"));
    ReplaceFile(folder.Path("page.html"), "before");
    prompts.answers = {Answer::No};
    EXPECT_EQ(said(folder.Path("page.html")),
              "The file 'page.html' exists already. Do you want to replace it?");
    EXPECT_EQ(ReadWholeFile(folder.Path("page.html")), "before");
    ASSERT_TRUE(QFile::remove(record));
    EXPECT_THAT(said(folder.Path("gone.pdf")),
                StartsWith("The file was not saved. Run-time error '53': File not found"));
    EXPECT_FALSE(QFileInfo::exists(folder.Path("gone.pdf")));
    EXPECT_FALSE(Find<QPushButton>("cmdCertificate")->isEnabled()) << "it has gone";
}

TEST_F(SessionsOnTheStartPage, ASessionThatIsLeftUnsavedIsOfferedAtOnce) {
    Open();
    Choose("mnuRatio");
    ASSERT_TRUE(Until([this] { return port.sent.size() == 3; }));
    test::Pause(50);
    Click("cmdStart");
    port.Deliver("DATA" + std::string(296, '0') + "\r\nDONE\r\n");
    ASSERT_TRUE(Until([this] { return Find<QPushButton>("cmdExit")->isEnabled(); }));
    QTest::keyClick(TestWindow(), Qt::Key_Escape);
    ASSERT_TRUE(Until([this] { return TestWindow() == nullptr; }));
    EXPECT_TRUE(CardShown());
    EXPECT_THAT(Text("lblWhen0"), StartsWith("11/21/26, 14:05 to "));
}

TEST_F(SessionsOnTheStartPage, WhatCannotBeReadIsSaidAndTheProgramStarts) {
    LeaveSession("NORTH");
    ASSERT_TRUE(QDir().mkpath(places.scratchFolder + u"~TESTFILE_jnl.new"_s));
    Open();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(Find<QPushButton>("cmdNotice")->text(), u"Sessions not listed"_s);
}

TEST_F(SessionsOnTheStartPage, OneThatCannotBeSetAsideHidesNoneOfTheOthersAndIsSaid) {
    LeaveSession("NORTH");
    SetAside();
    const QString capture = places.scratchFolder + QLatin1String(kCaptureFileName);
    if (!MakeUnreadable(capture)) GTEST_SKIP() << "no such file on this platform";
    Open();
    EXPECT_TRUE(CardShown("session0"));
    QPushButton* notice = NoticeOf(capture);
    QFile::remove(capture);
    LeaveSession("SOUTH");
    prompts.files = {DataFolder() + u"Old.txt"_s};
    Click("cmdSaveSession0");
    EXPECT_TRUE(Until([this] { return CardShown("session0"); }));
    EXPECT_EQ(Text("lblWhere0"), "Station SOUTH, no serial number");
    EXPECT_FALSE(notice->isVisible()) << "it is set aside";
}

TEST_F(SessionsOnTheStartPage, OneThatCannotBeReadHidesNoneOfTheOthersAndIsNamed) {
    LeaveSession("NORTH");
    SetAside();
    LeaveSession("SOUTH");
    const QString unreadable = places.scratchFolder + u"TESTFILE-20201121-093215.txt"_s;
    if (!MakeUnreadable(unreadable)) GTEST_SKIP() << "no such file on this platform";
    Open();
    EXPECT_TRUE(CardShown("session0"));
    EXPECT_TRUE(CardShown("session1"));
    QPushButton* notice = NoticeOf(unreadable);

    QFile::remove(unreadable);
    prompts.files = {DataFolder() + u"Old.txt"_s};
    Click("cmdSaveSession0");
    EXPECT_FALSE(CardShown("session1"));
    EXPECT_FALSE(notice->isVisible()) << "it is gone";
}

}  // namespace
}  // namespace davo::test
