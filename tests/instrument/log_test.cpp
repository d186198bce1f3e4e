// SPDX-License-Identifier: GPL-3.0-or-later
// Logs of conversations: read back, and held against the protocol.

#include <functional>

#include "common/files.h"
#include "instrument/byte_log.h"
#include "instrument/conversation.h"
#include "instrument/log_check.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo::test {
namespace {

using namespace instrument;
using std::chrono::milliseconds;

// A conversation that is logged, at times of its own.
class Talk {
  public:
    explicit Talk(std::uint64_t seed = 1, std::vector<Scenario> scenarios = {Scenario::Full})
        : conversation_([&] {
              ConversationOptions options;
              options.seed = seed;
              options.scenarios = std::move(scenarios);
              options.memory = MakeMemory(12, seed);
              return options;
          }()) {}

    // Sends, and takes all that comes without another word.
    void Send(const std::string& bytes) {
        now_ += milliseconds(100);
        Put(false, bytes);
        conversation_.Advance(now_);
        conversation_.Receive(bytes);
        while (conversation_.NextDue() && !Enough())
            Step();
    }
    void Shot(bool ratioOnly) {
        Send(ratioOnly ? "t" : "T");
        while (conversation_.WaitsForConfirmation())
            Send("\r");
    }
    void Upload() {
        Send("Fh");
        for (int slot = 0; slot < kHeaderSlots; ++slot) {
            for (std::size_t i = 0; i < kHeaderSlotSize; ++i)
                Send(slot % 2 == 0 ? "A" : std::string(1, static_cast<char>(kErased)));
        }
    }

    std::vector<LoggedBytes> log;

  private:
    bool Enough() const {
        return conversation_.WaitsForConfirmation() && conversation_.ReadingsOfStep() > 12;
    }
    void Step() {
        now_ = std::max(now_, *conversation_.NextDue());
        conversation_.Advance(now_);
        Put(true, conversation_.TakeOutput());
    }
    void Put(bool toPc, const std::string& bytes) {
        if (!bytes.empty()) log.push_back({now_, toPc, bytes, log.size() + 1});
    }

    Conversation conversation_;
    Micros now_{0};
};

std::vector<LoggedBytes> WholeTalk(std::uint64_t seed) {
    Talk talk(seed, {Scenario::Full, Scenario::OverVoltage, Scenario::OutOfPhase,
                     Scenario::Undetermined});
    for (const char* command : {"B", "W", "d", "L001", "B", "R", "L002", "B", "R", "L999", "Fr"})
        talk.Send(command);
    talk.Upload();
    for (int shot = 0; shot < 4; ++shot)
        talk.Shot(false);
    talk.Shot(true);
    talk.Send("X");
    return talk.log;
}

std::vector<std::string> DeparturesOf(const std::vector<LoggedBytes>& log) {
    std::vector<std::string> texts;
    for (const LogDeparture& departure : CheckLog(log).departures)
        texts.push_back(departure.text);
    return texts;
}

// The one departure of an exchange in which the instrument answers so.
std::string Answered(const std::string& command, const std::string& reply,
                     Micros after = milliseconds(10)) {
    std::vector<LoggedBytes> log = {{Micros{0}, false, command, 1}};
    if (!reply.empty()) log.push_back({after, true, reply, 2});
    const std::vector<std::string> texts = DeparturesOf(log);
    return texts.empty() ? "" : texts.front();
}

TEST(ConversationLog, IsReadAsItWasWritten) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("log").toStdString();
    {
        ByteLog log(path);
        log.FromPc("B", Micros{12345678});
        log.ToPc("RDY\r\n", Micros{12350000});
        std::string all;
        for (int value = 0; value < 256; ++value)
            all += static_cast<char>(value);
        log.ToPc(all, Micros{12350001});
        EXPECT_TRUE(log.IsWhole());
    }
    const std::vector<LoggedBytes> log = ReadConversationLog(path);
    ASSERT_EQ(log.size(), 18U);
    EXPECT_EQ(log[0].at, Micros{12345678});
    EXPECT_FALSE(log[0].toPc);
    EXPECT_EQ(log[0].bytes, "B");
    EXPECT_EQ(log[1].bytes, "RDY\r\n");
    EXPECT_TRUE(log[1].toPc);
    EXPECT_EQ(log[17].bytes, "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9\xFA\xFB\xFC\xFD\xFE\xFF");
    EXPECT_EQ(log[17].line, 18U);
}

