// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/record_list.h"

#include <QApplication>
#include <QHeaderView>
#include <QListWidget>
#include <QVBoxLayout>

#include "tests/support/controls.h"

namespace davo::test {
namespace {

// A list of records between a button and a list of tests.
class Lists : public ::testing::Test {
  protected:
    Lists() {
        auto* column = new QVBoxLayout(&window);
        for (QWidget* one : std::initializer_list<QWidget*>{before, records, tests})
            column->addWidget(one);
        MakeRows(tests);
        tests->addItems({u"Test 1"_s, u"Test 2"_s});
        records->Fill({Row("beta", "02/01/24", "3"), Row("Alpha", "11/21/99", "12"),
                       Row("gamma", "03/01/23", "1")});
        window.resize(700, 500);
    }
    void Show() { ASSERT_TRUE(ShowActive(window)); }
    static ListRow Row(const char* name, const char* date, const char* tests) {
        ListRow row;
        row.filename = name;
        row.date = date;
        row.tests = tests;
        return row;
    }
    void ClickHeading(int column) {
        QHeaderView* header = records->header();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionPosition(column) + 5, header->height() / 2));
    }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (int i = 0; i < records->topLevelItemCount(); ++i)
            names.push_back(records->topLevelItem(i)->text(0).toStdString());
        return names;
    }

    QWidget window;
    QPushButton* before = new QPushButton(u"before"_s, &window);
    RecordList* records = new RecordList(RecordColumns::All, &window);
    QListWidget* tests = new QListWidget(&window);
};

TEST_F(Lists, HaveRowsForGlovesInOneFont) {
    Show();
    EXPECT_EQ(records->visualItemRect(records->topLevelItem(1)).height(), 32);
    EXPECT_EQ(tests->visualItemRect(tests->item(1)).height(), 32);
    EXPECT_EQ(records->font(), tests->font());
    EXPECT_GT(records->font().pointSizeF(), before->font().pointSizeF());
}

TEST_F(Lists, GrowTheirRowsWithLargeLetters) {
    QFont large = window.font();
    large.setPointSizeF(large.pointSizeF() * 2);
    for (QAbstractItemView* list : std::initializer_list<QAbstractItemView*>{records, tests})
        list->setFont(large);
    Show();
    EXPECT_GT(records->visualItemRect(records->topLevelItem(1)).height(),
              records->fontMetrics().height());
    EXPECT_GT(records->visualItemRect(records->topLevelItem(1)).height(), 32);
}

TEST_F(Lists, SelectTheirFirstRowWhenAKeyEntersThem) {
    Show();
    before->setFocus();
    QTest::keyClick(before, Qt::Key_Tab);
    EXPECT_TRUE(records->hasFocus());
    EXPECT_THAT(records->SelectedRows(), ElementsAre(0));
    records->clearSelection();
    QTest::keyClick(records, Qt::Key_Tab);
    EXPECT_TRUE(tests->hasFocus());
    EXPECT_EQ(tests->currentRow(), 0);
    EXPECT_THAT(tests->selectedItems(), SizeIs(1));
    QTest::keyClick(tests, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_THAT(records->SelectedRows(), ElementsAre(0));
}

TEST_F(Lists, KeepWhatIsSelectedWhenAKeyEntersThem) {
    Show();
    records->topLevelItem(2)->setSelected(true);
    before->setFocus();
    QTest::keyClick(before, Qt::Key_Tab);
    EXPECT_THAT(records->SelectedRows(), ElementsAre(2));
}

TEST_F(Lists, AreNotChosenFromByTheMouseAlone) {
    Show();
    QTest::mouseClick(records->viewport(), Qt::LeftButton, {},
                      QPoint(20, records->viewport()->height() - 2));
    EXPECT_THAT(records->SelectedRows(), IsEmpty());
}

// Their window may have given them the focus.
TEST_F(Lists, BeginAtTheFirstRowWithAnArrowKey) {
    Show();
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Home}) {
        records->clearSelection();
        records->setFocus();
        QTest::keyClick(records, key);
        EXPECT_THAT(records->SelectedRows(), ElementsAre(0));
    }
    QTest::keyClick(records, Qt::Key_Down);
    EXPECT_THAT(records->SelectedRows(), ElementsAre(1));
    QTest::keyClick(records, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(records->currentItem()->text(0), u"gamma"_s);
}

