// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/status_line.h"

#include <QApplication>
#include <QMainWindow>
#include <QScopeGuard>
#include <QStatusBar>
#include <QTimer>

#include "common/places.h"
#include "tests/support/controls.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/pause.h"
#include "tests/support/scripted_link.h"

namespace davo::test {
namespace {

constexpr int kLaptopWidth = 911;  // of 1366 pixels at 150 %

QString WaitText(const char* command) {
    return WaitWords({command, "", {}});
}

TEST(PortLabels, OfAnOpenPortSayItsDevice) {
    FakePortDevices devices;
    devices.present = {UsbAdapter("/dev/ttyUSB0", "FT232R", "FTDI", "A5")};
    Settings settings;
    LinkState state;
    state.portOpen = true;
    state.instrumentModel = "DAVO-E R3.10";
    const LinkGlance glance = GlanceAtLink(settings, state, devices);
    EXPECT_EQ(PortState(glance), u"COM1 ready"_s);
    EXPECT_EQ(DeviceState(glance), u"FT232R, FTDI, serial number A5, /dev/ttyUSB0"_s);
    EXPECT_EQ(ModelWords(glance.instrumentModel), u"DAVO-E R3.10"_s);
}

TEST(PortLabels, OfAClosedPortSayWhatIsInTheWay) {
    FakePortDevices devices;
    Settings settings;
    settings.comPort = 2;
    LinkState closed;
    closed.openFailed = true;
    EXPECT_EQ(PortState(GlanceAtLink(settings, closed, devices)), u"COM2 not plugged in"_s);
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)), u"No device is plugged in"_s);
    devices.assigned[2] = u"/dev/ttyUSB5"_s;
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)),
              u"/dev/ttyUSB5 is not plugged in"_s);
    devices.present = {UsbAdapter("/dev/ttyUSB5", "", "", "")};
    EXPECT_EQ(PortState(GlanceAtLink(settings, closed, devices)), u"COM2 not open"_s);
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)),
              u"/dev/ttyUSB5 could not be opened"_s);
    EXPECT_TRUE(NeedsHelp(GlanceAtLink(settings, closed, devices)));
    closed.openFailed = false;
    EXPECT_EQ(PortState(GlanceAtLink(settings, closed, devices)), u"COM2 opened when needed"_s);
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)), u"/dev/ttyUSB5"_s);
    EXPECT_FALSE(NeedsHelp(GlanceAtLink(settings, closed, devices)));
    EXPECT_EQ(ModelWords(closed.instrumentModel), u"Instrument not asked yet"_s);
    devices.present.clear();
    EXPECT_EQ(PortState(GlanceAtLink(settings, closed, devices)), u"COM2 not plugged in"_s);
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)),
              u"/dev/ttyUSB5 is not plugged in"_s);
    EXPECT_TRUE(NeedsHelp(GlanceAtLink(settings, closed, devices)));
}

TEST(PortLabels, ModelThatIsLongOrNoisyIsCutToOneLine) {
    EXPECT_EQ(ModelText("DAVO-E R3.10 SERIAL 1234"), u"DAVO-E R3.10 SERIAL 1234"_s);
    EXPECT_EQ(ModelText("DAVO-E R3.10 SERIAL 12345"), u"DAVO-E R3.10 SERIAL 123\u2026"_s);
    EXPECT_EQ(ModelText("DAVO-E\n\tR3.10\x01\x02\r\nREADY "), u"DAVO-E R3.10?? READY"_s);
    EXPECT_EQ(ModelText(std::string(300, 'W')).size(), 24);
    std::string noise;
    for (int i = 0; i < 300; ++i)
        noise += static_cast<char>(255 - i);
    const QString shown = ModelWords(noise);
    EXPECT_LE(shown.size(), 24);
    EXPECT_TRUE(std::all_of(shown.begin(), shown.end(), [](QChar c) { return c.isPrint(); }));
}

