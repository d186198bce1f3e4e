// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/status_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "common/places.h"
#include "tests/app/fake_port_devices.h"
#include "tests/app/window_checks.h"
#include "tests/link/fake_serial_port.h"
#include "tests/support/fake_prompts.h"

namespace davo::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
    EXPECT_EQ(PortState(glance), QStringLiteral("COM1 open"));
    EXPECT_EQ(DeviceState(glance), QStringLiteral("FT232R, FTDI, serial number A5, /dev/ttyUSB0"));
    EXPECT_EQ(ModelWords(glance.instrumentModel), QStringLiteral("DAVO-E R3.10"));
}

TEST(PortLabels, OfAClosedPortSayWhatIsInTheWay) {
    FakePortDevices devices;
    Settings settings;
    settings.comPort = 2;
    LinkState closed;
    closed.openFailed = true;
    EXPECT_EQ(PortState(GlanceAtLink(settings, closed, devices)), QStringLiteral("COM2 not open"));
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)),
              QStringLiteral("No device is plugged in"));
    devices.assigned[2] = QStringLiteral("/dev/ttyUSB5");
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)),
              QStringLiteral("/dev/ttyUSB5 is not plugged in"));
    devices.present = {UsbAdapter("/dev/ttyUSB5", "", "", "")};
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)),
              QStringLiteral("/dev/ttyUSB5 could not be opened"));
    EXPECT_TRUE(NeedsHelp(GlanceAtLink(settings, closed, devices)));
    closed.openFailed = false;
    EXPECT_EQ(DeviceState(GlanceAtLink(settings, closed, devices)),
              QStringLiteral("/dev/ttyUSB5, opened when needed"));
    EXPECT_FALSE(NeedsHelp(GlanceAtLink(settings, closed, devices)));
    EXPECT_EQ(ModelWords(closed.instrumentModel), QStringLiteral("Instrument not asked yet"));
}

TEST(PortLabels, WithoutAChosenPortSaySo) {
    FakePortDevices devices;
    Settings settings;
    settings.comPort = kNoPortChosen;
    const LinkGlance glance = GlanceAtLink(settings, {}, devices);
    EXPECT_EQ(PortState(glance), QStringLiteral("No COM port chosen"));
    EXPECT_EQ(DeviceState(glance), QString());
}

TEST(WaitWords, NameEveryRequest) {
    EXPECT_EQ(WaitText("B"), QStringLiteral("Waiting for the DAVO's answer to the question whether "
                                            "it is ready..."));
    EXPECT_EQ(WaitText("W"),
              QStringLiteral("Waiting for the DAVO's answer to the question for its model..."));
    EXPECT_EQ(WaitText("d"), QStringLiteral("Waiting for the DAVO's answer to the request for its "
                                            "list of test records..."));
    EXPECT_EQ(WaitText("L 12 "), QStringLiteral("Waiting for the DAVO's answer to the request to "
                                                "find test record 12..."));
    EXPECT_EQ(WaitText("R"), QStringLiteral("Waiting for the DAVO's answer to the request for a "
                                            "test record..."));
    EXPECT_EQ(WaitText("Fr"),
              QStringLiteral("Waiting for the DAVO's answer to the request for its headers..."));
    EXPECT_EQ(WaitText("Fh"), QStringLiteral("Waiting for the DAVO's answer to the request to "
                                             "erase its headers..."));
    EXPECT_EQ(WaitText(""), QStringLiteral("Waiting for the DAVO's answer..."));
}

TEST(NoticeOf, NothingSaysNothing) {
    EXPECT_EQ(NoticeOf({}, 0).caption, QString());
    EXPECT_EQ(NoticeOf({}, 0).detail, QString());
}

TEST(NoticeOf, SaysHowManyAndWhich) {
    const Notice notice = NoticeOf({{QStringLiteral("Notes.txt"), SkipReason::TooFewLines},
                                    {QStringLiteral("a&b.txt"), SkipReason::NoDate}},
                                   0);
    EXPECT_EQ(notice.caption, QStringLiteral("2 files skipped"));
    EXPECT_EQ(notice.detail, QStringLiteral("2 files in the data folder cannot be listed:\r\n"
                                            "Notes.txt has fewer than twelve lines\r\n"
                                            "a&b.txt has no date of the form MM/DD/YY"));
}

TEST(NoticeOf, SaysHowManyAreBeyondTheList) {
    EXPECT_EQ(NoticeOf({}, 13).caption, QStringLiteral("13 files not listed"));
    EXPECT_EQ(NoticeOf({}, 13).detail,
              QStringLiteral("The list holds 250 records; 13 files more in the data folder are not "
                             "listed. Move older ones to another folder."));
    EXPECT_EQ(NoticeOf({}, 1).detail,
              QStringLiteral("The list holds 250 records; 1 file more in the data folder is not "
                             "listed. Move older ones to another folder."));
}

