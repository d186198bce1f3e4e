// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

class QAction;
class QActionGroup;
class QMenu;
class QMenuBar;

namespace davo {

// The menu tree of the main window. An item's objectName is its name here.
struct MainMenu {
    // Builds the tree in bar.
    explicit MainMenu(QMenuBar& bar);

    QMenu* mnuFile;
    QAction* mnuRecall;
    QAction* mnuBoth;
    QAction* mnuRatio;
    QAction* mnuDownload;
    QAction* mnuKneepoint30;
    QAction* mnuKneepoint45;
    QAction* mnuKneepointASA10;
    QAction* mnuOverlay;
    QAction* mnuSetHeaderFile;
    QAction* mnuSetDescr;
    QAction* mnuFileUtil;
    QAction* mnuConfig;
    QAction* mnuExit;
    QAction* mnuAbout;

    // A waiting item keeps all from working but Exit and the markers: these are in the group. Each
    // that was disabled before stays so.
    QActionGroup* working;

    // Disabled, the menu also closes: under its open items a window opens.
    void EnableFile(bool enabled);
    bool FileEnabled() const;

    // The items that work on saved records: File Utilities, Overlay 2 Tests and Test Record Header
    // Information.
    void EnableRecordItems(bool enabled);

    // Has the item of a kneepoint type call chosen with it.
    void ConnectKneepoint(const std::function<void(const QString&)>& chosen);

    // Checks the item of kneepointType and no other; none when it is an unknown text.
    void CheckKneepoint(const QString& kneepointType);
};

}  // namespace davo
