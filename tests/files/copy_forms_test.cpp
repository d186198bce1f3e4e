// SPDX-License-Identifier: GPL-3.0-or-later
// Copying records: the window that asks for a folder, the one that a timer drives, and the bar.
#include <sys/mount.h>

#include <QApplication>
#include <QFileInfo>
#include <QProgressBar>
#include <QTimer>

#include "common/places.h"
#include "files/copy_records.h"
#include "files/frmCopyFile.h"
#include "files/frmProgress.h"
#include "files/frmStatusBar.h"
#include "tests/files/file_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

std::vector<QString> FilesOf(std::vector<QString> names) {
    for (QString& name : names)
        name += u".txt"_s;
    return names;
}

class CopyWindow : public FileWindow<frmCopyFile> {
  protected:
    CopyWindow() { QDir().mkpath(target); }
    // Of records by their names.
    void Open(const std::vector<QString>& names) {
        window = std::make_unique<frmCopyFile>(FilesOf(names), settings, prompts,
                                               [this] { return drives; });
        ShowWindow();
    }
    void OpenTwo() {
        AddRecord(u"one"_s);
        AddRecord(u"two"_s);
        Open({u"one"_s, u"two"_s});
    }
    void Type(const QString& path) { QTest::keyClicks(Box("txtPath"), path); }
    void CopyTo(const QString& path) {
        Type(path);
        Click("cmdOK");
    }
    std::string Copied(const char* many) {
        return std::string(many) + " copied to " + ShownPath(target).toStdString();
    }
    std::string Question(const char* name) {
        return std::string("The file ") + name +
               "already  exists.  Do you want to replace the existing file? ";
    }

