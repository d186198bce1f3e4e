// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frmConfig.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QRadioButton>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <QWheelEvent>

#include "app/port_labels.h"
#include "link/port_choice.h"
#include "ui/big_button.h"
#include "ui/centre_form.h"
#include "ui/form_parts.h"

namespace davo {

// A drop-down list that tells when it is about to open, so that it shows what is there now. The
// wheel does not turn it: a hand that passes over it must not choose another port.
class OpeningList : public QComboBox {
  public:
    explicit OpeningList(QWidget* parent) : QComboBox(parent) {}

    std::function<void()> OnOpen;

    void showPopup() override {
        OnOpen();
        const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
        view()->setMinimumWidth(view()->sizeHintForColumn(0) + scrollBar);
        QComboBox::showPopup();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        constexpr int kTextMargin = 4;
        QStylePainter painter(this);
        QStyleOptionComboBox option;
        initStyleOption(&option);
        const QRect room = style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                   QStyle::SC_ComboBoxEditField, this);
        option.currentText = fontMetrics().elidedText(option.currentText, Qt::ElideRight,
                                                      room.width() - kTextMargin);
        painter.drawComplexControl(QStyle::CC_ComboBox, option);
        painter.drawControl(QStyle::CE_ComboBoxLabel, option);
    }
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

namespace {

constexpr int kPorts = 4;
constexpr int kInputHeight = 36;  // a glove meets it
constexpr int kLeastWidth = 520;  // an adapter's name, maker and number in a line or two
constexpr int kDeviceLines = 2;
constexpr int kWarningLines = 2;

// What an entry stands for, kept beside its text.
constexpr int kStandsFor = Qt::ToolTipRole;

// The open list shows each text and what it stands for, in rows that a glove meets.
class StandsForDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return QStyledItemDelegate::sizeHint(option, index).expandedTo(QSize(0, kInputHeight));
    }

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        option->text += QStringLiteral("   ") + index.data(kStandsFor).toString();
    }
};

OpeningList* MakeList(QWidget* parent, const char* name) {
    auto* list = Named(new OpeningList(parent), name);
    list->setMinimumHeight(kInputHeight);
    list->setItemDelegate(new StandsForDelegate(list));
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    list->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return list;
}

// A label that keeps room for so many lines, so that the window does not change its size.
QLabel* MakeLines(QWidget* parent, const char* name, int lines) {
    auto* label = Named(new QLabel(parent), name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
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

bool IsBuiltIn(const PresentPort* port) {
    return port != nullptr && !port->usb;
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
    setMinimumWidth(kLeastWidth);
    auto* column = new QVBoxLayout(this);
    column->addWidget(BuildPort());
    column->addWidget(BuildImpedance());
    column->addWidget(BuildButtons());
}

QWidget* frmConfig::BuildPort() {
    auto* frame = Named(new QGroupBox(QStringLiteral("Select COM Port:"), this), "Frame1");
    auto* column = new QVBoxLayout(frame);
    cboComPort_ = MakeList(frame, "cboComPort");
    cboComPort_->setAccessibleName(frame->title());
    for (std::int16_t port = 1; port <= kPorts; ++port)
        cboComPort_->addItem(PortCaption(port));
    cboComPort_->OnOpen = [this] { handlers_.Run([this] { ListPorts(); }); };
    connect(cboComPort_, &QComboBox::currentIndexChanged, this,
            [this] { handlers_.Run([this] { PortChanged(); }); });
    column->addWidget(cboComPort_);
    BuildDevice(column);
    lblDevice_ = MakeLines(frame, "lblDevice", kDeviceLines);
    column->addWidget(lblDevice_);
    lblBuiltIn_ = MakeLines(frame, "lblBuiltIn", kWarningLines);
    MakeBold(lblBuiltIn_);
    lblBuiltIn_->setVisible(devices_.NeedsAssignment());
    column->addWidget(lblBuiltIn_);
    lblPortState_ = MakeLines(frame, "lblPortState", 1);
    column->addWidget(lblPortState_);
    return frame;
}

void frmConfig::BuildDevice(QVBoxLayout* column) {
    QWidget* frame = column->parentWidget();
    auto* row = Named(new QWidget(frame), "devices");
    auto* rows = WithMargin(new QVBoxLayout(row), 0);
    auto* caption = Named(new QLabel(QStringLiteral("stands for the &device:"), row), "lblCaption");
    cboDevice_ = MakeList(row, "cboDevice");
    caption->setBuddy(cboDevice_);
    chkBuiltIn_ =
        Named(new QCheckBox(QStringLiteral("&List built-in ports, too"), row), "chkBuiltIn");
    rows->addWidget(caption);
    rows->addWidget(cboDevice_);
    rows->addWidget(chkBuiltIn_, 0, Qt::AlignLeft);
    const auto list = [this] {
        handlers_.Run([this] { ListDevices(cboDevice_->currentData().toString()); });
    };
    cboDevice_->OnOpen = list;
    connect(chkBuiltIn_, &QCheckBox::toggled, this, list);
    connect(cboDevice_, &QComboBox::currentIndexChanged, this,
            [this] { handlers_.Run([this] { ShowDevice(); }); });
    row->setVisible(devices_.NeedsAssignment());
    column->addWidget(row);
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

QWidget* frmConfig::BuildButtons() {
    auto* buttons = new QWidget(this);
    auto* row = WithMargin(new QHBoxLayout(buttons), 0);
    auto* cmdSave = new BigButton(buttons, "cmdSave", "&Save");
    cmdSave->setDefault(true);
    auto* cmdExit = new BigButton(buttons, "cmdExit", "&Exit");
    row->addWidget(cmdSave);
    row->addWidget(cmdExit);
    connect(cmdSave, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([this] { cmdSave_Click(); }); });
    connect(cmdExit, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([this] { cmdExit_Click(); }); });
    return buttons;
}

void frmConfig::Form_Load() {
    if (settings_.comPort < 1 || settings_.comPort > kPorts) settings_.comPort = 1;
    handlers_.Run([this] {
        ListPorts();
        cboComPort_->setCurrentIndex(settings_.comPort - 1);
        PortChanged();
    });
    optImpedance_[settings_.showImpedance ? 1 : 0]->setChecked(true);
    ShowPortState();
    cboComPort_->setFocus();
    CentreForm(*this, parentWidget());
}

void frmConfig::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        handlers_.RunAlone([this] { cmdExit_Click(); });
    } else {
        QDialog::keyPressEvent(event);
    }
}

