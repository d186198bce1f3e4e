// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/compare_facts.h"

#include <QComboBox>
#include <QDialog>
#include <QFileInfo>
#include <QScrollBar>
#include <QTabBar>
#include <QTextEdit>
#include <cstdio>
#include <cstdlib>

#include "records/nameplate_file.h"
#include "tests/curves/panel_test.h"
#include "tests/support/pause.h"

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
    EXPECT_EQ(TextOf(panel, "lblCompared"), "Test 1 aga&inst:");
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
    CompareFacts facts(settings, prompts, nullptr);
    facts.Compare(shown, 0, settings.dataPath, KneeRule::Asa1050);
    const std::vector<ChartCurve> curves = facts.Curves();
    ASSERT_THAT(curves, SizeIs(3));
    const std::size_t count = curves[1].points.size();
    ASSERT_THAT(curves[2].points, SizeIs(2 * count)) << "there and back";
    EXPECT_EQ(curves[0].points, shown.Tests()[0].test->points);
    EXPECT_EQ(curves[1].name, u"FIRST Test 1"_s);
    for (std::size_t i = 0; i < curves[1].points.size(); ++i) {
        const double volts = curves[1].points[i].voltage;
        EXPECT_NEAR(volts, 1.25 * curves[0].points[i].voltage, 0.13);
        const CurvePoint& above = curves[2].points[i];
        const CurvePoint& below = curves[2].points[2 * count - 1 - i];
        EXPECT_DOUBLE_EQ(above.voltage, 1.1 * volts);
        EXPECT_DOUBLE_EQ(below.voltage, 0.9 * volts);
        EXPECT_EQ(above.current, curves[1].points[i].current);
        EXPECT_EQ(below.current, curves[1].points[i].current);
    }
    EXPECT_EQ(curves[2].look, CurveLook::Band);
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

TEST_F(ComparedRecords, ATestWithoutACurveHasItsRatioOnly) {
    AddMade("FIRST", {"03/07/15", "00012345"});
    Add("RATIO", Curve({}, 1));
    ShowCompared("RATIO");
    EXPECT_THAT(Said(), StartsWith("The test has no curve.\nThe turns ratio is 0.50 % above"));
    EXPECT_THAT(Said(), HasSubstr("Smooth kneepoints of this serial number"));
    TypeIn("txtLimit", "5");
    EXPECT_THAT(Said(), Not(HasSubstr("reference")));
    prompts.files = {folder.Path("ratio.html")};
    Press("cmdSavePdf");
    EXPECT_THAT(ReadWholeFile(folder.Path("ratio.html")),
                HasSubstr(">Comparison</th></tr>\n<tr><td>The test has no curve.<"));
}

TEST_F(ComparedRecords, ANumberAndItsUnitAreOnOneLine) {
    AddMade("NOW", {});
    AddMade("FIRST", {"03/07/15", "77", 1 / 0.95});
    ShowCompared("NOW");
    const QString html = FindIn<QTextEdit>(panel, "txtCompared")->toHtml();
    static const QRegularExpression number(u"[0-9](.)[%AV]"_s);
    int found = 0;
    for (auto match = number.globalMatch(html); match.hasNext(); ++found)
        EXPECT_EQ(match.next().captured(1), QString(QChar::Nbsp));
    EXPECT_GE(found, 10);
}

TEST_F(ComparedRecords, WhatNobodyChoseDoesNotStay) {
    AddMade("A", {"03/07/23", "78"});
    AddMade("FIRST", {"03/07/15", "77", 1 / 0.95});
    AddMade("LATER", {"03/07/19"});
    AddMade("NOW", {});
    ShowCompared("A");
    EXPECT_EQ(References()->currentText(), u"NOW   03/07/24   Hilltop"_s) << "the newest";
    ShowFiles({"LATER"});
    EXPECT_THAT(References()->currentText().toStdString(),
                EndsWith("oldest of this serial number"));
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
    for (const char* name : {"cboReference", "cmdAddCurve", "txtLimit", "txtRatioLimit",
                             "cmdNameplate", "txtCompared", "cmdSavePng"}) {
        EXPECT_LT(place(before), place(name)) << name;
        before = name;
    }
    EXPECT_THAT(CutTextsOf(panel), IsEmpty());
}

