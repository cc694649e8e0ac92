// Late binding: names, numbers, conversions and errors.
#include <cwchar>
#include <functional>
#include <ocidl.h>
#include <vector>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

struct Outcome {
    HRESULT result = E_UNEXPECTED;
    VARIANT value{};
    HRESULT number = 0;
    std::wstring description;
    std::wstring source;
    UINT wrong = 99;

    Outcome() = default;
    Outcome(const Outcome&) = delete;
    Outcome& operator=(const Outcome&) = delete;
    ~Outcome() { ::VariantClear(&value); }
};

DISPID number_of(IDispatch& object, const wchar_t* name) {
    auto* text = const_cast<wchar_t*>(name);
    DISPID number = -77;
    EXPECT_EQ(object.GetIDsOfNames(GUID_NULL, &text, 1, LOCALE_INVARIANT, &number), S_OK)
        << std::string(name, name + std::wcslen(name));
    return number;
}

// `arguments` in the order of the call.
void call(Outcome& outcome, IDispatch& object, const wchar_t* name, WORD flags,
          std::vector<VARIANTARG> arguments, std::vector<DISPID> names = {}) {
    std::vector<VARIANTARG> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS passed{reversed.data(), names.data(), static_cast<UINT>(reversed.size()),
                      static_cast<UINT>(names.size())};
    EXCEPINFO exception{};
    outcome.result = object.Invoke(number_of(object, name), GUID_NULL, LOCALE_INVARIANT, flags,
                                   &passed, &outcome.value, &exception, &outcome.wrong);
    outcome.number = exception.scode;
    outcome.description = exception.bstrDescription == nullptr ? L"" : exception.bstrDescription;
    outcome.source = exception.bstrSource == nullptr ? L"" : exception.bstrSource;
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrHelpFile);
}

VARIANTARG number(long value) {
    VARIANTARG made{};
    made.vt = VT_I4;
    made.lVal = value;
    return made;
}

VARIANTARG real(double value) {
    VARIANTARG made{};
    made.vt = VT_R8;
    made.dblVal = value;
    return made;
}

VARIANTARG flag(bool value) {
    VARIANTARG made{};
    made.vt = VT_BOOL;
    made.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return made;
}

VARIANTARG text(const Text& value) {
    VARIANTARG made{};
    made.vt = VT_BSTR;
    made.bstrVal = value.get();
    return made;
}

VARIANTARG typed(VARTYPE type) {
    VARIANTARG made{};
    made.vt = type;
    return made;
}

VARIANTARG omitted() {
    VARIANTARG made = typed(VT_ERROR);
    made.scode = DISP_E_PARAMNOTFOUND;
    return made;
}

HRESULT put(IDispatch& object, const wchar_t* name, VARIANTARG value) {
    Outcome outcome;
    call(outcome, object, name, DISPATCH_PROPERTYPUT, {value}, {DISPID_PROPERTYPUT});
    return outcome.result;
}

std::wstring get_text(IDispatch& object, const wchar_t* name) {
    Outcome outcome;
    call(outcome, object, name, DISPATCH_PROPERTYGET, {});
    return outcome.result == S_OK && outcome.value.vt == VT_BSTR
               ? std::wstring(outcome.value.bstrVal, ::SysStringLen(outcome.value.bstrVal))
               : L"failed";
}

long get_number(IDispatch& object, const wchar_t* name) {
    Outcome outcome;
    call(outcome, object, name, DISPATCH_PROPERTYGET, {});
    switch (outcome.value.vt) {
        case VT_I2:
        case VT_BOOL:
            return outcome.value.iVal;
        case VT_I4:
            return outcome.value.lVal;
        default:
            return -98;
    }
}

class DispatchTest : public testing::Test {
protected:
    DispatchTest() { EXPECT_EQ(assign(*header.Get(), file.name()), S_OK); }

    File file{L"dispatched.mp3", tag({{"TIT2", "A title"}}) + audio(120)};
    ComPtr<host::_cMPEGHeader> header = create();
};

