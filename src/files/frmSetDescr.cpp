// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmSetDescr.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>
#include <utility>

#include "common/files.h"
#include "common/text.h"
#include "curves/beside_records.h"
#include "files/record_names.h"
#include "ui/form_parts.h"
#include "ui/frmNotepad.h"
#include "ui/page_header.h"
#include "ui/page_input.h"
#include "ui/record_list.h"

namespace davo {

namespace {

// A glove meets them.
constexpr int kBoxHeight = 32;
constexpr int kListHeight = 80;
constexpr int kBoxLetters = 20;

constexpr const char* kChangedMeanwhile =
    "The file '%1' has been changed since it was chosen. Do you want to write the header "
    "information into the changed file?";
constexpr const char* kLineTaken =
    "A line of the file '%1' would be taken for another one, and what belongs there would be lost. "
    "Do you want to save anyway?";
constexpr const char* kKeyInText =
    "What belongs there would be lost. Do you want to save '%1' anyway?";
constexpr const char* kNotSaved =
    "The changes to the file '%1' are not saved. Do you want to leave without them?";

constexpr const char* kEscapeKeeps = "Not saved yet. Press Save, or Exit, which saves, too.";

constexpr const char* kTestGone =
    "The file '%1' has no test %2 any more. What was typed for it is not saved.";

constexpr std::array<const char*, kHeaderFieldCount> kCaptions = {
    "Company:", "Station:", "Circuit:", "MFR:", "Model:", "Serial #:", "Comments:", "Operator:"};

// Puts text into box, its beginning in sight.
void ShowIn(QLineEdit* box, const QString& text) {
    box->setText(text);
    box->setCursorPosition(0);
}

// The text of box, trimmed, and cut to the width of a header field there too.
std::string TakeField(QLineEdit* box) {
    // The boxes refuse what is not in the page.
    const std::string text = TrimBlanks(ToPage(box->text()).value());
    const std::string cut = CutToField(text);
    if (cut != text) box->setText(FromPage(cut));
    return TrimBlanks(cut);
}

// What is told of boxes whose texts are cut.
QString CutText(const QStringList& captions) {
    return QStringLiteral("Cut to %1 characters: %2.")
        .arg(kHeaderFieldWidth)
        .arg(captions.join(QStringLiteral(", ")));
}

}  // namespace

frmSetDescr::frmSetDescr(DirectoryTables& directory, const QString& dataPath,
                         const QString& kneepointType, Prompts& prompts)
    : directory_(directory), dataPath_(dataPath), prompts_(prompts), handlers_(prompts) {
    setObjectName(QStringLiteral("frmSetDescr"));
    setWindowTitle(QStringLiteral("TEST Directory"));
    auto* cmdRecord = new BigButton(this, "cmdRecord", "S&how Record");
    cmdNotes_ = new BigButton(this, "cmdNotes", "&Notepad");
    cmdSave_ = new BigButton(this, "cmdSave", "&Save");
    cmdExit_ = new BigButton(this, "cmdExit", "&Exit");
    auto* page = new PageHeader(this, {cmdRecord, cmdNotes_, cmdSave_, cmdExit_});
    auto* controls = new QWidget(this);
    auto* column = WithMargin(new QVBoxLayout(controls), 0);
    column->addWidget(BuildLists(), 1);
    column->addWidget(BuildFrame());
    beside_ = new BesideRecords(controls, *lvTest_, 0.5, *cmdRecord, dataPath_, prompts_, this);
    beside_->Panel().SetMarker(kneepointType);
    page->Body()->addWidget(beside_);
    Connect();
    ShowStates();
    lvTest_->setFocus();
}

frmSetDescr::~frmSetDescr() {
    if (!file_ || !file_->changed) return;
    try {
        TakeHeader();
        // Nobody can be asked any more: a doubtful file is left as it is.
        if (ReadWholeFile(Path()) != file_->bytes) return;
        const MergedHeaders typed = EveryText(file_->headers);
        if (!SurvivesRewrite(file_->bytes, typed)) return;
        ReplaceFile(Path(), RewriteRecord(file_->bytes, typed));
    } catch (const std::exception&) {
        return;  // nor can anybody be told
    }
}

// --- Building -----------------------------------------------------------------------------------

QWidget* frmSetDescr::BuildLists() {
    auto* lists = new QWidget(this);
    auto* row = WithMargin(new QHBoxLayout(lists), 0);
    lvTest_ = Named(new RecordList(RecordColumns::UpToTests, lists), "lvTest");
    lvTest_->setSelectionMode(QAbstractItemView::SingleSelection);
    lvTest_->SortByHeadings();
    auto* records = new QVBoxLayout;
    records->addWidget(lvTest_->MakeFilter(this));
    records->addWidget(lvTest_, 1);
    row->addLayout(records, 1);

    auto* tests = new QVBoxLayout;
    lblFilename_ = Named(new QLabel(lists), "lblFilename");
    // A long name takes another line and does not widen the window.
    lblFilename_->setWordWrap(true);
    lblFilename_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    MakeBold(lblFilename_);
    lblFilename_->setMinimumHeight(lblFilename_->fontMetrics().height());
    auto* lblTest = new QLabel(
        QStringLiteral("Test(s) - Choose a Filename, then Click on Test(s) to Modify Test Header "
                       "Information"),
        lists);
    Named(lblTest, "lblTest")->setWordWrap(true);
    lstTest_ = Named(new QListWidget(lists), "lstTest");
    lstTest_->setAccessibleName(QStringLiteral("Tests"));
    MakeRows(lstTest_);
    tests->addWidget(lblFilename_);
    tests->addWidget(lblTest);
    tests->addWidget(lstTest_, 1);
    row->addLayout(tests, 1);
    for (QAbstractItemView* list : std::initializer_list<QAbstractItemView*>{lvTest_, lstTest_}) {
        // They take the height that is left over and ask for none.
        list->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
        list->setMinimumHeight(kListHeight);
    }
    return lists;
}

QLineEdit* frmSetDescr::AddBox(QGridLayout* grid, int row, int column, const char* caption,
                               const QString& name) {
    auto* box = Named(new QLineEdit(this), name);
    box->setMinimumHeight(kBoxHeight);
    box->setMinimumWidth(box->fontMetrics().averageCharWidth() * kBoxLetters);
    KeepToPage(box);
    auto* label = new QLabel(QLatin1String(caption), this);
    box->setAccessibleName(label->text().chopped(1));
    label->setBuddy(box);
    grid->addWidget(label, row, 2 * column);
    grid->addWidget(box, row, 2 * column + 1);
    return box;
}

QGroupBox* frmSetDescr::BuildFrame() {
    auto* frame = Named(new QGroupBox(QStringLiteral("Test Header Information"), this), "Frame1");
    frame->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* grid = new QGridLayout(frame);
    for (const int column : {1, 3, 5})
        grid->setColumnStretch(column, 1);
    txtFilenameData_ = AddBox(grid, 0, 0, "Filename:", QStringLiteral("txtFilenameData"));
    txtTimeData_ = AddBox(grid, 1, 0, "Time:", QStringLiteral("txtTimeData"));
    txtTestNumData_ = AddBox(grid, 2, 0, "Test#:", QStringLiteral("txtTestNumData"));
    txtTestDescr_ = AddBox(grid, 3, 0, "Test Descr:", QStringLiteral("txtTestDescr"));
    txtTestNotes_ = AddBox(grid, 4, 0, "Test Notes:", QStringLiteral("txtTestNotes"));
    for (QLineEdit* box : {txtTestDescr_, txtTestNotes_})
        CountCharacters(box, kHeaderFieldWidth);
    for (QLineEdit* box : {txtFilenameData_, txtTimeData_, txtTestNumData_}) {
        box->setReadOnly(true);
        box->setFocusPolicy(Qt::ClickFocus);
        // They are for reading, and look so.
        QPalette plain = box->palette();
        plain.setColor(QPalette::Base, plain.color(QPalette::Window));
        box->setPalette(plain);
    }
    constexpr int kRowsOfHeader = 4;
    for (int i = 0; i < kHeaderFieldCount; ++i) {
        txtHeader_.at(static_cast<std::size_t>(i)) =
            AddBox(grid, i % kRowsOfHeader, 1 + i / kRowsOfHeader,
                   kCaptions.at(static_cast<std::size_t>(i)), QStringLiteral("txtHeader%1").arg(i));
        CountCharacters(txtHeader_.at(static_cast<std::size_t>(i)), kHeaderFieldWidth);
    }
    lblState_ = MakeParagraph(frame, "lblState");
    lblState_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    grid->addWidget(lblState_, kRowsOfHeader, 2, 1, 4);
    return frame;
}

void frmSetDescr::Connect() {
    // Once the click is over: a question may come.
    connect(
        lvTest_, &QTreeWidget::itemSelectionChanged, this,
        [this] { handlers_.RunAlone([this] { lvTest_Click(); }); }, Qt::QueuedConnection);
    connect(lstTest_, &QListWidget::itemSelectionChanged, this,
            [this] { handlers_.Run([this] { lstTest_Click(); }); });
    // The first row is where a list's focus begins: Enter chooses it too.
    connect(lvTest_, &QTreeWidget::itemActivated, this,
            [](QTreeWidgetItem* item) { item->setSelected(true); });
    connect(lstTest_, &QListWidget::itemActivated, this,
            [](QListWidgetItem* item) { item->setSelected(true); });
    connect(txtTestDescr_, &QLineEdit::textEdited, this,
            [this] { TestTextChanged(txtTestDescr_, file_->headers.testDescriptions); });
    connect(txtTestNotes_, &QLineEdit::textEdited, this,
            [this] { TestTextChanged(txtTestNotes_, file_->headers.testNotes); });
    for (QLineEdit* box : txtHeader_)
        connect(box, &QLineEdit::textEdited, this, [this] { Changed(); });
    connect(cmdNotes_, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([this] { cmdNotes_Click(); }); });
    connect(cmdSave_, &QPushButton::clicked, this,
            [this] { handlers_.RunAlone([this] { WriteBack(); }); });
    connect(cmdExit_, &QPushButton::clicked, this, [this] { CloseForm(*this); });
    OnKey(this, Qt::Key_F5, [this] { handlers_.RunAlone([this] { ListAgain(); }); });
    OnKey(this, Qt::Key_Escape, [this] { handlers_.RunAlone([this] { EscapePressed(); }); });
}

