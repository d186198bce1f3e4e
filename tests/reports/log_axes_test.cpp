// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/log_axes.h"

#include <cmath>
#include <limits>

#include "tests/support/testing.h"

namespace davo {
namespace {

using ::testing::DoubleNear;
using ::testing::Pointwise;

TEST(DecadesOf, HoldsEveryValueAboveZero) {
    EXPECT_EQ(DecadesOf({0.02, 3.5}), (LogSpan{-2, 1}));
    EXPECT_EQ(DecadesOf({0.01, 100}), (LogSpan{-2, 2}));
    EXPECT_EQ(DecadesOf({7, 0, -3}), (LogSpan{0, 1}));
    EXPECT_EQ(DecadesOf({10}), (LogSpan{1, 2}));
    EXPECT_EQ(DecadesOf({0.001}), (LogSpan{-3, -2}));
    EXPECT_EQ(DecadesOf({std::numeric_limits<double>::infinity(), std::nan(""), 5}),
              (LogSpan{0, 1}));
    EXPECT_EQ(DecadesOf({}), (LogSpan{-2, 0}));
    EXPECT_EQ(DecadesOf({0, -1}), (LogSpan{-2, 0}));
}

TEST(LogSpans, ZoomAroundAPointAndStayInside) {
    const LogSpan whole{-2, 2};
    const LogSpan half = Zoomed(whole, 2, 0, whole);
    EXPECT_EQ(half, (LogSpan{-1, 1}));
    EXPECT_EQ(Zoomed(whole, 2, -2, whole), (LogSpan{-2, 0}));
    EXPECT_EQ(Zoomed(half, 0.1, 0, whole), whole);
    EXPECT_NEAR(Zoomed(whole, 1e9, 0, whole).Length(), 0.05, 1e-12);
    EXPECT_EQ(Moved(half, 0.25, whole), (LogSpan{-0.5, 1.5}));
    EXPECT_EQ(Moved(half, 5, whole), (LogSpan{0, 2}));
    EXPECT_EQ(Moved(half, -5, whole), (LogSpan{-2, 0}));
}

TEST(LogSpans, HaveMarksAtDecadesAndBetweenThemWhereFewAreShown) {
    EXPECT_THAT(AxisMarks({-2, 1}), Pointwise(DoubleNear(1e-9), {0.01, 0.1, 1.0, 10.0}));
    EXPECT_THAT(AxisMarks({0, 1}), Pointwise(DoubleNear(1e-9), {1.0, 2.0, 5.0, 10.0, 20.0, 50.0}));
    EXPECT_THAT(AxisMarks({std::log10(100), std::log10(140)}),
                Pointwise(DoubleNear(1e-9), {100.0, 110.0, 120.0, 130.0, 140.0}));
}

TEST(LogSpans, HoldEveryValueWithRoomAtTheEnds) {
    const LogSpan span = SpanAround({0.1, 0.001, -5, 0, std::nan("")});
    EXPECT_NEAR(span.low, -3.12, 1e-9);
    EXPECT_NEAR(span.high, -0.88, 1e-9);
    // A decade at least.
    EXPECT_NEAR(SpanAround({100}).low, 1.44, 1e-9);
    EXPECT_NEAR(SpanAround({100}).high, 2.56, 1e-9);
    EXPECT_EQ(SpanAround({}), (LogSpan{-2, 0}));
}

TEST(LogSpans, GrowToDecadesOfOneLength) {
    LogSpan across{-2, 2};
    LogSpan up{1, 3};
    EqualDecades(across, up, 600, 400, false);
    EXPECT_EQ(across, (LogSpan{-2, 2}));
    EXPECT_NEAR(up.Length(), 400 / 150.0, 1e-9);
    EXPECT_NEAR(up.low + up.high, 4, 1e-9);
    EqualDecades(across, up, 900, 400, false);
    EXPECT_NEAR(across.Length(), 6, 1e-9);
    EXPECT_NEAR(up.Length(), 400 / 150.0, 1e-9);
    const LogSpan before = across;
    EqualDecades(across, up, 0, 0, false);
    EXPECT_EQ(across, before);
    // To the right and downwards.
    across = {-2, 2};
    up = {1, 3};
    EqualDecades(across, up, 600, 600, true);
    EXPECT_EQ(up, (LogSpan{-1, 3}));
    EqualDecades(across, up, 900, 600, true);
    EXPECT_EQ(across, (LogSpan{-2, 4}));
}

}  // namespace
}  // namespace davo
