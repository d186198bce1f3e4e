// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDate>
#include <string>
#include <string_view>
#include <vector>

namespace davo {

// The direction of a sort: this value is descending, any other ascending.
inline constexpr int kDescending = 1;

// The lower-case form of text in Windows-1252, accented letters included.
std::string LowerCase(std::string_view text);

// Exchange sort of the slots 0 to lastIndex; ties are never swapped. Slots after lastIndex keep
// their place. Throws RunTimeError 9 when the table has no slot lastIndex (-1: nothing to sort).
void SortDates(std::vector<QDate>& dates, int lastIndex, int direction);

// The same on texts, compared byte by byte in their lower-case forms.
void SortTexts(std::vector<std::string>& texts, int lastIndex, int direction);

}  // namespace davo
