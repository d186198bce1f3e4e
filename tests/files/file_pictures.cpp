// SPDX-License-Identifier: GPL-3.0-or-later
// Grabs the file windows into the folder that the argument names. Scale: QT_SCALE_FACTOR; screen:
// QT_QPA_PLATFORM=offscreen:configfile=tools/driver/laptop_screen.json

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <iostream>

#include "common/files.h"
#include "files/frmCopyFile.h"
#include "files/frmFileUtilOverlay.h"
#include "files/frmProgress.h"
#include "files/frmStatusBar.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

namespace {

class Pictures {
  public:
    explicit Pictures(QString folderName) : folderName_(std::move(folderName)) {
        settings_.dataPath = folder_.Path("Shots_Data/");
        settings_.excelPath = folder_.Path("Shots_Excel/");
        for (const QString& path : {settings_.dataPath, folder_.Path("USB-Stick")})
            QDir().mkpath(path);
        for (int i = 1; i <= 14; ++i) {
            names_.push_back(QStringLiteral("BREAKER%1").arg(4200 + i));
            ReplaceFile(settings_.dataPath + names_.back() + QStringLiteral(".txt"),
                        HeaderOfT1("North Substation", "Feeder 12") + ShotText(1) + ShotText(2));
        }
        RebuildDirectory(settings_.dataPath, directory_);
        LoadDirectoryFile(settings_.dataPath, directory_);
    }

    void Take() {
        FileUtilities();
        Overlay();
        Copying();
        StatusBar();
        frmProgress progress;
        progress.resize(400, 80);
        progress.Form_Load();
        progress.show();
        QTest::qWait(600);
        progress.grab().save(QDir(folderName_).filePath(QStringLiteral("progress.png")));
    }

  private:
    // window in a main window's area, as the program shows it.
    template <class Window, class Act>
    void Show(Window* window, const Act& act) {
        QMainWindow main;
        main.menuBar()->addMenu(QStringLiteral("&File"));
        auto* area = new QMdiArea(&main);
        main.setCentralWidget(area);
        main.statusBar()->showMessage(QStringLiteral("COM1 open"));
        window->Form_Load();
        area->addSubWindow(window)->showMaximized();
        main.setWindowState(Qt::WindowMaximized);
        main.show();
        const auto grab = [&](const char* name) {
            QTest::qWait(50);
            main.grab().save(QDir(folderName_).filePath(QLatin1String(name)));
        };
        act(grab);
        const QSize least = window->minimumSizeHint();
        std::cout << window->objectName().toStdString() << ' ' << least.width() << " x "
                  << least.height() << " at least\n";
    }
    FileUtilSurroundings Around() { return {settings_, directory_, prompts_, nullptr}; }

    void FileUtilities() {
        auto* window = new frmFileUtilOverlay(FileUtilMode::FileUtilities, Around());
        Show(window, [&](const auto& grab) {
            auto* list = window->template findChild<QTreeWidget*>(QStringLiteral("lvTest"));
            list->topLevelItem(1)->setSelected(true);
            list->topLevelItem(3)->setSelected(true);
            grab("utilities.png");
        });
    }
    void Overlay() {
        auto* window = new frmFileUtilOverlay(FileUtilMode::Overlay, Around());
        Show(window, [&](const auto& grab) {
            grab("overlay.png");
            auto* list = window->template findChild<QTreeWidget*>(QStringLiteral("lvTest"));
            list->setCurrentItem(list->topLevelItem(2));
            for (const char* button : {"cmdOp0", "cmdOp1"})
                window->template findChild<QPushButton*>(QLatin1String(button))->click();
            grab("overlay-chosen.png");
        });
    }
    void Copying() {
        auto* window = new frmCopyFile(names_, settings_, prompts_);
        Show(window, [&](const auto& grab) {
            window->template findChild<QLineEdit*>(QStringLiteral("txtPath"))
                ->setText(folder_.Path("USB-Stick"));
            grab("copy.png");
            QTimer::singleShot(0, window, [&] { grab("copying.png"); });
            window->template findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
        });
    }
    void StatusBar() {
        std::vector<QString> many;
        for (int i = 0; i < 12; ++i)
            many.push_back(names_.at(static_cast<std::size_t>(i)));
        auto* window =
            new frmStatusBar(many, settings_.dataPath, folder_.Path("USB-Stick2/"), prompts_);
        QDir().mkpath(folder_.Path("USB-Stick2"));
        Show(window, [&](const auto&) {
            auto* picture = window->template findChild<QWidget*>(QStringLiteral("picStatus"));
            if (!QTest::qWaitFor([&] { return picture->accessibleName() > QLatin1String("3"); }))
                std::cerr << "nothing was copied\n";
            window->grab().save(QDir(folderName_).filePath(QStringLiteral("status-bar.png")));
        });
    }

    QString folderName_;
    TemporaryFolder folder_;
    Settings settings_;
    DirectoryTables directory_;
    FakePrompts prompts_;
    std::vector<QString> names_;
};

}  // namespace

}  // namespace davo::test

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (argc < 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::cerr << "usage: " << argv[0] << " folder\n";
        return 2;
    }
    davo::test::Pictures(QString::fromLocal8Bit(argv[1])).Take();
    return 0;
}
