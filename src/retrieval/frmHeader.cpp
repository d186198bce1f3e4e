// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/frmHeader.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>
#include <vector>

#include "common/text.h"
#include "ui/form_parts.h"
#include "ui/frmNotepad.h"
#include "ui/page_input.h"

namespace davo {

namespace {

// A glove meets them.
constexpr int kBoxHeight = 34;
constexpr int kButtonHeight = 44;
constexpr int kBarHeight = 14;
constexpr double kLetterGrowth = 1.15;
constexpr int kFormMargin = 16;
constexpr int kBoxLength = 50;  // average characters, so that twenty wide ones and their count fit
constexpr int kComboLength = 6;
// Characters between two pictures of the bar: each of them holds up the line for a moment.
constexpr std::size_t kBarStep = 32;

// By HeaderMode.
constexpr std::array kSaveCaptions = {"&Use Header", "&Save", "Save to &DAVO"};
constexpr std::array kNotYet = {"Not used yet. Press Use Header.", "Not saved yet. Press Save.",
                                "Not in the DAVO yet. Press Save to DAVO."};
constexpr const char* kLeaveQuestion =
    "The DAVO has erased its headers and does not have all of the new ones yet.\r\n"
    "The headers that are not sent stay empty.\r\n"
    "Do you want to leave anyway?";
constexpr const char* kUnreadQuestion =
    "The headers of the DAVO were not read.\r\n"
    "All ten are replaced by those of this window, empty ones too.\r\n"
    "Do you want to save them to the DAVO anyway?";
constexpr const char* kNotReadBackMessage =
    "The headers were sent to the DAVO but could not be read back.\r\n"
    "Please save them to the DAVO again.";
constexpr const char* kNotStorableHint = "The DAVO cannot store this character in a header.";

// Whether a header slot holds it: characters of the page without the one that marks an empty slot.
bool FitsSlot(const QString& input) {
    const auto text = ToPage(input);
    return text && text->find(kEmptySlotFill) == std::string::npos;
}

// Replaces the control characters of texts, which are the header of name; what is told of them.
template <class Texts>
QString Clean(Texts& texts, const QString& name) {
    std::size_t controls = 0;
    for (std::string& text : texts)
        controls += ReplaceControls(text);
    return controls == 0 ? QString() : CleanedHeaderText(name);
}

// The label, level with its control.
QLabel* AddRow(QFormLayout* form, const QString& caption, QWidget* control) {
    auto* label = new QLabel(caption, control->parentWidget());
    label->setMinimumHeight(kBoxHeight);
    label->setBuddy(control);
    form->addRow(label, control);
    return label;
}

}  // namespace

frmHeader::frmHeader(HeaderMode mode, HeaderTable& header, Prompts& prompts, QWidget* parent)
    : QDialog(parent), mode_(mode), header_(header), prompts_(prompts), handlers_(prompts) {
    setObjectName(QStringLiteral("frmHeader"));
    setWindowTitle(QStringLiteral("Test Record Header Information"));
    if (mode_ == HeaderMode::Pc) setProperty("guidePlace", QStringLiteral("frmHeader-pc"));
    if (mode_ == HeaderMode::Davo) setProperty("guidePlace", QStringLiteral("frmHeader-davo"));
    setAttribute(Qt::WA_DeleteOnClose);
    Enlarge(this, kLetterGrowth);
    auto* column = WithMargin(new QVBoxLayout(this), kFormMargin);
    auto* form = new QFormLayout;
    form->setHorizontalSpacing(kFormMargin);
    column->addLayout(form);
    BuildSlotChoice(form);
    BuildBoxes(form);
    BuildProgress(column);
    BuildButtons(column);
}

frmHeader::frmHeader(HeaderTable& header, std::string& testNotes, Prompts& prompts, QWidget* parent)
    : frmHeader(HeaderMode::Session, header, prompts, parent) {
    testNotes_ = &testNotes;
    Form_Load();
}

frmHeader::frmHeader(HeaderMode mode, const HeaderTargets& targets, Prompts& prompts,
                     QWidget* parent)
    : frmHeader(mode, targets.header, prompts, parent) {
    targets_.emplace(targets);
    if (mode_ == HeaderMode::Davo) {
        exchange_.emplace(targets.link, prompts, targets.openPort, targets.patience);
        exchange_->OnStatus = [this](const QString& text) { lblUsed_->setText(text); };
        exchange_->OnProgress = [this](std::size_t sent) { ShowProgress(sent); };
    }
    Form_Load();
}

void frmHeader::BuildSlotChoice(QFormLayout* form) {
    cboHeader_ = Named(new QComboBox(this), "cboHeader");
    cboHeader_->setMinimumHeight(kBoxHeight);
    cboHeader_->setMinimumContentsLength(kComboLength);
    cboHeader_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    for (int slot = 1; slot <= kHeaderSlotCount; ++slot)
        cboHeader_->addItem(QString::number(slot));
    Named(AddRow(form, QStringLiteral("HEADER:"), cboHeader_), "lblHeader");
    form->setRowVisible(cboHeader_, mode_ == HeaderMode::Davo);
    connect(cboHeader_, &QComboBox::currentIndexChanged, this,
            [this] { handlers_.Run([this] { cboHeader_Click(); }); });
}

void frmHeader::BuildBoxes(QFormLayout* form) {
    for (std::size_t i = 0; i < txtHeader_.size(); ++i) {
        auto* box = Named(new QLineEdit(this), QStringLiteral("txtHeader%1").arg(i));
        box->setMinimumWidth(box->fontMetrics().averageCharWidth() * kBoxLength);
        box->setMinimumHeight(kBoxHeight);
        if (mode_ == HeaderMode::Davo) {
            KeepTo(box, FitsSlot, QLatin1String(kNotStorableHint));
        } else {
            KeepToPage(box);
        }
        CountCharacters(box, kHeaderFieldWidth);
        connect(box, &QLineEdit::textEdited, this, [this] {
            edited_ = true;
            cut_.clear();
            ShowState();
        });
        AddRow(form, QLatin1String(kHeaderKeys.at(i)) + QLatin1Char(':'), box);
        txtHeader_.at(i) = box;
    }
}

void frmHeader::BuildProgress(QVBoxLayout* column) {
    lblUsed_ = Named(new QLabel(this), "lblUsed");
    column->addWidget(lblUsed_);
    pbarProgress_ = Named(new QProgressBar(this), "pbarProgress");
    pbarProgress_->setRange(0, static_cast<int>(kHeaderMemoryWidth));
    pbarProgress_->setTextVisible(false);
    pbarProgress_->setFixedHeight(kBarHeight);
    column->addWidget(pbarProgress_);
    pbarProgress_->hide();
    // The window does not change its size when an upload begins.
    if (mode_ == HeaderMode::Davo) KeepRoomWhenHidden(pbarProgress_);
}

void frmHeader::BuildButtons(QVBoxLayout* column) {
    auto* row = new QHBoxLayout;
    const auto add = [this, row](const char* name, const char* caption) {
        auto* button = Named(new QPushButton(QLatin1String(caption), this), name);
        button->setMinimumHeight(kButtonHeight);
        // Without this, Enter in a box presses the first button.
        button->setAutoDefault(mode_ != HeaderMode::Davo);
        row->addWidget(button);
        return button;
    };
    QPushButton* cmdNotes = add("cmdNotes", "&Notepad");
    cmdSave_ = add("cmdSave", kSaveCaptions.at(static_cast<std::size_t>(mode_)));
    cmdExit_ = add("cmdExit", "&Exit");
    cmdNotes->setVisible(mode_ == HeaderMode::Session);
    cmdSave_->setDefault(mode_ != HeaderMode::Davo);
    column->addLayout(row);
    connect(cmdSave_, &QPushButton::clicked, this, [this] { cmdSave_Click(); });
    connect(cmdNotes, &QPushButton::clicked, this,
            [this] { handlers_.Run([this] { cmdNotes_Click(); }); });
    connect(cmdExit_, &QPushButton::clicked, this, &QDialog::close);
}

void frmHeader::Form_Load() {
    if (mode_ == HeaderMode::Davo) {
        // Once the window is on the screen: the operator sees what is waited for, and may leave.
        QTimer::singleShot(0, this, [this] { ReadSlots(); });
    } else {
        HeaderBoxes boxes;
        std::ranges::transform(header_.Fields(), boxes.begin(), TrimBlanks);
        lblUsed_->setText(Clean(boxes, QStringLiteral("the PC")));
        ShowBoxes(boxes);
    }
    txtHeader_.front()->setFocus();
    CentreForm(*this, parentWidget());
}

// --- Boxes --------------------------------------------------------------------------------------

HeaderBoxes frmHeader::Boxes() const {
    HeaderBoxes boxes;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        // The boxes refuse what is not in the page.
        boxes.at(i) = ToPage(txtHeader_.at(i)->text()).value();
    }
    return boxes;
}

