// SPDX-License-Identifier: GPL-3.0-or-later
// Whole downloads from the simulated instrument on its device, and what its faults and a full disk
// leave on disk.

#include <sys/mount.h>

#include <QTimer>

#include "instrument/transformer.h"
#include "records/record_file_writer.h"
#include "tests/records/captures.h"
#include "tests/retrieval/record_download_rig.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/instrument_link.h"
#include "tests/support/random_seed.h"
#include "tests/support/read_record.h"
#include "tests/support/result_number.h"

namespace davo::test {
namespace {

using instrument::MemoryRecord;

constexpr std::size_t kBeforeRecord = 14 + 5;  // "Record Found" and "RDY"

class DownloadLine : public ::testing::Test, public DownloadSurroundings, public InstrumentLink {
  protected:
    DownloadLine() : InstrumentLink(prompts) {}
    void Start(const std::vector<MemoryRecord>& memory, const std::string& fault = {},
               bool paced = false) {
        instrument::InstrumentOptions options = QuickWithMemory(memory, paced);
        if (!fault.empty()) options.faults = {instrument::ParseFault(fault).value()};
        PlugIn(options);
        ASSERT_TRUE(link.OpenComPort(1));
        Watch(download);
    }

    RecordDownload download{link, prompts, directory, settings.dataPath, scratch};
};

TEST_F(DownloadLine, TheWholeMemoryComesOver) {
    const auto memory = instrument::MakeMemory(20, RandomSeed(11));
    Start(memory);
    const auto reply = ReadMemoryDirectory(link, prompts);
    ASSERT_TRUE(reply.has_value());
    const MemoryDirectory memoryDirectory = BuildEntries(*reply);
    ASSERT_EQ(memoryDirectory.entries.size(), 20U);
    directory.dirEntriesNew = memoryDirectory.entries;
    directory.dirEntries = memoryDirectory.entries;
    directory.recordCount = 20;
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Complete);
    EXPECT_EQ(result.written.size(), 20U);
    EXPECT_TRUE(prompts.shown.empty());
    for (const MemoryRecord& record : memory) {
        const std::string name = "TST_" + std::to_string(1000 + record.number).substr(1);
        const TestRecordFile file =
            ReadTestRecordFile(settings.dataPath + QString::fromStdString(name + ".txt"));
        EXPECT_EQ(file.headers.at(0).testNumber, name);
        EXPECT_EQ(file.headers.at(0).date, record.date);
        EXPECT_EQ(file.headers.at(0).time, record.time);
        EXPECT_EQ(file.records.size(), record.tests.size());
    }
    // The folder's own listing has the same records in the same order.
    DirectoryTables listed;
    LoadDirectoryFile(settings.dataPath, listed);
    DirectoryTables rebuilt;
    EXPECT_EQ(RebuildDirectory(settings.dataPath, rebuilt).count, 20);
    ASSERT_EQ(listed.dirEntries.size(), 20U);
    for (std::size_t i = 0; i < 20; ++i)
        EXPECT_EQ(EntryName(listed.dirEntries[i]), EntryName(rebuilt.dirEntries.at(i)));
}

TEST_F(DownloadLine, AShotIsTheSameLiveAndDownloaded) {
    instrument::Random random(RandomSeed(12));
    MemoryRecord record = MemoryRecordOf(7, 1);
    record.tests.clear();
    std::string capture;
    for (const auto& transformer : instrument::TransformerPresets()) {
        for (const auto polarity :
             {instrument::Polarity::AsWired, instrument::Polarity::OutOfPhase}) {
            const auto shot = instrument::MeasureShot(transformer, false, polarity, random);
            record.tests.push_back(shot.image);
            capture += CaptureBlock(EncodeRecordImage(shot.image), shot.ratioText);
        }
    }
    Start({record});
    Select({record});
    ASSERT_EQ(download.Run().end, DownloadEnd::Complete);
    const TestRecordFile fetched = ReadTestRecordFile(settings.dataPath + u"TST_007.txt"_s);
    const auto shots = static_cast<std::int16_t>(record.tests.size());
    const TestRecordFile live =
        ParseTestRecordFile(ConvertCapture(capture, HeaderTable{}, {"LIVE", shots, {}}));

    ASSERT_EQ(fetched.records.size(), live.records.size());
    // The download writes three decimals where the test window writes four.
    const auto agree = [](const std::string& mine, const std::string& other, double within) {
        ASSERT_TRUE(ResultNumber(mine) && ResultNumber(other)) << mine << other;
        EXPECT_NEAR(*ResultNumber(mine), *ResultNumber(other), within);
    };
    for (std::size_t i = 0; i < live.records.size(); ++i) {
        const TestRecord& one = fetched.records[i];
        const TestRecord& two = live.records[i];
        EXPECT_EQ(one.recordNumber, two.recordNumber);
        EXPECT_EQ(one.dataPointCount, two.dataPointCount);
        ASSERT_EQ(one.points.size(), two.points.size());
        for (std::size_t k = 0; k < one.points.size(); ++k) {
            EXPECT_EQ(one.points[k].current, two.points[k].current);
            EXPECT_EQ(one.points[k].voltage, two.points[k].voltage);
        }
        agree(one.kneeVoltage, two.kneeVoltage, 1e-9);
        agree(one.kneeCurrent, two.kneeCurrent, 0.000501);
        agree(one.excitationCurrent, two.excitationCurrent, 1e-9);
        agree(one.excitationVoltage, two.excitationVoltage, 1e-9);
        agree(one.measuredRatio, two.measuredRatio, 0.06);
        EXPECT_EQ(one.polarity, two.polarity);
        EXPECT_EQ(one.phaseAngle, two.phaseAngle);
        EXPECT_EQ(one.kneePointType, two.kneePointType);
    }
}

TEST_F(DownloadLine, UnpluggedInMidRecordLeavesTheEarlierRecords) {
    const std::vector<MemoryRecord> memory = {MemoryRecordOf(1, 3), MemoryRecordOf(2, 40)};
    const std::size_t first = kBeforeRecord + UsualReplyBytes(3);
    Start(memory, "unplugged:" + std::to_string(first + kBeforeRecord + 5000));
    Select(memory);
    Put("TST_002.txt", "old");
    prompts.answers = {Answer::Yes};
    const DownloadResult result = download.Run();
    EXPECT_EQ(result.end, DownloadEnd::Lost);
    EXPECT_EQ(File("TST_001.txt"), Whole(0, memory[0], "TST_001"));
    EXPECT_EQ(File("TST_002.txt"), "old");
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_001.txt", "TST_002.txt"));
    EXPECT_EQ(Listing(), "REC==001\r\n" + directory.dirEntries[0] + "\r\n");
    EXPECT_EQ(Shown()[2], Link::LostMessage().toStdString());
    EXPECT_EQ(Shown()[3], "The DAVO cannot be reached.\r\nNot downloaded: TST_002");
}

TEST_F(DownloadLine, NoiseInTheDirectoryCostsOnlyWhatItHit) {
    Start(instrument::MakeMemory(135, 4), "noise:0.0005");
    const auto reply = ReadMemoryDirectory(link, prompts);
    ASSERT_TRUE(reply.has_value());
    const MemoryDirectory memoryDirectory = BuildEntries(*reply);
    EXPECT_GT(memoryDirectory.entries.size(), 100U);
    // Noise inside a value that leaves its width is no damage that could be seen.
    EXPECT_GE(memoryDirectory.entries.size() + static_cast<std::size_t>(memoryDirectory.damaged),
              134U);
    EXPECT_LE(memoryDirectory.entries.size() + static_cast<std::size_t>(memoryDirectory.damaged),
              137U);
}

TEST_F(DownloadLine, LeavingAPacedRecordIsQuickAndTheNextDownloadIsWhole) {
    const std::vector<MemoryRecord> memory = {MemoryRecordOf(1, 20)};
    Start(memory, {}, true);
    Select(memory);
    std::size_t received = 0;
    int waits = 0;  // begun after leaving
    bool left = false;
    link.OnWaitChanged = [&] { waits += left && link.CurrentWait() ? 1 : 0; };
    QTimer leaver;
    leaver.callOnTimeout([&] {
        if (left || progress.empty() || progress.back() < 500) return;
        left = true;
        received = progress.back();
        download.Leave();
    });
    leaver.start(20);
    EXPECT_EQ(download.Run().end, DownloadEnd::Left);
    EXPECT_TRUE(left);
    EXPECT_EQ(waits, 0) << "the rest of the reply is not waited for";
    EXPECT_LT(received, progressTotal / 2);
    EXPECT_EQ(progress.back(), received);
    link.OnWaitChanged = nullptr;
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL"));
    progress.clear();
    // The rest of the reply is still on its way and must not become a part of the next.
    EXPECT_EQ(download.Run().end, DownloadEnd::Complete);
    EXPECT_EQ(File("TST_001.txt"), Whole(0, memory[0], "TST_001"));
    EXPECT_GT(progress.size(), 100U);
}

TEST_F(DownloadLine, AFullDiskLeavesTheEarlierRecordsAndTheOldFile) {
    const std::vector<MemoryRecord> memory = {MemoryRecordOf(1, 1), MemoryRecordOf(2, 30),
                                              MemoryRecordOf(3, 1)};
    Start(memory);
    Select(memory);
    Put("TST_002.txt", "old");
    prompts.answers = {Answer::Yes};
    DownloadResult result;
    {
        // The reply still fits, the record file, some three times as long, does not.
        const FileSizeLimit limit(15000);
        result = download.Run();
    }
    ASSERT_LT(UsualReplyBytes(30), 15000U);
    EXPECT_EQ(result.end, DownloadEnd::Failed);
    EXPECT_THAT(result.missing, ElementsAre("TST_002", "TST_003"));
    EXPECT_EQ(File("TST_001.txt"), Whole(0, memory[0], "TST_001"));
    EXPECT_EQ(File("TST_002.txt"), "old");
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_001.txt", "TST_002.txt"));
    EXPECT_EQ(Listing(), "REC==001\r\n" + directory.dirEntries[0] + "\r\n");
    EXPECT_THAT(Shown().back(), HasSubstr("Disk full"));
    EXPECT_THAT(Shown().back(), HasSubstr("TST_002.txt\r\nNot downloaded: TST_002, TST_003"));
}

TEST_F(DownloadLine, AFullScratchDiskIsSaidAndWritesNoRecord) {
    const std::vector<MemoryRecord> memory = {MemoryRecordOf(1, 1), MemoryRecordOf(2, 60)};
    Start(memory);
    Select(memory);
    DownloadResult result;
    {
        const FileSizeLimit limit(10000);
        result = download.Run();
    }
    EXPECT_EQ(result.end, DownloadEnd::Failed);
    EXPECT_THAT(Shown().back(), HasSubstr("Disk full"));
    EXPECT_THAT(Shown().back(), HasSubstr("TempTEST"));
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_001.txt"));
}

TEST_F(DownloadLine, AFullDataDiskIsSaid) {
    const QByteArray disk = QFile::encodeName(settings.dataPath);
    if (mount("none", disk.constData(), "tmpfs", 0, "size=64k") != 0) {
        GTEST_SKIP() << "a small disk can be mounted by root only";
    }
    const std::vector<MemoryRecord> memory = {MemoryRecordOf(1, 2), MemoryRecordOf(2, 90)};
    Start(memory);
    Select(memory);
    EXPECT_EQ(download.Run().end, DownloadEnd::Failed);
    EXPECT_THAT(Names(), ElementsAre("DIRDNLD.DNL", "TST_001.txt"));
    EXPECT_EQ(File("TST_001.txt"), Whole(0, memory[0], "TST_001"));
    EXPECT_THAT(Shown().back(), HasSubstr("Disk full"));
    EXPECT_EQ(umount(disk.constData()), 0);
}

}  // namespace
}  // namespace davo::test
