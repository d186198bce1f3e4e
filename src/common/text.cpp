// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/text.h"

#include <QStringList>
#include <algorithm>
#include <array>

#include "common/run_time_error.h"

namespace davo {

namespace {

// The codes 80 to 9F (hexadecimal) of Windows-1252; the five open ones mean themselves.
constexpr std::array<char16_t, 32> kUpperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

std::string TrimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
}

std::string PadRight(std::string_view text, std::size_t width) {
    std::string padded(text);
    if (padded.size() < width) padded.resize(width, ' ');
    return padded;
}

std::string RemoveBlanksAndLineEnds(std::string_view text) {
    std::string kept(text);
    std::erase_if(kept, [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
    return kept;
}

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::size_t ReplaceControls(std::string& text, std::string_view kept) {
    constexpr unsigned char kDelete = 127;
    std::size_t replaced = 0;
    for (char& c : text) {
        const auto code = static_cast<unsigned char>(c);
        const bool control = code < ' ' || code == kDelete;
        if (!control || Contains(kept, {&c, 1})) continue;
        c = '?';
        ++replaced;
    }
    return replaced;
}

std::string_view Middle(std::string_view text, std::size_t start, std::size_t length) {
    if (start >= text.size()) return {};
    return text.substr(start, length);
}

QString FromPage(std::string_view bytes) {
    QString text = QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
    for (QChar& character : text) {
        const char16_t code = character.unicode();
        if (code >= 0x80 && code <= 0x9F) character = kUpperControls.at(code - 0x80U);
    }
    return text;
}

std::optional<std::string> ToPage(const QString& text) {
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(text.size()));
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) {
            bytes.push_back(static_cast<char>(code));
            continue;
        }
        const auto found = std::find(kUpperControls.begin(), kUpperControls.end(), code);
        if (found == kUpperControls.end()) return std::nullopt;
        bytes.push_back(static_cast<char>(0x80 + (found - kUpperControls.begin())));
    }
    return bytes;
}

QString RunsText(const std::vector<int>& rising, const std::function<QString(int)>& nameOf) {
    QStringList runs;
    auto first = rising.begin();
    while (first != rising.end()) {
        const auto gap = std::adjacent_find(first, rising.end(),
                                            [](int one, int next) { return next != one + 1; });
        const auto last = gap == rising.end() ? gap - 1 : gap;
        QString run = nameOf(*first);
        if (last > first) run += QLatin1String(last > first + 1 ? " to " : ", ") + nameOf(*last);
        runs += run;
        first = last + 1;
    }
    return runs.join(QStringLiteral(", "));
}

std::string FieldReader::Next() {
    if (AtEnd()) throw RunTimeError(ErrorNumber::InputPastEnd);
    const std::size_t start = std::min(bytes_.find_first_not_of(' ', at_), bytes_.size());
    std::size_t rest = start;
    std::string field;
    const bool quoted = start < bytes_.size() && bytes_[start] == '"';
    if (quoted) {
        const std::size_t close = std::min(bytes_.find('"', start + 1), bytes_.size());
        field = bytes_.substr(start + 1, close - start - 1);
        rest = std::min(close + 1, bytes_.size());
    }
    const std::size_t end = std::min(bytes_.find_first_of(",\r\n", rest), bytes_.size());
    if (!quoted) field = TrimBlanks(bytes_.substr(start, end - start));

    const bool lineEndOfTwo = bytes_.substr(end, 2) == kLineEnd;
    at_ = std::min(end + (lineEndOfTwo ? 2 : 1), bytes_.size());
    return field;
}

}  // namespace davo
