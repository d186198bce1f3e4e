// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/single_instance.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

class SingleInstanceOfAUser : public ::testing::Test {
  protected:
    void LeaveLock(const QByteArray& text) {
        QFile file(LockPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QString LockPath() const { return places.configurationFolder + u"davo.lock"_s; }
    bool AnotherRuns() const { return SingleInstance(places).AnotherRuns(); }

    TemporaryFolder folder;
    Places places = folder.MakePlaces();
};

TEST_F(SingleInstanceOfAUser, IsTheFirstAndKeepsTheSecondOut) {
    auto first = std::make_unique<SingleInstance>(places);
    EXPECT_FALSE(first->AnotherRuns());
    EXPECT_TRUE(AnotherRuns());
    EXPECT_TRUE(AnotherRuns()) << "asking does not disturb the first";
}

TEST_F(SingleInstanceOfAUser, LetsTheNextOneInWhenItHasGone) {
    EXPECT_FALSE(AnotherRuns());
    EXPECT_FALSE(QFile::exists(LockPath()));
    EXPECT_FALSE(AnotherRuns());
}

TEST_F(SingleInstanceOfAUser, MakesItsFolder) {
    places.configurationFolder = folder.Path("new/davo/");
    EXPECT_FALSE(AnotherRuns());
    EXPECT_TRUE(QFileInfo(places.configurationFolder).isDir());
}

TEST_F(SingleInstanceOfAUser, OfOtherUsersDoesNotMatter) {
    auto first = std::make_unique<SingleInstance>(places);
    EXPECT_FALSE(first->AnotherRuns());
    places.configurationFolder = folder.Path("other/");
    EXPECT_FALSE(AnotherRuns());
}

// The number of a process that was killed may be another one's by now, even of a process of the
// same name: here of this very one.
TEST_F(SingleInstanceOfAUser, ALockOfAProcessThatDoesNotHoldItBlocksNobody) {
    const QByteArray name = QFileInfo(QCoreApplication::applicationFilePath()).fileName().toUtf8();
    const QByteArray host = QSysInfo::machineHostName().toLocal8Bit();
    const QByteArray own = QByteArray::number(QCoreApplication::applicationPid());
    for (const QByteArray& process : {own, QByteArray("1"), QByteArray("999999999")}) {
        LeaveLock(process + "\n" + name + "\n" + host + "\n" + QSysInfo::machineUniqueId() + "\n" +
                  QSysInfo::bootUniqueId() + "\n");
        EXPECT_FALSE(AnotherRuns()) << process.toStdString();
    }
}

TEST_F(SingleInstanceOfAUser, ADamagedLockBlocksNobody) {
    for (const char* text : {"", "\n", "not a number\nx\ny\n", "-5\n\n\n", "12"}) {
        LeaveLock(text);
        EXPECT_FALSE(AnotherRuns()) << text;
    }
}

TEST_F(SingleInstanceOfAUser, AFolderThatCannotBeMadeBlocksNobody) {
    QFile file(folder.Path("file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    places.configurationFolder = folder.Path("file/davo/");
    places.scratchFolder = places.configurationFolder;
    EXPECT_FALSE(AnotherRuns());
}

TEST_F(SingleInstanceOfAUser, KeepsTheSecondOutWhereItsFolderCannotBeMade) {
    QFile file(folder.Path("file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    places.configurationFolder = folder.Path("file/davo/");
    places.scratchFolder = folder.Path("new/scratch/");
    auto first = std::make_unique<SingleInstance>(places);
    EXPECT_FALSE(first->AnotherRuns());
    EXPECT_TRUE(AnotherRuns());
    first.reset();
    EXPECT_FALSE(AnotherRuns());
}

}  // namespace
}  // namespace davo::test
