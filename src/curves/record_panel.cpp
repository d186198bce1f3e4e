// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/record_panel.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QVBoxLayout>
#include <algorithm>
#include <span>
#include <utility>

#include "common/files.h"
#include "common/text.h"
#include "curves/compare_facts.h"
#include "curves/curve_chart.h"
#include "curves/results_table.h"
#include "reports/record_csv.h"
#include "reports/record_texts.h"
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
constexpr int kLeastChartHeight = 250;
// A panel that is as wide as that, and so much wider than high, has its facts beside the chart.
constexpr int kWideWidth = 680;
constexpr double kWideShape = 1.4;
// One that is as wide as that has the doubts beside the results.
constexpr int kFactsWidth = 560;
// What the chart has of the room, of a hundred that the facts have: below each other, beside, and
// above a comparison.
constexpr int kShareBelow = 275;
constexpr int kShareBeside = 150;
constexpr int kShareCompared = 125;
constexpr int kShareOfOther = 100;
constexpr int kRoom = 6;
constexpr QSize kPicture(1600, 1100);

}  // namespace

RecordPanel::RecordPanel(Prompts& prompts, QWidget* parent)
    : QWidget(parent), prompts_(prompts), saver_(prompts) {
    setObjectName(QStringLiteral("RecordPanel"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(kRoom, 0, 0, 0);
    column->setSpacing(kRoom);
    BuildTop(column);
    chart_ = Named(new CurveChart(this), "chtCurves");
    lblNoCurve_ = MakeParagraph(this, "lblNoCurve", {}, 1);
    auto* curves = new QVBoxLayout;
    curves->addWidget(chart_, 1);
    curves->addWidget(lblNoCurve_);
    body_ = new QBoxLayout(QBoxLayout::TopToBottom);
    body_->addLayout(curves);
    facts_ = new QBoxLayout(QBoxLayout::TopToBottom);
    body_->addLayout(facts_);
    column->addLayout(body_, 1);
    BuildFacts();
    lblSaved_ = MakeParagraph(this, "lblSaved", {}, 1);
    lblSaved_->hide();
    column->addWidget(lblSaved_);
    column->addLayout(BuildButtons());
    soon_.setSingleShot(true);
    soon_.setInterval(kSoon);
    connect(&soon_, &QTimer::timeout, this, [this] { ReadAndShow(); });
    ReadAndShow();
}

void RecordPanel::BuildTop(QBoxLayout* column) {
    lblRecord_ = MakeParagraph(this, "lblRecord", {}, kTitleGrowth);
    MakeBold(lblRecord_);
    lblHeader_ = MakeParagraph(this, "lblHeader", {}, 1);
    lblHeader_->setTextFormat(Qt::RichText);
    lblTrouble_ = MakeParagraph(this, "lblTrouble", {}, kTextGrowth);
    MakeBold(lblTrouble_);
    cmdMore_ = Named(new QPushButton(this), "cmdMore");
    cmdMore_->setAutoDefault(true);
    cmdMore_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Expanding);
    connect(cmdMore_, &QPushButton::clicked, this, [this] {
        more_ = !more_;
        Arrange();
    });
    top_ = new QHBoxLayout;
    auto* lines = new QVBoxLayout;
    lines->setSpacing(2);
    lines->addWidget(lblRecord_);
    lines->addWidget(lblHeader_);
    top_->addLayout(lines, 1);
    top_->addWidget(cmdMore_);
    column->addLayout(top_);
    column->addWidget(lblTrouble_);
}

void RecordPanel::BuildFacts() {
    tblTests_ = new ResultsTable(this);
    facts_->addWidget(tblTests_);
    connect(tblTests_, &QTableWidget::currentCellChanged, this,
            [this](int /*row*/, int test, int /*rowBefore*/, int before) {
                if (test == before) return;
                chosen_ = static_cast<std::size_t>(std::max(0, test));
                Compare();
                ShowCurves();
                Arrange();
            });
    txtDoubts_ = Named(new QPlainTextEdit(this), "txtDoubts");
    txtDoubts_->setAccessibleName(QStringLiteral("What is doubtful"));
    txtDoubts_->setReadOnly(true);
    txtDoubts_->setTabChangesFocus(true);
    txtDoubts_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    Enlarge(txtDoubts_, kTextGrowth);
    // It takes what the results leave and asks for no more than its least height.
    txtDoubts_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    txtDoubts_->setMinimumHeight(DoubtsHeight(kLeastDoubtLines));
    facts_->addWidget(txtDoubts_);
}

QLayout* RecordPanel::BuildButtons() {
    auto* buttons = new QHBoxLayout;
    cmdBack_ = new BigButton(this, "cmdBack", "&Back to the List");
    cmdBack_->setFont(font());
    cmdBack_->setMinimumHeight(kButtonHeight);
    cmdBack_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    cmdBack_->hide();
    buttons->addWidget(cmdBack_, 1);
    connect(cmdBack_, &QPushButton::clicked, this, [this] { OnBack(); });
    saves_ = new QWidget(this);
    auto* row = WithMargin(new QHBoxLayout(saves_), 0);
    const auto add = [&](const char* name, const char* caption, auto save) {
        auto* button = Named(new QPushButton(QLatin1String(caption), saves_), name);
        button->setMinimumHeight(kButtonHeight);
        button->setAutoDefault(true);
        row->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, save] {
            ShowSaved({});
            ShowSaved(save());
        });
    };
    // Letters that no window with a list of records uses.
    add("cmdSavePng", "Save as PN&G...", [this] {
        return SaveAs(QStringLiteral(".png"), [this](const QString& path) {
            chart_->SavePng(path, kPicture);
            return QStringList();
        });
    });
    add("cmdSavePdf", "Save &as PDF...", [this] { return SaveCertificate(); });
    add("cmdSaveCsv", "Save CSV &Table...", [this] {
        return SaveAs(QStringLiteral(".csv"),
                      [this](const QString& path) { return SaveCsv(path); });
    });
    buttons->addWidget(saves_, 3);
    return buttons;
}