TEST(PortLabels, WithoutAChosenPortSaySo) {
    FakePortDevices devices;
    Settings settings;
    settings.comPort = kNoPortChosen;
    const LinkGlance glance = GlanceAtLink(settings, {}, devices);
    EXPECT_EQ(PortState(glance), u"No COM port chosen"_s);
    EXPECT_EQ(DeviceState(glance), QString());
}

TEST(PortLabels, OfAPortThatDoesNotOpenSayWhyInTheSystemsWords) {
    FakePortDevices devices;
    devices.present = {UsbAdapter("COM3", "USB Serial Port", "FTDI", "7")};
    const std::string error =
        RunTimeError(ErrorNumber::PortAlreadyOpen, "COM3: Access is denied.").what();
    EXPECT_EQ(WhyNotOpen(devices, u"COM3"_s, error),
              u"COM3 does not open: Access is denied. Another program uses it, or you may not open "
              "it."_s);
    EXPECT_EQ(WhyNotOpen(devices, u"COM4"_s, error),
              u"COM4 is not plugged in. Plug it in, or choose another row."_s);
    EXPECT_EQ(WhyNotOpen(devices, {}, error),
              u"No adapter is plugged in. Plug in the DAVO's adapter: it is listed at once."_s);
}

TEST(WaitWords, NameEveryRequest) {
    EXPECT_EQ(WaitText("B"),
              u"Waiting for the DAVO's answer to the question whether "
              "it is ready..."_s);
    EXPECT_EQ(WaitText("W"), u"Waiting for the DAVO's answer to the question for its model..."_s);
    EXPECT_EQ(WaitText("d"),
              u"Waiting for the DAVO's answer to the request for its "
              "list of test records..."_s);
    EXPECT_EQ(WaitText("L 12 "),
              u"Waiting for the DAVO's answer to the request to "
              "find test record 12..."_s);
    EXPECT_EQ(WaitText("R"),
              u"Waiting for the DAVO's answer to the request for a "
              "test record..."_s);
    EXPECT_EQ(WaitText("Fr"), u"Waiting for the DAVO's answer to the request for its headers..."_s);
    EXPECT_EQ(WaitText("Fh"),
              u"Waiting for the DAVO's answer to the request to "
              "erase its headers..."_s);
    EXPECT_EQ(WaitText(""), u"Waiting for the DAVO's answer..."_s);
}

TEST(NoticeOf, NothingSaysNothing) {
    EXPECT_EQ(NoticeOf({}, 0).caption, QString());
    EXPECT_EQ(NoticeOf({}, 0).detail, QString());
}

TEST(NoticeOf, SaysHowManyAndWhich) {
    const Notice notice = NoticeOf(
        {{u"Notes.txt"_s, SkipReason::TooFewLines}, {u"a&b.txt"_s, SkipReason::NoDate}}, 0);
    EXPECT_EQ(notice.caption, u"2 files skipped"_s);
    EXPECT_EQ(notice.detail,
              u"2 files in the data folder cannot be listed:\r\n"
              "Notes.txt has fewer than twelve lines\r\n"
              "a&b.txt has no date of the form MM/DD/YY"_s);
}

TEST(NoticeOf, SaysHowManyAreBeyondTheList) {
    EXPECT_EQ(NoticeOf({}, 13).caption, u"13 files not listed"_s);
    EXPECT_EQ(NoticeOf({}, 13).detail,
              u"The list holds 250 records; 13 files more in the data folder are not "
              "listed. Move older ones to another folder."_s);
    EXPECT_EQ(NoticeOf({}, 1).detail,
              u"The list holds 250 records; 1 file more in the data folder is not "
              "listed. Move older ones to another folder."_s);
}

TEST(NoticeOf, SaysBothAndEndsALongList) {
    const std::vector<SkippedFile> many(25, {u"x.txt"_s, SkipReason::Unreadable});
    const Notice notice = NoticeOf(many, 1);
    EXPECT_EQ(notice.caption, u"25 files skipped, 1 file not listed"_s);
    EXPECT_EQ(notice.detail.count(u"x.txt cannot be read\r\n"_s), 20);
    EXPECT_TRUE(notice.detail.contains(u"\r\nand 5 more\r\n\r\nThe list holds"_s));
}

