// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/settings.h"

#include <QDir>

#include "common/files.h"
#include "common/run_time_error.h"
#include "tests/support/memory_settings_store.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using testing::FieldsAre;

class StoredSettings : public testing::Test {
  protected:
    static QString Key(const char* key) { return QString::fromLatin1(key); }

    Settings ReadWith(const char* key, const QString& text) {
        store_.texts[Key(key)] = text;
        return Read();
    }

    // Of a store without a damaged value.
    Settings Read() {
        const SettingsRead read = ReadSettings(store_, places_);
        EXPECT_TRUE(read.errors.empty());
        return read.settings;
    }

    QString KneepointOf(const char* text) {
        return ReadWith("DAVO/KPTYPE/KPTYPEVAL", QString::fromUtf8(text)).kneepointType;
    }

    int PortOf(const char* text) {
        return ReadWith("DAVO/COMPORT/COMPORTVAL", QString::fromUtf8(text)).comPort;
    }

    std::pair<int, int> SortOf(const char* text) {
        const Settings settings = ReadWith("SORTVALUES/SORT/SORTVAL", QString::fromUtf8(text));
        return {settings.sortOrder, settings.sortDisplay};
    }

    std::string PortError(const char* text) {
        store_.texts[Key("DAVO/COMPORT/COMPORTVAL")] = QString::fromUtf8(text);
        const SettingsRead read = ReadSettings(store_, places_);
        EXPECT_EQ(read.settings.comPort, 1) << text;
        return read.errors.size() == 1 ? read.errors.front().what() : std::string();
    }

    test::TemporaryFolder folder_;
    Places places_ = folder_.MakePlaces();
    test::MemorySettingsStore store_;
};

TEST_F(StoredSettings, FirstRunTakesTheDefaultsAndMakesBothFolders) {
    const Settings settings = Read();
    EXPECT_THAT(settings, FieldsAre(u"ASA 10/50 Marker"_s, 1, false, -1, -1,
                                    places_.applicationFolder + ShownPath(u"Shots_Data/"_s),
                                    places_.applicationFolder + ShownPath(u"Shots_Excel/"_s),
                                    QString(), QString()));
    EXPECT_TRUE(FolderExists(settings.dataPath));
    EXPECT_TRUE(FolderExists(settings.excelPath));
    EXPECT_TRUE(store_.written.empty());
}

TEST_F(StoredSettings, FirstRunKeepsAFolderThatIsThere) {
    const QString file = places_.applicationFolder + u"Shots_Data/T1.txt"_s;
    CreateFolder(places_.applicationFolder + u"Shots_Data"_s);
    ReplaceFile(file, "kept");
    const Settings settings = Read();
    EXPECT_EQ(ReadWholeFile(file), "kept");
    EXPECT_TRUE(FolderExists(settings.excelPath));
}

TEST_F(StoredSettings, FirstRunMakesTheApplicationFolderToo) {
    places_.applicationFolder = folder_.Path("Documents/DAVO/");
    EXPECT_TRUE(FolderExists(Read().dataPath));
}

TEST_F(StoredSettings, FirstRunGoesOnWhereAFileTakesAFoldersName) {
    ReplaceFile(places_.applicationFolder + u"Shots_Data"_s, "a file");
    const SettingsRead read = ReadSettings(store_, places_);
    ASSERT_EQ(read.errors.size(), 1U);
    EXPECT_EQ(read.settings.dataPath, places_.applicationFolder + ShownPath(u"Shots_Data/"_s));
    EXPECT_TRUE(FolderExists(read.settings.excelPath)) << "the other folder is made all the same";
}

TEST_F(StoredSettings, KneepointTypeHasOlderSpellings) {
    const QString asa = u"ASA 10/50 Marker"_s;
    const QString ieee30 = u"IEEE 30 Degree Marker"_s;
    const QString ieee45 = u"IEEE 45 Degree Marker"_s;
    EXPECT_EQ(KneepointOf(""), asa);
    EXPECT_EQ(KneepointOf("ASA 10/50 Marker"), asa);
    EXPECT_EQ(KneepointOf("ASA 10% V -->50% I Degree Mode"), asa);
    EXPECT_EQ(KneepointOf("IEEE 30 Degree Mode"), ieee30);
    EXPECT_EQ(KneepointOf("IEEE 30 Degree Marker"), ieee30);
    EXPECT_EQ(KneepointOf("IEEE 45 Degree Mode"), ieee45);
    EXPECT_EQ(KneepointOf("IEEE 45 Degree Marker"), ieee45);
}

TEST_F(StoredSettings, KneepointTypeKeepsAnyOtherText) {
    for (const char* text : {"ieee 30 degree marker", " IEEE 45 Degree Marker", "ASA 10/50 Marker ",
                             "ASA 10% V --> 50% I Degree Mode", "x", " "}) {
        EXPECT_EQ(KneepointOf(text), QString::fromLatin1(text));
    }
}

