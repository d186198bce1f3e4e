// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/compare_facts.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QTextEdit>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "analysis/ratio_error.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "records/directory_file.h"
#include "reports/record_texts.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kReferenceLetters = 12;
constexpr int kLeastLines = 4;
constexpr int kMostDated = 12;
constexpr std::size_t kSerialField = 5;  // of RecordFileHeader::fields

std::optional<double> LimitOf(const QLineEdit& box) {
    const QString text = box.text().replace(QLatin1Char(','), QLatin1Char('.'));
    const std::optional<double> limit = WholeNumericValue(text.toStdString());
    return limit && *limit > 0 ? limit : std::nullopt;
}

QString Cell(const std::optional<Extremes>& part, std::string (*placeText)(double)) {
    if (!part) return QStringLiteral("-");
    const Deviation& worst = part->Worst();
    // A number and its unit are on one line.
    const auto together = [](const std::string& text) {
        return FromPage(text).replace(QLatin1Char(' '), QChar::Nbsp);
    };
    return together(SignedPercentText(worst.Percent())) + QStringLiteral(" at ") +
           together(placeText(worst.at));
}

QString Row(const QString& name, const QString& voltage, const QString& current) {
    return QStringLiteral("<tr><td>%1&nbsp;&nbsp;</td><td>%2&nbsp;&nbsp;</td><td>%3</td></tr>")
        .arg(name, voltage, current);
}

// The worst places, below and above the knee.
QString TableOf(const CurveComparison& comparison) {
    const ComparedValue& voltage = comparison.voltage;
    const ComparedValue current = comparison.current.value_or(ComparedValue());
    const auto row = [&](const QString& name, const auto& part) {
        return Row(name, Cell(part(voltage), AmperesText),
                   comparison.current ? Cell(part(current), VoltsText) : QStringLiteral("-"));
    };
    QString rows = Row(QStringLiteral("<b>Worst</b>"), QStringLiteral("<b>Voltage</b>"),
                       QStringLiteral("<b>Current</b>"));
    if (voltage.below || voltage.above) {
        rows += row(QStringLiteral("Below the knee"),
                    [](const ComparedValue& value) { return value.below; });
        rows += row(QStringLiteral("Above the knee"),
                    [](const ComparedValue& value) { return value.above; });
    } else {
        rows += row(QStringLiteral("Anywhere"),
                    [](const ComparedValue& value) { return std::optional(value.all); });
    }
    return QStringLiteral("<table>%1</table>").arg(rows);
}

// The test of that number, else the first one.
const RecordTest& TestLike(const RecordFacts& facts, const std::string& number) {
    if (facts.tests.empty()) throw RunTimeError(ErrorNumber::InputPastEnd);
    const auto same =
        std::find_if(facts.tests.begin(), facts.tests.end(), [&](const RecordTest& test) {
            return NumericValue(test.testNumber) == NumericValue(number);
        });
    return same == facts.tests.end() ? facts.tests.front() : *same;
}

QString KneeTextOf(const ComparedCurve& curve) {
    KneeFact fact;
    fact.smooth = curve.knee;
    fact.range = curve.range;
    return SmoothText(fact);
}

QString Paragraph(const QString& text) {
    return text.isEmpty()
               ? QString()
               : QStringLiteral("<p style='margin:6px 0 0 0'>%1</p>").arg(text.toHtmlEscaped());
}

}  // namespace

CompareFacts::CompareFacts(Settings& settings, QWidget* parent)
    : QWidget(parent), settings_(settings) {
    setObjectName(QStringLiteral("CompareFacts"));
    auto* column = WithMargin(new QVBoxLayout(this), 0);
    auto* with = new QHBoxLayout;
    lblCompared_ = MakeLabel(this, "lblCompared", {}, 1);
    cboReference_ = Named(new QComboBox(this), "cboReference");
    cboReference_->setAccessibleName(QStringLiteral("Reference"));
    cboReference_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboReference_->setMinimumContentsLength(kReferenceLetters);
    with->addWidget(lblCompared_);
    with->addWidget(cboReference_, 1);
    column->addLayout(with);
    txtLimit_ = LimitBox("txtLimit", QStringLiteral("Voltage within (%):"), settings_.curveLimit);
    txtRatioLimit_ =
        LimitBox("txtRatioLimit", QStringLiteral("Ratio within (%):"), settings_.ratioLimit);
    auto* limits = new QHBoxLayout;
    for (QLineEdit* box : {txtLimit_, txtRatioLimit_}) {
        limits->addWidget(MakeLabel(this, QLatin1String("lbl") + box->objectName().mid(3),
                                    box->accessibleName(), 1));
        limits->addWidget(box);
    }
    limits->addStretch();
    column->addLayout(limits);
    txtCompared_ = Named(new QTextEdit(this), "txtCompared");
    txtCompared_->setAccessibleName(QStringLiteral("What the comparison says"));
    txtCompared_->setReadOnly(true);
    txtCompared_->setTabChangesFocus(true);
    txtCompared_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    txtCompared_->setMinimumHeight(kLeastLines * txtCompared_->fontMetrics().lineSpacing());
    column->addWidget(txtCompared_, 1);
    connect(cboReference_, &QComboBox::currentIndexChanged, this, [this] { Update(); });
}

