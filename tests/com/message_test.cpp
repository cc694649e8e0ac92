// The host's windows while the component is busy.
#include <functional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

// An invisible window. `on_message` is called for each WM_APP.
class Window {
public:
    Window() {
        WNDCLASSW type{};
        type.lpszClassName = L"BrindleTestWindow";
        type.lpfnWndProc = handle;
        ::RegisterClassW(&type);
        window_ = ::CreateWindowExW(0, type.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE,
                                    nullptr, nullptr, nullptr);
        EXPECT_NE(window_, nullptr);
        ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~Window() { ::DestroyWindow(window_); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void post() { EXPECT_NE(::PostMessageW(window_, WM_APP, 0, 0), 0); }

    int handled = 0;
    std::function<void()> on_message;

private:
    static LRESULT __stdcall handle(HWND window, UINT message, WPARAM first, LPARAM second) {
        if (message != WM_APP) {
            return ::DefWindowProcW(window, message, first, second);
        }
        auto& self = *reinterpret_cast<Window*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
        ++self.handled;
        if (self.on_message) {
            self.on_message();
        }
        return 0;
    }

    HWND window_ = nullptr;
};

class MessageTest : public testing::Test {
protected:
    // Has to be walked to its end.
    File file{L"varying.mp3", varying_audio(2000)};
    // Half a second and more go by at each look at the clock.
    ComPtr<host::_cMPEGHeader> header = create_with_clock(0.6);
    Window window;
};

TEST_F(MessageTest, AreHandledDuringAScan) {
    window.post();
    window.post();
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(window.handled, 2);
}

TEST_F(MessageTest, AreHandledWhileALongFileIsCopied) {
    // 500,400 bytes, in which the queue is looked after once: after 409,600.
    const File long_file(L"long.mp3", audio(1200));
    EXPECT_EQ(assign(*header.Get(), long_file.name()), S_OK);
    const Text title(L"A tag where there was none");
    EXPECT_EQ(header->put_Title(title.get()), S_OK);
    for (int i = 0; i < 5; ++i) {
        window.post();
    }
    EXPECT_EQ(header->SaveAllInfo(), S_OK);
    EXPECT_EQ(window.handled, 5);
}

TEST_F(MessageTest, WishToQuitIsLeftToTheHost) {
    window.post();
    ::PostQuitMessage(7);
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    VARIANT_BOOL varies = VARIANT_FALSE;
    EXPECT_EQ(header->get_VBR(&varies), S_OK);
    EXPECT_EQ(varies, VARIANT_TRUE);
    EXPECT_EQ(window.handled, 1);
    MSG message{};
    ASSERT_NE(::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 7U);
}

// A button that the user presses while the file is read.
TEST_F(MessageTest, HandlerCannotLoadSaveOrStripWhatIsBeingScanned) {
    window.on_message = [&] {
        EXPECT_EQ(assign(*header.Get(), L"other.wav"), S_OK);
        EXPECT_EQ(static_cast<unsigned long>(header->SaveAllInfo()), 0x800A0005UL);  // 5
        VARIANT_BOOL stripped = VARIANT_TRUE;
        EXPECT_EQ(header->StripTags(host::v1andv2TagsBothPresent, &stripped), S_OK);
        EXPECT_EQ(stripped, VARIANT_FALSE);
    };
    window.post();
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(window.handled, 1);
    EXPECT_EQ(text(*header.Get(), &host::_cMPEGHeader::get_FileName), file.name());
    EXPECT_TRUE(file.content() == varying_audio(2000)) << file.content().size();
}

TEST_F(MessageTest, HandlerMayReleaseTheObjectThatScans) {
    host::_cMPEGHeader* const plain = header.Get();
    Sink sink;
    static_cast<void>(advise(*plain, sink));
    window.on_message = [&] { header.Reset(); };
    window.post();
    Text name(file.name());
    EXPECT_EQ(plain->put_FileName(name.reference()), S_OK);
    EXPECT_EQ(window.handled, 1);
    EXPECT_EQ(sink.references, 0U);  // the object is gone
}

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

TEST_F(MessageTest, FieldWithoutANameIsRequestedInABox) {
    const File tagged(L"tagged.mp3", tag({{"TIT2", "A title"}, {"TXXX", "a field"}}) + audio(120));
    EXPECT_EQ(assign(*header.Get(), tagged.name()), S_OK);
    seen = {};
    ::SetTimer(nullptr, 0, 10, answer_box);
    VARIANT value{};
    value.vt = VT_I4;
    EXPECT_EQ(header->CustomFieldAdd(nullptr, value), S_OK);
    EXPECT_EQ(seen.title, L"Brindle");
    EXPECT_EQ(seen.text, L"You need to send a CustomFrameTitle to perform this!");
}

}  // namespace
}  // namespace brindle::com::test
