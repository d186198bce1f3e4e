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
#include "ui/event_handlers.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr int kReferenceLetters = 12;
constexpr int kControlHeight = 40;  // a glove meets it
constexpr int kLeastLines = 4;
// A maker's curve in the data folder: no list takes it for a record, nor for a table that was
// saved.
constexpr QLatin1String kCurveEnding(kReferenceCurveEnding);
constexpr std::size_t kMostDated = 12;
constexpr std::size_t kSerialField = 5;  // of RecordFileHeader::fields

std::optional<double> LimitOf(const QLineEdit& box) {
    const QString text = box.text().replace(QLatin1Char(','), QLatin1Char('.'));
    const std::optional<double> limit = WholeNumericValue(text.toStdString());
    return limit && *limit > 0 ? limit : std::nullopt;
}

// A number and its unit are on one line.
QString Together(const std::string& sentence) {
    static const QRegularExpression between(QStringLiteral("(?<=[0-9]) (?=[%AV])"));
    return FromPage(sentence).replace(between, QString(QChar::Nbsp));
}

QString Cell(const std::optional<Deviation>& part, std::string (*placeText)(double)) {
    if (!part) return QStringLiteral("-");
    return Together(SignedPercentText(part->Percent()) + " at " + placeText(part->at));
}

QString Row(const QString& name, const QString& voltage, const QString& current) {
    return QStringLiteral("<tr><td>%1&nbsp;&nbsp;</td><td>%2&nbsp;&nbsp;</td><td>%3</td></tr>")
        .arg(name, voltage, current);
}

// The worst places, below and above the knee.
QString TableOf(const CurveComparison& comparison) {
    const ComparedValue& voltage = comparison.voltage;
    const ComparedValue& current = comparison.current;
    QString rows = Row(QStringLiteral("<b>Worst</b>"), QStringLiteral("<b>Voltage</b>"),
                       QStringLiteral("<b>Current</b>"));
    const auto add = [&](const char* name, const auto& volts, const auto& amperes) {
        rows += Row(QLatin1String(name), Cell(volts, AmperesText), Cell(amperes, VoltsText));
    };
    if (voltage.below || voltage.above) {
        add("Below the knee", voltage.below, current.below);
        add("Above the knee", voltage.above, current.above);
    } else {
        add("Anywhere", voltage.all, current.all);
    }
    return QStringLiteral("<table>%1</table>").arg(rows);
}

// The test of that number in a record's file, else its first one.
RecordTest ReadTest(const QString& file, const std::string& number) {
    RecordFacts facts = ReadRecordFacts(file, 0);
    if (facts.tests.empty()) throw RunTimeError(ErrorNumber::InputPastEnd);
    const auto same =
        std::ranges::find(facts.tests, NumericValue(number),
                          [](const RecordTest& test) { return NumericValue(test.testNumber); });
    return same == facts.tests.end() ? facts.tests.front() : *same;
}

QString Paragraph(const QString& html) {
    return QStringLiteral("<p style='margin:6px 0 0 0'>%1</p>").arg(html);
}

QString Heading(const QString& html) {
    return QStringLiteral("<p><b>%1</b></p>").arg(html);
}

// The sentence in the colour of its verdict.
QString Judged(const Finding& finding, const QPalette& palette) {
    QString text = Together(finding.sentence).toHtmlEscaped();
    if (finding.verdict == Verdict::None) return text;
    constexpr double kTextContrast = 4.5;
    const QColor colour =
        finding.verdict == Verdict::Within ? QColor(20, 140, 60) : QColor(200, 30, 30);
    return QStringLiteral("<span style='color:%1'>%2</span>")
        .arg(Readable(colour, palette.color(QPalette::Base), palette.color(QPalette::Text),
                      kTextContrast)
                 .name(),
             text);
}

QString MakersLabel(const QString& name) {
    return name + QStringLiteral("   maker's curve");
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
    connect(cboReference_, &QComboBox::currentIndexChanged, this, [this] {
        picked_ = cboReference_->currentText();
        Update();
    });
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
    box->setFixedWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("000000")));
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
    serial_ =
        shown.Records().at(measured.record)->headers.at(measured_.header).fields.at(kSerialField);
    cmdNameplate_->setEnabled(!serial_.empty());
    cmdNameplate_->setToolTip(serial_.empty()
                                  ? QStringLiteral("The record has no serial number.")
                                  : QStringLiteral("What is typed is kept for the serial number"));
    Offer(shown, test);
    history_ = HistoryText();
    FindOnNameplate(shown, test);
    {
        const QSignalBlocker quiet(cboReference_);
        cboReference_->clear();
        for (const Choice& choice : choices_)
            cboReference_->addItem(choice.label);
        cboReference_->setCurrentIndex(std::max(0, cboReference_->findText(picked_)));
    }
    cboReference_->setEnabled(!choices_.empty());
    Update();
}

