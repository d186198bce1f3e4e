// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QStyleFactory>
#include <QTimer>
#include <iostream>

#include "instrument/instrument.h"
#include "link/serial_port.h"
#include "tests/retrieval/record_download_rig.h"
#include "tests/retrieval/test_list_window.h"
#include "tests/support/pseudo_terminal.h"

// Grabs the test list into the folder that the argument names. Scale: QT_SCALE_FACTOR; screen:
// QT_QPA_PLATFORM=offscreen:configfile=tools/driver/laptop_screen.json

namespace davo::test {
namespace {

class ListPictures : public TestListWindow {
  public:
    explicit ListPictures(QString pictures) : pictures_(std::move(pictures)) {}

    void Take() {
        for (const int count : {0, 5, 250}) {
            TakeFolder(count);
        }
        for (const int count : {5, 135}) {
            const auto memory = instrument::MakeMemory(count, 4);
            Show(ListMode::Instrument, link_, instrument::DirectoryReply(memory));
            Grab(QStringLiteral("memory-%1").arg(count));
        }
        TakeDownload();
    }

  private:
    void TakeFolder(int count) {
        for (int i = 0; i < count; ++i) {
            const std::string text =
                "TEST NUMBER: T\r\nDATE: 0" + std::to_string(1 + i % 9) +
                "/12/24\r\nTIME: 10:15\r\n# OF SHOTS: 03\r\nCOMPANY: C\r\nSTATION: North "
                "Substation  \r\nCIRCUIT: Feeder " +
                std::to_string(i) +
                "           \r\nMFR: Transformers Limited\r\nMODEL: CT 2000:5 "
                "Class C\r\nSN: 3\r\nCOMMENTS: 4\r\nOPERATOR: 5\r\n";
            ReplaceFile(settings.dataPath + QStringLiteral("BREAKER%1.txt").arg(1000 + i), text);
        }
        RebuildDirectory(settings.dataPath, directory);
        LoadDirectoryFile(settings.dataPath, directory);
        Show(ListMode::Folder, link_);
        if (count > 0) ClickRow(1);
        Grab(QStringLiteral("folder-%1").arg(count));
    }

    void TakeDownload() {
        instrument::InstrumentOptions options;
        options.linkPath = device_.toStdString();
        options.conversation.pauseScale = 0.02;
        options.conversation.memory = {MemoryRecordOf(1, 1), MemoryRecordOf(2, 100)};
        const instrument::InstrumentThread instrument(options);
        if (!link_.OpenComPort(1)) throw std::runtime_error("no port");
        settings.dataPath = folder.Path("Fresh/");
        QDir().mkpath(settings.dataPath);
        Show(ListMode::Instrument, link_, instrument::DirectoryReply(options.conversation.memory));
        List()->selectAll();
        QTimer::singleShot(3000, window.get(), [this] {
            Grab(QStringLiteral("download"));
            Click("cmdExit");
        });
        Click("cmdSave");
    }

    void Grab(const QString& name) {
        QTest::qWait(50);
        const QString path = pictures_ + QLatin1Char('/') + name + QStringLiteral(".png");
        if (!window->grab().save(path)) throw std::runtime_error(path.toStdString());
    }

    QString pictures_;
    QString device_ = folder.Path("davo");
    OneDevice devices_{device_};
    std::unique_ptr<SerialPort> port_ = MakeSerialPort(devices_);
    LinkState state_;
    BusyPointer pointer_;
    Link link_{*port_, state_, prompts, pointer_};
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
    davo::test::ListPictures(QString::fromLocal8Bit(argv[1])).Take();
    return 0;
}
