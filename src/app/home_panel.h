// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <utility>
#include <vector>

#include "app/status_line.h"

class QAction;
class QLabel;
class QLayout;
class QPushButton;
class QStackedLayout;

namespace davo {

class RecordList;
class SessionCards;

// A menu item with a button in the second row, and what that says.
using SecondItem = std::pair<QAction*, const char*>;

// The main area while no other window is open: the state of the link, the sessions that were never
// saved, the newest records, and a button for each of the menu items that are chosen most.
class HomePanel : public QWidget {
  public:
    // Each button does what its menu item does and is enabled while the item can be chosen: it and
    // every menu above it is enabled. The items are in their menus already; the button of "mnuBoth"
    // is called "cmdBoth". The large buttons have their items' captions; below are smaller ones,
    // and one for the guide.
    HomePanel(const std::vector<QAction*>& items, const std::vector<SecondItem>& second,
              QWidget* parent);

    void ShowFacts(const ShellFacts& facts);

    // The keyboard is at the button of item; where that has none, or one that is disabled, at the
    // first button that can be pressed.
    void FocusButtonOf(const QAction* item);

    // Reads the selected record again.
    void Preview();

    // Enter or a double click on a record.
    std::function<void(const QString& file)> OnView;
    // A certificate of the selected record is wanted.
    std::function<void(const QString& file)> OnCertificate;

    // Below the list's heading, until another record is selected or another window was open: in
    // lines, none hides it.
    void Say(const QStringList& lines);
    // Selects the record that a session was saved as, and says what can be made of it.
    void ShowSavedSession(const QString& file);
    // While one waits nothing else can be begun.
    void EnableWorking(bool enabled);

    SessionCards& Sessions() { return *sessions_; }

  protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    class RecordPreview;

    QWidget* BuildLink();
    QWidget* BuildRecords(QWidget* lastButton);
    QLayout* BuildSecondRow(const std::vector<SecondItem>& second);
    void ShowRecords(const ShellFacts& facts);
    // Of the selected row; nothing without one.
    QString SelectedFile() const;
    bool HasRoom() const;  // for the preview
    void EnableCertificate();

    std::vector<QPushButton*> buttons_;
    ShellFacts facts_;
    QLabel* lblDot_ = nullptr;
    QLabel* lblPort_ = nullptr;
    QLabel* lblDevice_ = nullptr;
    QLabel* lblModel_ = nullptr;
    SessionCards* sessions_ = nullptr;
    QStackedLayout* recordPages_ = nullptr;
    RecordList* lvNewest_ = nullptr;
    QLabel* lblNoRecords_ = nullptr;
    QLabel* lblSaved_ = nullptr;
    QPushButton* cmdCertificate_ = nullptr;
    bool working_ = true;
    bool readable_ = false;  // the selected record
    RecordPreview* preview_ = nullptr;
};

}  // namespace davo
