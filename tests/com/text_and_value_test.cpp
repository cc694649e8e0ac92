// Wide text and Variants on their way through the DLL.
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

using Header = host::_cMPEGHeader;

class ValueTest : public testing::Test {
protected:
    ValueTest() { EXPECT_EQ(assign(*header.Get(), file.name()), S_OK); }

    // What a custom field reads after it was given `value`; it holds "before" before that.
    std::wstring stored(VARIANT value) {
        const Text name(L"Field");
        const Text before_text(L"before");
        VARIANT before{};
        before.vt = VT_BSTR;
        before.bstrVal = before_text.get();
        EXPECT_EQ(header->CustomFieldAdd(name.get(), before), S_OK);
        EXPECT_EQ(header->CustomFieldAdd(name.get(), value), S_OK);
        VARIANT found{};
        EXPECT_EQ(header->CustomFieldRetrieve(name.get(), &found), S_OK);
        return found.vt == VT_BSTR ? taken(found.bstrVal) : L"no text";
    }

    File file{L"values.mp3", tag({{"TIT2", "A title"}}) + audio(120)};
    ComPtr<Header> header = create();
};

TEST_F(ValueTest, EveryTypeOfVariantIsConvertedOrChangesNothing) {
    const Text text(L"a text");
    short small = -12;
    double real = 0.25;
    DECIMAL decimal{};
    decimal.scale = 1;
    decimal.Lo64 = 125;
    VARIANT_BOOL yes = VARIANT_TRUE;
    BSTR no_text = nullptr;
    VARIANT inner{};
    inner.vt = VT_I4;
    inner.lVal = 70000;
    BSTR referred = text.get();
    struct Case {
        VARTYPE type;
        std::function<void(VARIANT&)> set;
        const wchar_t* expected;
    };
    const Case cases[] = {
        {VT_EMPTY, [](VARIANT&) {}, L""},
        {VT_NULL, [](VARIANT&) {}, L"before"},
        {VT_I1, [](VARIANT& v) { v.cVal = -5; }, L"-5"},
        {VT_UI1, [](VARIANT& v) { v.bVal = 200; }, L"200"},
        {VT_I2, [](VARIANT& v) { v.iVal = -32768; }, L"-32768"},
        {VT_UI2, [](VARIANT& v) { v.uiVal = 65535; }, L"65535"},
        {VT_I4, [](VARIANT& v) { v.lVal = -2147483647; }, L"-2147483647"},
        {VT_UI4, [](VARIANT& v) { v.ulVal = 4294967295U; }, L"4294967295"},
        {VT_I8, [](VARIANT& v) { v.llVal = 9007199254740993; }, L"9007199254740993"},
        {VT_INT, [](VARIANT& v) { v.intVal = 7; }, L"7"},
        {VT_UINT, [](VARIANT& v) { v.uintVal = 8; }, L"8"},
        {VT_R4, [](VARIANT& v) { v.fltVal = 1.1F; }, L"1.1"},
        {VT_R8, [](VARIANT& v) { v.dblVal = 0.1; }, L"0.1"},
        {VT_CY, [](VARIANT& v) { v.cyVal.int64 = 12345; }, L"1.2345"},
        {VT_DATE, [](VARIANT& v) { v.date = 36526; }, L"01/01/2000"},
        {VT_UI8, [](VARIANT& v) { v.ullVal = 18446744073709551615U; }, L"18446744073709551615"},
        {VT_BOOL, [](VARIANT& v) { v.boolVal = VARIANT_TRUE; }, L"-1"},
        {VT_BOOL, [](VARIANT& v) { v.boolVal = VARIANT_FALSE; }, L"0"},
        {VT_BSTR, [&](VARIANT& v) { v.bstrVal = text.get(); }, L"a text"},
        {VT_BSTR, [](VARIANT& v) { v.bstrVal = nullptr; }, L""},
        {VT_ERROR, [](VARIANT& v) { v.scode = E_FAIL; }, L"before"},
        {VT_DISPATCH, [](VARIANT& v) { v.pdispVal = nullptr; }, L"before"},
        {VT_UNKNOWN, [](VARIANT& v) { v.punkVal = nullptr; }, L"before"},
        {VT_ARRAY | VT_UI1, [](VARIANT& v) { v.parray = nullptr; }, L"before"},
        {VT_BYREF | VT_I2, [&](VARIANT& v) { v.piVal = &small; }, L"-12"},
        {VT_BYREF | VT_R8, [&](VARIANT& v) { v.pdblVal = &real; }, L"0.25"},
        {VT_BYREF | VT_DECIMAL, [&](VARIANT& v) { v.pdecVal = &decimal; }, L"12.5"},
        {VT_BYREF | VT_BOOL, [&](VARIANT& v) { v.pboolVal = &yes; }, L"-1"},
        {VT_BYREF | VT_BSTR, [&](VARIANT& v) { v.pbstrVal = &referred; }, L"a text"},
        {VT_BYREF | VT_BSTR, [&](VARIANT& v) { v.pbstrVal = &no_text; }, L""},
        {VT_BYREF | VT_VARIANT, [&](VARIANT& v) { v.pvarVal = &inner; }, L"70000"},
        {VT_BYREF | VT_I4, [](VARIANT& v) { v.plVal = nullptr; }, L"before"},
        {VT_BYREF | VT_VARIANT, [](VARIANT& v) { v.pvarVal = nullptr; }, L"before"},
        {VT_VOID, [](VARIANT&) {}, L"before"},
        {999, [](VARIANT&) {}, L"before"},
    };
    for (const Case& row : cases) {
        VARIANT value{};
        value.vt = row.type;
        row.set(value);
        EXPECT_EQ(stored(value), row.expected) << "type " << row.type;
    }
}

