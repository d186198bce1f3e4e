// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>
#include <QStringList>
#include <QTreeWidget>
#include <memory>
#include <string>
#include <vector>

#include "app/frmConfig.h"
#include "tests/support/controls.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/scripted_link.h"

namespace davo::test {

inline const QString kUsb0 = u"/dev/ttyUSB0"_s;
inline const QString kUsb1 = u"/dev/ttyUSB1"_s;
inline const QString kBuiltIn = u"/dev/ttyS0"_s;

// "Configure System" on a scripted line, with two adapters and a built-in port in the list.
class ConfigureSystem : public ::testing::Test, public ScriptedLine, public Controls {
  protected:
    ConfigureSystem() {
        devices.present = {UsbAdapter("/dev/ttyUSB0", "FT232R USB UART", "FTDI", "A50285BI"),
                           UsbAdapter("/dev/ttyUSB1", "USB-Serial Controller D", "Prolific", ""),
                           BuiltInPort("/dev/ttyS0")};
    }

    QWidget& Window() override { return *window; }
    void Open() {
        window = std::make_unique<frmConfig>(settings, link, devices, prompts, nullptr);
        window->Form_Load();
        ASSERT_TRUE(ShowActive(*window));
    }
    void ChoosePort(int number) { Find<QComboBox>("cboComPort")->setCurrentIndex(number - 1); }
    QTreeWidget* Ports() { return Find<QTreeWidget>("lstPorts"); }
    // The rows of what is plugged in, their columns parted by "|".
    std::vector<std::string> Rows() {
        std::vector<std::string> rows;
        for (int i = 0; i < Ports()->topLevelItemCount(); ++i) {
            QStringList texts;
            for (int column = 0; column < Ports()->columnCount(); ++column)
                texts << Ports()->topLevelItem(i)->text(column);
            rows.push_back(texts.join(u'|').toStdString());
        }
        return rows;
    }
    // The devices that the list offers.
    std::vector<QString> Offered() {
        std::vector<QString> offered;
        for (int i = 0; i < Ports()->topLevelItemCount(); ++i)
            offered.push_back(Ports()->topLevelItem(i)->text(3));
        return offered;
    }
    // Of the row that is chosen.
    QString Chosen() {
        const auto rows = Ports()->selectedItems();
        return rows.isEmpty() ? u"nothing"_s : rows.front()->text(3);
    }
    void ChooseDevice(const QString& device) {
        const auto rows = Ports()->findItems(device, Qt::MatchExactly, 3);
        ASSERT_EQ(rows.size(), 1) << device.toStdString();
        ClickItem(*Ports(), rows.front());
    }
    Settings settings;
    FakePortDevices devices;
    std::unique_ptr<frmConfig> window;
};

}  // namespace davo::test
