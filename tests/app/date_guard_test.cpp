// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/date_guard.h"

#include "tests/support/testing.h"

namespace davo {
namespace {

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
    FakeFormat format(u"dd/MM/yyyy"_s);
    DateGuard guard(format);
    guard.Run();
    EXPECT_EQ(guard.SavedShortDate(), u"dd/MM/yyyy"_s);
    EXPECT_TRUE(guard.ShortDateChanged());
    EXPECT_THAT(format.sets, ElementsAre(u"MM/dd/yyyy"_s));

    guard.Undo();
    EXPECT_THAT(format.sets, ElementsAre(u"MM/dd/yyyy"_s, u"dd/MM/yyyy"_s));
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
        EXPECT_THAT(format.sets, ElementsAre(u"MM/dd/yyyy"_s, QString::fromLatin1(text)));
    }
}

TEST(DateGuard, AFormatThatCannotBeReadIsForcedAndPutBackEmpty) {
    FakeFormat format(std::nullopt);
    DateGuard guard(format);
    guard.Run();
    EXPECT_TRUE(guard.ShortDateChanged());
    EXPECT_TRUE(guard.SavedShortDate().isEmpty());
    guard.Undo();
    EXPECT_THAT(format.sets, ElementsAre(u"MM/dd/yyyy"_s, QString()));
}

TEST(DateGuard, UndoWithoutRunChangesNothing) {
    FakeFormat format(u"dd/MM/yyyy"_s);
    DateGuard guard(format);
    guard.Undo();
    EXPECT_THAT(format.sets, IsEmpty());
}

}  // namespace
}  // namespace davo
