// Arguments that a host that binds late passes by reference: as variables of a script, or as
// numbers of its own.
#include <cstdint>
#include <oaidl.h>
#include <oleauto.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

constexpr DISPID kRaiseScanningEvent = 3;
constexpr DISPID kFileName = 7;
constexpr DISPID kCustomFieldAdd = 15;
constexpr DISPID kElapsedTimeFromMs = 51;

VARIANTARG typed(VARTYPE type) {
    VARIANTARG made{};
    made.vt = type;
    return made;
}

VARIANTARG number(long value) {
    VARIANTARG made = typed(VT_I4);
    made.lVal = value;
    return made;
}

VARIANTARG flag(VARIANT_BOOL value) {
    VARIANTARG made = typed(VT_BOOL);
    made.boolVal = value;
    return made;
}

VARIANTARG real(double value) {
    VARIANTARG made = typed(VT_R8);
    made.dblVal = value;
    return made;
}

VARIANTARG text(const Text& value) {
    VARIANTARG made = typed(VT_BSTR);
    made.bstrVal = value.get();
    return made;
}

VARIANTARG omitted() {
    VARIANTARG made = typed(VT_ERROR);
    made.scode = DISP_E_PARAMNOTFOUND;
    return made;
}

VARIANTARG variable(VARIANT& referred) {
    VARIANTARG made = typed(VT_BYREF | VT_VARIANT);
    made.pvarVal = &referred;
    return made;
}

VARIANTARG reference(VARTYPE type, void* referred) {
    VARIANTARG made = typed(static_cast<VARTYPE>(VT_BYREF | type));
    made.byref = referred;
    return made;
}

