// SPDX-License-Identifier: GPL-3.0-or-later
#include "retrieval/frmTestList.h"

#include <QButtonGroup>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QRadioButton>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QStringList>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "common/files.h"
#include "common/places.h"
#include "curves/beside_records.h"
#include "records/record_name.h"
#include "records/sorting.h"
#include "retrieval/memory_directory.h"
#include "retrieval/record_download.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"
#include "ui/record_list.h"

namespace davo {

namespace {

constexpr double kStatusGrowth = 1.5;
constexpr int kOptionRoom = 24;
constexpr int kLeastListRows = 4;

// An option as the window shows it and as the settings hold it.
struct Option {
    const char* caption;
    std::int16_t setting;
};
constexpr std::array kDisplayOptions{Option{"Filename", kDisplayFilename},
                                     Option{"Date", kDisplayDate},
                                     Option{"Station", kDisplayStation}};
constexpr std::array kSortOptions{Option{"Ascending", 0}, Option{"Descending", kDescending}};

// What is told of record files that a rebuild did not list; empty when all are listed.
QString NotListedText(const RebuildResult& result) {
    QStringList lines;
    const auto skipped = static_cast<int>(result.skipped.size());
    if (skipped > 0) {
        const SkippedFile& first = result.skipped.front();
        QString line = QStringLiteral("Not listed: ") + first.name + QLatin1Char(' ') +
                       SkipReasonText(first.reason);
        if (skipped > 1)
            line += skipped == 2 ? QStringLiteral(", and 1 more damaged file")
                                 : QStringLiteral(", and %1 more damaged files").arg(skipped - 1);
        lines += line + QLatin1Char('.');
    }
    if (result.notListed > 0) {
        lines += QStringLiteral("Not listed: %1 beyond the %2 that a list can hold.")
                     .arg(result.notListed == 1 ? QStringLiteral("1 file")
                                                : QStringLiteral("%1 files").arg(result.notListed))
                     .arg(kMostListedRecords);
    }
    return lines.join(QLatin1Char(' '));
}

}  // namespace

frmTestList::frmTestList(ListMode mode, TestListSurroundings around, QWidget* parent)
    : QWidget(parent), mode_(mode), around_(std::move(around)), handlers_(around_.prompts) {
    setObjectName(QStringLiteral("frmTestList"));
    setWindowTitle(QStringLiteral("DAVO Memory Content"));
    if (mode_ == ListMode::Instrument)
        setProperty("guidePlace", QStringLiteral("frmTestList-memory"));
    auto* cmdRecord = new BigButton(this, "cmdRecord", "S&how Record");
    cmdSave_ = new BigButton(this, "cmdSave", "&Save");
    cmdExit_ = new BigButton(this, "cmdExit", "&Exit");
    auto* page = new PageHeader(this, {cmdRecord, cmdSave_, cmdExit_});
    auto* controls = new QWidget(this);
    auto* column = WithMargin(new QVBoxLayout(controls), 0);
    BuildTop(column);
    BuildList(column);
    BuildBottom(column);
    if (mode_ == ListMode::Folder) {
        auto* beside = new BesideRecords(controls, *lvTest_, 1, *cmdRecord,
                                         around_.settings.dataPath, around_.prompts, this);
        beside->Panel().SetMarker(around_.settings.kneepointType);
        beside->Panel().OfferCompare(around_.settings);
        page->Body()->addWidget(beside);
    } else {
        cmdRecord->hide();
        page->Body()->addWidget(controls);
    }
    Connect();
}

void frmTestList::BuildTop(QBoxLayout* column) {
    auto* row = new QHBoxLayout;
    frameDisplaySort_ = Named(new QGroupBox(this), "frameDisplaySort");
    BuildOptions(frameDisplaySort_);
    row->addWidget(frameDisplaySort_);
    row->addStretch();
    cmdRefresh_ = new BigButton(this, "cmdRefresh", "&Refresh");
    cmdDir_ = new BigButton(this, "cmdDir", "&Change DIR");
    row->addWidget(cmdRefresh_);
    row->addWidget(cmdDir_);
    column->addLayout(row);
}

void frmTestList::BuildOptions(QWidget* frame) {
    auto* grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(kOptionRoom);
    const auto addRow = [this, grid, frame](const char* label, const char* caption,
                                            const char* name, const auto& options) {
        const int row = grid->rowCount();
        grid->addWidget(MakeLabel(frame, label, QLatin1String(caption)), row, 0);
        auto* group = new QButtonGroup(this);
        for (const auto& [text, setting] : options) {
            auto* button = new QRadioButton(QLatin1String(text), frame);
            Named(button, QLatin1String(name) + QString::number(group->buttons().size()));
            Enlarge(button);
            // The Tab key goes to the one that is chosen.
            button->setFocusPolicy(Qt::ClickFocus);
            connect(button, &QRadioButton::toggled, button, [button](bool chosen) {
                button->setFocusPolicy(chosen ? Qt::StrongFocus : Qt::ClickFocus);
            });
            group->addButton(button, setting);
            grid->addWidget(button, row, static_cast<int>(group->buttons().size()));
        }
        return group;
    };
    optDisplay_ = addRow("lblDisplay", "Display:", "optDisplay", kDisplayOptions);
    optSort_ = addRow("lblSort", "Sort:", "optSort", kSortOptions);
}

void frmTestList::BuildList(QBoxLayout* column) {
    txtFolder_ = Named(new QLineEdit(this), "txtFolder");
    txtFolder_->setReadOnly(true);
    txtFolder_->setFrame(false);
    txtFolder_->setFocusPolicy(Qt::NoFocus);
    QPalette flat = txtFolder_->palette();
    flat.setColor(QPalette::Base, palette().color(QPalette::Window));
    txtFolder_->setPalette(flat);
    Enlarge(txtFolder_);
    lvTest_ = Named(new RecordList(RecordColumns::All, this), "lvTest");
    lvTest_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lvTest_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lvTest_->setTabKeyNavigation(false);
    lvTest_->setMinimumHeight(lvTest_->fontMetrics().height() * 2 * kLeastListRows);
    filter_ = lvTest_->MakeFilter(this);
    auto* row = new QHBoxLayout;
    row->addWidget(txtFolder_, 3);
    row->addWidget(filter_, 2);
    column->addLayout(row);
    column->addWidget(lvTest_, 1);
}

void frmTestList::BuildBottom(QBoxLayout* column) {
    auto* facts = new QHBoxLayout;
    lblStatus_ = MakeLabel(this, "lblStatus", {}, kStatusGrowth);
    lblSelect_ = MakeLabel(this, "lblSelect", {}, kStatusGrowth);
    facts->addWidget(lblStatus_);
    facts->addStretch();
    facts->addWidget(lblSelect_);
    column->addLayout(facts);

    lblMessage_ = MakeParagraph(this, "lblMessage", {}, kStatusGrowth);
    column->addWidget(lblMessage_);
    pbarProgress_ = Named(new QProgressBar(this), "pbarProgress");
    Enlarge(pbarProgress_);
    // The list keeps its place when the bar appears.
    if (mode_ == ListMode::Instrument) KeepRoomWhenHidden(pbarProgress_);
    pbarProgress_->hide();
    column->addWidget(pbarProgress_);
}

void frmTestList::Connect() {
    const auto on = [this](QPushButton* button, void (frmTestList::*handler)()) {
        connect(button, &QPushButton::clicked, this,
                [this, handler] { handlers_.RunAlone([this, handler] { (this->*handler)(); }); });
    };
    on(cmdRefresh_, &frmTestList::cmdRefresh_Click);
    on(cmdDir_, &frmTestList::cmdDir_Click);
    on(cmdSave_, &frmTestList::cmdSave_Click);
    // It is there to leave what runs.
    connect(cmdExit_, &QPushButton::clicked, this, [this] { cmdExit_Click(); });
    connect(lvTest_, &QTreeWidget::itemSelectionChanged, this,
            [this] { lvTest_SelectionChange(); });
    connect(lvTest_, &QTreeWidget::itemDoubleClicked, cmdSave_, &QPushButton::click);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* enter = new QShortcut(key, lvTest_, nullptr, nullptr, Qt::WidgetShortcut);
        enter->setAutoRepeat(false);
        connect(enter, &QShortcut::activated, cmdSave_, &QPushButton::click);
    }
    OnKey(this, Qt::Key_Escape, [this] { cmdExit_Click(); });
    OnKey(this, Qt::Key_F5, [this] { cmdRefresh_->click(); });
}

