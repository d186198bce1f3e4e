// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/page/certificate.h"

#include <regex>

#include "common/files.h"
#include "reports/page/html.h"
#include "reports/page/pdf.h"
#include "tests/support/record_text.h"
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

std::size_t PagesOfTests(int count, Paper paper) {
    return PagesOf(CertificateOfText(FileText(count)), paper).size();
}

// Every row and sentence is on one page, in order.
std::size_t RowsOnPages(const std::vector<PageParts>& pages, PagePart::Kind kind,
                        std::size_t index) {
    std::size_t next = 0;
    for (const PageParts& parts : pages) {
        for (const PagePart& part : parts) {
            if (part.kind != kind || part.index != index) continue;
            EXPECT_EQ(part.from, next);
            next = part.to;
        }
    }
    return next;
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
    EXPECT_EQ(PagesOf(page, Paper::A4).size(), 1U);
    EXPECT_THAT(CertificateAsHtml(page, Paper::A4), HasSubstr("There is no test in it."));
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

TEST(Certificate, OfRatioTestsHasNoKneepointsAndNoCurves) {
    RecordParts parts;
    parts.points = {};
    const Certificate page = CertificateOfText(HeaderText() + RecordText(parts));
    EXPECT_TRUE(page.tables[1].rows.empty());
    EXPECT_TRUE(page.curves.empty());
    const std::vector<PageParts> pages = PagesOf(page, Paper::A4);
    for (const PagePart& part : pages.at(0))
        EXPECT_NE(part.kind, PagePart::Kind::Chart);
}

TEST(Certificate, NumbersAreAlignedByTheirPoint) {
    CertificateTable table{{}, {{{}, u"Ratio"_s, {}, true}}, {{{u"240"_s}}, {{u"1.25"_s}}}};
    EXPECT_NEAR(DecimalRoom(table, 0, u"240"_s), 2 * 0.556 + 0.278, 1e-9);
    EXPECT_NEAR(DecimalRoom(table, 0, u"1.5"_s), 0.556, 1e-9);
    EXPECT_EQ(DecimalRoom(table, 0, u"1.25"_s), 0);
    EXPECT_EQ(DecimalRoom(table, 0, u"N/A"_s), 0);
}

TEST(CertificatePages, OneTestIsOnOnePageAndTenAreOnThreeAtMost) {
    for (const Paper paper : {Paper::A4, Paper::Letter}) {
        EXPECT_EQ(PagesOfTests(1, paper), 1U);
        EXPECT_LE(PagesOfTests(10, paper), 3U);
    }
}

TEST(CertificatePages, HaveEveryRowOnceAndTheChartOnTheFirst) {
    for (const Paper paper : {Paper::A4, Paper::Letter}) {
        for (const int count : {1, 3, 10, 31, 100}) {
            std::string notes = "NOTES:\r\n";
            for (int i = 0; i < 5 * count; ++i)
                notes += "a line\r\n";
            const Certificate page = CertificateOfText(FileText(count) + notes);
            const std::vector<PageParts> pages = PagesOf(page, paper);
            EXPECT_EQ(RowsOnPages(pages, PagePart::Kind::Table, 0), page.tables[0].rows.size());
            EXPECT_EQ(RowsOnPages(pages, PagePart::Kind::Table, 1), page.tables[1].rows.size());
            EXPECT_EQ(RowsOnPages(pages, PagePart::Kind::Explained, 0),
                      static_cast<std::size_t>(page.explained.size()));
            EXPECT_EQ(RowsOnPages(pages, PagePart::Kind::Notes, 0),
                      static_cast<std::size_t>(page.notes.size()));
            double chart = 0;
            for (std::size_t i = 0; i < pages.size(); ++i) {
                double height = 0;
                for (const PagePart& part : pages[i]) {
                    height += part.height;
                    if (part.kind == PagePart::Kind::Chart) {
                        EXPECT_EQ(i, 0U);
                        EXPECT_EQ(chart, 0);
                        chart = part.height;
                    }
                }
                EXPECT_LE(height, SizeOf(paper).height() - 2 * kPageMargin);
            }
            const QSizeF size = SizeOf(paper);
            EXPECT_GE(chart * (size.width() - 2 * kPageMargin), 0.4 * size.width() * size.height());
        }
    }
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
        return std::regex_replace(bytes, std::regex(R"(/CreationDate \([^)]*\))"), "");
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
