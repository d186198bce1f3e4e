// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/record_name.h"

#include <QDir>
#include <random>

#include "common/files.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/random_seed.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

TEST(RecordNameTrouble, DevicesAreFourNamesAndNumberedPorts) {
    for (const QString& name :
         {u"CON"_s, u"nul"_s, u"COM1"_s, u"Lpt9"_s, u"com\u00B9"_s, u"COM\u00B2"_s, u"LPT\u00B3"_s})
        EXPECT_FALSE(RecordNameTrouble(name).isEmpty()) << name.toStdString();
    for (const QString& name :
         {u"COM"_s, u"COMA"_s, u"COM12"_s, u"ABC1"_s, u"AB1"_s, u"COM\u00BC"_s, u"ABC\u00B2"_s})
        EXPECT_EQ(RecordNameTrouble(name), QString()) << name.toStdString();
}

TEST(RecordNameTrouble, AHundredCharactersAreTheMost) {
    EXPECT_EQ(RecordNameTrouble(QString(100, u'x')), QString());
    EXPECT_EQ(RecordNameTrouble(QString(101, u'x')),
              u"The name is too long. At most 100 characters are possible."_s);
}

TEST(AskRecordName, AsksUntilANameIsFree) {
    const TemporaryFolder folder;
    RecordNameQuestion question{u"Title"_s, u"Prompt"_s, folder.Path(""), u"%1 is taken."_s};
    ReplaceFile(folder.Path("A.txt"), "");
    FakePrompts prompts;
    prompts.inputs = {u"A"_s, u"CON"_s, u" B "_s};
    EXPECT_EQ(AskRecordName(prompts, question), u"B"_s);
    EXPECT_THAT(
        prompts.Texts(),
        IsSupersetOf({std::string("A is taken."),
                      std::string("The name CON is that of a device and cannot be a file's.")}));
    prompts.inputs = {u" "_s, std::nullopt, u"1.2"_s, u"C"_s, u"1.2"_s, u"C"_s};
    EXPECT_EQ(AskRecordName(prompts, question), QString());
    EXPECT_EQ(AskRecordName(prompts, question), QString());
    prompts.shown.clear();
    EXPECT_EQ(AskRecordName(prompts, question), u"C"_s);
    EXPECT_THAT(prompts.Texts(), Not(testing::Contains(std::string("No full stop."))));
    question.dotted = u"No full stop."_s;
    EXPECT_EQ(AskRecordName(prompts, question), u"C"_s);
    EXPECT_THAT(prompts.Texts(), testing::Contains(std::string("No full stop.")));
}

TEST(FreeRecordName, HasNoCharacterThatANameCannotHave) {
    const TemporaryFolder folder;
    const QString path = folder.Path("");
    EXPECT_EQ(FreeRecordName(path, u"FEEDER 12 11/21/26"_s), u"FEEDER 12 11-21-26"_s);
    EXPECT_EQ(FreeRecordName(path, u"  A.B:C?   ! "_s), u"A-B-C- -"_s);
    EXPECT_EQ(FreeRecordName(path, u"Żółw 5"_s), u"-ó-w 5"_s);
    EXPECT_EQ(FreeRecordName(path, u" "_s), u"Test"_s);
    EXPECT_EQ(FreeRecordName(path, u"com1"_s), u"Test com1"_s);
    EXPECT_EQ(FreeRecordName(path, QString(300, u'x')), QString(92, u'x'));
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
    std::mt19937_64 random(RandomSeed(171));
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
