// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmConfig.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QRadioButton>
#include <QScopeGuard>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include "app/port_labels.h"
#include "link/port_choice.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kPorts = 4;
constexpr int kInputHeight = 36;  // a glove meets it
constexpr int kLeastPorts = 3;
constexpr int kLeastLetters = 112;  // of an adapter's name, maker, number and device
constexpr int kMostWidth = 940;     // with large letters: the window fits a screen of 1024
constexpr int kAnswerLines = 3;
constexpr std::chrono::milliseconds kLook{1000};

enum Column : std::uint8_t { kName, kMaker, kSerialNumber, kDevice, kUse, kColumns };

// The wheel does not turn it: a hand that passes over it must not choose another port.
class NumberList : public QComboBox {
  public:
    using QComboBox::QComboBox;

  protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

QTreeWidget* MakePortList(QWidget* parent) {
    auto* list = Named(new QTreeWidget(parent), "lstPorts");
    list->setAccessibleName(QStringLiteral("What is plugged in"));
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setAllColumnsShowFocus(true);
    list->setHeaderLabels({QStringLiteral("Plugged in"), QStringLiteral("Maker"),
                           QStringLiteral("Serial number"), QStringLiteral("Port"), QString()});
    QHeaderView* header = list->header();
    header->setStretchLastSection(false);
    header->setSectionsMovable(false);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(kName, QHeaderView::Stretch);
    list->setMinimumHeight(header->sizeHint().height() + kLeastPorts * kInputHeight +
                           2 * list->frameWidth());
    list->setMinimumWidth(
        std::min(list->fontMetrics().averageCharWidth() * kLeastLetters, kMostWidth));
    return list;
}

// A label that keeps room for so many lines, so that the window does not change its size.
QLabel* MakeLines(QWidget* parent, const char* name, int lines) {
    QLabel* label = MakeParagraph(parent, name, {}, 1);
    label->setMinimumHeight(lines * label->fontMetrics().lineSpacing());
    return label;
}

// An option that is chosen anywhere in its row, as a glove does it.
class RowButton : public QRadioButton {
  public:
    using QRadioButton::QRadioButton;

  protected:
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }
};

// The number of a port that has such a name; 0 when it is none of the list.
std::int16_t NumberOf(const QString& device) {
    for (std::int16_t port = 1; port <= kPorts; ++port)
        if (device == PortCaption(port)) return port;
    return 0;
}

}  // namespace