TEST(ConversationLog, SaysWhichLineIsNone) {
    const TemporaryFolder folder;
    const auto said = [&](const std::string& text) {
        ReplaceFile(folder.Path("log"), text);
        return MessageThrownBy([&] { ReadConversationLog(folder.Path("log").toStdString()); });
    };
    const std::string path = folder.Path("log").toStdString();
    const std::string good = "0.000100 < 42  B\n";
    ReplaceFile(folder.Path("log"), good + "\r\n" + good);
    EXPECT_EQ(ReadConversationLog(path).size(), 2U);
    for (const std::string bad : {"x", "0.0001 < 42  B", "0.000100 = 42  B", "0.000100 < 4  B",
                                  "0.000100 < 42", "0.000100 < 4g  B"})
        EXPECT_THAT(said(good + bad + "\n"), HasSubstr("line 2 of " + path)) << bad;
    EXPECT_THAT(said(""), HasSubstr("Input past end of file"));
    EXPECT_THAT(MessageThrownBy([&] { ReadConversationLog(path + "x"); }),
                HasSubstr("File not found"));
}

TEST(ConversationLog, ALastLineThatIsCutOffIsLeftOut) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("log").toStdString();
    const std::string good = "0.000100 < 42  B\n";
    const std::string last = "0.000200 > 52 44 59  RDY";
    std::size_t cut = 9;
    for (std::size_t length = 1; length < last.size(); ++length) {
        ReplaceFile(folder.Path("log"), good + last.substr(0, length));
        // The bytes are complete where some of what follows them for readers is.
        const bool isWhole = length > last.size() - 3;
        EXPECT_EQ(ReadConversationLog(path, &cut).size(), isWhole ? 2U : 1U) << length;
        EXPECT_EQ(cut, isWhole ? 0U : 2U) << length;
        EXPECT_EQ(ReadConversationLog(path).size(), isWhole ? 2U : 1U) << length;
    }
    ReplaceFile(folder.Path("log"), good + std::string(4096, '\0'));
    EXPECT_EQ(ReadConversationLog(path, &cut).size(), 1U);
    EXPECT_EQ(cut, 2U);
    ReplaceFile(folder.Path("log"), last.substr(0, 12));
    EXPECT_THAT(MessageThrownBy([&] { ReadConversationLog(path, &cut); }),
                HasSubstr("Input past end of file"));
}

// What an instrument at another speed sends need not have a line end.
TEST(LogCheck, TextWithoutAnEndIsLookedAt) {
    const std::string text(1000000, '1');
    std::string lines;
    for (int k = 0; k < 100000; ++k)
        lines += "\r\n";
    EXPECT_THAT(Answered("B", lines + "RDY\r\n"), StartsWith("B wants RDY and a line end: "));
    EXPECT_THAT(Answered("W", "DAVO" + text + "\r\n"), StartsWith("W wants a model that begins "));
    EXPECT_THAT(Answered("L001", lines + "Record Found\r\n"),
                StartsWith("L001 wants Record Found "));
    EXPECT_THAT(Answered("R", text + "\r\nDONE\r\n"),
                StartsWith("a record of 17 tests has 1 fields"));
    EXPECT_THAT(Answered("R", "11,1G," + text + "\r\nDONE\r\n"),
                StartsWith("a field of a record that is not all hexadecimal: \"1G\""));
    EXPECT_THAT(Answered("d", "#001\r\n" + text + "\r\nDONE\r\n"),
                StartsWith("#001 has no date and time in its second line"));
    for (const char* begin :
         {"RATIO=", "I=0.", "", "MESSAGE=TURN VOLTAGE CONTROL UP UNTIL CT SATURATES ("})
        EXPECT_THAT(Answered("T", begin + text + "\r\nDATA\r\n"),
                    StartsWith("a line that the program does not know: \""));
}

TEST(LogCheck, NamesATimeThatGoesBack) {
    const std::vector<LoggedBytes> log = {{milliseconds(50), false, "B", 1},
                                          {milliseconds(49), true, "RDY\r\n", 2},
                                          {milliseconds(49), false, "X", 3}};
    EXPECT_THAT(DeparturesOf(log), ElementsAre("its time is before that of the line above it"));
}

TEST(LogCheck, FindsNothingInWhatTheSimulatedInstrumentSays) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const LogReport report = CheckLog(WholeTalk(seed));
        EXPECT_TRUE(report.departures.empty()) << report.Text();
    }
}

