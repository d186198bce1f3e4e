// SPDX-License-Identifier: GPL-3.0-or-later
// How the settings are in the registry, looked at and written past the store. The tests run with a
// registry of their own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "common/settings_store.h"
#include "tests/support/temporary_folder.h"

namespace davo {
namespace {

using testing::FieldsAre;

struct Value {
    const wchar_t* key;
    const wchar_t* name;
};

constexpr Value kKneepoint = {LR"(Software\VB and VBA Program Settings\DAVO\KPTYPE)", L"KPTYPEVAL"};
constexpr Value kPort = {LR"(Software\VB and VBA Program Settings\DAVO\COMPORT)", L"COMPORTVAL"};
constexpr Value kImpedance = {LR"(Software\VB and VBA Program Settings\IMPEDANCE\IMP)", L"IMPVAL"};
constexpr Value kSort = {LR"(Software\VB and VBA Program Settings\SORTVALUES\SORT)", L"SORTVAL"};
constexpr Value kPath = {LR"(Software\VB and VBA Program Settings\DATAPATH\PATH)", L"PATHVAL"};

void Put(const Value& value, DWORD type, const void* bytes, std::size_t size) {
    ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, value.key, value.name, type, bytes,
                                static_cast<DWORD>(size)),
              ERROR_SUCCESS);
}

void Put(const Value& value, const std::wstring& text) {
    Put(value, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

struct Stored {
    DWORD type = REG_NONE;
    std::wstring text;  // with the null that ends it
};

Stored Get(const Value& value) {
    Stored stored;
    DWORD size = 2000;
    stored.text.resize(size / sizeof(wchar_t));
    const LSTATUS status = ::RegGetValueW(HKEY_CURRENT_USER, value.key, value.name, RRF_RT_ANY,
                                          &stored.type, stored.text.data(), &size);
    EXPECT_EQ(status, ERROR_SUCCESS);
    stored.text.resize(size / sizeof(wchar_t));
    return stored;
}

class Registry : public testing::Test {
  protected:
    Registry() { Clear(); }
    ~Registry() override { Clear(); }
    static void Clear() {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, LR"(Software\VB and VBA Program Settings)");
    }
    Settings Read() const { return ReadSettings(*MakeSettingsStore(places), places).settings; }

    test::TemporaryFolder folder;
    Places places = folder.MakePlaces();
};

TEST_F(Registry, HoldsTheFiveValuesAsTexts) {
    Settings settings;
    settings.comPort = 2;
    settings.sortOrder = -1;
    settings.sortDisplay = -1;
    settings.dataPath = QStringLiteral(R"(\\server\share\Größe Ω\Shots_Data\)");
    WriteSettings(*MakeSettingsStore(places), settings);
    const auto expect = [](const Value& value, std::wstring text) {
        const Stored stored = Get(value);
        EXPECT_EQ(stored.type, static_cast<DWORD>(REG_SZ));
        text += L'\0';
        EXPECT_TRUE(stored.text == text) << QString::fromStdWString(stored.text).toStdString();
    };
    expect(kKneepoint, L"ASA 10/50 Marker");
    expect(kPort, L" 2");
    expect(kImpedance, L"N");
    expect(kSort, L"-1 -1");
    expect(kPath, L"\\\\server\\share\\Gr\u00F6\u00DFe \u03A9\\Shots_Data\\");
}

TEST_F(Registry, HasNoOtherValueOfTheProgram) {
    WriteSettings(*MakeSettingsStore(places), Settings());
    HKEY root = nullptr;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, LR"(Software\VB and VBA Program Settings)", 0,
                              KEY_READ, &root),
              ERROR_SUCCESS);
    DWORD keys = 0;
    DWORD values = 0;
    ::RegQueryInfoKeyW(root, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr,
                       nullptr, nullptr, nullptr);
    ::RegCloseKey(root);
    EXPECT_EQ(keys, 4U);
    EXPECT_EQ(values, 0U);
}

TEST_F(Registry, GivesTheSettingsThatExist) {
    Put(kKneepoint, L"IEEE 30 Degree Mode");
    Put(kPort, L" 3");
    Put(kImpedance, L"Y");
    Put(kSort, L"1 3");
    Put(kPath, LR"(D:\Tests\Shots_Data\)");
    EXPECT_THAT(Read(),
                FieldsAre(QStringLiteral("IEEE 30 Degree Marker"), 3, true, 1, 3,
                          QStringLiteral(R"(D:\Tests\Shots_Data\)"),
                          QStringLiteral(R"(D:\Tests\Shots_Excel\)"), QString(), QString()));
}

TEST_F(Registry, GivesOddTextsAsTheyStand) {
    Put(kKneepoint, L"ieee 30 degree marker");
    Put(kPort, L"  -99");
    Put(kImpedance, L"y");
    Put(kSort, L"-1 -1");
    Put(kPath, LR"(%SystemRoot%\100 %\Shots_Data\)");
    EXPECT_THAT(Read(), FieldsAre(QStringLiteral("ieee 30 degree marker"), -99, false, 0, 1,
                                  QStringLiteral(R"(%SystemRoot%\100 %\Shots_Data\)"),
                                  QStringLiteral(R"(%SystemRoot%\100 %\Shots_Excel\)"), QString(),
                                  QString()));
}

TEST_F(Registry, CountsWhatIsNoTextAsMissing) {
    const DWORD number = 3;
    Put(kPort, REG_DWORD, &number, sizeof number);
    Put(kImpedance, REG_BINARY, L"Y", 2 * sizeof(wchar_t));
    Put(kSort, REG_NONE, L"1 3", 4 * sizeof(wchar_t));
    const Settings settings = Read();
    EXPECT_EQ(settings.comPort, 1);
    EXPECT_FALSE(settings.showImpedance);
    EXPECT_EQ(settings.sortOrder, -1);
    EXPECT_EQ(settings.sortDisplay, -1);
}

TEST_F(Registry, GivesATextThatIsNotEndedOrEmpty) {
    Put(kPort, REG_SZ, L" 42", 3 * sizeof(wchar_t));
    Put(kSort, REG_SZ, L"", 0);
    const Settings settings = Read();
    EXPECT_EQ(settings.comPort, 42);
    EXPECT_EQ(settings.sortOrder, -1);
}

TEST_F(Registry, GetsTextsInPlaceOfOtherKinds) {
    const DWORD number = 3;
    Put(kPort, REG_DWORD, &number, sizeof number);
    WriteSettings(*MakeSettingsStore(places), Settings());
    EXPECT_EQ(Get(kPort).type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(Read().comPort, 1);
}

}  // namespace
}  // namespace davo
