// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/record_panel.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStringList>
#include <QTextDocumentFragment>
#include <QVBoxLayout>
#include <algorithm>
#include <span>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "curves/curve_chart.h"
#include "curves/curve_export.h"
#include "curves/record_texts.h"
#include "curves/results_table.h"
#include "records/record_name.h"
#include "ui/big_button.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

// Many selections at once are shown once; a key that is held down repeats more slowly.
constexpr int kSoon = 10;
constexpr std::size_t kMostNormalCurves = 10;
constexpr double kTitleGrowth = 1.4;
constexpr double kTextGrowth = 1.1;
constexpr int kButtonHeight = 40;
constexpr int kDoubtLines = 4;
constexpr int kLeastDoubtLines = 2;
constexpr int kLeastRows = 3;
constexpr int kChartHeight = 280;
constexpr int kLeastChartHeight = 250;
// A panel that is as low and as wide as that has its facts beside the chart.
constexpr int kLowHeight = 600;
constexpr int kWideWidth = 680;
constexpr int kChartShare = 3;
constexpr int kFactsShare = 2;
constexpr int kRoom = 6;
constexpr QSize kPicture(1600, 1100);
constexpr QSize kUsualSize(480, 640);

QLabel* MakeLabel(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setWordWrap(true);
    label->setMinimumWidth(1);
    return label;
}

}  // namespace

