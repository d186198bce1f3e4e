// SPDX-License-Identifier: GPL-3.0-or-later
// What the panel says when a file cannot be saved or read, by means of Linux.

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QStandardPaths>

#include "tests/curves/panel_test.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/in_the_way.h"
#include "tests/support/program_output.h"

namespace davo::test {
namespace {

constexpr uid_t kNobody = 65534;
constexpr mode_t kAllMayRead = 0755;

class FullDisk : public FileSizeLimit {
  public:
    FullDisk() : FileSizeLimit(1) {}
};

// The rights of a plain user while this lives, also when root runs the tests.
class PlainUser {
  public:
    PlainUser() {
        if (isRoot_) Become(kNobody);
    }
    ~PlainUser() {
        if (isRoot_) Become(0);
    }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;

  private:
    static void Become(uid_t user) { EXPECT_EQ(::seteuid(user), 0); }

    bool isRoot_ = ::geteuid() == 0;
};

void SetMode(const QString& path, mode_t mode) {
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

class PanelOnDisk : public Panel {
  protected:
    struct Command {
        const char* button;
        const char* file;
    };
    static constexpr Command kCommands[] = {{"cmdSavePng", "old/curves.png"},
                                            {"cmdSavePdf", "old/curves.pdf"},
                                            {"cmdSaveCsv", "old/curves.csv"}};
    PanelOnDisk() {
        QDir().mkpath(folder.Path("old"));
        ShowFiles({"ONE"});
    }
    QStringList Files() const { return folder.Names("old"); }
    void Save(const Command& command) {
        prompts.files = {folder.Path(command.file)};
        prompts.answers = {Answer::Yes};  // replace it
        Press(command.button);
        prompts.answers.clear();
    }
    // Nothing was saved, each command has said so, and each saves when it can again.
    template <class Obstacle>
    void ExpectNothingSaved(const std::string& trouble) {
        for (const Command& command : kCommands) {
            const QString path = folder.Path(command.file);
            ReplaceFile(path, "old");
            const QStringList files = Files();
            {
                const Obstacle obstacle;
                Save(command);
            }
            EXPECT_EQ(
                prompts.shown.back().toStdString(),
                "The file was not saved. Run-time error " + trouble + ": " + path.toStdString());
            EXPECT_EQ(ReadWholeFile(path), "old");
            EXPECT_EQ(Files(), files);
        }
    }
    void ExpectEachSaves() {
        for (const Command& command : kCommands) {
            const std::size_t said = prompts.shown.size();
            Save(command);
            EXPECT_NE(ReadWholeFile(folder.Path(command.file)), "old") << command.button;
            EXPECT_EQ(prompts.shown.size(), said + 2) << "which file, and whether to replace it";
        }
    }
};

TEST_F(PanelOnDisk, AFullDiskIsSaidAndKeepsTheOldFile) {
    ExpectNothingSaved<FullDisk>("'61': Disk full");
    ExpectEachSaves();
}

TEST_F(PanelOnDisk, AFolderThatMayNotBeWrittenIsSaidAndKeepsTheOldFile) {
    for (const Command& command : kCommands)
        ReplaceFile(folder.Path(command.file), "old");
    SetMode(folder.Path(), kAllMayRead);
    SetMode(folder.Path("old"), 0555);
    ExpectNothingSaved<PlainUser>("'70': Permission denied");
    SetMode(folder.Path("old"), kAllMayRead);
    ExpectEachSaves();
}

TEST_F(PanelOnDisk, WhatHasTheTemporaryNameIsNeitherFollowedNorWaitedFor) {
    for (const Command& command : kCommands) {
        SCOPED_TRACE(command.button);
        const QString path = folder.Path(command.file);
        ExpectWrittenOverAnything(path, NameWhileWriting(path), [&] {
            Save(command);
            EXPECT_GT(QFileInfo(path).size(), 100);
        });
        CreateFolder(NameWhileWriting(path));
        Save(command);
        EXPECT_EQ(prompts.shown.back(),
                  u"The file was not saved. Run-time error '70': Permission denied: "_s +
                      NameWhileWriting(path));
        QDir().rmdir(NameWhileWriting(path));
    }
}

TEST_F(PanelOnDisk, ARecordThatMayNotBeReadIsSaid) {
    SetMode(folder.Path(), kAllMayRead);
    SetMode(settings.dataPath, kAllMayRead);
    SetMode(File("STRAIGHT"), 0);
    {
        const PlainUser user;
        ShowFiles({"STRAIGHT"});
    }
    EXPECT_EQ(TextOf(panel, "lblTrouble"),
              "STRAIGHT cannot be shown: Run-time error '70': Permission "
              "denied: " +
                  File("STRAIGHT").toStdString());
}

// The legend names what is shown.
TEST_F(PanelOnDisk, ThePageOfElevenRecordsNamesTheFirstTen) {
    const QString pdftotext = QStandardPaths::findExecutable(u"pdftotext"_s);
    if (pdftotext.isEmpty()) GTEST_SKIP() << "no pdftotext";
    std::vector<std::string> names;
    for (int i = 0; i < 11; ++i) {
        names.push_back("FEEDER" + std::to_string(100 + i));
        Add(names.back(), Curve(SmoothCurve(100 + 50 * i), 1));
    }
    ShowFiles(names);
    EXPECT_EQ(TextOf(panel, "lblRecord"), "11 records; the first 10 are shown");
    prompts.files = {folder.Path("eleven.pdf")};
    Press("cmdSavePdf");
    const std::string page = OutputOf(pdftotext, {folder.Path("eleven.pdf"), u"-"_s}).toStdString();
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_THAT(page, HasSubstr(names[i] + " Test 1"));
    EXPECT_THAT(page, Not(HasSubstr(names[10])));
}

}  // namespace
}  // namespace davo::test
