// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "common/run_time_error.h"

namespace davo::test {

template <class Action>
std::optional<RunTimeError> Thrown(Action&& action) {
    try {
        action();
    } catch (const RunTimeError& error) {
        return error;
    }
    return std::nullopt;
}

// The number of the run-time error that ends action; 0 when none does.
template <class Action>
int ErrorBy(Action&& action) {
    const auto error = Thrown(action);
    return error ? static_cast<int>(error->Number()) : 0;
}

// The same where one must.
template <class Action>
ErrorNumber NumberThrownBy(Action&& action) {
    const auto error = Thrown(action);
    EXPECT_TRUE(error) << "nothing thrown";
    return error ? error->Number() : ErrorNumber{};
}

template <class Action>
std::string MessageThrownBy(Action&& action) {
    const auto error = Thrown(action);
    EXPECT_TRUE(error) << "nothing thrown";
    return error ? error->what() : "";
}

}  // namespace davo::test
