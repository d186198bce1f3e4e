// SPDX-License-Identifier: GPL-3.0-or-later
// Random sessions as plain values. From each, the capture file's text and the record file that it
// must become are written independently of the converter: counts are integers, so every decimal
// text follows from integer arithmetic.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

#include "records/record_file.h"
#include "records/record_file_writer.h"
#include "tests/support/random_rounds.h"
#include "tests/support/result_number.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

class Random {
  public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}
    int Below(int bound) { return static_cast<int>(engine_() % static_cast<unsigned>(bound)); }
    int Between(int low, int high) { return low + Below(high - low + 1); }
    bool OneIn(int chances) { return Below(chances) == 0; }
    // Up to longest bytes of any kind but line ends.
    std::string Line(int longest) {
        std::string line;
        for (int left = Below(longest + 1); left > 0; --left) {
            char c = static_cast<char>(Below(256));
            if (c == '\r' || c == '\n') c = ' ';
            line += c;
        }
        return line;
    }

  private:
    std::mt19937_64 engine_;
};

struct Shot {
    std::array<int, 148> bytes{};
    std::size_t digits = 296;  // that are sent
    std::string measured, nameplate, percent;

    int Word(std::size_t at) const { return Byte(at) + 256 * Byte(at + 1); }
    // As far as its digits were sent: one digit alone is the number.
    int Byte(std::size_t at) const {
        if (digits >= 2 * at + 2) return bytes.at(at);
        return digits == 2 * at + 1 ? bytes.at(at) / 16 : 0;
    }
};

struct Session {
    std::array<std::string, 12> header;
    std::vector<Shot> shots;
    bool cutShotAtEnd = false;
    int shotCount = 0;
    std::vector<std::string> notes;

    // Shots that the record file gets.
    std::size_t Converted() const {
        const auto limit = static_cast<std::size_t>(shotCount);
        return shotCount == 0 ? shots.size() : std::min(limit, shots.size());
    }
};

Shot RandomShot(Random& random) {
    Shot shot;
    for (int& byte : shot.bytes)
        byte = random.Below(256);
    const int zeros = random.OneIn(3) ? 2 : 8;  // how seldom a slot is zero
    for (std::size_t slot = 0; slot < 32; ++slot) {
        for (const std::size_t half : {4 * slot, 4 * slot + 2}) {
            if (random.OneIn(zeros)) shot.bytes.at(half) = shot.bytes.at(half + 1) = 0;
        }
    }
    if (!random.OneIn(4)) {
        const int phase = random.OneIn(3) ? 100 * random.Between(7, 28) - random.Between(-2, 2)
                                          : random.Below(3700);
        shot.bytes[140] = phase % 256;
        shot.bytes[141] = phase / 256;
    }
    shot.bytes[146] = random.OneIn(4) ? random.Below(256) : random.Below(4);
    if (random.OneIn(2)) shot.bytes[147] = 10;
    if (random.OneIn(40)) shot.digits = static_cast<std::size_t>(random.Below(296));
    shot.measured = random.OneIn(5) ? random.Line(12) : std::to_string(random.Below(5000)) + ".5";
    const bool none = random.OneIn(3);
    shot.nameplate = none ? "N/A" : std::to_string(random.Below(900)) + " (1200:" + "5)";
    shot.percent = none ? "N/A" : "0." + std::to_string(random.Between(10, 99)) + "%";
    return shot;
}

Session RandomSession(Random& random) {
    Session session;
    for (std::string& field : session.header)
        field = random.Line(random.OneIn(9) ? 30 : 20);
    const int kind = random.Below(20);
    const int shots = kind == 0  ? random.Between(41, 100)
                      : kind < 6 ? random.Between(9, 40)
                                 : random.Between(1, 8);
    for (int i = 0; i < shots; ++i)
        session.shots.push_back(RandomShot(random));
    session.cutShotAtEnd = random.OneIn(5);
    session.shotCount = random.OneIn(3) ? random.Below(110) : shots;
    if (random.OneIn(2)) {
        for (int lines = random.Between(1, 5); lines > 0; --lines) {
            session.notes.push_back(random.Line(60));
        }
    }
    return session;
}

std::string Disturbed(const std::string& digits, Random& random) {
    const int spacing = random.OneIn(2) ? 1000 : random.Between(1, 40);
    std::string text;
    for (const char digit : digits) {
        while (random.OneIn(spacing + 1)) {
            static const std::array<const char*, 4> kGaps = {" ", "\r\n", "\n", "  \r\n\r\n "};
            text += kGaps.at(static_cast<std::size_t>(random.Below(4)));
        }
        text += digit;
    }
    return text;
}

std::string HexOf(const Shot& shot) {
    std::string text;
    for (const int byte : shot.bytes) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", static_cast<unsigned>(byte));
        text += digits.data();
    }
    return text.substr(0, shot.digits);
}