// --- Load and the list --------------------------------------------------------------------------

void frmTestList::Form_Load() {
    CentreForm(*this, parentWidget());
    SetOptionButtons();
    ShowFolder();
    around_.tables.recordsFromInstrument = mode_ == ListMode::Instrument;
    if (mode_ == ListMode::Instrument) {
        MemoryDirectory memory = BuildEntries(around_.dirReply);
        lblMessage_->setText(NotListedText(memory));
        records_.clear();
        for (std::string& entry : memory.entries)
            records_.push_back({std::move(entry), {}});
        cmdSave_->setText(QStringLiteral("Save"));
        cmdSave_->setShortcut(Qt::ALT | Qt::Key_S);
    } else {
        EntriesFromFolder();
        cmdSave_->setText(QStringLiteral("View"));
        cmdSave_->setShortcut(Qt::ALT | Qt::Key_V);
    }
    DisplayAndSort();
    lvTest_->setFocus();
}

void frmTestList::SetOptionButtons() {
    Settings& settings = around_.settings;
    settings.sortDisplay = ValidDisplay(settings.sortDisplay);
    settings.sortOrder = ValidOrder(settings.sortOrder);
    optDisplay_->button(settings.sortDisplay)->setChecked(true);
    optSort_->button(settings.sortOrder)->setChecked(true);
}

