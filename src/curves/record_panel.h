#pragma once

#include <QString>
#include <QWidget>
#include <vector>

#include "common/prompts.h"

namespace davo {

// The selected records at a glance, beside a list of records: curves, kneepoints, results, header,
// and what is doubtful, in words. Several records: their curves over each other, ten at most.
class RecordPanel : public QWidget {
  public:
    // prompts must outlive it.
    explicit RecordPanel(Prompts& prompts, QWidget* parent = nullptr);

    // Shows the records of these files (full paths), at once when it is visible, else when it
    // becomes so. A file that cannot be read is said in the panel; nothing is thrown. Files are
    // read again only when they have changed.
    void ShowRecords(const std::vector<QString>& files);

    QSize sizeHint() const override;
};

}  // namespace davo
