// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/compare_facts.h"

#include <QComboBox>
#include <QTabBar>
#include <QTextEdit>
#include <cstdio>
#include <cstdlib>

#include "tests/curves/panel_test.h"

namespace davo::test {
namespace {

// A record of a transformer's serial number and day, with all voltages times a factor.
class ComparedRecords : public Panel {
  protected:
    ComparedRecords() { panel.OfferCompare(settings); }
    struct Made {
        const char* date = "03/07/24";
        const char* serial = "77";
        double factor = 1;
    };
    void AddMade(const std::string& name, const Made& made, int number = 1) {
        HeaderParts parts{name, made.date, "14:05", "01", {}};
        parts.texts = {"C", "Hilltop", "1", "M", "2", made.serial, "4", "5"};
        PointTexts points = PlainCurve();
        for (auto& [current, voltage] : points) {
            char volts[32];
            std::snprintf(volts, sizeof volts, "%.1f",
                          made.factor * std::strtod(voltage.c_str(), nullptr));
            voltage = volts;
        }
        ReplaceFile(File(name), HeaderText(parts) + Curve(points, number));
    }
    void ShowCompared(const std::string& name) {
        ListFolder(settings.dataPath, directory);
        ShowFiles({name});
        ClickTab(1);
    }
    void ClickTab(int index) {
        auto* tabs = FindIn<QTabBar>(panel, "tabPanel");
        QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(index).center());
    }
    QComboBox* References() { return FindIn<QComboBox>(panel, "cboReference"); }
    std::string Said() {
        return FindIn<QTextEdit>(panel, "txtCompared")->toPlainText().toStdString();
    }
    void TypeIn(const char* box, const char* text) {
        auto* edit = FindIn<QLineEdit>(panel, box);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, QLatin1String(text));
    }
};

TEST_F(ComparedRecords, OffersTheOldestOfTheSerialNumberByItself) {
    AddMade("NOW", {});
    AddMade("FIRST", {"03/07/15", "77", 1 / 0.95});
    AddMade("LATER", {"03/07/19"});
    AddMade("STRANGER", {"03/07/05", "78"});
    ShowCompared("NOW");
    EXPECT_EQ(References()->currentText(),
              u"FIRST   03/07/15   the oldest of this serial number"_s);
    EXPECT_EQ(References()->findText(u"NOW"_s, Qt::MatchStartsWith), -1) << "not with itself";
    EXPECT_THAT(Said(), AllOf(StartsWith("At "), HasSubstr("the voltage is 5.0 % below the"),
                              HasSubstr("Below the knee"), HasSubstr("Above the knee"),
                              HasSubstr("The kneepoint is 5.0 % below the reference's")));
    EXPECT_EQ(TextOf(panel, "lblCompared"), "Test 1 against:");
    // Back on the record's own tab everything is as it was.
    ClickTab(0);
    EXPECT_FALSE(References()->isVisible());
    EXPECT_TRUE(FindIn<QTableWidget>(panel, "tblTests")->isVisible());
}

TEST_F(ComparedRecords, HasNoVerdictWithoutALimit) {
    AddMade("NOW", {});
    AddMade("FIRST", {"03/07/15", "77", 1 / 0.95});
    ShowCompared("NOW");
    EXPECT_THAT(Said(), Not(HasSubstr("limit")));
    TypeIn("txtLimit", "3");
    EXPECT_THAT(Said(), HasSubstr("beyond the limit of 3 %"));
    TypeIn("txtLimit", "7,5");
    EXPECT_THAT(Said(), AllOf(HasSubstr("the limit is 7.5 %"), Not(HasSubstr("beyond"))));
    EXPECT_EQ(settings.curveLimit, u"7,5"_s);
    // The record's ratio of 241.2 is 0.5 % above its nameplate's 240.
    TypeIn("txtRatioLimit", "0.2");
    EXPECT_THAT(Said(), AllOf(HasSubstr("The turns ratio is 0.50 % above the nameplate's, "),
                              HasSubstr("beyond the limit of 0.2 %")));
    EXPECT_EQ(settings.ratioLimit, u"0.2"_s);
    TypeIn("txtLimit", "");
    EXPECT_THAT(Said(), Not(HasSubstr("7.5")));
    RecordPanel next(prompts);
    next.OfferCompare(settings);
    EXPECT_EQ(FindIn<QLineEdit>(next, "txtRatioLimit")->text(), u"0.2"_s) << "it is kept";
}