    RemovableDrive Stick() const { return {folder.Path("disk"), u"RED & BLUE"_s, 14'200'000'000}; }
    // The buttons of the sticks, from above.
    std::vector<std::string> Sticks() {
        std::vector<std::string> texts;
        for (int i = 0; i < 9; ++i) {
            auto* button = window->findChild<QPushButton*>(u"cmdDrive%1"_s.arg(i));
            if (button != nullptr) texts.push_back(button->text().toStdString());
        }
        return texts;
    }

    QString target = folder.Path("disk/");
    std::vector<RemovableDrive> drives;
};

TEST_F(CopyWindow, AStickHasALargeButtonThatCopiesOntoItAndSaysWhenItIsSafeToRemove) {
    drives = {Stick()};
    OpenTwo();
    EXPECT_THAT(Sticks(), ElementsAre("&1   RED && BLUE   14.2 GB free"));
    auto* button = Find<QPushButton>("cmdDrive0");
    EXPECT_GE(button->height(), 56);
    EXPECT_FALSE(Find<QLabel>("lblDrives")->isVisible());
    EXPECT_EQ(window->focusWidget(), button);
    EXPECT_TRUE(MnemonicsAreUnique(*window));
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    QTest::keyClick(button, Qt::Key_Return);
    EXPECT_THAT(NamesIn(target), ElementsAre("one.txt", "two.txt"));
    EXPECT_THAT(Shown(), ElementsAre(Copied("2 of 2") +
                                     "\r\nAll of it is on the disk: it is safe to remove."));
    EXPECT_TRUE(Unloaded());
}

TEST_F(CopyWindow, ItIsNotSafeToRemoveWhatWasNotCopiedTo) {
    drives = {Stick()};
    AddRecord(u"one"_s);
    Open({u"one"_s, u"gone"_s});
    Click("cmdDrive0");
    EXPECT_THAT(Shown(), ElementsAre(HasSubstr("1 of 2 files were not copied:\r\ngone: ")));
    EXPECT_THAT(Shown().front(), Not(HasSubstr("safe to remove")));
    EXPECT_THAT(prompts.informed, IsEmpty());
}

TEST_F(CopyWindow, SticksComeAndGo) {
    OpenTwo();
    EXPECT_THAT(Sticks(), IsEmpty());
    EXPECT_TRUE(Find<QLabel>("lblDrives")->isVisible());
    EXPECT_EQ(Text("lblDrives"), "No stick is plugged in. Plug one in, or choose another folder.");
    EXPECT_TRUE(Box("txtPath")->hasFocus());
    drives = {Stick(), {folder.Path("other"), u"OTHER"_s, 999}};
    ASSERT_TRUE(Until([this] { return Sticks().size() == 2; }));
    EXPECT_EQ(Sticks()[1], "&2   OTHER   999 bytes free");
    EXPECT_FALSE(Find<QLabel>("lblDrives")->isVisible());
    EXPECT_TRUE(Box("txtPath")->hasFocus()) << "what is typed there goes on";
    auto* first = Find<QPushButton>("cmdDrive0");
    first->setFocus();
    drives[0].free -= 4096;
    test::Pause(1200);
    EXPECT_TRUE(first->hasFocus()) << "what another program writes takes no button away";
    drives.pop_back();
    ASSERT_TRUE(Until([this] { return Sticks().size() == 1; }));
    drives.clear();
    ASSERT_TRUE(Until([this] { return Find<QLabel>("lblDrives")->isVisible(); }));
}

TEST_F(CopyWindow, AStickThatStaysKeepsItsButtonAndTheFocus) {
    const RemovableDrive other{folder.Path("other"), u"OTHER"_s, 999};
    drives = {Stick(), other};
    OpenTwo();
    const QPointer<QPushButton> button = Find<QPushButton>("cmdDrive1");
    button->setFocus();
    drives = {other};
    ASSERT_TRUE(Until([this] { return Sticks().size() == 1; }));
    ASSERT_NE(button, nullptr);
    EXPECT_TRUE(button->hasFocus());
    EXPECT_THAT(Sticks(), ElementsAre("&1   OTHER   999 bytes free"));
    drives = {Stick(), other};
    ASSERT_TRUE(Until([this] { return Sticks().size() == 2; }));
    EXPECT_TRUE(button->hasFocus());
    EXPECT_EQ(Sticks()[1], "&2   OTHER   999 bytes free");
    EXPECT_TRUE(Until([&] { return Find<QPushButton>("cmdDrive0")->y() < button->y(); }));
}

TEST_F(CopyWindow, AFolderOnAStickIsOnIt) {
    drives = {{folder.Path("disk"), u"A"_s, 1}, {folder.Path("disk/in"), u"B"_s, 1}};
    QDir().mkpath(folder.Path("disk/inner"));
    OpenTwo();
    CopyTo(folder.Path("disk/inner"));
    EXPECT_THAT(Shown(), ElementsAre(HasSubstr("safe to remove")));
}

TEST_F(CopyWindow, AStickThatHasGoneIsNotSafeToRemoveThoughItsFolderIsThere) {
    drives = {Stick()};
    OpenTwo();
    drives.clear();
    CopyTo(folder.Path("disk"));
    EXPECT_THAT(Shown(), ElementsAre(Copied("2 of 2")));
}

TEST_F(CopyWindow, AFolderBesideAStickIsNotOnIt) {
    drives = {Stick()};
    QDir().mkpath(folder.Path("beside"));
    OpenTwo();
    CopyTo(folder.Path("disk/../beside"));
    EXPECT_THAT(Shown(), ElementsAre(Not(HasSubstr("safe to remove"))));
}

TEST_F(CopyWindow, CopiesWhatIsChosen) {
    OpenTwo();
    EXPECT_EQ(window->windowTitle(), u"Copy File(s)"_s);
    EXPECT_EQ(Text("cmdPath"), "&Path");
    EXPECT_EQ(Text("cmdOK"), "&OK");
    EXPECT_THAT(CutTextsOf(*window), IsEmpty());
    CopyTo(folder.Path("disk"));
    EXPECT_THAT(NamesIn(target), ElementsAre("one.txt", "two.txt"));
    EXPECT_EQ(ReadWholeFile(target + u"one.txt"_s), RecordFileText("one"));
    EXPECT_EQ(QFileInfo(target + u"one.txt"_s).lastModified(),
              QFileInfo(DataFile(u"one"_s)).lastModified());
    EXPECT_EQ(Find<QLabel>("lblStatus")->text(),
              u"Copying '"_s + DataFile(u"two"_s) + u"'\r\n\r\nTO '"_s + target + u"two.txt'"_s);
    EXPECT_EQ(Text("cmdOK"), "&OK");
    EXPECT_EQ(Find<QProgressBar>("pbarProgress")->value(), 100);
    EXPECT_THAT(Shown(), ElementsAre(Copied("2 of 2")));
    EXPECT_THAT(prompts.informed, SizeIs(1)) << "nothing is to be warned of";
    EXPECT_TRUE(Unloaded());
}

TEST_F(CopyWindow, TheFolderCanBeChosen) {
    OpenTwo();
    prompts.folders = {QString(), folder.Path("disk")};
    Click("cmdPath");
    EXPECT_EQ(Text("txtPath"), "");
    Click("cmdPath");
    EXPECT_EQ(Box("txtPath")->text(), folder.Path("disk"));
    EXPECT_THAT(Shown(), ElementsAre("&Select a directory:|C:\\", "&Select a directory:|C:\\"));
}

TEST_F(CopyWindow, RefusesTheDataFolderHoweverItIsSpelt) {
    OpenTwo();
    ASSERT_TRUE(QFile::link(settings.dataPath, folder.Path("link")));
    for (const QString& path :
         {QString(), u"   "_s, settings.dataPath, folder.Path("Shots_Data"),
          folder.Path("disk/../Shots_Data"), folder.Path("link"), folder.Path("nowhere")}) {
        Box("txtPath")->setText(path);
        prompts.shown.clear();
        Click("cmdOK");
        EXPECT_THAT(Shown(), ElementsAre("Invalid Path. Please select another path."))
            << path.toStdString();
        EXPECT_TRUE(Find<QPushButton>("cmdPath")->hasFocus());
    }
    EXPECT_THAT(NamesIn(settings.dataPath), ElementsAre("one.txt", "two.txt"));
    EXPECT_EQ(unloaded, 0);
}

TEST_F(CopyWindow, AFolderInsideTheDataFolderIsAnotherOne) {
    OpenTwo();
    QDir().mkpath(folder.Path("Shots_Data/inner"));
    CopyTo(folder.Path("Shots_Data/inner"));
    EXPECT_THAT(NamesIn(folder.Path("Shots_Data/inner")), ElementsAre("one.txt", "two.txt"));
}

TEST_F(CopyWindow, NoKeepsTheFileThereAndCopiesTheOthers) {
    OpenTwo();
    ReplaceFile(target + u"one.txt"_s, "there");
    prompts.answers = {Answer::No};
    CopyTo(target);
    EXPECT_THAT(Shown(), ElementsAre(Question("one"), Copied("1 of 2")));
    EXPECT_THAT(prompts.presets, ElementsAre(Answer::No));
    EXPECT_EQ(ReadWholeFile(target + u"one.txt"_s), "there");
    EXPECT_EQ(ReadWholeFile(target + u"two.txt"_s), RecordFileText("two"));
}

TEST_F(CopyWindow, YesReplacesAndCancelEnds) {
    OpenTwo();
    ReplaceFile(target + u"one.txt"_s, "there");
    ReplaceFile(target + u"two.txt"_s, "there");
    prompts.answers = {Answer::Yes, Answer::Cancel};
    CopyTo(target);
    EXPECT_EQ(ReadWholeFile(target + u"one.txt"_s), RecordFileText("one"));
    EXPECT_EQ(ReadWholeFile(target + u"two.txt"_s), "there");
    EXPECT_EQ(Shown().back(), Copied("1 of 2"));
    EXPECT_TRUE(Unloaded());
}

TEST_F(CopyWindow, OneFileIsSaidSo) {
    AddRecord(u"one"_s);
    Open({u"one"_s});
    CopyTo(target);
    EXPECT_THAT(Shown(), ElementsAre(Copied("1 of 1")));
}

// Faster than names are shown, three files come one behind the other.
TEST_F(CopyWindow, ShowsTheNameThatItAsksAbout) {
    const std::vector<QString> names = AddRecords(3);
    for (const QString& name : names)
        ReplaceFile(target + name + u".txt"_s, "there");
    Open(names);
    std::vector<std::string> asked;
    prompts.answers = {Answer::No, Answer::Yes, Answer::No};
    prompts.onQuestion = [&](const QString&) {
        asked.push_back(Find<QLabel>("lblStatus")->text().toStdString());
    };
    CopyTo(target);
    EXPECT_THAT(asked,
                ElementsAre(HasSubstr("r0.txt'"), HasSubstr("r1.txt'"), HasSubstr("r2.txt'")));
}

TEST_F(CopyWindow, WhatDoesNotArriveIsSaidAtTheEnd) {
    AddRecord(u"one"_s);
    AddRecord(u"three"_s);
    QDir().mkpath(target + u"three.txt/x"_s);
    Open({u"one"_s, u"gone"_s, u"three"_s});
    CopyTo(target);
    ASSERT_THAT(Shown(), SizeIs(1));
    EXPECT_THAT(Shown().front(),
                StartsWith(Copied("1 of 3") + "\r\n2 of 3 files were not copied:\r\ngone: "));
    EXPECT_THAT(Shown().front(), HasSubstr("\r\nthree: "));
    EXPECT_THAT(NamesIn(target), ElementsAre("one.txt")) << "no part of a file is left";
    EXPECT_TRUE(Unloaded());
}

TEST_F(CopyWindow, AFullDiskIsSaidAndHoldsNoHalfFile) {
    const QByteArray disk = QFile::encodeName(folder.Path("disk"));
    if (::mount("none", disk.constData(), "tmpfs", 0, "size=16k") != 0)
        GTEST_SKIP() << "a small disk can be mounted by root only";
    AddRecord(u"one"_s);
    AddRecord(u"large"_s, {.rest = std::string(100000, 'x')});
    AddRecord(u"two"_s);
    Open({u"one"_s, u"large"_s, u"two"_s});
    CopyTo(target);
    EXPECT_THAT(Shown(), ElementsAre(HasSubstr("\r\n1 of 3 files were not copied:\r\nlarge: ")));
    EXPECT_THAT(NamesIn(target), ElementsAre("one.txt", "two.txt"));
    EXPECT_EQ(::umount(disk.constData()), 0);
}

TEST_F(CopyWindow, AFolderThatMayNotBeWrittenIsSaid) {
    const QByteArray disk = QFile::encodeName(folder.Path("disk"));
    if (::mount("none", disk.constData(), "tmpfs", MS_RDONLY, "size=16k") != 0)
        GTEST_SKIP() << "a disk can be mounted by root only";
    OpenTwo();
    CopyTo(target);
    EXPECT_THAT(Shown(),
                ElementsAre(StartsWith(Copied("0 of 2") + "\r\n2 of 2 files were not copied:")));
    EXPECT_EQ(::umount(disk.constData()), 0);
}

// The disk is taken away while the question about its second file is asked.
TEST_F(CopyWindow, ADiskThatIsPulledOutIsSaid) {
    OpenTwo();
    ReplaceFile(target + u"two.txt"_s, "there");
    prompts.answers = {Answer::Yes};
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, window.get(), [&] {
        if (FileExists(target + u"one.txt"_s)) QDir(target).removeRecursively();
    });
    timer.start(0);
    CopyTo(target);
    EXPECT_FALSE(FolderExists(target));
    EXPECT_THAT(Shown(), Contains(HasSubstr("1 of 2 files were not copied:\r\ntwo: ")));
    EXPECT_TRUE(Unloaded());
}

TEST_F(CopyWindow, CancelEndsBetweenFiles) {
    Open(AddRecords(100));
    Type(target);
    QTimer::singleShot(0, window.get(), [&] {
        EXPECT_EQ(Text("cmdOK"), "Cancel");
        EXPECT_TRUE(Find<QPushButton>("cmdOK")->hasFocus());
        EXPECT_FALSE(Box("txtPath")->isVisible());
        EXPECT_FALSE(Find<QPushButton>("cmdPath")->isVisible());
        EXPECT_TRUE(Find<QProgressBar>("pbarProgress")->isVisible());
        Click("cmdOK");
    });
    Click("cmdOK");
    EXPECT_TRUE(Unloaded());
    const std::vector<std::string> there = NamesIn(target);
    EXPECT_LT(there.size(), 100U);
    for (const std::string& name : there) {
        EXPECT_EQ(ReadWholeFile(target + QString::fromStdString(name)),
                  RecordFileText(name.substr(0, name.size() - 4)));
    }
}

TEST_F(CopyWindow, EscapeLeavesWithoutCopying) {
    OpenTwo();
    Type(folder.Path("disk"));
    QTest::keyClick(Box("txtPath"), Qt::Key_Escape);
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(NamesIn(target), IsEmpty());
}

TEST_F(CopyWindow, HoldsAtMost251Names) {
    Open(AddRecords(252));
    CopyTo(target);
    EXPECT_THAT(Shown(), ElementsAre("Run-time error '9': Subscript out of range"));
    EXPECT_THAT(NamesIn(target), SizeIs(251));
}

TEST(RemovableDrives, AreThoseMountedInAFolderOrInAUsersFolderWithinIt) {
    const TemporaryFolder folder;
    for (const char* name : {"a", "user/b b", "user/c", "deep/er/d", "user/share"})
        QDir().mkpath(folder.Path(name));
    const auto mounted = [&](const char* name, unsigned long flags = 0,
                             const char* device = "/dev/stick") {
        const QByteArray path = QFile::encodeName(folder.Path(name));
        return ::mount(device, path.constData(), "tmpfs", flags, "size=64k") == 0;
    };
    if (!mounted("a")) GTEST_SKIP() << "a disk can be mounted by root only";
    EXPECT_TRUE(mounted("user/b b") && mounted("user/c", MS_RDONLY) && mounted("deep/er/d"));
    // A share of the network may not answer: it is not even asked.
    EXPECT_TRUE(mounted("user/share", 0, "server:/share"));
    const auto drives = DrivesBelow(QDir::cleanPath(folder.Path()));
    EXPECT_THAT(drives, ElementsAre(RemovableDrive{folder.Path("a"), u"a"_s, 65536},
                                    RemovableDrive{folder.Path("user/b b"), u"b b"_s, 65536}));
    for (const char* name : {"a", "user/b b", "user/c", "deep/er/d", "user/share"})
        EXPECT_EQ(::umount(QFile::encodeName(folder.Path(name)).constData()), 0);
}

// --- The window that a timer drives ---

// What is seen before each event of a timer, every different answer once.
class BeforeEachTick : public QObject {
  public:
    explicit BeforeEachTick(std::function<std::string()> look) : look_(std::move(look)) {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Timer) return false;
        const std::string now = look_();
        if (seen.empty() || seen.back() != now) seen.push_back(now);
        return false;
    }

