// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace davo {

// The program's version as its windows show it: "3.15". It is that of the project in
// CMakeLists.txt.
extern const char* const kVersion;

}  // namespace davo