TEST_F(DispatchTest, NamesAreFoundInAnyCase) {
    EXPECT_EQ(number_of(*header.Get(), L"SaveAllInfo"), 4);
    EXPECT_EQ(number_of(*header.Get(), L"saveallinfo"), 4);
    EXPECT_EQ(number_of(*header.Get(), L"FILENAME"), 7);
    auto* unknown = const_cast<wchar_t*>(L"NoSuchMember");
    DISPID found = 0;
    EXPECT_EQ(header->GetIDsOfNames(GUID_NULL, &unknown, 1, 0, &found), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(found, DISPID_UNKNOWN);
    EXPECT_EQ(header->GetIDsOfNames(__uuidof(IDispatch), &unknown, 1, 0, &found),
              DISP_E_UNKNOWNINTERFACE);
}

TEST_F(DispatchTest, PropertiesAndFunctionsAnswer) {
    EXPECT_EQ(get_text(*header.Get(), L"Title"), L"A title");
    EXPECT_EQ(get_number(*header.Get(), L"BitRate"), 128000);
    EXPECT_EQ(get_number(*header.Get(), L"FrameCount"), 1);
    EXPECT_EQ(get_number(*header.Get(), L"VBR"), 0);
    EXPECT_EQ(get_number(*header.Get(), L"TagType"), 2);
    // A function that a script reads like a property.
    EXPECT_EQ(get_number(*header.Get(), L"ID3TagSizeIncludingHeader"), 28);  // 10 + 10 + 1 + 7
    Outcome outcome;
    const Text frame(L"TIT2");
    call(outcome, *header.Get(), L"v2Tag", DISPATCH_METHOD, {text(frame), number(1)});
    EXPECT_EQ(outcome.result, S_OK);
    ASSERT_EQ(outcome.value.vt, VT_BSTR);
    EXPECT_STREQ(outcome.value.bstrVal, L"A title");
}

TEST_F(DispatchTest, NamedAndOmittedArgumentsFindTheirPlace) {
    wchar_t words[4][20] = {L"ElapsedTimeFromMs", L"ms", L"TimeStyle", L"UsePadding"};
    wchar_t* names[] = {words[0], words[1], words[2], words[3]};
    DISPID numbers[4] = {};
    ASSERT_EQ(header->GetIDsOfNames(GUID_NULL, names, 4, LOCALE_INVARIANT, numbers), S_OK);
    EXPECT_EQ(numbers[0], 51);
    EXPECT_EQ(numbers[1], 0);
    EXPECT_EQ(numbers[2], 1);
    EXPECT_EQ(numbers[3], 2);
    struct Case {
        std::vector<VARIANTARG> arguments;
        std::vector<DISPID> names;
        const wchar_t* expected;
    };
    // Named arguments come first in the array, so they are last here, the first name last.
    const Case cases[] = {
        {{number(62345)}, {}, L"01:02"},
        {{number(62345), number(2)}, {}, L"01:02.34"},
        {{number(62345), number(1), flag(true)}, {}, L".34"},
        {{number(62345), omitted(), flag(true)}, {}, L"01:02"},
        {{number(62345), omitted(), omitted()}, {}, L"01:02"},
        {{number(62345), number(2)}, {1}, L"01:02.34"},
        {{number(2), number(62345)}, {0, 1}, L"01:02.34"},
        {{flag(true), number(62345)}, {0, 2}, L"01:02"},
        {{number(62345), flag(false)}, {2}, L"01:02"},
    };
    for (const Case& row : cases) {
        Outcome outcome;
        call(outcome, *header.Get(), L"ElapsedTimeFromMs", DISPATCH_METHOD, row.arguments,
             row.names);
        ASSERT_EQ(outcome.result, S_OK);
        EXPECT_STREQ(outcome.value.bstrVal, row.expected);
    }
}

TEST_F(DispatchTest, WrongArgumentsAreToldApart) {
    const Text word(L"many");
    struct Case {
        std::vector<VARIANTARG> arguments;
        std::vector<DISPID> names;
        HRESULT expected;
    };
    VARIANTARG null_reference = typed(VT_BYREF | VT_I4);
    const Case cases[] = {
        {{}, {}, DISP_E_PARAMNOTOPTIONAL},
        {{omitted()}, {}, DISP_E_PARAMNOTOPTIONAL},
        {{number(1), number(1), flag(true), number(1)}, {}, DISP_E_BADPARAMCOUNT},
        {{number(1), number(1)}, {0}, DISP_E_BADPARAMCOUNT},
        {{number(1), number(1)}, {7}, DISP_E_PARAMNOTFOUND},
        {{number(1), number(1)}, {-9}, DISP_E_PARAMNOTFOUND},
        {{text(word)}, {}, DISP_E_TYPEMISMATCH},
        {{typed(VT_NULL)}, {}, DISP_E_TYPEMISMATCH},
        {{typed(VT_DISPATCH)}, {}, DISP_E_TYPEMISMATCH},
        {{null_reference}, {}, DISP_E_TYPEMISMATCH},
        {{real(3e9)}, {}, DISP_E_OVERFLOW},
    };
    int row_number = 0;
    for (const Case& row : cases) {
        Outcome outcome;
        call(outcome, *header.Get(), L"ElapsedTimeFromMs", DISPATCH_METHOD, row.arguments,
             row.names);
        EXPECT_EQ(outcome.result, row.expected) << "row " << row_number;
        ++row_number;
    }
    Outcome outcome;
    call(outcome, *header.Get(), L"ElapsedTimeFromMs", DISPATCH_METHOD, {number(1), text(word)});
    EXPECT_EQ(outcome.result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(outcome.wrong, 0U);  // counted from the end
    EXPECT_EQ(put(*header.Get(), L"Layer", number(1)), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(get_number(*header.Get(), L"Song"), -98);
    EXPECT_EQ(
        header->Invoke(4711, GUID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
        E_POINTER);
    DISPPARAMS none{};
    EXPECT_EQ(header->Invoke(4711, GUID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(header->Invoke(4, __uuidof(IDispatch), 0, DISPATCH_METHOD, &none, nullptr, nullptr,
                             nullptr),
              DISP_E_UNKNOWNINTERFACE);
}

TEST_F(DispatchTest, ValuesAreConvertedTheSameInEveryCountry) {
    const Text one_and_a_quarter(L"1.25");
    Outcome outcome;
    EXPECT_EQ(put(*header.Get(), L"Speed", text(one_and_a_quarter)), S_OK);
    call(outcome, *header.Get(), L"Speed", DISPATCH_PROPERTYGET, {});
    ASSERT_EQ(outcome.value.vt, VT_R8);
    EXPECT_EQ(outcome.value.dblVal, 1.25);

    EXPECT_EQ(put(*header.Get(), L"Album", real(0.5)), S_OK);
    EXPECT_EQ(get_text(*header.Get(), L"Album"), L"0.5");
    EXPECT_EQ(put(*header.Get(), L"Album", flag(true)), S_OK);
    EXPECT_EQ(get_text(*header.Get(), L"Album"), L"-1");
    EXPECT_EQ(put(*header.Get(), L"Album", typed(VT_EMPTY)), S_OK);
    EXPECT_EQ(get_text(*header.Get(), L"Album"), L"");
    EXPECT_EQ(put(*header.Get(), L"Intro", real(2.5)), S_OK);
    EXPECT_EQ(get_number(*header.Get(), L"Intro"), 2);
    EXPECT_EQ(put(*header.Get(), L"Track", real(3.5)), S_OK);
    EXPECT_EQ(get_number(*header.Get(), L"Track"), 4);
    EXPECT_EQ(put(*header.Get(), L"Track", number(40000)), DISP_E_OVERFLOW);
    EXPECT_EQ(put(*header.Get(), L"Track", typed(VT_NULL)), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(get_number(*header.Get(), L"Track"), 4);
    EXPECT_EQ(put(*header.Get(), L"Opener", flag(true)), S_OK);
    EXPECT_EQ(get_number(*header.Get(), L"Opener"), -1);
    EXPECT_EQ(put(*header.Get(), L"Writev1v2Separate", number(5)), S_OK);
    EXPECT_EQ(get_number(*header.Get(), L"Writev1v2Separate"), -1);
}

TEST_F(DispatchTest, NumberOfEveryTypeIsTakenOrRefused) {
    const Text digits(L" 12 ");
    const Text word(L"twelve");
    short small = -12;
    double real_number = 7.5;
    VARIANT_BOOL yes = VARIANT_TRUE;
    BSTR referred = digits.get();
    VARIANT inner = number(70000);
    VARIANT null = typed(VT_NULL);
    struct Case {
        VARTYPE type;
        std::function<void(VARIANT&)> set;
        HRESULT result;
        long expected;
    };
    constexpr long kBefore = 4711;
    const Case cases[] = {
        {VT_EMPTY, [](VARIANT&) {}, S_OK, 0},
        {VT_NULL, [](VARIANT&) {}, DISP_E_TYPEMISMATCH, kBefore},
        {VT_I1, [](VARIANT& v) { v.cVal = -5; }, S_OK, -5},
        {VT_UI1, [](VARIANT& v) { v.bVal = 200; }, S_OK, 200},
        {VT_I2, [](VARIANT& v) { v.iVal = -32768; }, S_OK, -32768},
        {VT_UI2, [](VARIANT& v) { v.uiVal = 65535; }, S_OK, 65535},
        {VT_I8, [](VARIANT& v) { v.llVal = -70000; }, S_OK, -70000},
        {VT_I8, [](VARIANT& v) { v.llVal = 1LL << 40; }, DISP_E_OVERFLOW, kBefore},
        {VT_UI8, [](VARIANT& v) { v.ullVal = 6; }, S_OK, 6},
        {VT_INT, [](VARIANT& v) { v.intVal = 7; }, S_OK, 7},
        {VT_UINT, [](VARIANT& v) { v.uintVal = 8; }, S_OK, 8},
        {VT_R4, [](VARIANT& v) { v.fltVal = 2.5F; }, S_OK, 2},
        {VT_R8, [](VARIANT& v) { v.dblVal = 3.5; }, S_OK, 4},
        {VT_CY, [](VARIANT& v) { v.cyVal.int64 = 15000; }, S_OK, 2},  // 1.5
        {VT_DATE, [](VARIANT& v) { v.date = 2; }, S_OK, 2},
        {VT_BOOL, [](VARIANT& v) { v.boolVal = VARIANT_TRUE; }, S_OK, -1},
        {VT_BOOL, [](VARIANT& v) { v.boolVal = VARIANT_FALSE; }, S_OK, 0},
        {VT_BSTR, [&](VARIANT& v) { v.bstrVal = digits.get(); }, S_OK, 12},
        {VT_BSTR, [&](VARIANT& v) { v.bstrVal = word.get(); }, DISP_E_TYPEMISMATCH, kBefore},
        {VT_BSTR, [](VARIANT& v) { v.bstrVal = nullptr; }, DISP_E_TYPEMISMATCH, kBefore},
        {VT_ERROR, [](VARIANT& v) { v.scode = E_FAIL; }, DISP_E_TYPEMISMATCH, kBefore},
        {VT_DISPATCH, [](VARIANT& v) { v.pdispVal = nullptr; }, DISP_E_TYPEMISMATCH, kBefore},
        {VT_UNKNOWN, [](VARIANT& v) { v.punkVal = nullptr; }, DISP_E_TYPEMISMATCH, kBefore},
        {VT_ARRAY | VT_I4, [](VARIANT& v) { v.parray = nullptr; }, DISP_E_TYPEMISMATCH, kBefore},
        {VT_BYREF | VT_I2, [&](VARIANT& v) { v.piVal = &small; }, S_OK, -12},
        {VT_BYREF | VT_R8, [&](VARIANT& v) { v.pdblVal = &real_number; }, S_OK, 8},
        {VT_BYREF | VT_BOOL, [&](VARIANT& v) { v.pboolVal = &yes; }, S_OK, -1},
        {VT_BYREF | VT_BSTR, [&](VARIANT& v) { v.pbstrVal = &referred; }, S_OK, 12},
        {VT_BYREF | VT_VARIANT, [&](VARIANT& v) { v.pvarVal = &inner; }, S_OK, 70000},
        {VT_BYREF | VT_VARIANT, [&](VARIANT& v) { v.pvarVal = &null; }, DISP_E_TYPEMISMATCH,
         kBefore},
        {VT_BYREF | VT_I4, [](VARIANT& v) { v.plVal = nullptr; }, DISP_E_TYPEMISMATCH, kBefore},
        {VT_BYREF | VT_VARIANT, [](VARIANT& v) { v.pvarVal = nullptr; }, DISP_E_TYPEMISMATCH,
         kBefore},
        {VT_VOID, [](VARIANT&) {}, DISP_E_TYPEMISMATCH, kBefore},
        {999, [](VARIANT&) {}, DISP_E_TYPEMISMATCH, kBefore},
    };
    int row_number = 0;
    for (const Case& row : cases) {
        EXPECT_EQ(put(*header.Get(), L"Volume", number(kBefore)), S_OK);
        VARIANT value = typed(row.type);
        row.set(value);
        EXPECT_EQ(put(*header.Get(), L"Volume", value), row.result) << "row " << row_number;
        EXPECT_EQ(get_number(*header.Get(), L"Volume"), row.expected) << "row " << row_number;
        ++row_number;
    }
}

TEST(Errors, ReachHostsWithNumberDescriptionAndSource) {
    const auto header = create();
    Outcome outcome;
    call(outcome, *header.Get(), L"SaveAllInfo", DISPATCH_METHOD, {});
    EXPECT_EQ(outcome.result, DISP_E_EXCEPTION);
    EXPECT_EQ(outcome.number, -896556);
    EXPECT_EQ(outcome.description, L"FileName is Not set");
    EXPECT_EQ(outcome.source, L"Brindle");

    Outcome layer;
    call(layer, *header.Get(), L"Layer", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(layer.result, DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<unsigned long>(layer.number), 0x800A005BUL);  // 91
    EXPECT_EQ(layer.description, L"Object variable not set");
}

TEST(Errors, EarlyBoundHostsFindTheErrorObject) {
    const auto header = create();
    ComPtr<ISupportErrorInfo> support;
    ASSERT_EQ(header.As(&support), S_OK);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(host::kcMPEGHeaderId), S_OK);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(__uuidof(IClassFactory)), S_FALSE);
    EXPECT_EQ(header->SaveAllInfo(), -896556);
    ComPtr<IErrorInfo> information;
    ASSERT_EQ(::GetErrorInfo(0, &information), S_OK);
    BSTR text = nullptr;
    EXPECT_EQ(information->GetDescription(&text), S_OK);
    EXPECT_EQ(taken(text), L"FileName is Not set");
    EXPECT_EQ(information->GetSource(&text), S_OK);
    EXPECT_EQ(taken(text), L"Brindle");
    GUID guid{};
    EXPECT_EQ(information->GetGUID(&guid), S_OK);
    EXPECT_EQ(guid, host::kcMPEGHeaderId);
}

TEST(Errors, TextsOfAnEarlierFailureDoNotExplainTheNextOne) {
    const auto header = create();
    EXPECT_EQ(header->SaveAllInfo(), -896556);
    EXPECT_EQ(header->get_BitRate(nullptr), E_POINTER);
    ComPtr<IErrorInfo> information;
    EXPECT_EQ(::GetErrorInfo(0, &information), S_FALSE);
}

TEST(Errors, FileThatMayNotBeWrittenIsTheTaggersError) {
    const File file(L"held.mp3", audio(120));
    const auto header = create();
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    const Text title(L"New");
    EXPECT_EQ(header->put_Title(title.get()), S_OK);
    const HANDLE other = ::CreateFileW(file.name().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                       OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(static_cast<unsigned long>(header->SaveAllInfo()), 0x800A0046UL);  // 70
    ComPtr<IErrorInfo> information;
    ASSERT_EQ(::GetErrorInfo(0, &information), S_OK);
    BSTR text = nullptr;
    EXPECT_EQ(information->GetSource(&text), S_OK);
    EXPECT_EQ(taken(text), L"BrindleId3v1Tagger");
    ::CloseHandle(other);
    EXPECT_TRUE(file.content() == audio(120)) << file.content().size();
}

TEST(TypeInformation, ObjectReturnsItsClassAndItsEvents) {
    const auto header = create();
    ComPtr<IProvideClassInfo2> provider;
    ASSERT_EQ(header.As(&provider), S_OK);
    GUID guid{};
    EXPECT_EQ(provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &guid), S_OK);
    EXPECT_EQ(guid, host::kEventsId);
    EXPECT_EQ(provider->GetGUID(0, &guid), E_INVALIDARG);
    ComPtr<ITypeInfo> type;
    ASSERT_EQ(provider->GetClassInfo(&type), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
    EXPECT_EQ(attributes->guid, host::kcMPEGHeaderClass);
    type->ReleaseTypeAttr(attributes);

    UINT count = 0;
    EXPECT_EQ(header->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(header->GetTypeInfo(1, 0, &type), DISP_E_BADINDEX);
    ASSERT_EQ(header->GetTypeInfo(0, 0, &type), S_OK);
    ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, host::kcMPEGHeaderId);
    type->ReleaseTypeAttr(attributes);
}

}  // namespace
}  // namespace brindle::com::test
