// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/command_line.h"

#include <charconv>
#include <functional>
#include <map>
#include <optional>

namespace davo::instrument {

namespace {

template <class Number>
bool ReadNumber(const std::string& text, Number low, Number high, Number& value) {
    Number read{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), read);
    const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
    if (!whole || read < low || read > high) return false;
    value = read;
    return true;
}

bool ReadScenarios(const std::string& text, std::vector<Scenario>& scenarios) {
    scenarios.clear();
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const auto scenario = ScenarioByName(text.substr(begin, end - begin));
        if (!scenario) return false;
        scenarios.push_back(*scenario);
        begin = end + 1;
    }
    return true;
}

using Setter = std::function<bool(const std::string&)>;

Setter Path(std::string& path) {
    return [&path](const std::string& text) {
        path = text;
        return !text.empty();
    };
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::uint64_t presetSeed) {
    CommandLine line;
    ConversationOptions& conversation = line.options.conversation;
    conversation.seed = presetSeed;
    int memory = 12;
    const std::map<std::string, std::function<void()>> flags = {
        {"--unpaced", [&] { line.options.paced = false; }},
        {"--quick", [&] { conversation.pauseScale = kQuickScale; }},
        {"--die-with-parent", [&] { line.dieWithParent = true; }},
        {"--help", [&] { line.help = true; }},
    };
    const std::map<std::string, Setter> values = {
        {"--link", Path(line.options.linkPath)},
        {"--seed",
         [&](const std::string& text) {
             return ReadNumber<std::uint64_t>(text, 0, UINT64_MAX, conversation.seed);
         }},
        {"--scenario",
         [&](const std::string& text) { return ReadScenarios(text, conversation.scenarios); }},
        {"--fault",
         [&](const std::string& text) {
             const std::optional<Fault> fault = ParseFault(text);
             if (fault) line.options.faults.push_back(*fault);
             return fault.has_value();
         }},
        {"--replay", Path(line.replayPath)},
        {"--check", Path(line.checkPath)},
        {"--log",
         [&](const std::string& text) {
             line.options.logPath = text;
             return true;
         }},
        {"--model",
         [&](const std::string& text) {
             conversation.model = text;
             return true;
         }},
        {"--memory", [&](const std::string& text) { return ReadNumber(text, 0, 999, memory); }},
        {"--readings-per-second",
         [&](const std::string& text) {
             return ReadNumber(text, 0.1, 50.0, conversation.readingsPerSecond);
         }},
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        if (const auto flag = flags.find(name); flag != flags.end()) {
            flag->second();
        } else if (const auto value = values.find(name); value == values.end()) {
            line.error = "unknown option: " + name;
        } else if (++i == arguments.size() || !value->second(arguments[i])) {
            line.error = "bad or missing value of " + name;
        }
        if (!line.error.empty()) return line;
    }
    if (line.options.linkPath.empty() && line.checkPath.empty() && !line.help)
        line.error = "--link is missing";
    conversation.memory = MakeMemory(memory, conversation.seed);
    return line;
}

std::string Usage() {
    return "davo-instrument --link PATH [options]\n"
           "The simulated instrument on a pseudo terminal whose device appears at PATH.\n"
           "  --unpaced               as fast as it goes instead of 19200 baud\n"
           "  --quick                 pauses of a few milliseconds\n"
           "  --seed N                chunking, pauses and line breaks; printed when not given\n"
           "  --scenario A,B,...      of the shots in turn: full, ratio-only, over-voltage,\n"
           "                          out-of-phase, undetermined\n"
           "  --fault NAME[:ARGS]     silent, slow:factor, noise:rate, cut-line:n, "
           "dropped-echo:k,\n"
           "                          wrong-lengths:n, unplugged:n, cut:k, stall:k,ms, double:k,\n"
           "                          flip:k,bit (may be given several times)\n"
           "  --log FILE              every byte with its direction and time\n"
           "  --replay LOG            answers as a log has it, of --log or davo-line, and ends at "
           "the first\n"
           "                          byte of the program that departs from it\n"
           "  --check LOG             needs no --link: what a log has that the program does not "
           "expect\n"
           "  --model TEXT            what it says it is (DAVO-E R3.15)\n"
           "  --memory N              records in its memory, 0 to 999 (12)\n"
           "  --readings-per-second R during a test, 0.1 to 50 (4)\n"
           "  --die-with-parent       ends when the program that started it ends\n";
}

}  // namespace davo::instrument