RecordPanel::RecordPanel(Prompts& prompts, QWidget* parent) : QWidget(parent), prompts_(prompts) {
    setObjectName(QStringLiteral("RecordPanel"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(kRoom, 0, 0, 0);
    column->setSpacing(kRoom);
    BuildTop(column);
    body_ = new QBoxLayout(QBoxLayout::TopToBottom);
    column->addLayout(body_, 1);
    chart_ = new CurveChart(this);
    chart_->setObjectName(QStringLiteral("chtCurves"));
    body_->addWidget(chart_, 1);
    facts_ = new QVBoxLayout;
    body_->addLayout(facts_);
    BuildTable(facts_);
    lblSaved_ = MakeLabel("lblSaved", this);
    lblSaved_->setTextFormat(Qt::PlainText);
    lblSaved_->hide();
    column->addWidget(lblSaved_);
    BuildButtons(column);
    soon_.setSingleShot(true);
    soon_.setInterval(kSoon);
    connect(&soon_, &QTimer::timeout, this, [this] { ReadAndShow(); });
    ReadAndShow();
}

void RecordPanel::BuildTop(QBoxLayout* column) {
    lblRecord_ = MakeLabel("lblRecord", this);
    lblRecord_->setTextFormat(Qt::PlainText);
    Enlarge(lblRecord_, kTitleGrowth);
    MakeBold(lblRecord_);
    lblHeader_ = MakeLabel("lblHeader", this);
    lblHeader_->setTextFormat(Qt::RichText);
    lblTrouble_ = MakeLabel("lblTrouble", this);
    lblTrouble_->setTextFormat(Qt::PlainText);
    Enlarge(lblTrouble_, kTextGrowth);
    MakeBold(lblTrouble_);
    for (QLabel* label : {lblRecord_, lblHeader_, lblTrouble_})
        column->addWidget(label);
}

void RecordPanel::BuildTable(QBoxLayout* column) {
    tblTests_ = new ResultsTable(this);
    column->addWidget(tblTests_);
    connect(tblTests_, &QTableWidget::currentCellChanged, this,
            [this](int /*row*/, int test, int /*rowBefore*/, int before) {
                if (test == before) return;
                ShowCurves();
                ShowDoubts();
            });
    txtDoubts_ = new QPlainTextEdit(this);
    txtDoubts_->setObjectName(QStringLiteral("txtDoubts"));
    txtDoubts_->setAccessibleName(QStringLiteral("What is doubtful"));
    txtDoubts_->setReadOnly(true);
    txtDoubts_->setTabChangesFocus(true);
    txtDoubts_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    Enlarge(txtDoubts_, kTextGrowth);
    column->addWidget(txtDoubts_);
}

void RecordPanel::BuildButtons(QBoxLayout* column) {
    buttons_ = new QHBoxLayout;
    cmdBack_ = new BigButton(this);
    cmdBack_->setObjectName(QStringLiteral("cmdBack"));
    cmdBack_->setText(QStringLiteral("&Back to the List"));
    cmdBack_->setFont(font());
    cmdBack_->setMinimumHeight(kButtonHeight);
    cmdBack_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    cmdBack_->hide();
    buttons_->addWidget(cmdBack_);
    connect(cmdBack_, &QPushButton::clicked, this, [this] { OnBack(); });
    const auto add = [&](const char* name, const char* caption) {
        auto* button = new QPushButton(QLatin1String(caption), this);
        button->setObjectName(QLatin1String(name));
        button->setMinimumHeight(kButtonHeight);
        button->setAutoDefault(true);
        buttons_->addWidget(button);
        return button;
    };
    // Letters that no window with a list of records uses.
    cmdSavePng_ = add("cmdSavePng", "Save as PN&G...");
    cmdSavePdf_ = add("cmdSavePdf", "Save &as PDF...");
    cmdSaveCsv_ = add("cmdSaveCsv", "Save CSV &Table...");
    column->addLayout(buttons_);
    connect(cmdSavePng_, &QPushButton::clicked, this, [this] {
        Save(QStringLiteral(".png"),
             [this](const QString& path) { chart_->SavePng(path, kPicture); });
    });
    connect(cmdSavePdf_, &QPushButton::clicked, this, [this] {
        Save(QStringLiteral(".pdf"), [this](const QString& path) { chart_->SavePdf(path); });
    });
    connect(cmdSaveCsv_, &QPushButton::clicked, this, [this] { cmdSaveCsv_Click(); });
}

// --- Showing ------------------------------------------------------------------------------------

void RecordPanel::ShowRecords(const std::vector<QString>& files) {
    files_ = files;
    ShowSaved({});
    if (isVisible()) soon_.start();
}

void RecordPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    soon_.start();
}

void RecordPanel::ReadAndShow() {
    ReadFiles();
    ShowTop();
    tblTests_->Fill(tests_);
    ShowCurves();
    const bool any = !tests_.empty();
    tblTests_->setVisible(any);
    Arrange();
    chart_->SetInteractive(any);
    for (QPushButton* button : {cmdSavePng_, cmdSavePdf_, cmdSaveCsv_})
        button->setEnabled(any);
}

// Reads what is new or has changed, and forgets what is not shown.
void RecordPanel::ReadFiles() {
    std::map<QString, Read> before = std::move(read_);
    read_.clear();
    records_.clear();
    tests_.clear();
    const std::size_t count = std::min(files_.size(), kMostShownRecords);
    for (std::size_t i = 0; i < count; ++i) {
        const QString& file = files_.at(i);
        const QFileInfo info(file);
        Read& read = read_[file];
        const auto known = before.find(file);
        if (known != before.end() && known->second.changed == info.lastModified() &&
            known->second.size == info.size() && known->second.facts) {
            read = std::move(known->second);
        } else {
            read.changed = info.lastModified();
            read.size = info.size();
            try {
                read.facts = ReadRecordFacts(file);
            } catch (const RunTimeError& error) {
                read.trouble = TroubleText(info.completeBaseName(), error);
            }
        }
        if (read.facts) records_.push_back(&*read.facts);
    }
    // More columns and curves would keep the window from answering.
    const std::size_t share = ShareOfTests(records_.size());
    for (std::size_t i = 0; i < records_.size(); ++i) {
        const std::vector<RecordTest>& tests = records_.at(i)->tests;
        for (const RecordTest& test : std::span(tests).first(std::min(share, tests.size()))) {
            QString name = QStringLiteral("Test ") + FromPage(test.testNumber);
            if (records_.size() > 1)
                name.prepend(FromPage(records_.at(i)->name) + QLatin1Char(' '));
            tests_.push_back({i, &test, name});
        }
    }
}

void RecordPanel::ShowTop() {
    QString title = QStringLiteral("No record is selected.");
    if (records_.size() == 1) {
        const RecordFacts& record = *records_.front();
        const RecordFileHeader& header = record.headers.front();
        title = FromPage(record.name + "   " + header.date + " " + header.time);
    } else if (!files_.empty()) {
        title = QStringLiteral("%1 records").arg(files_.size());
        if (files_.size() > kMostShownRecords)
            title += QStringLiteral("; the first %1 are shown").arg(kMostShownRecords);
        if (files_.size() == 1) title = QFileInfo(files_.front()).completeBaseName();
    }
    lblRecord_->setText(title);
    lblHeader_->setText(records_.size() == 1 ? HeaderText(*records_.front()) : QString());
    QStringList troubles;
    for (const auto& [file, read] : read_) {
        if (!read.trouble.isEmpty()) troubles += read.trouble;
    }
    troubles += NotesOn(records_);
    if (troubles.isEmpty() && tests_.empty() && !records_.empty())
        troubles += QStringLiteral("There is no test in it.");
    lblTrouble_->setText(troubles.join(QLatin1Char('\n')));
    lblTrouble_->setVisible(!troubles.isEmpty());
}

std::optional<std::size_t> RecordPanel::Chosen() const {
    if (tests_.empty()) return std::nullopt;
    return static_cast<std::size_t>(std::max(0, tblTests_->currentColumn()));
}

// Of more tests than can be told apart one of every record stands out: the chosen one, else the
// first.
void RecordPanel::ShowCurves() {
    const std::optional<std::size_t> chosen = Chosen();
    const bool few = tests_.size() <= kMostNormalCurves;
    std::vector<ChartCurve> curves;
    for (std::size_t i = 0; i < tests_.size(); ++i) {
        const ShownTest& shown = tests_.at(i);
        const bool first = i == 0 || tests_.at(i - 1).record != shown.record;
        const bool ofChosen = tests_.at(*chosen).record == shown.record;
        const bool normal = few || i == *chosen || (first && !ofChosen);
        // A saved picture tells whose curve it is.
        const QString name = FromPage(shown.test->recordName) + QStringLiteral(" Test ") +
                             FromPage(shown.test->testNumber);
        ChartCurve curve{
            name, shown.test->points, {}, normal ? CurveLook::Normal : CurveLook::Faint};
        for (const KneeFact& fact : shown.test->knees) {
            if (i == *chosen && fact.At()) curve.knees.push_back({fact.rule, *fact.At()});
        }
        curves.push_back(std::move(curve));
    }
    chart_->SetCurves(std::move(curves));
}

void RecordPanel::ShowDoubts() {
    const std::optional<std::size_t> chosen = Chosen();
    QStringList lines;
    if (chosen) {
        for (const KneeRule rule : kRuleRows) {
            const QString line = DoubtOf(FactOf(*tests_.at(*chosen).test, rule));
            if (!line.isEmpty()) lines += line;
        }
        if (!lines.isEmpty() && tests_.size() > 1) lines.prepend(tests_.at(*chosen).name);
    }
    const bool header = lblHeader_->isHidden() && !lblHeader_->text().isEmpty();
    if (header) lines += QTextDocumentFragment::fromHtml(lblHeader_->text()).toPlainText();
    const QString text = lines.join(QLatin1Char('\n'));
    if (text != txtDoubts_->toPlainText()) txtDoubts_->setPlainText(text);
    // A chart that jumps from test to test would be hard to compare.
    const bool any =
        header || std::any_of(tests_.begin(), tests_.end(), [](const ShownTest& test) {
            return std::any_of(test.test->knees.begin(), test.test->knees.end(),
                               [](const KneeFact& fact) { return !DoubtOf(fact).isEmpty(); });
        });
    txtDoubts_->setVisible(any);
}

// --- Room ---------------------------------------------------------------------------------------

void RecordPanel::Arrange() {
    const bool low = height() < kLowHeight;
    const bool beside = low && width() >= kWideWidth && !tests_.empty();
    body_->setDirection(beside ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    body_->setStretch(0, kChartShare);
    body_->setStretch(1, beside ? kFactsShare : 0);
    const auto heightOf = [this](const QLabel* label) {
        return label->isHidden() ? 0 : label->heightForWidth(width() - kRoom) + kRoom;
    };
    int room = height() - heightOf(lblRecord_) - heightOf(lblTrouble_) - heightOf(lblSaved_) -
               kButtonHeight - kRoom;
    // The header gives way to a chart that can be read: it stands below the doubts then.
    const int least = TableHeight(kLeastRows) + DoubtsHeight(kLeastDoubtLines) + 2 * kRoom;
    lblHeader_->setVisible(!lblHeader_->text().isEmpty());
    const bool header = beside || room - heightOf(lblHeader_) >= kLeastChartHeight + least;
    if (!header) lblHeader_->hide();
    ShowDoubts();
    room -= heightOf(lblHeader_);
    // The legend of many curves, two names a line, would take its room from the axes.
    const auto curves = static_cast<int>(std::min(tests_.size(), kMostNormalCurves));
    const int legend = std::max(0, curves / 2 - 2) * fontMetrics().lineSpacing();
    ArrangeFacts(beside ? room : std::max(room - kChartHeight - legend - kRoom, least));
}

// Too much for the height: the doubts give way to the table, then both scroll.
void RecordPanel::ArrangeFacts(int height) {
    const int doubts = txtDoubts_->isHidden() ? 0 : DoubtsHeight(kDoubtLines) + kRoom;
    const int leastDoubts = txtDoubts_->isHidden() ? 0 : DoubtsHeight(kLeastDoubtLines) + kRoom;
    const int whole = TableHeight(tblTests_->rowCount());
    const int table = std::clamp(height - leastDoubts, TableHeight(kLeastRows), whole);
    tblTests_->setFixedHeight(table);
    const bool beside = body_->direction() == QBoxLayout::LeftToRight;
    const int left = std::max(height - table, leastDoubts);
    txtDoubts_->setFixedHeight(std::max(0, (beside ? left : std::min(left, doubts)) - kRoom));
}

int RecordPanel::TableHeight(int rows) const {
    const bool beside = body_->direction() == QBoxLayout::LeftToRight;
    const int room = width() - kRoom;
    return tblTests_->HeightOf(rows,
                               beside ? room * kFactsShare / (kChartShare + kFactsShare) : room);
}

int RecordPanel::DoubtsHeight(int lines) const {
    return lines * txtDoubts_->fontMetrics().lineSpacing() + 2 * kRoom;
}

int RecordPanel::ButtonsWidth() const {
    int wide = 0;
    for (const QPushButton* button : {cmdSavePng_, cmdSavePdf_, cmdSaveCsv_})
        wide += button->sizeHint().width() + buttons_->spacing();
    return wide;
}

void RecordPanel::OfferBack(bool on) {
    cmdBack_->setVisible(on);
}

void RecordPanel::FocusBack() {
    cmdBack_->setFocus();
}

void RecordPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Arrange();
}

// Escape is taken before a shortcut of the window has it.
bool RecordPanel::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && cmdBack_->isVisible() &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void RecordPanel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && cmdBack_->isVisible()) {
        OnBack();
    } else {
        QWidget::keyPressEvent(event);
    }
}

