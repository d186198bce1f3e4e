// SPDX-License-Identifier: GPL-3.0-or-later
// A download of two records over a scripted line, the first over an earlier file, for the test that
// kills this program at every change of the disk: davo_kill_download <folder>

#include <QCoreApplication>
#include <cstdio>

#include "tests/retrieval/kill_download_records.h"
#include "tests/support/scripted_link.h"

int main(int argc, char** argv) {
    using namespace davo;
    const QCoreApplication application(argc, argv);
    if (argc != 2) return 2;
    const QString folder = QString::fromLocal8Bit(argv[1]);

    test::ScriptedLine line;
    line.link.OpenComPort(1);
    line.port.Always("B", "RDY\r\n");
    DirectoryTables tables;
    for (const auto& record : test::KillRecords()) {
        tables.dirEntries.push_back(test::EntryOfRecord(record));
        line.port.OnOutput("L" + std::to_string(1000 + record.number).substr(1),
                           "Record Found\r\n");
        line.port.OnOutput("R", RecordReply(record));
    }
    tables.recordCount = 2;
    line.prompts.answers = {Answer::Yes};
    RecordDownload download(line.link, line.prompts, tables, folder, folder);
    const bool whole = download.Run().written.size() == 2;
    if (!whole) std::fputs("not whole\n", stderr);
    return whole ? 0 : 1;
}
