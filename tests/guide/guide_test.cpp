// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/guide.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
#include <QTest>
#include <QTimer>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "tests/support/fake_prompts.h"
#include "tests/support/temporary_folder.h"
#include "ui/dialog_prompts.h"

namespace davo::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr int kPatience = 3000;  // ms
const QString kGuide = QStringLiteral(DAVO_GUIDE_FOLDER);

QString Place(const char* window) {
    return kGuide + QStringLiteral("/f1/%1.html").arg(QLatin1String(window));
}

// Where the page of a window leads to.
QString TargetOf(const QString& page) {
    QFile file(page);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QString text = QString::fromUtf8(file.readAll());
    const auto start = text.indexOf(QLatin1String("url=")) + 4;
    return text.mid(start, text.indexOf(QLatin1Char('"'), start) - start);
}

// The message at a place of the page of messages, as the page shows it.
QString MessageAt(const QString& target) {
    QFile file(kGuide + QStringLiteral("/messages.html"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QString page = QString::fromUtf8(file.readAll());
    const QString opening =
        QStringLiteral("<pre id=\"%1\"><code>").arg(target.section(QLatin1Char('#'), 1));
    const auto start = page.indexOf(opening) + opening.size();
    const auto end = page.indexOf(QStringLiteral("</code>"), start);
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
    bool Until(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, kPatience);
    }
    // As the platform delivers it: to the window, which finds the widget.
    static void PressF1(QWidget& window) { QTest::keyClick(window.windowHandle(), Qt::Key_F1); }

    Opened opened;
    FakePrompts prompts;
    std::unique_ptr<GuideKey> key;
};

class Shown : public QDialog {
  public:
    explicit Shown(const char* name) : line(new QLineEdit(this)) {
        setObjectName(QLatin1String(name));
        line->setObjectName(QStringLiteral("txtInput"));
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
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    PressF1(window);
    ASSERT_TRUE(Until([this] { return !opened.Paths().empty(); }));
    EXPECT_THAT(opened.Paths(), ElementsAre(Place(GetParam())));
    EXPECT_THAT(TargetOf(Place(GetParam())).toStdString(), StartsWith("../"));
    EXPECT_THAT(prompts.shown, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Windows, EveryWindow,
                         ::testing::Values("frmMain", "frmSplash", "frmCControl", "frmTestList",
                                           "frmHeader", "frmHeaderOptn", "frmFileUtilOverlay",
                                           "frmCopyFile", "frmSetDescr", "frmConfig", "frmAbout",
                                           "frmNotepad", "frmProgress", "frmStatusBar", "inputBox",
                                           "msgBox", "cdFile", "folderBrowser"));

TEST_F(Guide, PlacesLeadToWhatTheWindowIsAbout) {
    EXPECT_EQ(TargetOf(Place("frmCControl")), QStringLiteral("../test.html#window"));
    EXPECT_EQ(TargetOf(Place("frmTestList")), QStringLiteral("../retrieval.html#recall"));
    EXPECT_EQ(TargetOf(Place("msgBox")), QStringLiteral("../messages.html#messages"));
    EXPECT_EQ(TargetOf(Place("frmConfig")), QStringLiteral("../ports.html#configure"));
}

TEST_F(Guide, AWindowWithoutAPlaceTakesThatOfTheOneAboveIt) {
    QWidget window;
    window.setObjectName(QStringLiteral("frmTestList"));
    QDialog above(&window);
    above.setObjectName(QStringLiteral("nowhere"));
    EXPECT_EQ(GuidePage(kGuide, &above), Place("frmTestList"));
}

TEST_F(Guide, AnUnknownWindowOpensTheFirstPage) {
    QWidget window;
    window.setObjectName(QStringLiteral("nowhere"));
    EXPECT_EQ(GuidePage(kGuide, &window), kGuide + QStringLiteral("/index.html"));
    EXPECT_EQ(GuidePage(kGuide, nullptr), kGuide + QStringLiteral("/index.html"));
}

TEST_F(Guide, TheMainWindowsOwnPartsLeadToTheWindowThatIsOpenInIt) {
    QMainWindow window;
    window.setObjectName(QStringLiteral("frmMain"));
    auto* area = new QMdiArea;
    window.setCentralWidget(area);
    EXPECT_EQ(GuidePage(kGuide, window.menuBar()), Place("frmMain"));
    auto* child = new QWidget;
    child->setObjectName(QStringLiteral("frmCControl"));
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
        ASSERT_TRUE(QTest::qWaitForWindowActive(box));
        PressF1(*box);
        EXPECT_TRUE(Until([this] { return !opened.Paths().empty(); }));
        QTest::keyClick(box, Qt::Key_Escape);
    });
    DialogPrompts().YesNo(QStringLiteral("Do You Want to Exit?"), Answer::No);
    ASSERT_EQ(opened.Paths().size(), 1U);
    const QString target = TargetOf(opened.Paths().front());
    EXPECT_THAT(target.toStdString(), StartsWith("../messages.html#message-"));
    EXPECT_EQ(MessageAt(target), QStringLiteral("Do You Want to Exit?"));
}

TEST_F(Guide, AMessageIsFoundByWhatIsAlwaysTheSameInIt) {
    QMessageBox box;
    box.setObjectName(QStringLiteral("msgBox"));
    const auto found = [&box](const char* text) {
        box.setProperty("exactText", QString::fromUtf8(text));
        return MessageAt(TargetOf(GuidePage(kGuide, &box)));
    };
    EXPECT_EQ(found("File 'T1.txt' exists. Do you want to override? "),
              QStringLiteral("File '‹name›' exists. Do you want to override?"));
    EXPECT_EQ(found("DAVO is not available\r\nor\r\nnot under computer control."),
              QStringLiteral("DAVO is not available\nor\nnot under computer control."));
    EXPECT_EQ(found("Run-time error '61': Disk full: /a/T1.txt"),
              QStringLiteral("Run-time error '‹number›': ‹text›: ‹file or line›"));
    EXPECT_EQ(found("The test record was not saved.\r\nRun-time error '61': Disk full"),
              QStringLiteral("The test record was not saved.\n‹error›"));
    box.setProperty("exactText", QStringLiteral("Something else"));
    EXPECT_EQ(GuidePage(kGuide, &box), Place("msgBox"));
}

TEST_F(Guide, OtherKeysGoOn) {
    Install();
    Shown window("frmConfig");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(window.windowHandle(), Qt::Key_A);
    QTest::keyClick(window.windowHandle(), Qt::Key_F2);
    QTest::keyClick(window.windowHandle(), Qt::Key_F1, Qt::ControlModifier);
    QTest::qWait(50);
    EXPECT_EQ(window.line->text(), QStringLiteral("a"));
    EXPECT_THAT(opened.Paths(), IsEmpty());
}

TEST_F(Guide, AKeyThatIsHeldDownOpensItOnce) {
    Install();
    Shown window("frmConfig");
    QKeyEvent held(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier, {}, true);
    QApplication::sendEvent(window.line, &held);
    QTest::qWait(50);
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
    Install({folder.Path() + QStringLiteral("guide"), folder.Path() + QStringLiteral("other")});
    Shown window("frmConfig");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    PressF1(window);
    ASSERT_TRUE(Until([this] { return !prompts.shown.empty(); }));
    EXPECT_THAT(prompts.shown,
                ElementsAre(QStringLiteral("The guide is not on this computer. It belongs in ") +
                            QDir::toNativeSeparators(folder.Path()) + QStringLiteral("guide")));
    EXPECT_THAT(opened.Paths(), IsEmpty());
}

TEST_F(Guide, TheSecondFolderIsTakenWhenTheFirstIsNotThere) {
    const TemporaryFolder folder;
    Install({folder.Path() + QStringLiteral("guide"), kGuide});
    Shown window("frmConfig");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    PressF1(window);
    ASSERT_TRUE(Until([this] { return !opened.Paths().empty(); }));
    EXPECT_THAT(opened.Paths(), ElementsAre(Place("frmConfig")));
}

TEST_F(Guide, AComputerWithoutABrowserIsSaid) {
    Install();
    opened.opens = false;
    Shown window("frmConfig");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    PressF1(window);
    ASSERT_TRUE(Until([this] { return !prompts.shown.empty(); }));
    EXPECT_THAT(
        prompts.shown,
        ElementsAre(
            QStringLiteral("This computer has no program that shows the guide. It is stored as ") +
            QDir::toNativeSeparators(Place("frmConfig"))));
}

TEST(GuideFolders, AreBesideTheProgramAndWhereAPackagePutsIt) {
    const QString program = QCoreApplication::applicationDirPath();
    EXPECT_THAT(GuideFolders(),
                ElementsAre(program + QStringLiteral("/guide"),
                            QDir::cleanPath(program + QStringLiteral("/../share/davo/guide"))));
}

}  // namespace

}  // namespace davo::test
