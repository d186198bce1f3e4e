// SPDX-License-Identifier: GPL-3.0-or-later
// A session as the test window leaves it on the disk, for the test that kills this program at
// every change of the disk: davo_kill_session <what> <folder>
//   session    three shots of different content, then the end without saving
//   equal      the same with three equal shots
//   set-aside  sets the earlier session aside
//   saved      the first session set aside has become a record file
// After each shot that the screen would call complete a line goes to the standard output.

#include <QString>
#include <cstdio>
#include <string>

#include "common/run_time_error.h"
#include "records/capture_file.h"
#include "records/unsaved_sessions.h"
#include "tests/records/captures.h"

namespace {

void RunSession(const QString& folder, bool equal) {
    constexpr int kShots = 3;
    const QString journalPath = folder + QLatin1String(davo::kJournalFileName);
    davo::CaptureFile capture;
    davo::SessionJournal journal;
    journal.testNotes = "notes";
    capture.Create(folder + QLatin1String(davo::kCaptureFileName));
    journal.Write(journalPath);
    for (int shot = 1; shot <= kShots; ++shot) {
        journal.pendingShot =
            davo::test::CaptureBlock(davo::test::ImageWithPoints(equal ? 1 : shot));
        journal.Write(journalPath);
        std::puts("complete");
        std::fflush(stdout);
        if (shot == kShots) return;
        capture.Append(journal.pendingShot);
        journal.pendingShot.clear();
        journal.shotsInCapture = shot;
        journal.Write(journalPath);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::string what = argv[1];
    const QString folder = QString::fromLocal8Bit(argv[2]);
    try {
        if (what == "session" || what == "equal") {
            RunSession(folder, what == "equal");
        } else if (what == "set-aside") {
            davo::SetAsideUnsavedSessions(folder);
        } else {
            davo::DeleteSavedSession(davo::SetAsideUnsavedSessions(folder).at(0));
        }
    } catch (const davo::RunTimeError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
