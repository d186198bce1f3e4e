// SPDX-License-Identifier: GPL-3.0-or-later
// The drawing library is written with Qt's keywords: include this before any other header.
#undef QT_NO_KEYWORDS
#include <qcustomplot.h>

#include <QApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QTest>
#include <algorithm>
#include <random>

#include "curves/chart_look.h"
#include "curves/knee_marks.h"
#include "tests/curves/small_chart.h"
#include "tests/support/pause.h"
#include "tests/support/random_seed.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

constexpr Moment kMoments[] = {Moment::Empty, Moment::FirstReading, Moment::Readings,
                               Moment::Complete};

struct Look {
    QSize size;
    double textGrowth = 1;
};

void PrintTo(const Look& look, std::ostream* out) {
    *out << look.size.width() << 'x' << look.size.height() << " text " << look.textGrowth;
}

class SmallChart : public ::testing::TestWithParam<Look> {
  protected:
    SmallChart() {
        QFont font = QApplication::font();
        font.setPointSizeF(font.pointSizeF() * GetParam().textGrowth);
        chart.setFont(font);
        chart.resize(GetParam().size);
        chart.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&chart));
    }
    void Show(Moment moment, double knee = 152) {
        ShowMoment(chart, moment, knee);
        test::Pause(60);
    }
    QCustomPlot& Plot() { return *chart.findChild<QCustomPlot*>(u"plotCurves"_s); }
    QImage Grabbed() { return Plot().grab().toImage().convertToFormat(QImage::Format_RGB32); }
    // Whether area, in the plot's pixels, has something else than the base colour in it.
    static bool Inked(const QImage& picture, const QRectF& area, const QColor& base) {
        const double dense = picture.devicePixelRatio();
        const QRect pixels =
            QRectF(area.topLeft() * dense, area.size() * dense).toAlignedRect() & picture.rect();
        for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
            for (int x = pixels.left(); x <= pixels.right(); ++x) {
                if (picture.pixelColor(x, y) != base) return true;
            }
        }
        return false;
    }
    struct Number {
        std::string text;
        QRectF place;
    };
    // Where an axis has its numbers.
    static std::vector<Number> NumbersOf(const QCPAxis& axis) {
        std::vector<Number> numbers;
        const QFontMetricsF metrics(axis.tickLabelFont());
        const QRectF area = axis.axisRect()->rect();
        for (int i = 0; i < axis.tickVector().size(); ++i) {
            const QString text = axis.tickVectorLabels().at(i);
            const double at = axis.coordToPixel(axis.tickVector().at(i));
            QRectF place({}, QSizeF(metrics.horizontalAdvance(text), metrics.height()));
            if (axis.orientation() == Qt::Horizontal) {
                place.moveCenter({at, 0});
                place.moveTop(area.bottom() + axis.tickLabelPadding());
            } else {
                place.moveCenter({0, at});
                place.moveRight(area.left() - axis.tickLabelPadding());
            }
            numbers.push_back({text.toStdString(), place});
        }
        return numbers;
    }
    // Where a Normal or Faint line is drawn between two points.
    QPoint Between(const CurvePoint& one, const CurvePoint& other) {
        const auto middle = [](const QCPAxis& axis, double a, double b) {
            return (axis.coordToPixel(a) + axis.coordToPixel(b)) / 2;
        };
        return QPointF(middle(*Plot().xAxis, one.current, other.current),
                       middle(*Plot().yAxis, one.voltage, other.voltage))
            .toPoint();
    }
    // Whether colour is painted within some pixels of at.
    bool Painted(const QColor& colour, QPoint at, int reach = 1) {
        const QImage picture = Grabbed();
        const double dense = picture.devicePixelRatio();
        const QPoint middle = (QPointF(at) * dense).toPoint();
        for (int y = -reach; y <= reach; ++y) {
            for (int x = -reach; x <= reach; ++x) {
                if (picture.pixelColor(middle + QPoint(x, y)) == colour) return true;
            }
        }
        return false;
    }

    CurveChart chart;
};

