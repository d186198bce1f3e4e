// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <QString>

#include "testing/shot_screen.h"

class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

namespace davo {

class FitLabel;
class PageHeader;

// The test window's controls by their own names, laid out in window: the buttons, what is under
// way, the prompt, the readings.
struct ShotControls {
    explicit ShotControls(QWidget* window);

    // Shows what of screen differs from painted, without that all of it. Texts of buttons and
    // labels are their captions, of boxes their content.
    void Paint(const ShotScreen* painted, const ShotScreen& screen);

    // Puts chart at the right of the prompt, hidden.
    void PlaceBesidePrompt(QWidget* chart);
    // Shows or hides it. It stays hidden where the longest prompt could no longer be read from two
    // metres beside it, unless there is no message now.
    void ShowBesidePrompt(bool wanted);

    QLabel* lblTest;
    QLabel* lblTime;
    QGroupBox* frmeMessage;
    FitLabel* lblMessage;
    FitLabel* lblConfirm;
    FitLabel* lblDamage;
    FitLabel* lblNotice;
    // In the place of the prompt and the call to confirm while there is none.
    FitLabel* lblCard;
    QWidget* cardLine;
    FitLabel* lblDisk;
    QLineEdit* txtErrorLimit;
    QGroupBox* Frame3;
    QLineEdit* txtCur;
    QLineEdit* txtVolt;
    QLineEdit* txtRatio;
    QLineEdit* txtPolarity;
    QLabel* lblPE;
    QLineEdit* txtPE;
    QGroupBox* Frame4;
    QLineEdit* txtHVolt;
    QLineEdit* txtXVolt;
    QLabel* lblCRatio;
    QLineEdit* txtCRatio;
    QGroupBox* Frame5;
    QLabel* lblCRCount;
    QLabel* lblRatioCount;
    QLabel* lblSatCount;
    QGroupBox* Frame1;
    QPushButton* cmdStart;
    QPushButton* cmdContinue;
    QPushButton* cmdCancel;
    QPushButton* cmdHeader;
    QPushButton* cmdExit;

  private:
    QHBoxLayout* promptRow_ = nullptr;
    QWidget* besidePrompt_ = nullptr;
    QSize promptRoom_;  // for these two widthBeside_ was found
    QString promptNotice_;
    int widthBeside_ = 0;  // what the longest prompt and the notice leave; 0: too little

    QSize PromptRoom() const;
    int WidthBeside(QSize room, const QString& notice, bool prompt) const;
    QHBoxLayout* BuildTopRow(QWidget* window);
    void BuildMessage(QWidget* window);
    void BuildCard();
    QHBoxLayout* BuildResults(QWidget* window);
    void BuildData(QWidget* window);
    void BuildInputs(QWidget* window);
    void BuildCounters(QWidget* window);
    PageHeader* BuildButtons(QWidget* window);
};

}  // namespace davo
