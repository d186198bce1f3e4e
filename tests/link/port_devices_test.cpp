// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/port_devices.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "link/port_choice.h"
#include "link/port_list_linux.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/memory_settings_store.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

PresentPort Usb(const char* device) {
    return UsbAdapter(device, "", "", "");
}

TEST(PortChoice, TheNthUsbAdapterInNameOrder) {
    const std::vector<PresentPort> present = {Usb("/dev/ttyUSB10"), BuiltInPort("/dev/ttyS0"),
                                              Usb("/dev/ttyUSB2"), Usb("/dev/ttyACM0")};
    EXPECT_EQ(NthUsbAdapter(present, 1), u"/dev/ttyACM0"_s);
    EXPECT_EQ(NthUsbAdapter(present, 2), u"/dev/ttyUSB2"_s);
    EXPECT_EQ(NthUsbAdapter(present, 3), u"/dev/ttyUSB10"_s);
    EXPECT_EQ(NthUsbAdapter(present, 4), QString());
    EXPECT_EQ(NthUsbAdapter(present, 0), QString());
    EXPECT_EQ(NthUsbAdapter(present, kNoPortChosen), QString());
}

TEST(PortChoice, NeverABuiltInPort) {
    EXPECT_EQ(NthUsbAdapter({BuiltInPort("/dev/ttyS0"), BuiltInPort("/dev/ttyS1")}, 1), QString());
    EXPECT_EQ(NthUsbAdapter({}, 1), QString());
}

TEST(PortChoice, ASerialNumberIsReadFromTheInstanceOfTheDevice) {
    EXPECT_EQ(SerialNumberOfInstance(uR"(FTDIBUS\VID_0403+PID_6001+A10K4XYZA\0000)"_s),
              u"A10K4XYZ"_s);
    EXPECT_EQ(SerialNumberOfInstance(uR"(FTDIBUS\VID_0403+PID_6010+FT123B\0000)"_s), u"FT123B"_s)
        << "the other port of the same chip";
    EXPECT_EQ(SerialNumberOfInstance(uR"(USB\VID_067B&PID_23A3\CMA>B103Y23)"_s), u"CMA>B103Y23"_s);
}

TEST(PortChoice, WhatWindowsMadeUpOfTheSocketIsNoSerialNumber) {
    EXPECT_EQ(SerialNumberOfInstance(uR"(USB\VID_1A86&PID_7523\5&2A8D4F1&0&3)"_s), QString());
    EXPECT_EQ(SerialNumberOfInstance(uR"(FTDIBUS\VID_0403+PID_6001+5&2A8D4F1&0&3\0000)"_s),
              QString());
    EXPECT_EQ(SerialNumberOfInstance(u"USB"_s), QString());
    EXPECT_EQ(SerialNumberOfInstance(QString()), QString());
}

PresentPort Ftdi(const char* device, const char* serialNumber) {
    return UsbAdapter(device, "USB Serial Port", "FTDI", serialNumber);
}

TEST(PortChoice, AnAdapterThatMovedIsFoundByItsMakerAndSerialNumber) {
    const QString remembered =
        RememberedAdapter(u"COM5"_s, {Ftdi("COM5", "A1"), Ftdi("COM6", "B2")});
    EXPECT_EQ(remembered, u"COM5|FTDI|A1"_s);
    EXPECT_EQ(FindRemembered(remembered, {Ftdi("COM5", "A1")}), u"COM5"_s);
    EXPECT_EQ(FindRemembered(remembered, {Ftdi("COM6", "B2"), Ftdi("COM7", "A1")}), u"COM7"_s);
    EXPECT_EQ(FindRemembered(remembered, {Ftdi("COM5", "B2"), Ftdi("COM7", "A1")}), u"COM7"_s)
        << "another one has its name";
    EXPECT_EQ(RememberedAdapter(remembered, {Ftdi("COM7", "A1")}), remembered)
        << "given back as it was";
}

TEST(PortChoice, AnotherAdapterIsNeverTakenForARememberedOne) {
    const QString remembered = u"COM5|FTDI|A1"_s;
    EXPECT_EQ(FindRemembered(remembered, {}), u"COM5"_s) << "the name says what is missing";
    EXPECT_EQ(FindRemembered(remembered, {Ftdi("COM6", "B2")}), u"COM5"_s);
    EXPECT_EQ(FindRemembered(remembered, {Ftdi("COM5", "B2")}), QString());
    EXPECT_EQ(FindRemembered(remembered, {UsbAdapter("COM5", "Other", "Maker", "A1")}), QString());
    EXPECT_EQ(FindRemembered(remembered, {BuiltInPort("COM5")}), QString());
    EXPECT_EQ(FindRemembered(remembered, {Ftdi("COM7", "A1"), Ftdi("COM8", "A1")}), QString())
        << "two that give out the same number";
    EXPECT_EQ(FindRemembered(remembered, {Ftdi("COM5", "A1"), Ftdi("COM8", "A1")}), u"COM5"_s);
}

