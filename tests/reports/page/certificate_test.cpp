// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/certificate.h"

#include <regex>

#include "common/files.h"
#include "reports/page/html.h"
#include "reports/page/pdf.h"
#include "reports/record_texts.h"
#include "tests/curves/panel_records.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"
#ifndef _WIN32
#include "tests/support/file_size_limit.h"
#endif

namespace davo::test {
namespace {

Certificate CertificateOfText(const std::string& bytes) {
    return CertificateOf(ParseRecordFacts(bytes, "T0012"), KneeRule::Ieee30);
}

TEST(Certificate, HasTheTextsOfItsRecord) {
    const Certificate page = CertificateOfText(
        HeaderText() + RecordText(1, "TEST DESCRIPTION: X1-X2\r\nTEST NOTES: a, b\r\n") +
        "NOTES:\r\nfree, text\r\n");
    EXPECT_EQ(page.subject, u"T0012"_s);
    EXPECT_EQ(page.headers.at(0).at(1).text, u"03/07/24 14:05"_s);
    EXPECT_EQ(page.headers.at(0).at(3).text, u"Hilltop"_s);
    QStringList cells;
    for (const CertificateCell& cell : page.tables[0].rows.at(0))
        cells += cell.text;
    EXPECT_EQ(cells, (QStringList{u"1"_s, u"X1-X2"_s, u"240 (1200:5)"_s, u"241.20"_s, u"0.50"_s,
                                  u"IN PHASE"_s, u"IN PHASE"_s, u"1.5"_s, u"200.1"_s, u"0.124"_s}));
    EXPECT_EQ(page.notes, (QStringList{u"Test 1: a, b"_s, u"free, text"_s}));
    EXPECT_EQ(page.tester, u"J. Doe"_s);
    EXPECT_EQ(page.date, u"03/07/24"_s);
    ASSERT_EQ(page.curves.size(), 1U);
    ASSERT_EQ(page.curves[0].knees.size(), 1U);
    EXPECT_EQ(page.curves[0].knees[0].text, u"29.9 V, 0.090 A"_s);
}

TEST(Certificate, OfARecordWithoutTestsNamesItAndSaysSo) {
    const Certificate page = CertificateOfText(HeaderText() + "NOTES:\r\nfree, text\r\n");
    EXPECT_EQ(page.Title(), u"T0012 - Test Certificate"_s);
    ASSERT_EQ(page.headers.size(), 1U);
    EXPECT_EQ(page.headers[0].at(3).text, u"Hilltop"_s);
    EXPECT_EQ(page.notes, (QStringList{u"There is no test in it."_s, u"free, text"_s}));
    EXPECT_THAT(CertificateAsHtml(page, Paper::A4), HasSubstr("There is no test in it."));
}

TEST(Certificate, HasTheCurrentOfTheSmoothKneepointBesideItsVoltage) {
    RecordParts parts;
    parts.points = SmoothCurve(150);
    const RecordFacts record = ParseRecordFacts(HeaderText() + RecordText(parts), "T0012");
    const KneeFact& fact = FactOf(record.tests.at(0), KneeRule::Ieee30);
    ASSERT_TRUE(fact.smooth);
    const Certificate page = CertificateOf(record, {});
    const auto& columns = page.tables[1].columns;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].group != u"IEEE 30"_s || columns[i].heading != "Smooth A") continue;
        EXPECT_NEAR(page.tables[1].rows.at(0)[i].text.toDouble(), fact.smooth->at.current, 1e-9);
        EXPECT_EQ(page.tables[1].rows.at(0)[i - 1].text + u" V"_s, SmoothText(fact));
        return;
    }
    FAIL();
}

TEST(Certificate, NamesTheKneepointAsIecDoes) {
    const Certificate page = CertificateOfText(FileText(1));
    EXPECT_EQ(page.tables[1].columns.at(1).group, u"ASA 10/50, IEC knee point e.m.f."_s);
}

TEST(Certificate, SaysADoubtOnce) {
    const Certificate page = CertificateOfText(FileText(3));
    ASSERT_FALSE(page.explained.isEmpty());
    const auto& rows = page.tables[1].rows;
    for (std::size_t i = 0; i < rows[0].size(); ++i) {
        EXPECT_EQ(rows[0][i].mark, rows[2][i].mark);
        EXPECT_LE(rows[0][i].mark, page.explained.size());
    }
    EXPECT_EQ(page.explained.size(),
              QSet<QString>(page.explained.begin(), page.explained.end()).size());
}