void RecordPanel::OfferCompare(Settings& settings) {
    tabs_ = Named(new QTabBar(this), "tabPanel");
    tabs_->addTab(QStringLiteral("Record"));
    tabs_->addTab(QStringLiteral("Compare"));
    tabs_->setExpanding(false);
    tabs_->setFocusPolicy(Qt::StrongFocus);
    compare_ = new CompareFacts(settings, prompts_, this);
    // The chart keeps its height.
    top_->addWidget(tabs_, 0, Qt::AlignVCenter);
    facts_->addWidget(compare_, 1);
    setTabOrder(cmdMore_, tabs_);
    QWidget* before = txtDoubts_;
    for (QWidget* stop : compare_->Stops()) {
        setTabOrder(before, stop);
        before = stop;
    }
    connect(tabs_, &QTabBar::currentChanged, this, [this] { ReadAndShow(); });
    compare_->OnChanged = [this] { ShowCurves(); };
    compare_->OnKept = [this] { ReadAndShow(); };
    ReadAndShow();
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
    Compare();
    ShowCurves();
    const bool any = !shown_.Tests().empty();
    tblTests_->setVisible(any && !Compares());
    saves_->setEnabled(any);
    if (tabs_ != nullptr) {
        tabs_->setVisible(any);
        compare_->setVisible(Compares());
    }
    Arrange();
}

bool RecordPanel::Compares() const {
    return tabs_ != nullptr && tabs_->currentIndex() == 1 && !shown_.Tests().empty();
}

