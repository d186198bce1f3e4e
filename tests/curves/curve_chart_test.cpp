// SPDX-License-Identifier: GPL-3.0-or-later
#include "curves/curve_chart.h"

#include <QApplication>
#include <QFontMetrics>
#include <QImage>
#include <QLabel>
#include <QTest>
#include <QWheelEvent>
#include <cmath>

#include "common/files.h"
#include "common/run_time_error.h"
#include "curves/chart_look.h"
#include "curves/knee_marks.h"
#include "tests/support/controls.h"
#include "tests/support/pause.h"
#include "tests/support/program_output.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

TEST(ChartColours, StandOutFromEveryPalette) {
    for (const auto& [base, text] : std::vector<std::pair<QColor, QColor>>{
             {Qt::white, Qt::black}, {QColor(28, 28, 30), Qt::white}, {Qt::black, Qt::yellow}}) {
        QPalette palette;
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::Text, text);
        const ChartColours colours = ColoursOn(palette);
        EXPECT_EQ(colours.base, base);
        EXPECT_EQ(colours.text, text);
        for (const QColor& colour : colours.curves)
            EXPECT_GE(Contrast(colour, base), 4.5);
        EXPECT_LT(Contrast(colours.faint, base), Contrast(text, base) / 2);
        EXPECT_GE(Contrast(colours.faint, base), 2);
        EXPECT_LT(Contrast(colours.faint, base), Contrast(colours.curves.front(), base));
    }
    EXPECT_NEAR(Contrast(Qt::white, Qt::black), 21, 0.01);
}

TEST(KneeMarks, AreInTheTableInTheOrderOfTheirHeight) {
    const QPolygonF curve({{20, 380}, {150, 200}, {200, 150}, {250, 120}, {580, 90}});
    std::vector<PlacedKnee> knees = {
        {{KneeRule::Ieee30, {0.1, 90}, u"90.0 V, 0.1 A"_s}, {150, 200}, {}, {}},
        {{KneeRule::Asa1050, {0.3, 120}, u"120.0 V, 0.3 A"_s}, {250, 120}, {}, {}},
        {{KneeRule::Ieee45, {0.2, 110}, u"110.0 V, 0.2 A"_s}, {200, 150}, {}, {}}};
    const QRectF area(0, 0, 600, 400);
    PlaceKnees(knees, {curve}, QFontMetrics(QApplication::font()), area);
    std::vector<KneeRule> order;
    for (const PlacedKnee& placed : knees)
        order.push_back(placed.knee.rule);
    EXPECT_THAT(order, ElementsAre(KneeRule::Asa1050, KneeRule::Ieee45, KneeRule::Ieee30));
    EXPECT_EQ(knees.back().row.bottomRight(), area.bottomRight());
    for (std::size_t i = 1; i < knees.size(); ++i)
        EXPECT_EQ(knees.at(i).row.top(), knees.at(i - 1).row.bottom());
    // Where the curve itself is in that corner, the table is in the other one.
    const QPolygonF low({{20, 390}, {300, 380}, {580, 350}});
    for (PlacedKnee& placed : knees)
        placed.at = {300, 380};
    PlaceKnees(knees, {low}, QFontMetrics(QApplication::font()), area);
    EXPECT_EQ(knees.front().row.topLeft(), area.topLeft());
}

TEST(Legend, IsWhereItHidesNoPoint) {
    const QRectF area(10, 10, 600, 400);
    const QSizeF size(200, 100);
    // A curve through the upper left corner, the table of its kneepoint at the lower right.
    const QPolygonF curve({{20, 380}, {30, 200}, {60, 60}, {150, 40}, {600, 20}});
    std::vector<PlacedKnee> knees = {
        {{KneeRule::Ieee30, {0.1, 90}, u"90.0 V, 0.1 A"_s}, {60, 60}, {}, {}}};
    PlaceKnees(knees, {curve}, QFontMetrics(QApplication::font()), area);
    const QRectF place = LegendPlace(size, area, knees, {curve});
    EXPECT_TRUE(area.contains(place));
    for (const QPointF& point : curve)
        EXPECT_FALSE(place.contains(point)) << point.x();
    EXPECT_FALSE(place.intersects(knees.front().row));
    EXPECT_FALSE(place.intersects(MarkerOf(knees.front())));
    // The upper left corner when it is free.
    EXPECT_EQ(LegendPlace(size, area, {}, {}).topLeft(), area.topLeft());
}

