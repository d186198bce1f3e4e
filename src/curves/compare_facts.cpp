// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/compare_facts.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QTextEdit>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "analysis/ratio_error.h"
#include "common/files.h"
#include "common/numbers.h"
#include "common/run_time_error.h"
#include "common/text.h"
#include "curves/frmNameplate.h"
#include "curves/nameplate_facts.h"
#include "records/directory_file.h"
#include "reports/record_texts.h"
#include "reports/reference_curve.h"
#include "ui/contrast.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kReferenceLetters = 12;
constexpr int kControlHeight = 40;  // a glove meets it
constexpr int kLeastLines = 4;
// A maker's curve in the data folder: no list takes it for a record, nor for a table that was
// saved.
constexpr QLatin1String kCurveEnding(".reference.csv");
constexpr int kMostDated = 12;
constexpr std::size_t kSerialField = 5;  // of RecordFileHeader::fields

std::optional<double> LimitOf(const QLineEdit& box) {
    const QString text = box.text().replace(QLatin1Char(','), QLatin1Char('.'));
    const std::optional<double> limit = WholeNumericValue(text.toStdString());
    return limit && *limit > 0 ? limit : std::nullopt;
}

QString Cell(const std::optional<Deviation>& part, std::string (*placeText)(double)) {
    if (!part) return QStringLiteral("-");
    // A number and its unit are on one line.
    const auto together = [](const std::string& text) {
        return FromPage(text).replace(QLatin1Char(' '), QChar::Nbsp);
    };
    return together(SignedPercentText(part->Percent())) + QStringLiteral(" at ") +
           together(placeText(part->at));
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

// A sentence in the colour of its verdict.
QString Judged(const std::string& sentence, Verdict verdict, const QPalette& palette) {
    const QString text = FromPage(sentence).toHtmlEscaped();
    if (verdict == Verdict::None) return text;
    constexpr double kTextContrast = 4.5;
    const QColor colour = verdict == Verdict::Within ? QColor(20, 140, 60) : QColor(200, 30, 30);
    return QStringLiteral("<span style='color:%1'>%2</span>")
        .arg(Readable(colour, palette.color(QPalette::Base), palette.color(QPalette::Text),
                      kTextContrast)
                 .name(),
             text);
}

QString MakersLabel(const QString& name) {
    return name + QStringLiteral("   maker's curve");
}

bool IsMakersCurve(const QString& file) {
    return file.endsWith(kCurveEnding, Qt::CaseInsensitive);
}

}  // namespace

CompareFacts::CompareFacts(Settings& settings, Prompts& prompts, QWidget* parent)
    : QWidget(parent), settings_(settings), prompts_(prompts) {
    setObjectName(QStringLiteral("CompareFacts"));
    auto* column = WithMargin(new QVBoxLayout(this), 0);
    auto* with = new QHBoxLayout;
    lblCompared_ = MakeLabel(this, "lblCompared", {}, 1);
    cboReference_ = Named(new QComboBox(this), "cboReference");
    lblCompared_->setBuddy(cboReference_);
    cboReference_->setAccessibleName(QStringLiteral("Reference"));
    cboReference_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboReference_->setMinimumContentsLength(kReferenceLetters);
    with->addWidget(lblCompared_);
    with->addWidget(cboReference_, 1);
    // Letters that no window with this tab uses.
    cmdAddCurve_ = Named(new QPushButton(QStringLiteral("Add C&urve..."), this), "cmdAddCurve");
    cmdAddCurve_->setToolTip(
        QStringLiteral("Keeps a maker's curve from a CSV file, to compare any record with it"));
    connect(cmdAddCurve_, &QPushButton::clicked, this, [this] { AddCurve(); });
    with->addWidget(cmdAddCurve_);
    column->addLayout(with);
    auto* limits = new QHBoxLayout;
    txtLimit_ = AddLimit(limits, "Limit", "&Voltage within (%):", settings_.curveLimit);
    txtRatioLimit_ = AddLimit(limits, "RatioLimit", "Rati&o within (%):", settings_.ratioLimit);
    limits->addStretch();
    cmdNameplate_ = Named(new QPushButton(QStringLiteral("&Nameplate..."), this), "cmdNameplate");
    connect(cmdNameplate_, &QPushButton::clicked, this, [this] { TypeNameplate(); });
    limits->addWidget(cmdNameplate_);
    column->addLayout(limits);
    for (QPushButton* button : {cmdAddCurve_, cmdNameplate_})
        button->setAutoDefault(true);
    txtCompared_ = Named(new QTextEdit(this), "txtCompared");
    txtCompared_->setAccessibleName(QStringLiteral("What the comparison says"));
    txtCompared_->setReadOnly(true);
    txtCompared_->setTabChangesFocus(true);
    txtCompared_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    for (QWidget* stop : Stops())
        stop->setMinimumHeight(kControlHeight);
    txtCompared_->setMinimumHeight(kLeastLines * txtCompared_->fontMetrics().lineSpacing());
    column->addWidget(txtCompared_, 1);
    connect(cboReference_, &QComboBox::currentIndexChanged, this, [this] { Update(); });
}