TEST_F(Lists, LeaveAnEmptyListAlone) {
    records->Fill({});
    Show();
    before->setFocus();
    QTest::keyClick(before, Qt::Key_Tab);
    QTest::keyClick(records, Qt::Key_Down);
    EXPECT_THAT(records->SelectedRows(), IsEmpty());
}

TEST_F(Lists, ThatOnlyShowLetTheirKeysScroll) {
    records->setSelectionMode(QAbstractItemView::NoSelection);
    for (int i = 0; i < 50; ++i)
        records->addTopLevelItem(new QTreeWidgetItem({u"more"_s}));
    Show();
    before->setFocus();
    QTest::keyClick(before, Qt::Key_Tab);
    for (int i = 0; i < 40; ++i)
        QTest::keyClick(records, Qt::Key_Down);
    EXPECT_EQ(records->currentIndex().row(), 40);
}

TEST_F(Lists, AreSortedByAHeadingAndKnowTheirRows) {
    records->SortByHeadings();
    Show();
    EXPECT_THAT(Names(), ElementsAre("beta", "Alpha", "gamma")) << "as filled in";
    ClickHeading(0);
    EXPECT_THAT(Names(), ElementsAre("Alpha", "beta", "gamma"));
    ClickHeading(0);
    EXPECT_THAT(Names(), ElementsAre("gamma", "beta", "Alpha"));
    records->topLevelItem(0)->setSelected(true);
    EXPECT_THAT(records->SelectedRows(), ElementsAre(2));
    EXPECT_EQ(records->ItemOf(1)->text(0), u"Alpha"_s);
    EXPECT_EQ(records->ItemOf(3), nullptr);
}

TEST_F(Lists, KeepTheOrderOfAFillingUntilAHeadingIsClicked) {
    records->SortByHeadings();
    records->Fill(
        {Row("b", "02/01/24", "3"), Row("a", "02/01/24", "3"), Row("c", "02/01/24", "3")});
    Show();
    EXPECT_THAT(Names(), ElementsAre("b", "a", "c"));
}

TEST_F(Lists, AreSortedByTheDateNotByItsText) {
    records->SortByHeadings();
    Show();
    ClickHeading(1);
    EXPECT_THAT(Names(), ElementsAre("Alpha", "gamma", "beta")) << "1999, 2023, 2024";
    ClickHeading(1);
    EXPECT_THAT(Names(), ElementsAre("beta", "gamma", "Alpha"));
    records->Fill(
        {Row("new", "01/01/26", "1"), Row("none", "soon", "1"), Row("newer", "01/02/26", "1")});
    EXPECT_THAT(Names(), ElementsAre("newer", "new", "none")) << "the order outlasts a new filling";
}

TEST_F(Lists, AreNotSortedWhereTheWindowHasOptionsForIt) {
    Show();
    ClickHeading(0);
    EXPECT_THAT(Names(), ElementsAre("beta", "Alpha", "gamma"));
}

TEST_F(Lists, KnowTheFilesOfTheirRowsInEveryOrder) {
    DirectoryTables tables;
    tables.dirEntries = {"b!03/01/24", "a!02/01/24", "c!01/01/24"};
    tables.dirFileNames = {u"b.txt"_s, u"a.b.txt"_s, u"c.TXT"_s};
    records->SortByHeadings();
    records->Fill(tables, 3);
    Show();
    ClickHeading(0);
    EXPECT_THAT(Names(), ElementsAre("a", "b", "c"));
    records->setSelectionMode(QAbstractItemView::ExtendedSelection);
    records->SelectFiles({u"c.TXT"_s, u"gone.txt"_s, u"a.b.txt"_s});
    EXPECT_THAT(records->SelectedRows(), ElementsAre(1, 2));
    EXPECT_THAT(records->SelectedFiles(), ElementsAre(u"a.b.txt"_s, u"c.TXT"_s));
    records->SelectFiles({});
    EXPECT_THAT(records->SelectedFiles(), IsEmpty());
    // Those of an instrument's memory have none.
    tables.recordsFromInstrument = true;
    tables.dirEntriesNew = {"m!03/01/24"};
    records->Fill(tables, 1);
    records->topLevelItem(0)->setSelected(true);
    EXPECT_THAT(records->SelectedRows(), ElementsAre(0));
    EXPECT_THAT(records->SelectedFiles(), IsEmpty());
}

}  // namespace
}  // namespace davo::test