// A point's marker is larger than the point.
TEST(Legend, IsWhereItTouchesNoMarker) {
    const QRectF area(10, 10, 600, 400);
    const QPolygonF curve({{213, 60}, {100, 114}, {600, 300}});
    const QRectF place = LegendPlace({200, 100}, area, {}, {curve});
    for (const QPointF& point : curve)
        EXPECT_FALSE(place.adjusted(-5, -5, 5, 5).contains(point)) << point.x();
}

TEST(KneeMarks, HaveNoLineAcrossTheCurve) {
    // Falls back after its kneepoint: no corner can be reached from there.
    const QPolygonF around(
        {{300, 200}, {350, 200}, {350, 250}, {250, 250}, {250, 150}, {350, 150}});
    std::vector<PlacedKnee> knees = {
        {{KneeRule::Ieee30, {0.1, 90}, u"90.0 V, 0.1 A"_s}, {300, 200}, {}, {}}};
    PlaceKnees(knees, {around}, QFontMetrics(QApplication::font()), {0, 0, 600, 400});
    EXPECT_TRUE(knees.front().leader.isNull());
}

class Chart : public ::testing::Test {
  protected:
    Chart() {
        chart.resize(600, 450);
        chart.SetCurves({One()});
        chart.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&chart));
        test::Pause(20);
    }
    static ChartCurve One() {
        return {u"Test 1"_s,
                {{0, 5}, {0.02, 30}, {0.1, 100}, {2, 250}},
                {{KneeRule::Ieee30, {0.1, 100}, u"100.0 V, 0.100 A"_s},
                 {KneeRule::Asa1050, {0.11, 105}, u"105.0 V, 0.110 A"_s}},
                CurveLook::Normal};
    }
    QWidget* Plot() { return chart.findChild<QWidget*>(u"plotCurves"_s); }
    QString Said() { return chart.findChild<QLabel*>(u"lblCrosshair"_s)->text(); }
    void Key(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
        QTest::keyClick(Plot(), key, with);
    }
    void Wheel(QPointF at, int turn) {
        QWheelEvent event(at, Plot()->mapToGlobal(at), {}, {0, turn}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(Plot(), &event);
    }
    // Where the pointer meets a curve's point: the axes' frame is where the crosshair begins.
    bool PointUntil(const CurvePoint& wanted) {
        for (int x = 0; x < Plot()->width(); x += 6) {
            for (int y = 0; y < Plot()->height(); y += 6) {
                QTest::mouseMove(Plot(), QPoint(x, y));
                if (chart.AtCrosshair() && chart.AtCrosshair()->point == wanted) return true;
            }
        }
        return false;
    }

    CurveChart chart;
    TemporaryFolder folder;
};

TEST_F(Chart, ShowsEveryPoint) {
    EXPECT_LT(chart.Across().low, std::log10(0.02));
    EXPECT_GT(chart.Across().high, std::log10(2));
    EXPECT_LT(chart.Up().low, std::log10(30));
    EXPECT_GT(chart.Up().high, std::log10(250));
}

TEST_F(Chart, ThatIsOnlyLookedAtShowsWholeDecades) {
    chart.SetInteractive(false);
    test::Pause(20);
    EXPECT_EQ(chart.Across(), (LogSpan{-2, 1}));
    EXPECT_EQ(chart.Up(), (LogSpan{1, 3}));
}

TEST_F(Chart, PaintsOnceForManyChanges) {
    const int before = chart.Paints();
    for (int i = 0; i < 200; ++i)
        chart.SetCurves({One()});
    for (int i = 0; i < 200; ++i)
        chart.AppendPoint(0, {2 + i * 0.01, 251});
    EXPECT_EQ(chart.Paints(), before);
    test::Pause(100);
    EXPECT_GT(chart.Paints(), before);
    EXPECT_LE(chart.Paints(), before + 3);
}

