// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDate>
#include <QString>
#include <QWidget>
#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "analysis/comparison.h"
#include "common/settings.h"
#include "curves/shown_records.h"
#include "reports/chart_curve.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QTextEdit;

namespace davo {

// How far a test's curve is from another one: which one, the limits, and what comes of it.
class CompareFacts : public QWidget {
  public:
    // The limits are those of settings, which must outlive it.
    CompareFacts(Settings& settings, QWidget* parent);

    // Compares a shown test with what is chosen. That is offered: the oldest record of the same
    // serial number in folder (ends with the separator), the other tests that are shown, and the
    // other records there, as its list has them. What was chosen stays so where it is still
    // offered. The kneepoints are those of rule.
    void Compare(const ShownRecords& shown, std::size_t test, const QString& folder, KneeRule rule);

    // Both curves, and the reference's with the limit added and taken off.
    std::vector<ChartCurve> Curves() const;
    // Another reference or limit was chosen.
    std::function<void()> OnChanged;

    // In the order of the Tab key.
    std::array<QWidget*, 4> Stops() const;

  private:
    // A test that is shown, or a record's file of which the test of the same number is taken.
    struct Choice {
        QString label;
        QString file;
        std::optional<RecordTest> test;
    };

    QLineEdit* LimitBox(const char* name, const QString& caption, QString& kept);
    void Offer(const ShownRecords& shown, std::size_t test, const QString& folder);
    void AddRecords(const RecordFacts& record, const QString& folder);
    // The smooth kneepoints of one serial number, the oldest first; empty for a single record.
    QString HistoryText();
    // Reads the chosen reference; throws what ReadRecordFacts throws.
    void TakeReference();
    void Update();
    QString Text() const;
    QString RatioText() const;

    Settings& settings_;
    // A record of the serial number; of the measured one there is no file.
    struct Dated {
        QDate day;
        QString date;
        QString name;
        QString file;
    };
    std::vector<Choice> choices_;
    std::vector<Dated> dated_;
    QString history_;
    KneeRule rule_ = KneeRule::Asa1050;
    RecordTest measured_;
    QString measuredName_;
    ComparedCurve measuredCurve_;
    QString referenceName_;
    ComparedCurve referenceCurve_;
    CurveComparison comparison_;

    QLabel* lblCompared_;
    QComboBox* cboReference_;
    QLineEdit* txtLimit_;
    QLineEdit* txtRatioLimit_;
    QTextEdit* txtCompared_;
};

}  // namespace davo
