// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ostream>

#include "analysis/kneepoint.h"

namespace davo {

// How a failed comparison shows a kneepoint.
inline void PrintTo(const Kneepoint& kneepoint, std::ostream* out) {
    *out << kneepoint.voltage << " V " << kneepoint.current << " A";
}

}  // namespace davo