frmConfig::frmConfig(Settings& settings, Link& link, PortDevices& devices, Prompts& prompts,
                     QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      link_(link),
      devices_(devices),
      prompts_(prompts),
      handlers_(prompts) {
    setObjectName(QStringLiteral("frmConfig"));
    setWindowTitle(QStringLiteral("Configure System"));
    auto* column = new QVBoxLayout(this);
    column->addWidget(BuildPort(), 1);
    column->addWidget(BuildImpedance());
    column->addLayout(BuildButtons());
    look_.setInterval(kLook);
    connect(&look_, &QTimer::timeout, this, [this] { LookAround(); });
}

QWidget* frmConfig::BuildPort() {
    auto* frame = Named(new QGroupBox(QStringLiteral("Select COM Port:"), this), "Frame1");
    auto* column = new QVBoxLayout(frame);
    lstPorts_ = MakePortList(frame);
    connect(lstPorts_, &QTreeWidget::itemSelectionChanged, this,
            [this] { handlers_.Run([this] { RowChanged(); }); });
    column->addWidget(lstPorts_, 1);
    lblBuiltIn_ = MakeLines(frame, "lblBuiltIn", 2);
    lblBuiltIn_->setText(
        QStringLiteral("This port is built into the computer and may be its console. Save it only "
                       "when the DAVO is wired to it."));
    MakeBold(lblBuiltIn_);
    lblBuiltIn_->hide();
    column->addWidget(lblBuiltIn_);
    column->addLayout(BuildTest(frame));
    column->addLayout(BuildNumber(frame));
    return frame;
}

QLayout* frmConfig::BuildTest(QWidget* frame) {
    cmdTest_ = new BigButton(frame, "cmdTest", "&Test connection");
    cmdTest_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    cmdTest_->setMinimumWidth(cmdTest_->sizeHint().width() + 2 * kFormSpacing);
    lblAnswer_ = MakeLines(frame, "lblAnswer", kAnswerLines);
    auto* row = new QHBoxLayout;
    row->addWidget(cmdTest_);
    row->addWidget(lblAnswer_, 1);
    connect(cmdTest_, &QPushButton::clicked, this, [this] {
        if (testing_) {
            link_.EndWait();
        } else {
            handlers_.RunAlone([this] { cmdTest_Click(); });
        }
    });
    return row;
}

QLayout* frmConfig::BuildNumber(QWidget* frame) {
    cboComPort_ = Named(new NumberList(frame), "cboComPort");
    cboComPort_->setAccessibleName(QStringLiteral("Select COM Port:"));
    cboComPort_->setMinimumHeight(kInputHeight);
    for (std::int16_t port = 1; port <= kPorts; ++port) {
        cboComPort_->addItem(PortCaption(port));
        cboComPort_->setItemData(port - 1, QSize(0, kInputHeight), Qt::SizeHintRole);
    }
    connect(cboComPort_, &QComboBox::currentIndexChanged, this,
            [this] { handlers_.Run([this] { PortChanged(); }); });
    lblDevice_ = MakeLines(frame, "lblDevice", 1);
    chkBuiltIn_ =
        Named(new QCheckBox(QStringLiteral("&List built-in ports, too"), frame), "chkBuiltIn");
    chkBuiltIn_->setVisible(devices_.NeedsAssignment());
    connect(chkBuiltIn_, &QCheckBox::toggled, this,
            [this] { handlers_.Run([this] { ListPorts(ChosenRow()); }); });
    auto* row = new QHBoxLayout;
    row->addWidget(cboComPort_);
    row->addWidget(lblDevice_, 1);
    row->addWidget(chkBuiltIn_);
    return row;
}

QWidget* frmConfig::BuildImpedance() {
    auto* frame = Named(new QGroupBox(QStringLiteral("Display Impedance?"), this), "Frame2");
    auto* row = new QHBoxLayout(frame);
    constexpr const char* kCaptions[] = {"&No, do not display", "&Yes, display"};
    for (int i = 0; i < 2; ++i) {
        optImpedance_[i] = new RowButton(QLatin1String(kCaptions[i]), frame);
        optImpedance_[i]->setObjectName(QStringLiteral("optImpedance%1").arg(i));
        optImpedance_[i]->setMinimumHeight(kInputHeight);
        optImpedance_[i]->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        row->addWidget(optImpedance_[i]);
    }
    return frame;
}

QLayout* frmConfig::BuildButtons() {
    cmdSave_ = new BigButton(this, "cmdSave", "&Save");
    cmdSave_->setDefault(true);
    QPushButton* cmdExit = new BigButton(this, "cmdExit", "&Exit");
    // Exit stays in the window while no port is chosen; a screen may show no frame to close it by.
    cmdLeave_ = new BigButton(this, "cmdLeave", "Leave &without a port");
    cmdLeave_->hide();
    auto* row = new QHBoxLayout;
    for (QPushButton* button : {cmdSave_, cmdExit, cmdLeave_})
        row->addWidget(button);
    connect(cmdSave_, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([this] { cmdSave_Click(); }); });
    connect(cmdExit, &QPushButton::clicked, this, [this] { cmdExit_Click(); });
    connect(cmdLeave_, &QPushButton::clicked, this, [this] { reject(); });
    return row;
}

void frmConfig::Form_Load() {
    if (settings_.comPort < 1 || settings_.comPort > kPorts) settings_.comPort = 1;
    handlers_.Run([this] {
        cboComPort_->setCurrentIndex(settings_.comPort - 1);
        PortChanged();
    });
    optImpedance_[settings_.showImpedance ? 1 : 0]->setChecked(true);
    lstPorts_->setFocus();
    look_.start();
    CentreForm(*this, parentWidget());
}

void frmConfig::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        cmdExit_Click();
    } else {
        QDialog::keyPressEvent(event);
    }
}

void frmConfig::reject() {
    if (testing_) {
        leave_ = true;
        link_.EndWait();
    } else {
        QDialog::reject();
    }
}

void frmConfig::cmdSave_Click() {
    settings_.showImpedance = optImpedance_[1]->isChecked();
    const std::int16_t port = ChosenPort();
    const bool another = IsReassigned(port) || port != settings_.comPort;
    const bool isTested = !testedModel_.empty() && answered_ == ChosenDevice();
    settings_.comPort = kNoPortChosen;
    if (OpenChosen(port, true)) {
        settings_.comPort = port;
        if (another || isTested)
            link_.State().instrumentModel = isTested ? testedModel_ : std::string();
        accept();
        return;
    }
    lblAnswer_->setText(lblAnswer_->text() +
                        QStringLiteral(" To leave anyway, press Leave without a port."));
    ShowPort();
}

