// SPDX-License-Identifier: GPL-3.0-or-later
#include <io.h>
#include <windows.h>

#include <cstdint>

#include "common/flush_to_disk.h"

namespace davo {

bool FlushToDisk(int descriptor) {
    if (descriptor < 0) return false;
    const std::intptr_t handle = _get_osfhandle(descriptor);
    return handle != -1 && FlushFileBuffers(reinterpret_cast<HANDLE>(handle)) != 0;
}

}  // namespace davo
