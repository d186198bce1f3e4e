// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/nameplate_file.h"

#include "common/files.h"
#include "common/run_time_error.h"
#include "tests/records/captures.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

using test::FileBytes;
using test::MessageThrownBy;
using test::PutFile;
using test::TemporaryFolder;

NameplateTexts Texts(const char* kind, const char* knee) {
    NameplateTexts texts;
    texts[0] = kind;
    texts[3] = knee;
    texts.back() = "1200:5, 600:5";
    return texts;
}

TEST(NameplateFile, KeepsOneForEachSerialNumber) {
    const TemporaryFolder folder;
    EXPECT_EQ(ReadNameplate(folder.Path(), "77"), NameplateTexts());
    EXPECT_THAT(folder.Names(), testing::IsEmpty()) << "to read makes no file";
    KeepNameplate(folder.Path(), "77", Texts("PX", "400"));
    KeepNameplate(folder.Path(), "AB 78", Texts("5P", ""));
    KeepNameplate(folder.Path(), "77", Texts("PX", "410"));
    EXPECT_EQ(ReadNameplate(folder.Path(), "77"), Texts("PX", "410"));
    EXPECT_EQ(ReadNameplate(folder.Path(), " ab  78 "), Texts("5P", ""));
    EXPECT_EQ(ReadNameplate(folder.Path(), "AB78"), NameplateTexts());
    EXPECT_EQ(ReadNameplate(folder.Path(), ""), NameplateTexts());
    KeepNameplate(folder.Path(), "ab 78", NameplateTexts());
    EXPECT_EQ(ReadNameplate(folder.Path(), "AB 78"), NameplateTexts());
    EXPECT_EQ(ReadLines(folder.Path(kNameplateFileName)).size(), 2U) << "heading and 77";
    EXPECT_EQ(folder.Names(), QStringList(QLatin1String(kNameplateFileName)));
}

TEST(NameplateFile, ADamagedOrForeignOneIsLeftAlone) {
    const TemporaryFolder folder;
    KeepNameplate(folder.Path(), "77", Texts("PX", "400"));
    const QString path = folder.Path(kNameplateFileName);
    const std::string whole = FileBytes(path);
    const std::pair<std::string, const char*> damaged[] = {
        {"", "line 1"},
        {"a table of somebody\r\n", "line 1"},
        {"number" + whole.substr(whole.find('\t')), "line 1"},
        {whole + "78\tPX\r\n", "line 3"},
        {whole + "\r\n", "line 3"},
        {whole.substr(0, whole.size() - 20), "line 2"}};
    for (const auto& [bytes, line] : damaged) {
        SCOPED_TRACE(bytes);
        PutFile(path, bytes);
        EXPECT_EQ(MessageThrownBy([&] { ReadNameplate(folder.Path(), "77"); }),
                  std::string("Run-time error '13': Type mismatch: nameplates.tsv, ") + line);
        EXPECT_NE(MessageThrownBy([&] { KeepNameplate(folder.Path(), "77", Texts("C", "")); }), "");
        EXPECT_EQ(FileBytes(path), bytes);
    }
}

TEST(NameplateFile, OneWithItsHeadingOnlyHasNone) {
    const TemporaryFolder folder;
    KeepNameplate(folder.Path(), "77", Texts("PX", "400"));
    const QString path = folder.Path(kNameplateFileName);
    const std::string whole = FileBytes(path);
    PutFile(path, whole.substr(0, whole.find('\n') + 1));
    EXPECT_EQ(ReadNameplate(folder.Path(), "77"), NameplateTexts());
    KeepNameplate(folder.Path(), "77", Texts("PX", "400"));
    EXPECT_EQ(FileBytes(path), whole);
}

TEST(NameplateFile, ATabInASerialNumberIsABlank) {
    const TemporaryFolder folder;
    KeepNameplate(folder.Path(), "7\t7", Texts("PX", "400"));
    EXPECT_EQ(ReadNameplate(folder.Path(), "7 7"), Texts("PX", "400"));
}

}  // namespace
}  // namespace davo
