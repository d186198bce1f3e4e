// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <string>

class QLabel;

namespace davo {

// "About DAVO": the instrument's model and the program's version. Modeless; it deletes itself when
// it is closed.
class frmAbout : public QDialog {
  public:
    explicit frmAbout(QWidget* parent);

    // Centres the window and shows instrumentModel (Windows-1252).
    void Form_Load(const std::string& instrumentModel);

  private:
    QLabel* lblDavoVer_;
};

}  // namespace davo
