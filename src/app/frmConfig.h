// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include "common/settings.h"
#include "link/link.h"
#include "link/port_devices.h"
#include "ui/event_handlers.h"

class QAbstractButton;
class QCheckBox;
class QLabel;
class QVBoxLayout;

namespace davo {

class OpeningList;

// "Configure System": the serial port, and whether impedances are shown. Saving takes the port
// only when it opens. Closed through its frame after a save that failed, it leaves no port chosen
// (comPort = kNoPortChosen).
class frmConfig : public QDialog {
  public:
    // All must outlive the window.
    frmConfig(Settings& settings, Link& link, PortDevices& devices, Prompts& prompts,
              QWidget* parent);

    // Centres the window and shows the settings; a port that is none of the list becomes COM1.
    void Form_Load();

    // What has become of the port, and of the device that is chosen.
    void ShowPort();

  protected:
    // Escape is cmdExit.
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* BuildPort();
    void BuildDevice(QVBoxLayout* column);
    QWidget* BuildImpedance();
    QWidget* BuildButtons();
    void cmdSave_Click();
    void cmdExit_Click();

    std::int16_t ChosenPort() const;
    // Gives the number to device. A store that keeps it only until the program ends gives its
    // error.
    QString Assign(std::int16_t port, const QString& device);
    // Gives the number to the chosen device and opens it; one that does not open is taken back.
    bool OpenChosen(std::int16_t port);
    // What each number stands for now, in the list of the numbers.
    void ListPorts();
    // What is plugged in now, in the list of devices; chosen is selected, plugged in or not.
    void ListDevices(const QString& chosen);
    void PortChanged();
    void ShowDevice();
    void ShowPortState();

    Settings& settings_;
    Link& link_;
    PortDevices& devices_;
    Prompts& prompts_;
    EventHandlers handlers_;
    OpeningList* cboComPort_ = nullptr;
    OpeningList* cboDevice_ = nullptr;
    QCheckBox* chkBuiltIn_ = nullptr;
    QLabel* lblDevice_ = nullptr;
    QLabel* lblBuiltIn_ = nullptr;
    QLabel* lblPortState_ = nullptr;
    QAbstractButton* optImpedance_[2] = {nullptr, nullptr};
};

}  // namespace davo
