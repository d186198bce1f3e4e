// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/conversation_log.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>

#include "common/run_time_error.h"

namespace davo::instrument {

namespace {

constexpr int kHexadecimal = 16;

// "12.345678 > 52 44 59  RDY"; what follows two blanks is for readers.
std::optional<LoggedBytes> BytesOfLine(const std::string& text, std::size_t number) {
    static const std::regex kLine(
        R"(([0-9]{1,9})\.([0-9]{6}) ([<>])((?: [0-9A-F]{2}){1,16})  .{1,16}\r?)");
    std::smatch found;
    if (!std::regex_match(text, found, kLine)) return std::nullopt;
    const std::string hex = found[4];
    LoggedBytes logged{std::chrono::seconds(std::stoll(found[1])) + Micros(std::stoll(found[2])),
                       found[3] == ">",
                       {},
                       number};
    for (std::size_t at = 1; at < hex.size(); at += 3)
        logged.bytes += static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, kHexadecimal));
    return logged;
}

}  // namespace

std::vector<LoggedBytes> ReadConversationLog(const std::string& path, std::size_t* cutLine) {
    if (cutLine != nullptr) *cutLine = 0;
    if (!std::filesystem::exists(path)) throw RunTimeError(ErrorNumber::FileNotFound, path);
    std::ifstream file(path, std::ios::binary);
    if (!file) throw RunTimeError(ErrorNumber::PathFileAccess, path);
    std::vector<LoggedBytes> log;
    std::string text;
    for (std::size_t number = 1; std::getline(file, text); ++number) {
        if (text.empty() || text == "\r") continue;
        const std::optional<LoggedBytes> logged = BytesOfLine(text, number);
        if (logged) {
            log.push_back(*logged);
        } else if (!file.eof()) {
            throw RunTimeError(ErrorNumber::TypeMismatch,
                               "line " + std::to_string(number) + " of " + path);
        } else if (cutLine != nullptr) {
            *cutLine = number;
        }
    }
    if (log.empty()) throw RunTimeError(ErrorNumber::InputPastEnd, path);
    return log;
}

}  // namespace davo::instrument