TEST_F(Chart, ZoomsAndMovesByKeys) {
    const LogSpan wholeAcross = chart.Across();
    const LogSpan wholeUp = chart.Up();
    for (int i = 0; i < 3; ++i)
        Key(Qt::Key_Plus);
    EXPECT_LT(chart.Across().Length(), wholeAcross.Length());
    EXPECT_LT(chart.Up().Length(), wholeUp.Length());
    const LogSpan across = chart.Across();
    Key(Qt::Key_Right);
    EXPECT_GT(chart.Across().low, across.low);
    EXPECT_EQ(chart.Across().Length(), across.Length());
    Key(Qt::Key_Left);
    EXPECT_NEAR(chart.Across().low, across.low, 1e-12);
    const LogSpan up = chart.Up();
    Key(Qt::Key_Up);
    EXPECT_GT(chart.Up().low, up.low);
    Key(Qt::Key_Down);
    EXPECT_NEAR(chart.Up().low, up.low, 1e-12);
    for (int i = 0; i < 3; ++i)
        Key(Qt::Key_Minus);
    EXPECT_EQ(chart.Across(), wholeAcross);
    for (const Qt::Key all : {Qt::Key_0, Qt::Key_Home}) {
        Key(Qt::Key_Equal);
        Key(Qt::Key_Equal);
        EXPECT_LT(chart.Across().Length(), wholeAcross.Length());
        Key(all);
        EXPECT_EQ(chart.Across(), wholeAcross);
        EXPECT_EQ(chart.Up(), wholeUp);
    }
}

TEST_F(Chart, TheWheelZoomsAtThePointer) {
    const LogSpan across = chart.Across();
    const LogSpan up = chart.Up();
    Wheel({Plot()->width() * 0.95, Plot()->height() * 0.1}, 120);
    EXPECT_LT(chart.Across().Length(), across.Length());
    // What is near the pointer stays: the upper right corner.
    EXPECT_LT(across.high - chart.Across().high, chart.Across().low - across.low);
    EXPECT_LT(up.high - chart.Up().high, chart.Up().low - up.low);
    Wheel({10, 10}, -1200);
    EXPECT_EQ(chart.Across(), across);
}

TEST_F(Chart, ABandIsNothingToPointAt) {
    const ChartCurve band{{}, {{0.02, 28}, {2, 230}, {2, 270}, {0.02, 32}}, {}, CurveLook::Band};
    chart.SetCurves({One(), band});
    QTest::qWait(20);
    EXPECT_LT(chart.Up().low, std::log10(28)) << "and yet the axes hold it";
    for (const char* said : {"Test 1: 0.02 A, 30 V", "Test 1: 0.1 A, 100 V", "Test 1: 2 A, 250 V",
                             "Test 1: 2 A, 250 V"}) {
        ClickIn(chart, "cmdPointAfter");
        EXPECT_EQ(Said(), QLatin1String(said));
    }
}

// For gloves, and for who does not know the keys.
TEST_F(Chart, HasButtonsForZoomAndPoints) {
    const LogSpan across = chart.Across();
    const auto press = [this](const char* name) { ClickIn(chart, name); };
    press("cmdZoomIn");
    press("cmdZoomIn");
    const double length = chart.Across().Length();
    EXPECT_LT(length, across.Length());
    press("cmdZoomOut");
    EXPECT_GT(chart.Across().Length(), length);
    press("cmdShowAll");
    EXPECT_EQ(chart.Across(), across);
    press("cmdPointAfter");
    EXPECT_EQ(Said(), u"Test 1: 0.02 A, 30 V"_s);
    press("cmdPointAfter");
    press("cmdPointBefore");
    EXPECT_EQ(Said(), u"Test 1: 0.02 A, 30 V"_s);
    EXPECT_THAT(CutTextsOf(chart), IsEmpty());
    chart.SetInteractive(false);
    EXPECT_FALSE(FindIn<QWidget>(chart, "cmdZoomIn")->isVisible());
    EXPECT_FALSE(FindIn<QWidget>(chart, "lblCrosshair")->isVisible());
}

TEST_F(Chart, ThePointerReadsTheNearestPoint) {
    ASSERT_TRUE(PointUntil({0.1, 100}));
    EXPECT_EQ(Said(), u"Test 1: 0.1 A, 100 V"_s);
    ASSERT_TRUE(PointUntil({2, 250}));
    EXPECT_EQ(Said(), u"Test 1: 2 A, 250 V"_s);
    // A point at zero is not on the chart.
    EXPECT_FALSE(PointUntil({0, 5}));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(Plot(), &leave);
    EXPECT_EQ(chart.AtCrosshair(), std::nullopt);
    EXPECT_EQ(Said(), u"Point at a curve to read it."_s);
}

