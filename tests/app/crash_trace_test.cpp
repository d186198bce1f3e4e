// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/crash_trace.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>

#include "tests/support/testing.h"

namespace davo::test {
namespace {

class CrashTrace : public testing::Test {
  protected:
    CrashTrace() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    QString Path(const char* name) const { return Folder() + QLatin1String(name); }
    QString Folder() const { return root.path() + u'/'; }
    static void Write(const QString& path) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write("x"), 1);
        ASSERT_TRUE(file.flush());
        ASSERT_TRUE(file.setFileTime(QDateTime({2026, 3, 4}, {5, 6, 7}),
                                     QFileDevice::FileModificationTime));
    }

    QTemporaryDir root;
};

TEST_F(CrashTrace, WithoutACrashThereIsNone) {
    LeaveCrashTraces(Folder());
    EXPECT_EQ(TakeCrashTrace(Folder()), QString());
    EXPECT_EQ(TakeCrashTrace(Path("missing/")), QString());
}

TEST_F(CrashTrace, OneIsToldOfOnceAndKeptUnderItsTime) {
    for (const char* ending : {".txt", ".dmp"}) {
        Write(Path("davo-crash") + QLatin1String(ending));
        const QString kept = Path("davo-crash-20260304-050607") + QLatin1String(ending);
        EXPECT_EQ(TakeCrashTrace(Folder()), kept);
        EXPECT_TRUE(QFile::exists(kept));
        EXPECT_EQ(TakeCrashTrace(Folder()), QString());
    }
}

TEST_F(CrashTrace, OneThatCannotBeRenamedIsToldOfAllTheSame) {
    Write(Path("davo-crash.txt"));
    Write(Path("davo-crash-20260304-050607.txt"));
    EXPECT_EQ(TakeCrashTrace(Folder()), Path("davo-crash.txt"));
    EXPECT_TRUE(QFile::exists(Path("davo-crash.txt")));
}

}  // namespace
}  // namespace davo::test
