// SPDX-License-Identifier: GPL-3.0-or-later
// The guard over the user's own setting of Windows, which the tests find and leave as it was.
#include <gtest/gtest.h>

#include "app/date_guard.h"

// After the others: its macros disturb them.
#include <windows.h>

namespace davo {
namespace {

QString FormatOfUser() {
    wchar_t text[80] = {};
    ::GetLocaleInfoW(::GetUserDefaultLCID(), LOCALE_SSHORTDATE, text, 80);
    return QString::fromWCharArray(text);
}

void SetFormatOfUser(const QString& format) {
    ASSERT_TRUE(
        ::SetLocaleInfoW(::GetUserDefaultLCID(), LOCALE_SSHORTDATE, format.toStdWString().c_str()));
}

int settingChanges = 0;

LRESULT CALLBACK CountChanges(HWND window, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_SETTINGCHANGE && w == 0 && l == 0) ++settingChanges;
    return ::DefWindowProcW(window, message, w, l);
}

// A top-level window that counts what it is told.
class ToldWindow {
  public:
    ToldWindow() {
        WNDCLASSW kind = {};
        kind.lpfnWndProc = CountChanges;
        kind.hInstance = ::GetModuleHandleW(nullptr);
        kind.lpszClassName = L"DavoToldWindow";
        ::RegisterClassW(&kind);
        window_ = ::CreateWindowExW(0, kind.lpszClassName, L"", WS_OVERLAPPEDWINDOW, 0, 0, 10, 10,
                                    nullptr, nullptr, kind.hInstance, nullptr);
        EXPECT_NE(window_, nullptr);
        settingChanges = 0;
    }
    ~ToldWindow() { ::DestroyWindow(window_); }
    ToldWindow(const ToldWindow&) = delete;
    ToldWindow& operator=(const ToldWindow&) = delete;

    // How often it was told within two seconds, at the first time at once.
    static int Told() {
        const ULONGLONG end = ::GetTickCount64() + 2000;
        while (settingChanges == 0 && ::GetTickCount64() < end) {
            MSG message = {};
            while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0)
                ::DispatchMessageW(&message);
            ::Sleep(5);
        }
        return settingChanges;
    }

  private:
    HWND window_;
};

class ShortDateOfUser : public testing::Test {
  protected:
    ~ShortDateOfUser() override { SetFormatOfUser(before_); }

  private:
    QString before_ = FormatOfUser();
};

TEST_F(ShortDateOfUser, DayFirstIsReplacedForTheRunAndPutBack) {
    for (const QString& own :
         {QStringLiteral("dd/MM/yyyy"), QStringLiteral("d.M.yy"),
          QStringLiteral("yyyy'年'M'月'd'日'"), QStringLiteral("mm/dd/yyyy")}) {
        SetFormatOfUser(own);
        const auto format = MakeShortDateFormat();
        DateGuard guard(*format);
        guard.Run();
        EXPECT_EQ(guard.SavedShortDate(), own);
        EXPECT_EQ(FormatOfUser(), QStringLiteral("MM/dd/yyyy"));
        guard.Undo();
        EXPECT_EQ(FormatOfUser(), own);
    }
}

TEST_F(ShortDateOfUser, MonthFirstIsLeftAlone) {
    const ToldWindow window;
    SetFormatOfUser(QStringLiteral("MM/dd/yy"));
    const auto format = MakeShortDateFormat();
    DateGuard guard(*format);
    guard.Run();
    EXPECT_FALSE(guard.ShortDateChanged());
    EXPECT_EQ(FormatOfUser(), QStringLiteral("MM/dd/yy"));
}

TEST_F(ShortDateOfUser, StaysChangedWhenTheProgramIsKilled) {
    SetFormatOfUser(QStringLiteral("dd/MM/yyyy"));
    const auto format = MakeShortDateFormat();
    {
        DateGuard guard(*format);
        guard.Run();
    }
    DateGuard next(*format);
    next.Run();
    EXPECT_FALSE(next.ShortDateChanged());
    next.Undo();
    EXPECT_EQ(FormatOfUser(), QStringLiteral("MM/dd/yyyy"));
}

TEST_F(ShortDateOfUser, ChangesAreToldToAllWindows) {
    SetFormatOfUser(QStringLiteral("dd/MM/yyyy"));
    const auto format = MakeShortDateFormat();
    const ToldWindow window;
    DateGuard guard(*format);
    const ULONGLONG start = ::GetTickCount64();
    guard.Run();
    EXPECT_LT(::GetTickCount64() - start, 1000U);
    EXPECT_GT(ToldWindow::Told(), 0);
}

}  // namespace
}  // namespace davo
