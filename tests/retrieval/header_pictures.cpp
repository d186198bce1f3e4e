// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>
#include <iostream>

#include "common/text.h"
#include "retrieval/frmHeader.h"
#include "retrieval/frmHeaderOptn.h"
#include "tests/support/fake_prompts.h"
#include "tests/support/fake_serial_port.h"

// Grabs the header windows into the folder that the argument names. Scale: QT_SCALE_FACTOR; screen:
// QT_QPA_PLATFORM=offscreen:configfile=tools/driver/laptop_screen.json

namespace davo::test {

namespace {

class Pictures {
  public:
    explicit Pictures(QString folder) : folder_(std::move(folder)) {
        const char* texts[] = {"CENTRAL POWER", "NORTH SUBSTATION", "BAY 3",      "ACME",
                               "CT-1200/5",     "SN 48213-7",       "SPARE CORE", "J. DOE"};
        std::string slot;
        for (int i = 0; i < kHeaderFieldCount; ++i) {
            header.Field(i) = PadRight(texts[i], kHeaderFieldWidth);
            slot += header.Field(i);
        }
        slots[0] = slot;
        for (int c = 0; c < 256; ++c) {
            const std::string one(1, static_cast<char>(c));
            if (one == "B") continue;
            port.Always(one, one == "\xFF" ? " " : one);
        }
        port.Always("B", "RDY\r\nB");
        port.Always("Fr", JoinSlots(slots) + "\r\n");
        port.Always("Fh", "ERASING...H:\r\n");
    }

    void Take() {
        frmHeaderOptn chooser(nullptr);
        chooser.setAttribute(Qt::WA_DeleteOnClose, false);
        Grab(chooser, "chooser");
        frmHeader session(header, notes, prompts, nullptr);
        session.setAttribute(Qt::WA_DeleteOnClose, false);
        Grab(session, "mode-0");
        const HeaderTargets targets{
            header, {}, slots, link, [this] { return link.OpenComPort(1); }};
        frmHeader pc(HeaderMode::Pc, targets, prompts, nullptr);
        pc.setAttribute(Qt::WA_DeleteOnClose, false);
        Grab(pc, "mode-1");
        frmHeader davo(HeaderMode::Davo, targets, prompts, nullptr);
        davo.setAttribute(Qt::WA_DeleteOnClose, false);
        Grab(davo, "mode-2");
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &davo, [&] {
            const auto* status = davo.findChild<QLabel*>(QStringLiteral("lblUsed"));
            if (status->text() != QStringLiteral("slot 7 of 10")) return;
            timer.stop();
            Save(davo, "mode-2-upload");
        });
        timer.start(0);
        QTest::mouseClick(davo.findChild<QPushButton*>(QStringLiteral("cmdSave")), Qt::LeftButton);
        Save(davo, "mode-2-stored");
    }

  private:
    void Grab(QWidget& window, const char* name) {
        window.show();
        QTest::qWait(100);
        Save(window, name);
    }
    void Save(QWidget& window, const char* name) {
        const QString path =
            QDir(folder_).filePath(QStringLiteral("%1.png").arg(QLatin1String(name)));
        if (!window.grab().save(path)) throw std::runtime_error(path.toStdString());
    }

    QString folder_;
    FakeSerialPort port;
    LinkState state;
    FakePrompts prompts;
    BusyPointer pointer;
    Link link{port, state, prompts, pointer};
    HeaderTable header;
    HeaderSlots slots;
    std::string notes;
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
