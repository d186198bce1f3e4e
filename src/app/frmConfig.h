// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QTimer>
#include <optional>
#include <vector>

#include "common/settings.h"
#include "link/link.h"
#include "link/port_devices.h"
#include "ui/event_handlers.h"

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLabel;
class QLayout;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace davo {

// "Configure System": the serial port, and whether impedances are shown. What is plugged in is
// listed; the row that is chosen is what the number of the port means. Saving takes the port
// only when it opens. Closed through its frame after a save that failed, it leaves no port chosen
// (comPort = kNoPortChosen).
class frmConfig : public QDialog {
  public:
    // All must outlive the window.
    frmConfig(Settings& settings, Link& link, PortDevices& devices, Prompts& prompts,
              QWidget* parent);

    // Centres the window and shows the settings; a port that is none of the list becomes COM1.
    void Form_Load();

    // What has become of the port, and what is plugged in.
    void ShowPort() { ListPorts(ChosenRow()); }

    // A port is open for a test of its connection, in the place of the one in use.
    bool Trying() const { return trying_; }

    // Also what its frame does: a test of the connection is ended first.
    void reject() override;

  protected:
    // Escape is cmdExit.
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* BuildPort();
    QLayout* BuildTest(QWidget* frame);
    QLayout* BuildNumber(QWidget* frame);
    QWidget* BuildImpedance();
    QLayout* BuildButtons();
    void cmdSave_Click();
    void cmdExit_Click();
    void cmdTest_Click();

    std::int16_t ChosenPort() const;
    // What the chosen row means: a device, "" for the automatic choice.
    std::optional<QString> ChosenRow() const;
    // What the number means once that row is taken; empty when there is nothing.
    QString ChosenDevice() const;
    // Whether taking the row gives the number to another device.
    bool IsReassigned(std::int16_t port) const;
    // Gives the number to device. A store that keeps it only until the program ends gives its
    // error.
    QString Assign(std::int16_t port, const QString& device);
    // Gives the number to the chosen device and opens it; one that does not open, or that is not
    // to be kept, is taken back. Why it does not open is said.
    bool OpenChosen(std::int16_t port, bool keep);
    // Asks the instrument at the open port for its model.
    void AskModel();
    void SetTesting(bool testing);
    // Its last column: which numbers mean it, and whether it is the one in use.
    QTreeWidgetItem* AddRow(const PresentPort& port, const QString& name);
    // What is plugged in now; the row of chosen is chosen, plugged in or not.
    void ListPorts(const std::optional<QString>& chosen);
    void PortChanged();
    void RowChanged();
    void LookAround();
    void ShowNumber();

    Settings& settings_;
    Link& link_;
    PortDevices& devices_;
    Prompts& prompts_;
    EventHandlers handlers_;
    std::vector<PresentPort> present_;  // that is listed
    QTimer look_;
    bool testing_ = false;
    bool trying_ = false;
    bool leave_ = false;  // once the test has ended
    QString answered_;    // the device at which a test has found testedModel_
    std::string testedModel_;
    QTreeWidget* lstPorts_ = nullptr;
    QComboBox* cboComPort_ = nullptr;
    QCheckBox* chkBuiltIn_ = nullptr;
    QLabel* lblAnswer_ = nullptr;
    QLabel* lblDevice_ = nullptr;
    QLabel* lblBuiltIn_ = nullptr;
    QPushButton* cmdTest_ = nullptr;
    QPushButton* cmdSave_ = nullptr;
    QPushButton* cmdLeave_ = nullptr;
    QAbstractButton* optImpedance_[2] = {nullptr, nullptr};
};

}  // namespace davo
