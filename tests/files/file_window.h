// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/controls.h"
#include "tests/support/data_folder.h"

namespace davo::test {

// A window over a data folder of its own.
template <class Form>
class FileWindow : public ::testing::Test, public DataFolder, public Controls {
  protected:
    QWidget& Window() override { return *window; }
    void ShowWindow() {
        window->OnUnload = [this] { ++unloaded; };
        window->Form_Load();
        constexpr int kWidth = 1100;
        constexpr int kHeight = 640;
        window->resize(kWidth, kHeight);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    bool Unloaded() {
        return Until([this] { return unloaded == 1; });
    }

    std::unique_ptr<Form> window;
    int unloaded = 0;
};

}  // namespace davo::test