// 14 points, on a panel as narrow as it can be: no letter is cut, and nothing is beside the text.
TEST_F(ComparedRecords, CutsNoLargeLetters) {
    AddMade("FIRST", {"03/07/15", "77", 1});
    AddMade("LAST", {"03/07/24", "77", 0.9});
    ListFolder(settings.dataPath, directory);
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSizeF(14);
    QApplication::setFont(large);
    {
        RecordPanel narrow(prompts);
        narrow.OfferCompare(settings);
        narrow.show();
        narrow.ShowRecords({File("LAST")});
        auto* tabs = FindIn<QTabBar>(narrow, "tabPanel");
        QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(1).center());
        FindIn<QLineEdit>(narrow, "txtLimit")->setText(u"99.99"_s);
        narrow.resize(1, 620);
        const auto* said = FindIn<QTextEdit>(narrow, "txtCompared");
        const auto* limit = FindIn<QLineEdit>(narrow, "txtLimit");
        EXPECT_TRUE(Until([&] { return said->isVisible() && CutTextsOf(narrow).empty(); }))
            << ::testing::PrintToString(CutTextsOf(narrow));
        EXPECT_EQ(said->horizontalScrollBar()->maximum(), 0) << narrow.width();
        EXPECT_GE(said->height(), 2 * said->fontMetrics().lineSpacing());
        EXPECT_GE(limit->width(), limit->fontMetrics().horizontalAdvance(limit->text()) + 8);
    }
    QApplication::setFont(usual);
}

TEST_F(ComparedRecords, IsForGlovesAndForTheKeyboard) {
    AddMade("A & B", {});
    ShowCompared("A & B");
    panel.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
    for (const char* name :
         {"cboReference", "cmdAddCurve", "txtLimit", "txtRatioLimit", "cmdNameplate", "cmdSavePng"})
        EXPECT_GE(FindIn<QWidget>(panel, name)->height(), 40) << name;
    EXPECT_TRUE(MnemonicsAreUnique(panel)) << ::testing::PrintToString(MnemonicsOf(panel));
    for (const auto& [key, name] :
         {std::pair(Qt::Key_I, "cboReference"), std::pair(Qt::Key_V, "txtLimit"),
          std::pair(Qt::Key_O, "txtRatioLimit")}) {
        QTest::keyClick(&panel, key, Qt::AltModifier);
        EXPECT_TRUE(FindIn<QWidget>(panel, name)->hasFocus()) << name;
    }
    prompts.files = {QString()};
    QTest::keyClick(&panel, Qt::Key_U, Qt::AltModifier);
    EXPECT_TRUE(Until([this] { return prompts.shown.size() == 1; })) << "a curve is asked for";
    QTest::keyClick(&panel, Qt::Key_N, Qt::AltModifier);
    EXPECT_TRUE(Until([this] { return panel.findChild<QDialog*>(u"frmNameplate"_s) != nullptr; }));
}

TEST_F(ComparedRecords, ShowsAnAmpersandOfARecord) {
    AddMade("A & B", {});
    AddMade("OTHER", {});
    ListFolder(settings.dataPath, directory);
    ShowFiles({"A & B", "OTHER"});
    ClickTab(1);
    EXPECT_EQ(TextOf(panel, "lblCompared"), "A && B Test 1 aga&inst:") << "one ampersand is shown";
}

// --- A maker's curve ----------------------------------------------------------------------------

class MakersCurve : public ComparedRecords {
  protected:
    MakersCurve() { AddMade("NOW", {}); }
    // The curve of NOW with all voltages times 1.25, as a maker's table.
    QString Table(const char* name, const std::string& heading, double amperes = 1) {
        std::string text = heading;
        for (const auto& [current, voltage] : PlainCurve())
            text += std::to_string(amperes * std::strtod(current.c_str(), nullptr)) + ";" +
                    std::to_string(1.25 * std::strtod(voltage.c_str(), nullptr)) + "\n";
        std::replace(text.begin(), text.end(), '.', ',');
        QDir().mkpath(folder.Path("mails"));
        const QString path = folder.Path("mails/") + QLatin1String(name);
        ReplaceFile(path, text);
        return path;
    }
    void AddTable(const QString& path) {
        prompts.files = {path};
        Press("cmdAddCurve");
    }
    QStringList Curves() const {
        return QDir(settings.dataPath).entryList({u"*.csv"_s}, QDir::Files, QDir::Name);
    }
};