std::string CaptureOf(const Session& session, Random& random) {
    std::string text;
    for (const Shot& shot : session.shots) {
        text += "DATA" + Disturbed(HexOf(shot), random);
        text += random.OneIn(4) ? "DONE\r\n" : "\r\nDONE\r\n";
        const std::string margin(static_cast<std::size_t>(random.Below(3)), ' ');
        text += "MEASURED RATIO: " + shot.measured + "\r\n";
        text.append("NAMEPLATE RATIO: ").append(margin).append(shot.nameplate).append(margin);
        text.append("\r\nPERCENT ERROR: ").append(margin).append(shot.percent).append(margin);
        text += "\r\n\r\n";
    }
    if (session.cutShotAtEnd) text += "DATA" + Disturbed("0102030405", random) + "\r\n";
    return text;
}

// value / 10^decimals with all its decimals.
std::string Fixed(int value, int decimals) {
    std::string digits = std::to_string(value);
    const auto places = static_cast<std::size_t>(decimals);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    return digits.insert(digits.size() - places, ".");
}

// The same without zeros at its end.
std::string Shortest(int value, int decimals) {
    std::string text = Fixed(value, decimals);
    while (text.back() == '0')
        text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text;
}

std::string ReferencePolarity(int tenths) {
    if (tenths <= 900 || (tenths >= 2700 && tenths <= 3600)) return "IN PHASE";
    // 2699 times 0.1 is a hair above 269.9 and so in the gap.
    return tenths >= 901 && tenths <= 2698 ? "OUT OF PHASE" : "N/A";
}

// currents are in units of 0.0001 A
int CurrentUnits(const Shot& shot, std::size_t at) {
    return shot.Word(at) * (shot.Byte(147) == 10 ? 2 : 1);
}

std::vector<std::pair<int, int>> PointsOf(const Shot& shot) {
    std::vector<std::pair<int, int>> points;
    for (std::size_t at = 128; at > 0;) {
        at -= 4;
        if (shot.Word(at) != 0 && shot.Word(at + 2) != 0) {
            points.emplace_back(CurrentUnits(shot, at), shot.Word(at + 2));
        }
    }
    return points;
}

const char* KneeTypeOf(const Shot& shot) {
    return shot.Byte(146) == 1   ? "IEEE 30 DEGREE TANGENT"
           : shot.Byte(146) == 2 ? "IEEE 45 DEGREE TANGENT"
                                 : "ASA 10%VTG -> 50%CUR";
}

std::string RecordOf(const Shot& shot, std::size_t number) {
    std::string text = "REC NUMBER: " + std::to_string(number) + "\r\n";
    const auto points = PointsOf(shot);
    for (const auto& [current, voltage] : points) {
        text += "CURRENT: " + Fixed(current, 4) + "VOLTAGE: " + Fixed(voltage, 1) + "\r\n";
    }
    text += "NUMBER OF DATA POINTS: " + std::to_string(points.size()) + "\r\n";
    text += "KNEE VOLTAGE: " + Shortest(shot.Word(128), 1) + " VOLTS\r\n";
    text += "KNEE CURRENT: " + Shortest(CurrentUnits(shot, 130), 4) + " AMPS\r\n";
    text += "EXCITATION CUR: " + Fixed((CurrentUnits(shot, 132) + 5) / 10, 3) + " AMPS\r\n";
    text += "EXCITATION VTG: " + Shortest(shot.Word(134), 1) + " VOLTS\r\n";
    text += "MEASURED RATIO: " + shot.measured + "\r\n";
    text += "POLARITY: " + ReferencePolarity(shot.Word(140)) + "\r\n";
    text += "PHASE ANGLE: " + Fixed(shot.Word(140), 1) + " DEG\r\n";
    text += "NAMEPLATE RATIO: " + shot.nameplate + "\r\n";
    text += "PERCENT ERROR: " + shot.percent + "\r\n";
    return text + "KNEE POINT TYPE: " + KneeTypeOf(shot) + "\r\n";
}

std::string NotesOf(const Session& session) {
    std::string notes;
    for (const std::string& line : session.notes)
        notes += (notes.empty() ? "" : "\r\n") + line;
    return notes;
}

std::string RecordFileOf(const Session& session) {
    std::string text = "TEST NUMBER: T1\r\nDATE: " + session.header[1] +
                       "\r\nTIME: " + session.header[2] +
                       "\r\n# OF SHOTS: " + (session.shotCount < 10 ? "0" : "") +
                       std::to_string(session.shotCount) + "\r\n";
    std::size_t slot = 4;
    for (const char* key : {"COMPANY: ", "STATION: ", "CIRCUIT: ", "MFR: ", "MODEL: ", "SN: ",
                            "COMMENTS: ", "OPERATOR: "}) {
        text += key + session.header.at(slot++) + "\r\n";
    }
    for (std::size_t i = 0; i < session.Converted(); ++i)
        text += RecordOf(session.shots[i], i + 1);
    const std::string notes = NotesOf(session);
    return notes.empty() ? text : text + "NOTES:\r\n" + notes + "\r\n";
}

