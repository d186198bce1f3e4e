// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/record_panel.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextDocumentFragment>
#include <QVBoxLayout>
#include <algorithm>
#include <span>
#include <utility>

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
constexpr double kTitleGrowth = 1.3;
constexpr double kTextGrowth = 1.1;
constexpr int kButtonHeight = 40;
constexpr int kDoubtLines = 4;
constexpr int kLeastDoubtLines = 2;
constexpr int kLeastRows = 3;
constexpr int kLeastChartHeight = 250;
constexpr double kChartPart = 0.62;  // of the panel's height
// A panel that is as wide as that, and so much wider than high, has its facts beside the chart.
constexpr int kWideWidth = 680;
constexpr double kWideShape = 1.4;
// One that is as wide as that has the doubts beside the results.
constexpr int kFactsWidth = 560;
constexpr double kMostTableShare = 0.6;
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

// In the legend and at the crosshair: a saved picture tells whose curve it is.
QString CurveName(const ShownTest& shown) {
    const QString record = FromPage(shown.test->recordName) + QLatin1Char(' ');
    return shown.name.contains(record) ? shown.name : record + shown.name;
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
    auto* curves = new QVBoxLayout;
    curves->addWidget(chart_, 1);
    lblNoCurve_ = MakeLabel("lblNoCurve", this);
    curves->addWidget(lblNoCurve_);
    body_->addLayout(curves, 1);
    facts_ = new QBoxLayout(QBoxLayout::TopToBottom);
    body_->addLayout(facts_);
    BuildTable(facts_);
    facts_->setStretch(0, kChartShare);
    facts_->setStretch(1, kFactsShare);
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
    cmdMore_ = new QPushButton(this);
    cmdMore_->setObjectName(QStringLiteral("cmdMore"));
    cmdMore_->setAutoDefault(true);
    cmdMore_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Expanding);
    connect(cmdMore_, &QPushButton::clicked, this, [this] {
        more_ = !more_;
        Arrange();
    });
    auto* row = new QHBoxLayout;
    auto* lines = new QVBoxLayout;
    lines->setSpacing(2);
    lines->addWidget(lblRecord_);
    lines->addWidget(lblHeader_);
    row->addLayout(lines, 1);
    row->addWidget(cmdMore_);
    column->addLayout(row);
    column->addWidget(lblTrouble_);
}