TEST_F(MakersCurve, IsKeptBesideTheRecordsAndComparedAtOnce) {
    ShowCompared("NOW");
    const int records = directory.recordCount;
    AddTable(Table("Acme 600.txt.csv", "I in mA;U in V\n", 1000));
    EXPECT_EQ(prompts.shown,
              std::vector<QString>{QFileInfo(settings.dataPath).absolutePath() + u"|*.csv"_s});
    EXPECT_EQ(References()->currentText(), u"Acme 600_txt   maker's curve"_s);
    EXPECT_THAT(Said(), HasSubstr("the voltage is 20.0 % below the reference"));
    EXPECT_THAT(Said(), HasSubstr("The kneepoint is 20.0 % below the reference's"));
    EXPECT_EQ(Curves(), QStringList(u"Acme 600_txt.reference.csv"_s));
    ListFolder(settings.dataPath, directory);
    EXPECT_EQ(directory.recordCount, records) << "it is no record";
    EXPECT_THAT(directory.listing.skipped, IsEmpty());
    ShowFiles({"ONE"});
    EXPECT_NE(References()->findText(u"Acme 600_txt   maker's curve"_s), -1) << "of all records";
    // A table that the panel saved there is none.
    ReplaceFile(settings.dataPath + u"NOW.csv"_s, "record,test\n");
    ShowFiles({"NOW"});
    EXPECT_EQ(References()->findText(u"NOW"_s, Qt::MatchStartsWith), -1);
}

TEST_F(MakersCurve, AsksForUnitsThatTheFileDoesNotName) {
    ShowCompared("NOW");
    prompts.inputs = {u"volts and amperes"_s, u"mA; V"_s};
    AddTable(Table("plain.csv", "", 1000));
    ASSERT_THAT(prompts.shown, SizeIs(3)) << "once more, as the first answer names none";
    EXPECT_EQ(prompts.shown.back().toStdString(),
              "Units|The file does not name the units of its two columns. Type them in their "
              "order, such as A; V or kV; mA.");
    EXPECT_THAT(Said(), HasSubstr("the voltage is 20.0 % below the reference"));
    prompts.inputs = {std::nullopt};
    AddTable(Table("other.csv", "Strom;Spannung\n"));
    EXPECT_EQ(Curves(), QStringList(u"plain.reference.csv"_s)) << "cancelled";
}

TEST_F(MakersCurve, ADamagedOneIsSaidAndChangesNothing) {
    ShowCompared("NOW");
    const std::string said = Said();
    const QString path = folder.Path("bad.csv");
    ReplaceFile(path, "A;V\n0,1;100\n0,2;\n");
    AddTable(path);
    EXPECT_EQ(prompts.shown.back().toStdString(),
              "The curve was not added. Run-time error '13': Type mismatch: line 3");
    EXPECT_EQ(Said(), said);
    EXPECT_THAT(Curves(), IsEmpty());
    AddTable({});
    EXPECT_THAT(prompts.shown, SizeIs(3)) << "nothing chosen, nothing said";
}

TEST_F(MakersCurve, NoneIsOverwritten) {
    ShowCompared("NOW");
    AddTable(Table("core.csv", "A;V\n"));
    const std::string first = ReadWholeFile(settings.dataPath + u"core.reference.csv"_s);
    AddTable(Table("core.csv", "A;V\n", 2));
    EXPECT_EQ(References()->currentText(), u"core 2   maker's curve"_s);
    EXPECT_EQ(Curves(), (QStringList{u"core 2.reference.csv"_s, u"core.reference.csv"_s}));
    EXPECT_EQ(ReadWholeFile(settings.dataPath + u"core.reference.csv"_s), first);
    DeleteFile(settings.dataPath + u"core 2.reference.csv"_s);
    ClickTab(0);
    ClickTab(1);
    EXPECT_EQ(References()->findText(u"core 2   maker's curve"_s), -1);
}

TEST_F(MakersCurve, IsKeptWhereTheRecordIsGoneMeanwhile) {
    AddMade("OTHER", {});
    ShowCompared("NOW");
    DeleteFile(File("NOW"));
    AddTable(Table("core.csv", "A;V\n"));
    EXPECT_THAT(TextOf(panel, "lblTrouble"), StartsWith("NOW cannot be shown: "));
    EXPECT_FALSE(References()->isVisible());
    EXPECT_EQ(Curves(), QStringList(u"core.reference.csv"_s));
    ShowFiles({"OTHER"});
    ClickTab(1);
    EXPECT_EQ(References()->currentText(), u"core   maker's curve"_s);
    EXPECT_THAT(Said(), HasSubstr("the voltage is 20.0 % below the reference"));
}

// --- Ratio and polarity -------------------------------------------------------------------------

