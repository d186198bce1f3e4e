// SPDX-License-Identifier: GPL-3.0-or-later
// The export of records, read back by a reader of RFC 4180 written here and by Python's.

#include "reports/record_csv.h"

#include <QProcess>
#include <QStandardPaths>
#include <regex>

#include "common/files.h"
#include "common/numbers.h"
#include "common/text.h"
#include "tests/reports/random_record.h"
#include "tests/support/random_seed.h"
#include "tests/support/record_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo {
namespace {

using Fields = std::vector<std::string>;

constexpr const char* kMark = "\xEF\xBB\xBF";

// The rows of a text behind its mark, by RFC 4180: every row ends with CR LF.
std::vector<Fields> RowsOf(const std::string& csv) {
    EXPECT_TRUE(csv.starts_with(kMark));
    std::vector<Fields> rows;
    Fields row = {""};
    bool quoted = false;
    for (std::size_t i = 3; i < csv.size(); ++i) {
        const char c = csv[i];
        if (quoted) {
            if (c != '"') {
                row.back() += c;
            } else if (i + 1 < csv.size() && csv[i + 1] == '"') {
                row.back() += c;
                ++i;
            } else {
                quoted = false;
            }
        } else if (c == '"') {
            EXPECT_TRUE(row.back().empty()) << "a quote inside a field at " << i;
            quoted = true;
        } else if (c == ',') {
            row.emplace_back();
        } else if (c == '\r') {
            EXPECT_EQ(csv.at(i + 1), '\n');
            ++i;
            rows.push_back(row);
            row = {""};
        } else {
            EXPECT_NE(c, '\n') << "a bare line feed at " << i;
            row.back() += c;
        }
    }
    EXPECT_FALSE(quoted);
    EXPECT_EQ(row, Fields{""});
    return rows;
}

std::string Utf8(const std::string& pageText) {
    return FromPage(pageText).toStdString();
}

// What a spreadsheet would take for a formula has an apostrophe in front; a number is none.
std::string AsText(const std::string& field) {
    static const std::regex kNumber("[-+]?[0-9]*\\.?[0-9]+ ?%?");
    const bool formula = !field.empty() && std::string("=+-@").find(field[0]) != std::string::npos;
    return formula && !std::regex_match(field, kNumber) ? "'" + field : field;
}

// The row that a point should have; number 0: none.
Fields ExpectedRow(const RecordFacts& record, const RecordTest& test, std::size_t number) {
    const RecordFileHeader& header = record.headers.at(test.header);
    Fields row = {record.name, header.date, header.time};
    row.insert(row.end(), header.fields.begin(), header.fields.end());
    row.push_back(test.testNumber);
    row.push_back(number == 0 ? "" : std::to_string(number));
    // Numbers are compared as numbers.
    row.insert(row.end(), {"", ""});
    for (const KneeFact& knee : test.knees) {
        row.push_back(knee.printed.voltage);
        row.push_back(knee.printed.current);
    }
    row.insert(row.end(), {test.nameplateRatio, test.measuredRatio, test.percentError,
                           test.polarity, test.phase, test.phaseAngle});
    for (const KneeFact& knee : test.knees) {
        const SmoothKnee smooth = knee.smooth.value_or(SmoothKnee());
        row.push_back(knee.smooth ? GeneralNumber(smooth.at.voltage) : "");
        row.push_back(knee.smooth ? GeneralNumber(smooth.uncertainty) : "");
    }
    for (const KneeFact& knee : test.knees) {
        const KneeRange range = knee.range.value_or(KneeRange());
        row.push_back(knee.range ? GeneralNumber(range.low) : "");
        row.push_back(knee.range ? GeneralNumber(range.high) : "");
    }
    for (std::string& field : row)
        field = AsText(Utf8(field));
    return row;
}

constexpr std::size_t kCurrentColumn = 13;
constexpr std::size_t kVoltageColumn = 14;

void ExpectRows(const std::vector<Fields>& rows, const std::vector<RecordFacts>& records) {
    std::size_t at = 1;
    for (const RecordFacts& record : records) {
        for (const RecordTest& test : record.tests) {
            for (std::size_t i = 0; i < std::max<std::size_t>(test.points.size(), 1); ++i) {
                ASSERT_LT(at, rows.size());
                Fields row = rows[at++];
                ASSERT_THAT(row, SizeIs(39));
                if (!test.points.empty()) {
                    EXPECT_EQ(std::stod(row[kCurrentColumn]), test.points[i].current);
                    EXPECT_EQ(std::stod(row[kVoltageColumn]), test.points[i].voltage);
                    row[kCurrentColumn] = row[kVoltageColumn] = "";
                }
                ASSERT_EQ(row, ExpectedRow(record, test, test.points.empty() ? 0 : i + 1));
            }
        }
    }
    EXPECT_EQ(at, rows.size());
}

TEST(RecordCsv, HasAHeaderRow) {
    const std::vector<Fields> rows = RowsOf(RecordsAsCsv({}));
    ASSERT_THAT(rows, SizeIs(1));
    EXPECT_THAT(
        rows[0],
        ElementsAre("record", "date", "time", "company", "station", "circuit", "manufacturer",
                    "model", "serial_number", "comments", "operator", "test", "point", "current_A",
                    "voltage_V", "asa_10_50_V", "asa_10_50_A", "ieee_45_V", "ieee_45_A",
                    "ieee_30_V", "ieee_30_A", "nameplate_ratio", "measured_ratio", "percent_error",
                    "polarity", "phase", "phase_deg", "asa_10_50_smooth_V", "asa_10_50_smooth_pm_V",
                    "ieee_45_smooth_V", "ieee_45_smooth_pm_V", "ieee_30_smooth_V",
                    "ieee_30_smooth_pm_V", "asa_10_50_smooth_low_V", "asa_10_50_smooth_high_V",
                    "ieee_45_smooth_low_V", "ieee_45_smooth_high_V", "ieee_30_smooth_low_V",
                    "ieee_30_smooth_high_V"));
}

TEST(RecordCsv, EveryColumnIsTold) {
    const std::string document =
        ReadWholeFile(QString::fromUtf8(DAVO_TESTS_FOLDER) + u"/../docs/csv.md"_s);
    const Fields columns = RowsOf(RecordsAsCsv({})).at(0);
    for (const std::string& column : columns)
        EXPECT_NE(document.find("`" + column + "`"), std::string::npos) << column;
}

TEST(RecordCsv, APointIsARow) {
    const std::vector<Fields> rows =
        RowsOf(RecordsAsCsv({ParseRecordFacts(test::FileText(2), "T0012")}));
    ASSERT_THAT(rows, SizeIs(1 + 2 * 7));
    EXPECT_THAT(rows[1], ElementsAre("T0012", "03/07/24", "14:05", "Power & Light", "Hilltop",
                                     "Feeder 4", "Acme", "CT-600", "00012345", "a: b, c", "J. Doe",
                                     "1", "1", "0.05", "10", rows[1][15], rows[1][16], rows[1][17],
                                     rows[1][18], rows[1][19], rows[1][20], "240 (1200:5)",
                                     "241.20", "0.50%", "IN PHASE", "IN PHASE", "1.5", "34.2",
                                     "1.8", "28.5", "1.3", "31.7", "1.2", "", "", "", "", "", ""));
    EXPECT_EQ(rows[14][11], "2");
    EXPECT_EQ(rows[14][12], "7");
}

TEST(RecordCsv, ATestWithoutPointsIsARow) {
    test::RecordParts parts;
    parts.points.clear();
    const std::vector<RecordFacts> records = {
        ParseRecordFacts(test::HeaderText() + test::RecordText(parts), "T1")};
    const std::vector<Fields> rows = RowsOf(RecordsAsCsv(records));
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_EQ(rows[1][12], "");
    EXPECT_EQ(rows[1][15], "N/A");
    EXPECT_EQ(rows[1][27], "");
    ExpectRows(rows, records);
}

TEST(RecordCsv, QuotesWhatHoldsAComma) {
    RecordFacts record = ParseRecordFacts(test::FileText(1), "T1");
    record.headers.at(0).fields = {"a,b", "say \"hi\"", "two\r\nlines", "\"",
                                   "",    " blank ",    "x;y",          "tab\tbed"};
    const std::string csv = RecordsAsCsv({record});
    EXPECT_NE(
        csv.find("\"a,b\",\"say \"\"hi\"\"\",\"two\r\nlines\",\"\"\"\",, blank ,x;y,tab\tbed"),
        std::string::npos);
    ExpectRows(RowsOf(csv), {record});
}

TEST(RecordCsv, TextsOfThePageBecomeUtf8) {
    RecordFacts record = ParseRecordFacts(test::FileText(1), "M\xFChle");
    record.headers.at(0).fields[0] = "\x80 5 \x96 \xB5\xC4";
    const std::vector<Fields> rows = RowsOf(RecordsAsCsv({record}));
    EXPECT_EQ(rows[1][0], "M\xC3\xBChle");
    EXPECT_EQ(rows[1][3], "\xE2\x82\xAC 5 \xE2\x80\x93 \xC2\xB5\xC3\x84");
}

// A spreadsheet takes it for a text then; docs/csv.md says so.
TEST(RecordCsv, ATextThatLooksLikeAFormulaHasAnApostropheInFront) {
    RecordFacts record = ParseRecordFacts(test::FileText(1), "=T1");
    record.headers.at(0).fields = {"=1+1", "@SUM(A1)", "+1-1", "-A1", "a=b", "'=1", "-", ""};
    record.tests.front().percentError = "-0.50%";
    record.tests.front().measuredRatio = "=\"a,b\"";
    const std::vector<Fields> rows = RowsOf(RecordsAsCsv({record}));
    EXPECT_EQ(rows[1][0], "'=T1");
    EXPECT_EQ(Fields(rows[1].begin() + 3, rows[1].begin() + 11),
              (Fields{"'=1+1", "'@SUM(A1)", "'+1-1", "'-A1", "a=b", "'=1", "'-", ""}));
    EXPECT_EQ(rows[1][22], "'=\"a,b\"");
    EXPECT_EQ(rows[1][23], "-0.50%") << "a number stays one";
}

// A record whose texts hold every byte, in front of what quoting stumbles over.
std::string RandomText(test::RecordSource& random) {
    static const std::array<std::string, 6> kPieces = {",", "\"", "\r\n", "\n", "\"\"", ",\""};
    std::string text;
    for (int pieces = random.Below(5); pieces > 0; --pieces) {
        text += static_cast<char>(1 + random.Below(255));
        text += kPieces.at(static_cast<std::size_t>(random.Below(6)));
    }
    return text;
}

std::vector<RecordFacts> RandomRecords(test::RecordSource& random) {
    std::vector<RecordFacts> records;
    for (int n = random.Below(4); n >= 0; --n) {
        records.push_back(ParseRecordFacts(random.File(), "T" + std::to_string(n)));
        for (std::string& field : records.back().headers.at(0).fields)
            field = RandomText(random);
        records.back().tests.front().percentError = RandomText(random);
    }
    return records;
}

TEST(RecordCsv, RandomRecordsReadBack) {
    test::RecordSource random(test::RandomSeed(4180));
    for (int n = 0; n < 40 && !testing::Test::HasFailure(); ++n) {
        const std::vector<RecordFacts> records = RandomRecords(random);
        ExpectRows(RowsOf(RecordsAsCsv(records)), records);
    }
}

// The lines of a record file that begin with key, without it and without blanks at their ends.
Fields LinesOf(const std::string& file, const std::string& key) {
    Fields values;
    const std::string begin = "\r\n" + key;
    for (std::size_t at = file.find(begin); at != std::string::npos;
         at = file.find(begin, at + 2)) {
        const std::size_t from = at + begin.size();
        const std::string value = file.substr(from, file.find("\r\n", from) - from);
        const std::size_t first = value.find_first_not_of(' ');
        values.push_back(first == std::string::npos
                             ? ""
                             : value.substr(first, value.find_last_not_of(' ') + 1 - first));
    }
    return values;
}

// Header lines of every letter of the page, with what quoting stumbles over.
std::string WithRandomHeader(std::string file, const Fields& keys, test::RecordSource& random) {
    constexpr int kLongest = 20;
    constexpr char kDelete = 127;  // a control character, too
    for (const std::string& key : keys) {
        std::string text;
        for (int letters = random.Below(kLongest + 1); letters > 0; --letters) {
            text += random.Below(3) == 0 ? ",\" ;"[random.Below(4)]
                                         : static_cast<char>(' ' + random.Below(256 - ' '));
            if (text.back() == kDelete) text.back() = '?';
        }
        const std::size_t from = file.find(key) + key.size();
        file.replace(from, file.find('\r', from) - from, text);
    }
    return file;
}

// Against the file's own lines, without the reader of records.
TEST(RecordCsv, RandomFilesReadBackLineByLine) {
    const Fields keys = {"COMPANY: ", "STATION: ", "CIRCUIT: ",  "MFR: ",
                         "MODEL: ",   "SN: ",      "COMMENTS: ", "OPERATOR: "};
    test::RecordSource random(test::RandomSeed(4182));
    std::size_t points = 0;
    for (int n = 0; n < 200 && !testing::Test::HasFailure(); ++n) {
        const std::string file = WithRandomHeader(random.File(), keys, random);
        const std::vector<Fields> rows = RowsOf(RecordsAsCsv({ParseRecordFacts(file, "T")}));
        std::size_t at = 1;
        std::size_t from = file.find("\r\nREC NUMBER:");
        for (int test = 1; from != std::string::npos; ++test) {
            const std::size_t next = file.find("\r\nREC NUMBER:", from + 1);
            const std::string shot = file.substr(from, next - from);
            from = next;
            const Fields lines = LinesOf(shot, "CURRENT: ");
            for (std::size_t i = 0; i < std::max<std::size_t>(lines.size(), 1); ++i) {
                ASSERT_LT(at, rows.size());
                const Fields& row = rows[at++];
                for (std::size_t field = 0; field < keys.size(); ++field)
                    ASSERT_EQ(row[3 + field], AsText(Utf8(LinesOf(file, keys[field]).at(0)))) << n;
                ASSERT_EQ(row[11], std::to_string(test));
                ASSERT_EQ(row[21], LinesOf(shot, "NAMEPLATE RATIO: ").at(0));
                ASSERT_EQ(row[22], LinesOf(shot, "MEASURED RATIO: ").at(0));
                ASSERT_EQ(row[23], LinesOf(shot, "PERCENT ERROR: ").at(0));
                ASSERT_EQ(row[24], LinesOf(shot, "POLARITY: ").at(0));
                if (lines.empty()) continue;
                const std::size_t volts = lines[i].find("VOLTAGE:");
                ASSERT_EQ(std::stod(row[kCurrentColumn]), std::stod(lines[i].substr(0, volts)));
                ASSERT_EQ(std::stod(row[kVoltageColumn]), std::stod(lines[i].substr(volts + 8)));
                ++points;
            }
        }
        EXPECT_EQ(at, rows.size());
    }
    EXPECT_GT(points, 2000U);
}

// Python's reader gives the fields back, each as hexadecimal digits of its UTF-8.
TEST(RecordCsv, PythonReadsTheSame) {
    const QString python = QStandardPaths::findExecutable(u"python3"_s);
    if (python.isEmpty()) GTEST_SKIP() << "no python3";
    test::RecordSource random(test::RandomSeed(4181));
    const std::string csv = RecordsAsCsv(RandomRecords(random));
    const test::TemporaryFolder folder;
    ReplaceFile(folder.Path("records.csv"), csv);
    QProcess process;
    process.start(python, {QString::fromUtf8(DAVO_TESTS_FOLDER) + u"/reports/read_back_csv.py"_s,
                           folder.Path("records.csv")});
    ASSERT_TRUE(process.waitForFinished(60000)) << process.errorString().toStdString();
    EXPECT_EQ(process.readAllStandardError().toStdString(), "");
    std::string expected;
    for (const Fields& row : RowsOf(csv)) {
        for (const std::string& field : row)
            expected += QByteArray::fromStdString(field).toHex().toStdString() + " ";
        expected += "\n";
    }
    EXPECT_EQ(process.readAllStandardOutput().toStdString(), expected);
}

}  // namespace
}  // namespace davo
