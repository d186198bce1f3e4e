#include "curves/record_panel.h"

#include <QFileInfo>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <exception>

#include "common/files.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "curves/curve_chart.h"
#include "curves/curve_export.h"
#include "curves/knee_marks.h"

namespace davo {

namespace {

// Many selections at once are shown once; a key that is held down repeats more slowly.
constexpr int kSoon = 10;
constexpr std::size_t kMostNormalCurves = 10;
constexpr double kTitleGrowth = 1.4;
constexpr double kTextGrowth = 1.1;
constexpr int kButtonHeight = 40;
constexpr int kDoubtLines = 4;
constexpr int kRoom = 6;
constexpr QSize kPicture(1600, 1100);
constexpr QSize kUsualSize(480, 640);

constexpr std::array kRuleRows = {KneeRule::Ieee30, KneeRule::Ieee45, KneeRule::Asa1050};
constexpr std::array kResultRows = {"Ratio", "Nameplate", "Error", "Polarity", "Phase"};

void Enlarge(QWidget* widget, double growth, bool bold = false) {
    QFont font = widget->font();
    font.setPointSizeF(font.pointSizeF() * growth);
    font.setBold(bold);
    widget->setFont(font);
}

QLabel* MakeLabel(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setWordWrap(true);
    label->setMinimumWidth(1);
    return label;
}

const KneeFact& FactOf(const RecordTest& test, KneeRule rule) {
    return *std::find_if(test.knees.begin(), test.knees.end(),
                         [rule](const KneeFact& fact) { return fact.rule == rule; });
}

QString PrintedText(const KneeFact& fact) {
    QString voltage = FromPage(fact.printed.voltage);
    if (!fact.At()) return voltage;
    return QStringLiteral("%1 V, %2 A").arg(voltage, FromPage(fact.printed.current));
}

// "IEEE 30: 0. No pair of points crossed the threshold."; empty where there is nothing to say.
QString DoubtOf(const KneeFact& fact) {
    const std::string& said = fact.reason.empty() ? fact.doubt : fact.reason;
    if (said.empty()) return {};
    return QStringLiteral("%1: %2. %3").arg(KneeWord(fact.rule), PrintedText(fact), FromPage(said));
}

QString HeaderText(const RecordFacts& record) {
    constexpr std::array<const char*, 8> kCaptions = {
        "Company", "Station", "Circuit", "MFR", "Model", "Serial&nbsp;#", "Comments", "Operator"};
    QStringList fields;
    for (std::size_t i = 0; i < kCaptions.size(); ++i) {
        // A caption stays with its text.
        const QString text = FromPage(TrimBlanks(record.header.at(i)))
                                 .replace(QLatin1Char(' '), QChar::Nbsp)
                                 .toHtmlEscaped();
        if (!text.isEmpty())
            fields +=
                QStringLiteral("%1:&nbsp;<b>%2</b>").arg(QLatin1String(kCaptions.at(i)), text);
    }
    return fields.join(QStringLiteral("&nbsp; "));
}

}  // namespace

RecordPanel::RecordPanel(Prompts& prompts, QWidget* parent) : QWidget(parent), prompts_(prompts) {
    setObjectName(QStringLiteral("RecordPanel"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(kRoom, 0, 0, 0);
    BuildTop(column);
    chart_ = new CurveChart(this);
    chart_->setObjectName(QStringLiteral("chtCurves"));
    column->addWidget(chart_, 1);
    BuildTable(column);
    BuildButtons(column);
    soon_.setSingleShot(true);
    soon_.setInterval(kSoon);
    connect(&soon_, &QTimer::timeout, this, [this] { ReadAndShow(); });
    ReadAndShow();
}

void RecordPanel::BuildTop(QBoxLayout* column) {
    lblRecord_ = MakeLabel("lblRecord", this);
    lblRecord_->setTextFormat(Qt::PlainText);
    Enlarge(lblRecord_, kTitleGrowth, true);
    lblHeader_ = MakeLabel("lblHeader", this);
    lblHeader_->setTextFormat(Qt::RichText);
    lblTrouble_ = MakeLabel("lblTrouble", this);
    lblTrouble_->setTextFormat(Qt::PlainText);
    Enlarge(lblTrouble_, kTextGrowth, true);
    for (QLabel* label : {lblRecord_, lblHeader_, lblTrouble_})
        column->addWidget(label);
}

void RecordPanel::BuildTable(QBoxLayout* column) {
    tblTests_ = new QTableWidget(this);
    tblTests_->setObjectName(QStringLiteral("tblTests"));
    tblTests_->setAccessibleName(QStringLiteral("Results of the tests"));
    tblTests_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tblTests_->setSelectionBehavior(QAbstractItemView::SelectColumns);
    tblTests_->setSelectionMode(QAbstractItemView::SingleSelection);
    tblTests_->setTabKeyNavigation(false);
    tblTests_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QStringList rows;
    for (const KneeRule rule : kRuleRows)
        rows += KneeWord(rule);
    for (const char* row : kResultRows)
        rows += QLatin1String(row);
    tblTests_->setRowCount(static_cast<int>(rows.size()));
    tblTests_->setVerticalHeaderLabels(rows);
    tblTests_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    tblTests_->verticalHeader()->setDefaultSectionSize(tblTests_->fontMetrics().height() + kRoom);
    tblTests_->verticalHeader()->setMinimumSectionSize(1);
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
    txtDoubts_->setFixedHeight(kDoubtLines * txtDoubts_->fontMetrics().lineSpacing() + 2 * kRoom);
    column->addWidget(txtDoubts_);
}

void RecordPanel::BuildButtons(QBoxLayout* column) {
    auto* row = new QHBoxLayout;
    const auto add = [&](const char* name, const char* caption) {
        auto* button = new QPushButton(QLatin1String(caption), this);
        button->setObjectName(QLatin1String(name));
        button->setMinimumHeight(kButtonHeight);
        button->setAutoDefault(true);
        row->addWidget(button);
        return button;
    };
    // Letters that no window with a list of records uses; there is none left for the second.
    cmdSavePng_ = add("cmdSavePng", "Save as PN&G...");
    cmdSavePdf_ = add("cmdSavePdf", "Save as PDF...");
    cmdSaveCsv_ = add("cmdSaveCsv", "Save &as CSV...");
    column->addLayout(row);
    connect(cmdSavePng_, &QPushButton::clicked, this, [this] {
        Save(QStringLiteral(".png"), [this](const QString& path) {
            if (!chart_->SavePng(path, kPicture))
                throw RunTimeError(ErrorNumber::PathFileAccess, path.toStdString());
        });
    });
    connect(cmdSavePdf_, &QPushButton::clicked, this, [this] {
        Save(QStringLiteral(".pdf"), [this](const QString& path) {
            if (!chart_->SavePdf(path))
                throw RunTimeError(ErrorNumber::PathFileAccess, path.toStdString());
        });
    });
    connect(cmdSaveCsv_, &QPushButton::clicked, this, [this] { cmdSaveCsv_Click(); });
}

// --- Showing ------------------------------------------------------------------------------------

void RecordPanel::ShowRecords(const std::vector<QString>& files) {
    files_ = files;
    if (isVisible()) soon_.start();
}

void RecordPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    soon_.start();
}

void RecordPanel::ReadAndShow() {
    ReadFiles();
    ShowTop();
    FillTable();
    ShowCurves();
    ShowDoubts();
    const bool any = !tests_.empty();
    tblTests_->setVisible(any);
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
            } catch (const std::exception& error) {
                read.trouble = QStringLiteral("%1 cannot be shown: %2")
                                   .arg(info.completeBaseName(), QString::fromUtf8(error.what()));
            }
        }
        if (read.facts) records_.push_back(&*read.facts);
    }
    for (std::size_t i = 0; i < records_.size(); ++i) {
        for (const RecordTest& test : records_.at(i)->tests) {
            QString name = QStringLiteral("Test %1").arg(test.testNumber);
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
        title = FromPage(record.name + "   " + record.date + " " + record.time);
    } else if (!files_.empty()) {
        title = QStringLiteral("%1 records").arg(files_.size());
        if (files_.size() > kMostShownRecords)
            title += QStringLiteral("; the first %1 are shown").arg(kMostShownRecords);
        if (files_.size() == 1) title = QFileInfo(files_.front()).completeBaseName();
    }
    lblRecord_->setText(title);
    lblHeader_->setText(records_.size() == 1 ? HeaderText(*records_.front()) : QString());
    lblHeader_->setVisible(!lblHeader_->text().isEmpty());
    QStringList troubles;
    for (const auto& [file, read] : read_) {
        if (!read.trouble.isEmpty()) troubles += read.trouble;
    }
    if (troubles.isEmpty() && tests_.empty() && !records_.empty())
        troubles += QStringLiteral("There is no test in it.");
    lblTrouble_->setText(troubles.join(QLatin1Char('\n')));
    lblTrouble_->setVisible(!troubles.isEmpty());
}