void frmHeader::ShowBoxes(const HeaderBoxes& boxes) {
    for (std::size_t i = 0; i < boxes.size(); ++i)
        txtHeader_.at(i)->setText(FromPage(boxes.at(i)));
}

void frmHeader::ShowCutBoxes(const HeaderBoxes& boxes) {
    const HeaderBoxes typed = Boxes();
    std::vector<std::size_t> cut;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (boxes.at(i) != typed.at(i)) cut.push_back(i);
    }
    cut_.clear();
    if (cut.size() == 1) {
        cut_ = QStringLiteral("%1 was cut to 20 characters.")
                   .arg(QLatin1String(kHeaderKeys.at(cut.front())));
    } else if (cut.size() > 1) {
        cut_ = QStringLiteral("%1 fields were cut to 20 characters.").arg(cut.size());
    }
    ShowBoxes(boxes);
}

void frmHeader::Say(const QString& text) {
    lblUsed_->setText(cut_.isEmpty() ? text : text + QLatin1Char('\n') + cut_);
}

void frmHeader::PackShownSlot() {
    HeaderBoxes boxes = Boxes();
    targets_->slots.at(static_cast<std::size_t>(shownSlot_)) = PackSlot(boxes);
    ShowCutBoxes(boxes);
}

void frmHeader::ShowSlot() {
    shownSlot_ = cboHeader_->currentIndex();
    ShowBoxes(UnpackSlot(targets_->slots.at(static_cast<std::size_t>(shownSlot_))));
}