// Control characters are not shown; the ends of lines and the tabs of notes are none.
std::string Shown(std::string text) {
    for (char& c : text) {
        const bool control = static_cast<unsigned char>(c) < 32 || c == 127;
        if (control && c != '\r' && c != '\n' && c != '\t') c = '?';
    }
    return text;
}

void ExpectReadBack(const TestRecord& record, const Shot& shot, std::size_t number) {
    EXPECT_EQ(record.recordNumber, std::to_string(number));
    const auto points = PointsOf(shot);
    ASSERT_EQ(record.points.size(), points.size());
    EXPECT_EQ(record.dataPointCount, static_cast<int>(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_EQ(record.points[i].current, points[i].first / 10000.0);
        EXPECT_EQ(record.points[i].voltage, points[i].second / 10.0);
    }
    EXPECT_EQ(test::ResultNumber(record.kneeVoltage), shot.Word(128) / 10.0);
    EXPECT_EQ(test::ResultNumber(record.kneeCurrent), CurrentUnits(shot, 130) / 10000.0);
    const int excitationUnits = (CurrentUnits(shot, 132) + 5) / 10;
    EXPECT_EQ(test::ResultNumber(record.excitationCurrent), excitationUnits / 1000.0);
    EXPECT_EQ(test::ResultNumber(record.excitationVoltage), shot.Word(134) / 10.0);
    EXPECT_EQ(test::ResultNumber(record.phaseAngle), shot.Word(140) / 10.0);
    EXPECT_EQ(record.measuredRatio, Shown(shot.measured));
    EXPECT_EQ(record.polarity, ReferencePolarity(shot.Word(140)));
    EXPECT_EQ(record.nameplateRatio, shot.nameplate);
    EXPECT_EQ(record.percentError, shot.percent);
    EXPECT_EQ(record.kneePointType, KneeTypeOf(shot));
}

// A shot that was never a file has the record that its file would have.
void ExpectSame(const TestRecord& ofShot, const TestRecord& inFile) {
    EXPECT_EQ(ofShot.recordNumber, inFile.recordNumber);
    EXPECT_TRUE(std::equal(ofShot.points.begin(), ofShot.points.end(), inFile.points.begin(),
                           inFile.points.end(), [](const DataPoint& one, const DataPoint& other) {
                               return one.current == other.current && one.voltage == other.voltage;
                           }));
    EXPECT_EQ(ofShot.dataPointCount, inFile.dataPointCount);
    for (const auto text :
         {&TestRecord::kneeVoltage, &TestRecord::kneeCurrent, &TestRecord::excitationCurrent,
          &TestRecord::excitationVoltage, &TestRecord::measuredRatio, &TestRecord::polarity,
          &TestRecord::phaseAngle, &TestRecord::nameplateRatio, &TestRecord::percentError,
          &TestRecord::kneePointType}) {
        EXPECT_EQ(Shown(ofShot.*text), inFile.*text);
    }
}

void ExpectReadBack(const TestRecordFile& file, const Session& session) {
    ASSERT_EQ(file.headers.size(), 1U);
    const RecordFileHeader& header = file.headers[0];
    EXPECT_EQ(header.testNumber, "T1");
    EXPECT_EQ(header.date, Shown(session.header[1]));
    EXPECT_EQ(header.time, Shown(session.header[2]));
    EXPECT_EQ(std::atoi(header.shots.c_str()), session.shotCount);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(header.fields.at(i), Shown(session.header.at(4 + i)));
    ASSERT_EQ(file.records.size(), session.Converted());
    for (std::size_t i = 0; i < file.records.size(); ++i) {
        ExpectReadBack(file.records[i], session.shots[i], i + 1);
    }
    const std::string notes = Shown(NotesOf(session));
    EXPECT_EQ(file.notes, notes.empty() ? std::vector<std::string>()
                                        : std::vector<std::string>{notes + "\r\n"});
}

TEST(ConversionRandom, AgreesWithTheReferenceAndReadsBack) {
    Random random(test::RandomSeed(20261121));
    const int sessions = test::RandomRounds(2500);
    for (int i = 0; i < sessions && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE("session " + std::to_string(i));
        const Session session = RandomSession(random);
        HeaderTable header;
        for (std::size_t slot = 0; slot < session.header.size(); ++slot) {
            header.headerFields.at(slot) = session.header.at(slot);
        }
        const std::string capture = CaptureOf(session, random);
        const std::string file =
            ConvertCapture(capture, header,
                           {"T1", static_cast<std::int16_t>(session.shotCount), NotesOf(session)});
        ASSERT_EQ(file, RecordFileOf(session));
        const TestRecordFile read = ParseTestRecordFile(file);
        ExpectReadBack(read, session);
        const std::vector<CapturedShot> shots = CapturedShots(capture);
        for (std::size_t shot = 0; shot < read.records.size(); ++shot)
            ExpectSame(RecordOfShot(shot + 1, shots.at(shot)), read.records[shot]);
    }
}

}  // namespace
}  // namespace davo
