// SPDX-License-Identifier: GPL-3.0-or-later

#include "common/files.h"
#include "common/places.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

// Sets an environment variable as long as it lives.
class Variable {
  public:
    Variable(const char* name, const QString& value)
        : name_(name), before_(qgetenv(name)), wasSet_(qEnvironmentVariableIsSet(name)) {
        qputenv(name, value.toUtf8());
    }
    ~Variable() {
        if (wasSet_) {
            qputenv(name_, before_);
        } else {
            qunsetenv(name_);
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* name_;
    QByteArray before_;
    bool wasSet_;
};

TEST(PlacesOnLinux, FollowTheUsersFolders) {
    const test::TemporaryFolder folder;
    const Variable data("XDG_DATA_HOME", folder.Path("data"));
    const Variable configuration("XDG_CONFIG_HOME", folder.Path("config"));
    const Places places = PlatformPlaces();
    EXPECT_EQ(places.scratchFolder, folder.Path("data/davo/"));
    EXPECT_EQ(places.configurationFolder, folder.Path("config/davo/"));
    EXPECT_FALSE(FolderExists(places.scratchFolder));
    EXPECT_FALSE(FolderExists(places.configurationFolder));
}

TEST(PlacesOnLinux, LieInTheHomeFolderByDefault) {
    const test::TemporaryFolder folder;
    const Variable home("HOME", folder.Path());
    const Variable data("XDG_DATA_HOME", QString());
    const Variable configuration("XDG_CONFIG_HOME", QString());
    const Places places = PlatformPlaces();
    EXPECT_EQ(places.scratchFolder, folder.Path(".local/share/davo/"));
    EXPECT_EQ(places.configurationFolder, folder.Path(".config/davo/"));
}

}  // namespace
}  // namespace davo
