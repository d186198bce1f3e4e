// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

#include "common/places.h"
#include "tests/support/testing.h"

namespace davo::test {

// Hidden files and links to nowhere too.
inline constexpr QDir::Filters kAllEntries =
    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

// A folder that lasts as long as the test, with places of its own in it. Paths have the
// platform's separators and end with one.
class TemporaryFolder {
  public:
    TemporaryFolder() { EXPECT_TRUE(folder_.isValid()) << folder_.errorString().toStdString(); }

    QString Path() const { return ShownPath(folder_.path() + QLatin1Char('/')); }
    QString Path(const char* name) const { return Path() + ShownPath(QLatin1String(name)); }

    // Of all that is in it, or in a folder in it.
    QStringList Names(const char* name = "") const {
        return QDir(Path(name)).entryList(kAllEntries);
    }

    // Three folders in it, made when they are asked for.
    Places MakePlaces() const {
        for (const char* name : {"scratch", "application", "configuration"}) {
            EXPECT_TRUE(QDir().mkpath(Path(name)));
        }
        return {Path("scratch/"), Path("application/"), Path("configuration/")};
    }

  private:
    QTemporaryDir folder_;
};

}  // namespace davo::test