TEST_P(SmallChart, DrawsEveryNumberAndCutsNone) {
    for (const Moment moment : kMoments) {
        for (const double knee : {1.5, 152.0, 1900.0}) {
            Show(moment, knee);
            const QImage picture = Grabbed();
            const QColor base = chart.palette().color(QPalette::Base);
            for (const QCPAxis* axis : {Plot().xAxis, Plot().yAxis}) {
                const std::vector<Number> numbers = NumbersOf(*axis);
                EXPECT_GE(numbers.size(), 2U);
                for (std::size_t i = 0; i < numbers.size(); ++i) {
                    const auto& [text, place] = numbers[i];
                    EXPECT_TRUE(QRectF(Plot().rect()).contains(place)) << text;
                    EXPECT_TRUE(Inked(picture, place.adjusted(2, 2, -2, -2), base)) << text;
                    if (i > 0) {
                        EXPECT_FALSE(place.intersects(numbers[i - 1].place))
                            << text << " and " << numbers[i - 1].text;
                    }
                }
            }
        }
    }
}

TEST_P(SmallChart, HasItsTitlesWholeAndNothingAtItsEdge) {
    for (const Moment moment : kMoments) {
        Show(moment);
        const QRectF area = Plot().axisRect()->rect();
        const QFontMetricsF metrics(Plot().xAxis->labelFont());
        EXPECT_EQ(Plot().xAxis->label(), u"Amperes"_s);
        EXPECT_EQ(Plot().yAxis->label(), u"Volts"_s);
        EXPECT_LT(metrics.horizontalAdvance(Plot().xAxis->label()), area.width());
        EXPECT_LT(metrics.horizontalAdvance(Plot().yAxis->label()), area.height());
        const QImage picture = Grabbed();
        const QColor base = chart.palette().color(QPalette::Base);
        const QRectF all = Plot().rect();
        for (const QRectF& edge : {QRectF(all.topLeft(), QSizeF(all.width(), 1)),
                                   QRectF(all.topLeft(), QSizeF(1, all.height())),
                                   QRectF(all.right() - 1, all.top(), 1, all.height()),
                                   QRectF(all.left(), all.bottom() - 1, all.width(), 1)}) {
            EXPECT_FALSE(Inked(picture, edge, base)) << edge.x() << ' ' << edge.y();
        }
        // The curve has most of the room.
        EXPECT_GT(area.width() * area.height(), 0.45 * all.width() * all.height());
    }
}

// Kneepoints of one rising curve, wherever they are on it and wherever it is.
TEST_P(SmallChart, HasATableOfKneepointsWithLinesThatCrossNothing) {
    Show(Moment::Complete);
    const QRectF area = QRectF(Plot().axisRect()->rect()).adjusted(6, 6, -6, -6);
    const QFontMetrics metrics(chart.font());
    std::mt19937_64 random(RandomSeed(20261121));
    std::uniform_real_distribution<double> part(0, 1);
    constexpr int kRounds = 500;
    int lines = 0;
    for (int round = 0; round < kRounds; ++round) {
        QPolygonF curve;
        QPointF at(area.left(), area.bottom() - area.height() * 0.5 * part(random));
        while (area.contains(at) && curve.size() < 30) {
            curve += at;
            at += QPointF(area.width() / 20 * part(random), -area.height() / 12 * part(random));
        }
        std::vector<PlacedKnee> knees;
        for (const KneeRule rule : {KneeRule::Ieee30, KneeRule::Ieee45, KneeRule::Asa1050}) {
            const auto on = static_cast<int>(part(random) * static_cast<double>(curve.size() - 1));
            knees.push_back(
                {{rule, {0.0312, 350.6}, u"350.6 V, 0.031 A (?)"_s}, curve.at(on), {}, {}});
        }
        PlaceKnees(knees, {curve}, metrics, area);
        for (std::size_t i = 0; i < knees.size(); ++i) {
            const PlacedKnee& knee = knees[i];
            EXPECT_TRUE(area.adjusted(-1, -1, 1, 1).contains(knee.row)) << round;
            EXPECT_EQ(CrossingsOf(knee.leader, {curve}), 0) << round;
            if (i > 0) {
                EXPECT_GE(knee.at.y(), knees[i - 1].at.y()) << round;
                EXPECT_GE(knee.row.top(), knees[i - 1].row.bottom() - 1e-6) << round;
            }
            if (knee.leader.isNull()) continue;
            ++lines;
            for (std::size_t j = 0; j < i; ++j) {
                if (knees[j].leader.isNull() || knees[j].at == knee.at) continue;
                EXPECT_NE(knee.leader.intersects(knees[j].leader, nullptr),
                          QLineF::BoundedIntersection)
                    << round;
            }
        }
    }
    EXPECT_GT(lines, kRounds) << "most kneepoints have theirs";
}

