// What the tests of the DLL share: a host that knows the component by its type library alone.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <ocidl.h>
#include <string>
#include <string_view>

#include <wrl/client.h>

#include "Brindle_host.h"

namespace brindle::com::test {

using Microsoft::WRL::ComPtr;

// A text for one call.
class Text {
public:
    explicit Text(std::wstring_view text)
        : text_(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    ~Text() { ::SysFreeString(text_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    [[nodiscard]] BSTR get() const { return text_; }
    [[nodiscard]] BSTR* reference() { return &text_; }

private:
    BSTR text_;
};

// Takes over what a member has handed out.
[[nodiscard]] std::wstring taken(BSTR text);

// What a property answers; a result code that is no success fails the test.
template <typename Interface>
[[nodiscard]] std::wstring text(Interface& object, HRESULT (__stdcall Interface::*get)(BSTR*)) {
    BSTR value = nullptr;
    const HRESULT result = (object.*get)(&value);
    return result == S_OK ? taken(value) : L"failed";
}

template <typename Interface>
[[nodiscard]] long number(Interface& object, HRESULT (__stdcall Interface::*get)(long*)) {
    long value = -99;
    return (object.*get)(&value) == S_OK ? value : -98;
}

// The class as registered.
[[nodiscard]] ComPtr<host::_cMPEGHeader> create();
// The same from the DLL whose clock the test advances, that much at each look.
[[nodiscard]] ComPtr<host::_cMPEGHeader> create_with_clock(double seconds_at_each_look);

HRESULT assign(host::_cMPEGHeader& header, const std::wstring& name);

// A file of the test's own, removed at the end.
class File {
public:
    File(const std::wstring& name, std::string_view content);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    [[nodiscard]] const std::wstring& name() const { return name_; }
    [[nodiscard]] std::string content() const;

private:
    std::wstring name_;
};

// The folder for files, with its "\".
[[nodiscard]] std::wstring temporary_folder();

// `count` frames of MPEG-1 Layer III, 128 kbit/s, 44100 Hz, joint stereo.
[[nodiscard]] std::string audio(int count);
// Frames of 128 and 160 kbit/s in turn, which a reader has to walk to the end.
[[nodiscard]] std::string varying_audio(int count);
// An ID3v2.3 tag of text frames.
[[nodiscard]] std::string tag(const std::map<std::string, std::string>& frames);

// How many handles the process has open.
[[nodiscard]] std::size_t handles();
// The bytes of all blocks in use in all heaps of the process.
[[nodiscard]] std::size_t heap_bytes();

// Listens to all three events as a host does: through IDispatch alone.
class Sink : public IDispatch {
public:
    std::function<void(const std::wstring& name)> on_reading;
    std::function<void(const std::wstring& name, long position, long length, VARIANT_BOOL& cancel)>
        on_scanning;
    std::function<void(long& duration)> on_duration_needed;
    HRESULT answer = S_OK;

    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink() = default;

    HRESULT __stdcall QueryInterface(REFIID iid, void** object) override;
    ULONG __stdcall AddRef() override { return ++references; }
    ULONG __stdcall Release() override { return --references; }
    HRESULT __stdcall GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT __stdcall GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT __stdcall GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT __stdcall Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                             EXCEPINFO* exception, UINT*) override;

    ULONG references = 0;  // it lives on the test's stack
    int calls = 0;
};

[[nodiscard]] ComPtr<IConnectionPoint> events_of(host::_cMPEGHeader& header);
// The cookie; 0 fails the test.
[[nodiscard]] DWORD advise(host::_cMPEGHeader& header, Sink& sink);

}  // namespace brindle::com::test
