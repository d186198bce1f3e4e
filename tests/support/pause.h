// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QTest>
#include <algorithm>

namespace davo::test {

// Whether a thread of this program besides the one that asks has work to do or waits for a disk.
// Where the system does not say it: no.
inline bool OthersWork() {
    const QDir threads(QStringLiteral("/proc/self/task"));
    const QStringList names = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    const auto working = std::count_if(names.begin(), names.end(), [&](const QString& name) {
        QFile file(threads.filePath(name + QStringLiteral("/stat")));
        if (!file.open(QIODevice::ReadOnly)) return false;
        const QByteArray stat = file.readAll();
        const QByteArray state = stat.mid(stat.lastIndexOf(')') + 2, 1);
        return state == "R" || state == "D";
    });
    return working > 1;
}

// Lets the windows work for ms: in so many looks at what is due that a machine which is busy with
// something else gives them no less to do, and for as long as the program's other threads work.
inline void Pause(int ms) {
    constexpr int kLook = 5;      // ms
    constexpr int kMost = 2'000;  // looks at threads that never rest
    for (int looks = 0, least = (ms + kLook - 1) / kLook;
         looks < least || (looks < kMost && OthersWork()); ++looks)
        QTest::qWait(kLook);
}

}  // namespace davo::test
