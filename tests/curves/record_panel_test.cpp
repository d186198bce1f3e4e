// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/record_panel.h"

#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <algorithm>
#include <cstdio>

#include "common/numbers.h"
#include "tests/curves/panel_test.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

TEST_F(Panel, IsEmptyWithoutARecord) {
    ShowFiles({});
    EXPECT_EQ(TextOf(panel, "lblRecord"), "No record is selected.");
    EXPECT_THAT(TabOrderOf(panel), IsEmpty());
    EXPECT_FALSE(FindIn<QPushButton>(panel, "cmdSaveCsv")->isEnabled());
}

TEST_F(Panel, ShowsTheFactsOfARecord) {
    ShowFiles({"ONE"});
    EXPECT_EQ(TextOf(panel, "lblRecord"), "ONE   03/07/24 14:05");
    Press("cmdMore");
    EXPECT_THAT(TextOf(panel, "lblHeader"),
                AllOf(HasSubstr("Company:"), HasSubstr("Power\u00a0&amp;\u00a0Light"),
                      HasSubstr("Operator:"), HasSubstr("Doe")));
    EXPECT_THAT(ColumnOf(panel, 0),
                ElementsAre("241.20", "240 (1200:5)", "0.50%", "IN PHASE", "IN PHASE, 1.5\u00b0",
                            "29.9 V, 0.090 A (?)", "31.7 \u00b1 1.2 V", "26.8 V, 0.082 A (?)",
                            "28.5 \u00b1 1.3 V", "24.1 V, 0.075 A (?)", "34.2 \u00b1 1.8 V"));
    EXPECT_EQ(Doubts(panel),
              "IEEE 30: 29.9 V, 0.090 A. The points are too few or too uneven for this rule: a "
              "smooth curve through them has its kneepoint at 31.7 \u00b1 1.2 V, 0.0964 A.\n"
              "IEEE 45: 26.8 V, 0.082 A. The points are too few or too uneven for this rule: a "
              "smooth curve through them has its kneepoint at 28.5 \u00b1 1.3 V, 0.0835 A.\n"
              "ASA 10/50: 24.1 V, 0.075 A. The points are too few or too uneven for this rule: a "
              "smooth curve through them has its kneepoint at 34.2 \u00b1 1.8 V, 0.1156 A.");
}

// IEC has another name for the kneepoint of the ASA rule.
TEST_F(Panel, NamesTheKneepointAsIecDoes) {
    ShowFiles({"ONE"});
    const auto* table = FindIn<QTableWidget>(panel, "tblTests");
    std::vector<std::string> tips;
    for (int row = 0; row < table->rowCount(); ++row) {
        const QString tip = table->verticalHeaderItem(row)->toolTip();
        if (!tip.isEmpty())
            tips.push_back((table->verticalHeaderItem(row)->text() + u": "_s + tip).toStdString());
    }
    EXPECT_THAT(tips, ElementsAre("ASA 10/50: IEC's knee point e.m.f. (10 % / 50 %): 10 % more "
                                  "voltage drives 50 % more current"));
}

// The points leave the smooth kneepoint open by more than 10 %.
TEST_F(Panel, ShowsARangeForAKneepointThatIsOpen) {
    Add("OPEN", Curve(OpenCurve(), 1));
    ShowFiles({"OPEN"});
    constexpr int kSmoothIeee30 = 6;
    const std::string smooth = ColumnOf(panel, 0).at(kSmoothIeee30);
    double low = 0;
    double high = 0;
    ASSERT_EQ(std::sscanf(smooth.c_str(), "%lf to %lf V", &low, &high), 2) << smooth;
    EXPECT_GT(low, 120);
    EXPECT_GT(high, 1.2 * low);
    EXPECT_LE(high, 415);
    const auto volts = [](double value) { return Picture(value, "0.0") + " V"; };
    EXPECT_EQ(smooth, Picture(low, "0.0") + " to " + volts(high));
    EXPECT_THAT(Doubts(panel), HasSubstr("between " + volts(low) + " and " + volts(high) + "."));
}

