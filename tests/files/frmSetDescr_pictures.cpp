// SPDX-License-Identifier: GPL-3.0-or-later
// Grabs the editor of saved headers into the folder that the argument names. Scale:
// QT_SCALE_FACTOR; screen: QT_QPA_PLATFORM=offscreen:configfile=tools/driver/laptop_screen.json

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QStatusBar>
#include <QStyleFactory>
#include <QTest>
#include <iostream>

#include "common/files.h"
#include "files/frmSetDescr.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "ui/record_list.h"

namespace davo::test {

namespace {

void PutRecords(const TemporaryFolder& folder) {
    for (int i = 1; i <= 14; ++i) {
        ReplaceFile(folder.Path() + QStringLiteral("BREAKER%1.txt").arg(4200 + i),
                    HeaderOfT1("North Substation", "Feeder 12") + ShotText(1) + ShotText(2));
    }
    std::string many = HeaderOfT1("WWWWWWWWWWWWWWWWWWWW", "MMMMMMMMMMMMMMMMMMMM");
    for (int i = 1; i <= 31; ++i)
        many += ShotText(i, "TEST DESCRIPTION: WWWWWWWWWWWWWWWWWWWW\r\n");
    ReplaceFile(folder.Path("A record with quite a long name of its own, core 3 tap 4.txt"), many);
}

void Take(const QString& folderName) {
    const TemporaryFolder folder;
    PutRecords(folder);
    const QString dataPath = folder.Path();
    DirectoryTables tables;
    RebuildDirectory(dataPath, tables);
    LoadDirectoryFile(dataPath, tables);
    FakePrompts prompts;
    QMainWindow main;
    main.menuBar()->addMenu(QStringLiteral("&File"));
    auto* area = new QMdiArea(&main);
    main.setCentralWidget(area);
    main.statusBar()->showMessage(QStringLiteral("COM1 open"));
    auto* window = new frmSetDescr(tables, dataPath, prompts);
    window->Form_Load();
    area->addSubWindow(window)->showMaximized();
    main.setWindowState(Qt::WindowMaximized);
    main.show();
    const auto grab = [&](const char* name) {
        QTest::qWait(50);
        main.grab().save(QDir(folderName).filePath(QLatin1String(name)));
    };
    grab("records.png");
    auto* lvTest =
        static_cast<RecordList*>(window->findChild<QTreeWidget*>(QStringLiteral("lvTest")));
    auto* lstTest = window->findChild<QListWidget*>(QStringLiteral("lstTest"));
    lvTest->setCurrentItem(lvTest->topLevelItem(3));
    grab("file.png");
    lstTest->setCurrentRow(1);
    grab("test.png");
    lvTest->setCurrentItem(lvTest->topLevelItem(0));
    QTest::qWait(50);
    lstTest->setCurrentRow(30);
    grab("long.png");
    std::cout << window->minimumSizeHint().width() << " x " << window->minimumSizeHint().height()
              << " at least\n";
}

}  // namespace

}  // namespace davo::test

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (argc < 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::cerr << "usage: " << argv[0] << " folder\n";
        return 2;
    }
    davo::test::Take(QString::fromLocal8Bit(argv[1]));
    return 0;
}
