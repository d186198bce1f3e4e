// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

constexpr int kSignificantDigits = 15;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The magnitude of a double as d.dddddddddddddd times ten to the exponent.
struct DecimalText {
    bool negative;
    std::string digits;  // 15 digits, the point is after the first
    int exponent;
};

DecimalText DecimalTextOf(double value) {
    if (!std::isfinite(value)) throw RunTimeError(ErrorNumber::Overflow);
    std::array<char, 32> buffer{};
    const auto written =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::abs(value),
                      std::chars_format::scientific, kSignificantDigits - 1);
    const std::string_view text(buffer.data(),
                                static_cast<std::size_t>(written.ptr - buffer.data()));
    const auto mark = text.find('e');
    std::string digits(text.substr(0, 1));
    digits += text.substr(2, mark - 2);
    int exponent = 0;
    const std::size_t sign = text.at(mark + 1) == '+' ? 1 : 0;
    std::from_chars(text.data() + mark + 1 + sign, text.data() + text.size(), exponent);
    return {std::signbit(value), digits, exponent};
}

// Adds one to a whole number written in digits.
void Increment(std::string& digits) {
    const auto last = digits.find_last_not_of('9');
    if (last == std::string::npos) {
        digits = '1' + std::string(digits.size(), '0');
        return;
    }
    ++digits[last];
    digits.replace(last + 1, std::string::npos, digits.size() - last - 1, '0');
}

// The magnitude times ten to the decimals, rounded half up to a whole number, as digits.
std::string ScaledDigits(const DecimalText& text, int decimals) {
    const int kept = text.exponent + 1 + decimals;
    if (kept < 0) return "0";
    std::string digits = text.digits;
    const auto size = static_cast<std::size_t>(kept);
    if (size >= digits.size()) {
        digits.resize(size, '0');
        return digits;
    }
    const bool up = digits.at(size) >= '5';
    digits.resize(size);
    if (up) Increment(digits);
    return digits;
}

// How many digits a picture asks for.
struct PictureShape {
    std::size_t requiredWhole = 0;
    std::size_t decimals = 0;
    std::size_t requiredDecimals = 0;
    bool point = false;
};

PictureShape ShapeOf(std::string_view picture) {
    PictureShape shape;
    const auto point = picture.find('.');
    shape.point = point != std::string_view::npos;
    const std::string_view whole = picture.substr(0, point);
    const auto firstRequired = whole.find('0');
    if (firstRequired != std::string_view::npos) shape.requiredWhole = whole.size() - firstRequired;
    if (!shape.point) return shape;
    const std::string_view fraction = picture.substr(point + 1);
    shape.decimals = fraction.size();
    const auto lastRequired = fraction.rfind('0');
    if (lastRequired != std::string_view::npos) shape.requiredDecimals = lastRequired + 1;
    return shape;
}

// A number at the start of a text.
struct NumberAtStart {
    double value = 0;
    std::size_t length = 0;  // bytes that belong to it; 0 when there is none
    bool overflow = false;
};

std::size_t DigitsFrom(std::string_view text, std::size_t at) {
    return std::min(text.find_first_not_of("0123456789", at), text.size()) - at;
}

// The length of "E-05" or "D3" at the position; 0 when no digit follows the letter.
std::size_t ExponentLength(std::string_view text, std::size_t at) {
    constexpr std::string_view kLetters = "EeDd";
    if (at >= text.size() || kLetters.find(text[at]) == std::string_view::npos) return 0;
    std::size_t first = at + 1;
    if (first < text.size() && (text[first] == '+' || text[first] == '-')) ++first;
    const std::size_t digits = DigitsFrom(text, first);
    return digits == 0 ? 0 : first + digits - at;
}

// The exponent text "E-05" as a number; beyond a million it is cut, which no double can tell.
int ExponentValue(std::string_view text) {
    constexpr int kLimit = 1000000;
    if (text.empty()) return 0;
    const bool negative = text[1] == '-';
    int value = 0;
    for (const char c : text.substr(1)) {
        if (IsDigit(c)) value = std::min(kLimit, value * 10 + (c - '0'));
    }
    return negative ? -value : value;
}

// Whether a number that no double holds is too large rather than too small.
bool IsTooLarge(std::string_view mantissa, int exponent) {
    const auto first = static_cast<std::ptrdiff_t>(mantissa.find_first_not_of("0."));
    const auto point = static_cast<std::ptrdiff_t>(std::min(mantissa.find('.'), mantissa.size()));
    return point - first + exponent > 0;
}

NumberAtStart ReadNumber(std::string_view text) {
    const std::size_t start = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    const std::size_t whole = DigitsFrom(text, start);
    std::size_t end = start + whole;
    std::size_t fraction = 0;
    if (end < text.size() && text[end] == '.') {
        fraction = DigitsFrom(text, end + 1);
        end += 1 + fraction;
    }
    if (whole + fraction == 0) return {};
    const std::string_view mantissa = text.substr(start, end - start);
    const std::size_t exponentLength = ExponentLength(text, end);
    const int exponent = ExponentValue(text.substr(end, exponentLength));

    NumberAtStart number;
    number.length = end + exponentLength;
    std::string plain(mantissa);
    if (exponent != 0) plain += 'e' + std::to_string(exponent);
    const auto read = std::from_chars(plain.data(), plain.data() + plain.size(), number.value);
    if (read.ec == std::errc::result_out_of_range) {
        number.value = 0;
        number.overflow = IsTooLarge(mantissa, exponent);
    }
    if (text[0] == '-' && number.value != 0) number.value = -number.value;
    return number;
}

