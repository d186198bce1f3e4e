// SPDX-License-Identifier: GPL-3.0-or-later
// Every fault at every character of what the instrument sends in a download: no value changes
// without a word, but for those where nothing on the line could tell.

#include <QTimer>
#include <algorithm>
#include <array>
#include <iostream>
#include <random>

#include "common/text.h"
#include "retrieval/header_slots.h"
#include "tests/retrieval/record_download_rig.h"
#include "tests/support/random_rounds.h"
#include "tests/support/scripted_link.h"

namespace davo::test {
namespace {

using instrument::MemoryRecord;

enum class Kind { Erase, Double, Blank, Noise, Flip, LoseLine, DoubleLine };

// A field and its line end.
constexpr std::size_t kLine = 34;

struct Fault {
    Kind kind = Kind::Erase;
    std::size_t at = 0;
    char noise = 0;
    unsigned bit = 0;

    std::string Name() const {
        constexpr const char* kNames[] = {"erased",  "doubled",     "blanked",       "noise",
                                          "flipped", "a line lost", "a line doubled"};
        return std::string(kNames[static_cast<int>(kind)]) + " at " + std::to_string(at) + ", " +
               std::to_string(static_cast<unsigned char>(noise)) + ", " + std::to_string(bit);
    }
    std::string On(std::string text) const {
        switch (kind) {
            case Kind::Erase:
                return text.erase(at, 1);
            case Kind::Double:
                return text.insert(at, 1, text.at(at));
            case Kind::Blank:
                text.at(at) = ' ';
                return text;
            case Kind::Noise:
                return text.insert(at, 1, noise);
            case Kind::Flip:
                text.at(at) = static_cast<char>(text.at(at) ^ (1U << bit));
                return text;
            case Kind::LoseLine:
                return text.erase(at, kLine);
            case Kind::DoubleLine:
                return text.insert(at, text.substr(at, kLine));
        }
        return text;
    }
};

std::vector<Fault> FaultsIn(const std::string& text) {
    std::vector<Fault> faults;
    for (std::size_t at = 0; at < text.size(); ++at) {
        faults.push_back({Kind::Erase, at});
        faults.push_back({Kind::Double, at});
        faults.push_back({Kind::Blank, at});
        for (const char noise : {'\xff', '\0', '7', 'D', ' ', '\r', '\n', ','})
            faults.push_back({Kind::Noise, at, noise});
        for (unsigned bit = 0; bit < 8; ++bit)
            faults.push_back({Kind::Flip, at, 0, bit});
    }
    return faults;
}

// As many characters as a line has are lost or come twice, from any character on.
std::vector<Fault> LineFaultsIn(const std::string& text) {
    std::vector<Fault> faults;
    for (std::size_t at = 0; at + kLine <= text.size(); ++at) {
        faults.push_back({Kind::LoseLine, at});
        faults.push_back({Kind::DoubleLine, at});
    }
    return faults;
}

// A digit that became another digit: without a checksum on the line nobody can tell.
bool TurnsADigitIntoAnother(const Fault& fault, const std::string& text) {
    const auto digit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); };
    return fault.kind == Kind::Flip && digit(text.at(fault.at)) &&
           digit(fault.On(text).at(fault.at));
}

struct Counts {
    int cases = 0;
    int told = 0;
    int harmless = 0;      // not told, and no value changed
    int unending = 0;      // the wait goes on, which the window says
    int cannotBeSeen = 0;  // not told, and a value changed where nothing could tell
    int silent = 0;        // not told, and a value changed

    int All() const { return told + harmless + unending + cannotBeSeen + silent; }
    void Print(const char* what, const char* reason) const {
        std::cout << what << ": " << cases << " cases, " << told << " told, " << unending
                  << " waits that do not end by themselves, " << harmless
                  << " without a changed value, " << cannotBeSeen << " cannot be told (" << reason
                  << "), " << silent << " silent" << std::endl;
    }
};

constexpr const char* kNoChecksum = "a digit became another digit, the line has no checksum";
constexpr const char* kFreeText = "free text or a date, which nothing on the line repeats";

bool Ends(const std::string& reply) {
    return Contains(reply, "\r\nDONE\r\n");
}

std::string EntryOf(const MemoryRecord& record) {
    return BuildEntries(instrument::DirectoryReply({record})).entries.at(0);
}

