// SPDX-License-Identifier: GPL-3.0-or-later
#include "link/session_reply.h"

#include "tests/support/scripted_link.h"
#include "tests/support/testing.h"

namespace davo::test {
namespace {

class SessionReplyTest : public ::testing::Test, public ScriptedLine {
  protected:
    SessionReplyTest() { link.OpenComPort(1); }

    bool Pass(std::string_view awaited) {
        reply.sessionPending.Append(link.Input());
        return ExamineSessionReply(reply, awaited, prompts);
    }

    SessionReply reply;
};

TEST_F(SessionReplyTest, NothingWaitingFindsNothing) {
    EXPECT_FALSE(Pass("\r\n"));
    EXPECT_EQ(reply.sessionPending, "");
    EXPECT_EQ(reply.sessionWindow, "");
}

TEST_F(SessionReplyTest, BelowABlockTheWindowIsACopyAndPendingKeepsItsText) {
    port.waiting = "Press OK";
    EXPECT_FALSE(Pass("\r\n"));
    port.waiting = "\r\n";
    EXPECT_TRUE(Pass("\r\n"));
    EXPECT_EQ(reply.sessionWindow, "Press OK\r\n");
    EXPECT_EQ(reply.sessionPending, "Press OK\r\n");
}

TEST_F(SessionReplyTest, TheSearchIsCaseSensitive) {
    port.waiting = "done";
    EXPECT_FALSE(Pass("DONE"));
}

TEST_F(SessionReplyTest, JustBelowABlock) {
    port.waiting = std::string(1019, '.') + "DONE";
    EXPECT_TRUE(Pass("DONE"));
    EXPECT_EQ(reply.sessionPending.size(), 1023U);
    EXPECT_EQ(reply.sessionWindow.size(), 1023U);
}

TEST_F(SessionReplyTest, ExactlyABlockLeavesPendingEmpty) {
    port.waiting = std::string(1020, '.') + "DONE";
    EXPECT_TRUE(Pass("DONE"));
    EXPECT_EQ(reply.sessionPending, "");
    EXPECT_EQ(reply.sessionWindow.size(), 1024U);
}

// Each start of the awaited text around the block's end: seen when it is in one block whole.
TEST_F(SessionReplyTest, ATextAcrossTheBlockEndIsNotSeen) {
    for (std::size_t position = 1010; position <= 1030; ++position) {
        reply = {};
        port.waiting = std::string(position - 1, '.') + "DONE" + std::string(400, '.');
        const bool inFirst = position + 3 <= 1024;
        const bool inSecond = position > 1024;
        EXPECT_EQ(Pass("DONE"), inFirst) << position;
        EXPECT_EQ(Pass("DONE"), inSecond) << position;
    }
}

TEST_F(SessionReplyTest, ALongTextFirstSeenAt1020To1030IsNotInTheFirstBlock) {
    const std::string prompt = "Remove jumper";
    for (std::size_t position = 1020; position <= 1030; ++position) {
        reply = {};
        port.waiting = std::string(position - 1, '.') + prompt;
        EXPECT_FALSE(Pass(prompt)) << position;
    }
}

TEST_F(SessionReplyTest, ABurstIsExaminedBlockByBlock) {
    port.waiting = std::string(1024, 'a') + std::string(1024, 'b') + std::string(300, 'c') + "DONE";
    EXPECT_FALSE(Pass("DONE"));
    EXPECT_EQ(reply.sessionWindow, std::string(1024, 'a'));
    EXPECT_EQ(reply.sessionPending.size(), 1328U);
    EXPECT_FALSE(Pass("DONE"));
    EXPECT_EQ(reply.sessionWindow, std::string(1024, 'b'));
    EXPECT_TRUE(Pass("DONE"));
    EXPECT_EQ(reply.sessionWindow, std::string(300, 'c') + "DONE");
}

// The window is cut to 1024 characters before it is measured against 2000, so that the message is
// never shown, however much is waiting.
TEST_F(SessionReplyTest, BufferTooBigIsNeverShown) {
    port.waiting = std::string(100000, '.');
    for (int pass = 0; pass < 200; ++pass) {
        EXPECT_FALSE(Pass("DONE"));
        EXPECT_LE(reply.sessionWindow.size(), kSessionBlock);
    }
    EXPECT_TRUE(prompts.shown.empty());
    EXPECT_LT(kSessionBlock, kSessionLimit);
}

TEST_F(SessionReplyTest, AClosedPortGivesNothing) {
    link.CloseComPort();
    port.waiting = "\r\n";
    EXPECT_FALSE(Pass("\r\n"));
}

}  // namespace
}  // namespace davo::test
