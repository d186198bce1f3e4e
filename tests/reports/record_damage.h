// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tests/reports/random_record.h"

namespace davo::test {

// Random damage to the bytes of a record file.
class Damage {
  public:
    explicit Damage(RecordSource& random) : random_(random) {}

    std::string To(std::string bytes) {
        for (int changes = 1 + random_.Below(4); changes > 0; --changes)
            Change(bytes);
        return bytes;
    }

  private:
    std::size_t Below(std::size_t bound) {
        return bound == 0 ? 0 : static_cast<std::size_t>(random_.Below(static_cast<int>(bound)));
    }

    void Change(std::string& bytes) {
        static const std::vector<std::string> kPieces = {"\r\n",
                                                         "\n",
                                                         "\r",
                                                         "VOLTAGE:",
                                                         "NOTES:",
                                                         "-",
                                                         "0.0",
                                                         "1E308",
                                                         "-1E308",
                                                         "1E-320",
                                                         "E999",
                                                         "nan",
                                                         "inf",
                                                         "REC NUMBER:",
                                                         "TEST NUMBER: ",
                                                         " ",
                                                         "N/A",
                                                         "\xFF",
                                                         "99",
                                                         "NUMBER OF DATA POINTS: 99",
                                                         std::string(2, '\0')};
        const std::size_t at = Below(bytes.size());
        const std::size_t length = std::min(Below(60), bytes.size() - at);
        switch (Below(7)) {
            case 0:
                if (!bytes.empty()) bytes[at] = static_cast<char>(Below(256));
                break;
            case 1:
                bytes.erase(at, length);
                break;
            case 2:
                bytes.insert(at, kPieces[Below(kPieces.size())]);
                break;
            case 3:
                bytes.replace(at, length, kPieces[Below(kPieces.size())]);
                break;
            case 4:
                ChangeNumber(bytes, at);
                break;
            case 5:
                CopyLine(bytes, at);
                break;
            default:
                if (Below(8) == 0) bytes.resize(at);
        }
    }

    // Another number in the place of the next point's current or voltage.
    void ChangeNumber(std::string& bytes, std::size_t at) {
        static const std::vector<std::string> kNumbers = {
            "0", "-5", "1E308", "-1E308", "1E-300", "0.00004", "9999999", "0.00005"};
        const std::string key = Below(2) == 0 ? "CURRENT: " : "VOLTAGE: ";
        const std::size_t found = bytes.find(key, at);
        if (found == std::string::npos) return;
        const std::size_t from = found + key.size();
        const std::size_t end = bytes.find_first_not_of("0123456789.", from);
        bytes.replace(from, std::min(end, bytes.size()) - from, kNumbers[Below(kNumbers.size())]);
    }

    // The line at a place again in front of another.
    void CopyLine(std::string& bytes, std::size_t at) {
        const std::size_t from = bytes.rfind('\n', at) + 1;
        const std::size_t end = std::min(bytes.find('\n', at), bytes.size() - 1);
        if (end < from) return;
        const std::string line = bytes.substr(from, end + 1 - from);
        bytes.insert(bytes.rfind('\n', Below(bytes.size())) + 1, line);
    }

    RecordSource& random_;
};

}  // namespace davo::test