// --- Events -------------------------------------------------------------------------------------

void frmSetDescr::Form_Load() {
    lvTest_->Fill(directory_, directory_.recordCount);
}

void frmSetDescr::ListAgain() {
    if (!MayLeaveFile()) return;
    const QString name = file_ ? file_->name : QString();
    const int test = test_;
    file_.reset();
    const RebuildResult& listing = ListFolder(dataPath_, directory_);
    Form_Load();
    lvTest_->SelectFiles({name});
    if (lvTest_->SelectedFiles().empty()) {
        lblState_->clear();
        ShowFile();
    } else {
        Choose(name);
        lstTest_->setCurrentRow(test);
    }
    if (!listing.unread.isEmpty()) prompts_.Message(UnreadText(listing, dataPath_));
}

// The exit button writes changes back; the key that is pressed to get rid of them must not.
void frmSetDescr::EscapePressed() {
    if (file_ && file_->changed) {
        lblState_->setText(QLatin1String(kEscapeKeeps));
    } else {
        QTimer::singleShot(0, this, [this] { CloseForm(*this); });
    }
}

void frmSetDescr::lvTest_Click() {
    const std::vector<QString> selected = lvTest_->SelectedFiles();
    if (!selected.empty() && file_ && selected.front() == file_->name) return;
    lblState_->clear();
    if (selected.empty() || !MayLeaveFile()) {
        // The row shown as chosen is that of the file in hand.
        if (file_) lvTest_->SelectFiles({file_->name});
        return;
    }
    Choose(selected.front());
}

