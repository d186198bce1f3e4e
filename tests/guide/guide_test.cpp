// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/guide.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <atomic>
#include <mutex>

#include "tests/support/controls.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/pause.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "ui/dialog_prompts.h"

namespace davo::test {
namespace {

const QString kGuide = QStringLiteral(DAVO_GUIDE_FOLDER);

QString Place(const char* window) {
    return kGuide + u"/f1/%1.html"_s.arg(QLatin1String(window));
}

// Where the page of a window leads to.
QString TargetOf(const QString& page) {
    QFile file(page);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QString text = QString::fromUtf8(file.readAll());
    const auto start = text.indexOf("url="_L1) + 4;
    return text.mid(start, text.indexOf(QLatin1Char('"'), start) - start);
}

// The message at a place of the page of messages, as the page shows it.
QString MessageAt(const QString& target) {
    QFile file(kGuide + u"/messages.html"_s);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QString page = QString::fromUtf8(file.readAll());
    const QString opening = u"<pre id=\"%1\"><code>"_s.arg(target.section(QLatin1Char('#'), 1));
    const auto start = page.indexOf(opening) + opening.size();
    const auto end = page.indexOf(u"</code>"_s, start);
    return page.mid(start, end - start).trimmed();
}

// What was asked to be opened, from whatever thread.
class Opened {
  public:
    bool operator()(const QString& path) {
        const std::lock_guard lock(mutex_);
        paths_.push_back(path);
        return opens;
    }
    std::vector<QString> Paths() {
        const std::lock_guard lock(mutex_);
        return paths_;
    }
    std::atomic<bool> opens{true};

  private:
    std::mutex mutex_;
    std::vector<QString> paths_;
};

class Guide : public ::testing::Test {
  protected:
    void Install(const QStringList& folders = {kGuide}) {
        key = std::make_unique<GuideKey>(folders, prompts,
                                         [this](const QString& path) { return opened(path); });
        qApp->installEventFilter(key.get());
    }
    void TearDown() override { key.reset(); }
    // As the platform delivers it: to the window, which finds the widget.
    static void PressF1(QWidget& window) {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(window.windowHandle(), Qt::Key_F1);
    }
    bool Opens() {
        return Until([this] { return !opened.Paths().empty(); });
    }
    bool Says() {
        return Until([this] { return !prompts.shown.empty(); });
    }

