// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop's files here are the test's own: programs that write down what they were given.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include "common/files.h"
#include "common/open_document.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

class OpenDocument : public testing::Test {
  protected:
    OpenDocument() {
        for (const char* name : {"data/applications", "config", "programs"})
            EXPECT_TRUE(QDir().mkpath(folder_.Path(name)));
        Set("XDG_DATA_HOME", "data");
        Set("XDG_DATA_DIRS", "none");
        Set("XDG_CONFIG_HOME", "config");
        Set("XDG_CONFIG_DIRS", "none");
        qunsetenv("XDG_CURRENT_DESKTOP");
    }
    ~OpenDocument() override {
        for (const auto& [name, value] : before_)
            value.isNull() ? qunsetenv(name) : qputenv(name, value);
    }
    OpenDocument(const OpenDocument&) = delete;
    OpenDocument& operator=(const OpenDocument&) = delete;

    void Set(const char* name, const char* folder) {
        before_.emplace_back(name, qgetenv(name));
        qputenv(name, QFile::encodeName(folder_.Path(folder)));
    }

    // A program of that name, and its entry on the desktop.
    void AddProgram(const std::string& name, const std::string& arguments) {
        const QString program = folder_.Path(("programs/" + name).c_str());
        // Renamed when complete, so that nobody reads half of it.
        const std::string note = folder_.Path((name + ".note").c_str()).toStdString();
        ReplaceFile(program, "#!/bin/sh\nfor word in \"$@\"; do echo \"$word\"; done > '" + note +
                                 ".part'\nmv '" + note + ".part' '" + note + "'\n");
        ASSERT_TRUE(
            QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        AddEntry(name, program.toStdString() + " " + arguments);
    }
    void AddEntry(const std::string& name, const std::string& command) {
        ReplaceFile(folder_.Path(("data/applications/" + name + ".desktop").c_str()),
                    "[Desktop Action new]\nExec=/bin/false\n[Desktop Entry]\nName=x\nExec=" +
                        command + "\n");
    }
    void WriteList(const char* file, const std::string& group, const std::string& entries) {
        ReplaceFile(folder_.Path(file),
                    "[" + group + "]\ntext/plain=other.desktop;\n" +
                        "application/vnd.ms-excel=" + entries + "\n" +
                        "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet=" +
                        entries + "\n");
    }
    // What a program was given; empty when it was not started within a minute.
    std::vector<std::string> GivenTo(const std::string& name) {
        const QString note = folder_.Path((name + ".note").c_str());
        for (int look = 0; look < 12'000; ++look, QThread::msleep(5)) {
            if (FileExists(note)) return ReadLines(note);
        }
        return {};
    }

    test::TemporaryFolder folder_;
    QString report_ = folder_.Path("T 12%.xls");
    std::vector<std::pair<const char*, QByteArray>> before_;
};

using Words = std::vector<std::string>;

TEST_F(OpenDocument, UsesTheProgramThatTheUserChose) {
    AddProgram("sheets", "--new %f");
    AddProgram("other", "%f");
    WriteList("config/mimeapps.list", "Default Applications", "sheets.desktop;");
    WriteList("data/applications/mimeinfo.cache", "MIME Cache", "other.desktop;sheets.desktop;");
    EXPECT_TRUE(ShowReportInExcel(report_));
    EXPECT_EQ(GivenTo("sheets"), (Words{"--new", report_.toStdString()}));
    EXPECT_FALSE(FileExists(folder_.Path("other.note")));
}

TEST_F(OpenDocument, UsesAProgramThatOffersItself) {
    AddProgram("sheets", "%U --100%%");
    WriteList("data/applications/mimeinfo.cache", "MIME Cache", "sheets.desktop;");
    EXPECT_TRUE(ShowReportInExcel(folder_.Path("T 12.xlsx")));
    EXPECT_EQ(GivenTo("sheets"),
              (Words{"file://" + folder_.Path("T%2012.xlsx").toStdString(), "--100%"}));
}

TEST_F(OpenDocument, ShowsAPageInTheBrowserAndNotInASpreadsheet) {
    AddProgram("sheets", "%f");
    AddProgram("browser", "%u");
    WriteList("config/mimeapps.list", "Default Applications", "sheets.desktop;");
    ReplaceFile(folder_.Path("data/applications/mimeinfo.cache"),
                "[MIME Cache]\ntext/html=browser.desktop;\n");
    EXPECT_TRUE(ShowDocument(folder_.Path("index.html")));
    EXPECT_EQ(GivenTo("browser"), (Words{"file://" + folder_.Path("index.html").toStdString()}));
    EXPECT_FALSE(FileExists(folder_.Path("sheets.note")));
}

TEST_F(OpenDocument, GivesThePathToACommandWithoutAPlaceForIt) {
    AddProgram("sheets", "%i");
    WriteList("config/mimeapps.list", "Added Associations", "sheets.desktop;");
    EXPECT_TRUE(ShowReportInExcel(report_));
    EXPECT_EQ(GivenTo("sheets"), (Words{report_.toStdString()}));
}

TEST_F(OpenDocument, PassesOverProgramsThatAreGone) {
    AddEntry("gone", folder_.Path("programs/gone").toStdString() + " %f");
    AddProgram("sheets", "%f");
    WriteList("config/mimeapps.list", "Default Applications",
              "gone.desktop;nowhere.desktop;sheets.desktop;");
    EXPECT_TRUE(ShowReportInExcel(report_));
    EXPECT_EQ(GivenTo("sheets"), (Words{report_.toStdString()}));
}

TEST_F(OpenDocument, SaysThatThereIsNoProgram) {
    EXPECT_FALSE(ShowReportInExcel(report_));
    AddEntry("gone", folder_.Path("programs/gone").toStdString() + " %f");
    WriteList("config/mimeapps.list", "Default Applications", "gone.desktop;");
    EXPECT_FALSE(ShowReportInExcel(report_));
    EXPECT_EQ(NoProgramText(u"/a/T1.xls"_s),
              u"The report is finished, but this computer has no program that shows "
              "it. It is stored as /a/T1.xls"_s);
}

TEST_F(OpenDocument, DoesNotWaitForTheProgram) {
    // The program ends when it is let go, and that is after the call.
    const QString program = folder_.Path("programs/slow");
    const QString letGo = folder_.Path("let go");
    AddProgram("slow", "%f");
    ReplaceFile(program, "#!/bin/sh\nwhile ! test -e '" + letGo.toStdString() +
                             "'; do sleep 0.02; done\n" +
                             ReadWholeFile(program).substr(std::string_view("#!/bin/sh\n").size()));
    ASSERT_TRUE(
        QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    WriteList("config/mimeapps.list", "Default Applications", "slow.desktop;");
    EXPECT_TRUE(ShowReportInExcel(report_));
    EXPECT_FALSE(FileExists(folder_.Path("slow.note")));
    ReplaceFile(letGo, "");
    EXPECT_EQ(GivenTo("slow"), (Words{report_.toStdString()}));
}

}  // namespace
}  // namespace davo
