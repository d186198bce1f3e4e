// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/port_devices.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <map>

#include "link/port_choice.h"
#include "link/port_list_linux.h"

namespace davo::test {
namespace {

class MapStore : public SettingsStore {
  public:
    QString Read(const QString& application, const QString& section,
                 const QString& value) const override {
        const auto found = texts.find(Key(application, section, value));
        return found == texts.end() ? QString() : found->second;
    }
    void Write(const QString& application, const QString& section, const QString& value,
               const QString& text) override {
        texts[Key(application, section, value)] = text;
    }
    static QString Key(const QString& application, const QString& section, const QString& value) {
        return application + QLatin1Char('/') + section + QLatin1Char('/') + value;
    }
    std::map<QString, QString> texts;
};

PresentPort Usb(const char* device) {
    PresentPort port;
    port.device = QString::fromLatin1(device);
    port.usb = true;
    return port;
}

PresentPort BuiltIn(const char* device) {
    PresentPort port = Usb(device);
    port.usb = false;
    return port;
}

TEST(PortChoice, TheNthUsbAdapterInNameOrder) {
    const std::vector<PresentPort> present = {Usb("/dev/ttyUSB10"), BuiltIn("/dev/ttyS0"),
                                              Usb("/dev/ttyUSB2"), Usb("/dev/ttyACM0")};
    EXPECT_EQ(NthUsbAdapter(present, 1), QStringLiteral("/dev/ttyACM0"));
    EXPECT_EQ(NthUsbAdapter(present, 2), QStringLiteral("/dev/ttyUSB2"));
    EXPECT_EQ(NthUsbAdapter(present, 3), QStringLiteral("/dev/ttyUSB10"));
    EXPECT_EQ(NthUsbAdapter(present, 4), QString());
    EXPECT_EQ(NthUsbAdapter(present, 0), QString());
    EXPECT_EQ(NthUsbAdapter(present, kNoPortChosen), QString());
}

TEST(PortChoice, NeverABuiltInPort) {
    EXPECT_EQ(NthUsbAdapter({BuiltIn("/dev/ttyS0"), BuiltIn("/dev/ttyS1")}, 1), QString());
    EXPECT_EQ(NthUsbAdapter({}, 1), QString());
}

// The kernel's folders: a built-in port, one that the driver lists although there is none, a
// console without a device, and two adapters.
class PortListTest : public testing::Test {
  protected:
    void Terminal(const char* name, const QString& device, const char* type) {
        const QDir folder(root.filePath(QStringLiteral("class/") + QString::fromLatin1(name)));
        folder.mkpath(QStringLiteral("."));
        if (!device.isEmpty()) {
            QDir().mkpath(root.filePath(device));
            QFile::link(root.filePath(device), folder.filePath(QStringLiteral("device")));
        }
        if (type != nullptr) Attribute(folder.filePath(QStringLiteral("type")), type);
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
    Terminal("ttyS0", QStringLiteral("devices/pnp0/00:00"), "4");
    Terminal("ttyS1", QStringLiteral("devices/platform/serial8250"), "0");
    Terminal("ttyUSB1", QStringLiteral("devices/usb1/1-2/1-2:1.0/ttyUSB1"), nullptr);
    Terminal("ttyACM0", QStringLiteral("devices/usb1/1-3/1-3:1.0"), nullptr);
    const QString adapter = root.filePath(QStringLiteral("devices/usb1/1-2/"));
    Attribute(adapter + QStringLiteral("idVendor"), "0403");
    Attribute(adapter + QStringLiteral("product"), "Serial Adapter");
    Attribute(adapter + QStringLiteral("manufacturer"), "A Maker");
    Attribute(adapter + QStringLiteral("serial"), "A1B2");

    const auto ports = ListPorts(root.filePath(QStringLiteral("class")));
    ASSERT_EQ(ports.size(), 3U);
    EXPECT_EQ(ports[0].device, QStringLiteral("/dev/ttyACM0"));
    EXPECT_TRUE(ports[0].usb);
    EXPECT_EQ(ports[1].device, QStringLiteral("/dev/ttyS0"));
    EXPECT_FALSE(ports[1].usb);
    EXPECT_EQ(ports[2].device, QStringLiteral("/dev/ttyUSB1"));
    EXPECT_TRUE(ports[2].usb);
    EXPECT_EQ(ports[2].name, QStringLiteral("Serial Adapter"));
    EXPECT_EQ(ports[2].maker, QStringLiteral("A Maker"));
    EXPECT_EQ(ports[2].serialNumber, QStringLiteral("A1B2"));
}

TEST_F(PortListTest, WithoutTheFolderThereAreNone) {
    EXPECT_TRUE(ListPorts(root.filePath(QStringLiteral("missing"))).empty());
}

TEST(PortDevicesTest, AnAssignedDeviceIsKeptInTheStoreAndTakenBack) {
    MapStore store;
    const auto devices = MakePortDevices(store);
    EXPECT_TRUE(devices->NeedsAssignment());
    const QString before = devices->DeviceOf(2);
    devices->Assign(2, QStringLiteral("/dev/pts/7"));
    EXPECT_EQ(devices->DeviceOf(2), QStringLiteral("/dev/pts/7"));
    EXPECT_EQ(store.texts.at(QStringLiteral("DAVO/PORTDEVICES/COM2")),
              QStringLiteral("/dev/pts/7"));
    EXPECT_EQ(MakePortDevices(store)->DeviceOf(2), QStringLiteral("/dev/pts/7"));
    devices->Assign(2, QString());
    EXPECT_EQ(devices->DeviceOf(2), before);
}

TEST(PortDevicesTest, NoBuiltInPortUnlessAssigned) {
    MapStore store;
    const auto devices = MakePortDevices(store);
    for (std::int16_t port = -1; port <= 4; ++port) {
        EXPECT_FALSE(devices->DeviceOf(port).startsWith(QStringLiteral("/dev/ttyS")));
    }
    devices->Assign(1, QStringLiteral("/dev/ttyS0"));
    EXPECT_EQ(devices->DeviceOf(1), QStringLiteral("/dev/ttyS0"));
}

}  // namespace
}  // namespace davo::test