// The loaded directory, as far as it is whole, and what is to be known about it.
void frmTestList::EntriesFromFolder() {
    const DirectoryTables& tables = around_.tables;
    const auto count = std::clamp<std::ptrdiff_t>(
        tables.recordCount, 0, static_cast<std::ptrdiff_t>(tables.dirEntries.size()));
    records_.clear();
    for (std::size_t i = 0; std::cmp_less(i, count); ++i)
        records_.push_back({tables.dirEntries[i], RecordFileOf(tables, i)});
    const int damaged = KeepWholeEntries(records_);
    const RebuildResult& listing = tables.listing;
    QStringList notes{UnreadText(listing, around_.settings.dataPath), NotListedText(listing)};
    if (!listing.unread.isEmpty())
        notes += QStringLiteral("Refresh reads it again, Change DIR chooses another one.");
    if (damaged > 0)
        notes += QStringLiteral("Not listed: %1 damaged lines of the directory.").arg(damaged);
    notes += {CleanedText(listing), NotSavedText(listing)};
    notes.removeAll(QString());
    if (notes.isEmpty() && records_.empty())
        notes += QStringLiteral("There are no test records in this folder.");
    lblMessage_->setText(notes.join(QLatin1Char(' ')));
}

void frmTestList::DisplayAndSort() {
    records_ = davo::DisplayAndSort(std::move(records_), around_.settings.sortDisplay,
                                    around_.settings.sortOrder);
    std::vector<std::string> entries;
    for (const ListedRecord& record : records_)
        entries.push_back(record.entry);
    DirectoryTables& tables = around_.tables;
    if (mode_ == ListMode::Instrument) {
        tables.dirEntriesNew = std::move(entries);
    } else {
        tables.dirEntries = std::move(entries);
        tables.recordCount = static_cast<std::int16_t>(records_.size());
        tables.dirFileNames.clear();
        for (const ListedRecord& record : records_)
            tables.dirFileNames.push_back(record.file);
    }
    lvTest_->Fill(tables, static_cast<int>(records_.size()));
    lvTest_SelectionChange();
    ShowTotal(records_.size());
}