void RecordPanel::FillTable() {
    const QSignalBlocker quiet(tblTests_);
    tblTests_->clearContents();
    tblTests_->setColumnCount(static_cast<int>(tests_.size()));
    const QFontMetrics metrics = tblTests_->fontMetrics();
    int widest = 0;
    for (std::size_t i = 0; i < tests_.size(); ++i) {
        const int column = static_cast<int>(i);
        const RecordTest& test = *tests_.at(i).test;
        int row = 0;
        const auto put = [&](const QString& text, const QString& tip) {
            auto* item = new QTableWidgetItem(text);
            if (!tip.isEmpty()) item->setToolTip(tip);
            tblTests_->setItem(row++, column, item);
            widest = std::max(widest, metrics.horizontalAdvance(text));
        };
        for (const KneeRule rule : kRuleRows) {
            const KneeFact& fact = FactOf(test, rule);
            const QString doubt = DoubtOf(fact);
            put(PrintedText(fact) + (fact.doubt.empty() ? QString() : QStringLiteral(" (?)")),
                doubt);
        }
        for (const std::string& text : {test.measuredRatio, test.nameplateRatio, test.percentError,
                                        test.polarity, test.phase})
            put(FromPage(TrimBlanks(text)), {});
        tblTests_->setHorizontalHeaderItem(column, new QTableWidgetItem(tests_.at(i).name));
        widest = std::max(widest, metrics.horizontalAdvance(tests_.at(i).name));
    }
    tblTests_->horizontalHeader()->setDefaultSectionSize(widest + 3 * kRoom);
    for (int column = 0; column < tblTests_->columnCount(); ++column)
        tblTests_->setColumnWidth(column, widest + 3 * kRoom);
    tblTests_->setSelectionMode(tests_.size() > 1 ? QAbstractItemView::SingleSelection
                                                  : QAbstractItemView::NoSelection);
    if (tests_.empty()) return;
    tblTests_->setCurrentCell(0, 0);
    const int bar = tblTests_->horizontalScrollBar()->sizeHint().height();
    tblTests_->setFixedHeight(tblTests_->verticalHeader()->length() +
                              tblTests_->horizontalHeader()->sizeHint().height() + bar +
                              2 * tblTests_->frameWidth());
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
        const QString name = FromPage(shown.test->recordName) +
                             QStringLiteral(" Test %1").arg(shown.test->testNumber);
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
    txtDoubts_->setPlainText(lines.join(QLatin1Char('\n')));
    // A chart that jumps from test to test would be hard to compare.
    const bool any = std::any_of(tests_.begin(), tests_.end(), [](const ShownTest& shown) {
        return std::any_of(shown.test->knees.begin(), shown.test->knees.end(),
                           [](const KneeFact& fact) { return !DoubtOf(fact).isEmpty(); });
    });
    txtDoubts_->setVisible(any);
}

// --- Saving -------------------------------------------------------------------------------------

QString RecordPanel::AskForFile(const QString& ending) {
    if (saveFolder_.isEmpty()) saveFolder_ = QFileInfo(files_.front()).absolutePath();
    QString path = prompts_.SaveFile(saveFolder_, QLatin1Char('*') + ending);
    if (path.isEmpty()) return {};
    if (!path.endsWith(ending, Qt::CaseInsensitive)) path += ending;
    saveFolder_ = QFileInfo(path).absolutePath();
    if (!FileExists(path)) return path;
    const QString question =
        QStringLiteral("The file '%1' exists already. Do you want to replace it?")
            .arg(QFileInfo(path).fileName());
    return prompts_.YesNo(question, Answer::No) == Answer::Yes ? path : QString();
}

template <class Write>
void RecordPanel::Save(const QString& ending, const Write& write) {
    try {
        const QString path = AskForFile(ending);
        if (!path.isEmpty()) write(path);
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
}

QSize RecordPanel::sizeHint() const {
    return kUsualSize;
}

}  // namespace davo