    std::vector<std::string> seen;

  private:
    std::function<std::string()> look_;
};

class StatusBarWindow : public FileWindow<frmStatusBar> {
  protected:
    StatusBarWindow() {
        QDir().mkpath(target);
        AddRecord(u"one"_s);
        AddRecord(u"two"_s);
    }
    void Open(const std::vector<QString>& names) {
        window = std::make_unique<frmStatusBar>(FilesOf(names), settings.dataPath, target, prompts);
        ShowWindow();
    }
    QString Percent() { return Find<QProgressBar>("picStatus")->text(); }

    QString target = folder.Path("disk/");
};

TEST_F(StatusBarWindow, CopiesOneFileATickAndCloses) {
    // A busy machine may show the window only after the first ticks.
    const BeforeEachTick before([this] {
        const std::string percent = window ? Percent().toStdString() : "0%";
        return percent + " " + std::to_string(NamesIn(target).size());
    });
    Open({u"one"_s, u"two"_s});
    EXPECT_EQ(window->focusWidget(), Find<QPushButton>("cmdCancel"));
    EXPECT_EQ(Text("cmdCancel"), "&Cancel");
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(before.seen, ElementsAre("0% 0", "50% 1", "100% 2"));
    EXPECT_EQ(Percent(), u"100%"_s);
    EXPECT_EQ(Find<QLabel>("lblSource")->text(), DataFile(u"two"_s));
    EXPECT_EQ(Find<QLabel>("lblDest")->text(), target + u"two.txt"_s);
    EXPECT_THAT(NamesIn(target), ElementsAre("one.txt", "two.txt"));
}

