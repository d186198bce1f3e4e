// SPDX-License-Identifier: GPL-3.0-or-later
// Closing the main window while another of its windows is open.

#include <QApplication>
#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QTimer>

#include "tests/app/main_window.h"
#include "tests/support/pause.h"

namespace davo::test {
namespace {

// A window in the area: it closes when it may, and waits for the instrument when it is told to.
class WaitingChild : public QWidget {
  public:
    void Wait(Link& link) {
        waits_ = true;
        link.SendCommand("F", "\r\n");
        waits_ = false;
        if (closeWanted_) parentWidget()->close();
    }

    bool mayClose = true;
    bool asks = false;
    bool asksTwice = false;
    int asked = 0;
    std::function<void()> onUnload;

  protected:
    void closeEvent(QCloseEvent* event) override {
        closeWanted_ = waits_;
        if (asks) {
            ++asked;
            QMessageBox question(QMessageBox::Question, {}, u"Lose it?"_s,
                                 QMessageBox::Yes | QMessageBox::No, this);
            question.setEscapeButton(QMessageBox::No);
            mayClose = question.exec() == QMessageBox::Yes;
            if (asksTwice) mayClose = question.exec() == QMessageBox::Yes;
        }
        if (waits_ || !mayClose) {
            event->ignore();
            return;
        }
        onUnload();
    }

  private:
    bool waits_ = false;
    bool closeWanted_ = false;
};

class ClosingWithAChild : public MainWindow {
  protected:
    void SetUp() override {
        ChildForms children;
        children.headerSetup = [this](QMdiArea& area, std::function<void()> closed) {
            child = new WaitingChild;
            child->onUnload = [this, closed = std::move(closed)] {
                ++unloads;
                state.settings.sortOrder = 1;
                closed();
            };
            QMdiSubWindow* frame = area.addSubWindow(child);
            frame->setAttribute(Qt::WA_DeleteOnClose);
            frame->show();
        };
        Open("DAVO-E R3.10", children);
        Choose("mnuSetHeaderFile");
        ASSERT_NE(child, nullptr);
    }
    QString StoredSort() { return store.texts[u"SORTVALUES/SORT/SORTVAL"_s]; }

    WaitingChild* child = nullptr;
    int unloads = 0;
};

TEST_F(ClosingWithAChild, TheChildIsClosedFirst) {
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(StoredSort(), u"1 -1"_s) << "what it held is written";
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(ClosingWithAChild, WhereTheChildStaysTheMainWindowStays) {
    child->mayClose = false;
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(unloads, 0);
    EXPECT_THAT(store.written, IsEmpty());
    child->mayClose = true;
    child->parentWidget()->close();
    test::Pause(20);
    EXPECT_EQ(unloads, 1);
    EXPECT_TRUE(window->isVisible()) << "closing was refused, it is not done later";
}

TEST_F(ClosingWithAChild, AChildThatWaitsIsLetGoAndThenBothClose) {
    bool wasVisible = false;
    QTimer::singleShot(20, window.get(), [&] {
        window->close();
        wasVisible = window->isVisible();
    });
    child->Wait(link);
    EXPECT_TRUE(wasVisible);
    EXPECT_TRUE(Until([this] { return !window->isVisible(); }));
    EXPECT_EQ(unloads, 1);
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(ClosingWithAChild, LeavingClosesItAndWritesWhatItHeld) {
    window->Leave();
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(StoredSort(), u"1 -1"_s);
    EXPECT_TRUE(window->close());
    EXPECT_THAT(prompts.shown, IsEmpty());
}

TEST_F(ClosingWithAChild, LeavingDoesNotWaitForAChildThatStays) {
    child->mayClose = false;
    window->Leave();
    EXPECT_EQ(store.written.size(), 5U);
    EXPECT_TRUE(window->close());
}

TEST_F(ClosingWithAChild, LeavingDoesNotWaitForAnAnswer) {
    child->asks = true;
    window->Leave();  // nobody answers
    EXPECT_EQ(child->asked, 1);
    EXPECT_FALSE(child->mayClose) << "the question was taken back";
    EXPECT_EQ(unloads, 0);
    EXPECT_EQ(store.written.size(), 5U);
}

TEST_F(ClosingWithAChild, LeavingDoesNotWaitForASecondAnswer) {
    child->asks = true;
    child->asksTwice = true;
    QTimer operatorsHand;  // for a question that stays
    bool stayed = false;
    operatorsHand.callOnTimeout([&] {
        if (QWidget* question = QApplication::activeModalWidget()) {
            stayed = true;
            question->close();
        }
    });
    operatorsHand.start(2000);
    window->Leave();
    EXPECT_FALSE(stayed);
    EXPECT_EQ(unloads, 0);
    EXPECT_EQ(store.written.size(), 5U);
}

}  // namespace
}  // namespace davo::test
