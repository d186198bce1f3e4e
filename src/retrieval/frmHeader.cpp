#include "retrieval/frmHeader.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "common/frmNotepad.h"
#include "common/page_input.h"
#include "common/text.h"

namespace davo {

namespace {

// A glove meets them.
constexpr int kBoxHeight = 32;
constexpr int kButtonHeight = 44;

}  // namespace

frmHeader::frmHeader(HeaderTable& header, std::string& testNotes, Prompts& prompts, QWidget* parent)
    : QDialog(parent),
      header_(header),
      testNotes_(testNotes),
      prompts_(prompts),
      handlers_(prompts) {
    setObjectName(QStringLiteral("frmHeader"));
    setWindowTitle(QStringLiteral("Test Record Header Information"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* column = new QVBoxLayout(this);
    BuildBoxes(column);
    BuildButtons(column);
    connect(cmdSave_, &QPushButton::clicked, this,
            [this] { handlers_.Run([this] { cmdSave_Click(); }); });
    connect(cmdNotes_, &QPushButton::clicked, this,
            [this] { handlers_.Run([this] { cmdNotes_Click(); }); });
    connect(cmdExit_, &QPushButton::clicked, this, &QDialog::close);
}

void frmHeader::BuildBoxes(QVBoxLayout* column) {
    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        const auto at = static_cast<std::size_t>(i);
        auto* box = new QLineEdit(this);
        box->setObjectName(QStringLiteral("txtHeader%1").arg(i));
        box->setText(FromPage(TrimBlanks(header_.Field(i))));
        box->setMinimumWidth(box->fontMetrics().averageCharWidth() * 32);
        box->setMinimumHeight(kBoxHeight);
        KeepToPage(box);
        // What the boxes hold is no longer what is used.
        connect(box, &QLineEdit::textEdited, this, [this] { lblUsed_->clear(); });
        auto* label = new QLabel(QLatin1String(kHeaderKeys.at(at)) + QLatin1Char(':'), this);
        label->setBuddy(box);
        form->addRow(label, box);
        txtHeader_.at(at) = box;
    }
    column->addLayout(form);
    lblUsed_ = new QLabel(this);
    lblUsed_->setObjectName(QStringLiteral("lblUsed"));
    column->addWidget(lblUsed_);
}

void frmHeader::BuildButtons(QVBoxLayout* column) {
    auto* row = new QHBoxLayout;
    const auto add = [this, row](const char* name, const char* caption) {
        auto* button = new QPushButton(QLatin1String(caption), this);
        button->setObjectName(QLatin1String(name));
        button->setMinimumHeight(kButtonHeight);
        row->addWidget(button);
        return button;
    };
    cmdSave_ = add("cmdSave", "&Use Header");
    cmdNotes_ = add("cmdNotes", "&Notepad");
    cmdExit_ = add("cmdExit", "&Exit");
    cmdSave_->setDefault(true);
    column->addLayout(row);
}

void frmHeader::cmdSave_Click() {
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        QLineEdit* box = txtHeader_.at(static_cast<std::size_t>(i));
        // The boxes refuse what is not in the page.
        std::string text = ToPage(box->text()).value();
        header_.Field(i) = TakeHeaderField(text);
        box->setText(FromPage(text));
    }
    lblUsed_->setText(QStringLiteral("This header is used for the tests that follow."));
    if (OnChanged) OnChanged();
}

void frmHeader::cmdNotes_Click() {
    auto* notepad = new frmNotepad(testNotes_, prompts_, this);
    notepad->OnChanged = OnChanged;
    notepad->open();
}

}  // namespace davo