TEST_F(StatusBarWindow, AsksBeforeItReplaces) {
    ReplaceFile(target + u"one.txt"_s, "there");
    ReplaceFile(target + u"two.txt"_s, "there");
    prompts.answers = {Answer::No, Answer::Cancel};
    Open({u"one"_s, u"two"_s});
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(Shown(),
                ElementsAre("The file onealready  exists.  Do you want to replace the existing "
                            "file? ",
                            "The file twoalready  exists.  Do you want to replace the existing "
                            "file? ",
                            "0 of 2 copied to " + ShownPath(target).toStdString()));
    EXPECT_EQ(ReadWholeFile(target + u"two.txt"_s), "there");
}

TEST_F(StatusBarWindow, CancelClosesAtOnce) {
    constexpr std::size_t kFiles = 200;
    Open(AddRecords(kFiles));
    Click("cmdCancel");
    EXPECT_EQ(unloaded, 1);
    const std::size_t copied = NamesIn(target).size();
    EXPECT_LT(copied, kFiles);
    test::Pause(50);
    EXPECT_EQ(NamesIn(target).size(), copied);
}

TEST_F(StatusBarWindow, SaysWhatDidNotArrive) {
    Open({u"gone"_s, u"two"_s});
    EXPECT_TRUE(Unloaded());
    EXPECT_THAT(Shown(), ElementsAre(HasSubstr("\r\n1 of 2 files were not copied:\r\ngone: ")));
}

// --- The bar ---

TEST(ProgressWindow, FillsInFourSteps) {
    frmProgress window;
    window.Form_Load();
    const auto* bar = window.findChild<QProgressBar*>(u"pbarProgress"_s);
    std::vector<int> values{bar->value()};
    QObject::connect(bar, &QProgressBar::valueChanged, &window,
                     [&](int value) { values.push_back(value); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return values.size() == 5; }, test::kPatience));
    test::Pause(400);
    EXPECT_THAT(values, ElementsAre(0, 25, 50, 75, 100));
    window.Form_Load();
    EXPECT_EQ(bar->value(), 0);
}

}  // namespace
}  // namespace davo::test