TEST_F(Chart, KeysStepFromPointToPoint) {
    ChartCurve other = One();
    other.name = u"Test 2"_s;
    other.points = {{0.5, 60}};
    chart.SetCurves({One(), other});
    std::vector<std::string> said;
    for (int i = 0; i < 5; ++i) {
        Key(Qt::Key_Right, Qt::ControlModifier);
        said.push_back(Said().toStdString());
    }
    EXPECT_THAT(said,
                ElementsAre("Test 1: 0.02 A, 30 V", "Test 1: 0.1 A, 100 V", "Test 1: 2 A, 250 V",
                            "Test 2: 0.5 A, 60 V", "Test 2: 0.5 A, 60 V"));
    Key(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(Said(), u"Test 1: 2 A, 250 V"_s);
    // A point outside of what is shown is brought into sight.
    for (int i = 0; i < 12; ++i)
        Key(Qt::Key_Plus);
    for (int i = 0; i < 2; ++i)
        Key(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(Said(), u"Test 1: 0.02 A, 30 V"_s);
    EXPECT_LE(chart.Across().low, std::log10(0.02));
    EXPECT_GE(chart.Across().high, std::log10(0.02));
    EXPECT_LE(chart.Up().low, std::log10(30));
    EXPECT_GE(chart.Up().high, std::log10(30));
}

TEST_F(Chart, GrowsByDecadesWithItsReadings) {
    chart.SetInteractive(false);
    chart.SetCurves({{u"Shot"_s, {}, {}, CurveLook::Readings}});
    chart.AppendPoint(0, {0.02, 30});
    EXPECT_EQ(chart.Across(), (LogSpan{-2, -1}));
    EXPECT_EQ(chart.Up(), (LogSpan{1, 2}));
    chart.AppendPoint(0, {3, 450});
    EXPECT_EQ(chart.Across(), (LogSpan{-2, 1}));
    EXPECT_EQ(chart.Up(), (LogSpan{1, 3}));
    chart.AppendPoint(0, {0.5, 200});
    chart.AppendPoint(0, {0, 0});
    EXPECT_EQ(chart.Across(), (LogSpan{-2, 1}));
    // What the operator looks at stays where it is.
    chart.ZoomBy(1.25);
    const LogSpan across = chart.Across();
    chart.AppendPoint(0, {30, 4500});
    EXPECT_EQ(chart.Across(), across);
    chart.ShowAll();
    EXPECT_EQ(chart.Across(), (LogSpan{-2, 2}));
    EXPECT_EQ(chart.Up(), (LogSpan{1, 4}));
}

TEST_F(Chart, ThatIsOnlyLookedAtTakesNoInput) {
    chart.SetInteractive(false);
    test::Pause(20);
    EXPECT_EQ(Plot()->focusPolicy(), Qt::NoFocus);
    Key(Qt::Key_Plus);
    Wheel({200, 200}, 120);
    EXPECT_EQ(chart.Across(), (LogSpan{-2, 1}));
    EXPECT_FALSE(PointUntil({0.1, 100}));
}

TEST_F(Chart, SavesAPictureOnWhite) {
    QPalette dark = chart.palette();
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    chart.setPalette(dark);
    const QString path = folder.Path("chart.png");
    chart.SavePng(path, {800, 600});
    const QImage picture(path);
    ASSERT_EQ(picture.size(), QSize(800, 600));
    EXPECT_EQ(picture.pixelColor(1, 1), QColor(Qt::white));
    int inked = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y).lightness() < 128) ++inked;
        }
    }
    EXPECT_GT(inked, 2000);
    // The screen keeps the colours of its palette.
    test::Pause(50);
    EXPECT_EQ(Plot()->grab().toImage().pixelColor(5, 5), QColor(Qt::black));
}

// The column of the first pixel that is not white.
int FirstInk(const QImage& picture) {
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.pixelColor(x, y) != QColor(Qt::white)) return x;
        }
    }
    return picture.width();
}

TEST_F(Chart, DrawsALargerPictureLarger) {
    const QString small = folder.Path("small.png");
    const QString large = folder.Path("large.png");
    chart.SavePng(small, {800, 550});
    chart.SavePng(large, {2400, 1650});
    EXPECT_EQ(QImage(large).size(), QSize(2400, 1650));
    EXPECT_NEAR(FirstInk(QImage(large)), 3 * FirstInk(QImage(small)), 6);
    // Not every size is a multiple of what is drawn.
    chart.SavePng(large, {1601, 1103});
    EXPECT_EQ(QImage(large).size(), QSize(1601, 1103));
}

TEST_F(Chart, SaysWhenItCannotBeWritten) {
    EXPECT_THROW(chart.SavePng(folder.Path("none/chart.png"), {100, 100}), RunTimeError);
}

}  // namespace
}  // namespace davo::test