    Opened opened;
    FakePrompts prompts;
    std::unique_ptr<GuideKey> key;
};

class Shown : public QDialog {
  public:
    explicit Shown(const char* name) : line(new QLineEdit(this)) {
        setObjectName(QLatin1String(name));
        line->setObjectName(u"txtInput"_s);
        show();
        activateWindow();
        line->setFocus();
    }
    QLineEdit* line;
};

class EveryWindow : public Guide, public ::testing::WithParamInterface<const char*> {};

TEST_P(EveryWindow, OpensTheGuideAtItsPlace) {
    Install();
    Shown window(GetParam());
    PressF1(window);
    ASSERT_TRUE(Opens());
    EXPECT_THAT(opened.Paths(), ElementsAre(Place(GetParam())));
    EXPECT_THAT(TargetOf(Place(GetParam())).toStdString(), StartsWith("../"));
    EXPECT_THAT(prompts.shown, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Windows, EveryWindow,
                         ::testing::Values("frmMain", "frmSplash", "frmCControl", "frmTestList",
                                           "frmHeader", "frmHeaderOptn", "frmFileUtilOverlay",
                                           "frmCopyFile", "frmSetDescr", "frmConfig", "frmAbout",
                                           "frmNotepad", "frmProgress", "frmStatusBar", "inputBox",
                                           "msgBox", "cdFile", "folderBrowser",
                                           "frmTestList-memory", "frmFileUtilOverlay-overlay",
                                           "frmHeader-pc", "frmHeader-davo"));

TEST_F(Guide, PlacesLeadToWhatTheWindowIsAbout) {
    EXPECT_EQ(TargetOf(Place("frmCControl")), u"../test.html#window"_s);
    EXPECT_EQ(TargetOf(Place("frmTestList")), u"../curves.html#recall"_s);
    EXPECT_EQ(TargetOf(Place("msgBox")), u"../messages.html#messages"_s);
    EXPECT_EQ(TargetOf(Place("frmConfig")), u"../ports.html#configure"_s);
}

TEST_F(Guide, AWindowThatServesTwoPurposesHasAPlaceForEach) {
    EXPECT_EQ(TargetOf(Place("frmTestList-memory")), u"../retrieval.html#memory"_s);
    EXPECT_EQ(TargetOf(Place("frmFileUtilOverlay")), u"../files.html#utilities"_s);
    EXPECT_EQ(TargetOf(Place("frmFileUtilOverlay-overlay")), u"../curves.html#overlay"_s);
    EXPECT_EQ(TargetOf(Place("frmHeader")), u"../headers.html#header"_s);
    EXPECT_EQ(TargetOf(Place("frmHeader-pc")), u"../headers.html#pc"_s);
    EXPECT_EQ(TargetOf(Place("frmHeader-davo")), u"../headers.html#davo"_s);
    QWidget window;
    window.setObjectName(u"frmTestList"_s);
    EXPECT_EQ(GuidePage(kGuide, &window), Place("frmTestList"));
    window.setProperty("guidePlace", u"frmTestList-memory"_s);
    EXPECT_EQ(GuidePage(kGuide, &window), Place("frmTestList-memory"));
}

TEST_F(Guide, AWindowWithoutAPlaceTakesThatOfTheOneAboveIt) {
    QWidget window;
    window.setObjectName(u"frmTestList"_s);
    QDialog above(&window);
    above.setObjectName(u"nowhere"_s);
    EXPECT_EQ(GuidePage(kGuide, &above), Place("frmTestList"));
}

TEST_F(Guide, AnUnknownWindowOpensTheFirstPage) {
    QWidget window;
    window.setObjectName(u"nowhere"_s);
    EXPECT_EQ(GuidePage(kGuide, &window), kGuide + u"/index.html"_s);
    EXPECT_EQ(GuidePage(kGuide, nullptr), kGuide + u"/index.html"_s);
}

TEST_F(Guide, TheMainWindowsOwnPartsLeadToTheWindowThatIsOpenInIt) {
    QMainWindow window;
    window.setObjectName(u"frmMain"_s);
    auto* area = new QMdiArea;
    window.setCentralWidget(area);
    EXPECT_EQ(GuidePage(kGuide, window.menuBar()), Place("frmMain"));
    auto* child = new QWidget;
    child->setObjectName(u"frmCControl"_s);
    area->addSubWindow(child);
    window.show();
    child->show();
    ASSERT_TRUE(Until([area] { return area->activeSubWindow() != nullptr; }));
    EXPECT_EQ(GuidePage(kGuide, window.menuBar()), Place("frmCControl"));
    EXPECT_EQ(GuidePage(kGuide, child), Place("frmCControl"));
}

TEST_F(Guide, AModalMessageLeadsToTheMessages) {
    Install();
    Shown below("frmConfig");
    QTimer::singleShot(0, [this] {
        ASSERT_TRUE(Until([] { return QApplication::activeModalWidget() != nullptr; }));
        QWidget* box = QApplication::activeModalWidget();
        PressF1(*box);
        EXPECT_TRUE(Opens());
        QTest::keyClick(box, Qt::Key_Escape);
    });
    DialogPrompts().YesNo(u"Do You Want to Exit?"_s, Answer::No);
    ASSERT_EQ(opened.Paths().size(), 1U);
    const QString target = TargetOf(opened.Paths().front());
    EXPECT_THAT(target.toStdString(), StartsWith("../messages.html#message-"));
    EXPECT_EQ(MessageAt(target), u"Do You Want to Exit?"_s);
}

TEST_F(Guide, AMessageIsFoundByWhatIsAlwaysTheSameInIt) {
    QMessageBox box;
    box.setObjectName(u"msgBox"_s);
    const auto found = [&box](const char* text) {
        box.setProperty("exactText", QString::fromUtf8(text));
        return MessageAt(TargetOf(GuidePage(kGuide, &box)));
    };
    EXPECT_EQ(found("File 'T1.txt' exists. Do you want to override? "),
              u"File '‹name›' exists. Do you want to override?"_s);
    EXPECT_EQ(found("DAVO is not available\r\nor\r\nnot under computer control."),
              u"DAVO is not available\nor\nnot under computer control."_s);
    EXPECT_EQ(found("Run-time error '5': Unknown: /a/T1.txt"),
              u"Run-time error '‹number›': ‹text›: ‹file or line›"_s);
    EXPECT_EQ(found("The test record was not saved.\r\nRun-time error '61': Disk full"),
              u"The test record was not saved.\n‹error›"_s);
    box.setProperty("exactText", u"Something else"_s);
    EXPECT_EQ(GuidePage(kGuide, &box), Place("msgBox"));
}

TEST_F(Guide, AnErrorLeadsToItsRowOfTheTable) {
    QMessageBox box;
    box.setObjectName(u"msgBox"_s);
    box.setProperty("exactText", u"Run-time error '61': Disk full: /a/T1.txt"_s);
    EXPECT_EQ(TargetOf(GuidePage(kGuide, &box)), u"../messages.html#message-error-61"_s);
}

TEST_F(Guide, SaysInOneSentenceWhatToDoAboutAMessage) {
    const QStringList folders{kGuide + u"/nowhere"_s, kGuide};
    const auto advice = [&](const char* text) {
        return GuideAdvice(folders, QString::fromUtf8(text)).toStdString();
    };
    EXPECT_EQ(advice("DAVO is not ready.  Please check equipment."),
              "Check that the DAVO is on and its cable in place, then try again.");
    EXPECT_EQ(advice("DAVO is not available\r\nor\r\nnot under computer control."),
              "Put the DAVO under computer control, check its cable, then try again.");
    EXPECT_EQ(advice("Do You Want to Exit?"), "Yes ends the program.");
    EXPECT_EQ(advice("Receive buffer overflow"),
              "Close other programs, check the adapter, repeat the shot.");
    EXPECT_EQ(advice("Data Lost"), "Close other programs, check the adapter, repeat the shot.");
    EXPECT_EQ(advice("Filename cannot contain ''.''  Please Re-enter."),
              "Type the name without a full stop; .txt is added.");
    EXPECT_EQ(advice("Run-time error '61': Disk full: /a/T1.txt"), "Make room on the disk.");
    EXPECT_EQ(advice("The test record was not saved.\r\nRun-time error '61': Disk full"),
              "Make room, or save it in another folder: the question comes again.");
    EXPECT_EQ(advice("Something else"), "");
    EXPECT_EQ(GuideAdvice({kGuide + u"/nowhere"_s}, u"Do You Want to Exit?"_s), QString());
}

TEST_F(Guide, TheHelpButtonOfAMessageOpensItsPlace) {
    Install();
    Shown below("frmConfig");
    DialogPrompts dialogs;
    dialogs.AdviceOn = [](const QString& text) { return GuideAdvice({kGuide}, text); };
    QTimer::singleShot(0, [this] {
        ASSERT_TRUE(Until([] { return QApplication::activeModalWidget() != nullptr; }));
        QWidget* box = QApplication::activeModalWidget();
        ClickIn(*box, "cmdHelp");
        EXPECT_TRUE(Opens());
        EXPECT_TRUE(box->isVisible());
        QTest::keyClick(box, Qt::Key_Escape);
    });
    dialogs.Message(u"The test record needs a name."_s);
    ASSERT_EQ(opened.Paths().size(), 1U);
    EXPECT_EQ(MessageAt(TargetOf(opened.Paths().front())), u"The test record needs a name."_s);
}

TEST_F(Guide, OtherKeysGoOn) {
    Install();
    Shown window("frmConfig");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(window.windowHandle(), Qt::Key_A);
    QTest::keyClick(window.windowHandle(), Qt::Key_F2);
    QTest::keyClick(window.windowHandle(), Qt::Key_F1, Qt::ControlModifier);
    test::Pause(50);
    EXPECT_EQ(window.line->text(), u"a"_s);
    EXPECT_THAT(opened.Paths(), IsEmpty());
}

TEST_F(Guide, AKeyThatIsHeldDownOpensItOnce) {
    Install();
    Shown window("frmConfig");
    QKeyEvent held(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier, {}, true);
    QApplication::sendEvent(window.line, &held);
    test::Pause(50);
    EXPECT_THAT(opened.Paths(), IsEmpty());
}

TEST_F(Guide, ASlowBrowserStopsNothingAndIsStartedOnce) {
    std::atomic<bool> mayEnd{false};
    std::atomic<int> starts{0};
    key = std::make_unique<GuideKey>(QStringList{kGuide}, prompts, [&](const QString&) {
        ++starts;
        while (!mayEnd)
            QThread::msleep(1);
        return true;
    });
    qApp->installEventFilter(key.get());
    Shown window("frmCControl");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
    ticker.start(1);
    PressF1(window);
    PressF1(window);
    EXPECT_TRUE(Until([&ticks] { return ticks >= 20; })) << "the program's timers run on";
    EXPECT_EQ(starts, 1);
    mayEnd = true;
    key.reset();  // waits for what it started
}

TEST_F(Guide, AGuideThatIsNotThereIsSaid) {
    const TemporaryFolder folder;
    Install({folder.Path() + u"guide"_s, folder.Path() + u"other"_s});
    Shown window("frmConfig");
    PressF1(window);
    ASSERT_TRUE(Says());
    EXPECT_THAT(prompts.shown, ElementsAre(u"The guide is not on this computer. It belongs in "_s +
                                           QDir::toNativeSeparators(folder.Path()) + u"guide"_s));
    EXPECT_THAT(opened.Paths(), IsEmpty());
}

TEST_F(Guide, TheSecondFolderIsTakenWhenTheFirstIsNotThere) {
    const TemporaryFolder folder;
    Install({folder.Path() + u"guide"_s, kGuide});
    Shown window("frmConfig");
    PressF1(window);
    ASSERT_TRUE(Opens());
    EXPECT_THAT(opened.Paths(), ElementsAre(Place("frmConfig")));
}

TEST_F(Guide, AComputerWithoutABrowserIsSaid) {
    Install();
    opened.opens = false;
    Shown window("frmConfig");
    PressF1(window);
    ASSERT_TRUE(Says());
    EXPECT_THAT(
        prompts.shown,
        ElementsAre(u"This computer has no program that shows the guide. It is stored as "_s +
                    QDir::toNativeSeparators(Place("frmConfig"))));
}

TEST(GuideFolders, AreBesideTheProgramAndWhereAPackagePutsIt) {
    const QString program = QCoreApplication::applicationDirPath();
    EXPECT_THAT(GuideFolders(), ElementsAre(program + u"/guide"_s,
                                            QDir::cleanPath(program + u"/../share/davo/guide"_s)));
}

}  // namespace
}  // namespace davo::test
