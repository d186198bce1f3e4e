// SPDX-License-Identifier: GPL-3.0-or-later
#include <QMainWindow>
#include <QMdiArea>
#include <QMenuBar>
#include <QProgressBar>
#include <QStatusBar>
#include <QTimer>
#include <iostream>

#include "files/frmCopyFile.h"
#include "files/frmFileUtilOverlay.h"
#include "files/frmProgress.h"
#include "files/frmSetDescr.h"
#include "files/frmStatusBar.h"
#include "tests/support/controls.h"
#include "tests/support/data_folder.h"
#include "tests/support/pause.h"
#include "tools/pictures/pictures.h"
#include "ui/page_header.h"

namespace davo::test {
namespace {

// A data folder of fourteen records.
class FilesFolder : public DataFolder {
  public:
    FilesFolder() {
        for (int i = 1; i <= 14; ++i) {
            names_.push_back(u"BREAKER%1"_s.arg(4200 + i));
            ReplaceFile(DataFile(names_.back()),
                        HeaderOfT1("North Substation", "Feeder 12") + ShotText(1) + ShotText(2));
        }
        ListRecords();
    }

  protected:
    // window in a main window's area, as the program shows it; act has the main window.
    template <class Window, class Act>
    void Show(Window* window, const Act& act) {
        QMainWindow main;
        main.menuBar()->addMenu(u"&File"_s);
        auto* area = new QMdiArea(&main);
        main.setCentralWidget(area);
        main.statusBar()->showMessage(u"COM1 ready"_s);
        window->Form_Load();
        ShowPage(*area, *window);
        main.setWindowState(Qt::WindowMaximized);
        main.show();
        act(main);
        const QSize least = window->minimumSizeHint();
        std::cout << window->objectName().toStdString() << ' ' << least.width() << " x "
                  << least.height() << " at least\n";
    }

    std::vector<QString> names_;
};

class FilePictures : public FilesFolder {
  public:
    explicit FilePictures(const Album& album) : album_(album) {
        for (const char* stick : {"USB-Stick", "USB-Stick2"})
            QDir().mkpath(folder.Path(stick));
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
        test::Pause(600);
        album_.Save(progress, u"progress"_s);
    }

  private:
    frmFileUtilOverlay* Make(FileUtilMode mode) {
        return new frmFileUtilOverlay(mode, {settings, directory, prompts, nullptr});
    }
    void FileUtilities() {
        auto* window = Make(FileUtilMode::FileUtilities);
        Show(window, [&](QWidget& main) {
            const auto* list = FindIn<QTreeWidget>(*window, "lvTest");
            for (const int row : {1, 3})
                list->topLevelItem(row)->setSelected(true);
            album_.Grab(main, u"utilities"_s);
        });
    }
    void Overlay() {
        auto* window = Make(FileUtilMode::Overlay);
        Show(window, [&](QWidget& main) {
            album_.Grab(main, u"overlay"_s);
            auto* list = FindIn<QTreeWidget>(*window, "lvTest");
            list->setCurrentItem(list->topLevelItem(2));
            for (const char* button : {"cmdOp0", "cmdOp1"})
                FindIn<QPushButton>(*window, button)->click();
            album_.Grab(main, u"overlay-chosen"_s);
        });
    }
    void Copying() {
        frmCopyFile window(names_, settings, prompts, [this] {
            return std::vector<RemovableDrive>{
                {folder.Path("USB-Stick"), u"KINGSTON"_s, 14'200'000'000},
                {folder.Path("Card"), u"SD CARD"_s, 512'000'000}};
        });
        window.Form_Load();
        window.resize(window.sizeHint().expandedTo({640, 280}));
        auto* path = FindIn<QLineEdit>(window, "txtPath");
        // The folder has another name each time.
        path->setText(u"/media/technician/USB-Stick"_s);
        album_.ShowAndGrab(window, u"copy"_s);
        path->setText(folder.Path("USB-Stick"));
        // The copying goes no further meanwhile.
        QTimer::singleShot(0, &window, [&] {
            test::Pause(80);
            album_.Save(window, u"copying"_s);
        });
        FindIn<QPushButton>(window, "cmdOK")->click();
    }
    void StatusBar() {
        const std::vector<QString> many(names_.begin(), names_.begin() + 12);
        auto* window =
            new frmStatusBar(many, settings.dataPath, folder.Path("USB-Stick2/"), prompts);
        Show(window, [&](QWidget&) {
            const auto* bar = FindIn<QProgressBar>(*window, "picStatus");
            if (!Until([&] { return bar->value() > 3; }))
                throw std::runtime_error("nothing was copied");
            album_.Save(*window, u"status-bar"_s);
        });
    }

    const Album& album_;
};

class RecordHeaderPictures : public FilesFolder {
  public:
    RecordHeaderPictures() {
        std::string many = HeaderOfT1("WWWWWWWWWWWWWWWWWWWW", "MMMMMMMMMMMMMMMMMMMM");
        for (int i = 1; i <= 31; ++i)
            many += ShotText(i, "TEST DESCRIPTION: WWWWWWWWWWWWWWWWWWWW\r\n");
        ReplaceFile(DataFile(u"A record with quite a long name of its own, core 3 tap 4"_s), many);
        ListRecords();
    }

    void Take(const Album& album) {
        auto* window =
            new frmSetDescr(directory, settings.dataPath, settings.kneepointType, prompts);
        Show(window, [&](QWidget& main) {
            album.Grab(main, u"records"_s);
            auto* records = FindIn<QTreeWidget>(*window, "lvTest");
            auto* tests = FindIn<QListWidget>(*window, "lstTest");
            records->setCurrentItem(records->topLevelItem(3));
            album.Grab(main, u"file"_s);
            tests->setCurrentRow(1);
            album.Grab(main, u"test"_s);
            auto* company = FindIn<QLineEdit>(*window, "txtHeader0");
            company->selectAll();
            QTest::keyClicks(company, u"EXAMPLE POWER COMPANY, NORTH"_s);
            album.Grab(main, u"counted"_s);
            ClickIn(*window, "cmdSave");
            album.Grab(main, u"saved"_s);
            records->setCurrentItem(records->topLevelItem(0));
            test::Pause(50);
            tests->setCurrentRow(30);
            album.Grab(main, u"long"_s);
        });
    }
};

}  // namespace

void TakeFiles(const Album& album) {
    FilePictures(album).Take();
}

void TakeRecordHeaders(const Album& album) {
    RecordHeaderPictures().Take(album);
}

}  // namespace davo::test
