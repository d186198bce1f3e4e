// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

// The number rules a second time and by other means than src/common/numbers.cpp: whole-number
// arithmetic on the 15 digits of printf, "%G", and strtod behind a regular expression. Needs the C
// locale.
namespace davo::test {

inline std::uint64_t PowerOfTen(int exponent) {
    std::uint64_t power = 1;
    for (int i = 0; i < exponent; ++i)
        power *= 10;
    return power;
}

// value * 10^decimals, rounded half away from zero, without sign, as digits.
inline std::string ReferenceScaled(double value, int decimals) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.14e", std::fabs(value));
    std::string digits(text.data(), 16);
    digits.erase(1, 1);
    const std::uint64_t mantissa = std::stoull(digits);
    const int shift = std::atoi(text.data() + 17) - 14 + decimals;
    if (mantissa == 0) return "0";
    if (shift >= 0)
        return std::to_string(mantissa) + std::string(static_cast<std::size_t>(shift), '0');
    if (shift < -18) return "0";
    const std::uint64_t divisor = PowerOfTen(-shift);
    const std::uint64_t rest = mantissa % divisor;
    return std::to_string(mantissa / divisor + (rest >= divisor - rest ? 1 : 0));
}

// By a picture of whole digits at least and exactly so many decimals.
inline std::string ReferencePicture(double value, int whole, int decimals) {
    std::string digits = ReferenceScaled(value, decimals);
    const bool zero = digits == "0";
    while (static_cast<int>(digits.size()) < decimals)
        digits = "0" + digits;
    const auto cut = digits.size() - static_cast<std::size_t>(decimals);
    std::string before = digits.substr(0, cut);
    if (before == "0") before.clear();
    while (static_cast<int>(before.size()) < whole)
        before = "0" + before;
    std::string result = (value < 0 && !zero ? "-" : "") + before;
    if (decimals > 0) result += "." + digits.substr(cut);
    return result;
}

// The picture text for it: hashes, then so many zeros, and the decimals.
inline std::string PictureText(int hashes, int whole, int decimals) {
    std::string picture(static_cast<std::size_t>(hashes), '#');
    picture.append(static_cast<std::size_t>(whole), '0');
    if (decimals > 0) picture += "." + std::string(static_cast<std::size_t>(decimals), '0');
    return picture;
}

inline std::string ReferenceGeneral(double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.15G", value);
    const std::string result(text.data());
    return result == "-0" ? "0" : result;
}

// Infinite where the number is too large.
inline double ReferenceValue(std::string text) {
    static const std::regex kNumber(R"(^[+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([EeDd][+-]?[0-9]+)?)");
    std::erase(text, ' ');
    std::smatch match;
    if (!std::regex_search(text, match, kNumber)) return 0;
    std::string number = match.str();
    std::replace_if(
        number.begin(), number.end(), [](char c) { return c == 'D' || c == 'd'; }, 'e');
    return std::strtod(number.c_str(), nullptr);
}

}  // namespace davo::test