TEST_F(ComparedRecords, SaysTheSignOfRatioAndPolarity) {
    RecordParts parts;
    parts.points = PlainCurve();
    parts.measuredRatio = "239.40";
    parts.polarity = "OUT OF PHASE";
    Add("LOW", RecordText(parts));
    ShowCompared("LOW");
    EXPECT_THAT(Said(), HasSubstr("The turns ratio is 0.25 % below the nameplate's"));
    EXPECT_THAT(Said(), HasSubstr("The polarity is out of phase (-)."));
}

// --- Nameplate and taps -------------------------------------------------------------------------

class NameplateWindow : public ComparedRecords {
  protected:
    QDialog& Open() {
        Press("cmdNameplate");
        return *FindIn<QDialog>(panel, "frmNameplate");
    }
    static void Fill(QDialog& dialog, const char* box, const char* text) {
        FindIn<QLineEdit>(dialog, box)->setText(QLatin1String(text));
    }
    void Save(QDialog& dialog) {
        ClickIn(dialog, "cmdKeep");
        test::Pause(1);
    }
    bool IsOpen() { return panel.findChild<QDialog*>(u"frmNameplate"_s) != nullptr; }
    std::vector<std::string> BoxesOf(const QDialog& dialog) {
        std::vector<std::string> names;
        for (const QLineEdit* box : dialog.findChildren<QLineEdit*>())
            if (box->isVisible()) names.push_back(box->objectName().toStdString());
        return names;
    }
    std::string Html() { return FindIn<QTextEdit>(panel, "txtCompared")->toHtml().toStdString(); }
};

TEST_F(NameplateWindow, IsTypedOnceForASerialNumber) {
    AddMade("NOW", {"03/07/24", "AB 7"});
    AddMade("LATER", {"03/07/25", "ab  7"});
    AddMade("OTHER", {"03/07/25", "AB 8"});
    ShowCompared("NOW");
    EXPECT_THAT(Said(), Not(HasSubstr("Nameplate")));
    QDialog& dialog = Open();
    EXPECT_EQ(dialog.windowTitle(), u"Nameplate of Serial # AB 7"_s);
    EXPECT_THAT(CutTextsOf(dialog), IsEmpty());
    EXPECT_TRUE(MnemonicsAreUnique(dialog));
    for (const char* name : {"cmdKeep", "cmdCancel"}) {
        const auto* button = FindIn<QPushButton>(dialog, name);
        EXPECT_FALSE(QKeySequence::mnemonic(button->text()).isEmpty()) << name;
        EXPECT_GE(button->height(), 40) << name;
    }
    EXPECT_THAT(TabOrderOf(dialog),
                ElementsAre("cboClass", "txtSecondary", "txtRct", "txtEk", "txtIe", "txtTurnsRatio",
                            "txtRatioWithin", "txtTaps", "cmdKeep", "cmdCancel"));
    Fill(dialog, "txtEk", "250,5");
    Fill(dialog, "txtIe", "0.5");
    Fill(dialog, "txtTurnsRatio", "240");
    Save(dialog);
    EXPECT_FALSE(IsOpen());
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_THAT(Said(), AllOf(HasSubstr("Nameplate, class PX"),
                              HasSubstr("not less than the nameplate's 250.5 V."),
                              HasSubstr("The exciting current at the nameplate's 250.5 V is "),
                              HasSubstr("0.50 % above the nameplate's, beyond the limit of 0.25 %"),
                              HasSubstr("The class PX is not passed as a whole: ")));
    ShowFiles({"OTHER"});
    EXPECT_THAT(Said(), Not(HasSubstr("Nameplate, class")));
    ShowFiles({"LATER"});
    EXPECT_THAT(Said(), HasSubstr("Nameplate, class PX"));
    EXPECT_EQ(FindIn<QLineEdit>(Open(), "txtEk")->text(), u"250.5"_s);
    EXPECT_EQ(References()->findText(u"NOW"_s, Qt::MatchStartsWith), 0) << "the oldest";
}

