// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QStyle;

namespace davo {

// The Fusion style with outlines of fields, buttons and frames that stand out from the window by 3
// to 1 in every palette: its own are the window's colour made darker, and lost on a dark one.
QStyle* MakeOutlineStyle();

}  // namespace davo
