// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <functional>
#include <string>

#include "tests/support/random_rounds.h"
#include "tests/support/temporary_folder.h"

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
    EXPECT_TRUE(process.waitForFinished(60'000));
    const bool killed = process.exitStatus() == QProcess::CrashExit;
    if (!killed) {
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }
    return {killed, process.readAllStandardOutput()};
}

// Runs program, each time in a folder that prepare fills and with the arguments that it gives,
// killed at every point in turn, or at one of every so many, until it gets to its end unharmed, and
// hands each run to look. Returns the number of kills.
inline int KillEverywhere(const char* program,
                          const std::function<QStringList(const TemporaryFolder&)>& prepare,
                          const std::function<void(const TemporaryFolder&, const KilledRun&)>& look,
                          int every = 1) {
    int kills = 0;
    Share share(every);
    for (const char* when : {"before", "half", "after"}) {
        for (int at = 1; !testing::Test::HasFailure(); ++at) {
            if (!share.Takes()) continue;
            SCOPED_TRACE(std::string("killed ") + when + " call " + std::to_string(at));
            const TemporaryFolder folder;
            const QStringList arguments = prepare(folder);
            const KilledRun run =
                RunKilled(program, arguments, folder.Path(), QString::fromLatin1(when), at);
            look(folder, run);
            if (!run.killed) break;
            ++kills;
        }
    }
    return kills;
}

}  // namespace davo::test