TEST(NoticesOf, SayWhatCouldNotBeReadOrWritten) {
    EXPECT_THAT(NoticesOf({}, u"X"_s), IsEmpty());
    RebuildResult listing;
    listing.unread = u"Path not found"_s;
    ASSERT_THAT(NoticesOf(listing, u"X"_s), SizeIs(1));
    EXPECT_EQ(NoticesOf(listing, u"X"_s)[0].caption, u"Records not listed"_s);
    EXPECT_EQ(NoticesOf(listing, u"X"_s)[0].detail,
              u"The folder X cannot be read: Path not found."_s);
    listing = {};
    listing.notSaved = u"Disk full"_s;
    listing.cleaned = {u"T1"_s};
    const std::vector<Notice> notices = NoticesOf(listing, u"X"_s);
    ASSERT_THAT(notices, SizeIs(2));
    EXPECT_EQ(notices[0].caption, u"List not saved"_s);
    EXPECT_EQ(notices[0].detail, NotSavedText(listing));
    EXPECT_EQ(notices[1].caption, u"Control characters"_s);
    EXPECT_EQ(notices[1].detail, CleanedText(listing));
}

class StatusLineTest : public ::testing::Test, public ScriptedLine, public Controls {
  protected:
    StatusLineTest() {
        link.OpenComPort(1);
        link.OnWaitChanged = [this] { line.WaitChanged(); };
        facts.link = {1,
                      true,
                      false,
                      u"/dev/ttyUSB0"_s,
                      u"FT232R USB UART, FTDI, serial number A50285BI, /dev/ttyUSB0"_s,
                      true,
                      "DAVO-E R3.10"};
        facts.dataPath = u"/home/technician/Documents/DAVO/of the north/Shots_Data/"_s;
        facts.kneepointType = QString::fromLatin1(kKneeAsa);
        line.ShowFacts(facts);
        line.resize(kLaptopWidth, line.sizeHint().height());
        line.show();
    }
    ~StatusLineTest() override { link.OnWaitChanged = nullptr; }

    QWidget& Window() override { return line; }

    ShellFacts facts;
    StatusLine line{link, prompts, nullptr};
};

TEST_F(StatusLineTest, SaysEverythingAtAGlance) {
    EXPECT_EQ(Text("lblPort"), "COM1 ready");
    EXPECT_EQ(Find<QLabel>("lblDevice")->text(), facts.link.deviceWords);
    EXPECT_EQ(Text("lblModel"), "DAVO-E R3.10");
    EXPECT_EQ(Find<QLabel>("lblDataPath")->text(), ShownPath(facts.dataPath));
    EXPECT_EQ(Find<QLabel>("lblDataPath")->toolTip(), ShownPath(facts.dataPath));
    EXPECT_EQ(Text("lblKneepoint"), "ASA 10/50 Marker");
    EXPECT_FALSE(Find<QPushButton>("cmdNotice")->isVisible());
    EXPECT_FALSE(Find<QPushButton>("cmdStopWait")->isVisible());
}

