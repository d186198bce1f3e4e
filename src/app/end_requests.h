// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>

namespace davo {

// While the object lives, the platform's request to end the process makes the application quit,
// so that it unloads like one that is left. On Linux these are the signals SIGTERM, SIGINT and
// SIGHUP; a second one ends the process at once. On Windows the request is a message to the main
// window, which needs nothing here.
std::unique_ptr<QObject> QuitOnEndRequests();

}  // namespace davo
