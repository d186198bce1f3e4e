// SPDX-License-Identifier: GPL-3.0-or-later
#include <unistd.h>

#include <cerrno>

#include "common/flush_to_disk.h"

namespace davo {

bool FlushToDisk(int descriptor) {
    while (fdatasync(descriptor) != 0) {
        if (errno != EINTR) return false;
    }
    return true;
}

}  // namespace davo