// A session of equal tests but for their voltages, which are in the doubts' sentences.
TEST(Certificate, SaysDoubtsThatDifferInNumbersOnceWithTheirTests) {
    std::string text = HeaderText();
    for (int i = 1; i <= 10; ++i) {
        RecordParts parts;
        parts.number = " " + std::to_string(i);
        parts.points = SmoothCurve(60 * i + 90);
        if (i == 5) parts.points.resize(3);
        text += RecordText(parts);
    }
    const Certificate page = CertificateOfText(text);
    EXPECT_LE(page.explained.size(), 3);
    EXPECT_THAT(page.explained.join(u'\n').toStdString(), HasSubstr("(Tests 1 to 4, 6 to 10)"));
    EXPECT_THAT(page.explained.join(u'\n').toStdString(), HasSubstr("(Test 5)"));
    for (const auto& row : page.tables[1].rows) {
        for (const CertificateCell& cell : row)
            EXPECT_LE(cell.mark, page.explained.size());
    }
}

TEST(Certificate, LeavesOutTheNumbersInWhichDoubtsDiffer) {
    std::string text = HeaderText();
    for (const char* fallen : {"35.1", "35.2"}) {
        RecordParts parts;
        parts.points = KneeCurve();
        parts.points[5].second = fallen;
        text += RecordText(parts);
    }
    const Certificate page = CertificateOfText(text);
    EXPECT_THAT(page.explained.join(u'\n').toStdString(),
                HasSubstr("From point 5 (37.0 V, 0.1500 A) to point 6 (\u2026 V, 0.6000 A)"));
}

TEST(Certificate, OfRatioTestsHasNoKneepointsAndNoCurves) {
    RecordParts parts;
    parts.points = {};
    const Certificate page = CertificateOfText(HeaderText() + RecordText(parts));
    EXPECT_TRUE(page.tables[1].rows.empty());
    EXPECT_TRUE(page.curves.empty());
}

TEST(CertificateHtml, HasNumbersAlignedByTheirPoint) {
    std::string text = HeaderText();
    for (const char* ratio : {"240", "1.5", "1.25", "N/A"}) {
        RecordParts parts;
        parts.measuredRatio = ratio;
        text += RecordText(parts);
    }
    // A blank is half as wide as a digit.
    const std::string html = CertificateAsHtml(CertificateOfText(text), Paper::A4);
    for (const char* cell :
         {">240\u00a0\u00a0\u00a0\u00a0\u00a0<", ">1.5\u00a0\u00a0<", ">1.25<", ">N/A<"})
        EXPECT_THAT(html, HasSubstr(cell));
}

TEST(CertificatePages, AreOnThePaperOfTheCountry) {
    EXPECT_EQ(PaperOf(QLocale(u"en_US"_s)), Paper::Letter);
    EXPECT_EQ(PaperOf(QLocale(u"fr_CA"_s)), Paper::Letter);
    EXPECT_EQ(PaperOf(QLocale(u"de_DE"_s)), Paper::A4);
    EXPECT_EQ(PaperOf(QLocale::c()), Paper::A4);
}

TEST(CertificateHtml, IsTheSameForTheSameRecord) {
    const std::string bytes = FileText(3);
    EXPECT_EQ(CertificateAsHtml(CertificateOfText(bytes), Paper::A4),
              CertificateAsHtml(CertificateOfText(bytes), Paper::A4));
}

TEST(CertificatePdf, IsTheSameForTheSameRecordButForItsDate) {
    const TemporaryFolder folder;
    const auto write = [&] {
        WriteCertificatePdf(CertificateOfText(FileText(3)), Paper::A4, folder.Path("T.pdf"));
        const std::string bytes = ReadWholeFile(folder.Path("T.pdf"));
        // Qt 6.8 says its date in more places, and a name of its own for each file.
        return std::regex_replace(
            bytes,
            std::regex(
                R"(/(Creation|Mod)Date \([^)]*\)|:\w+Date="[^"]*"|"uuid:[^"]*"|/ID *\[[^\]]*\])"),
            "");
    };
    const std::string first = write();
    EXPECT_TRUE(first == write());
    EXPECT_GT(first.size(), 1000U);
}

#ifndef _WIN32
TEST(CertificatePdf, OnAFullDiskLeavesTheFileThatWasThere) {
    const TemporaryFolder folder;
    ReplaceFile(folder.Path("T.pdf"), "old");
    const Certificate page = CertificateOfText(FileText(3));
    {
        const FileSizeLimit full(4096);
        EXPECT_NE(ErrorBy([&] { WriteCertificatePdf(page, Paper::A4, folder.Path("T.pdf")); }), 0);
    }
    EXPECT_EQ(ReadWholeFile(folder.Path("T.pdf")), "old");
    EXPECT_EQ(NamesInFolder(folder.Path("")).size(), 1U);
}
#endif

}  // namespace
}  // namespace davo::test