// As many fields as one line has room for; a button shows the others.
TEST_F(Panel, HasTheHeaderInOneLineWithMore) {
    panel.resize(660, 680);
    ShowFiles({"ONE"});
    auto* more = FindIn<QPushButton>(panel, "cmdMore");
    const auto* header = FindIn<QLabel>(panel, "lblHeader");
    ASSERT_TRUE(more->isVisible());
    EXPECT_THAT(TextOf(panel, "lblHeader"),
                AllOf(HasSubstr("Company:"), HasSubstr("Hilltop"), Not(HasSubstr("Operator:"))));
    EXPECT_TRUE(Until([&] {
        return header->height() < 2 * header->fontMetrics().height() && CutTextsOf(panel).empty();
    }));
    QTest::mouseClick(more, Qt::LeftButton);
    EXPECT_THAT(TextOf(panel, "lblHeader"), AllOf(HasSubstr("Company:"), HasSubstr("Operator:")));
    EXPECT_TRUE(Until([&] { return CutTextsOf(panel).empty(); }));
    QTest::mouseClick(more, Qt::LeftButton);
    EXPECT_THAT(TextOf(panel, "lblHeader"), Not(HasSubstr("Operator:")));
    // A wide panel has them all in its line.
    panel.resize(1500, 680);
    QApplication::processEvents();
    EXPECT_FALSE(more->isVisible());
    EXPECT_THAT(TextOf(panel, "lblHeader"), HasSubstr("Operator:"));
}

TEST_F(Panel, HasTheFieldOfDoubtsOnlyWhenThereIsOne) {
    Add("MIXED", Curve(PlainCurve(), 1) + Curve(StraightCurve(), 2));
    ShowFiles({"MIXED"});
    auto* table = FindIn<QTableWidget>(panel, "tblTests");
    const auto* doubts = FindIn<QWidget>(panel, "txtDoubts");
    EXPECT_EQ(Doubts(panel), "");
    EXPECT_FALSE(doubts->isVisible());
    table->setFocus();
    QTest::keyClick(table, Qt::Key_Right);
    EXPECT_THAT(Doubts(panel), StartsWith("Test 2\n"));
    EXPECT_TRUE(doubts->isVisible());
    QTest::keyClick(table, Qt::Key_Left);
    EXPECT_FALSE(doubts->isVisible());
}

TEST_F(Panel, GivesTheChartMostOfItsHeight) {
    for (const QSize size : {QSize(660, 660), QSize(660, 600), QSize(500, 680), QSize(900, 950)}) {
        panel.resize(size);
        for (const char* record : {"ONE", "THREE"}) {
            ShowFiles({record});
            const auto* plot = FindIn<QWidget>(panel, "plotCurves");
            EXPECT_TRUE(Until([&] {
                return plot->height() >= 0.55 * panel.height() &&
                       plot->width() >= panel.width() - 12;
            })) << record
                << ' ' << size.height() << ": " << plot->height();
        }
    }
}

// A chart over the whole width of a low panel would be a strip.
TEST_F(Panel, HasItsFactsBesideTheChartWhereItIsWide) {
    for (const QSize size : {QSize(1000, 540), QSize(1000, 660)}) {
        panel.resize(size);
        ShowFiles({"THREE"});
        const auto* plot = FindIn<QWidget>(panel, "plotCurves");
        EXPECT_TRUE(Until([&] {
            return FindIn<QWidget>(panel, "tblTests")->x() >= plot->width() &&
                   plot->height() >= 0.68 * size.height();
        })) << size.height();
    }
    panel.resize(900, 700);
    ShowFiles({"THREE"});
    EXPECT_TRUE(Until([&] { return FindIn<QWidget>(panel, "plotCurves")->width() >= 880; }));
}