QLineEdit* CompareFacts::LimitBox(const char* name, const QString& caption, QString& kept) {
    auto* box = Named(new QLineEdit(kept, this), name);
    box->setAccessibleName(caption);
    box->setPlaceholderText(QStringLiteral("off"));
    static const QRegularExpression percent(QStringLiteral("[0-9]{0,2}([.,][0-9]{0,2})?"));
    box->setValidator(new QRegularExpressionValidator(percent, box));
    if (!box->hasAcceptableInput()) box->clear();
    box->setMaximumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("000000000")));
    connect(box, &QLineEdit::textEdited, this, [this, &kept](const QString& text) {
        kept = text;
        Update();
    });
    return box;
}

std::array<QWidget*, 4> CompareFacts::Stops() const {
    return {cboReference_, txtLimit_, txtRatioLimit_, txtCompared_};
}

// --- What it is compared with -------------------------------------------------------------------

void CompareFacts::Compare(const ShownRecords& shown, std::size_t test, const QString& folder,
                           KneeRule rule) {
    const ShownTest& measured = shown.Tests().at(test);
    rule_ = rule;
    measured_ = *measured.test;
    measuredName_ = CurveName(measured);
    lblCompared_->setText(measured.name + QStringLiteral(" against:"));
    measuredCurve_ = CurveToCompare(rule, measured_.points);
    Offer(shown, test, folder);
    history_ = HistoryText();
    const QString before = cboReference_->currentText();
    {
        const QSignalBlocker quiet(cboReference_);
        cboReference_->clear();
        for (const Choice& choice : choices_)
            cboReference_->addItem(choice.label);
        if (!choices_.empty()) cboReference_->setCurrentIndex(0);
        if (const int known = cboReference_->findText(before); known >= 0)
            cboReference_->setCurrentIndex(known);
    }
    cboReference_->setEnabled(!choices_.empty());
    Update();
}

void CompareFacts::Offer(const ShownRecords& shown, std::size_t test, const QString& folder) {
    choices_.clear();
    dated_.clear();
    for (std::size_t i = 0; i < shown.Tests().size(); ++i) {
        const ShownTest& other = shown.Tests()[i];
        if (i != test && !other.test->points.empty())
            choices_.push_back({other.name, {}, *other.test});
    }
    try {
        AddRecords(*shown.Records().at(shown.Tests().at(test).record), folder);
    } catch (const RunTimeError&) {
        return;  // a folder without its list offers no other records
    }
}

void CompareFacts::AddRecords(const RecordFacts& record, const QString& folder) {
    DirectoryTables tables;
    LoadDirectoryFile(folder, tables);
    const RecordFileHeader& header = record.headers.at(measured_.header);
    const std::string& serial = header.fields.at(kSerialField);
    QDate oldest = ParseRecordDate(header.date).value_or(QDate());
    std::optional<Choice> first;
    const std::vector<ListRow> rows = RowsForList(tables, tables.recordCount);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const ListRow& row = rows[i];
        const QString name = FromPage(row.filename);
        const QString date = FromPage(row.date);
        const std::optional<QDate> day = ParseRecordDate(row.date);
        const bool isSame = !serial.empty() && TrimBlanks(row.serial) == serial;
        const bool isOther = row.filename != record.name;
        const QString file = isOther ? folder + RecordFileOf(tables, i) : QString();
        if (isSame && day) dated_.push_back({*day, date, name, file});
        if (!isOther) continue;
        choices_.push_back(
            {QStringList{name, date, FromPage(TrimBlanks(row.station))}.join(QStringLiteral("   ")),
             file,
             {}});
        if (!isSame || !day || !(*day < oldest)) continue;
        oldest = *day;
        first = Choice{name + QStringLiteral("   ") + date +
                           QStringLiteral("   the oldest of this serial number"),
                       file,
                       {}};
    }
    if (first) choices_.insert(choices_.begin(), *first);
}