TEST(NoticeOf, SaysBothAndEndsALongList) {
    const std::vector<SkippedFile> many(25, {QStringLiteral("x.txt"), SkipReason::Unreadable});
    const Notice notice = NoticeOf(many, 1);
    EXPECT_EQ(notice.caption, QStringLiteral("25 files skipped, 1 file not listed"));
    EXPECT_EQ(notice.detail.count(QStringLiteral("x.txt cannot be read\r\n")), 20);
    EXPECT_TRUE(notice.detail.contains(QStringLiteral("\r\nand 5 more\r\n\r\nThe list holds")));
}

class StatusLineTest : public ::testing::Test {
  protected:
    StatusLineTest() {
        link.OpenComPort(1);
        link.OnWaitChanged = [this] { line.WaitChanged(); };
        facts.link = {1,
                      true,
                      false,
                      QStringLiteral("/dev/ttyUSB0"),
                      QStringLiteral("FT232R USB UART, FTDI, serial number A50285BI, /dev/ttyUSB0"),
                      true,
                      "DAVO-E R3.10"};
        facts.dataPath = QStringLiteral("/home/technician/Documents/DAVO/of the north/Shots_Data/");
        facts.kneepointType = QString::fromLatin1(kKneeAsa);
        line.ShowFacts(facts);
        line.resize(kLaptopWidth, line.sizeHint().height());
        line.show();
    }
    ~StatusLineTest() override { link.OnWaitChanged = nullptr; }

    template <class Control>
    Control* Find(const char* name) {
        return FindIn<Control>(line, name);
    }
    QString TextOf(const char* name) { return Find<QLabel>(name)->text(); }

    FakeSerialPort port;
    LinkState linkState;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link{port, linkState, prompts, pointer};
    StatusFacts facts;
    StatusLine line{link, prompts, nullptr};
};

TEST_F(StatusLineTest, SaysEverythingAtAGlance) {
    EXPECT_EQ(TextOf("lblPort"), QStringLiteral("COM1 open"));
    EXPECT_EQ(TextOf("lblDevice"), facts.link.deviceWords);
    EXPECT_EQ(TextOf("lblModel"), QStringLiteral("DAVO-E R3.10"));
    EXPECT_EQ(TextOf("lblDataPath"), ShownPath(facts.dataPath));
    EXPECT_EQ(Find<QLabel>("lblDataPath")->toolTip(), ShownPath(facts.dataPath));
    EXPECT_EQ(TextOf("lblKneepoint"), QStringLiteral("ASA 10/50 Marker"));
    EXPECT_FALSE(Find<QPushButton>("cmdNotice")->isVisible());
    EXPECT_FALSE(Find<QPushButton>("cmdStopWait")->isVisible());
}

TEST_F(StatusLineTest, AMissingDeviceIsSaidWithoutABox) {
    facts.link.portOpen = false;
    facts.link.openFailed = true;
    facts.link.present = false;
    line.ShowFacts(facts);
    EXPECT_EQ(TextOf("lblPort"), QStringLiteral("COM1 not open"));
    EXPECT_EQ(TextOf("lblDevice"), QStringLiteral("/dev/ttyUSB0 is not plugged in"));
    EXPECT_TRUE(prompts.shown.empty());
}

TEST_F(StatusLineTest, TheNoticeGivesItsDetailAndGoes) {
    facts.skipped = {{QStringLiteral("Notes.txt"), SkipReason::TooFewLines}};
    facts.notListed = 2;
    line.ShowFacts(facts);
    auto* notice = Find<QPushButton>("cmdNotice");
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(notice->text(), QStringLiteral("1 file skipped, 2 files not listed"));
    const QString detail = NoticeOf(facts.skipped, 2).detail;
    EXPECT_EQ(notice->toolTip(), detail);
    notice->setFocus();
    QTest::keyClick(notice, Qt::Key_Space);
    EXPECT_THAT(prompts.shown, ElementsAre(detail));
    facts.skipped.clear();
    facts.notListed = 0;
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
        words = TextOf("lblWait");
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
    facts.skipped = {{QStringLiteral("Notes.txt"), SkipReason::TooFewLines}};
    facts.notListed = 13;
    line.ShowFacts(facts);
    QTest::qWait(20);
    EXPECT_THAT(CutTextsOf(line), IsEmpty());
    EXPECT_EQ(line.width(), kLaptopWidth);
}

}  // namespace

}  // namespace davo::test