void RecordPanel::Compare() {
    const std::optional<std::size_t> chosen = Chosen();
    if (!Compares() || !chosen) return;
    const QString folder = QFileInfo(wanted_.front().file).absolutePath() + QLatin1Char('/');
    const std::string marker = marker_ == nullptr ? std::string() : marker_->toStdString();
    compare_->Compare(shown_, *chosen, folder, KneeRuleOf(marker).value_or(KneeRule::Asa1050));
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

// Of more tests than can be told apart one of every record is drawn stronger: the chosen one, else
// the first.
void RecordPanel::ShowCurves() {
    if (Compares()) {
        chart_->SetInteractive(true);
        chart_->SetCurves(compare_->Curves());
        lblNoCurve_->hide();
        return;
    }
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
    txtDoubts_->setVisible(!text.isEmpty() && !Compares());
}

// --- Room ---------------------------------------------------------------------------------------

void RecordPanel::Arrange() {
    const bool wide = width() >= std::max<double>(kWideWidth, kWideShape * height());
    const bool beside = wide && !shown_.Tests().empty();
    ShowDoubts();
    const bool below = !beside && width() >= kFactsWidth;
    body_->setDirection(beside ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    body_->setStretch(0, beside ? kShareBeside : Compares() ? kShareCompared : kShareBelow);
    body_->setStretch(1, kShareOfOther);
    facts_->setDirection(below ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    // Above the doubts the results have all that they need.
    facts_->setStretch(0, below ? kShareBeside : kShareOfOther * kShareOfOther);
    facts_->setStretch(1, kShareOfOther);
    txtDoubts_->setMaximumHeight(beside || below ? QWIDGETSIZE_MAX : DoubtsHeight(kDoubtLines));
    tblTests_->KeepToColumns(below && !txtDoubts_->isHidden());
    ShowHeader();
}

// As many of the header's fields as one line has room for, or all of them.
void RecordPanel::ShowHeader() {
    const auto show = [this](int lineRoom, qsizetype count) {
        const int twoLines = 2 * lblHeader_->fontMetrics().height();
        do {
            lblHeader_->setText(header_.mid(0, count).join(QStringLiteral("&nbsp; ")));
        } while (lblHeader_->heightForWidth(lineRoom) >= twoLines && --count > 0);
        return count;
    };
    const bool tabs = tabs_ != nullptr && !tabs_->isHidden();
    const int room = width() - kRoom - (tabs ? tabs_->sizeHint().width() + kRoom : 0);
    const bool cut = show(room, header_.size()) < header_.size();
    cmdMore_->setVisible(cut);
    cmdMore_->setText(more_ ? QStringLiteral("&Less") : QStringLiteral("&More"));
    if (more_) {
        lblHeader_->setText(header_.join(QStringLiteral("&nbsp; ")));
    } else if (cut) {
        show(room - kRoom - cmdMore_->sizeHint().width(), header_.size());
    }
    lblHeader_->setVisible(!header_.isEmpty());
}

int RecordPanel::DoubtsHeight(int lines) const {
    return lines * txtDoubts_->fontMetrics().lineSpacing() + 2 * kRoom;
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
    const bool pressed = event->type() == QEvent::KeyPress;
    if ((!pressed && event->type() != QEvent::ShortcutOverride) || !cmdBack_->isVisible() ||
        static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) {
        return QWidget::event(event);
    }
    event->accept();
    if (pressed) OnBack();
    return true;
}

QSize RecordPanel::minimumSizeHint() const {
    const int height = lblRecord_->fontMetrics().height() + kLeastChartHeight +
                       tblTests_->minimumHeight() + txtDoubts_->minimumHeight() + kButtonHeight +
                       4 * kRoom;
    return {saves_->minimumSizeHint().width() + kRoom, height};
}

// --- Saving -------------------------------------------------------------------------------------

void RecordPanel::ShowSaved(const QStringList& said) {
    lblSaved_->setText(said.join(QLatin1Char('\n')));
    lblSaved_->setVisible(!said.isEmpty());
}

QStringList RecordPanel::SaveAs(const QString& ending, const RecordSaver::Write& write) {
    return saver_.Save(wanted_.front().file, ending, write);
}

QStringList RecordPanel::SaveCertificate() {
    std::vector<CertifiedTest> tests;
    for (const ShownTest& shown : shown_.Tests())
        tests.push_back({shown_.Records().at(shown.record), shown.test});
    return saver_.SaveCertificate(wanted_.front().file, tests,
                                  marker_ == nullptr ? QString() : *marker_,
                                  Compares() ? compare_->Sentences() : QStringList());
}

QStringList RecordPanel::SaveCsv(const QString& path) {
    std::vector<RecordFacts> records;
    for (const RecordFacts* record : shown_.Records()) {
        records.push_back(*record);
        JudgeTests(records.back());
    }
    ReplaceFile(path, RecordsAsCsv(records));
    return NotWritten(shown_.Records(), wanted_.size());
}

}  // namespace davo
