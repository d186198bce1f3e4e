// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/version.h"

namespace davo {

const char* const kVersion = DAVO_VERSION;

}  // namespace davo
