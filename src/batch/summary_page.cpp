// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/summary_page.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "common/text.h"
#include "records/directory_entry.h"
#include "reports/chart_curve.h"
#include "reports/log_axes.h"
#include "reports/record_texts.h"

// Outside the namespace, because it names a function that the resource compiler makes there.
static void LoadPage() {
    Q_INIT_RESOURCE(summary_page);
}

namespace davo {

namespace {

// More curves over each other tell nothing, and a browser would take long to draw them.
constexpr std::size_t kMostCurves = 400;

// Behind that of the record's name.
constexpr const char* kNoTest = "<td colspan=\"18\">There is no test in it.</td></tr>\n";

std::string Escaped(const QString& text) {
    return text.toHtmlEscaped().toStdString();
}

std::string Attribute(const char* name, const QString& text) {
    return std::string(" ") + name + "=\"" + Escaped(text) + '"';
}

std::string TextCell(const QString& text, const std::string& attributes = {}) {
    return "<td" + attributes + '>' + Escaped(text) + "</td>";
}

std::string NumberCell(const QString& text, const std::string& attributes = {}) {
    return TextCell(text, " class=\"n\"" + attributes);
}

std::string Number(double value) {
    return QByteArray::number(value, 'f', 1).toStdString();
}

std::vector<double> Inside(std::vector<double> marks, LogSpan span) {
    std::erase_if(marks, [span](double mark) {
        return std::log10(mark) < span.low || std::log10(mark) > span.high;
    });
    return marks;
}

// The plane of the chart, with its axes.
class Plane {
  public:
    Plane(LogSpan across, LogSpan up) : across_(across), up_(up) {}

    std::string At(double current, double voltage) const {
        return Number(X(current)) + ' ' + Number(Y(voltage));
    }
    double X(double current) const {
        return kLeft + (std::log10(current) - across_.low) / across_.Length() * (kRight - kLeft);
    }
    double Y(double voltage) const {
        return kBottom - (std::log10(voltage) - up_.low) / up_.Length() * (kBottom - kTop);
    }
    std::string Axes() const;

  private:
    static constexpr double kLeft = 70;
    static constexpr double kRight = 985;
    static constexpr double kTop = 20;
    static constexpr double kBottom = 520;

    static std::string Text(double x, double y, const char* anchor, const QString& text) {
        return "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" text-anchor=\"" + anchor +
               "\">" + Escaped(text) + "</text>\n";
    }
    std::string Lines(const char* kind, const std::vector<double>& across,
                      const std::vector<double>& up) const;

