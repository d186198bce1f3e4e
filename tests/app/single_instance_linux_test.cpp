// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/single_instance.h"

#include "tests/support/in_the_way.h"
#include "tests/support/small_disk.h"

namespace davo::test {
namespace {

TEST(SingleInstanceOnLinux, DoesNotWaitForAPipeThatHasTheNameOfItsLock) {
    const TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    const QByteArray lock = QFile::encodeName(folder.Path("configuration/davo.lock"));
    ASSERT_EQ(::mkfifo(lock.constData(), 0666), 0);
    const NoWait limit;
    auto first = std::make_unique<SingleInstance>(places);
    EXPECT_FALSE(first->AnotherRuns());
    EXPECT_TRUE(SingleInstance(places).AnotherRuns());
}

TEST(SingleInstanceOnLinux, KeepsTheSecondOutWhereTheDiskOfItsFolderIsProtected) {
    if (!SmallDisk::Can()) GTEST_SKIP() << "a small disk can be mounted by root only";
    const TemporaryFolder folder;
    const Places places = folder.MakePlaces();
    SmallDisk disk(places.configurationFolder);
    disk.Protect();
    auto first = std::make_unique<SingleInstance>(places);
    EXPECT_FALSE(first->AnotherRuns());
    EXPECT_TRUE(SingleInstance(places).AnotherRuns());
}

}  // namespace
}  // namespace davo::test
