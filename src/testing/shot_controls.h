// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QSize>
#include <QString>
#include <vector>

#include "testing/shot_screen.h"

class QGroupBox;
class QHBoxLayout;
class QLineEdit;
class QPushButton;
class QWidget;

namespace davo {

class FitLabel;
class PageHeader;

// The test window's controls by their own names, laid out in window: the buttons, what is under
// way, the prompt, the readings.
struct ShotControls {
    // The letters are the user's, or the largest that a small screen has room for.
    explicit ShotControls(QWidget* window);

    // Shows what of screen differs from painted, without that all of it. Texts of buttons and
    // labels are their captions, of boxes their content.
    void Paint(const ShotScreen* painted, const ShotScreen& screen);

    // Puts chart at the right of the prompt, hidden.
    void PlaceBesidePrompt(QWidget* chart);
    // Shows or hides it. It stays hidden where the longest prompt could no longer be read from two
    // metres beside it, unless there is no message now.
    void ShowBesidePrompt(bool wanted);

    // Those that the window itself works with; each control has its own name as objectName.
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
    QLineEdit* txtHVolt;
    QLineEdit* txtXVolt;
    QPushButton* cmdStart;
    QPushButton* cmdContinue;
    QPushButton* cmdCancel;
    QPushButton* cmdHeader;
    QPushButton* cmdExit;

  private:
    std::vector<QWidget*> mirrored_;  // what shows a member of ShotScreen
    QHBoxLayout* promptRow_ = nullptr;
    QWidget* besidePrompt_ = nullptr;
    QSize promptRoom_;  // for these two widthBeside_ was found
    QString promptNotice_;
    int widthBeside_ = 0;  // what the longest prompt and the notice leave; 0: too little

    QSize PromptRoom() const;
    int WidthBeside(QSize room, const QString& notice, bool prompt) const;
    ShotControls() = default;
    static QFont FittingFont(const QWidget& window);
    void Build(QWidget* window);
    PageHeader* BuildButtons(QWidget* window);
    void BuildMessage(QWidget* window);
    void BuildCard();
    QGroupBox* BuildInputs(QWidget* window);
};

}  // namespace davo
