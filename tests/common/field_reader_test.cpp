// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/text.h"

#include "common/run_time_error.h"
#include "tests/support/testing.h"
#include "tests/support/thrown.h"

namespace davo {
namespace {

std::vector<std::string> Fields(std::string_view bytes) {
    std::vector<std::string> fields;
    FieldReader reader(bytes);
    while (!reader.AtEnd())
        fields.push_back(reader.Next());
    return fields;
}

TEST(FieldReader, EndsFieldsAtCommasAndLineEnds) {
    EXPECT_THAT(Fields("a,b\r\nc\nd\re"), ElementsAre("a", "b", "c", "d", "e"));
    EXPECT_THAT(Fields("a\r\n"), ElementsAre("a"));
    EXPECT_THAT(Fields(""), IsEmpty());
}

TEST(FieldReader, GivesEmptyFields) {
    EXPECT_THAT(Fields("a,,b"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Fields("a\r\n\r\nb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Fields("a\n\rb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Fields(",\r\n"), ElementsAre("", ""));
}

TEST(FieldReader, DropsBlanksAroundAField) {
    EXPECT_THAT(Fields("  a b  ,  c \r\n   "), ElementsAre("a b", "c", ""));
    EXPECT_THAT(Fields("\ta"), ElementsAre("\ta"));
}

TEST(FieldReader, KeepsWhatStandsInQuotes) {
    EXPECT_THAT(Fields("\" a, b \",c"), ElementsAre(" a, b ", "c"));
    EXPECT_THAT(Fields("  \"a\" rest,b"), ElementsAre("a", "b"));
    EXPECT_THAT(Fields("\"a\r\nb\"\r\nc"), ElementsAre("a\r\nb", "c"));
    EXPECT_THAT(Fields("\"\",b"), ElementsAre("", "b"));
    EXPECT_THAT(Fields("\"a,\",b"), ElementsAre("a,", "b"));
    EXPECT_THAT(Fields("\"open, to the end"), ElementsAre("open, to the end"));
    EXPECT_THAT(Fields("\""), ElementsAre(""));
    EXPECT_THAT(Fields("a\"b\",c"), ElementsAre("a\"b\"", "c"));
}

TEST(FieldReader, LooksAtNothingBehindTheText) {
    EXPECT_THAT(Fields(std::string_view("  \"x\"", 2)), ElementsAre(""));
}

TEST(FieldReader, ThrowsPastTheEnd) {
    FieldReader reader("a");
    EXPECT_EQ(reader.Next(), "a");
    EXPECT_TRUE(reader.AtEnd());
    EXPECT_EQ(test::MessageThrownBy([&] { reader.Next(); }),
              "Run-time error '62': Input past end of file");
}

}  // namespace
}  // namespace davo
