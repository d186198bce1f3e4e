// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/run_time_error.h"

#include "tests/support/testing.h"

namespace davo {
namespace {

struct NumberAndText {
    int number;
    const char* text;
};

class RunTimeErrorText : public testing::TestWithParam<NumberAndText> {};

TEST_P(RunTimeErrorText, BelongsToItsNumber) {
    const auto number = static_cast<ErrorNumber>(GetParam().number);
    EXPECT_EQ(ErrorText(number), GetParam().text);
    const RunTimeError error(number);
    EXPECT_EQ(error.Number(), number);
    EXPECT_EQ(std::string(error.what()),
              "Run-time error '" + std::to_string(GetParam().number) + "': " + GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    All, RunTimeErrorText,
    testing::Values(NumberAndText{6, "Overflow"}, NumberAndText{9, "Subscript out of range"},
                    NumberAndText{11, "Division by zero"}, NumberAndText{13, "Type mismatch"},
                    NumberAndText{52, "Bad file name or number"},
                    NumberAndText{53, "File not found"}, NumberAndText{55, "File already open"},
                    NumberAndText{57, "Device I/O error"}, NumberAndText{58, "File already exists"},
                    NumberAndText{61, "Disk full"}, NumberAndText{62, "Input past end of file"},
                    NumberAndText{70, "Permission denied"},
                    NumberAndText{75, "Path/File access error"},
                    NumberAndText{76, "Path not found"}, NumberAndText{440, "Automation error"},
                    NumberAndText{8002, "Invalid port number"},
                    NumberAndText{8005, "Port already open"},
                    NumberAndText{7777, "Application-defined or object-defined error"}));

TEST(RunTimeError, NamesTheDetailAfterItsText) {
    EXPECT_STREQ(RunTimeError(ErrorNumber::FileNotFound, "T1.txt").what(),
                 "Run-time error '53': File not found: T1.txt");
}

}  // namespace
}  // namespace davo
