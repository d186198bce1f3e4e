// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_name.h"

#include <QDir>
#include <random>

#include "common/files.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

TEST(FreeRecordName, HasNoCharacterThatANameCannotHave) {
    const TemporaryFolder folder;
    const QString path = folder.Path("");
    EXPECT_EQ(FreeRecordName(path, u"FEEDER 12 11/21/26"_s), u"FEEDER 12 11-21-26"_s);
    EXPECT_EQ(FreeRecordName(path, u"  A.B:C?   ! "_s), u"A-B-C- -"_s);
    EXPECT_EQ(FreeRecordName(path, u"Żółw 5"_s), u"-ó-w 5"_s);
    EXPECT_EQ(FreeRecordName(path, u" "_s), u"Test"_s);
    EXPECT_EQ(FreeRecordName(path, u"com1"_s), u"Test com1"_s);
    EXPECT_TRUE(RecordNameTrouble(FreeRecordName(path, QString(300, u'x'))).isEmpty());
}

TEST(FreeRecordName, IsOneThatNoFileHas) {
    const TemporaryFolder folder;
    const QString path = folder.Path("");
    for (const QString& name : {u"A"_s, u"A (2)"_s, u"A (3)"_s}) {
        EXPECT_EQ(FreeRecordName(path, u"A"_s), name);
        ReplaceFile(path + name + u".txt"_s, "");
    }
}

TEST(FreeRecordName, IsAlwaysOneThatARecordCanHave) {
    const TemporaryFolder folder;
    std::mt19937 random(RandomSeed(171));
    for (int round = 0; round < 2000; ++round) {
        QString wanted;
        for (std::size_t length = random() % 130; length > 0; --length)
            wanted += QChar(
                static_cast<char16_t>(random() % 4 == 0 ? random() % 0xFFFF : random() % 0x80));
        const QString name = FreeRecordName(folder.Path(""), wanted);
        EXPECT_EQ(RecordNameTrouble(name), QString()) << wanted.toStdString();
        EXPECT_FALSE(name.isEmpty());
        EXPECT_EQ(name, name.trimmed());
    }
}

}  // namespace
}  // namespace davo::test