TEST_P(SmallChart, GrowsByWholeDecadesBothWays) {
    Show(Moment::Empty);
    EXPECT_EQ(chart.Across(), (LogSpan{-2, 0}));
    EXPECT_EQ(chart.Up(), (LogSpan{0, 3}));
    chart.SetCurves({{{}, {{0.5, 50}}, {}, CurveLook::Readings}});
    struct Step {
        CurvePoint point;
        LogSpan across;
        LogSpan up;
    };
    const Step steps[] = {
        {{0.6, 99}, {-1, 0}, {1, 2}},     {{1.01, 99}, {-1, 1}, {1, 2}},
        {{1.01, 101}, {-1, 1}, {1, 3}},   {{0.09, 101}, {-2, 1}, {1, 3}},
        {{0.09, 9.9}, {-2, 1}, {0, 3}},   {{0.0009, 0.5}, {-4, 1}, {-1, 3}},
        {{0.5, 20000}, {-4, 1}, {-1, 5}}, {{0.5, 50}, {-4, 1}, {-1, 5}},
    };
    for (const Step& step : steps) {
        chart.AppendPoint(0, step.point);
        EXPECT_EQ(chart.Across(), step.across) << step.point.current << ' ' << step.point.voltage;
        EXPECT_EQ(chart.Up(), step.up) << step.point.current << ' ' << step.point.voltage;
    }
}

TEST_P(SmallChart, HasEarlierCurvesPaleBehindTheOthersAndWithoutAName) {
    const std::vector<CurvePoint> points = {{0.02, 20}, {0.05, 300}, {0.9, 800}};
    const ChartCurve faint{u"Earlier"_s, points, {}, CurveLook::Faint};
    const ChartCurve normal{u"This one"_s, points, {}, CurveLook::Normal};
    const ChartColours colours = ColoursOn(chart.palette());
    chart.SetInteractive(false);
    chart.SetCurves({faint});
    test::Pause(60);
    EXPECT_EQ(Plot().legend->itemCount(), 0);
    EXPECT_TRUE(Painted(colours.faint, Between(points[1], points[2]), 0));
    // The last in the list, and yet behind.
    chart.SetCurves({normal, faint});
    test::Pause(60);
    ASSERT_EQ(Plot().legend->itemCount(), 1);
    const QPoint at = Between(points[1], points[2]);
    EXPECT_TRUE(Painted(colours.curves.front(), at));
    // The edge of a line can have any colour between its own and the base.
    EXPECT_FALSE(Painted(colours.faint, at, 0));
}