// 14 points, on a panel as a laptop has it and on a narrow one.
TEST_F(PanelTest, CutsNoLargeLetters) {
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSizeF(14);
    QApplication::setFont(large);
    {
        RecordPanel panel(prompts);
        panel.show();
        for (const QSize size : {QSize(700, 620), QSize(500, 620), QSize(1000, 480)}) {
            panel.resize(size);
            panel.ShowRecords({File("THREE")});
            test::Pause(60);
            QTest::keyClick(FindIn<QWidget>(panel, "plotCurves"), Qt::Key_Right,
                            Qt::ControlModifier);
            EXPECT_TRUE(Until([&] {
                return CutTextsOf(panel).empty() &&
                       FindIn<QWidget>(panel, "plotCurves")->height() >= 250;
            })) << size.width();
        }
    }
    QApplication::setFont(usual);
}

TEST_F(Panel, NamesTheTestsWithoutACurveBelowTheChart) {
    std::string tests = Curve(KneeCurve(), 1);
    for (int i = 2; i <= 3; ++i)
        tests += Curve({}, i);
    Add("RATIO", tests);
    ShowFiles({"RATIO"});
    EXPECT_EQ(TextOf(panel, "lblNoCurve"), "Without a curve: Test 2, Test 3.");
    EXPECT_TRUE(Until([&] { return CutTextsOf(panel).empty(); }));
    for (int i = 4; i <= 9; ++i)
        tests += Curve({}, i);
    Add("RATIO", tests);
    ShowFiles({"RATIO"});
    EXPECT_EQ(TextOf(panel, "lblNoCurve"), "Without a curve: Test 2, Test 3, Test 4 and 5 more.");
    ShowFiles({"ONE"});
    EXPECT_EQ(TextOf(panel, "lblNoCurve"), "");
    EXPECT_TRUE(FindIn<QWidget>(panel, "cmdZoomIn")->isVisible());
    // Nothing to zoom, point at or step through.
    Add("NONE", Curve({}, 1));
    ShowFiles({"NONE"});
    EXPECT_EQ(TextOf(panel, "lblNoCurve"), "Without a curve: Test 1.");
    EXPECT_FALSE(FindIn<QWidget>(panel, "cmdZoomIn")->isVisible());
    EXPECT_THAT(TabOrderOf(panel), Not(Contains("plotCurves")));
}

// A value that is too large for a rule is met by the judgement only.
TEST_F(Panel, JudgesOnlyWhatIsShown) {
    std::string many;
    for (int i = 1; i <= 30; ++i)
        many += Curve(KneeCurve(), i);
    many += Curve({{"1", "-1E308"}, {"2", "1E308"}, {"3", "-1E308"}, {"4", "1E308"}}, 31);
    std::vector<std::string> names;
    for (int i = 0; i < 10; ++i) {
        names.push_back("R" + std::to_string(i));
        Add(names.back(), many);
    }
    ShowFiles(names);
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "Of each record the first 20 tests are shown.");
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->columnCount(), 200);
    ShowFiles({"R3"});
    EXPECT_THAT(TextOf(panel, "lblTrouble"), StartsWith("R3 cannot be shown: "));
    EXPECT_TRUE(FindIn<QTableWidget>(panel, "tblTests")->isHidden());
    ShowFiles(names);
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "Of each record the first 20 tests are shown.");
}

// Those before it are neither waited for nor in its way.
TEST_F(Panel, JudgesOnlyTheTestThatIsChosenForAnOverlay) {
    Add("ODD", Curve({{"1", "-1E308"}, {"2", "1E308"}, {"3", "-1E308"}, {"4", "1E308"}}, 1) +
                   Curve(KneeCurve(), 2));
    panel.Show({{File("ODD"), u"Graph #1"_s, 2}, {File("ONE"), u"Graph #2"_s, 1}});
    test::Pause(60);
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "");
    EXPECT_EQ(ColumnOf(panel, 0).at(5), "29.9 V, 0.090 A (?)");
    EXPECT_EQ(ColumnOf(panel, 1).at(5), "29.9 V, 0.090 A (?)");
}

TEST_F(Panel, ATestChosenElsewhereStaysChosen) {
    panel.ShowRecords({File("THREE")});
    panel.ChooseTest(2);
    test::Pause(60);
    const auto* table = FindIn<QTableWidget>(panel, "tblTests");
    EXPECT_EQ(table->currentColumn(), 2);
    panel.ChooseTest(1);
    EXPECT_EQ(table->currentColumn(), 1);
    EXPECT_THAT(Doubts(panel), StartsWith("Test 2\n"));
    ShowFiles({"THREE"});
    EXPECT_EQ(table->currentColumn(), 1);
    ShowFiles({"ONE"});
    EXPECT_EQ(table->currentColumn(), 0);
}