void RecordPanel::BuildTable(QBoxLayout* column) {
    tblTests_ = new ResultsTable(this);
    column->addWidget(tblTests_);
    connect(tblTests_, &QTableWidget::currentCellChanged, this,
            [this](int /*row*/, int test, int /*rowBefore*/, int before) {
                if (test == before) return;
                chosen_ = static_cast<std::size_t>(std::max(0, test));
                ShowCurves();
                Arrange();
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
    std::vector<ShownRecord> records;
    records.reserve(files.size());
    for (const QString& file : files)
        records.push_back({file, {}, {}});
    Show(std::move(records));
}

void RecordPanel::Show(std::vector<ShownRecord> records) {
    if (records != wanted_) chosen_ = 0;
    wanted_ = std::move(records);
    ShowSaved({});
    if (isVisible()) soon_.start();
}

void RecordPanel::ChooseTest(std::size_t test) {
    chosen_ = test;
    if (isVisible() && !soon_.isActive() && test < shown_.Tests().size()) tblTests_->Choose(test);
}

void RecordPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    soon_.start();
}

void RecordPanel::ReadAndShow() {
    shown_.Read(std::span(wanted_).first(std::min(wanted_.size(), kMostShownRecords)));
    ShowTop();
    tblTests_->Fill(shown_.Tests(), chosen_);
    ShowCurves();
    const bool any = !shown_.Tests().empty();
    tblTests_->setVisible(any);
    Arrange();
    for (QPushButton* button : {cmdSavePng_, cmdSavePdf_, cmdSaveCsv_})
        button->setEnabled(any);
}

void RecordPanel::ShowTop() {
    QString title = QStringLiteral("No record is selected.");
    if (shown_.Records().size() == 1) {
        const RecordFacts& record = *shown_.Records().front();
        const RecordFileHeader& header = record.headers.front();
        title = FromPage(record.name + "   " + header.date + " " + header.time);
    } else if (!wanted_.empty()) {
        title = QStringLiteral("%1 records").arg(wanted_.size());
        if (wanted_.size() > kMostShownRecords)
            title += QStringLiteral("; the first %1 are shown").arg(kMostShownRecords);
        if (wanted_.size() == 1) title = QFileInfo(wanted_.front().file).completeBaseName();
    }
    QStringList labels;
    for (const ShownRecord& record : wanted_) {
        if (!record.label.isEmpty()) labels += record.label;
    }
    if (!labels.isEmpty()) title = labels.join(QStringLiteral(" over "));
    lblRecord_->setText(title);
    const std::vector<const RecordFacts*>& records = shown_.Records();
    header_ = records.size() == 1 ? HeaderFields(*records.front()) : QStringList();
    QStringList troubles = shown_.Troubles();
    troubles += NotesOn(records, ShareOfTests(labels.isEmpty() ? records.size() : 1));
    if (troubles.isEmpty() && shown_.Tests().empty() && !records.empty())
        troubles += QStringLiteral("There is no test in it.");
    lblTrouble_->setText(troubles.join(QLatin1Char('\n')));
    lblTrouble_->setVisible(!troubles.isEmpty());
}

std::optional<std::size_t> RecordPanel::Chosen() const {
    if (shown_.Tests().empty()) return std::nullopt;
    return static_cast<std::size_t>(std::max(0, tblTests_->currentColumn()));
}

// Of more tests than can be told apart one of every record stands out: the chosen one, else the
// first.
void RecordPanel::ShowCurves() {
    const std::optional<std::size_t> chosen = Chosen();
    const std::vector<ShownTest>& tests = shown_.Tests();
    const bool few = tests.size() <= kMostNormalCurves;
    std::vector<ChartCurve> curves;
    QStringList without;
    for (std::size_t i = 0; i < tests.size(); ++i) {
        const ShownTest& shown = tests.at(i);
        const std::vector<CurvePoint>& points = shown.test->points;
        if (std::none_of(points.begin(), points.end(), CanBeDrawn)) {
            without += shown.name;
            continue;
        }
        const bool first = i == 0 || tests.at(i - 1).record != shown.record;
        const bool ofChosen = tests.at(*chosen).record == shown.record;
        const bool normal = few || i == *chosen || (first && !ofChosen);
        ChartCurve curve{
            CurveName(shown), points, {}, normal ? CurveLook::Normal : CurveLook::Faint};
        for (const KneeFact& fact : shown.test->knees) {
            if (i == *chosen && fact.At())
                curve.knees.push_back({fact.rule, *fact.At(), JudgedText(fact)});
        }
        curves.push_back(std::move(curve));
    }
    chart_->SetInteractive(!curves.empty());
    chart_->SetCurves(std::move(curves));
    lblNoCurve_->setText(WithoutCurve(without));
    lblNoCurve_->setVisible(!without.isEmpty());
}

void RecordPanel::ShowDoubts() {
    QStringList lines;
    if (const std::optional<std::size_t> chosen = Chosen()) {
        const ShownTest& shown = shown_.Tests().at(*chosen);
        for (const KneeRule rule : kRuleRows) {
            const QString line = DoubtOf(FactOf(*shown.test, rule));
            if (!line.isEmpty()) lines += line;
        }
        if (!lines.isEmpty() && shown_.Tests().size() > 1) lines.prepend(shown.name);
    }
    const QString text = lines.join(QLatin1Char('\n'));
    if (text != txtDoubts_->toPlainText()) txtDoubts_->setPlainText(text);
    txtDoubts_->setVisible(!text.isEmpty());
}

// --- Room ---------------------------------------------------------------------------------------

void RecordPanel::Arrange() {
    const bool wide = width() >= std::max<double>(kWideWidth, kWideShape * height());
    const bool beside = wide && !shown_.Tests().empty();
    body_->setDirection(beside ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    body_->setStretch(0, kChartShare);
    body_->setStretch(1, beside ? kFactsShare : 0);
    facts_->setDirection(beside || width() < kFactsWidth ? QBoxLayout::TopToBottom
                                                         : QBoxLayout::LeftToRight);
    ShowHeader();
    ShowDoubts();
    const auto heightOf = [this](const QLabel* label) {
        return label->isHidden() ? 0 : label->heightForWidth(width() - kRoom) + kRoom;
    };
    const int room = height() - heightOf(lblRecord_) - heightOf(lblHeader_) -
                     heightOf(lblTrouble_) - heightOf(lblSaved_) - kButtonHeight - kRoom;
    const auto chart = static_cast<int>(height() * kChartPart) + heightOf(lblNoCurve_);
    ArrangeFacts(beside ? room : room - chart - kRoom);
}

// Too much for the height: the doubts give way to the table, then both scroll.
void RecordPanel::ArrangeFacts(int height) {
    const bool doubts = !txtDoubts_->isHidden();
    const bool sideways = facts_->direction() == QBoxLayout::LeftToRight;
    const int leastDoubts = doubts && !sideways ? DoubtsHeight(kLeastDoubtLines) + kRoom : 0;
    const int table = std::clamp(height - leastDoubts, TableHeight(kLeastRows),
                                 TableHeight(tblTests_->rowCount()));
    tblTests_->setFixedHeight(table);
    tblTests_->setMaximumWidth(doubts && sideways ? TableWidth() : QWIDGETSIZE_MAX);
    const bool beside = body_->direction() == QBoxLayout::LeftToRight;
    const int left = std::max(height - table, leastDoubts) - kRoom;
    const int most = beside ? left : std::min(left, DoubtsHeight(kDoubtLines));
    txtDoubts_->setFixedHeight(sideways ? table : std::max(0, most));
}

// Beside the doubts: no more than its columns need.
int RecordPanel::TableWidth() const {
    const int scroll = tblTests_->verticalScrollBar()->sizeHint().width();
    return std::min(tblTests_->WholeWidth() + scroll,
                    static_cast<int>((width() - kRoom) * kMostTableShare));
}

void RecordPanel::ShowHeader() {
    const QString gap = QStringLiteral("&nbsp; ");
    QFont bold = lblHeader_->font();
    bold.setBold(true);
    const auto fitting = [&, metrics = QFontMetrics(bold)](int room) {
        qsizetype count = 0;
        for (; count < header_.size(); ++count) {
            const auto field = QTextDocumentFragment::fromHtml(header_.at(count) + gap);
            room -= metrics.horizontalAdvance(field.toPlainText());
            if (room < 0) break;
        }
        return count;
    };
    const bool cut = fitting(width() - kRoom) < header_.size();
    cmdMore_->setVisible(cut);
    cmdMore_->setText(more_ ? QStringLiteral("&Less") : QStringLiteral("&More"));
    const qsizetype shown = cut && !more_
                                ? fitting(width() - 2 * kRoom - cmdMore_->sizeHint().width())
                                : header_.size();
    lblHeader_->setText(header_.mid(0, shown).join(gap));
    lblHeader_->setVisible(!header_.isEmpty());
}

int RecordPanel::TableHeight(int rows) const {
    int room = width() - kRoom;
    if (body_->direction() == QBoxLayout::LeftToRight)
        room = room * kFactsShare / (kChartShare + kFactsShare);
    if (facts_->direction() == QBoxLayout::LeftToRight && !txtDoubts_->isHidden())
        room = TableWidth();
    return tblTests_->HeightOf(rows, room);
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
    if (saveFolder_.isEmpty()) saveFolder_ = QFileInfo(wanted_.front().file).absolutePath();
    QString path = prompts_.SaveFile(saveFolder_, QLatin1Char('*') + ending,
                                     RecordNameOf(wanted_.front().file) + ending);
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
        for (const RecordFacts* record : shown_.Records()) {
            records.push_back(*record);
            JudgeTests(records.back(), kMostFactTests);
        }
        ReplaceFile(path, RecordsAsCsv(records));
    });
    if (lblSaved_->text().isEmpty()) return;
    const QStringList said =
        QStringList{lblSaved_->text()} + NotWritten(shown_.Records(), wanted_.size());
    lblSaved_->setText(said.join(QLatin1Char('\n')));
    Arrange();
}

}  // namespace davo
