// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/log_check.h"

#include <algorithm>
#include <array>
#include <map>
#include <regex>
#include <string_view>

#include "instrument/exchanges.h"
#include "instrument/memory.h"
#include "instrument/transformer.h"
#include "records/record_image.h"

namespace davo::instrument {

namespace {

// The program looks 30001 times, about ten times a millisecond, for the answer to "B".
constexpr Micros kReadyPatience = std::chrono::seconds(3);
// What comes sooner after a reading can be in the same look at the port, and is then thrown away.
constexpr Micros kShortestSilence = std::chrono::milliseconds(5);
constexpr int kMostRecords = 135;
constexpr std::size_t kValueSize = 20;
constexpr std::size_t kFieldsBeforeTests = 12;
// No form is longer; a search in a text without an end would need a stack without one.
constexpr std::size_t kLongestForm = 500;

std::string Seconds(Micros time) {
    return FixedText(static_cast<double>(time.count()) / 1e6, 3) + " s";
}

// A text of the instrument as it can be printed on one line.
std::string Shown(const std::string& text) {
    constexpr std::size_t kMost = 80;
    std::string shown;
    for (const char c : text.substr(0, kMost)) {
        const auto value = static_cast<unsigned char>(c);
        static constexpr char kDigits[] = "0123456789ABCDEF";
        if (value >= 32 && value < 127) {
            shown += c;
        } else {
            shown += {'\\', 'x', kDigits[value >> 4U], kDigits[value & 15U]};
        }
    }
    return '"' + shown + (text.size() > kMost ? "..." : "") + '"';
}

class Check {
  public:
    explicit Check(const std::vector<LoggedBytes>& log) : exchanges_(ExchangesOf(log)) {
        for (std::size_t i = 1; i < log.size(); ++i) {
            if (log[i].at < log[i - 1].at)
                Depart(log[i], "its time is before that of the line above it");
        }
        for (const Exchange& exchange : exchanges_)
            Look(exchange);
        for (const auto& [command, timing] : timings_) {
            report_.seen.push_back(
                command + ": " + std::to_string(timing.count) + " times, answered " +
                std::to_string(timing.answered) +
                (timing.answered == 0
                     ? ""
                     : ", first byte after " + Seconds(timing.longest) + " at most"));
        }
        std::stable_sort(report_.departures.begin(), report_.departures.end(),
                         [](const LogDeparture& one, const LogDeparture& other) {
                             return one.line < other.line;
                         });
    }
    LogReport Take() { return std::move(report_); }

  private:
    struct Timing {
        int count = 0;
        int answered = 0;
        Micros longest{0};
    };

    void Depart(const LoggedBytes& piece, const std::string& text) {
        report_.departures.push_back({piece.line, piece.at, text});
    }
    void DepartAt(const Exchange& exchange, std::size_t place, const std::string& text) {
        Depart(exchange.reply.PieceAt(place), text);
    }

    void Look(const Exchange& exchange) {
        const std::string& reply = exchange.reply.All();
        if (exchange.command.empty()) {
            DepartAt(exchange, 0, "sent before any command: " + Shown(reply));
            return;
        }
        const char kind = exchange.command[0];
        Timing& timing = timings_[kind == 'L' ? "L" : Named(exchange.command)];
        ++timing.count;
        if (!reply.empty()) {
            ++timing.answered;
            const Micros after = exchange.reply.PieceAt(0).at - exchange.sent.at;
            timing.longest = std::max(timing.longest, after);
            if (kind == 'B' && after > kReadyPatience)
                DepartAt(exchange, 0,
                         "B answered after " + Seconds(after) +
                             "; the program gives up after about 3 s");
        }
        if (exchange.command != "Fr" && exchange.command != "Fh") LookForOtherBytes(exchange);
        LookAtReply(exchange, kind);
    }

    static std::string Named(const std::string& command) {
        const auto value = static_cast<unsigned char>(command[0]);
        return value > 32 && value < 127 ? command : Shown(command);
    }

    void LookForOtherBytes(const Exchange& exchange) {
        const std::string& reply = exchange.reply.All();
        const auto other = std::find_if(reply.begin(), reply.end(), [](char c) {
            const auto value = static_cast<unsigned char>(c);
            return (value < 32 && c != '\r' && c != '\n') || value >= 127;
        });
        if (other == reply.end()) return;
        DepartAt(exchange, static_cast<std::size_t>(other - reply.begin()),
                 "a byte that is no text: " + Shown(std::string(1, *other)));
    }

