// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QWidget>
#include <vector>

#include "app/port_labels.h"
#include "records/directory_file.h"

class QAction;
class QLabel;
class QStackedLayout;

namespace davo {

class RecordList;
class SessionCards;

// So many of the newest records are shown.
inline constexpr std::size_t kNewestRecords = 10;

struct HomeFacts {
    LinkGlance link;
    std::vector<ListRow> records;  // newest first, as many as there are
    QString dataPath;
    RebuildResult listing = {};  // of the data folder
};

// The main area while no other window is open: the state of the link, the sessions that were never
// saved, the newest records, and a large button for each of the menu items that are chosen most.
class HomePanel : public QWidget {
  public:
    // Each button bears its menu item's caption, does what that does and is enabled while the
    // item can be chosen: it and every menu above it is enabled. The items stand in their menus
    // already; the button of "mnuBoth" is called "cmdBoth".
    HomePanel(const std::vector<QAction*>& items, QWidget* parent);

    void ShowFacts(const HomeFacts& facts);

    SessionCards& Sessions() { return *sessions_; }

  private:
    QWidget* BuildLink();
    QWidget* BuildRecords(QWidget* lastButton);

    QLabel* lblPort_ = nullptr;
    QLabel* lblDevice_ = nullptr;
    QLabel* lblModel_ = nullptr;
    SessionCards* sessions_ = nullptr;
    QStackedLayout* recordPages_ = nullptr;
    RecordList* lvNewest_ = nullptr;
    QLabel* lblNoRecords_ = nullptr;
};

}  // namespace davo
