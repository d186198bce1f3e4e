// SPDX-License-Identifier: GPL-3.0-or-later
// Files that earlier releases have written are read as those releases read them. Each release has
// a folder here, which nothing changes any more. To add that of a new one, add what it writes newly
// to freeze.cpp, readings.cpp and readings_test.py, and run
//   build/release/tests/frozen/davo_freeze tests/frozen/<release>
// which writes the files and what the program reads from them.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include "app/window_geometry.h"
#include "common/files.h"
#include "tests/frozen/readings.h"
#include "tests/testing/test_window.h"

namespace davo::test {
namespace {

const QString kFrozen = QStringLiteral(DAVO_TESTS_FOLDER "/frozen/");

std::vector<QString> Releases() {
    std::vector<QString> folders;
    for (const QString& name : QDir(kFrozen).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        folders.push_back(kFrozen + name);
    return folders;
}

// Settings are in the registry on Windows.
bool IsOfThisPlatform(const QString& file) {
    return QFileInfo(file).fileName() != u"davo.ini"_s || QDir::separator() == u'/';
}

TEST(FrozenFiles, AreReadAsTheirReleaseReadThem) {
    int read = 0;
    for (const QString& release : Releases()) {
        for (const QString& file : FrozenFiles(release)) {
            // One that was damaged has no reading of its own, only what is recovered from it.
            if (!IsOfThisPlatform(file) || !QFile::exists(ReadingPath(file))) continue;
            SCOPED_TRACE(file.toStdString());
            EXPECT_EQ(Reading(file), ReadWholeFile(ReadingPath(file)));
            ++read;
        }
    }
    EXPECT_GE(read, 50);
}

TEST(FrozenFiles, UnsavedSessionsAreRecovered) {
    int recovered = 0;
    for (const QString& release : Releases()) {
        const QDir unsaved(release + u"/unsaved"_s);
        for (const QString& name : unsaved.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const QString folder = unsaved.filePath(name);
            SCOPED_TRACE(folder.toStdString());
            EXPECT_EQ(RecoveredReading(folder),
                      ReadWholeFile(folder + u'/' + QLatin1String(kRecoveredName)));
            ++recovered;
        }
    }
    EXPECT_GE(recovered, 7);
}

// The windows take what the release has kept of them.
class FrozenWindows : public TestWindow {};

TEST_F(FrozenWindows, AreAsTheirReleaseLeftThem) {
    int taken = 0;
    for (const QString& release : Releases()) {
        const QString kept = release + u"/windows/davo-window.ini"_s;
        if (!QFile::exists(kept)) continue;
        SCOPED_TRACE(kept.toStdString());
        ReplaceFile(WindowFile(places), ReadWholeFile(kept));
        QWidget frame;
        frame.setObjectName(u"frmMain"_s);
        EXPECT_TRUE(RestoreWindowGeometry(frame, places));
        Open();
        EXPECT_EQ(WindowsReading(frame.geometry(), frame.isMaximized(),
                                 QString::fromStdString(Text("txtErrorLimit"))),
                  ReadWholeFile(ReadingPath(kept)));
        Click("cmdExit");
        EXPECT_TRUE(Closed());
        ++taken;
    }
    EXPECT_GE(taken, 1);
}

TEST(FrozenFiles, EachReadingIsOfAFile) {
    for (const QString& release : Releases()) {
        QStringList readings;
        for (const QString& file : FrozenFiles(release))
            readings += QFileInfo(ReadingPath(file)).fileName();
        QDirIterator each(release, {u"*.read"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (each.hasNext()) {
            const QString name = QFileInfo(each.next()).fileName();
            if (name == QLatin1String(kRecoveredName)) continue;
            EXPECT_TRUE(readings.contains(name)) << name.toStdString();
        }
    }
}

}  // namespace
}  // namespace davo::test
