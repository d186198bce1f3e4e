// SPDX-License-Identifier: GPL-3.0-or-later
// mnuDownload: what is asked of the instrument, and what becomes of the menu item.

#include <QMdiArea>
#include <QTimer>

#include "retrieval/memory_directory.h"
#include "tests/app/main_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

class DownloadItem : public MainWindow {
  protected:
    void OpenWithTestList() {
        ChildForms children;
        children.memoryDirectory = [this](QMdiArea&, std::function<void()> closed) {
            ++opened;
            if (fails) throw RunTimeError(ErrorNumber::FileNotFound, "child");
            close = std::move(closed);
        };
        Open("DAVO-E R3.10", children);
        state.directory.recordsFromInstrument = false;
        port.sent.clear();
    }

    int opened = 0;
    bool fails = false;
    std::function<void()> close;
};

class Download : public DownloadItem {
    void SetUp() override { OpenWithTestList(); }
};

TEST_F(Download, TheReplyIsKeptAndTheListOpened) {
    port.Always("d", "#001\r\n11/21/26\r\nDONE\r\n");
    Choose("mnuDownload");
    EXPECT_THAT(port.sent, ElementsAre("B", "d"));
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(state.listCaller, ListCaller::Download);
    EXPECT_TRUE(state.directory.recordsFromInstrument);
    EXPECT_EQ(state.dirReply, "#001\r\n11/21/26\r\nDONE\r\n");
    EXPECT_FALSE(Enabled("mnuDownload"));
    EXPECT_FALSE(Enabled("mnuFile"));
    EXPECT_THAT(prompts.shown, IsEmpty());
    close();
    EXPECT_TRUE(Enabled("mnuDownload"));
    EXPECT_TRUE(Enabled("mnuFile"));
}

TEST_F(Download, TheItemIsDisabledWhileTheInstrumentIsAsked) {
    bool enabled = true;
    port.OnOutputDo("d", [&] {
        enabled = Enabled("mnuDownload");
        port.Deliver("\r\nDONE\r\n");
    });
    Choose("mnuDownload");
    EXPECT_FALSE(enabled);
}

TEST_F(Download, WhatWaitsInThePortIsNotTakenForTheReply) {
    port.Always("d", "#002\r\n11/21/26\r\nDONE\r\n");
    port.Deliver("RDY\r\nDATA of an earlier wait\r\nDONE\r\n");
    test::Pause(20);
    Choose("mnuDownload");
    EXPECT_EQ(state.dirReply, "#002\r\n11/21/26\r\nDONE\r\n");
}

TEST_F(DownloadItem, APortThatDoesNotOpenLeavesTheItemDisabled) {
    port.failOpen = ErrorNumber::InvalidPortNumber;
    OpenWithTestList();
    Choose("mnuDownload");
    EXPECT_FALSE(Enabled("mnuDownload"));
    EXPECT_TRUE(Enabled("mnuFile"));
    EXPECT_EQ(opened, 0);
    EXPECT_THAT(port.sent, IsEmpty());
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(Download, APortThatWasClosedIsOpened) {
    port.Always("d", "#001\r\n11/21/26\r\nDONE\r\n");
    link.CloseComPort();
    Choose("mnuDownload");
    EXPECT_TRUE(state.linkState.portOpen);
    EXPECT_EQ(opened, 1);
}

TEST_F(Download, AnInstrumentThatDoesNotAnswerIsSaid) {
    port.always.clear();
    Choose("mnuDownload");
    EXPECT_THAT(prompts.shown,
                ElementsAre(u"DAVO is not available\r\nor\r\nnot under computer control."_s));
    EXPECT_THAT(port.sent, ElementsAre("B"));
    EXPECT_TRUE(Enabled("mnuDownload"));
    EXPECT_FALSE(state.directory.recordsFromInstrument);
    EXPECT_EQ(opened, 0);
}

TEST_F(Download, AnEmptyMemoryIsSaid) {
    port.Always("d", "\r\nDONE\r\n");  // 8 characters
    Choose("mnuDownload");
    EXPECT_THAT(prompts.shown, ElementsAre(u"There are no test records."_s));
    EXPECT_TRUE(Enabled("mnuDownload"));
    EXPECT_FALSE(state.directory.recordsFromInstrument);
    EXPECT_EQ(opened, 0);
}

TEST_F(Download, AReplyOfTenCharactersIsShown) {
    port.Always("d", "..\r\nDONE\r\n");
    Choose("mnuDownload");
    EXPECT_EQ(opened, 1);
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(Download, AWaitThatTheOperatorEndedSaysNothing) {
    port.OnOutputDo("d",
                    [this] { QTimer::singleShot(20, window.get(), [this] { link.EndWait(); }); });
    Choose("mnuDownload");
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_TRUE(Enabled("mnuDownload"));
    EXPECT_TRUE(Enabled("mnuFile"));
    EXPECT_FALSE(state.directory.recordsFromInstrument);
    EXPECT_EQ(opened, 0);
}

TEST_F(Download, AHandshakeThatTheOperatorEndedSaysNothing) {
    port.always.clear();
    port.OnOutputDo("B", [this] { link.EndWait(); });
    Choose("mnuDownload");
    EXPECT_THAT(prompts.shown, IsEmpty());
    EXPECT_TRUE(Enabled("mnuDownload"));
}

TEST_F(Download, ClosingTheMainWindowWhileItWaitsEndsBoth) {
    port.OnOutputDo("d",
                    [this] { QTimer::singleShot(20, window.get(), [this] { window->close(); }); });
    Choose("mnuDownload");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(opened, 0);
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(Download, AListThatFailsToOpenLeavesTheItemEnabled) {
    port.Always("d", "#001\r\n11/21/26\r\nDONE\r\n");
    fails = true;
    Choose("mnuDownload");
    EXPECT_THAT(prompts.shown, ElementsAre(u"Run-time error '53': File not found: child"_s));
    EXPECT_TRUE(Enabled("mnuDownload"));
    EXPECT_TRUE(Enabled("mnuFile"));
}

}  // namespace
}  // namespace davo::test