TEST_F(ComparedRecords, ShowsBothCurvesAndTheBandOfTheLimit) {
    AddMade("NOW", {});
    AddMade("FIRST", {"03/07/15", "77", 1.25});
    ListFolder(settings.dataPath, directory);
    ShownRecords shown;
    const std::vector<ShownRecord> wanted{{File("NOW"), {}, {}}};
    shown.Read(wanted);
    settings.curveLimit = u"10"_s;
    CompareFacts facts(settings, nullptr);
    facts.Compare(shown, 0, settings.dataPath, KneeRule::Asa1050);
    const std::vector<ChartCurve> curves = facts.Curves();
    ASSERT_THAT(curves, SizeIs(4));
    EXPECT_EQ(curves[0].points, shown.Tests()[0].test->points);
    EXPECT_EQ(curves[1].name, u"FIRST Test 1"_s);
    for (std::size_t i = 0; i < curves[1].points.size(); ++i) {
        const double volts = curves[1].points[i].voltage;
        EXPECT_NEAR(volts, 1.25 * curves[0].points[i].voltage, 0.13);
        EXPECT_DOUBLE_EQ(curves[2].points[i].voltage, 0.9 * volts);
        EXPECT_DOUBLE_EQ(curves[3].points[i].voltage, 1.1 * volts);
    }
    EXPECT_EQ(curves[2].look, CurveLook::Faint);
}

TEST_F(ComparedRecords, ShowsTheKneepointsOfTheSerialNumberOverTheYears) {
    AddMade("NOW", {});
    AddMade("FIRST", {"03/07/15", "77", 1.25});
    AddMade("LATER", {"03/07/19", "77", 0.5});
    AddMade("STRANGER", {"03/07/05", "78"});
    ShowCompared("NOW");
    const std::string said = Said();
    const std::size_t begin = said.find("Smooth kneepoints of this serial number, ASA 10/50:");
    ASSERT_NE(begin, std::string::npos) << said;
    const std::string history = said.substr(begin);
    EXPECT_THAT(history, AllOf(Not(HasSubstr("STRANGER")), HasSubstr("\u00b1")));
    std::vector<double> volts;
    std::size_t at = 0;
    for (const char* name : {"FIRST", "LATER", "NOW"}) {
        at = history.find(name, at);
        ASSERT_NE(at, std::string::npos) << name << " of " << history;
        volts.push_back(
            std::strtod(history.c_str() + history.find_first_of("0123456789", at), nullptr));
    }
    EXPECT_NEAR(volts[0] / volts[2], 1.25, 0.002);
    EXPECT_NEAR(volts[1] / volts[2], 0.5, 0.002);
    DeleteFile(File("LATER"));
    DeleteFile(File("FIRST"));
    ListFolder(settings.dataPath, directory);
    ClickTab(0);
    ClickTab(1);
    EXPECT_THAT(Said(), Not(HasSubstr("Smooth kneepoints of"))) << "of one record there are none";
}

TEST_F(ComparedRecords, KeepsTheOldestOfManyKneepoints) {
    AddMade("NOW", {});
    for (int year = 1; year <= 14; ++year) {
        const std::string date = year < 10 ? "03/07/0" : "03/07/";
        AddMade("Y" + std::to_string(100 + year), {(date + std::to_string(year)).c_str()});
    }
    ShowCompared("NOW");
    const std::string history = Said().substr(Said().find("Smooth kneepoints"));
    EXPECT_EQ(std::count(history.begin(), history.end(), '/'), 2 * 12 + 1) << "and ASA 10/50";
    for (const char* name : {"Y101", "Y105", "Y114", "NOW"})
        EXPECT_THAT(history, HasSubstr(name));
    EXPECT_THAT(history, Not(HasSubstr("Y104")));
}

