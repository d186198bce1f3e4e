// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/settings_store.h"

#include <QDir>

#include "common/files.h"
#include "common/text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

const QString kApplication = u"DATAPATH"_s;
const QString kSection = u"PATH"_s;
const QString kValue = u"PATHVAL"_s;

TEST(SettingsStoreOfThisPlatform, GivesAnEmptyTextForWhatIsNotThere) {
    const test::TemporaryFolder folder;
    const auto store = MakeSettingsStore(folder.MakePlaces());
    EXPECT_EQ(store->Read(kApplication, kSection, kValue), QString());
}

TEST(SettingsStoreOfThisPlatform, KeepsEveryTextAsItStands) {
    const test::TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    std::string allBytes;
    for (int code = 1; code < 256; ++code)
        allBytes += static_cast<char>(code);
    for (const QString& text :
         {u" 1"_s, u"-99"_s, u"-1 -1"_s, u"a,b"_s, u", "_s,
          QStringLiteral(R"(C:\Prüfung, \x41 "A"\Shots_Data\)"), u"@Invalid()"_s,
          u"@ByteArray(x)"_s, u"%41;=#["_s, u" blanks at both ends  "_s, QString(), u"true"_s,
          u"line\r\nend"_s, FromPage(allBytes)}) {
        MakeSettingsStore(places)->Write(kApplication, kSection, kValue, text);
        EXPECT_EQ(MakeSettingsStore(places)->Read(kApplication, kSection, kValue), text);
    }
}

TEST(SettingsStoreOfThisPlatform, KeepsApplicationsSectionsAndValuesApart) {
    const test::TemporaryFolder folder;
    const auto store = MakeSettingsStore(folder.MakePlaces());
    store->Write(u"DAVO"_s, u"KPTYPE"_s, u"KPTYPEVAL"_s, u"knee"_s);
    store->Write(u"DAVO"_s, u"COMPORT"_s, u"COMPORTVAL"_s, u" 2"_s);
    EXPECT_EQ(store->Read(u"DAVO"_s, u"KPTYPE"_s, u"KPTYPEVAL"_s), u"knee"_s);
    EXPECT_EQ(store->Read(u"DAVO"_s, u"COMPORT"_s, u"COMPORTVAL"_s), u" 2"_s);
    EXPECT_EQ(store->Read(u"DAVO"_s, u"COMPORT"_s, u"KPTYPEVAL"_s), QString());
}

TEST(SettingsStoreOfThisPlatform, ALineThatCannotBeReadKeepsNoneFromBeingWritten) {
    const test::TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    ReplaceFile(places.configurationFolder + u"davo.ini"_s,
                "[IMPEDANCE]\nIMP\\IMPVAL=Y\nno value\n[DAVO]\nCOMPORT\\COMPORTVAL=3\nnor here\n");
    const auto store = MakeSettingsStore(places);
    const Settings settings = ReadSettings(*store, places).settings;
    if (settings.comPort != 3) GTEST_SKIP() << "the settings are not in that file";
    EXPECT_TRUE(settings.showImpedance);
    EXPECT_NO_THROW(WriteSettings(*store, settings));
    const Settings back = ReadSettings(*MakeSettingsStore(places), places).settings;
    EXPECT_EQ(back.comPort, 3);
    EXPECT_TRUE(back.showImpedance);
    EXPECT_EQ(back.dataPath, settings.dataPath);
}

TEST(SettingsStoreOfThisPlatform, WhatCannotBeWrittenIsReadBackUntilTheProgramEnds) {
    const test::TemporaryFolder folder;
    Places places = folder.MakePlaces();
    ReplaceFile(folder.Path("file"), "no folder");
    places.configurationFolder = folder.Path("file/davo/");
    const auto store = MakeSettingsStore(places);
    try {
        store->Write(u"DAVO"_s, u"PORTDEVICES"_s, u"COM1"_s, u"/dev/ttyUSB1"_s);
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), ErrorNumber::PathFileAccess);
    }
    EXPECT_EQ(store->Read(u"DAVO"_s, u"PORTDEVICES"_s, u"COM1"_s), u"/dev/ttyUSB1"_s);
}

TEST(SettingsStoreOfThisPlatform, NamesTheFirstLineThatItCannotRead) {
    const test::TemporaryFolder folder;
    const auto lineOf = [&](const char* name, const char* bytes) {
        Places places = folder.MakePlaces();
        places.configurationFolder = folder.Path(name);
        QDir().mkpath(places.configurationFolder);
        const QString file = places.configurationFolder + u"davo.ini"_s;
        ReplaceFile(file, bytes);
        const auto store = MakeSettingsStore(places);
        return store->UnreadableLine().replace(file, u"it"_s).toStdString();
    };
    MakeSettingsStore(folder.MakePlaces())->Write(kApplication, kSection, kValue, u"1"_s);
    if (!FileExists(folder.MakePlaces().configurationFolder + u"davo.ini"_s))
        GTEST_SKIP() << "the settings are not in a file";
    EXPECT_EQ(lineOf("a/", "no value\n"), "Line 1 of it");
    EXPECT_EQ(lineOf("b/", "[DAVO]\r\nA=1\r\n\r\n ; remark\r\nno value\r\nnor here\r\n"),
              "Line 5 of it");
    EXPECT_EQ(lineOf("c/", "A=1\n[DAVO\nA=1\n"), "Line 2 of it");
    EXPECT_EQ(lineOf("d/", "[DAVO]\nA=1\n; remark\n"), "");
    EXPECT_EQ(lineOf("e/", ""), "");
}

TEST(SettingsStoreOfThisPlatform, SurvivesARunAsAWhole) {
    const test::TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    const QString knee = QString::fromLatin1(kKneeIeee45);
    const Settings first = ReadSettings(*MakeSettingsStore(places), places).settings;
    WriteSettings(*MakeSettingsStore(places), {knee, 3, true, 0, 2, first.dataPath, {}});
    EXPECT_THAT(ReadSettings(*MakeSettingsStore(places), places).settings,
                testing::FieldsAre(knee, 3, true, 0, 2, first.dataPath, first.excelPath, QString(),
                                   QString()));
}

}  // namespace
}  // namespace davo