    void LookAtReply(const Exchange& exchange, char kind) {
        switch (kind) {
            case 'B':
                Expect(exchange, "(\r\n)*RDY\r\n", "RDY and a line end");
                break;
            case 'W':
                Expect(exchange, "\\s*DAVO[^\r\n]*\r\n", "a model that begins with DAVO");
                break;
            case 'L':
                Expect(exchange, "\\s*Record (Not )?Found\r\n", "Record Found or Record Not Found");
                break;
            case 'd':
                LookAtDirectory(exchange);
                break;
            case 'R':
                LookAtRecord(exchange);
                break;
            case 'F':
                LookAtHeaders(exchange);
                break;
            case 'T':
            case 't':
                LookAtShot(exchange);
                break;
            case 'X':
                if (!exchange.reply.All().empty())
                    DepartAt(exchange, 0, "X is answered: " + Shown(exchange.reply.All()));
                break;
            case '\r':
            case '\x1B':
            case 'S':
                break;  // a confirmation or a cancel after the end of a shot
            default:
                Depart(exchange.sent, "the PC sent what is no command: " + Shown(exchange.command));
        }
    }

    void Expect(const Exchange& exchange, const std::string& form, const std::string& inWords) {
        const std::string& reply = exchange.reply.All();
        if (reply.size() <= kLongestForm && std::regex_match(reply, std::regex(form))) return;
        const std::string got = reply.empty() ? "no answer" : Shown(reply);
        Depart(reply.empty() ? exchange.sent : exchange.reply.PieceAt(0),
               Named(exchange.command) + " wants " + inWords + ": " + got);
    }

    // Whether the reply ends as the program waits for it.
    bool Ends(const Exchange& exchange, const std::string& end) {
        const std::string& reply = exchange.reply.All();
        const std::size_t at = reply.find(end);
        const std::string wants = exchange.command + " wants a last line DONE";
        if (at == std::string::npos) {
            Depart(exchange.sent, wants + ", which did not come");
        } else if (reply.find_first_not_of("\r\n", at + end.size()) != std::string::npos) {
            DepartAt(exchange, at + end.size(), wants + ", and more came after it");
        }
        return at != std::string::npos;
    }

    void LookAtDirectory(const Exchange& exchange) {
        const std::string& reply = exchange.reply.All();
        if (!Ends(exchange, "\r\nDONE")) return;
        static const std::regex kBegin("#[0-9]{3}\r\n");
        static const std::regex kDate("[0-9]{2}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}\r\n");
        int count = 0;
        const std::sregex_iterator end;
        for (std::sregex_iterator it(reply.begin(), reply.end(), kBegin); it != end; ++it) {
            ++count;
            const auto begin = static_cast<std::size_t>(it->position());
            const auto next = std::next(it);
            const std::size_t to =
                next == end ? reply.size() : static_cast<std::size_t>(next->position());
            const std::string record = reply.substr(begin, to - begin);
            const std::string number = record.substr(0, 4);
            if (!std::regex_search(record.begin() + it->length(), record.end(), kDate,
                                   std::regex_constants::match_continuous))
                DepartAt(exchange, begin, number + " has no date and time in its second line");
            LookAtKeys(exchange, begin, record);
        }
        if (count > kMostRecords)
            DepartAt(exchange, 0, std::to_string(count) + " records; the program lists 135");
        report_.seen.push_back("directory of " + std::to_string(count) + " records, " +
                               std::to_string(reply.size()) + " bytes");
    }

    void LookAtKeys(const Exchange& exchange, std::size_t begin, const std::string& record) {
        static constexpr std::array kKeys = {"TESTS=", "COMPANY=", "STATION=",  "CIRCUIT=", "MFR=",
                                             "MODEL=", "SN=",      "OPERATOR=", "COMMENTS="};
        std::size_t at = 0;
        for (const std::string key : kKeys) {
            const std::size_t found = record.find(key, at);
            if (found == std::string::npos) {
                DepartAt(exchange, begin, record.substr(0, 4) + " has no " + key + " in its place");
                continue;
            }
            at = found + key.size();
            const std::size_t length = std::min(record.find("\r\n", at), record.size()) - at;
            const std::size_t wanted = key == kKeys[0] ? 2 : kValueSize;
            if (length != wanted)
                DepartAt(exchange, begin + found,
                         record.substr(0, 4) + ": the value of " + key + " has " +
                             std::to_string(length) + " characters, not " + std::to_string(wanted));
        }
    }

    void LookAtRecord(const Exchange& exchange) {
        const std::string& reply = exchange.reply.All();
        if (!Ends(exchange, "\r\nDONE\r\n")) return;
        constexpr std::string_view kBetween = " \t\n\v\f\r,";
        std::vector<std::string> fields;
        const std::string digits = reply.substr(0, reply.find("\r\nDONE"));
        for (std::size_t end = 0, at = digits.find_first_not_of(kBetween); at < digits.size();
             at = digits.find_first_not_of(kBetween, end)) {
            end = std::min(digits.find_first_of(kBetween, at), digits.size());
            fields.push_back(digits.substr(at, end - at));
            if (fields.back().find_first_not_of("0123456789ABCDEF") != std::string::npos)
                DepartAt(
                    exchange, at,
                    "a field of a record that is not all hexadecimal: " + Shown(fields.back()));
        }
        if (fields.empty()) return;
        const int tests = std::stoi("0" + fields[0].substr(0, 2), nullptr, 16);
        // Nine and a half fields a test.
        const std::size_t wanted =
            kFieldsBeforeTests + static_cast<std::size_t>(9 * tests + (tests + 1) / 2);
        if (fields.size() < wanted)
            DepartAt(exchange, 0,
                     "a record of " + std::to_string(tests) + " tests has " +
                         std::to_string(fields.size()) + " fields, not " + std::to_string(wanted));
    }

