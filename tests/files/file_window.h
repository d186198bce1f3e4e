// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <vector>

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
    // r0, r1 ...; their names.
    std::vector<QString> AddRecords(std::size_t count) {
        std::vector<QString> names;
        for (std::size_t i = 0; i < count; ++i) {
            names.push_back(QStringLiteral("r%1").arg(i));
            AddRecord(names.back());
        }
        return names;
    }
    bool Unloaded() {
        return Until([this] { return unloaded == 1; });
    }

    std::unique_ptr<Form> window;
    int unloaded = 0;
};

}  // namespace davo::test