QSize RecordPanel::sizeHint() const {
    return kUsualSize;
}

QSize RecordPanel::minimumSizeHint() const {
    const int height = lblRecord_->fontMetrics().height() + kLeastChartHeight +
                       TableHeight(kLeastRows) + DoubtsHeight(kLeastDoubtLines) + kButtonHeight +
                       4 * kRoom;
    return {ButtonsWidth() + kRoom, height};
}

// --- Saving -------------------------------------------------------------------------------------

QString RecordPanel::AskForFile(const QString& ending) {
    if (saveFolder_.isEmpty()) saveFolder_ = QFileInfo(files_.front()).absolutePath();
    QString path = prompts_.SaveFile(saveFolder_, QLatin1Char('*') + ending,
                                     RecordNameOf(files_.front()) + ending);
    if (path.isEmpty()) return {};
    if (!path.endsWith(ending, Qt::CaseInsensitive)) path += ending;
    saveFolder_ = QFileInfo(path).absolutePath();
    if (!FileExists(path)) return path;
    const QString question =
        QStringLiteral("The file '%1' exists already. Do you want to replace it?")
            .arg(QFileInfo(path).fileName());
    return prompts_.YesNo(question, Answer::No) == Answer::Yes ? path : QString();
}

void RecordPanel::ShowSaved(const QString& path) {
    lblSaved_->setText(SavedText(path));
    if (lblSaved_->isHidden() == path.isEmpty()) return;
    lblSaved_->setVisible(!path.isEmpty());
    Arrange();
}

template <class Write>
void RecordPanel::Save(const QString& ending, const Write& write) {
    ShowSaved({});
    try {
        const QString path = AskForFile(ending);
        if (path.isEmpty()) return;
        write(path);
        ShowSaved(path);
    } catch (const RunTimeError& error) {
        prompts_.Message(QStringLiteral("The file was not saved. ") +
                         QString::fromUtf8(error.what()));
    }
}

void RecordPanel::cmdSaveCsv_Click() {
    Save(QStringLiteral(".csv"), [this](const QString& path) {
        std::vector<RecordFacts> records;
        for (const RecordFacts* record : records_)
            records.push_back(*record);
        ReplaceFile(path, RecordsAsCsv(records));
    });
    if (lblSaved_->text().isEmpty()) return;
    const QStringList said = QStringList{lblSaved_->text()} + NotWritten(records_, files_.size());
    lblSaved_->setText(said.join(QLatin1Char('\n')));
    Arrange();
}

}  // namespace davo
