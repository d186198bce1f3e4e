// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Constants of Excel's object model by the names that its reference gives them, without "xl".
namespace davo::excel {

inline constexpr int kAutomatic = -4105;
inline constexpr int kNone = -4142;

// Cells
inline constexpr int kLeft = -4131;
inline constexpr int kCenter = -4108;
inline constexpr int kTop = -4160;
inline constexpr int kBottom = -4107;

// Charts
inline constexpr int kXyScatterLinesNoMarkers = 75;
inline constexpr int kColumns = 2;
inline constexpr int kCategory = 1;
inline constexpr int kValue = 2;
inline constexpr int kScaleLogarithmic = -4133;
inline constexpr int kScaleLinear = -4132;
inline constexpr int kTickMarkOutside = 3;
inline constexpr int kTickLabelPositionLow = -4134;
inline constexpr int kThin = 2;
inline constexpr int kMedium = -4138;
inline constexpr int kMarkerStyleStar = 5;
inline constexpr int kMarkerStyleCircle = 8;

// Pages and files
inline constexpr int kPortrait = 1;
inline constexpr int kLandscape = 2;
inline constexpr int kExcel8 = 56;             // Excel 97-2003, since version 12
inline constexpr int kWorkbookNormal = -4143;  // the same before version 12
inline constexpr int kFirstVersionWithExcel8 = 12;
inline constexpr int kSecurityForceDisable = 3;  // macros; of Office, "mso"

}  // namespace davo::excel
