// SPDX-License-Identifier: GPL-3.0-or-later
// The memory directory of 135 records and the download of 20 records of 1 to 100 tests over the
// line at 19200 baud, against the bare time that their bytes take on it; the conversions against
// the same time. An option makes it a short run.

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "instrument/instrument.h"
#include "link/serial_port.h"
#include "retrieval/memory_directory.h"
#include "retrieval/record_download.h"
#include "retrieval/record_reply.h"

namespace davo {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int kDirectoryRecords = 135;
constexpr int kMostTests = 100;

// Nothing here has anything to say.
class UnaskedPrompts : public Prompts {
  public:
    void Message(const QString& text, const QString&) override { Fail(text); }
    Answer YesNo(const QString& text, Answer, const QString&) override { Fail(text); }
    Answer YesNoCancel(const QString& text, Answer, const QString&) override { Fail(text); }
    std::optional<QString> Input(const QString&, const QString& text, const QString&) override {
        Fail(text);
    }
    QString SaveFile(const QString& folder, const QString&, const QString&) override {
        Fail(folder);
    }
    QString OpenFile(const QString& folder, const QString&) override { Fail(folder); }
    QString ChooseFolder(const QString& prompt, const QString&) override { Fail(prompt); }

  private:
    [[noreturn]] static void Fail(const QString& text) {
        throw std::runtime_error(text.toStdString());
    }
};

class OneDevice : public PortDevices {
  public:
    explicit OneDevice(QString path) : path_(std::move(path)) {}
    QString DeviceOf(std::int16_t) const override { return path_; }
    std::vector<PresentPort> Present() const override { return {}; }
    bool IsPresent(const QString&) const override { return true; }
    void Assign(std::int16_t, const QString&) override {}
    bool NeedsAssignment() const override { return true; }

  private:
    QString path_;
};

// An instrument that does not pause of its own, on a line at its true speed.
class PacedInstrument {
  public:
    PacedInstrument(const QString& folder, const std::vector<instrument::MemoryRecord>& memory)
        : devices_(folder + QStringLiteral("/davo")), instrument_(Options(folder, memory)) {
        if (!link.OpenComPort(1)) throw std::runtime_error("the device does not open");
    }
    std::size_t Bytes() { return instrument_->AllToPc().size() + instrument_->AllFromPc().size(); }

    // Prints how long action took against the line's own time for the bytes that it moved.
    void Compare(const char* what, const std::function<bool()>& action) {
        const std::size_t before = Bytes();
        const auto start = Clock::now();
        const std::clock_t used = std::clock();
        if (!action()) throw std::runtime_error(std::string(what) + " failed");
        const double lasted = Seconds(Clock::now() - start).count();
        const double processor = static_cast<double>(std::clock() - used) / CLOCKS_PER_SEC;
        const auto bytes = static_cast<double>(Bytes() - before);
        const double line = bytes / instrument::kBytesPerSecond;
        std::printf("%-34s %7.0f bytes  line %8.3f s  took %8.3f s  ratio %.4f  processor %.3f s\n",
                    what, bytes, line, lasted, lasted / line, processor);
        std::fflush(stdout);
    }

  private:
    static instrument::InstrumentOptions Options(
        const QString& folder, const std::vector<instrument::MemoryRecord>& memory) {
        instrument::InstrumentOptions options;
        options.linkPath = (folder + QStringLiteral("/davo")).toStdString();
        options.conversation.memory = memory;
        options.conversation.pauseScale = 0;
        return options;
    }

    OneDevice devices_;
    instrument::InstrumentThread instrument_;

  public:
    UnaskedPrompts prompts;
    LinkState state;
    BusyPointer pointer;
    std::unique_ptr<SerialPort> port = MakeSerialPort(devices_);
    Link link{*port, state, prompts, pointer};
};

// So many records; their tests go from 1 to 100 in even steps.
std::vector<instrument::MemoryRecord> Memory(int records) {
    auto memory = instrument::MakeMemory(std::max(records, 20), 1);
    const std::vector<RecordImage> images = memory.at(19).tests;  // a hundred
    memory.resize(static_cast<std::size_t>(records));
    for (int i = 0; i < records; ++i) {
        const int tests = records == 1 ? 1 : 1 + i * (kMostTests - 1) / (records - 1);
        memory[static_cast<std::size_t>(i)].tests.assign(images.begin(), images.begin() + tests);
    }
    return memory;
}

void Download(PacedInstrument& line, const QString& folder,
              const std::vector<instrument::MemoryRecord>& memory) {
    DirectoryTables tables;
    tables.dirEntries = BuildEntries(instrument::DirectoryReply(memory)).entries;
    tables.recordCount = static_cast<std::int16_t>(tables.dirEntries.size());
    const QString dataPath = folder + QStringLiteral("/data/");
    QDir().mkpath(dataPath);
    RecordDownload download(line.link, line.prompts, tables, dataPath,
                            folder + QStringLiteral("/"));
    line.Compare("download of records",
                 [&] { return download.Run().written.size() == memory.size(); });
}

void CompareConversion(const char* what, std::size_t bytes, const std::function<void()>& convert) {
    constexpr int kTimes = 200;
    const auto start = Clock::now();
    for (int i = 0; i < kTimes; ++i)
        convert();
    const double taken = Seconds(Clock::now() - start).count() / kTimes;
    const double line = static_cast<double>(bytes) / instrument::kBytesPerSecond;
    std::printf("%-34s %7zu bytes  %8.3f ms, %.6f of their time on the line\n", what, bytes,
                taken * 1e3, taken / line);
}

void Run(int records) {
    const QTemporaryDir folder;
    const auto listed = instrument::MakeMemory(kDirectoryRecords, 1);
    const std::string directory = instrument::DirectoryReply(listed);
    CompareConversion("entries of 135 records", directory.size(), [&] { BuildEntries(directory); });
    const std::string reply = instrument::RecordReply(Memory(2).at(1));
    CompareConversion("lines of 100 tests", reply.size(), [&] { ConvertRecordReply(reply); });
    {
        PacedInstrument line(folder.path(), listed);
        line.Compare("directory of 135 records", [&] {
            const auto read = ReadMemoryDirectory(line.link, line.prompts);
            return read && BuildEntries(*read).entries.size() == kDirectoryRecords;
        });
    }
    const auto memory = Memory(records);
    PacedInstrument line(folder.path(), memory);
    Download(line, folder.path(), memory);
}

}  // namespace
}  // namespace davo

// A short run downloads the shortest of the twenty records only: the longest takes a minute of
// the line.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    constexpr int kRecords = 20;
    constexpr int kRecordsOfShortRun = 1;
    davo::Run(argc > 1 ? kRecordsOfShortRun : kRecords);
    return 0;
}
