// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/record_preview.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QStringList>
#include <algorithm>

#include "analysis/kneepoint.h"
#include "common/text.h"
#include "curves/curve_chart.h"
#include "reports/record_facts.h"
#include "reports/record_texts.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

constexpr std::size_t kMostPreviewTests = 3;
constexpr QSize kChartSize(270, 190);
constexpr int kChartWidth = 620;  // of a preview with a chart
constexpr int kLeastPreviewHeight = 100;
constexpr double kPreviewGrowth = 1.1;

QString TestLine(const RecordTest& test, KneeRule rule) {
    QStringList parts;
    const auto add = [&parts](const char* caption, const std::string& text) {
        if (!text.empty()) parts << QLatin1String(caption) + FromPage(text).toHtmlEscaped();
    };
    add("ratio ", test.measuredRatio);
    add("error ", test.percentError);
    add("", test.polarity);
    if (!test.points.empty())
        parts << QStringLiteral("kneepoint ") + JudgedText(FactOf(test, rule)).toHtmlEscaped();
    return QStringLiteral("<b>Test %1</b>: %2")
        .arg(FromPage(test.testNumber).toHtmlEscaped(), parts.join(QStringLiteral(", ")));
}

// With the results of so many tests at most.
QString RecordText(const RecordFacts& record, KneeRule rule, std::size_t most) {
    QStringList lines{QStringLiteral("<b>%1</b>").arg(FromPage(record.name).toHtmlEscaped()),
                      HeaderFields(record).join(QStringLiteral("&nbsp; "))};
    const std::size_t shown = std::min(record.tests.size(), most);
    for (std::size_t i = 0; i < shown; ++i)
        lines << TestLine(record.tests.at(i), rule);
    const std::size_t left = record.tests.size() + record.testsLeft - shown;
    if (left > 0) lines << QStringLiteral("and %1 more").arg(left);
    lines.removeAll(QString());
    return lines.join(QStringLiteral("<br>"));
}

std::vector<ChartCurve> CurvesOf(const RecordFacts& record) {
    std::vector<ChartCurve> curves;
    for (const RecordTest& test : record.tests) {
        if (test.points.empty() || curves.size() == kMostPreviewTests) continue;
        curves.push_back({FromPage(test.testNumber), test.points, {}, CurveLook::Normal});
    }
    return curves;
}

}  // namespace

RecordPreview::RecordPreview(QWidget* parent)
    : QWidget(parent),
      chart_(Named(new CurveChart(this), "chtPreview")),
      lblRecord_(MakeParagraph(this, "lblPreview", {}, kPreviewGrowth)) {
    chart_->SetInteractive(false);
    chart_->setFixedSize(kChartSize);
    lblRecord_->setTextFormat(Qt::RichText);
    lblRecord_->setAlignment(Qt::AlignTop);
    lblRecord_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
    setMinimumHeight(kLeastPreviewHeight);
    auto* row = WithMargin(new QHBoxLayout(this), 0);
    row->setSpacing(kFormSpacing);
    row->addWidget(chart_, 0, Qt::AlignTop);
    row->addWidget(lblRecord_, 1);
}

void RecordPreview::ShowRecord(const QString& path, const QString& kneepointType) {
    try {
        const RecordFacts record = ReadRecordFacts(path, kMostPreviewTests);
        const auto rule = KneeRuleOf(kneepointType.toStdString()).value_or(KneeRule::Asa1050);
        texts_.clear();
        for (std::size_t tests = kMostPreviewTests + 1; tests > 0; --tests)
            texts_ << RecordText(record, rule, tests - 1);
        chart_->SetCurves(CurvesOf(record));
    } catch (const RunTimeError& error) {
        texts_ = {TroubleText(QFileInfo(path).completeBaseName(), error).toHtmlEscaped()};
        chart_->SetCurves({});
    }
    FitText();
}

void RecordPreview::FitText() {
    for (const QString& text : texts_) {
        lblRecord_->setText(text);
        if (lblRecord_->heightForWidth(lblRecord_->width()) <= height()) return;
    }
}

void RecordPreview::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    chart_->setVisible(width() >= kChartWidth);
    layout()->activate();
    FitText();
}

}  // namespace davo