// Three points have neither.
TEST_F(Panel, SaysWhereThereIsNoSmoothKneepoint) {
    Add("SHORT", Curve(ThreePoints(), 1));
    ShowFiles({"SHORT"});
    const std::vector<std::string> column = ColumnOf(panel, 0);
    for (const std::size_t rule : {5U, 7U, 9U}) {
        EXPECT_EQ(column.at(rule), "N/A");
        EXPECT_EQ(column.at(rule + 1), "none");
        EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")
                      ->verticalHeaderItem(static_cast<int>(rule) + 1)
                      ->text(),
                  u"smooth"_s);
    }
}

TEST_F(Panel, SaysInWordsWhyThereIsNoKneepoint) {
    ShowFiles({"STRAIGHT"});
    EXPECT_THAT(Doubts(panel), HasSubstr("IEEE 30: 0. The core did not saturate: no pair of points "
                                         "is above the rule's limit. Raise the voltage "
                                         "further."));
}

TEST_F(Panel, ATestThatIsChosenBringsItsDoubts) {
    ShowFiles({"THREE"});
    EXPECT_THAT(Doubts(panel), StartsWith("Test 1\n"));
    auto* table = FindIn<QTableWidget>(panel, "tblTests");
    table->setFocus();
    QTest::keyClick(table, Qt::Key_Right);
    EXPECT_THAT(Doubts(panel), StartsWith("Test 2\n"));
}

TEST_F(Panel, ShowsTenRecordsAtMost) {
    std::vector<std::string> names;
    for (int i = 0; i < 12; ++i) {
        names.push_back("R" + std::to_string(i));
        Add(names.back(), Curve(SmoothCurve(100 + 50 * i), 1));
    }
    ShowFiles(names);
    EXPECT_EQ(TextOf(panel, "lblRecord"), "12 records; the first 10 are shown");
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->columnCount(), 10);
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->horizontalHeaderItem(9)->text(),
              u"R9 Test 1"_s);
    ShowFiles({"R0", "R1"});
    EXPECT_EQ(TextOf(panel, "lblRecord"), "2 records");
}

TEST_F(Panel, ATableOfFewerRecordsThanAreSelectedSaysSo) {
    std::vector<std::string> names;
    for (int i = 0; i < 12; ++i) {
        names.push_back("R" + std::to_string(i));
        Add(names.back(), Curve(SmoothCurve(100 + 50 * i), 1));
    }
    const auto said = [this](const std::vector<std::string>& records) {
        ShowFiles(records);
        prompts.files = {folder.Path("table.csv")};
        prompts.answers = {Answer::Yes};
        Press("cmdSaveCsv");
        EXPECT_TRUE(Until([this] { return CutTextsOf(panel).empty(); }));
        return TextOf(panel, "lblSaved");
    };
    EXPECT_THAT(said(names), EndsWith("table.csv\n10 of 12 records are written."));
    ReplaceFile(File("BROKEN"), "TEST NUMBER: BROKEN\r\nREC");
    EXPECT_THAT(said({"R0", "BROKEN"}), EndsWith("table.csv\n1 of 2 records are written."));
    names.resize(10);
    EXPECT_THAT(said(names), EndsWith("table.csv"));
}

