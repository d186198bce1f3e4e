// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QThread>
#include <memory>
#include <vector>

#include "reports/renderer.h"
#include "reports/report_runner.h"

namespace davo::test {

// Keeps what it is to write, and writes at once or waits to be stopped.
class WaitingRenderer : public ReportRenderer {
  public:
    WaitingRenderer(std::vector<QString>& targets, const bool& waits)
        : targets_(targets), waits_(waits) {}
    QString Extension() const override { return QStringLiteral(".xls"); }
    void Prepare() override {}
    bool Render(const Workbook& /*workbook*/, const QString& /*templatePath*/,
                const QString& targetPath, const RenderProgress& progress,
                const std::stop_token& stop) override {
        progress(1, 1);
        while (waits_ && !stop.stop_requested())
            QThread::msleep(1);
        if (waits_) return false;
        targets_.push_back(targetPath);
        return true;
    }

  private:
    std::vector<QString>& targets_;
    const bool& waits_;
};

// Reports that it makes, and what was opened of them.
struct WaitingReports {
    WaitingReports(Prompts& prompts, Settings& settings)
        : runner(
              prompts, settings,
              [this] {
                  return ChosenRenderer{std::make_unique<WaitingRenderer>(targets, waits), false};
              },
              [this](const QString& path) {
                  opened.push_back(path);
                  return true;
              }) {}

    std::vector<QString> targets;
    std::vector<QString> opened;
    bool waits = false;
    ReportRunner runner;
};

}  // namespace davo::test