TEST_F(StoredSettings, ComPortIsTheTextsNumber) {
    EXPECT_EQ(PortOf(""), 1);
    EXPECT_EQ(PortOf(" 1"), 1);
    EXPECT_EQ(PortOf("   4"), 4);
    EXPECT_EQ(PortOf("2"), 2);
    EXPECT_EQ(PortOf("-99"), -99);
    EXPECT_EQ(PortOf("2.4"), 2);
    EXPECT_EQ(PortOf("2.6"), 3);
    EXPECT_EQ(PortOf("0"), 0);
    EXPECT_EQ(PortOf(" 300"), 300);
    EXPECT_EQ(PortOf("32767"), 32767);
}

TEST_F(StoredSettings, ComPortMustBeASixteenBitNumber) {
    EXPECT_EQ(PortError("40000"), "Run-time error '6': Overflow");
    EXPECT_EQ(PortError("-32769"), "Run-time error '6': Overflow");
    EXPECT_EQ(PortError("COM1"), "Run-time error '13': Type mismatch: COM1");
    EXPECT_EQ(PortError(" "), "Run-time error '13': Type mismatch:  ");
}

TEST_F(StoredSettings, ADamagedValueDoesNotKeepTheOthersFromBeingRead) {
    store_.texts[Key("DAVO/KPTYPE/KPTYPEVAL")] = u"IEEE 45 Degree Marker"_s;
    store_.texts[Key("DAVO/COMPORT/COMPORTVAL")] = u"abc"_s;
    store_.texts[Key("IMPEDANCE/IMP/IMPVAL")] = u"Y"_s;
    store_.texts[Key("SORTVALUES/SORT/SORTVAL")] = u"1 3"_s;
    store_.texts[Key("DATAPATH/PATH/PATHVAL")] = ShownPath(u"/d/Shots_Data/"_s);
    const SettingsRead read = ReadSettings(store_, places_);
    ASSERT_EQ(read.errors.size(), 1U);
    EXPECT_EQ(read.errors.front().Number(), ErrorNumber::TypeMismatch);
    EXPECT_THAT(read.settings,
                FieldsAre(u"IEEE 45 Degree Marker"_s, 1, true, 1, 3, ShownPath(u"/d/Shots_Data/"_s),
                          ShownPath(u"/d/Shots_Excel/"_s), QString(), QString()));
}

TEST_F(StoredSettings, LimitsOfComparisonsAreKeptOnceTheyWereTyped) {
    SettingsRead read = ReadSettings(store_, places_);
    WriteSettings(store_, read.settings);
    EXPECT_FALSE(store_.texts.contains(Key("COMPARE/VOLTAGE/LIMIT")));
    read.settings.curveLimit = u"7,5"_s;
    read.settings.ratioLimit = u"0.25"_s;
    WriteSettings(store_, read.settings);
    EXPECT_EQ(ReadSettings(store_, places_).settings.curveLimit, u"7,5"_s);
    EXPECT_EQ(ReadSettings(store_, places_).settings.ratioLimit, u"0.25"_s);
    read.settings.curveLimit.clear();
    WriteSettings(store_, read.settings);
    EXPECT_EQ(ReadSettings(store_, places_).settings.curveLimit, u""_s) << "taken away again";
}

TEST_F(StoredSettings, ImpedanceIsShownForExactlyY) {
    for (const char* text : {"", "N", "y", "Y ", " Y", "Yes", "1", "-1"}) {
        EXPECT_FALSE(ReadWith("IMPEDANCE/IMP/IMPVAL", QString::fromLatin1(text)).showImpedance)
            << text;
    }
    EXPECT_TRUE(ReadWith("IMPEDANCE/IMP/IMPVAL", u"Y"_s).showImpedance);
}

TEST_F(StoredSettings, SortValuesAreTheFirstAndTheLastCharacter) {
    EXPECT_EQ(SortOf(""), std::pair(-1, -1));
    EXPECT_EQ(SortOf("1 3"), std::pair(1, 3));
    EXPECT_EQ(SortOf("0 2"), std::pair(0, 2));
    EXPECT_EQ(SortOf("2 0"), std::pair(2, 0));
    EXPECT_EQ(SortOf("10 1"), std::pair(1, 1));
    EXPECT_EQ(SortOf("-1 -1"), std::pair(0, 1));
    EXPECT_EQ(SortOf("7"), std::pair(7, 7));
    EXPECT_EQ(SortOf(" "), std::pair(0, 0));
    EXPECT_EQ(SortOf("a\u00E4"), std::pair(0, 0));
}

TEST_F(StoredSettings, StoredDataPathIsKeptAndCreatesNothing) {
    const QString path = folder_.Path("elsewhere/Shots_Data/");
    const Settings settings = ReadWith("DATAPATH/PATH/PATHVAL", path);
    EXPECT_EQ(settings.dataPath, path);
    EXPECT_EQ(settings.excelPath, folder_.Path("elsewhere/Shots_Excel/"));
    EXPECT_FALSE(FolderExists(folder_.Path("elsewhere")));
    EXPECT_TRUE(QDir(places_.applicationFolder).isEmpty());
}