TEST(LogCheck, CountsAndTimesEveryCommand) {
    const std::string text = CheckLog(WholeTalk(3)).Text();
    for (const char* part :
         {"B: 3 times, answered 3, first byte after 0.0", "L: 3 times, answered 3, ",
          "X: 1 times, answered 0\n", "T: 4 times, answered 4, ", "t: 1 times, answered 1, ",
          "directory of 12 records, "})
        EXPECT_THAT(text, HasSubstr(part));
}

TEST(LogCheck, NamesShortRepliesThatAreOthers) {
    EXPECT_EQ(Answered("B", "RDY\n"), R"(B wants RDY and a line end: "RDY\x0A")");
    EXPECT_EQ(Answered("B", "ready\r\n"), R"(B wants RDY and a line end: "ready\x0D\x0A")");
    EXPECT_EQ(Answered("B", ""), "B wants RDY and a line end: no answer");
    EXPECT_EQ(Answered("B", "RDY\r\n", milliseconds(3100)),
              "B answered after 3.100 s; the program gives up after about 3 s");
    EXPECT_EQ(Answered("W", "\r\nTESTER 5\r\n"),
              R"(W wants a model that begins with DAVO: "\x0D\x0ATESTER 5\x0D\x0A")");
    EXPECT_EQ(Answered("L012", "RECORD FOUND\r\n"),
              R"(L012 wants Record Found or Record Not Found: "RECORD FOUND\x0D\x0A")");
    EXPECT_EQ(Answered("X", "BYE\r\n"), R"(X is answered: "BYE\x0D\x0A")");
    EXPECT_EQ(Answered("Q", ""), R"(the PC sent what is no command: "Q")");
    EXPECT_EQ(Answered("B", "RDY\r\n\x07"), R"(a byte that is no text: "\x07")");
    EXPECT_EQ(DeparturesOf({{Micros{0}, true, "HELLO", 1}}),
              std::vector<std::string>{R"(sent before any command: "HELLO")"});
}

// A whole conversation in which one text of the instrument's is another, or is gone.
std::vector<std::string> WithChange(const std::function<void(std::string&)>& change,
                                    const std::string& command, const std::string& reply) {
    std::string changed = reply;
    change(changed);
    EXPECT_NE(changed, reply);
    return DeparturesOf({{Micros{0}, false, command, 1}, {milliseconds(10), true, changed, 2}});
}

std::function<void(std::string&)> Replaced(const std::string& from, const std::string& to) {
    return [=](std::string& text) { text.replace(text.find(from), from.size(), to); };
}

TEST(LogCheck, NamesWhatIsWrongInADirectory) {
    const std::string reply = DirectoryReply(MakeMemory(3, 5));
    const auto with = [&](const std::string& from, const std::string& to) {
        return WithChange(Replaced(from, to), "d", reply);
    };
    EXPECT_THAT(with("\r\nDONE", "\r\n"),
                ElementsAre("d wants a last line DONE, which did not come"));
    EXPECT_THAT(with("DONE", "DONE\r\nMORE"),
                ElementsAre("d wants a last line DONE, and more came after it"));
    EXPECT_THAT(with("STATION=", "Station="), ElementsAre("#001 has no STATION= in its place"));
    EXPECT_THAT(with("CENTRAL POWER", "CENTRAL"),
                ElementsAre("#001: the value of COMPANY= has 14 characters, not 20"));
    EXPECT_THAT(with("TESTS=0", "TESTS="),
                ElementsAre("#001: the value of TESTS= has 1 characters, not 2"));
    const std::size_t date = reply.find('/');
    EXPECT_THAT(with(reply.substr(date, 3), "-" + reply.substr(date + 1, 2)),
                ElementsAre("#001 has no date and time in its second line"));
    EXPECT_THAT(DeparturesOf({{Micros{0}, false, "d", 1},
                              {milliseconds(10), true, DirectoryReply(MakeMemory(136, 5)), 2}}),
                ElementsAre("136 records; the program lists 135"));
}

TEST(LogCheck, NamesWhatIsWrongInARecord) {
    const std::string reply = RecordReply(MakeMemory(3, 5)[1]);
    EXPECT_THAT(WithChange(Replaced("\r\nDONE", "\r\n"), "R", reply),
                ElementsAre("R wants a last line DONE, which did not come"));
    EXPECT_THAT(WithChange([](std::string& text) { text.erase(34, 34); }, "R", reply),
                ElementsAre(HasSubstr(" fields, not ")));
    EXPECT_THAT(WithChange([](std::string& text) { text[40] = 'x'; }, "R", reply),
                ElementsAre(HasSubstr("a field of a record that is not all hexadecimal")));
}