TEST_F(NameplateWindow, TheCertificateSaysWhatTheTabSays) {
    AddMade("NOW", {});
    AddMade("FIRST", {"03/07/15", "77", 1 / 0.95});
    ShowCompared("NOW");
    TypeIn("txtLimit", "3");
    QDialog& dialog = Open();
    Fill(dialog, "txtEk", "1000");
    Fill(dialog, "txtTaps", "600:5");
    Save(dialog);
    prompts.files = {folder.Path("compared.html"), folder.Path("plain.html")};
    Press("cmdSavePdf");
    ClickTab(0);
    Press("cmdSavePdf");
    const std::string page = ReadWholeFile(folder.Path("compared.html"));
    const std::string cell = "<tr><td>";
    EXPECT_THAT(page,
                HasSubstr(">Comparison</th></tr>\n" + cell + "Test 1 against: FIRST Test 1<"));
    for (const std::string sentence :
         {"At ", "The kneepoint is 5.0 % below the reference", "The turns ratio is 0.50 % above",
          "The polarity is in phase",
          "Nameplate, class PX:", "The knee point e.m.f. (10 % / 50 %) is ",
          "Taps, ASA 10/50:", "The kneepoint of 600:5 by its turns: "})
        EXPECT_THAT(page, HasSubstr(cell + sentence));
    EXPECT_THAT(page, HasSubstr("beyond the limit of 3 %"));
    EXPECT_THAT(ReadWholeFile(folder.Path("plain.html")), Not(HasSubstr(">Comparison<")));
}

TEST_F(NameplateWindow, ShowsTheFieldsOfItsClassOnly) {
    AddMade("NOW", {});
    ShowCompared("NOW");
    QDialog& dialog = Open();
    auto* kind = FindIn<QComboBox>(dialog, "cboClass");
    EXPECT_THAT(BoxesOf(dialog), ElementsAre("txtSecondary", "txtRct", "txtEk", "txtIe",
                                             "txtTurnsRatio", "txtRatioWithin", "txtTaps"));
    Fill(dialog, "txtEk", "300");
    kind->setCurrentText(u"10P"_s);
    EXPECT_THAT(BoxesOf(dialog), ElementsAre("txtSecondary", "txtRct", "txtAlf", "txtBurden",
                                             "txtConnected", "txtTaps"));
    Fill(dialog, "txtRct", "0.5");
    Fill(dialog, "txtAlf", "10");
    Fill(dialog, "txtBurden", "15");
    EXPECT_THAT(CutTextsOf(dialog), IsEmpty());
    Save(dialog);
    EXPECT_THAT(Said(), AllOf(HasSubstr("Nameplate, class 10P10"),
                              HasSubstr("The accuracy limit factor at the rated burden is "),
                              HasSubstr("leakage flux is not seen"),
                              HasSubstr("The class 10P10 is not judged: this instrument measures "
                                        "the turns ratio by voltage, not the error of the "
                                        "current.")));
    EXPECT_EQ(ReadNameplate(settings.dataPath, "77")[3], "") << "Ek is none of 10P";
    QDialog& again = Open();
    EXPECT_EQ(FindIn<QComboBox>(again, "cboClass")->currentText(), u"10P"_s);
    FindIn<QComboBox>(again, "cboClass")->setCurrentText(u"C"_s);
    EXPECT_THAT(BoxesOf(again), ElementsAre("txtSecondary", "txtRct", "txtCVoltage", "txtTaps"));
    // Nothing typed takes it away.
    Fill(again, "txtRct", "");
    Save(again);
    EXPECT_THAT(Said(), Not(HasSubstr("Nameplate, class")));
}

TEST_F(NameplateWindow, TakesNoTextThatIsNoNumber) {
    AddMade("NOW", {});
    ShowCompared("NOW");
    QDialog& dialog = Open();
    for (const char* wrong : {"400 V", "0", "-1", "1e10", "\u03a9"}) {
        FindIn<QLineEdit>(dialog, "txtEk")->setText(QString::fromUtf8(wrong));
        Save(dialog);
        ASSERT_TRUE(IsOpen()) << wrong;
        EXPECT_EQ(prompts.shown.back(),
                  u"Knee point e.m.f. Ek (V): Type a number above zero, or nothing."_s);
    }
    Fill(dialog, "txtEk", "400");
    Fill(dialog, "txtTaps", "1200/5 and 600");
    Save(dialog);
    EXPECT_EQ(prompts.shown.back(), u"Type the taps as currents, such as 1200:5, 600:5."_s);
    EXPECT_EQ(ReadNameplate(settings.dataPath, "77"), NameplateTexts());
    ClickIn(dialog, "cmdCancel");
    test::Pause(1);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(ReadNameplate(settings.dataPath, "77"), NameplateTexts());
}

TEST_F(NameplateWindow, NeedsASerialNumber) {
    AddMade("NOW", {"03/07/24", ""});
    ShowCompared("NOW");
    auto* button = FindIn<QPushButton>(panel, "cmdNameplate");
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(button->toolTip(), u"The record has no serial number."_s);
    ShowFiles({"ONE"});
    EXPECT_TRUE(button->isEnabled());
}

