#include <gtest/gtest.h>

#include <QFile>

#include "records/flush_to_disk.h"
#include "tests/support/temporary_folder.h"

namespace davo {
namespace {

TEST(FlushToDisk, FlushesAnOpenFileOnly) {
    const test::TemporaryFolder folder;
    QFile file(folder.Path("T1.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    file.write("shot");
    const int descriptor = file.handle();
    EXPECT_TRUE(FlushToDisk(descriptor));
    file.write("more");
    EXPECT_TRUE(FlushToDisk(file.handle()));
    file.close();
    EXPECT_FALSE(FlushToDisk(-1));
}

}  // namespace
}  // namespace davo
