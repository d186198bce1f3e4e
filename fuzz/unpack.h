// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <map>
#include <string>

namespace davo::fuzz {

using Parts = std::map<std::string, QByteArray>;  // by name

// The files of a ZIP archive, by its directory; the run ends where it is none.
Parts Unpacked(const std::string& archive);

}  // namespace davo::fuzz
