// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>

namespace davo {

// path as the system's calls take it. A long one needs the prefix that lifts the limit of 260
// characters (248 for a folder), and with it the whole path, since nothing in it is worked out
// then.
std::wstring NativePath(const QString& path);

}  // namespace davo
