// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <string>

#include "common/files.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {

// The name under which the new content of path is written, before it takes path's place.
inline QString NameWhileWriting(const QString& path) {
    const QFileInfo info(path);
    return info.path() + QStringLiteral("/~") +
           info.fileName().replace(QLatin1Char('.'), QLatin1Char('_')) + QStringLiteral(".new");
}

// Ends the test program if it waits for another end of a pipe.
class NoWait {
  public:
    NoWait() { ::alarm(kSeconds); }
    ~NoWait() { ::alarm(0); }
    NoWait(const NoWait&) = delete;
    NoWait& operator=(const NoWait&) = delete;

  private:
    static constexpr unsigned kSeconds = 60;
};

inline QStringList AllNamesIn(const QString& folder) {
    return QDir(folder).entryList(kAllEntries);
}

// Has write write path while a link to a file, a link to nowhere, a pipe or a file left over from a
// kill has the name at: path is written each time, and what a link points to is as it was.
template <class Write>
void ExpectWrittenOverAnything(const QString& path, const QString& at, const Write& write) {
    const TemporaryFolder elsewhere;
    const QString victim = elsewhere.Path("victim.txt");
    const QString nowhere = elsewhere.Path("nowhere.txt");
    ReplaceFile(victim, "victim");
    const QByteArray name = QFile::encodeName(at);
    const auto put = [&](const std::string& kind) {
        if (kind == "link") return QFile::link(victim, at);
        if (kind == "link to nowhere") return QFile::link(nowhere, at);
        if (kind == "pipe") return ::mkfifo(name.constData(), 0666) == 0;
        QFile file(at);
        return file.open(QIODevice::WriteOnly) && file.write(std::string(100'000, 'x').c_str()) > 0;
    };
    QFile::remove(path);
    write();
    const QStringList usual = AllNamesIn(QFileInfo(path).path());
    const NoWait limit;
    for (const std::string kind : {"link", "link to nowhere", "pipe", "left over file"}) {
        SCOPED_TRACE(kind);
        QFile::remove(path);
        ASSERT_TRUE(put(kind));
        write();
        const QFileInfo made(path);
        EXPECT_TRUE(made.isFile() && !made.isSymLink());
        EXPECT_EQ(AllNamesIn(made.path()), usual);
        EXPECT_EQ(ReadWholeFile(victim), "victim");
        EXPECT_EQ(elsewhere.Names(), QStringList(QStringLiteral("victim.txt")));
    }
}

}  // namespace davo::test
