// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/main_menu.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

#include "common/settings.h"
#include "ui/form_parts.h"

namespace davo {

namespace {

template <class Parent>
QMenu* AddMenu(Parent* parent, const char* name, const char* caption) {
    QMenu* menu = Named(parent->addMenu(QLatin1String(caption)), name);
    Named(menu->menuAction(), name);
    // Items that a gloved finger meets.
    Enlarge(menu);
    return menu;
}

QAction* AddItem(QMenu* menu, const char* name, const char* caption) {
    return Named(menu->addAction(QLatin1String(caption)), name);
}

// An item whose data is the kneepoint type that it means.
QAction* AddMarker(QMenu* menu, const char* name, const char* caption, const char* type) {
    QAction* item = AddItem(menu, name, caption);
    item->setCheckable(true);
    item->setData(QLatin1String(type));
    return item;
}

void AddLine(QMenu* menu, const char* name) {
    Named(menu->addSeparator(), name);
}

}  // namespace

MainMenu::MainMenu(QMenuBar& bar) : mnuFile(AddMenu(&bar, "mnuFile", "&File")) {
    Enlarge(&bar);
    mnuRecall = AddItem(mnuFile, "mnuRecall", "&Recall Test");
    AddLine(mnuFile, "mnuLine1");
    QMenu* mnuCControl = AddMenu(mnuFile, "mnuCControl", "R&un Test");
    mnuBoth = AddItem(mnuCControl, "mnuBoth", "S&aturation && Ratio Tests");
    mnuRatio = AddItem(mnuCControl, "mnuRatio", "Ratio Test &Only");
    AddLine(mnuFile, "mnuLine2");
    mnuDownload = AddItem(mnuFile, "mnuDownload", "&Download Test Record");
    AddLine(mnuFile, "mnuLine3");
    QMenu* mnuSetup = AddMenu(mnuFile, "mnuSetup", "&Set Kneepoint Marker");
    mnuKneepoint30 = AddMarker(mnuSetup, "mnuKneepoint30", "IEEE &30 Degree Marker", kKneeIeee30);
    mnuKneepoint45 = AddMarker(mnuSetup, "mnuKneepoint45", "IEEE &45 Degree Marker", kKneeIeee45);
    mnuKneepointASA10 = AddMarker(mnuSetup, "mnuKneepointASA10", "&ASA 10/50 Marker", kKneeAsa);
    AddLine(mnuFile, "mnuLine4");
    mnuOverlay = AddItem(mnuFile, "mnuOverlay", "&Overlay 2 Tests");
    AddLine(mnuFile, "mnuLine5");
    mnuSetHeaderFile = AddItem(mnuFile, "mnuSetHeaderFile", "Setup Test &Header Information");
    mnuSetDescr = AddItem(mnuFile, "mnuSetDescr", "&Test Record Header Information");
    AddLine(mnuFile, "mnuLine6");
    mnuFileUtil = AddItem(mnuFile, "mnuFileUtil", "File &Utilities");
    mnuConfig = AddItem(mnuFile, "mnuConfig", "&Configure System");
    AddLine(mnuFile, "mnuLine7");
    mnuExit = AddItem(mnuFile, "mnuExit", "&Exit");
    mnuAbout = AddItem(mnuFile, "mnuAbout", "&About");
    working = new QActionGroup(mnuFile);
    working->setExclusionPolicy(QActionGroup::ExclusionPolicy::None);
    for (QAction* item :
         {mnuRecall, mnuCControl->menuAction(), mnuBoth, mnuRatio, mnuDownload, mnuOverlay,
          mnuSetHeaderFile, mnuSetDescr, mnuFileUtil, mnuConfig, mnuAbout}) {
        working->addAction(item);
    }
}

void MainMenu::EnableFile(bool enabled) {
    mnuFile->menuAction()->setEnabled(enabled);
    if (enabled) return;
    for (QMenu* menu : mnuFile->findChildren<QMenu*>())
        menu->close();
    mnuFile->close();
}

bool MainMenu::FileEnabled() const {
    return mnuFile->menuAction()->isEnabled();
}

void MainMenu::EnableRecordItems(bool enabled) {
    for (QAction* item : {mnuFileUtil, mnuOverlay, mnuSetDescr})
        item->setEnabled(enabled);
}

void MainMenu::ConnectKneepoint(const std::function<void(const QString&)>& chosen) {
    for (QAction* item : {mnuKneepoint30, mnuKneepoint45, mnuKneepointASA10})
        QObject::connect(item, &QAction::triggered, item,
                         [item, chosen] { chosen(item->data().toString()); });
}

void MainMenu::CheckKneepoint(const QString& kneepointType) {
    for (QAction* item : {mnuKneepoint30, mnuKneepoint45, mnuKneepointASA10})
        item->setChecked(item->data().toString() == kneepointType);
}

}  // namespace davo