TEST_F(Panel, SaysWhatCannotBeRead) {
    ReplaceFile(File("BROKEN"), "TEST NUMBER: BROKEN\r\nREC");
    ShowFiles({"BROKEN"});
    EXPECT_THAT(TextOf(panel, "lblTrouble"), StartsWith("BROKEN cannot be shown: "));
    EXPECT_TRUE(FindIn<QTableWidget>(panel, "tblTests")->isHidden());
    // The others are shown all the same.
    ShowFiles({"GONE", "ONE"});
    EXPECT_THAT(TextOf(panel, "lblTrouble"), StartsWith("GONE cannot be shown: "));
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->columnCount(), 1);
    ShowFiles({"ONE"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "");
    Add("EMPTY", "");
    ShowFiles({"EMPTY"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "There is no test in it.");
}

TEST_F(Panel, NothingOfTheRecordBeforeStaysBesideADamagedOne) {
    ReplaceFile(File("BROKEN"), HeaderText("BROKEN") + "REC NUMBER: 1\r\nCURRENT: 0.1\r\n");
    ShowFiles({});
    const QImage empty = TheChart()->grab().toImage();
    for (const char* before : {"ONE", "THREE"}) {
        ShowFiles({before});
        QTest::keyClick(FindIn<QWidget>(panel, "plotCurves"), Qt::Key_Right, Qt::ControlModifier);
        EXPECT_NE(TheChart()->AtCrosshair(), std::nullopt);
        ShowFiles({"BROKEN"});
        EXPECT_EQ(TextOf(panel, "lblRecord"), "BROKEN");
        EXPECT_EQ(TextOf(panel, "lblTrouble"),
                  "BROKEN cannot be shown: the file is damaged. Run-time error '13': Type "
                  "mismatch: line 14");
        EXPECT_EQ(TextOf(panel, "lblHeader"), "");
        EXPECT_EQ(Doubts(panel), "");
        EXPECT_FALSE(FindIn<QWidget>(panel, "tblTests")->isVisible());
        EXPECT_FALSE(FindIn<QWidget>(panel, "txtDoubts")->isVisible());
        for (const char* command : {"cmdSavePng", "cmdSavePdf", "cmdSaveCsv"})
            EXPECT_FALSE(FindIn<QPushButton>(panel, command)->isEnabled());
        EXPECT_EQ(TheChart()->AtCrosshair(), std::nullopt);
        TheChart()->resize(empty.size());
        EXPECT_EQ(TheChart()->grab().toImage(), empty);
    }
    ShowFiles({"ONE"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "");
    EXPECT_TRUE(FindIn<QWidget>(panel, "tblTests")->isVisible());
}

TEST_F(Panel, ReadsAFileAgainWhenItHasChanged) {
    ShowFiles({"ONE"});
    Add("ONE", Curve(KneeCurve(), 1) + Curve(StraightCurve(), 2));
    ShowFiles({"ONE"});
    EXPECT_EQ(FindIn<QTableWidget>(panel, "tblTests")->columnCount(), 2);
}

TEST_F(Panel, ShowsTheLastOfManySelectionsOnly) {
    ShowFiles({"ONE"});
    const int before = TheChart()->Paints();
    for (int i = 0; i < 250; ++i)
        panel.ShowRecords({File(i % 2 == 0 ? "ONE" : "THREE")});
    test::Pause(100);
    EXPECT_EQ(TextOf(panel, "lblRecord"), "THREE   03/07/24 14:05");
    EXPECT_LE(TheChart()->Paints(), before + 4);
}

TEST_F(Panel, OnlyWholeRowsOfTheResultsAreShown) {
    ShowFiles({"ONE", "THREE"});
    auto* table = FindIn<QTableWidget>(panel, "tblTests");
    bool scrolled = false;
    for (int height = 560; height <= 800; height += 7) {
        panel.resize(420, height);
        test::Pause(10);
        const int shown = table->viewport()->height();
        const int row = table->rowHeight(0);
        EXPECT_EQ(shown % row, 0) << height;
        EXPECT_EQ(table->verticalHeader()->height(), shown) << height;
        scrolled = scrolled || shown / row < table->rowCount();
        table->scrollToBottom();
        EXPECT_EQ(table->rowViewportPosition(table->rowCount() - 1) + row, shown) << height;
        table->scrollToTop();
        EXPECT_EQ(table->rowAt(0), 0) << height;
    }
    EXPECT_TRUE(scrolled) << "none of them is too low for all rows";
}

TEST_F(Panel, SavesPictureAndPageAndTable) {
    ShowFiles({"ONE", "THREE"});
    prompts.files = {folder.Path("curves"), folder.Path("curves.PDF"), folder.Path("curves.csv")};
    Press("cmdSavePng");
    Press("cmdSavePdf");
    Press("cmdSaveCsv");
    EXPECT_EQ(prompts.shown.at(0), QDir::cleanPath(settings.dataPath) + u"|*.png"_s);
    EXPECT_TRUE(prompts.shown.at(1).endsWith(u"|*.pdf;;*.html"_s));
    EXPECT_TRUE(prompts.shown.at(2).endsWith(u"|*.csv"_s));
    EXPECT_THAT(prompts.proposed, ElementsAre(u"ONE.png"_s, u"ONE.pdf"_s, u"ONE.csv"_s));
    EXPECT_EQ(QImage(folder.Path("curves.png")).size(), QSize(1600, 1100));
    EXPECT_THAT(ReadWholeFile(folder.Path("curves.PDF")), StartsWith("%PDF-"));
    const std::string csv = ReadWholeFile(folder.Path("curves.csv"));
    // Names of columns, seven points, three times sixteen.
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 1 + 7 + 48);
}

TEST_F(Panel, SavesTheCertificateByTheEndingOfItsName) {
    const QString marker = QLatin1String(kKneeIeee30);
    panel.SetMarker(marker);
    ShowFiles({"THREE"});
    prompts.files = {folder.Path("page.html"), folder.Path("page.pdf")};
    Press("cmdSavePdf");
    Press("cmdSavePdf");
    const std::string page = ReadWholeFile(folder.Path("page.html"));
    EXPECT_THAT(page, HasSubstr("<title>THREE - Test Certificate</title>"));
    EXPECT_THAT(page, HasSubstr("Kneepoint by IEEE 30"));
    EXPECT_FALSE(QFileInfo::exists(folder.Path("page.html.pdf")));
    EXPECT_THAT(ReadWholeFile(folder.Path("page.pdf")), StartsWith("%PDF-"));
}

TEST_F(Panel, TheCertificateHasTheMarkerThatIsChosenByThen) {
    QString marker = QLatin1String(kKneeIeee30);
    panel.SetMarker(marker);
    ShowFiles({"THREE"});
    marker = QLatin1String(kKneeAsa);
    prompts.files = {folder.Path("page.html")};
    Press("cmdSavePdf");
    EXPECT_THAT(ReadWholeFile(folder.Path("page.html")), HasSubstr("Kneepoint by ASA 10/50"));
}

TEST_F(Panel, SaysWhereAFileWasSaved) {
    const auto said = [this] {
        return QString::fromStdString(TextOf(panel, "lblSaved")).remove(QChar(0x200B));
    };
    ShowFiles({"ONE"});
    EXPECT_EQ(said(), QString());
    for (const auto& [button, name] : {std::pair{"cmdSavePng", "curves.png"},
                                       {"cmdSavePdf", "curves.pdf"},
                                       {"cmdSaveCsv", "curves.csv"}}) {
        prompts.files = {folder.Path(name)};
        Press(button);
        EXPECT_EQ(said(), u"Saved: "_s + ShownPath(folder.Path(name)));
        EXPECT_THAT(CutTextsOf(panel), IsEmpty());
    }
    prompts.files = {folder.Path("none/curves")};
    Press("cmdSaveCsv");
    EXPECT_EQ(said(), QString()) << "nothing is saved";
    prompts.files = {folder.Path("again")};
    Press("cmdSaveCsv");
    ShowFiles({"THREE"});
    EXPECT_EQ(said(), QString()) << "of another record";
}

TEST_F(Panel, ReadsTheFirst200TestsOfAFileAndSaysSo) {
    std::string many;
    for (int i = 1; i <= 2000; ++i)
        many += Curve(KneeCurve(), i);
    Add("MANY", many + "NOTES:\r\nREC NUMBER: of a note\r\n");
    ShowFiles({"MANY"});
    ASSERT_TRUE(Comes(panel, "MANY"));
    const auto* table = FindIn<QTableWidget>(panel, "tblTests");
    EXPECT_EQ(table->columnCount(), 200);
    EXPECT_EQ(table->horizontalHeaderItem(199)->text(), u"Test 200"_s);
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "MANY has 2000 tests; the first 200 are shown.");
    prompts.files = {folder.Path("many.csv")};
    Press("cmdSaveCsv");
    EXPECT_THAT(TextOf(panel, "lblSaved"),
                EndsWith("many.csv\nMANY has 2000 tests; the first 200 are written."));
    EXPECT_TRUE(Until([this] { return CutTextsOf(panel).empty(); }));
    // The rest is not even read.
    Add("MANY", many.substr(0, many.size() - 200));
    ShowFiles({"MANY"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "MANY has 2000 tests; the first 200 are shown.");
    ShowFiles({"ONE"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "");
}

TEST_F(Panel, SharesItsRoomForTestsAmongSeveralRecords) {
    std::string many;
    for (int i = 1; i <= 150; ++i)
        many += Curve(KneeCurve(), i);
    for (const char* name : {"MANY", "TOO"})
        Add(name, many);
    ShowFiles({"MANY", "ONE", "TOO"});
    ASSERT_TRUE(Comes(panel, "3 records"));
    const auto* table = FindIn<QTableWidget>(panel, "tblTests");
    EXPECT_EQ(table->columnCount(), 66 + 1 + 66);
    EXPECT_EQ(table->horizontalHeaderItem(65)->text(), u"MANY Test 66"_s);
    EXPECT_EQ(table->horizontalHeaderItem(67)->text(), u"TOO Test 1"_s);
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "Of each record the first 66 tests are shown.");
    prompts.files = {folder.Path("all.csv")};
    Press("cmdSaveCsv");
    const std::string csv = ReadWholeFile(folder.Path("all.csv"));
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 1 + 301 * 7) << "the table has them all";
}