TEST_F(ValueTest, CategoryIsEmptyTextOrTheTextOfWhatWasGiven) {
    VARIANT found{};
    found.vt = VT_I4;
    EXPECT_EQ(header->get_Category(&found), S_OK);
    EXPECT_EQ(found.vt, VT_EMPTY);
    VARIANT value{};
    value.vt = VT_R8;
    value.dblVal = 2.5;
    EXPECT_EQ(header->put_Category(value), S_OK);
    EXPECT_EQ(header->get_Category(&found), S_OK);
    ASSERT_EQ(found.vt, VT_BSTR);
    EXPECT_EQ(taken(found.bstrVal), L"2.5");
    value.vt = VT_NULL;
    EXPECT_EQ(header->put_Category(value), S_OK);
    EXPECT_EQ(header->get_Category(&found), S_OK);
    ASSERT_EQ(found.vt, VT_BSTR);
    EXPECT_EQ(taken(found.bstrVal), L"2.5");
}

TEST_F(ValueTest, TextPassesWhole) {
    const std::wstring long_text(100'000, L'x');
    for (const std::wstring& words :
         {std::wstring(), std::wstring(L"a\0b", 3), std::wstring(L"\u65e5\u672c \U0001F3B5"),
          std::wstring(L"\u00e9\u20ac"), long_text}) {
        const Text given(words);
        EXPECT_EQ(header->put_Publisher(given.get()), S_OK);
        EXPECT_EQ(text(*header.Get(), &Header::get_Publisher), words);
    }
    EXPECT_EQ(header->put_Publisher(nullptr), S_OK);
    EXPECT_EQ(text(*header.Get(), &Header::get_Publisher), L"");
}

TEST_F(ValueTest, CharactersOutsideTheCodePageBecomeQuestionMarksInTheFileOnly) {
    const Text given(L"\u00e9\u20ac\u65e5");
    EXPECT_EQ(header->put_Composer(given.get()), S_OK);
    EXPECT_EQ(text(*header.Get(), &Header::get_Composer), L"\u00e9\u20ac\u65e5");
    ASSERT_EQ(header->SaveAllInfo(), S_OK);
    EXPECT_NE(file.content().find("\xE9\x80?"), std::string::npos);
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(text(*header.Get(), &Header::get_Composer), L"\u00e9\u20ac?");
}

void read_edit_and_save(const std::wstring& name) {
    const auto header = create();
    ASSERT_EQ(assign(*header.Get(), name), S_OK);
    EXPECT_EQ(text(*header.Get(), &Header::get_FileName), name);
    EXPECT_EQ(number(*header.Get(), &Header::get_BitRate), 128000);
    // Longer than the old tag: the file is rebuilt.
    const Text title(std::wstring(3000, L't'));
    EXPECT_EQ(header->put_Title(title.get()), S_OK);
    EXPECT_EQ(header->SaveAllInfo(), S_OK);
    EXPECT_EQ(assign(*header.Get(), name), S_OK);
    EXPECT_EQ(text(*header.Get(), &Header::get_Title), std::wstring(3000, L't'));
    EXPECT_EQ(number(*header.Get(), &Header::get_BitRate), 128000);
}

TEST(FileNames, OfEveryScriptWork) {
    for (const wchar_t* name : {L"caf\u00e9.mp3", L"\u65e5\u672c\u8a9e.mp3",
                                L"\u041c\u0443\u0437\u044b\u043a\u0430.MP3", L"\U0001F3B5.mp3"}) {
        const File file(name, audio(120));
        read_edit_and_save(file.name());
    }
}

// The system would end it at the NUL and open another file.
TEST(FileNames, WithANulInsideAreNeverOpened) {
    const File file(L"song.mp3", audio(120));
    const auto header = create();
    EXPECT_EQ(assign(*header.Get(), file.name() + std::wstring(1, L'\0') + L".mp3"), S_OK);
    EXPECT_EQ(number(*header.Get(), &Header::get_BitRate), 0);
    Text none(L"");
    ::SysFreeString(*none.reference());
    *none.reference() = nullptr;
    EXPECT_EQ(header->put_FileName(none.reference()), S_OK);
    EXPECT_EQ(text(*header.Get(), &Header::get_FileName), L"");
}

TEST(FileNames, BeyondTwoHundredAndSixtyCharactersWork) {
    std::vector<std::wstring> folders;
    std::wstring folder = temporary_folder();
    while (folder.size() < 400) {
        folder += std::wstring(90, L'f') + L"\\";
        folders.push_back(folder);
        ASSERT_NE(::CreateDirectoryW((L"\\\\?\\" + folder).c_str(), nullptr), 0);
    }
    const std::wstring name = folder + L"song.mp3";
    {
        const HANDLE file = ::CreateFileW((L"\\\\?\\" + name).c_str(), GENERIC_WRITE, 0, nullptr,
                                          CREATE_NEW, 0, nullptr);
        ASSERT_NE(file, INVALID_HANDLE_VALUE);
        const std::string content = audio(120);
        DWORD written = 0;
        EXPECT_NE(::WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written,
                              nullptr),
                  0);
        ::CloseHandle(file);
    }
    read_edit_and_save(name);
    read_edit_and_save(folder + L".\\..\\" + std::wstring(90, L'f') + L"/song.mp3");
    EXPECT_NE(::DeleteFileW((L"\\\\?\\" + name).c_str()), 0);
    for (auto made = folders.rbegin(); made != folders.rend(); ++made) {
        // Nothing else was left in them.
        EXPECT_NE(::RemoveDirectoryW((L"\\\\?\\" + *made).c_str()), 0);
    }
}

TEST(FileNames, FileThatAnotherProgramHoldsIsReadButNotWritten) {
    const File file(L"held.mp3", audio(120));
    const HANDLE other = ::CreateFileW(file.name().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                       OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    const auto header = create();
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(number(*header.Get(), &Header::get_BitRate), 128000);
    const Text title(L"New");
    EXPECT_EQ(header->put_Title(title.get()), S_OK);
    EXPECT_EQ(static_cast<unsigned long>(header->SaveAllInfo()), 0x800A0046UL);  // 70
    ::CloseHandle(other);
    EXPECT_TRUE(file.content() == audio(120)) << file.content().size();
    EXPECT_EQ(header->SaveAllInfo(), S_OK);
}

}  // namespace
}  // namespace brindle::com::test
