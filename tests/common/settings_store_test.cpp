// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/settings_store.h"

#include <gtest/gtest.h>

#include "common/files.h"
#include "common/text.h"
#include "tests/support/temporary_folder.h"

namespace davo {
namespace {

const QString kApplication = QStringLiteral("DATAPATH");
const QString kSection = QStringLiteral("PATH");
const QString kValue = QStringLiteral("PATHVAL");

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
         {QStringLiteral(" 1"), QStringLiteral("-99"), QStringLiteral("-1 -1"),
          QStringLiteral("a,b"), QStringLiteral(", "),
          QStringLiteral(R"(C:\Prüfung, \x41 "A"\Shots_Data\)"), QStringLiteral("@Invalid()"),
          QStringLiteral("@ByteArray(x)"), QStringLiteral("%41;=#["),
          QStringLiteral(" blanks at both ends  "), QString(), QStringLiteral("true"),
          QStringLiteral("line\r\nend"), FromPage(allBytes)}) {
        MakeSettingsStore(places)->Write(kApplication, kSection, kValue, text);
        EXPECT_EQ(MakeSettingsStore(places)->Read(kApplication, kSection, kValue), text);
    }
}

TEST(SettingsStoreOfThisPlatform, KeepsApplicationsSectionsAndValuesApart) {
    const test::TemporaryFolder folder;
    const auto store = MakeSettingsStore(folder.MakePlaces());
    store->Write(QStringLiteral("DAVO"), QStringLiteral("KPTYPE"), QStringLiteral("KPTYPEVAL"),
                 QStringLiteral("knee"));
    store->Write(QStringLiteral("DAVO"), QStringLiteral("COMPORT"), QStringLiteral("COMPORTVAL"),
                 QStringLiteral(" 2"));
    EXPECT_EQ(
        store->Read(QStringLiteral("DAVO"), QStringLiteral("KPTYPE"), QStringLiteral("KPTYPEVAL")),
        QStringLiteral("knee"));
    EXPECT_EQ(store->Read(QStringLiteral("DAVO"), QStringLiteral("COMPORT"),
                          QStringLiteral("COMPORTVAL")),
              QStringLiteral(" 2"));
    EXPECT_EQ(
        store->Read(QStringLiteral("DAVO"), QStringLiteral("COMPORT"), QStringLiteral("KPTYPEVAL")),
        QString());
}

TEST(SettingsStoreOfThisPlatform, SurvivesARunAsAWhole) {
    const test::TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    Settings settings = ReadSettings(*MakeSettingsStore(places), places).settings;
    settings.kneepointType = QString::fromLatin1(kKneeIeee45);
    settings.comPort = 3;
    settings.showImpedance = true;
    settings.sortOrder = 0;
    settings.sortDisplay = 2;
    const QString dataPath = settings.dataPath;
    WriteSettings(*MakeSettingsStore(places), settings);
    const Settings back = ReadSettings(*MakeSettingsStore(places), places).settings;
    EXPECT_EQ(back.kneepointType, settings.kneepointType);
    EXPECT_EQ(back.comPort, 3);
    EXPECT_TRUE(back.showImpedance);
    EXPECT_EQ(back.sortOrder, 0);
    EXPECT_EQ(back.sortDisplay, 2);
    EXPECT_EQ(back.dataPath, dataPath);
    EXPECT_EQ(back.excelPath, settings.excelPath);
}

}  // namespace
}  // namespace davo