TEST_F(ComparedRecords, TheOtherPhasesAreOffered) {
    ShowCompared("THREE");
    References()->setFocus();
    EXPECT_EQ(References()->currentText(), u"Test 2"_s);
    EXPECT_THAT(Said(), HasSubstr("below the reference"));
    QTest::keyClick(References(), Qt::Key_Down);
    EXPECT_EQ(References()->currentText(), u"Test 3"_s);
    QTest::keyClick(References(), Qt::Key_Down);
    EXPECT_EQ(References()->currentText(), u"ONE   03/07/24   Hilltop"_s);
    // What is chosen stays so for the next record.
    ShowFiles({"STRAIGHT"});
    EXPECT_EQ(References()->currentText(), u"ONE   03/07/24   Hilltop"_s);
}

TEST_F(ComparedRecords, ATestWithoutACurveIsNotOffered) {
    Add("RATIO", Curve(SmoothCurve(150), 1) + Curve({}, 2) + Curve(SmoothCurve(160), 3));
    ShowCompared("RATIO");
    EXPECT_EQ(References()->currentText(), u"Test 3"_s);
    EXPECT_EQ(References()->findText(u"Test 2"_s), -1);
}

TEST_F(ComparedRecords, SaysWhyTwoCurvesAreNotCompared) {
    Add("FEW", Curve(ThreePoints(), 1));
    ListFolder(settings.dataPath, directory);
    ShowFiles({"FEW"});
    ClickTab(1);
    References()->setCurrentIndex(References()->findText(u"ONE"_s, Qt::MatchStartsWith));
    EXPECT_THAT(Said(), StartsWith("The curves are not compared: "));
    EXPECT_THAT(Said(), Not(HasSubstr("knee\n"))) << "no table";
    EXPECT_THAT(Said(), Not(HasSubstr("The kneepoint")));
}

TEST_F(ComparedRecords, SaysThatThereIsNothingElse) {
    for (const char* name : {"STRAIGHT", "THREE"})
        DeleteFile(File(name));
    ShowCompared("ONE");
    EXPECT_THAT(Said(), StartsWith("There is no other test to compare it with."));
    EXPECT_FALSE(References()->isEnabled());
}

TEST_F(ComparedRecords, ADamagedReferenceIsSaid) {
    AddMade("NOW", {});
    AddMade("FIRST", {"03/07/15"});
    ShowCompared("NOW");
    const std::string bytes = ReadWholeFile(File("FIRST"));
    ReplaceFile(File("FIRST"), bytes.substr(0, bytes.size() / 2));
    ClickTab(0);
    ClickTab(1);
    EXPECT_THAT(Said(), StartsWith("FIRST"));
    EXPECT_THAT(Said(), Not(HasSubstr("the reference")));
}

TEST_F(ComparedRecords, IsReachedByTheTabKeyFromTopToBottom) {
    EXPECT_THAT(TabOrderOf(panel), IsEmpty()) << "no record, no tabs";
    AddMade("NOW", {});
    ShowCompared("NOW");
    const std::vector<std::string> order = TabOrderOf(panel);
    const auto place = [&](const char* name) {
        return std::find(order.begin(), order.end(), name) - order.begin();
    };
    const char* before = "tabPanel";
    for (const char* name :
         {"cboReference", "txtLimit", "txtRatioLimit", "txtCompared", "cmdSavePng"}) {
        EXPECT_LT(place(before), place(name)) << name;
        before = name;
    }
    EXPECT_TRUE(MnemonicsAreUnique(panel));
    EXPECT_THAT(CutTextsOf(panel), IsEmpty());
}

}  // namespace
}  // namespace davo::test