    LogSpan across_;
    LogSpan up_;
};

std::string Plane::Lines(const char* kind, const std::vector<double>& across,
                         const std::vector<double>& up) const {
    std::string path = std::string("<path class=\"") + kind + "\" d=\"";
    for (const double at : across)
        path += 'M' + Number(X(at)) + ' ' + Number(kTop) + 'V' + Number(kBottom);
    for (const double at : up)
        path += 'M' + Number(kLeft) + ' ' + Number(Y(at)) + 'H' + Number(kRight);
    return path + "\"/>\n";
}

std::string Plane::Axes() const {
    constexpr double kGap = 8;
    constexpr double kHeight = 20;
    const std::vector<double> across = Inside(AxisMarks(across_), across_);
    const std::vector<double> up = Inside(AxisMarks(up_), up_);
    std::string axes =
        "<g class=\"grid\">\n" +
        Lines("fine", Inside(FineMarks(across_), across_), Inside(FineMarks(up_), up_)) +
        Lines("mark", across, up) + "</g>\n";
    for (const double at : across)
        axes += Text(X(at), kBottom + kHeight, "middle", ValueText(at));
    for (const double at : up)
        axes += Text(kLeft - kGap, Y(at) + kGap / 2, "end", ValueText(at));
    return axes + Text(kRight, kBottom + 2 * kHeight, "end", QStringLiteral("Current (A)")) +
           Text(kGap, kTop - kGap / 2, "start", QStringLiteral("Voltage (V)"));
}

}  // namespace

void SummaryPage::Add(const RecordFacts& record, const QString& path, const QStringList& files) {
    ++records_;
    std::string links = "<td>";
    for (const QString& file : files) {
        const QByteArray to = QUrl::toPercentEncoding(
            folder_.relativeFilePath(QFileInfo(file).absoluteFilePath()), "/");
        links += "<a href=\"" + to.toStdString() + "\">" +
                 Escaped(file.mid(file.lastIndexOf(QLatin1Char('.')) + 1)) + "</a> ";
    }
    links += "</td>";
    const std::string name = TextCell(FromPage(record.name), Attribute("title", path));
    for (const RecordTest& test : record.tests)
        AddTest(record, test, name, links);
    if (record.tests.empty()) rows_ += "<tr>" + name + kNoTest;
}

void SummaryPage::AddTest(const RecordFacts& record, const RecordTest& test,
                          const std::string& before, const std::string& behind) {
    const RecordFileHeader& header = record.headers.at(test.header);
    const std::optional<QDate> date = ParseRecordDate(header.date);
    const auto& [company, station, circuit, maker, model, serial, comments, op] = header.fields;
    const auto put = [this](const std::string& text) { rows_ += TextCell(FromPage(text)); };
    const auto putNumber = [this](const std::string& text) { rows_ += NumberCell(FromPage(text)); };
    rows_ += "<tr id=\"t" + std::to_string(++tests_) + "\">" + before;
    putNumber(test.testNumber);
    rows_ += TextCell(FromPage(header.date),
                      date ? Attribute("data-key", date->toString(Qt::ISODate)) : std::string());
    for (const std::string* text : {&station, &circuit, &serial})
        put(*text);
    for (const std::string* text : {&test.nameplateRatio, &test.measuredRatio, &test.percentError})
        putNumber(*text);
    put(test.polarity);
    for (const KneeRule rule : kRuleRows) {
        const KneeFact& fact = FactOf(test, rule);
        rows_ += NumberCell(JudgedText(fact), Attribute("title", DoubtOf(fact)));
    }
    rows_ += behind;
    for (const std::string* text : {&company, &maker, &model, &comments, &op})
        put(*text);
    rows_ += "</tr>\n";

    Curve curve{tests_, record.name + " Test " + test.testNumber, {}, {}};
    std::copy_if(test.points.begin(), test.points.end(), std::back_inserter(curve.points),
                 CanBeDrawn);
    if (curve.points.empty() || ++withCurve_ > kMostCurves) return;
    const std::optional<CurvePoint> knee = FactOf(test, rule_).At();
    if (knee && CanBeDrawn(*knee)) curve.knee.push_back(*knee);
    curves_.push_back(std::move(curve));
}

void SummaryPage::AddUnread(const QString& sentence) {
    unread_ += "<li>" + Escaped(sentence) + "</li>\n";
}

std::string SummaryPage::Counts() const {
    QString text = QStringLiteral("Records: %1. Tests: %2.").arg(records_).arg(tests_);
    if (curves_.empty()) return Escaped(text);
    text += QStringLiteral(" The chart marks the kneepoints by %1").arg(KneeWord(rule_));
    if (withCurve_ > curves_.size()) {
        text += QStringLiteral("; it has the first %1 of %2 curves")
                    .arg(curves_.size())
                    .arg(withCurve_);
    }
    return Escaped(text + QLatin1Char('.'));
}

std::string SummaryPage::Chart() const {
    if (curves_.empty()) return {};
    std::vector<double> currents;
    std::vector<double> voltages;
    for (const Curve& curve : curves_) {
        for (const auto* points : {&curve.points, &curve.knee}) {
            for (const CurvePoint& point : *points) {
                currents.push_back(point.current);
                voltages.push_back(point.voltage);
            }
        }
    }
    const Plane plane(SpanAround(currents), SpanAround(voltages));
    std::string svg =
        "<svg viewBox=\"0 0 1000 570\" role=\"img\" aria-label=\"Excitation curves\">\n" +
        plane.Axes();
    for (const Curve& curve : curves_) {
        std::string path;
        for (const CurvePoint& point : curve.points)
            path += (path.empty() ? 'M' : 'L') + plane.At(point.current, point.voltage);
        svg += "<a class=\"curve\" href=\"#t" + std::to_string(curve.row) + "\"><title>" +
               Escaped(FromPage(curve.name)) + "</title><path d=\"" + path + "\"/>";
        for (const CurvePoint& knee : curve.knee) {
            svg += "<circle r=\"3\" cx=\"" + Number(plane.X(knee.current)) + "\" cy=\"" +
                   Number(plane.Y(knee.voltage)) + "\"/>";
        }
        svg += "</a>\n";
    }
    return svg + "</svg>";
}

std::string SummaryPage::Html() const {
    LoadPage();
    QFile file(QStringLiteral(":/davo/batch/summary_page.html"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    std::string page = file.readAll().toStdString();
    const std::string unread =
        unread_.empty() ? std::string() : "<h2>Not in the table</h2>\n<ul>\n" + unread_ + "</ul>";
    // No part has such a place in it: what a record says is escaped.
    constexpr std::string_view kPlace = "<!-- % -->";
    for (const std::string& part : {Counts(), Chart(), rows_, unread})
        page.replace(page.find(kPlace), kPlace.size(), part);
    return page;
}

}  // namespace davo
