// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <array>
#include <functional>
#include <utility>
#include <vector>

#include "analysis/comparison.h"
#include "common/prompts.h"
#include "common/settings.h"
#include "curves/shown_records.h"
#include "reports/chart_curve.h"

class QComboBox;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class QTextEdit;

namespace davo {

// How far a test's curve is from another one: which one, the limits, and what comes of it.
class CompareFacts : public QWidget {
  public:
    // The limits are those of settings; both must outlive it.
    CompareFacts(Settings& settings, Prompts& prompts, QWidget* parent);

    // Compares a shown test with what is chosen. That is offered: the oldest record of the same
    // serial number in folder (ends with the separator), the other tests that are shown, and the
    // maker's curves and other records there, as its list has them. What the operator chose stays
    // so where it is still offered. The kneepoints are those of rule.
    void Compare(const ShownRecords& shown, std::size_t test, const QString& folder, KneeRule rule);

    // Both curves, and the band of the limit around the reference's.
    std::vector<ChartCurve> Curves() const;
    // What is said of the test, without tables and the other years; the first names what with.
    QStringList Sentences() const { return sentences_; }
    // Another reference or limit was chosen.
    std::function<void()> OnChanged;
    // A curve or a nameplate was kept in the folder: Compare is to be called again.
    std::function<void()> OnKept;

    // In the order of the Tab key.
    std::array<QWidget*, 6> Stops() const;

  private:
    // A test that is shown, a maker's curve, or a record's file of which the test of the same
    // number is taken.
    struct Choice {
        QString label;
        QString file;
        std::vector<CurvePoint> points;
    };
    // A record of the serial number; of the measured one there is no file.
    struct Dated {
        QDate day;
        QString date;
        QString name;
        QString file;
    };

    QLineEdit* AddLimit(QLayout* row, const char* name, const char* caption, QString& kept);
    void Offer(const ShownRecords& shown, std::size_t test);
    void AddRecords(const RecordFacts& record);
    // The smooth kneepoints of one serial number, the oldest first; empty for a single record.
    QString HistoryText() const;
    // What the nameplate of the serial number says of the chosen test.
    void FindOnNameplate(const ShownRecords& shown, std::size_t test);
    // Reads the chosen reference; throws what ReadRecordFacts throws.
    void TakeReference();
    // Asks for a maker's curve and keeps it beside the records.
    void AddCurve();
    QString KeepCurve(const QString& path);
    void TypeNameplate();
    void Update();
    QString Text();
    // As paragraphs; they are taken into the sentences, too.
    QString Paragraphs(const std::vector<Finding>& findings);

    Settings& settings_;
    Prompts& prompts_;
    std::vector<Choice> choices_;
    std::vector<Dated> dated_;
    QString folder_;
    std::string serial_;  // of the measured test
    std::vector<std::pair<std::string, std::vector<Finding>>> nameplate_;
    QString nameplateTrouble_;
    QString history_;
    QStringList sentences_;
    KneeRule rule_ = KneeRule::Asa1050;
    RecordTest measured_;
    QString measuredName_;
    QString against_;  // what the sentences begin with
    ComparedCurve measuredCurve_;
    QString picked_;  // the reference that the operator chose, also for other records
    QString referenceName_;
    ComparedCurve referenceCurve_;

    QLabel* lblCompared_;
    QComboBox* cboReference_;
    QPushButton* cmdAddCurve_;
    QPushButton* cmdNameplate_;
    QLineEdit* txtLimit_;
    QLineEdit* txtRatioLimit_;
    QTextEdit* txtCompared_;
};

}  // namespace davo