void frmHeader::cboHeader_Click() {
    PackShownSlot();
    ShowSlot();
    ShowState();
}

void frmHeader::ShowState() {
    Say(edited_ ? QLatin1String(kNotYet.at(static_cast<std::size_t>(mode_))) : QString());
}

void frmHeader::UseHeader() {
    HeaderBoxes boxes = Boxes();
    HeaderBoxes fields;
    std::ranges::transform(boxes, fields.begin(), TakeHeaderField);
    if (mode_ == HeaderMode::Pc && !MaySave(fields)) return;
    std::ranges::copy(fields, header_.Fields().begin());
    ShowCutBoxes(boxes);
    if (mode_ == HeaderMode::Pc) SaveHeaderFile(header_, targets_->dataPath);
    edited_ = false;
    Say(mode_ == HeaderMode::Pc
            ? QStringLiteral("This header is saved and used for the tests that follow.")
            : QStringLiteral("This header is used for the tests that follow."));
    if (OnChanged) OnChanged();
}

// A text with another field's key would come back as that field the next time.
bool frmHeader::MaySave(const HeaderBoxes& fields) {
    QString question;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::string key = kHeaderKeys.at(i);
        const auto readBack = FieldOfHeaderLine(key + ":" + fields.at(i));
        if (std::cmp_equal(*readBack, i)) continue;
        question +=
            ReadBackText(fields.at(i), key, kHeaderKeys.at(static_cast<std::size_t>(*readBack)));
    }
    return question.isEmpty() ||
           prompts_.Agrees(question + QStringLiteral("Do you want to save the header anyway?"));
}

void frmHeader::cmdSave_Click() {
    if (mode_ == HeaderMode::Davo) {
        UploadSlots();
    } else {
        handlers_.Run([this] { UseHeader(); });
    }
}

void frmHeader::cmdNotes_Click() {
    auto* notepad = new frmNotepad(*testNotes_, prompts_, this);
    notepad->OnChanged = OnChanged;
    notepad->open();
}

