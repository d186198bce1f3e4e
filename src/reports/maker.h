// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Who makes the test set, as reports name them. All of it is fictional: a reserved example domain
// and a telephone number from a range kept for fiction.
namespace davo {

inline constexpr const char* kMakerFooterLine =
    "DAVO Current-Transformer Test Sets, 100 Example Way, Springfield, Telephone +1 555-0100";
inline constexpr const char* kMakerWebAddress = "www.davo.example";

}  // namespace davo
