// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/frmFileUtilOverlay.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "common/files.h"
#include "common/text.h"
#include "curves/beside_records.h"
#include "files/record_names.h"
#include "records/record_name.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"
#include "ui/record_list.h"

namespace davo {

namespace {

constexpr const char* kOverlayCaption = "Overlaying 2 Tests";
constexpr const char* kPlottingTwo = "Plotting 2 Excel Graphs , Please Wait...";
constexpr int kListShare = 3;
constexpr int kTestShare = 1;

enum Operation { Rename = 0, Copy = 1, Delete = 2 };
constexpr std::array kOperationCaptions = {"&Rename", "&Copy", "&Delete"};
constexpr std::array kOverlayCaptions = {"Graph #&1", "Graph #&2", "&Plot-It"};
// From left to right. What destroys is far from the way out.
constexpr std::array<std::size_t, 3> kOperationOrder = {Delete, Rename, Copy};
constexpr std::array<std::size_t, 3> kOverlayOrder = {0, 1, 2};

}  // namespace

frmFileUtilOverlay::frmFileUtilOverlay(FileUtilMode mode, const FileUtilSurroundings& around)
    : mode_(mode), around_(around), handlers_(around.prompts) {
    setObjectName(QStringLiteral("frmFileUtilOverlay"));
    setWindowTitle(IsOverlay() ? QLatin1String(kOverlayCaption) : QLatin1String("File Utilities"));
    if (IsOverlay()) setProperty("guidePlace", QStringLiteral("frmFileUtilOverlay-overlay"));
    auto* cmdRecord = new BigButton(this, "cmdRecord", "S&how Record");
    PageHeader* page = BuildButtons(cmdRecord);
    auto* controls = new QWidget(this);
    auto* column = WithMargin(new QVBoxLayout(controls), 0);
    column->setSpacing(kFormSpacing);
    auto* lists = new QHBoxLayout;
    const auto columns = IsOverlay() ? RecordColumns::UpToStation : RecordColumns::All;
    lvTest_ = Named(new RecordList(columns, this), QStringLiteral("lvTest"));
    lvTest_->setAccessibleName(windowTitle());
    lvTest_->setSelectionMode(IsOverlay() ? QAbstractItemView::SingleSelection
                                          : QAbstractItemView::ExtendedSelection);
    lvTest_->SortByHeadings();
    column->addWidget(lvTest_->MakeFilter(this));
    lists->addWidget(lvTest_, kListShare);
    lstTest_ = Named(new QListWidget(this), "lstTest");
    lstTest_->setAccessibleName(QStringLiteral("Tests of the chosen file"));
    lstTest_->setVisible(IsOverlay());
    MakeRows(lstTest_);
    lists->addWidget(lstTest_, kTestShare);
    column->addLayout(lists, 1);
    column->addWidget(BuildOverlay());
    lblMessage_ = MakeLabel(this, "lblMessage");
    lblMessage_->hide();
    column->addWidget(lblMessage_);
    const double listShare = IsOverlay() ? 1.0 * kListShare / (kListShare + kTestShare) : 1;
    beside_ = new BesideRecords(controls, *lvTest_, listShare, *cmdRecord,
                                around_.settings.dataPath, around_.prompts, this);
    beside_->Panel().SetMarker(around_.settings.kneepointType);
    beside_->Panel().OfferCompare(around_.settings);
    page->Body()->addWidget(beside_);
    Connect();
}

QGroupBox* frmFileUtilOverlay::BuildOverlay() {
    auto* frame = Named(new QGroupBox(this), "frmeOverlay");
    auto* grid = new QGridLayout(frame);
    for (int i = 0; i < 2; ++i) {
        const QString number = QString::number(i + 1);
        auto* box = Named(new QLineEdit(frame), QStringLiteral("txtTest") + number);
        box->setReadOnly(true);
        box->setAccessibleName(QStringLiteral("Graph #") + number);
        Enlarge(box);
        grid->addWidget(MakeLabel(frame, QStringLiteral("lblGraph") + number,
                                  QStringLiteral("Graph #%1:").arg(number)),
                        i, 0);
        grid->addWidget(box, i, 1);
        txtTest_.at(static_cast<std::size_t>(i)) = box;
    }
    frame->setVisible(IsOverlay());
    return frame;
}

PageHeader* frmFileUtilOverlay::BuildButtons(QWidget* cmdRecord) {
    frmeOp_ = Named(new QFrame(this), "frmeOp");
    auto* inner = WithMargin(new QHBoxLayout(frmeOp_), 0);
    const auto& captions = IsOverlay() ? kOverlayCaptions : kOperationCaptions;
    for (const std::size_t i : IsOverlay() ? kOverlayOrder : kOperationOrder) {
        cmdOp_.at(i) = new BigButton(frmeOp_, QStringLiteral("cmdOp%1").arg(i), captions.at(i));
        inner->addWidget(cmdOp_.at(i));
    }
    cmdExit_ = new BigButton(this, "cmdExit", "&Exit");
    return new PageHeader(this, {cmdRecord, frmeOp_, cmdExit_});
}

void frmFileUtilOverlay::Connect() {
    for (std::size_t i = 0; i < cmdOp_.size(); ++i) {
        connect(cmdOp_.at(i), &QPushButton::clicked, this,
                [this, i] { handlers_.RunAlone([&] { cmdOp_Click(static_cast<int>(i)); }); });
    }
    connect(cmdExit_, &QPushButton::clicked, this, [this] { CloseForm(*this); });
    OnKey(this, Qt::Key_F5, [this] { handlers_.RunAlone([this] { ListAgain(); }); });
    OnKey(this, Qt::Key_Escape, [this] {
        if (plotting_) {
            around_.reports->Cancel();
        } else {
            CloseForm(*this);
        }
    });
    if (!IsOverlay()) return;
    connect(lvTest_, &QTreeWidget::itemSelectionChanged, this,
            [this] { handlers_.RunAlone([&] { FillTests(); }); });
}

void frmFileUtilOverlay::Form_Load() {
    lvTest_->Fill(around_.directory, around_.directory.recordCount);
    if (IsOverlay() && around_.reports != nullptr) around_.reports->PrepareSoon(*this);
    lvTest_->setFocus();
}

// What is selected stays so, as far as it is still there.
void frmFileUtilOverlay::ListAgain() {
    const std::vector<QString> selected = lvTest_->SelectedFiles();
    const QString& dataPath = around_.settings.dataPath;
    const RebuildResult& listing = ListFolder(dataPath, around_.directory);
    lvTest_->Fill(around_.directory, around_.directory.recordCount);
    lvTest_->SelectFiles(selected);
    if (IsOverlay()) FillTests();
    if (!listing.unread.isEmpty()) around_.prompts.Message(UnreadText(listing, dataPath));
}

void frmFileUtilOverlay::cmdOp_Click(int index) {
    if (!IsOverlay()) {
        RunOperation(index);
    } else if (index < 2) {
        ChooseTest(index);
    } else {
        PlotIt();
    }
}

// --- File utilities -----------------------------------------------------------------------------

void frmFileUtilOverlay::RunOperation(int index) {
    const std::vector<QString> files = lvTest_->SelectedFiles();
    if (files.empty()) {
        const QLatin1String caption(kOperationCaptions.at(static_cast<std::size_t>(index)));
        around_.prompts.Message(QStringLiteral("Please choose File(s) to %1.").arg(caption.mid(1)));
        return;
    }
    const QString& dataPath = around_.settings.dataPath;
    if (index == Copy) {
        if (OnCopy) OnCopy(files);
    } else if (index == Rename) {
        RenameRecords(dataPath, files, around_.prompts);
    } else {
        DeleteRecords(dataPath, files, around_.prompts);
    }
    if (index != Copy) ListFolder(dataPath, around_.directory);
    QTimer::singleShot(0, this, [this] { CloseForm(*this); });
}

// --- Overlay ------------------------------------------------------------------------------------

void frmFileUtilOverlay::FillTests() {
    lstTest_->clear();
    const std::vector<QString> files = lvTest_->SelectedFiles();
    if (files.size() != 1) return;
    const QString path = around_.settings.dataPath + files.front();
    for (const std::string& entry : TestEntries(ReadWholeFile(path)))
        lstTest_->addItem(FromPage(entry));
    lstTest_->setCurrentRow(0);
}

void frmFileUtilOverlay::ChooseTest(int graph) {
    const std::vector<QString> files = lvTest_->SelectedFiles();
    const QListWidgetItem* entry = lstTest_->currentItem();
    if (files.size() != 1 || entry == nullptr) {
        around_.prompts.Message(
            QStringLiteral("Please choose a Test for Graph #%1").arg(graph + 1));
        return;
    }
    const auto i = static_cast<std::size_t>(graph);
    chosen_.at(i) = OverlayTestOf(files.front(), entry->text());
    txtTest_.at(i)->setText(OverlayTestText(RecordNameOf(files.front()), entry->text()));
    ShowGraphs();
}

// What is chosen so far, in the panel.
void frmFileUtilOverlay::ShowGraphs() {
    std::vector<ShownRecord> graphs;
    for (std::size_t i = 0; i < chosen_.size(); ++i) {
        if (const auto& test = chosen_.at(i))
            graphs.push_back({around_.settings.dataPath + test->file,
                              QStringLiteral("Graph #%1").arg(i + 1), test->number});
    }
    beside_->Panel().Show(graphs);
}

void frmFileUtilOverlay::PlotIt() {
    for (std::size_t i = 0; i < txtTest_.size(); ++i) {
        if (!txtTest_.at(i)->text().isEmpty()) continue;
        around_.prompts.Message(QStringLiteral("Please choose a Test for Graph #%1").arg(i + 1));
        txtTest_.at(i)->setFocus();
        return;
    }
    if (around_.reports == nullptr) return;
    const QString caption = windowTitle();
    const std::array<QWidget*, 3> resting = {lvTest_, lstTest_, frmeOp_};
    for (QWidget* control : resting)
        control->setEnabled(false);
    setWindowTitle(QLatin1String(kPlottingTwo));
    lblMessage_->setText(windowTitle());
    lblMessage_->show();
    cmdExit_->setFocus();
    {
        const QScopedValueRollback plotting(plotting_, true);
        handlers_.Run([this] { BuildOverlayReport(); });
    }
    lblMessage_->hide();
    setWindowTitle(caption);
    for (QWidget* control : resting)
        control->setEnabled(true);
    if (closeWanted_) QTimer::singleShot(0, this, [this] { CloseForm(*this); });
}

void frmFileUtilOverlay::BuildOverlayReport() {
    ReportRunner& reports = *around_.reports;
    const QString workbook = reports.OverlayWorkbook();
    if (FileExists(workbook)) DeleteFile(workbook);
    if (!chosen_.at(0) || !chosen_.at(1)) return;
    const QString& dataPath = around_.settings.dataPath;
    WriteGroupFile(dataPath, *chosen_.at(0), *chosen_.at(1));
    reports.RunOverlay(dataPath + QLatin1String(kGroupFileName), [this](const QString& text) {
        lblMessage_->setText(QLatin1String(kPlottingTwo) + QLatin1Char('\n') + text);
    });
}

// --- Leaving ------------------------------------------------------------------------------------

void frmFileUtilOverlay::closeEvent(QCloseEvent* event) {
    if (handlers_.Running()) {
        // What is under way comes to its end first.
        closeWanted_ = plotting_;
        if (plotting_) around_.reports->Cancel();
        event->ignore();
        return;
    }
    event->accept();
    if (OnUnload) std::exchange(OnUnload, nullptr)();
}

}  // namespace davo