TEST_P(SmallChart, HasABandInTheColourOfItsCurveBehindTheOthers) {
    const std::vector<CurvePoint> points = {{0.02, 20}, {0.05, 300}, {0.9, 800}};
    const ChartCurve curve{u"This one"_s, points, {}, CurveLook::Normal};
    ChartCurve band{{}, {}, {}, CurveLook::Band};
    band.points = {{0.02, 40}, {0.05, 600}, {0.9, 1600}, {0.9, 400}, {0.05, 150}, {0.02, 10}};
    chart.SetInteractive(false);
    chart.SetCurves({curve, curve, band});
    QTest::qWait(60);
    EXPECT_EQ(Plot().legend->itemCount(), 2);
    // On the base, between the curve and the band's edge, where no line of the grid is.
    const ChartColours colours = ColoursOn(chart.palette());
    const QImage picture = Grabbed();
    const CurvePoint inside{0.31, 800};
    const CurvePoint outside{0.31, 1500};
    const auto at = [&](const CurvePoint& point) {
        const QPointF place(Plot().xAxis->coordToPixel(point.current),
                            Plot().yAxis->coordToPixel(point.voltage));
        return picture.pixelColor((place * picture.devicePixelRatio()).toPoint());
    };
    const QColor mixed = Mixed(colours.base, colours.curves.at(1), 0.25);
    EXPECT_NEAR(at(inside).red(), mixed.red(), 2);
    EXPECT_NEAR(at(inside).blue(), mixed.blue(), 2);
    EXPECT_EQ(at(outside), colours.base);
}

TEST_P(SmallChart, HasWholeMarkersOnTheFrame) {
    const std::vector<CurvePoint> points = {{0.01, 10}, {0.05, 30}, {0.2, 50}};
    const QColor colour = ColoursOn(chart.palette()).curves.front();
    const auto paintedOutside = [&] {
        const QRect frame = Plot().axisRect()->rect();
        return Painted(colour, {frame.left() - 2, frame.bottom() + 1}) ||
               Painted(colour, {frame.left() - 2, frame.bottom() - 1});
    };
    chart.SetInteractive(false);
    chart.SetCurves({{{}, points, {}, CurveLook::Readings}});
    test::Pause(60);
    EXPECT_TRUE(paintedOutside());
    // A part of the curve ends at the frame.
    chart.ZoomBy(2);
    test::Pause(60);
    const QRect frame = Plot().axisRect()->rect();
    const QImage picture = Grabbed();
    const double dense = picture.devicePixelRatio();
    for (int y = frame.top(); y <= frame.bottom(); ++y) {
        const QPoint at = (QPointF(frame.left() - 2, y) * dense).toPoint();
        EXPECT_NE(picture.pixelColor(at), colour) << y;
    }
}

// 45 degrees look like 45, whatever the curve, the window and the zoom.
TEST(LargeChart, HasDecadesOfOneLength) {
    CurveChart chart;
    chart.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&chart));
    const auto& plot = *chart.findChild<QCustomPlot*>(u"plotCurves"_s);
    const auto expectEqual = [&](const char* when) {
        test::Pause(30);
        const double across = plot.xAxis->coordToPixel(0.1) - plot.xAxis->coordToPixel(0.01);
        const double up = plot.yAxis->coordToPixel(10) - plot.yAxis->coordToPixel(100);
        EXPECT_NEAR(across, up, 0.01 * across) << when << ' ' << chart.width();
    };
    for (const QSize size : {QSize(300, 260), QSize(480, 300), QSize(650, 410), QSize(400, 700)}) {
        chart.resize(size);
        for (const auto& [knee, count] : {std::pair{1.5, 20}, {152.0, 20}, {1900.0, 3}}) {
            std::vector<CurvePoint> points = ReadingsOf(knee);
            points.resize(static_cast<std::size_t>(count));
            chart.SetCurves({{u"This one"_s, points, {}, {}}});
            expectEqual("whole");
            chart.ZoomBy(3);
            expectEqual("zoomed");
            QTest::keyClick(plot.parentWidget()->focusProxy(), Qt::Key_Right);
            expectEqual("moved");
            chart.ZoomBy(1000);
            expectEqual("a point");
            chart.ShowAll();
        }
    }
}

