// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/port_devices.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <QRegularExpression>
#include <array>

#include "tests/support/memory_settings_store.h"

namespace davo::test {
namespace {

TEST(WindowsPortDevices, TheNumbersAreThePortsOfThatNameUntilTheyAreGivenOthers) {
    MemorySettingsStore store;
    const auto devices = MakePortDevices(store);
    EXPECT_FALSE(devices->NeedsAssignment());
    EXPECT_EQ(devices->DeviceOf(1), QStringLiteral("COM1"));
    EXPECT_EQ(devices->DeviceOf(4), QStringLiteral("COM4"));
    EXPECT_EQ(devices->DeviceOf(0), QString());
    EXPECT_EQ(devices->DeviceOf(-99), QString());
    devices->Assign(1, QStringLiteral("COM3"));
    EXPECT_EQ(devices->DeviceOf(1), QStringLiteral("COM3"));
    EXPECT_EQ(MakePortDevices(store)->DeviceOf(1), QStringLiteral("COM3"));
    EXPECT_EQ(devices->DeviceOf(2), QStringLiteral("COM2"));
    devices->Assign(1, QString());
    EXPECT_EQ(devices->DeviceOf(1), QStringLiteral("COM1"));
    EXPECT_EQ(devices->Assigned(1), QString());
    devices->Assign(1, QStringLiteral("COM119|FTDI|A1"));
    EXPECT_EQ(devices->Assigned(1), QStringLiteral("COM119|FTDI|A1"));
    EXPECT_EQ(devices->DeviceOf(1), QStringLiteral("COM119")) << "not plugged in";
}

// Ports that a driver has listed: values of the key where all drivers list theirs.
class ListedPorts : public testing::Test {
  protected:
    ListedPorts() {
        ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, nullptr,
                          REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key_, nullptr);
        for (const wchar_t* name : kNames) {
            const std::wstring value = std::wstring(L"\\Device\\Davo") + name;
            ::RegSetValueExW(key_, value.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(name),
                             static_cast<DWORD>((wcslen(name) + 1) * sizeof(wchar_t)));
        }
    }
    ~ListedPorts() override {
        for (const wchar_t* name : kNames)
            ::RegDeleteValueW(key_, (std::wstring(L"\\Device\\Davo") + name).c_str());
        ::RegCloseKey(key_);
    }
    static constexpr std::array<const wchar_t*, 3> kNames = {L"COM110", L"COM102", L"COM111"};
    HKEY key_ = nullptr;
};

TEST_F(ListedPorts, AreThereInTheOrderOfTheirNumbers) {
    MemorySettingsStore store;
    std::vector<int> numbers;
    for (const PresentPort& port : MakePortDevices(store)->Present()) {
        ASSERT_TRUE(port.device.startsWith(QStringLiteral("COM"))) << port.device.toStdString();
        numbers.push_back(port.device.mid(3).toInt());
    }
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    for (const int number : {102, 110, 111})
        EXPECT_EQ(std::count(numbers.begin(), numbers.end(), number), 1) << number;
    EXPECT_TRUE(MakePortDevices(store)->IsPresent(QStringLiteral("COM110")));
    EXPECT_FALSE(MakePortDevices(store)->IsPresent(QStringLiteral("COM113")));
}

}  // namespace
}  // namespace davo::test