    void LookAtHeaders(const Exchange& exchange) {
        const std::string& reply = exchange.reply.All();
        if (exchange.command == "Fr") {
            if (reply.size() != kHeaderMemorySize + 2 || !reply.ends_with("\r\n"))
                Depart(exchange.sent, "Fr wants 1600 characters and a line end: got " +
                                          std::to_string(reply.size()) + " bytes");
            return;
        }
        const std::size_t prompt = reply.find("H:\r\n");
        if (reply.find("ERASING") > prompt || prompt == std::string::npos) {
            Depart(exchange.sent, "Fh wants ERASING and H:, got " + Shown(reply));
            return;
        }
        const std::string echoes = reply.substr(prompt + 4);
        std::string wanted = exchange.upload;
        std::replace(wanted.begin(), wanted.end(), static_cast<char>(kErased), ' ');
        const auto place = static_cast<std::size_t>(
            std::mismatch(wanted.begin(), wanted.end(), echoes.begin(), echoes.end()).first -
            wanted.begin());
        if (place < wanted.size() || echoes.size() > wanted.size())
            DepartAt(exchange, prompt + 4 + place,
                     "the echo of header character " + std::to_string(place + 1) +
                         " is missing or another");
    }

    void LookAtShot(const Exchange& exchange) {
        const std::string& reply = exchange.reply.All();
        const std::size_t data = std::min(reply.find("DATA"), reply.size());
        std::size_t readingEnd = std::string::npos;
        for (std::size_t at = 0; at < data;) {
            const std::size_t end = std::min(reply.find("\r\n", at), data);
            LookAtLine(exchange, at, reply.substr(at, end - at), readingEnd);
            at = end + 2;
        }
        if (data == reply.size()) {
            if (!exchange.cancelled) Depart(exchange.sent, "a shot without a record");
            return;
        }
        const std::size_t done = reply.find("DONE", data);
        if (done == std::string::npos) {
            DepartAt(exchange, data, "a record without DONE");
            return;
        }
        const std::string damage = DescribeRecordDamage(reply.substr(data, done + 4 - data));
        if (!damage.empty()) DepartAt(exchange, data, "a shot's record: " + damage);
        if (reply.find_first_not_of("\r\n", done + 4) != std::string::npos)
            DepartAt(exchange, done + 4, "more behind a shot's DONE");
    }

    void LookAtLine(const Exchange& exchange, std::size_t at, const std::string& line,
                    std::size_t& readingEnd) {
        static const std::regex kReading("I=[0-9]+\\.[0-9]+ V=[0-9]+\\.[0-9]+");
        static const std::regex kKnown(
            "|MESSAGE=(TURN VOLTAGE DRIVE TO ZERO\\.\\.\\.|SET THE VOLTAGE RANGE SELECTOR SWITCH|"
            "TURN VOLTAGE CONTROL UP UNTIL CT SATURATES \\([^)]*\\)|"
            "RATIO TEST, 100V MAX \\(LESS IF RATIO LESS THAN 10:1\\)|"
            "S-L-O-W-L-Y LOWER CURRENT NOW\\.\\.\\.|VOLTAGE TOO HIGH!)|"
            "RATIO=[^\r\n]+|POLARITY=[-+ ]");
        const bool isForm = line.size() <= kLongestForm;
        if (isForm && std::regex_match(line, kReading)) {
            readingEnd = at + line.size() + 1;
            return;
        }
        if (!isForm || !std::regex_match(line, kKnown))
            DepartAt(exchange, at, "a line that the program does not know: " + Shown(line));
        if (readingEnd == std::string::npos || line.empty()) return;
        const Micros silence =
            exchange.reply.PieceAt(at).at - exchange.reply.PieceAt(readingEnd).at;
        if (silence < kShortestSilence)
            DepartAt(exchange, at,
                     Shown(line) + " comes " + Seconds(silence) +
                         " after a reading, and can be thrown away with it");
        readingEnd = std::string::npos;
    }

    std::vector<Exchange> exchanges_;
    std::map<std::string, Timing> timings_;
    LogReport report_;
};

}  // namespace

LogReport CheckLog(const std::vector<LoggedBytes>& log) {
    return Check(log).Take();
}

std::string LogReport::Text() const {
    std::string text;
    for (const std::string& line : seen)
        text += line + "\n";
    for (const LogDeparture& departure : departures)
        text += "line " + std::to_string(departure.line) + ", " + Seconds(departure.at) + ": " +
                departure.text + "\n";
    return text + std::to_string(departures.size()) +
           (departures.size() == 1 ? " departure" : " departures") +
           " from what the program expects\n";
}

}  // namespace davo::instrument
