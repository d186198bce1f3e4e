// What a full disk does to the capture file; by means of Linux.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "common/run_time_error.h"
#include "records/capture_file.h"
#include "tests/records/captures.h"
#include "tests/support/temporary_folder.h"

namespace davo {
namespace {

using test::FileBytes;
using test::TemporaryFolder;

template <class Act>
ErrorNumber NumberThrownBy(Act act) {
    try {
        act();
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    ADD_FAILURE() << "nothing thrown";
    return {};
}

// While it lives no file of this process grows beyond bytes.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) {
        signal_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit before_{};
    void (*signal_)(int) = nullptr;
};

TEST(CaptureFileDisk, FullDiskIsError61) {
    CaptureFile capture;
    capture.Create(QStringLiteral("/dev/full"));
    EXPECT_EQ(NumberThrownBy([&] { capture.Append("x"); }), ErrorNumber::DiskFull);
}

TEST(CaptureFileDisk, PartOfAFailedBlockIsCutOff) {
    const TemporaryFolder folder;
    const QString path = folder.Path(kCaptureFileName);
    const std::string block(1000, 'A');
    CaptureFile capture;
    capture.Create(path);
    capture.Append(block);
    {
        const FileSizeLimit limit(1500);
        EXPECT_EQ(NumberThrownBy([&] { capture.Append(block); }), ErrorNumber::DeviceInputOutput);
        EXPECT_EQ(FileBytes(path), block);
    }
    capture.Append("B");
    EXPECT_EQ(FileBytes(path), block + "B");
}

}  // namespace
}  // namespace davo
