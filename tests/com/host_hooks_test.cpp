#include "facade/com/host_hooks.h"

#include <string>
#include <windows.h>

#include <gtest/gtest.h>

namespace brindle::com {
namespace {

struct Box {
    std::wstring title;
    std::wstring text;
};

Box seen;

// Looks for the message box, reads it and presses its button.
void __stdcall answer_box(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND box = ::FindWindowW(L"#32770", nullptr);
    if (box == nullptr) {
        return;
    }
    ::KillTimer(nullptr, timer);
    wchar_t words[200] = {};
    ::GetWindowTextW(box, words, 200);
    seen.title = words;
    constexpr int kTextOfBox = 0xFFFF;
    ::GetDlgItemTextW(box, kTextOfBox, words, 200);
    seen.text = words;
    ::PostMessageW(box, WM_COMMAND, IDOK, 0);
}

TEST(HostHooks, MessageBoxBearsTheNameAndTheText) {
    ::SetTimer(nullptr, 0, 50, answer_box);
    show_message(u"Something to acknowledge \u20AC");
    EXPECT_EQ(seen.title, L"Brindle");
    EXPECT_EQ(seen.text, L"Something to acknowledge \u20AC");
}

TEST(HostHooks, PumpingEmptiesTheQueue) {
    for (int i = 0; i < 5; ++i) {
        ASSERT_NE(::PostThreadMessageW(::GetCurrentThreadId(), WM_APP, 0, 0), 0);
    }
    pump_messages();
    MSG message{};
    EXPECT_EQ(::PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_NOREMOVE), 0);
}

TEST(HostHooks, WishToQuitStaysForTheHostsOwnLoop) {
    ::PostQuitMessage(42);
    pump_messages();
    MSG message{};
    ASSERT_NE(::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 42U);
    EXPECT_EQ(::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), 0);
}

}  // namespace
}  // namespace brindle::com