TEST(LogCheck, NamesWhatIsWrongWithHeaders) {
    EXPECT_EQ(Answered("Fr", std::string(1601, 'A')),
              "Fr wants 1600 characters and a line end: got 1601 bytes");
    EXPECT_EQ(Answered("Fh", "ERASING\r\n"), R"(Fh wants ERASING and H:, got "ERASING\x0D\x0A")");
    Talk talk;
    talk.Upload();
    ASSERT_TRUE(DeparturesOf(talk.log).empty());
    std::vector<LoggedBytes> dropped = talk.log;
    dropped.erase(dropped.begin() + 700);
    EXPECT_THAT(DeparturesOf(dropped), ElementsAre(HasSubstr("is missing or another")));
}

// A shot's log in which the piece with a text is changed.
std::vector<std::string> OfShot(const std::string& from, const std::string& to) {
    Talk talk;
    talk.Shot(false);
    std::vector<LoggedBytes> log = {talk.log.front(), {milliseconds(200), true, {}, 2}};
    for (const LoggedBytes& piece : talk.log) {
        if (piece.toPc) log[1].bytes += piece.bytes;
    }
    // One piece for each line, each long after the one before.
    std::vector<LoggedBytes> lines = {log[0]};
    Replaced(from, to)(log[1].bytes);
    for (std::size_t at = 0; at < log[1].bytes.size();) {
        const std::size_t end =
            std::min(log[1].bytes.find("\r\n", at), log[1].bytes.size() - 2) + 2;
        lines.push_back({milliseconds(100 * lines.size()), true, log[1].bytes.substr(at, end - at),
                         lines.size() + 1});
        at = end;
    }
    return DeparturesOf(lines);
}

TEST(LogCheck, NamesWhatIsWrongInAShot) {
    EXPECT_THAT(
        OfShot("MESSAGE=SET THE", "MESSAGE=Set the"),
        ElementsAre("a line that the program does not know: \"MESSAGE=Set the VOLTAGE RANGE "
                    "SELECTOR SWITCH\""));
    EXPECT_THAT(OfShot(" V=", ",V="), ElementsAre(HasSubstr("a line that the program does not")));
    EXPECT_THAT(OfShot("POLARITY=+", "POLARITY=?"),
                ElementsAre("a line that the program does not know: \"POLARITY=?\""));
    EXPECT_THAT(OfShot("DATA", "data"), Not(IsEmpty()));
    EXPECT_THAT(OfShot("DONE", "done"), ElementsAre("a record without DONE"));
    EXPECT_THAT(OfShot("DATA", "DATA0"), ElementsAre(HasSubstr("a shot's record: ")));
    EXPECT_THAT(OfShot("DONE", "DONE EXTRA"), ElementsAre("more behind a shot's DONE"));
    EXPECT_EQ(Answered("T", "MESSAGE=VOLTAGE TOO HIGH!\r\n"), "a shot without a record");
    EXPECT_EQ(Answered("T\x1B", "MESSAGE=VOLTAGE TOO HIGH!\r\n"), "");
}

TEST(LogCheck, NamesWhatCanBeThrownAwayWithAReading) {
    const std::string reading = "I=0.0123 V=152.4\r\n";
    std::vector<LoggedBytes> log = {{Micros{0}, false, "T", 1},
                                    {milliseconds(50), true, reading, 2},
                                    {milliseconds(54), true, "MESSAGE=VOLTAGE TOO HIGH!\r\n", 3},
                                    {milliseconds(60), false, "S\x1B", 4}};
    EXPECT_THAT(DeparturesOf(log),
                ElementsAre("\"MESSAGE=VOLTAGE TOO HIGH!\" comes 0.004 s after a "
                            "reading, and can be thrown away with it"));
    log[2].at = milliseconds(56);
    EXPECT_THAT(DeparturesOf(log), IsEmpty());
}

TEST(LogCheck, PrintsWhereEachDepartureIs) {
    const LogReport report =
        CheckLog({{Micros{0}, false, "B", 1}, {milliseconds(10), true, "R", 7}});
    EXPECT_EQ(report.Text(),
              "B: 1 times, answered 1, first byte after 0.010 s at most\n"
              "line 7, 0.010 s: B wants RDY and a line end: \"R\"\n"
              "1 departure from what the program expects\n");
}

}  // namespace
}  // namespace davo::test
