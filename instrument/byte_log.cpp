// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/byte_log.h"

#include "common/run_time_error.h"
#include "instrument/transformer.h"

namespace davo::instrument {

namespace {

constexpr std::size_t kBytesPerLine = 16;

}  // namespace

ByteLog::ByteLog(const std::string& path) {
    if (path.empty()) return;
    file_.open(path, std::ios::binary | std::ios::trunc);
    if (!file_) throw RunTimeError(ErrorNumber::PathFileAccess, path);
}

void ByteLog::Write(char direction, std::string_view bytes, Micros at, std::string& all) {
    all += bytes;
    if (!file_.is_open()) return;
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const std::string seconds = FixedText(static_cast<double>(at.count()) / 1e6, 6);
    for (std::size_t begin = 0; begin < bytes.size(); begin += kBytesPerLine) {
        std::string line = seconds + ' ' + direction;
        std::string readable;
        for (const char c : bytes.substr(begin, kBytesPerLine)) {
            const auto value = static_cast<unsigned char>(c);
            line += {' ', kDigits[value >> 4U], kDigits[value & 15U]};
            readable += value >= 32 && value < 127 ? c : '.';
        }
        file_ << line << "  " << readable << '\n';
    }
    file_.flush();
}

}  // namespace davo::instrument
