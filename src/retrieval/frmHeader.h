#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "common/event_handlers.h"
#include "records/header_table.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace davo {

// "Test Record Header Information". Mode 0, opened by the test window: the boxes become the
// current header for the tests that follow.
class frmHeader : public QDialog {
  public:
    // All must outlive the window. testNotes: Windows-1252, lines joined by CR LF.
    frmHeader(HeaderTable& header, std::string& testNotes, Prompts& prompts, QWidget* parent);

    // The header or the notes have changed.
    std::function<void()> OnChanged;

  private:
    void BuildBoxes(QVBoxLayout* column);
    void BuildButtons(QVBoxLayout* column);
    void cmdSave_Click();
    void cmdNotes_Click();

    HeaderTable& header_;
    std::string& testNotes_;
    Prompts& prompts_;
    EventHandlers handlers_;
    std::array<QLineEdit*, kHeaderFieldCount> txtHeader_{};
    QLabel* lblUsed_ = nullptr;
    QPushButton* cmdSave_ = nullptr;
    QPushButton* cmdNotes_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
};

}  // namespace davo
