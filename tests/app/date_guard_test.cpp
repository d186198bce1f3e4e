// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/date_guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace davo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FakeFormat : public ShortDateFormat {
  public:
    explicit FakeFormat(std::optional<QString> format) : format_(std::move(format)) {}
    std::optional<QString> Read() override { return format_; }
    void Set(const QString& format) override {
        format_ = format;
        sets.push_back(format);
    }

    std::vector<QString> sets;

  private:
    std::optional<QString> format_;
};

TEST(DateGuard, ReplacesADayFirstFormatAndPutsItBack) {
    FakeFormat format(QStringLiteral("dd/MM/yyyy"));
    DateGuard guard(format);
    guard.Run();
    EXPECT_EQ(guard.SavedShortDate(), QStringLiteral("dd/MM/yyyy"));
    EXPECT_TRUE(guard.ShortDateChanged());
    EXPECT_THAT(format.sets, ElementsAre(QStringLiteral("MM/dd/yyyy")));

    guard.Undo();
    EXPECT_THAT(format.sets,
                ElementsAre(QStringLiteral("MM/dd/yyyy"), QStringLiteral("dd/MM/yyyy")));
    guard.Undo();
    EXPECT_EQ(format.sets.size(), 2U);
}

TEST(DateGuard, LeavesTheSixMonthFirstFormatsAlone) {
    for (const char* text :
         {"MM-dd-yy", "MM/dd/yy", "MM.dd.yy", "MM/dd/yyyy", "MM-dd-yyyy", "MM.dd.yyyy"}) {
        FakeFormat format(QString::fromLatin1(text));
        DateGuard guard(format);
        guard.Run();
        EXPECT_FALSE(guard.ShortDateChanged()) << text;
        EXPECT_EQ(guard.SavedShortDate(), QLatin1String(text));
        guard.Undo();
        EXPECT_THAT(format.sets, IsEmpty()) << text;
    }
}

TEST(DateGuard, ReplacesWhatOnlyResemblesTheSix) {
    for (const char* text : {"mm/dd/yy", "MM/DD/YY", "M/d/yyyy", "MM/dd/yyyy ", " MM/dd/yy",
                             "MM/dd/yyy", "MM dd yy", "yyyy-MM-dd", "MM/dd-yy"}) {
        FakeFormat format(QString::fromLatin1(text));
        DateGuard guard(format);
        guard.Run();
        EXPECT_TRUE(guard.ShortDateChanged()) << text;
        guard.Undo();
        EXPECT_THAT(format.sets,
                    ElementsAre(QStringLiteral("MM/dd/yyyy"), QString::fromLatin1(text)));
    }
}

TEST(DateGuard, AFormatThatCannotBeReadIsForcedAndPutBackEmpty) {
    FakeFormat format(std::nullopt);
    DateGuard guard(format);
    guard.Run();
    EXPECT_TRUE(guard.ShortDateChanged());
    EXPECT_TRUE(guard.SavedShortDate().isEmpty());
    guard.Undo();
    EXPECT_THAT(format.sets, ElementsAre(QStringLiteral("MM/dd/yyyy"), QString()));
}

TEST(DateGuard, UndoWithoutRunChangesNothing) {
    FakeFormat format(QStringLiteral("dd/MM/yyyy"));
    DateGuard guard(format);
    guard.Undo();
    EXPECT_THAT(format.sets, IsEmpty());
}

}  // namespace
}  // namespace davo