void frmConfig::cmdExit_Click() {
    if (testing_) {
        link_.EndWait();
    } else if (settings_.comPort == kNoPortChosen) {
        handlers_.RunAlone(
            [this] { prompts_.Message(QStringLiteral("Please choose a valid COM port.")); });
    } else {
        handlers_.RunAlone([this] { reject(); });
    }
}

// --- Trying the connection ----------------------------------------------------------------------

void frmConfig::cmdTest_Click() {
    if (link_.CurrentWait()) {
        lblAnswer_->setText(QStringLiteral("The line is in use. Try again when it is free."));
        return;
    }
    const std::int16_t port = ChosenPort();
    const LinkState before = link_.State();
    const auto tried = qScopeGuard([this] { trying_ = false; });
    trying_ = !before.portOpen || port != settings_.comPort || IsReassigned(port);
    if (!trying_ || OpenChosen(port, false)) AskModel();
    // The port of the settings is the one in use until another one is saved.
    if (std::exchange(trying_, false)) {
        link_.State().openFailed = before.openFailed;
        if (before.portOpen) {
            link_.OpenComPort(settings_.comPort);
        } else {
            link_.CloseComPort();
        }
    }
    ShowPort();
    if (leave_) QDialog::reject();
}

void frmConfig::AskModel() {
    SetTesting(true);
    const auto ended = qScopeGuard([this] { SetTesting(false); });
    lblAnswer_->setText(QStringLiteral("The DAVO is asked for its model..."));
    std::string model;
    const bool answered = link_.ReadInstrumentModel(model, nullptr);
    testedModel_.clear();
    if (answered) {
        answered_ = ChosenDevice();
        testedModel_ = model;
        lblAnswer_->setText(QStringLiteral("%1 answers.").arg(ModelText(model)));
    } else if (!model.empty()) {
        lblAnswer_->setText(QStringLiteral("What answers is no DAVO: %1").arg(ModelText(model)));
    } else if (link_.LastWaitEnded()) {
        lblAnswer_->setText(QStringLiteral("The test was stopped. Nothing has answered."));
    } else {
        lblAnswer_->setText(
            QStringLiteral("No answer. Is the DAVO on, under computer control, and the cable in "
                           "the right socket?"));
    }
}

void frmConfig::SetTesting(bool testing) {
    testing_ = testing;
    cmdTest_->setText(testing ? QStringLiteral("Sto&p waiting")
                              : QStringLiteral("&Test connection"));
    // The answer is that of the port beside it.
    for (QWidget* choice : std::initializer_list<QWidget*>{lstPorts_, cboComPort_, chkBuiltIn_})
        choice->setEnabled(!testing);
    cmdSave_->setEnabled(!testing);
}

// --- What is chosen -----------------------------------------------------------------------------

std::int16_t frmConfig::ChosenPort() const {
    if (cboComPort_->currentText().isEmpty()) return 1;
    return static_cast<std::int16_t>(cboComPort_->currentIndex() + 1);
}

std::optional<QString> frmConfig::ChosenRow() const {
    const QList<QTreeWidgetItem*> rows = lstPorts_->selectedItems();
    if (rows.isEmpty()) return std::nullopt;
    return rows.front()->data(kName, Qt::UserRole).toString();
}

QString frmConfig::ChosenDevice() const {
    const std::optional<QString> row = ChosenRow();
    if (!row) return devices_.DeviceOf(ChosenPort());
    if (!row->isEmpty()) return *row;
    return devices_.NeedsAssignment() ? NthUsbAdapter(devices_.Present(), ChosenPort())
                                      : PortCaption(ChosenPort());
}

bool frmConfig::IsReassigned(std::int16_t port) const {
    const std::optional<QString> row = ChosenRow();
    if (!row) return false;
    return row->isEmpty() || *row != devices_.DeviceOf(port);
}

QString frmConfig::Assign(std::int16_t port, const QString& device) {
    try {
        devices_.Assign(port, device);
    } catch (const RunTimeError& error) {
        if (devices_.Assigned(port) != device) throw;
        return QString::fromUtf8(error.what());
    }
    return {};
}

bool frmConfig::OpenChosen(std::int16_t port, bool keep) {
    const QString before = devices_.Assigned(port);
    const QString device = ChosenDevice();
    const bool reassign = IsReassigned(port);
    const QString notStored = reassign ? Assign(port, ChosenRow().value_or(QString())) : QString();
    const bool opened = link_.OpenComPort(port);
    if (!opened) lblAnswer_->setText(WhyNotOpen(devices_, device, link_.State().openError));
    if (reassign && !(opened && keep)) {
        Assign(port, before);
    } else if (!notStored.isEmpty()) {
        prompts_.Message(QStringLiteral("COM%1 is the chosen device until the program "
                                        "ends: the setting cannot be stored.\r\n%2")
                             .arg(port)
                             .arg(notStored));
    }
    return opened;
}

