// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace davo {

// Captions of the test window's buttons whose meaning depends on them.
inline constexpr const char* kCaptionStart = "&Start Test";
inline constexpr const char* kCaptionNext = "&Next Test";
inline constexpr const char* kCaptionContinueTest = "&Continue Test";
inline constexpr const char* kCaptionContinue = "&Continue";
inline constexpr const char* kCaptionOk = "&OK";
inline constexpr const char* kCaptionRepeat = "&Repeat Test";

}  // namespace davo