// `arguments` in the order of the call.
HRESULT call(IDispatch& object, DISPID member, const std::vector<VARIANTARG>& arguments,
             VARIANT* result = nullptr) {
    std::vector<VARIANTARG> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS passed{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    return object.Invoke(member, GUID_NULL, LOCALE_INVARIANT, DISPATCH_METHOD, &passed, result,
                         nullptr, nullptr);
}

HRESULT put(IDispatch& object, DISPID member, VARIANTARG value) {
    DISPID name = DISPID_PROPERTYPUT;
    DISPPARAMS passed{&value, &name, 1, 1};
    return object.Invoke(member, GUID_NULL, LOCALE_INVARIANT, DISPATCH_PROPERTYPUT, &passed,
                         nullptr, nullptr, nullptr);
}

class ByReference : public testing::Test {
protected:
    ByReference() : cookie(advise(*header.Get(), sink)) {
        sink.on_scanning = [this](const std::wstring&, long, long, VARIANT_BOOL& cancel) {
            seen = cancel;
            if (wish) {
                cancel = VARIANT_TRUE;
            }
        };
    }
    ~ByReference() override { events_of(*header.Get())->Unadvise(cookie); }
    ByReference(const ByReference&) = delete;
    ByReference& operator=(const ByReference&) = delete;

    // Raises Scanning with that argument for Cancel.
    HRESULT raise(VARIANTARG cancel) {
        return call(*header.Get(), kRaiseScanningEvent, {text(name), number(5), number(9), cancel});
    }

    const Text name{L"x.mp3"};
    ComPtr<host::_cMPEGHeader> header = create();
    Sink sink;
    bool wish = false;
    VARIANT_BOOL seen = 7;
    DWORD cookie;
};

TEST_F(ByReference, VariableKeepsItsValueWhenTheMemberDoesNotChangeIt) {
    struct Case {
        VARIANT value;
        VARIANT_BOOL seen;
    };
    const Case cases[] = {
        {number(5), VARIANT_TRUE},          {number(0), VARIANT_FALSE},
        {typed(VT_EMPTY), VARIANT_FALSE},   {real(0.25), VARIANT_TRUE},
        {flag(VARIANT_TRUE), VARIANT_TRUE},
    };
    for (const Case& row : cases) {
        VARIANT value = row.value;
        EXPECT_EQ(raise(variable(value)), S_OK);
        EXPECT_EQ(seen, row.seen) << row.value.vt;
        EXPECT_EQ(value.vt, row.value.vt);
        EXPECT_EQ(value.llVal, row.value.llVal) << row.value.vt;
    }
}

TEST_F(ByReference, UsePaddingStaysWhatItWas) {
    VARIANT padding = number(5);
    VARIANT result{};
    EXPECT_EQ(call(*header.Get(), kElapsedTimeFromMs, {number(62345), number(2), variable(padding)},
                   &result),
              S_OK);
    EXPECT_EQ(taken(result.bstrVal), L"01:02.34");
    EXPECT_EQ(padding.vt, VT_I4);
    EXPECT_EQ(padding.lVal, 5);
}

TEST_F(ByReference, VariableWithTheNameOfAFileStaysWhatItWas) {
    const Text digits(L"12");
    BSTR own = digits.get();
    VARIANT holder = reference(VT_BSTR, &own);
    VARIANT cases[] = {text(digits), number(12), holder};
    for (VARIANT& value : cases) {
        const VARIANT before = value;
        std::wstring read;
        sink.on_reading = [&read](const std::wstring& given) { read = given; };
        EXPECT_EQ(put(*header.Get(), kFileName, variable(value)), S_OK);
        EXPECT_EQ(read, L"12") << before.vt;
        EXPECT_EQ(value.vt, before.vt);
        EXPECT_EQ(value.llVal, before.llVal) << before.vt;
    }
    EXPECT_EQ(own, digits.get());
}

TEST_F(ByReference, CancelComesBackInAVariableOfAnyType) {
    wish = true;
    VARIANT cases[] = {flag(VARIANT_FALSE), typed(VT_EMPTY), number(0), real(0)};
    for (VARIANT& value : cases) {
        EXPECT_EQ(raise(variable(value)), S_OK);
        EXPECT_EQ(value.vt, VT_BOOL);
        EXPECT_EQ(value.boolVal, VARIANT_TRUE);
    }
}

TEST_F(ByReference, CancelComesBackInANumberOfTheHosts) {
    wish = true;
    std::int32_t four[] = {0, 77};
    EXPECT_EQ(raise(reference(VT_I4, &four[0])), S_OK);
    EXPECT_EQ(four[0], -1);
    EXPECT_EQ(four[1], 77);  // no byte beyond its own
    std::int16_t two[] = {0, 77};
    EXPECT_EQ(raise(reference(VT_I2, &two[0])), S_OK);
    EXPECT_EQ(two[0], -1);
    EXPECT_EQ(two[1], 77);
    VARIANT_BOOL own[] = {VARIANT_FALSE, 77};
    EXPECT_EQ(raise(reference(VT_BOOL, &own[0])), S_OK);
    EXPECT_EQ(own[0], VARIANT_TRUE);
    EXPECT_EQ(own[1], 77);
    double eight = 0;
    EXPECT_EQ(raise(reference(VT_R8, &eight)), S_OK);
    EXPECT_EQ(eight, -1);
    BSTR word = ::SysAllocString(L"0");
    EXPECT_EQ(raise(reference(VT_BSTR, &word)), S_OK);
    EXPECT_EQ(taken(word), L"-1");
}

TEST_F(ByReference, NumberOfTheHostsStaysWhenTheMemberDoesNotChangeIt) {
    std::int32_t number_of_four = 5;
    EXPECT_EQ(raise(reference(VT_I4, &number_of_four)), S_OK);
    EXPECT_EQ(seen, VARIANT_TRUE);
    EXPECT_EQ(number_of_four, 5);
    std::int16_t number_of_two = 0;
    EXPECT_EQ(raise(reference(VT_I2, &number_of_two)), S_OK);
    EXPECT_EQ(seen, VARIANT_FALSE);
    EXPECT_EQ(number_of_two, 0);
}

// A procedure of a script passes on what it got by reference itself.
TEST_F(ByReference, CancelComesBackThroughTwoReferences) {
    wish = true;
    VARIANT_BOOL flags[] = {VARIANT_FALSE};
    VARIANT inner = reference(VT_BOOL, &flags[0]);
    EXPECT_EQ(raise(variable(inner)), S_OK);
    EXPECT_EQ(flags[0], VARIANT_TRUE);
    EXPECT_EQ(inner.vt, VT_BYREF | VT_BOOL);

    std::int32_t four = 0;
    inner = reference(VT_I4, &four);
    EXPECT_EQ(raise(variable(inner)), S_OK);
    EXPECT_EQ(four, -1);
    EXPECT_EQ(inner.vt, VT_BYREF | VT_I4);

    VARIANT innermost = number(0);
    inner = variable(innermost);
    EXPECT_EQ(raise(variable(inner)), S_OK);
    EXPECT_EQ(innermost.vt, VT_BOOL);
    EXPECT_EQ(innermost.boolVal, VARIANT_TRUE);
    EXPECT_EQ(inner.vt, VT_BYREF | VT_VARIANT);
}

TEST_F(ByReference, ReferenceToNothingIsATypeMismatch) {
    EXPECT_EQ(raise(reference(VT_I4, nullptr)), DISP_E_TYPEMISMATCH);
    VARIANT inner = reference(VT_BOOL, nullptr);
    EXPECT_EQ(raise(variable(inner)), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(sink.calls, 0);
}

TEST_F(ByReference, MissingArgumentThatIsPassedOnIsMissing) {
    VARIANT missing = omitted();
    VARIANT again = variable(missing);
    SCODE code = DISP_E_PARAMNOTFOUND;
    for (const VARIANTARG& argument :
         {omitted(), variable(missing), variable(again), reference(VT_ERROR, &code)}) {
        VARIANT result{};
        EXPECT_EQ(
            call(*header.Get(), kElapsedTimeFromMs, {number(62345), argument, argument}, &result),
            S_OK);
        EXPECT_EQ(taken(result.bstrVal), L"01:02");
        EXPECT_EQ(call(*header.Get(), kElapsedTimeFromMs, {argument}), DISP_E_PARAMNOTOPTIONAL);
        const Text field(L"Some field");
        EXPECT_EQ(call(*header.Get(), kCustomFieldAdd, {text(field), argument}),
                  DISP_E_PARAMNOTOPTIONAL);
    }
    EXPECT_EQ(missing.vt, VT_ERROR);
}

TEST_F(ByReference, MissingKeyThatIsPassedOnLeavesThePosition) {
    const File file(L"referred.mp3",
                    tag({{"TIT2", "A title"}, {"TPE1", "An artist"}}) + audio(120));
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    ComPtr<IDispatch> frames;
    ASSERT_EQ(header->get_v2Frames(&frames), S_OK);
    VARIANT missing = omitted();
    VARIANT place = number(2);
    VARIANT result{};
    EXPECT_EQ(call(*frames.Get(), DISPID_VALUE, {variable(place), variable(missing)}, &result),
              S_OK);
    EXPECT_EQ(taken(result.bstrVal), L"TPE1");
    const Text key(L"TIT2");
    result = {};
    EXPECT_EQ(call(*frames.Get(), DISPID_VALUE, {variable(missing), text(key)}, &result), S_OK);
    EXPECT_EQ(taken(result.bstrVal), L"TIT2");
}

}  // namespace
}  // namespace brindle::com::test