void frmTestList::cmdRefresh_Click() {
    Settings& settings = around_.settings;
    settings.sortOrder = static_cast<std::int16_t>(optSort_->checkedId());
    settings.sortDisplay = static_cast<std::int16_t>(optDisplay_->checkedId());
    if (mode_ == ListMode::Folder) {
        ListFolder(settings.dataPath, around_.tables);
        EntriesFromFolder();
    }
    DisplayAndSort();
}

// --- Change folder ------------------------------------------------------------------------------

void frmTestList::cmdDir_Click() {
    ShowTotal(0);
    const auto total = qScopeGuard([this] { ShowTotal(records_.size()); });
    const QString chosen = around_.prompts.ChooseFolder(QStringLiteral("&Select a directory:"),
                                                        QStringLiteral("C:\\"));
    if (!chosen.isEmpty()) ChangeFolder(chosen);
}

void frmTestList::ChangeFolder(const QString& chosen) {
    Settings& settings = around_.settings;
    const JobFolders wanted = FoldersOf(chosen);
    QScopedValueRollback dataPath(settings.dataPath, wanted.dataPath);
    QScopedValueRollback excelPath(settings.excelPath, wanted.excelPath);
    if (!MakeFolders()) return;
    DirectoryTables before = around_.tables;
    const RebuildResult& listing = ListFolder(settings.dataPath, around_.tables);
    if (!listing.unread.isEmpty()) {
        around_.prompts.Message(UnreadText(listing, settings.dataPath));
        around_.tables = std::move(before);
        return;
    }
    dataPath.commit();
    excelPath.commit();
    ShowFolder();
    if (mode_ == ListMode::Folder) {
        EntriesFromFolder();
    } else {
        // What is listed is the memory still.
        QStringList notes{NotListedText(BuildEntries(around_.dirReply)), NotListedText(listing)};
        notes.removeAll(QString());
        lblMessage_->setText(notes.join(QLatin1Char(' ')));
    }
    DisplayAndSort();
}

bool frmTestList::MakeFolders() {
    const Settings& settings = around_.settings;
    if (!FolderExists(settings.dataPath)) {
        const Answer answer = around_.prompts.YesNo(
            settings.dataPath + QStringLiteral("\r\n does not exist. Create (Y/N)?"), Answer::No);
        if (answer != Answer::Yes) return false;
        CreateFolder(settings.dataPath);
    }
    // Records can be listed and fetched without it.
    handlers_.Run([&] {
        if (FolderExists(settings.excelPath)) return;
        CreateFolder(settings.excelPath);
        if (OnExcelFolderMade) OnExcelFolderMade(settings.excelPath);
    });
    return true;
}

// --- Save and View ------------------------------------------------------------------------------

void frmTestList::cmdSave_Click() {
    if (lvTest_->SelectedRows().empty()) {
        around_.prompts.Message(mode_ == ListMode::Instrument
                                    ? QStringLiteral("Please choose File(s) to Download.")
                                    : QStringLiteral("Please choose a File to View."));
        lvTest_->setFocus();
    } else if (mode_ == ListMode::Instrument) {
        Download(lvTest_->SelectedRows());
    } else {
        View(lvTest_->SelectedFiles());
    }
}

