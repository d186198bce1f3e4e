// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QProcess>
#include <QStringList>
#include <string>
#include <vector>

#include "common/files.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {

// How a run of a program ended.
struct Ended {
    int status = -1;
    std::string out;
    std::string err;
};

inline Ended RunProgram(const QString& program, const QStringList& arguments,
                        const QString& folder = {}) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    constexpr int kPatience = 500'000;  // milliseconds
    EXPECT_TRUE(process.waitForFinished(kPatience)) << process.errorString().toStdString();
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

// davo-report with these arguments, in folder.
inline Ended Report(const QStringList& arguments, const QString& folder = {}) {
    return RunProgram(QStringLiteral(DAVO_REPORT), arguments, folder);
}

// A line of a shell in which $DAVO_REPORT is the program. GNU parallel wants a home and a shell in
// the environment, which a service does not have.
inline Ended Shell(const QString& line, const QString& folder = {}) {
    return RunProgram(
        QStringLiteral("/usr/bin/env"),
        {QStringLiteral("DAVO_REPORT=" DAVO_REPORT),
         QStringLiteral("HOME=") + QDir(folder).absolutePath(), QStringLiteral("SHELL=/bin/bash"),
         QStringLiteral("bash"), QStringLiteral("-c"), line},
        folder);
}

// Puts a record, with the folders that it is in. Nothing waits for the disk.
inline void PutRecord(const TemporaryFolder& folder, const QString& name, const std::string& text) {
    const QString path = folder.Path() + name;
    EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(text.data(), static_cast<qint64>(text.size())),
              static_cast<qint64>(text.size()));
}

// All that is in a folder, in the order of a record list.
inline QStringList NamesIn(const TemporaryFolder& folder, const char* name = "") {
    QStringList names = folder.Names(name);
    names.sort();
    return names;
}

inline std::string Said(const std::string& text) {
    return "davo-report: " + text + "\n";
}

}  // namespace davo::test