void frmSetDescr::Choose(const QString& name) {
    file_.reset();
    try {
        std::string bytes = ReadWholeFile(dataPath_ + name);
        RecordHeaders headers = ReadRecordHeaders(bytes);
        file_ = {name, std::move(bytes), std::move(headers)};
    } catch (...) {
        lvTest_->clearSelection();
        ShowFile();
        throw;
    }
    ShowFile();
}

void frmSetDescr::ShowFile() {
    const RecordHeaders none;
    const RecordHeaders& headers = file_ ? file_->headers : none;
    QStringList named;
    for (const QTreeWidgetItem* row : lvTest_->selectedItems())
        named = {Name(), row->text(1), row->text(2)};
    lblFilename_->setText(named.join(QStringLiteral(" ** ")));
    lblFilename_->setToolTip(lblFilename_->text());
    ShowIn(txtFilenameData_, FromPage(headers.testNumber));
    ShowIn(txtTimeData_, FromPage(headers.time));
    for (std::size_t i = 0; i < txtHeader_.size(); ++i)
        ShowIn(txtHeader_.at(i), FromPage(headers.header.at(i)));
    {
        const QSignalBlocker quiet(lstTest_);
        lstTest_->clear();
        for (std::size_t i = 0; i < headers.recNumbers.size(); ++i)
            lstTest_->addItem(TestCaption(i));
        lstTest_->setCurrentRow(-1);
    }
    test_ = -1;
    ShowTest();
}