QLineEdit* CompareFacts::AddLimit(QLayout* row, const char* name, const char* caption,
                                  QString& kept) {
    auto* box = Named(new QLineEdit(kept, this), QStringLiteral("txt") + QLatin1String(name));
    QLabel* label =
        MakeLabel(this, QStringLiteral("lbl") + QLatin1String(name), QLatin1String(caption), 1);
    label->setBuddy(box);
    row->addWidget(label);
    row->addWidget(box);
    box->setPlaceholderText(QStringLiteral("off"));
    static const QRegularExpression percent(QStringLiteral("[0-9]{0,2}([.,][0-9]{0,2})?"));
    box->setValidator(new QRegularExpressionValidator(percent, box));
    if (!box->hasAcceptableInput()) box->clear();
    box->setMaximumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("000000")));
    connect(box, &QLineEdit::textEdited, this, [this, &kept](const QString& text) {
        kept = text;
        Update();
    });
    return box;
}

std::array<QWidget*, 6> CompareFacts::Stops() const {
    return {cboReference_, cmdAddCurve_, txtLimit_, txtRatioLimit_, cmdNameplate_, txtCompared_};
}

// --- What it is compared with -------------------------------------------------------------------

void CompareFacts::Compare(const ShownRecords& shown, std::size_t test, const QString& folder,
                           KneeRule rule) {
    const ShownTest& measured = shown.Tests().at(test);
    rule_ = rule;
    folder_ = folder;
    measured_ = *measured.test;
    measuredName_ = CurveName(measured);
    against_ = measured.name + QStringLiteral(" against:");
    lblCompared_->setText(QString(measured.name).replace(QLatin1Char('&'), QStringLiteral("&&")) +
                          QStringLiteral(" aga&inst:"));
    measuredCurve_ = CurveToCompare(rule, measured_.points);
    Offer(shown, test, folder);
    history_ = HistoryText();
    serial_ =
        shown.Records().at(measured.record)->headers.at(measured_.header).fields.at(kSerialField);
    cmdNameplate_->setEnabled(!serial_.empty());
    cmdNameplate_->setToolTip(serial_.empty()
                                  ? QStringLiteral("The record has no serial number.")
                                  : QStringLiteral("What is typed is kept for the serial number"));
    FindOnNameplate(shown, test);
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
    for (const QString& name :
         QDir(folder).entryList({QLatin1Char('*') + kCurveEnding}, QDir::Files)) {
        choices_.push_back({MakersLabel(name.chopped(kCurveEnding.size())), folder + name, {}});
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
        const bool isSame = IsSameSerial(row.serial, serial);
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
    if (!test && IsMakersCurve(choice.file)) {
        referenceName_ = QFileInfo(choice.file).fileName().chopped(kCurveEnding.size());
        test.emplace().points = ParseReferenceCurve(ReadWholeFile(choice.file));
    } else if (!test) {
        const RecordFacts facts = ReadRecordFacts(choice.file, 0);
        test = TestLike(facts, measured_.testNumber);
        referenceName_ = FromPage(facts.name + " Test " + test->testNumber);
    }
    referenceCurve_ = CurveToCompare(rule_, test->points);
}

// --- What is kept beside the records -----------------------------------------------------------

void CompareFacts::AddCurve() {
    const QString path =
        prompts_.OpenFile(QFileInfo(folder_).absolutePath(), QStringLiteral("*.csv"));
    if (path.isEmpty()) return;
    QString name;
    try {
        name = KeepCurve(path, folder_);
    } catch (const RunTimeError& error) {
        prompts_.Message(QStringLiteral("The curve was not added. ") +
                         QString::fromUtf8(error.what()));
    }
    if (name.isEmpty()) return;
    OnKept();
    cboReference_->setCurrentIndex(cboReference_->findText(MakersLabel(name)));
}

// Its name; empty where the operator does not know its units.
QString CompareFacts::KeepCurve(const QString& path, const QString& folder) {
    const std::string bytes = ReadWholeFile(path);
    ParseReferenceCurve(bytes);
    std::string units;
    while (!NamesUnits(bytes) && !NamesUnits(units)) {
        const std::optional<QString> typed =
            prompts_.Input(QStringLiteral("Units"),
                           QStringLiteral("The file does not name the units of its two columns. "
                                          "Type them in their order, such as A; V or kV; mA."),
                           QStringLiteral("A; V"));
        if (!typed) return {};
        units = ToPage(*typed).value_or("");
    }
    std::vector<std::string> lines{"A;V"};
    for (const CurvePoint& point : ParseReferenceCurve(bytes, units))
        lines.push_back(GeneralNumber(point.current) + ";" + GeneralNumber(point.voltage));
    // No list of records takes a name without another point for a record.
    const QString base =
        QFileInfo(path).completeBaseName().replace(QLatin1Char('.'), QLatin1Char('_'));
    QString name = base;
    for (int i = 2; FileExists(folder + name + kCurveEnding); ++i)
        name = base + QStringLiteral(" %1").arg(i);
    ReplaceFile(folder + name + kCurveEnding, JoinLines(lines));
    return name;
}

void CompareFacts::TypeNameplate() {
    NameplateTexts texts;
    try {
        texts = ReadNameplate(folder_, serial_);
    } catch (const RunTimeError& error) {
        prompts_.Message(QString::fromUtf8(error.what()));
        return;
    }
    auto* nameplate = new frmNameplate(FromPage(serial_), texts, prompts_, this);
    nameplate->OnSave = [this, folder = folder_, serial = serial_](const NameplateTexts& typed) {
        KeepNameplate(folder, serial, typed);
        OnKept();
    };
    nameplate->open();
}

void CompareFacts::FindOnNameplate(const ShownRecords& shown, std::size_t test) {
    nameplate_.clear();
    nameplateSentences_.clear();
    const auto add = [&](const QString& heading, const std::vector<NameplateFinding>& findings) {
        nameplateSentences_ += heading + QLatin1Char(':');
        nameplate_ += QStringLiteral("<p><b>%1</b></p>").arg(heading) +
                      Findings(findings, nameplateSentences_);
    };
    try {
        const NameplateTexts texts = ReadNameplate(folder_, serial_);
        if (!HasNoClass(texts)) {
            const ComparedCurve curve = rule_ == KneeRule::Asa1050
                                            ? measuredCurve_
                                            : CurveToCompare(KneeRule::Asa1050, measured_.points);
            const Nameplate nameplate = NameplateOf(texts);
            add(QStringLiteral("Nameplate, class ") + FromPage(ClassName(nameplate)),
                JudgeNameplate(nameplate, curve, LeadingNumericValue(measured_.measuredRatio)));
        }
        if (!texts.back().empty())
            add(QStringLiteral("Taps, ") + KneeWord(rule_),
                FindingsOnTaps(texts, shown, test, measuredCurve_));
    } catch (const RunTimeError& error) {
        nameplate_ = Paragraph(QString::fromUtf8(error.what()));
    }
}

// --- What comes of it ---------------------------------------------------------------------------

void CompareFacts::Update() {
    referenceCurve_ = {};
    sentences_.clear();
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
    txtCompared_->setHtml(text + RatioText() + nameplate_ + history_);
    sentences_ += nameplateSentences_;
    if (OnChanged) OnChanged();
}

QString CompareFacts::Findings(const std::vector<NameplateFinding>& findings,
                               QStringList& sentences) const {
    QString text;
    for (const auto& [verdict, sentence] : findings) {
        if (sentence.empty()) continue;
        sentences += FromPage(sentence);
        text += QStringLiteral("<p style='margin:6px 0 0 0'>%1</p>")
                    .arg(Judged(sentence, verdict, palette()));
    }
    return text;
}

QString CompareFacts::Text() {
    const std::optional<double> limit = LimitOf(*txtLimit_);
    sentences_ += against_ + QLatin1Char(' ') + referenceName_;
    sentences_ += FromPage(SentenceOf(comparison_, limit));
    QString text =
        QStringLiteral("<p><b>%1</b></p>")
            .arg(Judged(SentenceOf(comparison_, limit), VerdictOf(comparison_, limit), palette()));
    if (comparison_.reason != NotCompared::No) return text;
    return text + TableOf(comparison_) +
           Findings({{Verdict::None, KneeSentenceOf(comparison_.knee)}}, sentences_);
}

QString CompareFacts::RatioText() {
    const std::optional<double> error =
        RatioErrorOf(measured_.measuredRatio, measured_.nameplateRatio);
    const std::optional<double> limit = LimitOf(*txtRatioLimit_);
    std::vector<NameplateFinding> findings;
    if (error) findings.push_back({VerdictOf(*error, limit), RatioSentenceOf(*error, limit)});
    findings.push_back({Verdict::None, PolaritySentenceOf(measured_.polarity)});
    return Findings(findings, sentences_);
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
