// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

namespace davo {

// What a window that waits for a report shows.
inline constexpr const char* kPlottingCaption = "Plotting Excel Graphs, Please Wait...";

// What a window needs in which a report can be asked for. Where they are not set, nobody is asked.
struct ReportHooks {
    // Gets what there is to tell while a report is made.
    using Show = std::function<void(const QString& text)>;

    // Makes the report of a record file (a full path) and shows it; returns when that has ended or
    // was left. May throw RunTimeError.
    std::function<void(const QString& recordFile, const Show& show)> make;
    // The operator does not want to wait for the report: make is to return.
    std::function<void()> leave;
};

}  // namespace davo