// The record file lines of each test.
std::vector<std::string> TestsIn(const std::string& lines) {
    constexpr std::string_view kStart = "REC NUMBER:";
    std::vector<std::string> tests;
    std::size_t at = 0;
    while (at < lines.size()) {
        const std::size_t next = std::min(lines.find(kStart, at + 1), lines.size());
        tests.push_back(lines.substr(at, next - at));
        at = next;
    }
    return tests;
}

// The tests (from 1) that came with another value than whole has.
std::vector<int> Changed(const ConvertedRecord& record, const std::string& whole) {
    const std::vector<std::string> tests = TestsIn(whole);
    const std::vector<std::string> came = TestsIn(record.lines);
    std::vector<int> changed;
    for (std::size_t i = 0; i < came.size(); ++i) {
        if (i >= tests.size() || came[i] != tests[i]) changed.push_back(static_cast<int>(i) + 1);
    }
    return changed;
}

// A record, as the list and the reply to "R" have it.
struct Sent {
    explicit Sent(const MemoryRecord& record) : entry(EntryOf(record)), good(RecordReply(record)) {}
    std::string entry;
    std::string good;
    std::string whole = ConvertRecordReply(good).lines;
};

// What is told of a fault in the reply, and whether it had to be.
void Judge(const Sent& sent, const Fault& fault, Counts& counts) {
    const auto& [entry, good, whole] = sent;
    const std::string reply = fault.On(good);
    ++counts.cases;
    if (!Ends(reply)) {
        ++counts.unending;
        return;
    }
    const ConvertedRecord came = ConvertRecordReply(reply);
    const std::vector<int> changed = Changed(came, whole);
    const bool unseen = TurnsADigitIntoAnother(fault, good);
    if (!NotWholeText(entry, came).isEmpty()) {
        ++counts.told;
        ASSERT_TRUE(unseen || came.fieldsMissing ||
                    std::includes(came.doubtful.begin(), came.doubtful.end(), changed.begin(),
                                  changed.end()))
            << "another test is named";
    } else if (came.lines == whole) {
        ++counts.harmless;
    } else if (unseen) {
        ++counts.cannotBeSeen;
    } else {
        ++counts.silent;
    }
}

TEST(DownloadFaults, EveryFaultAtEveryCharacterOfARecord) {
    Counts counts;
    Counts lost;  // one character erased, doubled or blanked
    int digits = 0;
    Share share;
    for (const int tests : {1, 2, 3}) {
        const Sent sent(MemoryRecordOf(12, tests));
        for (const Fault& fault : FaultsIn(sent.good)) {
            const bool flipOrNoise = fault.kind == Kind::Flip || fault.kind == Kind::Noise;
            if (flipOrNoise && !share.Takes()) continue;
            Judge(sent, fault, flipOrNoise ? counts : lost);
            if (HasFatalFailure() || counts.silent + lost.silent > 0) {
                FAIL() << tests << " tests, " << fault.Name();
            }
            digits += TurnsADigitIntoAnother(fault, sent.good) ? 1 : 0;
        }
    }
    EXPECT_EQ(lost.cannotBeSeen, 0);
    EXPECT_LE(counts.cannotBeSeen, digits);
    EXPECT_EQ(counts.All(), counts.cases);
    EXPECT_EQ(lost.All(), lost.cases);
    lost.Print("one character of a record erased, doubled or blanked", "none");
    counts.Print("noise in a record, or one bit turned over", kNoChecksum);
    std::cout << digits << " of these turned a digit into another" << std::endl;
}

TEST(DownloadFaults, AsMuchAsALineLostOrDoubledAtEveryCharacterOfARecord) {
    Counts counts;
    Share share;
    for (const int tests : {1, 2, 3, 4}) {
        const Sent sent(MemoryRecordOf(12, tests));
        for (const Fault& fault : LineFaultsIn(sent.good)) {
            if (fault.at % kLine != 0 && !share.Takes()) continue;
            Judge(sent, fault, counts);
            if (HasFatalFailure() || counts.silent > 0)
                FAIL() << tests << " tests, " << fault.Name();
        }
    }
    EXPECT_EQ(counts.cannotBeSeen, 0);
    EXPECT_EQ(counts.All(), counts.cases);
    counts.Print("as much as a line of a record lost or doubled", "none");
}