void frmTestList::Download(const std::vector<int>& rows) {
    DirectoryTables& tables = around_.tables;
    tables.dirEntries.clear();
    for (const int row : rows)
        tables.dirEntries.push_back(records_.at(static_cast<std::size_t>(row)).entry);
    tables.recordCount = static_cast<std::int16_t>(rows.size());
    RecordDownload download(around_.link, around_.prompts, tables, around_.settings.dataPath,
                            around_.scratchFolder);
    download.OnStatus = [this](const QString& text) { lblStatus_->setText(text); };
    download.OnActivity = [this](const QString& text) {
        if (!closeWanted_) lblMessage_->setText(text);
    };
    download.OnProgress = [this](std::size_t done, std::size_t total) {
        pbarProgress_->setRange(0, std::max(1, static_cast<int>(total)));
        pbarProgress_->setValue(static_cast<int>(done));
    };
    const QScopedValueRollback leave(leave_,
                                     std::function<void()>([&download] { download.Leave(); }));
    While(Activity::Download, [this, &rows, &download] {
        const DownloadResult result = download.Run();
        lblMessage_->setText(QStringLiteral("%1 of %2 records were saved.")
                                 .arg(result.written.size())
                                 .arg(rows.size()));
    });
}

void frmTestList::View(const std::vector<QString>& files) {
    if (!Reports.make) return;
    const QString which = files.size() == 1 ? QString()
                                            : QStringLiteral("Of %1 selected files %2 is shown.")
                                                  .arg(files.size())
                                                  .arg(RecordNameOf(files.front()));
    const QString file = around_.settings.dataPath + files.front();
    const QScopedValueRollback leave(leave_, Reports.leave);
    While(Activity::Report, [this, &file, &which] {
        lblMessage_->setText(
            (QLatin1String(kPlottingCaption) + QLatin1Char('\n') + which).trimmed());
        const auto hide = qScopeGuard([this, &which] { lblMessage_->setText(which); });
        Reports.make(file, [this](const QString& text) { lblStatus_->setText(text); });
    });
}

template <class Work>
void frmTestList::While(Activity activity, const Work& work) {
    const std::array<QWidget*, 6> idle{frameDisplaySort_, cmdRefresh_, cmdDir_,
                                       filter_,           lvTest_,     cmdSave_};
    cmdExit_->setFocus();
    for (QWidget* widget : idle)
        widget->setEnabled(false);
    pbarProgress_->setVisible(activity == Activity::Download);
    const auto restore = qScopeGuard([this, &idle] {
        pbarProgress_->hide();
        for (QWidget* widget : idle)
            widget->setEnabled(true);
        lvTest_->setFocus();
        ShowTotal(records_.size());
        // The handler that called this one comes to its end first.
        if (closeWanted_) QTimer::singleShot(0, this, [this] { CloseForm(*this); });
    });
    const QScopedValueRollback running(activity_, activity);
    work();
}

void frmTestList::lvTest_SelectionChange() {
    lblSelect_->setText(QStringLiteral("Select: %1 of %2")
                            .arg(lvTest_->selectionModel()->selectedRows().size())
                            .arg(lvTest_->topLevelItemCount()));
}

void frmTestList::ShowTotal(std::size_t count) {
    lblStatus_->setText(QStringLiteral("Total Records: %1").arg(count));
}

void frmTestList::ShowFolder() {
    txtFolder_->setText(ShownPath(around_.settings.dataPath));
    txtFolder_->setToolTip(txtFolder_->text());
}

// --- Leave --------------------------------------------------------------------------------------

void frmTestList::cmdExit_Click() {
    if (activity_ == Activity::None) {
        if (!handlers_.Running()) CloseForm(*this);
        return;
    }
    closeWanted_ = true;
    lblMessage_->setText(QStringLiteral("Leaving, Please Wait..."));
    if (leave_) leave_();
}

void frmTestList::closeEvent(QCloseEvent* event) {
    if (activity_ != Activity::None || handlers_.Running()) {
        event->ignore();
        cmdExit_Click();
        return;
    }
    event->accept();
    around_.tables.recordsFromInstrument = false;
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

}  // namespace davo