void frmConfig::cmdSave_Click() {
    if (optImpedance_[0]->isChecked()) {
        settings_.showImpedance = false;
    } else if (optImpedance_[1]->isChecked()) {
        settings_.showImpedance = true;
    }
    settings_.comPort = kNoPortChosen;
    const std::int16_t port = ChosenPort();
    if (OpenChosen(port)) {
        settings_.comPort = port;
        accept();
        return;
    }
    ShowPort();
}

void frmConfig::ShowPort() {
    ShowDevice();
    ShowPortState();
}

void frmConfig::cmdExit_Click() {
    if (settings_.comPort == kNoPortChosen) {
        prompts_.Message(QStringLiteral("Please choose a valid COM port."));
    } else {
        reject();
    }
}

std::int16_t frmConfig::ChosenPort() const {
    if (cboComPort_->currentText().isEmpty()) return 1;
    return static_cast<std::int16_t>(cboComPort_->currentIndex() + 1);
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

bool frmConfig::OpenChosen(std::int16_t port) {
    const QString before = devices_.Assigned(port);
    const QString chosen = cboDevice_->currentData().toString();
    const bool reassign = devices_.NeedsAssignment() && chosen != before;
    const QString notStored = reassign ? Assign(port, chosen) : QString();
    const bool opened = link_.OpenComPort(port);
    if (reassign && !opened) {
        Assign(port, before);
    } else if (!notStored.isEmpty()) {
        prompts_.Message(QStringLiteral("COM%1 stands for the chosen device until the program "
                                        "ends: the setting cannot be stored.\r\n%2")
                             .arg(port)
                             .arg(notStored));
    }
    return opened;
}

void frmConfig::ListPorts() {
    const auto present = devices_.Present();
    for (std::int16_t port = 1; port <= kPorts; ++port) {
        const QString device = devices_.DeviceOf(port);
        const QString words = FindPort(present, device) == nullptr
                                  ? QStringLiteral("not plugged in")
                                  : DeviceWords(device, present);
        cboComPort_->setItemData(port - 1, words, kStandsFor);
    }
}

void frmConfig::ListDevices(const QString& chosen) {
    const auto present = devices_.Present();
    const QString automatic = NthUsbAdapter(present, ChosenPort());
    const QSignalBlocker quiet(cboDevice_);
    cboDevice_->clear();
    const auto add = [&](const QString& text, const QString& device, const QString& standsFor) {
        cboDevice_->addItem(text, device);
        cboDevice_->setItemData(cboDevice_->count() - 1, standsFor, kStandsFor);
    };
    add(QStringLiteral("Automatic: USB adapter no. %1").arg(ChosenPort()), QString(), automatic);
    for (const PresentPort& port : present) {
        if (port.usb) add(port.device, port.device, AdapterWords(port));
    }
    for (const PresentPort& port : present) {
        if (!port.usb && (chkBuiltIn_->isChecked() || port.device == chosen)) {
            add(port.device, port.device, QStringLiteral("built into the computer"));
        }
    }
    if (!chosen.isEmpty() && FindPort(present, chosen) == nullptr) {
        add(chosen, chosen, QStringLiteral("not among the ports plugged in"));
    }
    cboDevice_->setCurrentIndex(cboDevice_->findData(chosen));
    ShowDevice();
}

void frmConfig::PortChanged() {
    ListDevices(devices_.Assigned(ChosenPort()));
}

void frmConfig::ShowDevice() {
    const auto present = devices_.Present();
    QString device = devices_.DeviceOf(ChosenPort());
    if (devices_.NeedsAssignment()) {
        const QString chosen = cboDevice_->currentData().toString();
        device = chosen.isEmpty() ? NthUsbAdapter(present, ChosenPort()) : chosen;
    }
    const PresentPort* port = FindPort(present, device);
    if (device.isEmpty()) {
        lblDevice_->setText(QStringLiteral("No device is plugged in for it."));
    } else if (port == nullptr) {
        lblDevice_->setText(QStringLiteral("%1 is not among the ports plugged in.").arg(device));
    } else {
        const QString where =
            IsBuiltIn(port) ? QStringLiteral("Built in: %1") : QStringLiteral("Plugged in: %1");
        lblDevice_->setText(where.arg(DeviceWords(device, present)));
    }
    lblBuiltIn_->setText(IsBuiltIn(port)
                             ? QStringLiteral("This port is built into the computer and may be its "
                                              "console. Save it only when the DAVO is wired to it.")
                             : QString());
}

void frmConfig::ShowPortState() {
    const LinkGlance glance = GlanceAtLink(settings_, link_.State(), devices_);
    lblPortState_->setText(QStringLiteral("Now: %1").arg(PortState(glance)));
}

}  // namespace davo