TEST(DownloadFaults, OneFaultInALongRecord) {
    Counts counts;
    const Sent sent(MemoryRecordOf(12, 99));
    const std::vector<Fault> faults = FaultsIn(sent.good);
    std::mt19937_64 random(RandomSeed(std::random_device{}()));
    for (int round = RandomRounds(3000); round > 0; --round) {
        const Fault& fault = faults.at(random() % faults.size());
        Judge(sent, fault, counts);
        if (HasFatalFailure() || counts.silent > 0) FAIL() << fault.Name();
    }
    counts.Print("a record of 99 tests", kNoChecksum);
}

// The same through a whole download, with its files and what is told at the end.
class DownloadFaultsOnDisk : public ::testing::Test,
                             public DownloadSurroundings,
                             public ScriptedLink {
  protected:
    DownloadFaultsOnDisk() : ScriptedLink(prompts) {
        link.OpenComPort(1);
        port.Always("B", "RDY\r\n");
        for (int number = 1; number <= kRecords; ++number)
            memory.push_back(MemoryRecordOf(number, 2));
        Select(memory);
        selected = directory.dirEntries;
    }
    std::string Name(std::size_t i) const {
        return "TST_" + std::to_string(1000 + memory.at(i).number).substr(1);
    }
    void Replies(std::size_t i, const std::string& reply) {
        port.OnOutput("L" + Name(i).substr(4), "Record Found\r\n").OnOutput("R", reply);
    }
    void Reset(std::size_t records) {
        prompts.shown.clear();
        prompts.answers.assign(2 * records, Answer::Yes);  // replace, whole or not
        for (std::size_t i = 1; i < prompts.answers.size(); i += 2)
            prompts.answers[i] = Answer::No;
        directory.dirEntries = selected;
        directory.dirEntries.resize(records);
        directory.recordCount = static_cast<std::int16_t>(records);
        port.steps.clear();
        port.waiting.clear();
    }

    static constexpr int kRecords = 12;  // as many as are named with what is wrong of them
    std::vector<MemoryRecord> memory;
    std::vector<std::string> selected;
    RecordDownload download{link, prompts, directory, settings.dataPath, scratch};
};

TEST_F(DownloadFaultsOnDisk, NoFileChangesSilently) {
    Counts counts;
    Share share(100);
    std::vector<Fault> faults;
    const std::string good = RecordReply(memory.front());
    for (const Fault& fault : FaultsIn(good)) {
        if (!share.Takes() || !Ends(fault.On(good))) continue;
        faults.push_back(fault);
    }
    for (std::size_t first = 0; first < faults.size(); first += kRecords) {
        const std::size_t records = std::min<std::size_t>(kRecords, faults.size() - first);
        Reset(records);
        prompts.answers.clear();
        for (std::size_t i = 0; i < records; ++i) {
            // The earlier file is whole, and only a whole one takes its place.
            Put((Name(i) + ".txt").c_str(), "earlier");
            const std::string faulty = faults[first + i].On(RecordReply(memory[i]));
            Replies(i, faulty);
            prompts.answers.push_back(Answer::Yes);
            const ConvertedRecord came = ConvertRecordReply(faulty);
            if (!NotWholeText(selected[i], came).isEmpty()) prompts.answers.push_back(Answer::No);
        }
        const DownloadResult result = download.Run();
        ASSERT_EQ(result.end, DownloadEnd::Complete);
        const std::string told = Shown().empty() ? std::string() : Shown().back();
        for (std::size_t i = 0; i < records; ++i) {
            const Fault& fault = faults[first + i];
            ++counts.cases;
            const std::string file = File((Name(i) + ".txt").c_str());
            const bool whole = std::count(result.written.begin(), result.written.end(),
                                          QString::fromStdString(Name(i) + ".txt")) == 1;
            ASSERT_EQ(whole, !Contains(told, Name(i) + ": ")) << fault.Name() << told;
            if (!whole) {
                ++counts.told;
                ASSERT_EQ(file, "earlier") << fault.Name();
            } else if (file == Whole(i, memory[i], Name(i).c_str())) {
                ++counts.harmless;
            } else {
                ++(TurnsADigitIntoAnother(fault, good) ? counts.cannotBeSeen : counts.silent);
                ASSERT_EQ(counts.silent, 0) << fault.Name();
            }
        }
    }
    counts.Print("whole downloads over earlier files", kNoChecksum);
}