void frmSetDescr::lstTest_Click() {
    const QList<QListWidgetItem*> selected = lstTest_->selectedItems();
    test_ = selected.empty() ? -1 : lstTest_->row(selected.front());
    if (test_ >= 0) beside_->Panel().ChooseTest(static_cast<std::size_t>(test_));
    ShowTest();
}

void frmSetDescr::ShowTest() {
    const bool chosen = file_ && test_ >= 0;
    const auto test = static_cast<std::size_t>(chosen ? test_ : 0);
    const auto text = [&](const auto& texts) {
        return chosen ? FromPage(texts.at(test)) : QString();
    };
    ShowIn(txtTestNumData_, chosen ? FromPage(file_->headers.recNumbers.at(test)) : QString());
    ShowIn(txtTestDescr_, file_ ? text(file_->headers.testDescriptions) : QString());
    ShowIn(txtTestNotes_, file_ ? text(file_->headers.testNotes) : QString());
    ShowStates();
}

void frmSetDescr::ShowStates() {
    cmdSave_->setEnabled(file_.has_value());
    cmdNotes_->setEnabled(file_.has_value());
    for (QLineEdit* box : txtHeader_)
        box->setEnabled(file_.has_value());
    for (QLineEdit* box : {txtTestDescr_, txtTestNotes_})
        box->setEnabled(file_ && test_ >= 0);
}

QString frmSetDescr::TestCaption(std::size_t test) const {
    const RecordHeaders& headers = file_->headers;
    QString caption = QStringLiteral("Test ") + FromPage(headers.recNumbers.at(test));
    const std::string& description = headers.testDescriptions.at(test);
    if (!description.empty()) caption += QStringLiteral("   ") + FromPage(description);
    return caption;
}

void frmSetDescr::TestTextChanged(QLineEdit* box, std::array<std::string, kMostTests>& texts) {
    const QString typed = box->text();
    texts.at(static_cast<std::size_t>(test_)) = TakeField(box);
    Changed();
    if (box->text() != typed) lblState_->setText(CutText({box->accessibleName()}));
    lstTest_->item(test_)->setText(TestCaption(static_cast<std::size_t>(test_)));
}

