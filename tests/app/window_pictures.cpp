// SPDX-License-Identifier: GPL-3.0-or-later
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPalette>
#include <QStatusBar>
#include <QStyleFactory>
#include <QTest>
#include <iostream>

#include "app/frmAbout.h"
#include "app/frmConfig.h"
#include "app/frmSplash.h"
#include "app/home_panel.h"
#include "app/status_line.h"
#include "tests/support/fake_port_devices.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/fake_serial_port.h"

// Grabs the shell's windows into the folder that the argument names, in light and in dark colours.
// Scale: QT_SCALE_FACTOR; screen:
// QT_QPA_PLATFORM=offscreen:configfile=tools/driver/laptop_screen.json

namespace davo::test {

namespace {

QPalette DarkPalette() {
    QPalette dark(QColor(45, 45, 48), QColor(45, 45, 48));
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::AlternateBase, QColor(38, 38, 40));
    dark.setColor(QPalette::Highlight, QColor(42, 130, 218));
    return dark;
}

class Pictures {
  public:
    Pictures(QString folder, QString colours)
        : folder_(std::move(folder)), colours_(std::move(colours)) {
        devices.present = {
            UsbAdapter("/dev/ttyUSB0", "FT232R USB UART", "FTDI", "A50285BI"),
            UsbAdapter("/dev/ttyUSB1", "USB-Serial Controller D", "Prolific Technology Inc.", ""),
            BuiltInPort("/dev/ttyS0")};
        settings.dataPath = QStringLiteral("/home/technician/Documents/DAVO/Shots_Data/");
    }

    void Take() {
        TakeConfig();
        frmAbout about(nullptr);
        about.setAttribute(Qt::WA_DeleteOnClose, false);
        about.Form_Load("DAVO-E R3.10");
        Grab(about, "about");
        frmSplash splash(pointer, [] {});
        splash.Form_Load();
        Grab(splash, "splash");
        TakeMain();
    }

  private:
    void Grab(QWidget& window, const char* name) {
        window.show();
        QTest::qWait(50);
        const QString path =
            QDir(folder_).filePath(QStringLiteral("%1-%2.png").arg(QLatin1String(name), colours_));
        if (!window.grab().save(path)) throw std::runtime_error(path.toStdString());
    }

    void TakeConfig() {
        frmConfig config(settings, link, devices, prompts, nullptr);
        config.Form_Load();
        Grab(config, "config");
        auto* cboComPort = config.findChild<QComboBox*>(QStringLiteral("cboComPort"));
        cboComPort->showPopup();
        Grab(*cboComPort->view()->window(), "config-list");
        cboComPort->hidePopup();
        auto* cboDevice = config.findChild<QComboBox*>(QStringLiteral("cboDevice"));
        cboDevice->showPopup();
        Grab(*cboDevice->view()->window(), "config-devices");
        cboDevice->hidePopup();
        devices.assigned[1] = QStringLiteral("/dev/ttyS0");
        frmConfig builtIn(settings, link, devices, prompts, nullptr);
        builtIn.Form_Load();
        Grab(builtIn, "config-built-in");
        devices.assigned.clear();
        devices.needsAssignment = false;
        frmConfig named(settings, link, devices, prompts, nullptr);
        named.Form_Load();
        Grab(named, "config-com-names");
        devices.needsAssignment = true;
    }

    QAction* AddItem(QMenu* menu, const char* name, const char* caption) {
        QAction* item = menu->addAction(QLatin1String(caption));
        item->setObjectName(QLatin1String(name));
        return item;
    }

    void TakeMain() {
        QMainWindow window;
        QMenu* file = window.menuBar()->addMenu(QStringLiteral("&File"));
        window.menuBar()->addAction(QStringLiteral("&About"));
        QAction* recall = AddItem(file, "mnuRecall", "&Recall Test");
        QMenu* run = file->addMenu(QStringLiteral("R&un Test"));
        QAction* both = AddItem(run, "mnuBoth", "S&aturation && Ratio Tests");
        QAction* ratio = AddItem(run, "mnuRatio", "Ratio Test &Only");
        QAction* download = AddItem(file, "mnuDownload", "&Download Test Record");
        auto* home = new HomePanel({both, ratio, recall, download}, &window);
        auto* line = new StatusLine(link, prompts, &window);
        line->WaitChanged();
        window.setCentralWidget(home);
        window.statusBar()->setSizeGripEnabled(false);
        window.statusBar()->addWidget(line, 1);
        window.setWindowState(Qt::WindowMaximized);

        recall->setEnabled(false);
        StatusFacts facts{GlanceAtLink(settings, linkState, devices),
                          settings.dataPath,
                          settings.kneepointType,
                          {},
                          0};
        HomeFacts homeFacts{facts.link, {}, settings.dataPath};
        line->ShowFacts(facts);
        home->ShowFacts(homeFacts);
        Grab(window, "main-empty");

        recall->setEnabled(true);
        link.OpenComPort(1);
        linkState.instrumentModel = "DAVO-E R3.10";
        facts.link = homeFacts.link = GlanceAtLink(settings, linkState, devices);
        facts.skipped = {{QStringLiteral("Notes.txt"), SkipReason::TooFewLines}};
        facts.notListed = 13;
        for (int i = 0; i < 12; ++i) {
            homeFacts.records.push_back({"BREAKER" + std::to_string(4210 - i), "11/21/26", "03",
                                         "NORTH SUBSTATION    ", "", "", ""});
        }
        line->ShowFacts(facts);
        home->ShowFacts(homeFacts);
        Grab(window, "main");

        QTimer::singleShot(2300, &window, [&] {
            Grab(window, "main-wait");
            link.EndWait();
        });
        link.OnWaitChanged = [line] { line->WaitChanged(); };
        link.SendCommand("d", "DONE");
        link.OnWaitChanged = nullptr;
    }

    QString folder_;
    QString colours_;
    Settings settings;
    FakePortDevices devices;
    FakeSerialPort port;
    LinkState linkState;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link{port, linkState, prompts, pointer};
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
    const QString folder = QString::fromLocal8Bit(argv[1]);
    davo::test::Pictures(folder, QStringLiteral("light")).Take();
    QApplication::setPalette(davo::test::DarkPalette());
    davo::test::Pictures(folder, QStringLiteral("dark")).Take();
    return 0;
}