// The two short answers before a record, and a record that stops: the operator ends the wait.
TEST_F(DownloadFaultsOnDisk, AWaitThatDoesNotEndIsLeftWithTheEarlierFile) {
    Counts counts;
    Share share(20);
    const std::string located = "Record Found\r\n";
    const std::string ready = "RDY\r\n";
    const std::string record = RecordReply(memory.front());
    std::vector<std::array<std::string, 3>> replies;
    for (const Fault& fault : FaultsIn(located))
        replies.push_back({fault.On(located), ready, record});
    for (const Fault& fault : FaultsIn(ready))
        replies.push_back({located, fault.On(ready), record});
    for (std::size_t at = 0; at < record.size(); at += 7)
        replies.push_back({located, ready, record.substr(0, at)});
    for (const auto& [first, second, third] : replies) {
        if (!share.Takes()) continue;
        Reset(1);
        Put("TST_001.txt", "earlier");
        prompts.answers = {Answer::Yes};
        port.always = {};
        port.OnOutput("L001", first).OnOutput("B", second).OnOutput("R", third);
        QTimer operatorsHand;
        operatorsHand.callOnTimeout([this] {
            if (port.waiting.empty() && link.CurrentWait()) download.Leave();
        });
        operatorsHand.start(60);
        const DownloadResult result = download.Run();
        ++counts.cases;
        const std::string file = File("TST_001.txt");
        if (result.end == DownloadEnd::Complete) {
            ++counts.harmless;
            ASSERT_EQ(file, Whole(0, memory.front(), "TST_001"));
        } else {
            ++counts.unending;
            ASSERT_EQ(result.end, DownloadEnd::Left);
            ASSERT_EQ(file, "earlier");
            ASSERT_EQ(Shown().back(), "The download was ended.\r\nNot downloaded: TST_001");
        }
    }
    counts.Print("the answers before a record, and a record that stops", "none");
}

// What the list says, and the headers, are texts that nothing repeats. judge counts the faults that
// leave the end of good in it.
template <class Judge>
void CountFaults(const char* what, const std::string& good, const char* end, const Judge& judge) {
    Counts counts;
    for (const Fault& fault : FaultsIn(good)) {
        const std::string reply = fault.On(good);
        ++counts.cases;
        if (Contains(reply, end)) {
            judge(fault, reply, counts);
            if (testing::Test::HasFatalFailure()) FAIL() << fault.Name();
        } else {
            ++counts.unending;
        }
    }
    EXPECT_EQ(counts.All(), counts.cases);
    counts.Print(what, kFreeText);
}

TEST(DownloadFaults, EveryFaultAtEveryCharacterOfTheDirectory) {
    const std::vector<MemoryRecord> memory{MemoryRecordOf(7, 1), MemoryRecordOf(8, 2)};
    const std::string good = instrument::DirectoryReply(memory);
    const std::vector<std::string> whole = BuildEntries(good).entries;
    const auto judge = [&](const Fault&, const std::string& reply, Counts& counts) {
        const MemoryDirectory directory = BuildEntries(reply);
        if (!NotListedText(directory).isEmpty()) {
            ++counts.told;
        } else if (directory.entries == whole) {
            ++counts.harmless;
        } else {
            ++counts.cannotBeSeen;
            ASSERT_EQ(directory.entries.size(), whole.size());
        }
    };
    CountFaults("the list of two records", good, "DONE", judge);
}

TEST(DownloadFaults, EveryFaultAtEveryCharacterOfTheHeaders) {
    const std::string good = instrument::MakeHeaderMemory() + "\r\n";
    const auto judge = [&](const Fault& fault, const std::string& reply, Counts& counts) {
        const auto slots = CutSlots(reply);
        if (!slots) {
            ++counts.told;  // "The headers of the DAVO were not read."
        } else if (JoinSlots(*slots) + "\r\n" == good) {
            ++counts.harmless;
        } else {
            ASSERT_TRUE(fault.kind == Kind::Blank || fault.kind == Kind::Flip);
            ++counts.cannotBeSeen;
        }
    };
    CountFaults("the ten headers", good, "\r\n", judge);
}

}  // namespace
}  // namespace davo::test
