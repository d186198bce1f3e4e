// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/retrieval/record_download_rig.h"

namespace davo::test {

// The two records of the download that is killed.
inline std::vector<instrument::MemoryRecord> KillRecords() {
    return {MemoryRecordOf(12, 2), MemoryRecordOf(13, 3)};
}

inline std::string EntryOfRecord(const instrument::MemoryRecord& record) {
    return BuildEntries(instrument::DirectoryReply({record})).entries.at(0);
}

}  // namespace davo::test
