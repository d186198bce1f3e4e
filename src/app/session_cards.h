// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <vector>

#include "records/unsaved_sessions.h"

class QLabel;
class QVBoxLayout;

namespace davo {

// The sessions that were never saved, a card for each, the newest first, each to be saved now or
// later. What is left for later has no card until the program starts again or it is asked for.
class SessionCards : public QWidget {
  public:
    // The Tab key reaches the cards behind the control before.
    SessionCards(QWidget* before, QWidget* parent);

    // In the place of those before; without any the cards are hidden. oldest first.
    void Show(const std::vector<UnsavedSession>& sessions);

    // "Save" of a card was pressed.
    std::function<void(const UnsavedSession& session)> OnSave;

  private:
    void Make();
    // Puts the keyboard's order right, and the focus where it was.
    void OrderButtons(bool focused);
    QWidget* MakeCard(const UnsavedSession& session);
    QWidget* BuildLater();

    QWidget* before_;
    std::vector<UnsavedSession> sessions_;
    QStringList later_;  // the capture files of those
    QWidget* scroll_ = nullptr;
    QVBoxLayout* cards_ = nullptr;
    QWidget* laterLine_ = nullptr;
    QLabel* lblLater_ = nullptr;
};

// When the session was made, and how many shots it has: no two of a folder have the same words.
QString WhenWords(const UnsavedSession& session);

// Its station and its serial number.
QString WhereWords(const UnsavedSession& session);

}  // namespace davo
