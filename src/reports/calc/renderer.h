// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "reports/calc/engine.h"

namespace davo {

// Makes ".xls" by a LibreOffice Calc of its own. When the engine dies or hangs in the middle of a
// report, the report is begun once more with a new one.
class CalcRenderer : public ReportRenderer {
  public:
    explicit CalcRenderer(const CalcSettings& settings);

    QString Extension() const override { return QStringLiteral(".xls"); }
    void Prepare() override { engine_.Start(); }
    bool Render(const Workbook& workbook, const QString& templatePath, const QString& targetPath,
                const RenderProgress& progress, const std::stop_token& stop) override;

  private:
    std::optional<std::string> MakeUnlessLost(const Workbook& workbook, const std::string& model,
                                              const RenderProgress& progress,
                                              const std::stop_token& stop);
    std::string Make(const Workbook& workbook, const std::string& model,
                     const RenderProgress& progress, const std::stop_token& stop);

    std::mutex oneAtATime_;
    bool inEngine_ = true;  // is the workbook written
    CalcEngine engine_;
};

}  // namespace davo
