// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "common/places.h"
#include "common/settings.h"

namespace davo {

// The platform's store: HKEY_CURRENT_USER\Software\VB and VBA Program Settings on Windows; one
// INI file "davo.ini" in the configuration folder elsewhere, group "application/section". Each
// write reaches the store at once; one that cannot throws RunTimeError 75.
std::unique_ptr<SettingsStore> MakeSettingsStore(const Places& places);

}  // namespace davo
