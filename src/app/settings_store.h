#pragma once

#include <memory>

#include "common/places.h"
#include "common/settings.h"

namespace davo {

// The platform's store: HKEY_CURRENT_USER\Software\VB and VBA Program Settings on Windows; one
// INI file "davo.ini" in the configuration folder elsewhere, group "application/section".
std::unique_ptr<SettingsStore> MakeSettingsStore(const Places& places);

}  // namespace davo