QString CompareFacts::HistoryText() {
    std::stable_sort(dated_.begin(), dated_.end(),
                     [](const Dated& a, const Dated& b) { return a.day < b.day; });
    if (dated_.size() < 2) return {};
    // The oldest and the newest ones: each has to be read and fitted.
    if (std::ssize(dated_) > kMostDated)
        dated_.erase(dated_.begin() + 1, dated_.end() - kMostDated + 1);
    QString rows;
    for (const Dated& one : dated_) {
        QString knee = KneeTextOf(measuredCurve_);
        try {
            if (!one.file.isEmpty()) {
                const RecordFacts facts = ReadRecordFacts(one.file, 0);
                const RecordTest& test = TestLike(facts, measured_.testNumber);
                knee = KneeTextOf(CurveToCompare(rule_, test.points));
            }
        } catch (const RunTimeError& error) {
            knee = TroubleText(one.name, error);
        }
        rows += Row(one.date, one.name.toHtmlEscaped(), knee.toHtmlEscaped());
    }
    return Paragraph(QStringLiteral("Smooth kneepoints of this serial number, ") + KneeWord(rule_) +
                     QLatin1Char(':')) +
           QStringLiteral("<table>%1</table>").arg(rows);
}

void CompareFacts::TakeReference() {
    const Choice& choice = choices_.at(static_cast<std::size_t>(cboReference_->currentIndex()));
    std::optional<RecordTest> test = choice.test;
    referenceName_ = choice.label;
    if (!test) {
        const RecordFacts facts = ReadRecordFacts(choice.file, 0);
        test = TestLike(facts, measured_.testNumber);
        referenceName_ = FromPage(facts.name + " Test " + test->testNumber);
    }
    referenceCurve_ = CurveToCompare(rule_, test->points);
}

// --- What comes of it ---------------------------------------------------------------------------

void CompareFacts::Update() {
    referenceCurve_ = {};
    QString text;
    if (choices_.empty()) {
        text = Paragraph(QStringLiteral("There is no other test to compare it with."));
    } else {
        try {
            TakeReference();
            comparison_ = CompareCurves(measuredCurve_, referenceCurve_);
            text = Text();
        } catch (const RunTimeError& error) {
            text = Paragraph(TroubleText(cboReference_->currentText(), error));
        }
    }
    txtCompared_->setHtml(text + Paragraph(RatioText()) + history_);
    if (OnChanged) OnChanged();
}

QString CompareFacts::Text() const {
    const std::optional<double> limit = LimitOf(*txtLimit_);
    QString text = QStringLiteral("<p><b>%1</b></p>")
                       .arg(FromPage(SentenceOf(comparison_, limit)).toHtmlEscaped());
    if (comparison_.reason != NotCompared::No) return text;
    return text + TableOf(comparison_) + Paragraph(FromPage(KneeSentenceOf(comparison_.knee)));
}

QString CompareFacts::RatioText() const {
    const std::optional<double> error =
        RatioErrorOf(measured_.measuredRatio, measured_.nameplateRatio);
    return error ? FromPage(RatioSentenceOf(*error, LimitOf(*txtRatioLimit_))) : QString();
}

std::vector<ChartCurve> CompareFacts::Curves() const {
    std::vector<ChartCurve> curves{{measuredName_, measured_.points, {}, CurveLook::Normal}};
    const std::vector<CurvePoint>& points = referenceCurve_.points;
    if (points.empty()) return curves;
    curves.push_back({referenceName_, points, {}, CurveLook::Normal});
    if (const std::optional<double> limit = LimitOf(*txtLimit_)) {
        for (const double part : {-*limit / 100, *limit / 100}) {
            ChartCurve edge{{}, points, {}, CurveLook::Faint};
            for (CurvePoint& point : edge.points)
                point.voltage *= 1 + part;
            curves.push_back(std::move(edge));
        }
    }
    return curves;
}

}  // namespace davo