TEST_F(StoredSettings, ADataPathThatIsAFileOrLacksItsEndIsSaid) {
    const QString file = folder_.Path("Shots_Data");
    ReplaceFile(file, "a file");
    const std::pair<QString, QString> cases[] = {
        {file, file + ShownPath(u"/"_s)},
        {folder_.Path("d/Shots_Data"), folder_.Path("d/Shots_Data/")},
        {folder_.Path("d"), folder_.Path("d/")},
        {folder_.Path("d/"), folder_.Path("d/")}};
    for (const auto& [stored, used] : cases) {
        store_.texts[Key("DATAPATH/PATH/PATHVAL")] = stored;
        const SettingsRead read = ReadSettings(store_, places_);
        ASSERT_EQ(read.errors.size(), 1U) << stored.toStdString();
        EXPECT_THAT(read.errors.front().what(), testing::HasSubstr(stored.toStdString()));
        EXPECT_EQ(read.settings.dataPath, used);
    }
}

TEST_F(StoredSettings, OneThatCannotBeWrittenDoesNotKeepTheOthersFromIt) {
    struct Failing : test::MemorySettingsStore {
        void Write(const QString& application, const QString& section, const QString& value,
                   const QString& text) override {
            if (section == u"COMPORT"_s) throw RunTimeError(ErrorNumber::PathFileAccess, "port");
            MemorySettingsStore::Write(application, section, value, text);
        }
    } failing;
    EXPECT_THROW(WriteSettings(failing, {}), RunTimeError);
    EXPECT_EQ(failing.written.size(), 4U);
}

TEST(ExcelPathOf, TakesThePartBeforeTheFirstMarker) {
    const QString marker = FolderText(R"(\Shots_Data\)");
    const QString excel = FolderText(R"(\Shots_Excel\)");
    const QString root = FolderText(R"(\a b)");
    EXPECT_EQ(ExcelPathOf(root + marker), root + excel);
    EXPECT_EQ(ExcelPathOf(root + marker + u"x"_s + marker), root + excel);
    EXPECT_EQ(ExcelPathOf(marker), excel);
}

TEST(ExcelPathOf, LiesInAPathWithoutTheMarker) {
    const QString excel = FolderText(R"(\Shots_Excel\)");
    EXPECT_EQ(ExcelPathOf(FolderText(R"(\data\)")), FolderText(R"(\data)") + excel);
    EXPECT_EQ(ExcelPathOf(FolderText(R"(\data)")), FolderText(R"(\data)") + excel);
    EXPECT_EQ(ExcelPathOf(FolderText(R"(\shots_data\)")), FolderText(R"(\shots_data)") + excel);
}

TEST_F(StoredSettings, AreWrittenInTheOrderOfTheirKeys) {
    Settings settings;
    settings.dataPath = ShownPath(u"/d/Shots_Data/"_s);
    WriteSettings(store_, settings);
    EXPECT_THAT(store_.written,
                ElementsAre(Key("DAVO/KPTYPE/KPTYPEVAL"), Key("DAVO/COMPORT/COMPORTVAL"),
                            Key("IMPEDANCE/IMP/IMPVAL"), Key("SORTVALUES/SORT/SORTVAL"),
                            Key("DATAPATH/PATH/PATHVAL")));
    EXPECT_EQ(store_.texts[Key("DAVO/KPTYPE/KPTYPEVAL")], u"ASA 10/50 Marker"_s);
    EXPECT_EQ(store_.texts[Key("DAVO/COMPORT/COMPORTVAL")], u" 1"_s);
    EXPECT_EQ(store_.texts[Key("IMPEDANCE/IMP/IMPVAL")], u"N"_s);
    EXPECT_EQ(store_.texts[Key("SORTVALUES/SORT/SORTVAL")], u"-1 -1"_s);
    EXPECT_EQ(store_.texts[Key("DATAPATH/PATH/PATHVAL")], ShownPath(u"/d/Shots_Data/"_s));
}

TEST_F(StoredSettings, AreWrittenAsTheyStand) {
    const QString unknown = u" an unknown text "_s;
    const QString dataPath = ShownPath(u"/d/Shots_Data/"_s);
    WriteSettings(store_, {unknown, kNoPortChosen, true, 1, 3, dataPath, {}});
    EXPECT_EQ(store_.texts[Key("DAVO/KPTYPE/KPTYPEVAL")], unknown);
    EXPECT_EQ(store_.texts[Key("DAVO/COMPORT/COMPORTVAL")], u"-99"_s);
    EXPECT_EQ(store_.texts[Key("IMPEDANCE/IMP/IMPVAL")], u"Y"_s);
    EXPECT_EQ(store_.texts[Key("SORTVALUES/SORT/SORTVAL")], u"1 3"_s);
    EXPECT_THAT(Read(), FieldsAre(unknown, kNoPortChosen, true, 1, 3, dataPath,
                                  ShownPath(u"/d/Shots_Excel/"_s), QString(), QString()));
}

// The default pair comes back as 0 and 1: one character each is read.
TEST_F(StoredSettings, DefaultSortValuesDoNotSurviveARun) {
    WriteSettings(store_, Read());
    const Settings second = Read();
    EXPECT_EQ(second.sortOrder, 0);
    EXPECT_EQ(second.sortDisplay, 1);
}

}  // namespace
}  // namespace davo