TEST_F(Panel, ControlCharactersAreToldAndShownAsQuestionMarks) {
    panel.resize(2400, 680);  // the whole header in any letters
    std::string text = HeaderText("ODD", "Hill\x02top") + Curve(KneeCurve(), 1);
    text.replace(text.find("241.20"), 6,
                 "241\x1b"
                 "20");
    ReplaceFile(File("ODD"), text);
    ShowFiles({"ODD"});
    EXPECT_EQ(TextOf(panel, "lblTrouble"), "ODD has 2 control characters, shown as \"?\".");
    EXPECT_THAT(TextOf(panel, "lblHeader"), HasSubstr("Hill?top"));
    EXPECT_EQ(ColumnOf(panel, 0).at(0), "241?20");
    prompts.files = {folder.Path("odd.csv")};
    Press("cmdSaveCsv");
    EXPECT_THAT(ReadWholeFile(folder.Path("odd.csv")),
                AllOf(HasSubstr("Hill?top"), HasSubstr("241?20")));
}

TEST_F(Panel, AsksBeforeItReplacesAFile) {
    ShowFiles({"ONE"});
    const QString path = folder.Path("mine.csv");
    ReplaceFile(path, "mine");
    prompts.files = {path, path, QString()};
    prompts.answers = {Answer::No, Answer::Yes};
    Press("cmdSaveCsv");
    EXPECT_EQ(prompts.shown.back(),
              u"The file 'mine.csv' exists already. Do you "
              "want to replace it?"_s);
    EXPECT_EQ(prompts.presets.back(), Answer::No);
    EXPECT_EQ(ReadWholeFile(path), "mine");
    Press("cmdSaveCsv");
    EXPECT_NE(ReadWholeFile(path), "mine");
    Press("cmdSaveCsv");  // cancelled
    EXPECT_TRUE(prompts.files.empty());
}

TEST_F(Panel, SaysWhenNothingWasSaved) {
    ShowFiles({"ONE"});
    for (const char* button : {"cmdSavePng", "cmdSavePdf", "cmdSaveCsv"}) {
        prompts.files = {folder.Path("none/curves")};
        Press(button);
        EXPECT_THAT(prompts.shown.back().toStdString(), StartsWith("The file was not saved. "));
    }
}

}  // namespace
}  // namespace davo::test