void frmHeader::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && edited_ && !handlers_.Running()) {
        Say(QLatin1String(kNotYet.at(static_cast<std::size_t>(mode_))) +
            QStringLiteral(" Exit leaves without it."));
        return;
    }
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!enter || mode_ != HeaderMode::Davo) {
        QDialog::keyPressEvent(event);
        return;
    }
    if (event->isAutoRepeat()) return;
    // Enter must not erase the instrument's headers while they are typed.
    if (auto* button = qobject_cast<QPushButton*>(focusWidget())) {
        button->click();
    } else {
        focusNextChild();
    }
}

// --- The instrument's slots ---------------------------------------------------------------------

template <class Dialogue>
void frmHeader::Converse(const Dialogue& dialogue) {
    if (handlers_.Running()) return;
    EnableControls(false);
    handlers_.Run(dialogue);
    EnableControls(true);
    pbarProgress_->hide();
    askWhenSending_ = false;
    if (closeWanted_) close();
}

void frmHeader::EnableControls(bool enable) {
    for (QLineEdit* box : txtHeader_)
        box->setEnabled(enable);
    cboHeader_->setEnabled(enable);
    cmdSave_->setEnabled(enable);
    if (enable) {
        txtHeader_.front()->setFocus();
    } else {
        cmdExit_->setFocus();
    }
}

void frmHeader::ReadSlots() {
    Converse([this] {
        slotsRead_ = exchange_->Read(targets_->slots);
        edited_ = false;
        for (std::string& slot : targets_->slots) {
            // What follows the mark of an empty one is not shown.
            if (IsEmptySlot(slot)) slot.assign(kHeaderSlotWidth, kEmptySlotFill);
        }
        const QString cleaned = Clean(targets_->slots, QStringLiteral("the DAVO"));
        ShowSlot();
        lblUsed_->setText(slotsRead_ ? cleaned
                                     : QStringLiteral("The headers of the DAVO were not read."));
    });
}

void frmHeader::UploadSlots() {
    Converse([this] {
        PackShownSlot();
        ShowState();
        if (!slotsRead_ && !prompts_.Agrees(QLatin1String(kUnreadQuestion))) return;
        pbarProgress_->setValue(0);
        pbarProgress_->show();
        const UploadResult result = exchange_->Upload(targets_->slots);
        if (!closeWanted_) TellUpload(result);
    });
}

void frmHeader::TellUpload(const UploadResult& result) {
    switch (result.end) {
        case UploadEnd::Stored:
            slotsRead_ = true;
            edited_ = false;
            Say(QStringLiteral("The DAVO has stored all ten headers."));
            return;
        case UploadEnd::Differs:
            slotsRead_ = true;
            Say(QStringLiteral("The DAVO has not stored all headers as sent."));
            prompts_.Message(DifferingMessage(result.differing));
            return;
        case UploadEnd::NotReadBack:
            Say(QStringLiteral("The headers were sent and not read back."));
            prompts_.Message(QLatin1String(kNotReadBackMessage));
            return;
        case UploadEnd::NotReady:
        case UploadEnd::Ended:
            Say(QStringLiteral("Not all headers were saved. Please save them again."));
            return;
    }
}

void frmHeader::ShowProgress(std::size_t done) {
    if (done % kBarStep == 0) pbarProgress_->setValue(static_cast<int>(done));
    if (!std::exchange(askWhenSending_, false)) return;
    QTimer::singleShot(0, this, [this] { close(); });
}

// --- Unload -------------------------------------------------------------------------------------

void frmHeader::done(int result) {
    if (asking_) return;
    if (handlers_.Running()) {
        Leave();
        return;
    }
    QDialog::done(result);
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

void frmHeader::Leave() {
    if (!exchange_ || !MayLeave()) return;
    closeWanted_ = true;
    exchange_->Leave();
}

bool frmHeader::MayLeave() {
    if (!exchange_->Unfinished() || closeWanted_) return true;
    // An upload goes on behind the question, an erasure would wait: the instrument may not.
    if (!exchange_->Sending() && !askWhenSending_) {
        askWhenSending_ = true;
        return false;
    }
    const QScopedValueRollback asking(asking_, true);
    return prompts_.Agrees(QLatin1String(kLeaveQuestion));
}

}  // namespace davo