// --- What is shown ------------------------------------------------------------------------------

QTreeWidgetItem* frmConfig::AddRow(const PresentPort& port, const QString& name) {
    const auto isOf = [&](std::int16_t number) {
        return !port.device.isEmpty() && port.device == devices_.DeviceOf(number);
    };
    const bool inUse = settings_.comPort != kNoPortChosen && isOf(settings_.comPort);
    QStringList use;
    for (std::int16_t number = 1; number <= kPorts; ++number)
        if (isOf(number) && port.device != PortCaption(number)) use << PortCaption(number);
    if (inUse)
        use << (link_.State().portOpen ? QStringLiteral("in use") : QStringLiteral("chosen"));
    auto* row = new QTreeWidgetItem(lstPorts_, {name, port.maker, port.serialNumber, port.device,
                                                use.join(QStringLiteral(", "))});
    row->setData(kName, Qt::UserRole, port.device);
    row->setToolTip(kName, name);
    row->setSizeHint(kName, QSize(0, kInputHeight));
    QFont font = lstPorts_->font();
    font.setBold(inUse);
    for (int column = 0; column < kColumns; ++column)
        row->setFont(column, font);
    return row;
}

void frmConfig::ListPorts(const std::optional<QString>& chosen) {
    present_ = devices_.Present();
    const QSignalBlocker quiet(lstPorts_);
    lstPorts_->clear();
    const bool named = !devices_.NeedsAssignment();
    const auto add = [&](const PresentPort& port, const QString& name) {
        QTreeWidgetItem* row = AddRow(port, name);
        if (chosen == port.device) lstPorts_->setCurrentItem(row);
        return row;
    };
    std::vector<PresentPort> shown = present_;
    std::stable_partition(shown.begin(), shown.end(), std::mem_fn(&PresentPort::usb));
    for (const PresentPort& port : shown) {
        const bool builtIn = !port.usb && !named;
        if (builtIn && !chkBuiltIn_->isChecked() && chosen != port.device) continue;
        const bool unnamed = !port.usb && port.name.isEmpty();
        add(port, unnamed ? QStringLiteral("built into the computer") : port.name);
    }
    if (chosen && !chosen->isEmpty() && FindPort(present_, *chosen) == nullptr) {
        PresentPort missing;
        missing.device = *chosen;
        add(missing, QStringLiteral("not among the ports plugged in"));
    }
    const std::int16_t port = ChosenPort();
    if (chosen == QString() || !devices_.Assigned(port).isEmpty())
        add({}, (named ? QStringLiteral("Automatic: COM%1")
                       : QStringLiteral("Automatic: USB adapter no. %1"))
                    .arg(port))
            ->setFirstColumnSpanned(true);
    if (lstPorts_->topLevelItemCount() == 0) {
        auto* none = new QTreeWidgetItem(
            lstPorts_, {QStringLiteral("Nothing yet. Plug in the DAVO's adapter.")});
        none->setFirstColumnSpanned(true);
        none->setFlags(Qt::NoItemFlags);
    }
    ShowNumber();
}

void frmConfig::PortChanged() {
    const QString device = devices_.DeviceOf(ChosenPort());
    ListPorts(device.isEmpty() ? std::nullopt : std::optional(device));
    lblAnswer_->clear();
}

void frmConfig::RowChanged() {
    if (const std::int16_t port = NumberOf(ChosenRow().value_or(QString())); port != 0) {
        const QSignalBlocker quiet(cboComPort_);
        cboComPort_->setCurrentIndex(port - 1);
    }
    lblAnswer_->clear();
    ShowNumber();
}

void frmConfig::LookAround() {
    if (handlers_.Running() || devices_.Present() == present_) return;
    handlers_.Run([this] { ShowPort(); });
}

void frmConfig::ShowNumber() {
    const QString device = ChosenDevice();
    const bool named = !devices_.NeedsAssignment();
    QString words =
        device == PortCaption(ChosenPort()) ? QString() : QStringLiteral("is %1").arg(device);
    if (!devices_.IsPresent(device)) words = QStringLiteral("is not plugged in");
    if (device.isEmpty()) words = QStringLiteral("has no adapter yet");
    lblDevice_->setText(words);
    const PresentPort* port = FindPort(present_, device);
    lblBuiltIn_->setVisible(!named && port != nullptr && !port->usb);
    cmdLeave_->setVisible(settings_.comPort == kNoPortChosen);
}

}  // namespace davo
