// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/background_render.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QSemaphore>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <stdexcept>

#include "tests/support/testing.h"

namespace davo::test {
namespace {

// Does what the test says in place of a report.
class ScriptedRenderer : public ReportRenderer {
  public:
    using Script = std::function<bool(const QString& target, const RenderProgress& progress,
                                      const std::stop_token& stop)>;
    explicit ScriptedRenderer(Script script) : script_(std::move(script)) {}

    QString Extension() const override { return u".xls"_s; }
    bool Render(const Workbook&, const QString&, const QString& targetPath,
                const RenderProgress& progress, const std::stop_token& stop) override {
        return script_(targetPath, progress, stop);
    }

  private:
    Script script_;
};

bool WaitForStop(const std::stop_token& stop) {
    while (!stop.stop_requested())
        QThread::msleep(1);
    return false;
}

// What came through the event loop, on which thread.
struct Told {
    std::vector<std::pair<int, int>> progress;
    std::vector<RenderEnd> ends;
    bool isOnThisThread = true;
};

class BackgroundRenderTest : public testing::Test {
  protected:
    void Begin(ScriptedRenderer::Script script) {
        renderer_ = std::make_unique<ScriptedRenderer>(std::move(script));
        const QThread* const here = QThread::currentThread();
        render_ = std::make_unique<BackgroundRender>(
            *renderer_, RenderRequest{{}, {}, u"/reports/T0012.xls"_s},
            [this, here](int n, int m) {
                told_.isOnThisThread &= QThread::currentThread() == here;
                told_.progress.emplace_back(n, m);
            },
            [this, here](const RenderEnd& end) {
                told_.isOnThisThread &= QThread::currentThread() == here;
                told_.ends.push_back(end);
                loop_.quit();
            });
    }
    void AwaitEnd() {
        QTimer::singleShot(10'000, &loop_, [this] { loop_.exit(1); });
        ASSERT_EQ(loop_.exec(), 0) << "the end was not told";
    }

    std::unique_ptr<ScriptedRenderer> renderer_;
    std::unique_ptr<BackgroundRender> render_;
    Told told_;
    QEventLoop loop_;
};

TEST_F(BackgroundRenderTest, TellsProgressAndThenTheEndOnTheThreadThatBegan) {
    std::atomic<bool> wasElsewhere = false;
    QString target;
    Begin([&, here = QThread::currentThread()](const QString& path, const RenderProgress& progress,
                                               const std::stop_token&) {
        wasElsewhere = QThread::currentThread() != here;
        target = path;
        progress(1, 2);
        progress(2, 2);
        return true;
    });
    AwaitEnd();
    EXPECT_TRUE(wasElsewhere);
    EXPECT_TRUE(told_.isOnThisThread);
    EXPECT_EQ(target, u"/reports/T0012.xls"_s);
    EXPECT_EQ(told_.progress, (std::vector<std::pair<int, int>>{{1, 2}, {2, 2}}));
    ASSERT_EQ(told_.ends.size(), 1U);
    EXPECT_TRUE(told_.ends[0].complete);
    EXPECT_FALSE(told_.ends[0].error);
}

TEST_F(BackgroundRenderTest, TheEventLoopGoesOnWhileAReportIsMade) {
    QSemaphore wasAlive;
    Begin([&](const QString&, const RenderProgress&, const std::stop_token&) {
        return wasAlive.tryAcquire(1, 8000);
    });
    QTimer::singleShot(0, &loop_, [&] { wasAlive.release(); });
    AwaitEnd();
    EXPECT_TRUE(told_.ends.at(0).complete);
}

TEST_F(BackgroundRenderTest, PassesTheErrorOn) {
    Begin([](const QString&, const RenderProgress&, const std::stop_token&) -> bool {
        throw RunTimeError(ErrorNumber::FileNotFound, "DAVO_Header.xls");
    });
    AwaitEnd();
    ASSERT_TRUE(told_.ends.at(0).error);
    EXPECT_FALSE(told_.ends[0].complete);
    EXPECT_EQ(told_.ends[0].error->Number(), ErrorNumber::FileNotFound);
    EXPECT_STREQ(told_.ends[0].error->what(),
                 "Run-time error '53': File not found: DAVO_Header.xls");
}

TEST_F(BackgroundRenderTest, AnyOtherExceptionIsAnAutomationError) {
    Begin([](const QString&, const RenderProgress&, const std::stop_token&) -> bool {
        throw std::length_error("too long");
    });
    AwaitEnd();
    ASSERT_TRUE(told_.ends.at(0).error);
    EXPECT_STREQ(told_.ends[0].error->what(), "Run-time error '440': Automation error: too long");
}

TEST_F(BackgroundRenderTest, CancelEndsItWithoutAnError) {
    Begin([](const QString&, const RenderProgress& progress, const std::stop_token& stop) {
        progress(1, 31);
        return WaitForStop(stop);
    });
    QTimer::singleShot(0, &loop_, [this] { render_->Cancel(); });
    AwaitEnd();
    EXPECT_FALSE(told_.ends.at(0).complete);
    EXPECT_FALSE(told_.ends[0].error);
}

TEST_F(BackgroundRenderTest, NothingIsToldAfterItsEndOfLife) {
    std::atomic<bool> hasEnded = false;
    QSemaphore hasBegun;
    Begin([&](const QString&, const RenderProgress& progress, const std::stop_token& stop) {
        progress(1, 1);
        hasBegun.release();
        WaitForStop(stop);
        hasEnded = true;
        return false;
    });
    hasBegun.acquire();
    render_.reset();
    EXPECT_TRUE(hasEnded) << "the thread was not waited for";
    QCoreApplication::processEvents();
    EXPECT_TRUE(told_.progress.empty());
    EXPECT_TRUE(told_.ends.empty());
}

TEST_F(BackgroundRenderTest, TheEndMayDeleteIt) {
    ScriptedRenderer renderer(
        [](const QString&, const RenderProgress&, const std::stop_token&) { return true; });
    QEventLoop loop;
    std::unique_ptr<BackgroundRender> render;
    bool isComplete = false;
    render = std::make_unique<BackgroundRender>(renderer, RenderRequest{}, RenderProgress{},
                                                [&](const RenderEnd& end) {
                                                    isComplete = end.complete;
                                                    render.reset();
                                                    loop.quit();
                                                });
    QTimer::singleShot(10'000, &loop, [&] { loop.exit(1); });
    EXPECT_EQ(loop.exec(), 0);
    EXPECT_EQ(render, nullptr);
    EXPECT_TRUE(isComplete);
}

}  // namespace
}  // namespace davo::test
