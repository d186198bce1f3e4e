// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/files.h"

#include <QDir>
#include <QFile>

#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

class Files : public testing::Test {
  protected:
    QString Path(const char* name) const { return folder_.Path(name); }

    void Put(const char* name, const QByteArray& bytes) const {
        QFile file(Path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    template <class Operation>
    static void ExpectError(int number, const char* text, const QString& path,
                            Operation operation) {
        const auto error = test::Thrown(operation);
        ASSERT_TRUE(error) << "no error " << number;
        EXPECT_EQ(static_cast<int>(error->Number()), number);
        EXPECT_EQ(error->what(), "Run-time error '" + std::to_string(number) + "': " + text + ": " +
                                     path.toStdString());
    }

    test::TemporaryFolder folder_;
};

TEST_F(Files, TellsFilesFromFolders) {
    Put("file", "x");
    ASSERT_TRUE(QDir().mkdir(Path("folder")));
    EXPECT_TRUE(FileExists(Path("file")));
    EXPECT_FALSE(FileExists(Path("folder")));
    EXPECT_FALSE(FileExists(Path("nothing")));
    EXPECT_FALSE(FileExists(QString()));
    EXPECT_TRUE(FolderExists(Path("folder")));
    EXPECT_TRUE(FolderExists(Path("folder/")));
    EXPECT_FALSE(FolderExists(Path("file")));
    EXPECT_FALSE(FolderExists(Path("nothing")));
}

TEST_F(Files, CreatesAFolderAndThoseAboveIt) {
    CreateFolder(Path("a/b/c/"));
    EXPECT_TRUE(FolderExists(Path("a/b/c")));
    CreateFolder(Path("a/b/c/"));
    CreateFolder(Path("a/d"));
    EXPECT_TRUE(FolderExists(Path("a/d")));
}

TEST_F(Files, CreatesNoFolderWhereAFileStands) {
    Put("file", "x");
    ExpectError(70, "Permission denied", Path("file"), [&] { CreateFolder(Path("file")); });
    ExpectError(76, "Path not found", Path("file/a/b"), [&] { CreateFolder(Path("file/a/b")); });
}

TEST_F(Files, DeletesAFile) {
    Put("T1.txt", "x");
    DeleteFile(Path("T1.txt"));
    EXPECT_THAT(folder_.Names(), IsEmpty());
}

TEST_F(Files, DeletesNothingButAFileThatIsThere) {
    ASSERT_TRUE(QDir().mkdir(Path("folder")));
    const QString file = Path("T1.txt");
    ExpectError(53, "File not found", file, [&] { DeleteFile(file); });
    const QString lost = Path("none/T1.txt");
    ExpectError(76, "Path not found", lost, [&] { DeleteFile(lost); });
    const QString folder = Path("folder");
    ExpectError(70, "Permission denied", folder, [&] { DeleteFile(folder); });
    EXPECT_TRUE(FolderExists(folder));
}

TEST_F(Files, ReadsEveryByteAsItStands) {
    QByteArray all;
    for (int code = 0; code < 256; ++code)
        all.append(static_cast<char>(code));
    Put("bytes", all);
    EXPECT_EQ(ReadWholeFile(Path("bytes")), all.toStdString());
    Put("empty", "");
    EXPECT_EQ(ReadWholeFile(Path("empty")), "");
}

TEST_F(Files, ReadsNothingButAFileThatIsThere) {
    ASSERT_TRUE(QDir().mkdir(Path("folder")));
    const QString file = Path("T1.txt");
    ExpectError(53, "File not found", file, [&] { ReadWholeFile(file); });
    ExpectError(53, "File not found", file, [&] { ReadLines(file); });
    const QString lost = Path("none/T1.txt");
    ExpectError(76, "Path not found", lost, [&] { ReadWholeFile(lost); });
    const QString folder = Path("folder");
    ExpectError(70, "Permission denied", folder, [&] { ReadWholeFile(folder); });
}

TEST_F(Files, SplitsLines) {
    EXPECT_THAT(SplitLines("a\r\nb\nc"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(SplitLines("a\r\n"), ElementsAre("a"));
    EXPECT_THAT(SplitLines("a\r\n\r\n"), ElementsAre("a", ""));
    EXPECT_THAT(SplitLines("\n\n"), ElementsAre("", ""));
    EXPECT_THAT(SplitLines("a\rb\r\nc\r"), ElementsAre("a\rb", "c\r"));
    EXPECT_THAT(SplitLines(""), IsEmpty());
    Put("lines", "x\r\n\xE4\n");
    EXPECT_THAT(ReadLines(Path("lines")), ElementsAre("x", "\xE4"));
}

TEST_F(Files, JoinsLines) {
    EXPECT_EQ(JoinLines({"a", "", "b"}), "a\r\n\r\nb\r\n");
    EXPECT_EQ(JoinLines({}), "");
}

TEST_F(Files, ReplacesAFileAndLeavesNothingBeside) {
    const QString path = Path("T1.txt");
    ReplaceFile(path, "first");
    EXPECT_EQ(ReadWholeFile(path), "first");
    const std::string bytes("\0\r\n\xFFsecond", 10);
    ReplaceFile(path, bytes);
    EXPECT_EQ(ReadWholeFile(path), bytes);
    ReplaceFile(path, "");
    EXPECT_EQ(ReadWholeFile(path), "");
    EXPECT_THAT(folder_.Names(), ElementsAre(u"T1.txt"_s));
}

TEST_F(Files, ReplacesALargeFileWhole) {
    const std::string large(5'000'000, 'x');
    ReplaceFile(Path("large"), large);
    EXPECT_EQ(ReadWholeFile(Path("large")), large);
}

TEST_F(Files, ReplacesNothingInAMissingFolder) {
    const QString path = Path("none/T1.txt");
    ExpectError(76, "Path not found", path, [&] { ReplaceFile(path, "x"); });
    EXPECT_FALSE(FolderExists(Path("none")));
}

TEST_F(Files, ReplacesNoFolder) {
    ASSERT_TRUE(QDir().mkpath(Path("T1.txt/inside")));
    const QString path = Path("T1.txt");
    ExpectError(70, "Permission denied", path, [&] { ReplaceFile(path, "x"); });
    EXPECT_TRUE(FolderExists(Path("T1.txt/inside")));
    EXPECT_THAT(folder_.Names(), ElementsAre(u"T1.txt"_s));
}

}  // namespace
}  // namespace davo
