// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/end_requests.h"

namespace davo {

std::unique_ptr<QObject> QuitOnEndRequests() {
    return std::make_unique<QObject>();
}

}  // namespace davo
