// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;

namespace davo {

class CurveChart;

// A record at a glance: its curves, its header and the results of its first tests.
class RecordPreview : public QWidget {
  public:
    explicit RecordPreview(QWidget* parent);

    // Reads and shows the record file at path; says why it cannot be read. kneepointType is the
    // marker whose kneepoints are shown.
    void ShowRecord(const QString& path, const QString& kneepointType);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    // As many tests as there is room for.
    void FitText();

    CurveChart* chart_;
    QLabel* lblRecord_;
    QStringList texts_;  // of the record, the longest first
};

}  // namespace davo
