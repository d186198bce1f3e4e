// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace davo {

// value by a numeric picture such as "###0.0000", "##0.00", "00" or "000": '#' an optional digit,
// '0' a required digit, '.' the decimal point. The value's decimal text of 15 significant digits
// is rounded half away from zero to the picture's decimals (152.34999999999999 by "###0.0" gives
// "152.4", 2.675 by "0.00" gives "2.68"). A negative value has a leading '-', except that a value
// which rounds to zero has none. A fraction below one under a picture without a '0' before the
// point starts with the point. Always '.' whatever the user's locale. More integer digits than
// the picture has are all written. Throws RunTimeError 6 (Overflow) when value is not finite.
std::string Picture(double value, std::string_view picture);

// Picture and back: the double of Picture(value, picture).
double RoundByPicture(double value, std::string_view picture);

// General number form: the shortest decimal text of value with at most 15 significant digits, no
// leading blank, '.' as decimal point; from 1E+15 up and for tiny values with an exponent
// ("1E+15", "1.5E-05": below 0.0001). "-0" is never written. Throws RunTimeError 6 (Overflow)
// when value is not finite.
std::string GeneralNumber(double value);

// The number that text begins with, blanks ignored: sign, digits, one point, an exponent of E or
// D; 0 when there is none ("-" gives 0, "12abc" gives 12, " 1 2" gives 12).
// One too small for a double is 0; one too large throws RunTimeError 6 (Overflow).
double NumericValue(std::string_view text);

// The number that the whole of text is, blanks at the ends ignored; nothing when it is not one or
// is too large for a double. For texts that an operator typed.
std::optional<double> WholeNumericValue(std::string_view text);

// The number that text begins with, blanks before it ignored ("240.7:1" gives 240.7); nothing when
// there is none or it is too large for a double. For texts of the instrument.
std::optional<double> LeadingNumericValue(std::string_view text);

// value rounded to the nearest 16-bit integer, halves to even. Throws RunTimeError 6 (Overflow)
// outside -32768 to 32767.
std::int16_t ToInteger16(double value);

// A number as a text with a sign position: a blank before a value that is not negative.
std::string SignedText(int value);

// The 32-bit number of a text of digits from "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ": each
// character's value is its place in that text counted from 0 (one that is not in it, lower-case
// letters included, counts -1); the k-th from the end weighs 16 to the power k whatever the digit;
// the sum is made in a double and rounded. An empty text gives 0. Throws RunTimeError 6 (Overflow)
// outside the 32-bit range.
std::int32_t ParseHexText(std::string_view text);

}  // namespace davo
