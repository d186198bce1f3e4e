// SPDX-License-Identifier: GPL-3.0-or-later
// What the copying of a record does on Windows: the attributes go with it, what is read-only or
// held by another program stays, and a folder is the same however it is written.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include "common/files.h"
#include "files/copy_records.h"
#include "tests/support/temporary_folder.h"

// After the others: its macros rename what they declare.
#include <windows.h>

#undef ReplaceFile

namespace davo {
namespace {

std::wstring Wide(const QString& path) {
    return QDir::toNativeSeparators(path).toStdWString();
}

void SetAttributes(const QString& path, DWORD attributes) {
    ASSERT_TRUE(::SetFileAttributesW(Wide(path).c_str(), attributes));
}

DWORD AttributesOf(const QString& path) {
    return ::GetFileAttributesW(Wide(path).c_str());
}

class CopyOnWindows : public testing::Test {
  protected:
    CopyOnWindows() { ReplaceFile(source, "record"); }
    QStringList Listing() const {
        return QDir(folder.Path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    test::TemporaryFolder folder;
    QString source = folder.Path("T1.txt");
    QString target = folder.Path("T2.txt");
};

TEST_F(CopyOnWindows, TakesContentTimeAndAttributesAlong) {
    SetAttributes(source, FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(CopyFileOver(source, target), QString());
    EXPECT_EQ(ReadWholeFile(target), "record");
    EXPECT_EQ(QFileInfo(target).lastModified(), QFileInfo(source).lastModified());
    EXPECT_NE(AttributesOf(target) & FILE_ATTRIBUTE_READONLY, 0U);
    SetAttributes(source, FILE_ATTRIBUTE_NORMAL);
    SetAttributes(target, FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CopyOnWindows, ReplacesNoReadOnlyFile) {
    ReplaceFile(target, "earlier");
    SetAttributes(target, FILE_ATTRIBUTE_READONLY);
    EXPECT_NE(CopyFileOver(source, target), QString());
    EXPECT_EQ(ReadWholeFile(target), "earlier");
    EXPECT_EQ(Listing().size(), 2);
    SetAttributes(target, FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CopyOnWindows, LeavesNothingWhereAnotherProgramHoldsTheTarget) {
    ReplaceFile(target, "earlier");
    SetAttributes(source, FILE_ATTRIBUTE_READONLY);
    HANDLE held = ::CreateFileW(Wide(target).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_NE(CopyFileOver(source, target), QString());
    ::CloseHandle(held);
    EXPECT_EQ(ReadWholeFile(target), "earlier");
    EXPECT_EQ(Listing().size(), 2);
    SetAttributes(source, FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CopyOnWindows, ReplacesAReadOnlyPartThatAKillLeft) {
    const QString beside = folder.Path("~T2_txt.new");
    ReplaceFile(beside, "left over");
    SetAttributes(beside, FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(CopyFileOver(source, target), QString());
    EXPECT_EQ(ReadWholeFile(target), "record");
    EXPECT_EQ(Listing().size(), 2);
}

TEST_F(CopyOnWindows, SaysWhyAFileThatIsNotThereIsNotCopied) {
    EXPECT_NE(CopyFileOver(folder.Path("none.txt"), target), QString());
    EXPECT_EQ(Listing().size(), 1);
}

TEST_F(CopyOnWindows, ReachesDeepFoldersOfAnyName) {
    QString deep = folder.Path();
    for (int depth = 0; depth < 6; ++depth)
        deep += QStringLiteral("Ωμέγα ") + QString(60, QLatin1Char('x')) + QLatin1Char('\\');
    CreateFolder(deep);
    EXPECT_EQ(CopyFileOver(source, deep + QStringLiteral("T1.txt")), QString());
    EXPECT_EQ(ReadWholeFile(deep + QStringLiteral("T1.txt")), "record");
}

TEST_F(CopyOnWindows, KnowsAFolderInAnySpelling) {
    CreateFolder(folder.Path("Shots_Data"));
    const QString one = folder.Path("Shots_Data\\");
    EXPECT_TRUE(IsSameFolder(one, folder.Path("SHOTS_data\\")));
    EXPECT_TRUE(IsSameFolder(one, folder.Path("Shots_Data/")));
    EXPECT_TRUE(IsSameFolder(one, folder.Path("Shots_Data\\..\\shots_data\\")));
    EXPECT_FALSE(IsSameFolder(one, folder.Path()));
    EXPECT_FALSE(IsSameFolder(one, folder.Path("none\\")));
}

}  // namespace
}  // namespace davo