TEST_F(StatusLineTest, AMissingDeviceIsSaidWithoutABox) {
    facts.link.portOpen = false;
    facts.link.openFailed = true;
    facts.link.present = false;
    line.ShowFacts(facts);
    EXPECT_EQ(Text("lblPort"), "COM1 not plugged in");
    EXPECT_EQ(Text("lblDevice"), "/dev/ttyUSB0 is not plugged in");
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(StatusLineTest, TheNoticeGivesItsDetailAndGoes) {
    facts.listing.skipped = {{u"Notes.txt"_s, SkipReason::TooFewLines}};
    facts.listing.notListed = 2;
    line.ShowFacts(facts);
    auto* notice = Find<QPushButton>("cmdNotice");
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(notice->text(), u"1 file skipped, 2 files not listed"_s);
    const QString detail = NoticeOf(facts.listing.skipped, 2).detail;
    EXPECT_EQ(notice->toolTip(), detail);
    notice->setFocus();
    QTest::keyClick(notice, Qt::Key_Space);
    EXPECT_THAT(prompts.shown, ElementsAre(detail));
    facts.listing.skipped.clear();
    facts.listing.notListed = 0;
    line.ShowFacts(facts);
    EXPECT_FALSE(notice->isVisible());
}

TEST_F(StatusLineTest, ALongWaitIsSaidAndCanBeEnded) {
    bool early = true;
    QTimer::singleShot(1500, &line, [&] { early = Find<QPushButton>("cmdStopWait")->isVisible(); });
    QString words;
    bool factsShown = true;
    std::vector<std::string> cut{"never looked"};
    QTimer::singleShot(2600, &line, [&] {
        words = Find<QLabel>("lblWait")->text();
        factsShown = Find<QLabel>("lblPort")->isVisible();
        cut = CutTextsOf(line);
        QTest::mouseClick(Find<QPushButton>("cmdStopWait"), Qt::LeftButton);
    });
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "");
    EXPECT_TRUE(link.LastWaitEnded());
    EXPECT_FALSE(early) << "a wait of less than two seconds is not said";
    EXPECT_EQ(words, WaitText("W"));
    EXPECT_FALSE(factsShown);
    EXPECT_THAT(cut, IsEmpty());
    EXPECT_FALSE(Find<QPushButton>("cmdStopWait")->isVisible());
    EXPECT_TRUE(Find<QLabel>("lblPort")->isVisible());
}

TEST_F(StatusLineTest, EachWaitHasItsTwoSeconds) {
    port.OnOutput("W", "DAVO-E\r\n", std::chrono::milliseconds(1500));
    port.OnOutput("d", "DONE", std::chrono::milliseconds(1500));
    bool shown = false;
    for (int i = 1; i < 30; ++i) {
        QTimer::singleShot(i * 100, &line,
                           [&] { shown = shown || Find<QLabel>("lblWait")->isVisible(); });
    }
    EXPECT_EQ(link.SendCommand("W", "\r\n"), "DAVO-E\r\n");
    EXPECT_EQ(link.SendCommandAwaitDone("d", "\r\nDONE"), "DONE");
    EXPECT_FALSE(shown);
}

TEST_F(StatusLineTest, NoTextIsCutOnASmallScreen) {
    facts.listing.skipped = {{u"Notes.txt"_s, SkipReason::TooFewLines}};
    facts.listing.notListed = 13;
    line.ShowFacts(facts);
    test::Pause(20);
    EXPECT_THAT(CutTextsOf(line), IsEmpty());
    EXPECT_EQ(line.width(), kLaptopWidth);
}

TEST(StatusLineInLargeLetters, NoTextIsCutOnTheSmallestScreen) {
    const QFont usual = QApplication::font();
    const auto back = qScopeGuard([&usual] { QApplication::setFont(usual); });
    QFont large = usual;
    large.setPointSizeF(14);
    QApplication::setFont(large);
    ScriptedLine line;
    QMainWindow window;
    auto* status = new StatusLine(line.link, line.prompts, &window);
    window.statusBar()->setSizeGripEnabled(false);
    window.statusBar()->addWidget(status, 1);
    window.resize(1024, 560);
    window.show();
    ShellFacts facts;
    facts.kneepointType = QLatin1String(kKneeIeee30);
    const auto points = [status] {
        return FindIn<QLabel>(*status, "lblKneepoint")->font().pointSizeF();
    };
    status->ShowFacts(facts);
    facts.listing.unread = u"Permission denied"_s;
    facts.listing.skipped = {{u"Notes.txt"_s, SkipReason::TooFewLines}};
    facts.listing.notListed = 13;
    status->ShowFacts(facts);
    test::Pause(20);
    EXPECT_EQ(window.width(), 1024);
    EXPECT_THAT(CutTextsOf(*status), IsEmpty());
    EXPECT_LT(points(), 14);
    EXPECT_GE(points(), 8);
    window.resize(1900, 560);
    EXPECT_TRUE(Until([&points] { return points() == 14; })) << "there is room again";
}

}  // namespace
}  // namespace davo::test
