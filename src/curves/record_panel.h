// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "common/prompts.h"
#include "common/settings.h"
#include "curves/record_saver.h"
#include "curves/shown_records.h"

class QBoxLayout;
class QLabel;
class QLayout;
class QPlainTextEdit;
class QPushButton;
class QTabBar;

namespace davo {

class CompareFacts;
class CurveChart;
class ResultsTable;

// How many records the panel shows over each other.
inline constexpr std::size_t kMostShownRecords = 10;

// The selected records at a glance, beside a list of records: curves, kneepoints, results, header,
// and what is doubtful, in words. Several records: their curves over each other, ten at most.
class RecordPanel : public QWidget {
  public:
    // prompts must outlive it.
    explicit RecordPanel(Prompts& prompts, QWidget* parent = nullptr);

    // Shows the records of these files (full paths) a moment later, once for many calls, as soon as
    // it is visible. A file that cannot be read is said in the panel; nothing is thrown. Files are
    // read again only when they have changed.
    void ShowRecords(const std::vector<QString>& files);
    void Show(std::vector<ShownRecord> records);
    // Chooses the test of that place among those that are shown, also of records that come a moment
    // later. The choice stays as long as the same records are shown.
    void ChooseTest(std::size_t test);

    // The marker whose kneepoints a certificate marks, as in Settings::kneepointType: as it is when
    // the certificate is made. It must outlive the panel.
    void SetMarker(const QString& kneepointType) { marker_ = &kneepointType; }
    void SetMarker(const QString&&) = delete;

    // Adds a tab that compares the chosen test with another one, by the limits of settings, which
    // must outlive the panel.
    void OfferCompare(Settings& settings);

    // Whether a button, and Escape, lead back to the list of records.
    void OfferBack(bool on);
    void FocusBack();
    std::function<void()> OnBack;

    QSize sizeHint() const override { return {480, 640}; }
    // Of the panel in a small window: a low chart, a few rows of results, two lines of doubts.
    QSize minimumSizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void BuildTop(QBoxLayout* column);
    void BuildFacts();
    QLayout* BuildButtons();

    // Gives the chart, the results and the doubts their room.
    void Arrange();
    void ShowHeader();
    int DoubtsHeight(int lines) const;

    void ReadAndShow();
    void ShowTop();
    void ShowCurves();
    bool Compares() const;
    // Compares where that tab is chosen.
    void Compare();
    void ShowDoubts();
    // The test that is drawn stronger; nothing without a test.
    std::optional<std::size_t> Chosen() const;

    void ShowSaved(const QStringList& said);
    QStringList SaveAs(const QString& ending, const RecordSaver::Write& write);
    QStringList SaveCertificate();
    QStringList SaveCsv(const QString& path);

    Prompts& prompts_;
    RecordSaver saver_;
    QTimer soon_;
    QBoxLayout* top_ = nullptr;    // what the record is
    QBoxLayout* body_ = nullptr;   // chart and facts, below or beside each other
    QBoxLayout* facts_ = nullptr;  // results and doubts, the same
    std::vector<ShownRecord> wanted_;
    ShownRecords shown_;
    std::size_t chosen_ = 0;
    QStringList header_;  // its fields
    bool more_ = false;   // whether all of them are shown
    const QString* marker_ = nullptr;

    QLabel* lblRecord_ = nullptr;
    QLabel* lblHeader_ = nullptr;
    QLabel* lblTrouble_ = nullptr;
    QLabel* lblNoCurve_ = nullptr;
    QPushButton* cmdMore_ = nullptr;
    QLabel* lblSaved_ = nullptr;
    CurveChart* chart_ = nullptr;
    ResultsTable* tblTests_ = nullptr;
    QPlainTextEdit* txtDoubts_ = nullptr;
    QPushButton* cmdBack_ = nullptr;
    QTabBar* tabs_ = nullptr;  // none where nothing is compared
    CompareFacts* compare_ = nullptr;
    QWidget* saves_ = nullptr;  // the buttons that save
};

}  // namespace davo
