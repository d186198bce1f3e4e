// SPDX-License-Identifier: GPL-3.0-or-later
// A log of the line that somebody has sent: it is refused with the number of its line, or every
// byte of it is read and held against the protocol.
#include "common/files.h"
#include "fuzz/fuzzing.h"
#include "instrument/conversation_log.h"
#include "instrument/log_check.h"

namespace {

using namespace davo;
using fuzz::Require;

void CheckReport(const std::vector<instrument::LoggedBytes>& log, std::size_t lines) {
    const instrument::LogReport report = instrument::CheckLog(log);
    for (const instrument::LogDeparture& departure : report.departures)
        Require(departure.line <= lines, "a departure is at a line of the log");
    const bool inOrder =
        std::is_sorted(report.departures.begin(), report.departures.end(),
                       [](const auto& one, const auto& other) { return one.line < other.line; });
    Require(inOrder, "departures are in the log's order");
    Require(!report.Text().empty(), "a report says something");
}

// Whatever crossed the line, in lines of up to 16 bytes as a log has them.
std::string LogOf(fuzz::Input& input) {
    constexpr std::size_t kLineBytes = 16;
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string log;
    unsigned second = 0;
    while (!input.AtEnd()) {
        const char direction = input.Flag() ? '>' : '<';
        second += input.Byte();
        const std::string text = input.Text();
        for (std::size_t at = 0; at < text.size(); at += kLineBytes) {
            log += std::to_string(second) + ".000100 " + direction;
            for (const char c : text.substr(at, kLineBytes)) {
                const auto byte = static_cast<unsigned char>(c);
                log.append({' ', kDigits[byte / 16], kDigits[byte % 16]});
            }
            log += "  .\n";
        }
    }
    return log;
}

void CheckLogFile(const std::string& bytes, bool isLog) {
    const fuzz::Folder folder;
    const QString path = folder.Path("line.log");
    ReplaceFile(path, bytes);
    std::vector<instrument::LoggedBytes> log;
    const bool isRead =
        fuzz::Runs({13, 62}, [&] { log = instrument::ReadConversationLog(path.toStdString()); });
    Require(isRead || !isLog || bytes.empty(), "a log is read");
    if (!isRead) return;
    const std::size_t lines = SplitLines(bytes).size();
    std::size_t taken = 0;
    for (const instrument::LoggedBytes& logged : log) {
        Require(!logged.bytes.empty(), "a line has bytes");
        Require(logged.line >= 1 && logged.line <= lines, "a line of the file");
        taken += logged.bytes.size();
    }
    Require(!log.empty() && taken <= bytes.size() / 2, "a byte has two digits");
    CheckReport(log, lines);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool isText = input.Flag();
    CheckLogFile(isText ? input.Rest() : LogOf(input), !isText);
    return 0;
}