void CompareFacts::Offer(const ShownRecords& shown, std::size_t test) {
    choices_.clear();
    dated_.clear();
    for (std::size_t i = 0; i < shown.Tests().size(); ++i) {
        const ShownTest& other = shown.Tests()[i];
        if (i != test && !other.test->points.empty())
            choices_.push_back({other.name, {}, other.test->points});
    }
    for (const QString& name :
         QDir(folder_).entryList({QLatin1Char('*') + kCurveEnding}, QDir::Files))
        choices_.push_back({MakersLabel(name.chopped(kCurveEnding.size())), folder_ + name, {}});
    try {
        AddRecords(*shown.Records().at(shown.Tests().at(test).record));
    } catch (const RunTimeError&) {
        return;  // a folder without its list offers no other records
    }
}

void CompareFacts::AddRecords(const RecordFacts& record) {
    DirectoryTables tables;
    LoadDirectoryFile(folder_, tables);
    const std::vector<ListRow> rows = RowsForList(tables, tables.recordCount);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const ListRow& row = rows[i];
        const QString name = FromPage(row.filename);
        const QString date = FromPage(row.date);
        const bool isOther = row.filename != record.name;
        const QString file = isOther ? folder_ + RecordFileOf(tables, i) : QString();
        const std::optional<QDate> day = ParseRecordDate(row.date);
        if (day && IsSameSerial(row.serial, serial_)) dated_.push_back({*day, date, name, file});
        const QStringList label{name, date, FromPage(TrimBlanks(row.station))};
        if (isOther) choices_.push_back({label.join(QStringLiteral("   ")), file, {}});
    }
    std::ranges::stable_sort(dated_, {}, &Dated::day);
    const auto own = ParseRecordDate(record.headers.at(measured_.header).date);
    if (dated_.empty() || !own || dated_.front().day >= *own) return;
    const Dated& oldest = dated_.front();
    choices_.insert(choices_.begin(), {oldest.name + QStringLiteral("   ") + oldest.date +
                                           QStringLiteral("   the oldest of this serial number"),
                                       oldest.file,
                                       {}});
}

QString CompareFacts::HistoryText() const {
    if (dated_.size() < 2) return {};
    QString rows;
    for (std::size_t i = 0; i < dated_.size(); ++i) {
        // The oldest and the newest ones: each has to be read and fitted.
        if (i > 0 && dated_.size() - i >= kMostDated) continue;
        const Dated& one = dated_[i];
        QString knee;
        try {
            knee = Together(KneeTextOf(
                one.file.isEmpty()
                    ? measuredCurve_
                    : CurveToCompare(rule_, ReadTest(one.file, measured_.testNumber).points)));
        } catch (const RunTimeError& error) {
            knee = TroubleText(one.name, error);
        }
        rows += Row(one.date, one.name.toHtmlEscaped(), knee.toHtmlEscaped());
    }
    return Paragraph(QStringLiteral("Smooth kneepoints of this serial number, ") + KneeWord(rule_) +
                     QLatin1Char(':')) +
           QStringLiteral("<table>%1</table>").arg(rows);
}

void CompareFacts::FindOnNameplate(const ShownRecords& shown, std::size_t test) {
    nameplate_.clear();
    nameplateTrouble_.clear();
    try {
        nameplate_ =
            NameplateFindings(ReadNameplate(folder_, serial_), shown, test, rule_, measuredCurve_);
    } catch (const RunTimeError& error) {
        nameplateTrouble_ = Paragraph(QString::fromUtf8(error.what()).toHtmlEscaped());
    }
}

void CompareFacts::TakeReference() {
    const Choice& choice = choices_.at(static_cast<std::size_t>(cboReference_->currentIndex()));
    std::vector<CurvePoint> points = choice.points;
    referenceName_ = choice.label;
    if (choice.file.endsWith(kCurveEnding, Qt::CaseInsensitive)) {
        referenceName_ = QFileInfo(choice.file).fileName().chopped(kCurveEnding.size());
        points = ParseReferenceCurve(ReadWholeFile(choice.file));
    } else if (!choice.file.isEmpty()) {
        const RecordTest test = ReadTest(choice.file, measured_.testNumber);
        points = test.points;
        referenceName_ = FromPage(test.recordName + " Test " + test.testNumber);
    }
    referenceCurve_ = CurveToCompare(rule_, points);
}