constexpr std::string_view kHexDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

double HexDigitValue(char digit) {
    const auto place = kHexDigits.find(digit);
    return place == std::string_view::npos ? -1.0 : static_cast<double>(place);
}

}  // namespace

std::string Picture(double value, std::string_view picture) {
    const DecimalText text = DecimalTextOf(value);
    const PictureShape shape = ShapeOf(picture);
    std::string digits = ScaledDigits(text, static_cast<int>(shape.decimals));
    const bool zero = digits.find_first_not_of('0') == std::string::npos;
    digits.erase(0, digits.find_first_not_of('0'));
    const std::size_t required = shape.requiredWhole + shape.decimals;
    if (digits.size() < required) digits.insert(0, required - digits.size(), '0');

    std::string result = text.negative && !zero ? "-" : "";
    result.append(digits, 0, digits.size() - shape.decimals);
    if (!shape.point) return result;
    std::string fraction = digits.substr(digits.size() - shape.decimals);
    while (fraction.size() > shape.requiredDecimals && fraction.back() == '0')
        fraction.pop_back();
    return result + '.' + fraction;
}

double RoundByPicture(double value, std::string_view picture) {
    // Through the text only what is so near a tie, or so large, that its digits decide. A whole
    // number of decimal steps divided by their power of ten is the double of its text.
    constexpr double kLargest = 1e9;
    constexpr double kNearTie = 1e-5;
    constexpr std::array kPowers = {1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
    const std::size_t decimals = ShapeOf(picture).decimals;
    if (decimals < kPowers.size()) {
        const double steps = std::abs(value) * kPowers.at(decimals);
        const double below = std::floor(steps);
        const double fromTie = steps - below - 0.5;
        if (steps < kLargest && std::abs(fromTie) > kNearTie) {
            const double whole = fromTie > 0 ? below + 1 : below;
            return value < 0 && whole > 0 ? -whole / kPowers.at(decimals)
                                          : whole / kPowers.at(decimals);
        }
    }
    return NumericValue(Picture(value, picture));
}

std::string GeneralNumber(double value) {
    DecimalText text = DecimalTextOf(value);
    std::string& digits = text.digits;
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.empty()) return "0";
    const std::string sign = text.negative ? "-" : "";
    if (text.exponent < -4 || text.exponent >= kSignificantDigits) {
        if (digits.size() > 1) digits.insert(1, ".");
        const std::string power = std::to_string(std::abs(text.exponent));
        return sign + digits + (text.exponent < 0 ? "E-" : "E+") + (power.size() < 2 ? "0" : "") +
               power;
    }
    if (text.exponent < 0) {
        return sign + "0." + std::string(static_cast<std::size_t>(-text.exponent - 1), '0') +
               digits;
    }
    const auto whole = static_cast<std::size_t>(text.exponent) + 1;
    if (digits.size() <= whole) {
        digits.resize(whole, '0');
    } else {
        digits.insert(whole, ".");
    }
    return sign + digits;
}

double NumericValue(std::string_view text) {
    std::string packed(text);
    std::erase(packed, ' ');
    const NumberAtStart number = ReadNumber(packed);
    if (number.overflow) throw RunTimeError(ErrorNumber::Overflow);
    return number.value;
}

std::optional<double> WholeNumericValue(std::string_view text) {
    const std::string trimmed = TrimBlanks(text);
    const NumberAtStart number = ReadNumber(trimmed);
    if (number.length == 0 || number.length != trimmed.size() || number.overflow) {
        return std::nullopt;
    }
    return number.value;
}

std::optional<double> LeadingNumericValue(std::string_view text) {
    const NumberAtStart number = ReadNumber(TrimBlanks(text));
    if (number.length == 0 || number.overflow) return std::nullopt;
    return number.value;
}

std::int16_t ToInteger16(double value) {
    const double rounded = std::nearbyint(value);
    if (!(rounded >= -32768 && rounded <= 32767)) throw RunTimeError(ErrorNumber::Overflow);
    return static_cast<std::int16_t>(rounded);
}

std::string SignedText(int value) {
    return (value < 0 ? "" : " ") + std::to_string(value);
}

std::int32_t ParseHexText(std::string_view text) {
    double sum = 0.0;
    double weight = 1.0;
    for (std::size_t fromEnd = 1; fromEnd <= text.size(); ++fromEnd) {
        sum += HexDigitValue(text[text.size() - fromEnd]) * weight;
        weight *= 16.0;
    }
    const double rounded = std::nearbyint(sum);
    // Asked this way round so that a text too long for a double, infinite or not a number, fails
    // too.
    const bool fits = rounded >= std::numeric_limits<std::int32_t>::min() &&
                      rounded <= std::numeric_limits<std::int32_t>::max();
    if (!fits) throw RunTimeError(ErrorNumber::Overflow);
    return static_cast<std::int32_t>(rounded);
}

}  // namespace davo
