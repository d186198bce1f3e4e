// SPDX-License-Identifier: GPL-3.0-or-later
// Sits between the instrument's port and the program, and writes down what crosses.

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>
#include <chrono>

#include "common/run_time_error.h"
#include "instrument/byte_log.h"
#include "instrument/given_port.h"
#include "instrument/pc_end.h"

using namespace davo;
using namespace davo::instrument;

namespace {

constexpr const char* kUsage =
    "davo-line PORT NAME LOG\n"
    "Passes everything between PORT, which the instrument is plugged into, and NAME, which the\n"
    "program opens as its port, and writes it with its times into LOG. NAME becomes the link of a\n"
    "pseudo terminal; on Windows it is a port that is coupled to the program's.\n";

void Say(const QString& text) {
    QTextStream(stderr) << "davo-line: " << text << Qt::endl;
}

int PassOn(QCoreApplication& application, const QStringList& names) {
    const auto start = std::chrono::steady_clock::now();
    const auto now = [start] {
        return std::chrono::duration_cast<Micros>(std::chrono::steady_clock::now() - start);
    };
    // The conversation of an earlier time can be the only one that there is.
    if (QFileInfo(names[3]).size() > 0) {
        Say(QStringLiteral("%1 is there already; give another name.").arg(names[3]));
        return 1;
    }
    // The port's own link would become the pseudo terminal's.
    if (names[1] == names[2]) {
        Say(QStringLiteral("%1 is the instrument's port; give the program's another name.")
                .arg(names[2]));
        return 1;
    }
    GivenPort port(names[1]);
    const std::unique_ptr<PcEnd> pc = MakePcEnd(names[2]);
    ByteLog log(names[3].toStdString());
    bool isLogSaid = false;
    const auto sayWhenCut = [&] {
        if (log.IsWhole() || isLogSaid) return;
        isLogSaid = true;
        Say(QStringLiteral("%1 cannot be written any more; the line is still passed on.")
                .arg(names[3]));
    };
    port->OnTextWaiting = [&] {
        const std::string bytes = port->Input();
        pc->Write(bytes);
        log.ToPc(bytes, now());
        sayWhenCut();
    };
    pc->OnBytes = [&](const std::string& bytes) {
        port->Output(bytes);
        log.FromPc(bytes, now());
        sayWhenCut();
    };
    port->OnLost = [&](const QString& reason) {
        Say(QStringLiteral("%1 is gone: %2").arg(names[1], reason));
        QCoreApplication::exit(1);
    };
    pc->OnStop = [&] { QCoreApplication::exit(log.IsWhole() ? 0 : 1); };
    QTextStream(stdout) << "ready " << names[2] << Qt::endl;
    return application.exec();
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList names = QCoreApplication::arguments();
    if (names.size() == 2 && names[1] == QLatin1String("--help")) {
        QTextStream(stdout) << kUsage;
        return 0;
    }
    if (names.size() != 4) {
        QTextStream(stderr) << kUsage;
        return 2;
    }
    try {
        return PassOn(application, names);
    } catch (const RunTimeError& error) {
        Say(QString::fromUtf8(error.what()));
        return 1;
    }
}