void frmSetDescr::Changed() {
    file_->changed = true;
    lblState_->clear();
}

void frmSetDescr::cmdNotes_Click() {
    notepad_ = new frmNotepad(file_->headers.fileNotes, prompts_, this);
    notepad_->OnChanged = [this] { Changed(); };
    notepad_->open();
}

void frmSetDescr::closeEvent(QCloseEvent* event) {
    bool mayClose = false;
    handlers_.RunAlone([this, &mayClose] {
        // A notepad whose text cannot be taken over stays.
        mayClose = (notepad_.isNull() || notepad_->close()) && MayLeaveFile();
    });
    if (!mayClose) {
        event->ignore();
        return;
    }
    event->accept();
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

// --- The file -----------------------------------------------------------------------------------

QString frmSetDescr::Name() const {
    return ShownName(file_->name);
}

QStringList frmSetDescr::TakeHeader() {
    QStringList cut;
    for (std::size_t i = 0; i < txtHeader_.size(); ++i) {
        const QString before = txtHeader_.at(i)->text();
        file_->headers.header.at(i) = TakeField(txtHeader_.at(i));
        if (txtHeader_.at(i)->text() != before) cut += QLatin1String(kCaptions.at(i)).chopped(1);
    }
    return cut;
}

bool frmSetDescr::AgreesToLose(const RecordHeaders& headers) const {
    const QString told = TextsWithKeys(headers);
    const char* question = told.isEmpty() ? kLineTaken : kKeyInText;
    return prompts_.Agrees(told + QString(QLatin1String(question)).arg(Name()));
}

bool frmSetDescr::WriteBack() {
    const QStringList cut = TakeHeader();
    MergedHeaders merged;
    std::string current = ReadWholeFile(Path());
    // A question may be open for minutes: behind it the file is read again.
    for (std::optional<std::string> agreed; agreed != current; current = ReadWholeFile(Path())) {
        const bool changed = current != file_->bytes;
        const QString question = QString(QLatin1String(kChangedMeanwhile)).arg(Name());
        if (changed && !prompts_.Agrees(question)) return false;
        merged = changed ? MergeHeaders(ReadRecordHeaders(file_->bytes), file_->headers,
                                        ReadRecordHeaders(current))
                         : EveryText(file_->headers);
        if (!SurvivesRewrite(current, merged) && !AgreesToLose(merged.headers)) return false;
        agreed = std::move(current);
    }
    const bool changed = current != file_->bytes;
    std::string written = RewriteRecord(current, merged);
    ReplaceFile(Path(), written);
    file_->headers = std::move(merged.headers);
    Keep(std::move(written), cut);
    if (changed) ShowFile();
    for (const std::string& test : merged.testsGone)
        prompts_.Message(QString(QLatin1String(kTestGone)).arg(Name(), FromPage(test)));
    return true;
}

// The file in hand is saved as written, with the texts of cut boxes cut.
void frmSetDescr::Keep(std::string written, const QStringList& cut) {
    file_->bytes = std::move(written);
    file_->changed = false;
    beside_->ShowSelected();
    QString text = QStringLiteral("%1 is saved.").arg(Name());
    if (!cut.isEmpty()) text += QLatin1Char(' ') + CutText(cut);
    lblState_->setText(text);
    if (OnSaved) OnSaved(text);
}

bool frmSetDescr::MayLeaveFile() {
    if (!file_ || !file_->changed) return true;
    QString question = QString(QLatin1String(kNotSaved)).arg(Name());
    try {
        if (WriteBack()) return true;
    } catch (const std::exception& error) {
        question = QString::fromUtf8(error.what()) + QStringLiteral("\r\n\r\n") + question;
    }
    if (!prompts_.Agrees(question)) return false;
    file_->changed = false;
    return true;
}

}  // namespace davo
