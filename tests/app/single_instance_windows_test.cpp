// SPDX-License-Identifier: GPL-3.0-or-later
// Two processes: one that is killed while it counts as running.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include "app/single_instance.h"
#include "tests/support/temporary_folder.h"

namespace davo::test {
namespace {

constexpr const char* kFolderVariable = "DAVO_TEST_INSTANCE_FOLDER";

Places PlacesIn(const QString& folder) {
    Places places;
    places.configurationFolder = folder;
    return places;
}

// Run in a process of its own by the test below, which ends it.
TEST(SingleInstanceProcess, DISABLED_HoldsTheInstance) {
    auto instance =
        std::make_unique<SingleInstance>(PlacesIn(qEnvironmentVariable(kFolderVariable)));
    ASSERT_FALSE(instance->AnotherRuns());
    QThread::sleep(60);
}

TEST(SingleInstanceProcess, KeepsOthersOutUntilItIsKilled) {
    const TemporaryFolder folder;
    const Places places = PlacesIn(folder.Path());
    QProcess other;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(kFolderVariable), folder.Path());
    other.setProcessEnvironment(environment);
    other.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--gtest_also_run_disabled_tests"),
                 QStringLiteral("--gtest_filter=*DISABLED_HoldsTheInstance")});
    ASSERT_TRUE(other.waitForStarted());
    QElapsedTimer waited;
    waited.start();
    while (!QFileInfo::exists(folder.Path("davo.lock")) && waited.elapsed() < 20000)
        QThread::msleep(20);
    QThread::msleep(200);
    EXPECT_TRUE(SingleInstance(places).AnotherRuns());
    other.kill();
    ASSERT_TRUE(other.waitForFinished());
    EXPECT_FALSE(SingleInstance(places).AnotherRuns());
}

}  // namespace
}  // namespace davo::test
