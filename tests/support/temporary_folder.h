// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QTemporaryDir>

#include "common/places.h"
#include "tests/support/testing.h"

namespace davo::test {

// A folder that lasts as long as the test, with places of its own in it. Paths have the
// platform's separators and end with one.
class TemporaryFolder {
  public:
    TemporaryFolder() { EXPECT_TRUE(folder_.isValid()) << folder_.errorString().toStdString(); }

    QString Path() const { return ShownPath(folder_.path() + QLatin1Char('/')); }
    QString Path(const char* name) const { return Path() + ShownPath(QLatin1String(name)); }

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