// --- What is kept beside the records -----------------------------------------------------------

void CompareFacts::AddCurve() {
    const QString path =
        prompts_.OpenFile(QFileInfo(folder_).absolutePath(), QStringLiteral("*.csv"));
    if (path.isEmpty()) return;
    QString name;
    try {
        name = KeepCurve(path);
    } catch (const RunTimeError& error) {
        prompts_.Message(QStringLiteral("The curve was not added. ") +
                         QString::fromUtf8(error.what()));
    }
    if (name.isEmpty()) return;
    picked_ = MakersLabel(name);
    OnKept();
}

// Its name; empty where the operator does not know its units.
QString CompareFacts::KeepCurve(const QString& path) {
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
    const std::string text = ReferenceCurveText(ParseReferenceCurve(bytes, units));
    // No list of records takes a name without another point for a record.
    const QString base =
        QFileInfo(path).completeBaseName().replace(QLatin1Char('.'), QLatin1Char('_'));
    QString name = base;
    for (int i = 2; FileExists(folder_ + name + kCurveEnding); ++i)
        name = base + QStringLiteral(" %1").arg(i);
    ReplaceFile(folder_ + name + kCurveEnding, text);
    return name;
}

void CompareFacts::TypeNameplate() {
    EventHandlers(prompts_).Run([this] {
        const NameplateTexts texts = ReadNameplate(folder_, serial_);
        auto* nameplate = new frmNameplate(FromPage(serial_), texts, prompts_, this);
        nameplate->OnSave = [this, folder = folder_,
                             serial = serial_](const NameplateTexts& typed) {
            KeepNameplate(folder, serial, typed);
            OnKept();
        };
        nameplate->open();
    });
}

// --- What comes of it ---------------------------------------------------------------------------

void CompareFacts::Update() {
    referenceCurve_ = {};
    sentences_.clear();
    QString html;
    if (measured_.points.empty()) {
        html = Paragraphs({{Verdict::None, "The test has no curve."}});
    } else if (choices_.empty()) {
        html = Paragraph(QStringLiteral("There is no other test to compare it with."));
    } else {
        try {
            TakeReference();
            html = Text();
        } catch (const RunTimeError& error) {
            html = Paragraph(TroubleText(cboReference_->currentText(), error).toHtmlEscaped());
        }
    }
    html += Paragraphs(RatioFindings(measured_.measuredRatio, measured_.nameplateRatio,
                                     measured_.polarity, LimitOf(*txtRatioLimit_)));
    for (const auto& [heading, findings] : nameplate_) {
        sentences_ += FromPage(heading + ":");
        html += Heading(FromPage(heading)) + Paragraphs(findings);
    }
    txtCompared_->setHtml(html + nameplateTrouble_ + history_);
    if (OnChanged) OnChanged();
}

QString CompareFacts::Paragraphs(const std::vector<Finding>& findings) {
    QString html;
    for (const Finding& finding : findings) {
        sentences_ += FromPage(finding.sentence);
        html += Paragraph(Judged(finding, palette()));
    }
    return html;
}

QString CompareFacts::Text() {
    const std::optional<double> limit = LimitOf(*txtLimit_);
    const CurveComparison comparison = CompareCurves(measuredCurve_, referenceCurve_);
    const Finding worst{VerdictOf(comparison, limit), SentenceOf(comparison, limit)};
    sentences_ += against_ + QLatin1Char(' ') + referenceName_;
    sentences_ += FromPage(worst.sentence);
    QString html = Heading(Judged(worst, palette()));
    if (!comparison.whyNot.empty()) return html;
    return html + TableOf(comparison) +
           Paragraphs({{Verdict::None, KneeSentenceOf(comparison.knee)}});
}

std::vector<ChartCurve> CompareFacts::Curves() const {
    const std::vector<CurvePoint>& points = referenceCurve_.points;
    std::vector<ChartCurve> curves;
    if (measured_.points.empty()) return curves;
    curves.push_back({measuredName_, measured_.points, {}, CurveLook::Normal});
    if (points.empty()) return curves;
    curves.push_back({referenceName_, points, {}, CurveLook::Normal});
    if (const std::optional<double> limit = LimitOf(*txtLimit_)) {
        ChartCurve band{{}, points, {}, CurveLook::Band};
        band.points.insert(band.points.end(), points.rbegin(), points.rend());
        for (std::size_t i = 0; i < band.points.size(); ++i)
            band.points[i].voltage *= 1 + (i < points.size() ? *limit : -*limit) / 100;
        curves.push_back(std::move(band));
    }
    return curves;
}

}  // namespace davo
