// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <windows.h>

namespace davo::test {

// The class that the recording Excel is registered under; not Excel's own.
inline constexpr GUID kExcelClass = {
    0xd4f0ce10, 0x6a55, 0x4be2, {0x8d, 0x0b, 0x6f, 0x2f, 0x3d, 0x51, 0x9a, 0x77}};
inline constexpr const wchar_t* kExcelClassText = L"{D4F0CE10-6A55-4BE2-8D0B-6F2F3D519A77}";

}  // namespace davo::test
