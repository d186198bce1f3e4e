// SPDX-License-Identifier: GPL-3.0-or-later
#include "records/sorting.h"

#include <algorithm>
#include <utility>

#include "common/run_time_error.h"
#include "common/text.h"

namespace davo {

namespace {

// The order in which equal keys end up is visible (names that differ in case only), so the plain
// exchange sort stays: another algorithm would order them differently.
template <class Key, class Exchange>
void ExchangeSort(std::vector<Key>& keys, int lastIndex, int direction, const Exchange& exchange) {
    for (int i = 0; i < lastIndex; ++i) {
        for (int j = i + 1; j <= lastIndex; ++j) {
            const Key& a = keys[static_cast<std::size_t>(i)];
            const Key& b = keys[static_cast<std::size_t>(j)];
            const bool swapThem = direction == kDescending ? a < b : b < a;
            if (swapThem) exchange(static_cast<std::size_t>(i), static_cast<std::size_t>(j));
        }
    }
}

void RequireSlot(std::size_t size, int lastIndex) {
    if (lastIndex < -1 || lastIndex >= static_cast<int>(size)) {
        throw RunTimeError(ErrorNumber::SubscriptOutOfRange);
    }
}

}  // namespace

std::string LowerCase(std::string_view text) {
    return ToPage(FromPage(text).toLower()).value_or(std::string(text));
}

void SortDates(std::vector<QDate>& dates, int lastIndex, int direction) {
    RequireSlot(dates.size(), lastIndex);
    ExchangeSort(dates, lastIndex, direction,
                 [&](std::size_t i, std::size_t j) { std::swap(dates[i], dates[j]); });
}

void SortTexts(std::vector<std::string>& texts, int lastIndex, int direction) {
    RequireSlot(texts.size(), lastIndex);
    std::vector<std::string> keys(texts.size());
    std::transform(texts.begin(), texts.end(), keys.begin(), LowerCase);
    ExchangeSort(keys, lastIndex, direction, [&](std::size_t i, std::size_t j) {
        std::swap(keys[i], keys[j]);
        std::swap(texts[i], texts[j]);
    });
}

}  // namespace davo
