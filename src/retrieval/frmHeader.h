#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "records/header_table.h"

class QLineEdit;

namespace davo {

// "Test Record Header Information". Mode 0, opened by the test window: the boxes become the
// current header for the tests that follow.
class frmHeader : public QDialog {
 public:
    // header and testNotes must outlive the window.
    frmHeader(HeaderTable& header, std::string& testNotes, QWidget* parent);

    // The header or the notes have changed.
    std::function<void()> OnChanged;

 private:
    void cmdSave_Click();
    void cmdNotes_Click();

    HeaderTable& header_;
    std::string& testNotes_;
    std::array<QLineEdit*, kHeaderFieldCount> txtHeader_{};
};

}  // namespace davo
