// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <string>

namespace davo::test {

struct KilledRun {
    bool killed = false;
    QByteArray output;
};

// Runs program, killed before, in the half of or after (when) the at-th change of a file in folder
// by the library davo_kill_at; unharmed when it makes fewer changes.
inline KilledRun RunKilled(const char* program, const QStringList& arguments, const QString& folder,
                           const QString& when, int at) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(DAVO_KILL_AT_LIBRARY));
    environment.insert(QStringLiteral("DAVO_KILL_FOLDERS"), folder);
    environment.insert(QStringLiteral("DAVO_KILL_AT"), QString::number(at));
    environment.insert(QStringLiteral("DAVO_KILL_WHEN"), when);
    environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("verify_asan_link_order=0"));
    process.setProcessEnvironment(environment);
    process.start(QString::fromLocal8Bit(program), arguments);
    EXPECT_TRUE(process.waitForFinished());
    const bool killed = process.exitStatus() == QProcess::CrashExit;
    if (!killed) {
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }
    return {killed, process.readAllStandardOutput()};
}

}  // namespace davo::test
