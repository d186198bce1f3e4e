// SPDX-License-Identifier: GPL-3.0-or-later
// The record that the guide shows line by line is one that the program reads.

#include <QFile>
#include <QStringList>

#include "records/record_file.h"
#include "tests/support/result_number.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

// The literal blocks of the page that tells a record's lines, in order.
QStringList Blocks() {
    QFile file(QStringLiteral(DAVO_GUIDE_SOURCES "/records.md"));
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QStringList parts = QString::fromUtf8(file.readAll()).split(u"```\n"_s);
    QStringList blocks;
    for (qsizetype i = 1; i < parts.size(); i += 2)
        blocks.push_back(parts.at(i));
    return blocks;
}

TEST(GuideRecord, IsReadLineByLine) {
    const QStringList blocks = Blocks();
    ASSERT_EQ(blocks.size(), 2) << "the header and a shot";
    QString text = blocks.join(QString()) + u"NOTES:\nTerminal box dry.\n"_s;
    text.replace(QLatin1Char('\n'), u"\r\n"_s);
    const TestRecordFile file = ParseTestRecordFile(text.toLatin1().toStdString());
    EXPECT_EQ(file.headers.at(0).testNumber, "Feeder12");
    EXPECT_EQ(file.headers.at(0).date, "11/21/26");
    EXPECT_EQ(file.headers.at(0).fields.front(), "Example Power Co.");
    EXPECT_EQ(file.headers.at(0).fields.back(), "A. Operator");
    EXPECT_EQ(file.notes, std::vector<std::string>{"Terminal box dry.\r\n"});
    ASSERT_EQ(file.records.size(), 1U);
    EXPECT_EQ(file.headers.at(0).shots, "01");
    const TestRecord& shot = file.records.front();
    EXPECT_EQ(shot.testDescription, "first core");
    EXPECT_EQ(shot.testNotes, "dry");
    EXPECT_EQ(shot.points.size(), static_cast<std::size_t>(shot.dataPointCount));
    ASSERT_EQ(shot.points.size(), 3U);
    EXPECT_LT(shot.points.front().voltage, shot.points.back().voltage) << "from the lowest up";
    EXPECT_EQ(ResultNumber(shot.kneeVoltage), 349.1);
    EXPECT_EQ(ResultNumber(shot.phaseAngle), 0.3);
    EXPECT_EQ(shot.percentError, "0.50%");
    EXPECT_EQ(shot.kneePointType, "IEEE 30 DEGREE TANGENT");
}

}  // namespace
}  // namespace davo::test