TEST_F(NameplateWindow, ADamagedFileIsSaidAndLosesNothing) {
    AddMade("NOW", {});
    const std::string foreign = "somebody's table\r\n";
    const QString path = settings.dataPath + QLatin1String(kNameplateFileName);
    ReplaceFile(path, foreign);
    ShowCompared("NOW");
    const char* const error = "Run-time error '13': Type mismatch: nameplates.tsv, line 1";
    EXPECT_THAT(Said(), HasSubstr(error));
    Press("cmdNameplate");
    EXPECT_FALSE(IsOpen());
    ASSERT_THAT(prompts.shown, SizeIs(1));
    EXPECT_EQ(prompts.shown.front().toStdString(), error);
    DeleteFile(path);
    QDialog& dialog = Open();
    Fill(dialog, "txtEk", "400");
    ReplaceFile(path, foreign);
    Save(dialog);
    EXPECT_TRUE(IsOpen()) << "what was typed is still there";
    EXPECT_EQ(prompts.shown.back().toStdString(), error);
    EXPECT_EQ(ReadWholeFile(path), foreign);
}

TEST_F(NameplateWindow, SaysWhatTheTapsAre) {
    // Test 2 is the half winding as it must be, test 3 the same with 12 % more current.
    std::string tests = Curve(PlainCurve(), 1);
    for (const int number : {2, 3}) {
        RecordParts parts;
        parts.number = " " + std::to_string(number);
        parts.nameplate = "120 (600:5)";
        parts.points = PlainCurve();
        for (auto& [current, voltage] : parts.points) {
            char text[32];
            const double factor = number == 2 ? 2 : 2.24;
            std::snprintf(text, sizeof text, "%.4f",
                          factor * std::strtod(current.c_str(), nullptr));
            current = text;
            std::snprintf(text, sizeof text, "%.1f", 0.5 * std::strtod(voltage.c_str(), nullptr));
            voltage = text;
        }
        tests += RecordText(parts);
    }
    Add("TAPS", tests);
    ShowCompared("TAPS");
    QDialog& dialog = Open();
    Fill(dialog, "txtTaps", "1200:5; 600/5, 6000:5");
    Save(dialog);
    const std::string said = Said();
    EXPECT_THAT(
        said,
        AllOf(HasSubstr("Taps, ASA 10/50"), HasSubstr("The kneepoint of 600:5 by its turns: "),
              HasSubstr("The kneepoint of 6000:5 by its turns: "),
              HasSubstr("This instrument cannot saturate 6000:5"),
              HasSubstr("the voltage of 600:5 (Test 2) is "), HasSubstr("of 600:5 (Test 3) is ")));
    EXPECT_THAT(said, Not(HasSubstr("Nameplate, class"))) << "no class was typed";
    EXPECT_THAT(said, Not(HasSubstr("of 1200:5"))) << "that is the test itself";
    const std::string second = said.substr(said.find("(Test 2)"));
    EXPECT_THAT(second.substr(0, second.find('\n')), HasSubstr("; the limit is 5 %"));
    const std::string third = said.substr(said.find("(Test 3)"));
    EXPECT_THAT(third.substr(0, third.find('\n')), HasSubstr("beyond the limit of 5 %"));
    EXPECT_THAT(Html(), HasSubstr("color:#")) << "verdicts have their colours";
}

TEST_F(NameplateWindow, SaysWhyTapsAreNotKnown) {
    RecordParts parts;
    parts.points = PlainCurve();
    parts.nameplate = "N/A";
    Add("NORATIO", RecordText(parts));
    ShowCompared("NORATIO");
    QDialog& dialog = Open();
    Fill(dialog, "txtTaps", "600:5");
    Save(dialog);
    EXPECT_THAT(Said(), HasSubstr("The kneepoints of the taps are not known: this test has no "
                                  "nameplate ratio or no curve."));
}

TEST_F(ComparedRecords, FollowsTheTestThatAWindowChooses) {
    ShowCompared("THREE");
    EXPECT_EQ(TextOf(panel, "lblCompared"), "Test 1 aga&inst:");
    panel.ChooseTest(1);
    EXPECT_EQ(TextOf(panel, "lblCompared"), "Test 2 aga&inst:");
    EXPECT_EQ(References()->currentText(), u"Test 1"_s);
}

}  // namespace
}  // namespace davo::test
