// SPDX-License-Identifier: GPL-3.0-or-later
// Copies the record T7 over the one of that name, for the test that kills this program at every
// change of the disk: davo_kill_copy <data folder> <target folder>

#include "files/copy_records.h"
#include "tests/support/fake_prompts.h"

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    davo::test::FakePrompts prompts;
    prompts.answers = {davo::Answer::Yes};
    const auto outcome =
        davo::CopyRecord(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]),
                         QStringLiteral("T7.txt"), prompts);
    return outcome.end == davo::CopyEnd::Copied ? 0 : 1;
}