TEST(LargeChart, ShowsTheSamePartWhenItsOldSizeIsBack) {
    CurveChart chart;
    chart.resize(480, 300);
    chart.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&chart));
    chart.SetCurves({{u"This one"_s, ReadingsOf(152), {}, {}}});
    chart.ZoomBy(3);
    test::Pause(30);
    const LogSpan across = chart.Across();
    const LogSpan up = chart.Up();
    for (const QSize size : {QSize(900, 300), QSize(480, 700), QSize(900, 300), QSize(480, 300)}) {
        chart.resize(size);
        test::Pause(30);
    }
    EXPECT_NEAR(chart.Across().Length(), across.Length(), 0.01);
    EXPECT_NEAR(chart.Up().Length(), up.Length(), 0.01);
}

TEST(LargeChart, HasItsLegendAndKneepointsInsideTheFrame) {
    CurveChart chart;
    chart.resize(650, 410);
    chart.SetCurves({{u"Test 1"_s,
                      ReadingsOf(152),
                      {{KneeRule::Ieee30, {0.04, 100}, u"100.0 V, 0.040 A"_s}},
                      {}},
                     {u"Test 2"_s, ReadingsOf(300), {}, {}}});
    chart.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&chart));
    test::Pause(30);
    const auto& plot = *chart.findChild<QCustomPlot*>(u"plotCurves"_s);
    EXPECT_EQ(plot.legend->itemCount(), 2);
    EXPECT_TRUE(plot.axisRect()->rect().contains(plot.legend->outerRect()));
    // The titles and numbers take less than a fifth each way.
    EXPECT_GT(plot.axisRect()->height(), 0.8 * plot.height());
    EXPECT_GT(plot.axisRect()->width(), 0.85 * plot.width());
    EXPECT_GE(plot.height(), 0.9 * chart.height() - 6);
}

TEST(LargeChart, HasRoomForTheNamesOfTenCurves) {
    CurveChart chart;
    std::vector<ChartCurve> curves;
    for (int i = 0; i < 10; ++i)
        curves.push_back({u"FEEDER%1 Test 1"_s.arg(i), ReadingsOf(100 + 80 * i), {}, {}});
    chart.SetCurves(curves);
    chart.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&chart));
    const auto& plot = *chart.findChild<QCustomPlot*>(u"plotCurves"_s);
    for (const QSize size : {QSize(650, 410), QSize(600, 360), QSize(900, 600), QSize(580, 430)}) {
        chart.resize(size);
        test::Pause(30);
        ASSERT_EQ(plot.legend->itemCount(), 10);
        const QRectF legend = plot.legend->outerRect();
        EXPECT_TRUE(QRectF(plot.axisRect()->rect()).contains(legend)) << size.width();
        int hidden = 0;  // of two hundred points
        for (const ChartCurve& curve : curves) {
            for (const CurvePoint& point : curve.points)
                hidden += legend.contains({plot.xAxis->coordToPixel(point.current),
                                           plot.yAxis->coordToPixel(point.voltage)});
        }
        EXPECT_LE(hidden, 2) << size.width();
    }
}

// The names are at the crosshair, too; a legend that is larger than the chart would hide all of it.
TEST(LargeChart, HasNoLegendThatItHasNoRoomFor) {
    CurveChart chart;
    std::vector<ChartCurve> curves;
    for (int i = 0; i < 10; ++i)
        curves.push_back({u"LONGEST-FEEDER%1 Test 1"_s.arg(i), ReadingsOf(100 + 80 * i), {}, {}});
    chart.SetCurves(curves);
    chart.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&chart));
    const auto& plot = *chart.findChild<QCustomPlot*>(u"plotCurves"_s);
    for (const auto& [size, seen] : {std::pair{QSize(260, 180), false},
                                     {QSize(650, 410), true},
                                     {QSize(340, 220), false},
                                     {QSize(900, 600), true}}) {
        chart.resize(size);
        test::Pause(30);
        EXPECT_EQ(plot.legend->visible(), seen) << size.width();
        EXPECT_TRUE(!seen || plot.axisRect()->rect().contains(plot.legend->outerRect()));
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, SmallChart,
                         ::testing::Values(Look{{420, 260}}, Look{{340, 220}},
                                           Look{{420, 260}, 1.5}, Look{{340, 220}, 1.5}));

}  // namespace
}  // namespace davo::test