TEST(PortChoice, WithoutASerialNumberTheNameIsAllThatIsRemembered) {
    const std::vector<PresentPort> present = {UsbAdapter("COM5", "Clone", "Maker", ""),
                                              BuiltInPort("COM1")};
    EXPECT_EQ(RememberedAdapter(u"COM5"_s, present), u"COM5"_s);
    EXPECT_EQ(RememberedAdapter(u"COM1"_s, present), u"COM1"_s);
    EXPECT_EQ(RememberedAdapter(u"COM9"_s, present), u"COM9"_s);
    EXPECT_EQ(RememberedAdapter(QString(), present), QString());
    EXPECT_EQ(FindRemembered(u"COM5"_s, {UsbAdapter("COM7", "Clone", "Maker", "")}), u"COM5"_s);
    EXPECT_EQ(FindRemembered(u"COM5"_s, {Ftdi("COM5", "A1")}), u"COM5"_s);
}

// The kernel's folders: a built-in port, one that the driver lists although there is none, a
// console without a device, and two adapters.
class PortListTest : public testing::Test {
  protected:
    void Terminal(const char* name, const QString& device, const char* type) {
        const QDir folder(root.filePath(u"class/"_s + QString::fromLatin1(name)));
        folder.mkpath(u"."_s);
        if (!device.isEmpty()) {
            QDir().mkpath(root.filePath(device));
            QFile::link(root.filePath(device), folder.filePath(u"device"_s));
        }
        if (type != nullptr) Attribute(folder.filePath(u"type"_s), type);
    }
    static void Attribute(const QString& path, const char* text) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.write("\n");
    }

    QTemporaryDir root;
};

TEST_F(PortListTest, ReadsWhatTheKernelListsAndOpensNone) {
    Terminal("tty0", QString(), nullptr);
    Terminal("ttyS0", u"devices/pnp0/00:00"_s, "4");
    Terminal("ttyS1", u"devices/platform/serial8250"_s, "0");
    Terminal("ttyUSB1", u"devices/usb1/1-2/1-2:1.0/ttyUSB1"_s, nullptr);
    Terminal("ttyACM0", u"devices/usb1/1-3/1-3:1.0"_s, nullptr);
    const QString adapter = root.filePath(u"devices/usb1/1-2/"_s);
    Attribute(adapter + u"idVendor"_s, "0403");
    Attribute(adapter + u"product"_s, "Serial Adapter");
    Attribute(adapter + u"manufacturer"_s, "A Maker");
    Attribute(adapter + u"serial"_s, "A1B2");

    const auto ports = ListPorts(root.filePath(u"class"_s));
    ASSERT_EQ(ports.size(), 3U);
    EXPECT_EQ(ports[0].device, u"/dev/ttyACM0"_s);
    EXPECT_TRUE(ports[0].usb);
    EXPECT_EQ(ports[1].device, u"/dev/ttyS0"_s);
    EXPECT_FALSE(ports[1].usb);
    EXPECT_EQ(ports[2].device, u"/dev/ttyUSB1"_s);
    EXPECT_TRUE(ports[2].usb);
    EXPECT_EQ(ports[2].name, u"Serial Adapter"_s);
    EXPECT_EQ(ports[2].maker, u"A Maker"_s);
    EXPECT_EQ(ports[2].serialNumber, u"A1B2"_s);
}

TEST_F(PortListTest, WithoutTheFolderThereAreNone) {
    EXPECT_TRUE(ListPorts(root.filePath(u"missing"_s)).empty());
}

TEST(PortDevicesTest, AnAssignedDeviceIsKeptInTheStoreAndTakenBack) {
    MemorySettingsStore store;
    const auto devices = MakePortDevices(store);
    EXPECT_TRUE(devices->NeedsAssignment());
    const QString before = devices->DeviceOf(2);
    devices->Assign(2, u"/dev/pts/7"_s);
    EXPECT_EQ(devices->DeviceOf(2), u"/dev/pts/7"_s);
    EXPECT_EQ(store.texts.at(u"DAVO/PORTDEVICES/COM2"_s), u"/dev/pts/7"_s);
    EXPECT_EQ(MakePortDevices(store)->DeviceOf(2), u"/dev/pts/7"_s);
    devices->Assign(2, QString());
    EXPECT_EQ(devices->DeviceOf(2), before);
}

TEST(PortDevicesTest, ADeviceThatIsNotListedIsPresentWhenItIsThere) {
    MemorySettingsStore store;
    const QTemporaryDir folder;
    const QString link = folder.filePath(u"davo"_s);
    EXPECT_FALSE(MakePortDevices(store)->IsPresent(link));
    ASSERT_TRUE(QFile::link(u"/dev/null"_s, link));
    EXPECT_TRUE(MakePortDevices(store)->IsPresent(link));
    EXPECT_FALSE(MakePortDevices(store)->IsPresent(QString()));
}

TEST(PortDevicesTest, NoBuiltInPortUnlessAssigned) {
    MemorySettingsStore store;
    const auto devices = MakePortDevices(store);
    for (std::int16_t port = -1; port <= 4; ++port) {
        EXPECT_FALSE(devices->DeviceOf(port).startsWith(u"/dev/ttyS"_s));
    }
    devices->Assign(1, u"/dev/ttyS0"_s);
    EXPECT_EQ(devices->DeviceOf(1), u"/dev/ttyS0"_s);
}

}  // namespace
}  // namespace davo::test
