// Late binding against the type library: every member has the names, numbers, arguments and answers
// that the library describes, and no call asks the library for them.
#include <algorithm>
#include <cwctype>
#include <oaidl.h>
#include <oleauto.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

std::string narrow(const std::wstring& text) {
    return {text.begin(), text.end()};
}

struct Function {
    DISPID id;
    INVOKEKIND kind;
    VARTYPE result;
    std::vector<VARTYPE> parameters;  // with VT_BYREF for a pointer
    SHORT optional;
    std::vector<std::wstring> names;  // of the member and of its arguments
};

VARTYPE type_of(const TYPEDESC& type) {
    if (type.vt == VT_PTR) {
        return static_cast<VARTYPE>(VT_BYREF | type_of(*type.lptdesc));
    }
    // The only types of its own that the library names here are enumerations.
    return type.vt == VT_USERDEFINED ? static_cast<VARTYPE>(VT_I4) : type.vt;
}

// Those of IUnknown and IDispatch, which every description lists, have numbers from here on.
constexpr DISPID kInherited = 0x60000000;

// What the type library says of an object's own members.
std::vector<Function> functions_of(ITypeInfo& type) {
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(type.GetTypeAttr(&attributes), S_OK);
    std::vector<Function> made;
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* found = nullptr;
        EXPECT_EQ(type.GetFuncDesc(i, &found), S_OK);
        Function function{
            found->memid, found->invkind, type_of(found->elemdescFunc.tdesc), {}, 0, {}};
        for (SHORT p = 0; p < found->cParams; ++p) {
            const ELEMDESC& parameter = found->lprgelemdescParam[p];
            function.parameters.push_back(type_of(parameter.tdesc));
            function.optional += (parameter.paramdesc.wParamFlags & PARAMFLAG_FOPT) != 0 ? 1 : 0;
        }
        BSTR names[8] = {};
        UINT count = 0;
        EXPECT_EQ(type.GetNames(found->memid, names, 8, &count), S_OK);
        for (UINT n = 0; n < count; ++n) {
            function.names.push_back(taken(names[n]));
        }
        // Systems disagree on whether a result has a name.
        function.names.resize(1 + function.parameters.size());
        if (function.id < kInherited) {
            made.push_back(function);
        }
        type.ReleaseFuncDesc(found);
    }
    type.ReleaseTypeAttr(attributes);
    return made;
}

ComPtr<ITypeInfo> type_of(IDispatch& object) {
    ComPtr<ITypeInfo> type;
    EXPECT_EQ(object.GetTypeInfo(0, LOCALE_INVARIANT, &type), S_OK);
    return type;
}

HRESULT ids_of(IDispatch& object, const std::vector<std::wstring>& names,
               std::vector<DISPID>& ids) {
    std::vector<wchar_t*> pointers;
    for (const std::wstring& name : names) {
        pointers.push_back(const_cast<wchar_t*>(name.c_str()));
    }
    ids.assign(names.size(), -77);
    return object.GetIDsOfNames(GUID_NULL, pointers.data(), static_cast<UINT>(names.size()),
                                LOCALE_INVARIANT, ids.data());
}

std::wstring in_case(std::wstring text, wint_t (*change)(wint_t)) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [change](wchar_t unit) { return static_cast<wchar_t>(change(unit)); });
    return text;
}

std::wstring shown(const VARIANT& value) {
    std::wstring made = std::to_wstring(value.vt) + L":";
    VARIANT text{};
    if (value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN &&
        SUCCEEDED(::VariantChangeType(&text, const_cast<VARIANT*>(&value), 0, VT_BSTR))) {
        made += taken(text.bstrVal);
    }
    return made;
}

// The answer of a call by the object itself or by the system on the type information.
struct Answer {
    HRESULT result;
    std::wstring value;
    HRESULT number;
};

Answer answer_of(IDispatch& object, ITypeInfo* type, const Function& function,
                 std::vector<VARIANTARG> arguments) {
    std::reverse(arguments.begin(), arguments.end());
    const bool is_put = function.kind == INVOKE_PROPERTYPUT;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS passed{arguments.data(), is_put ? &put : nullptr,
                      static_cast<UINT>(arguments.size()), is_put ? 1U : 0U};
    VARIANT value{};
    EXCEPINFO exception{};
    UINT wrong = 0;
    const auto kind = static_cast<WORD>(function.kind);
    Answer answer{};
    if (type != nullptr) {
        // The system passes the pointer of the interface on.
        answer.result = type->Invoke(&object, function.id, kind, &passed, is_put ? nullptr : &value,
                                     &exception, &wrong);
    } else {
        answer.result = object.Invoke(function.id, GUID_NULL, LOCALE_INVARIANT, kind, &passed,
                                      is_put ? nullptr : &value, &exception, &wrong);
    }
    answer.number = exception.scode;
    if (SUCCEEDED(answer.result)) {
        answer.value = shown(value);
        ::VariantClear(&value);
    }
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrHelpFile);
    return answer;
}

void expect_same(const Answer& own, const Answer& system, const Function& function) {
    EXPECT_EQ(own.result, system.result) << narrow(function.names[0]);
    EXPECT_EQ(own.value, system.value) << narrow(function.names[0]);
    EXPECT_EQ(own.number, system.number) << narrow(function.names[0]);
}

class DispatchTable : public testing::Test {
protected:
    DispatchTable() {
        EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
        EXPECT_EQ(header->get_v2Frames(&frames), S_OK);
    }

    File file{L"table.mp3", tag({{"TIT2", "A title"}, {"TPE1", "An artist"}}) + audio(120)};
    ComPtr<host::_cMPEGHeader> header = create();
    ComPtr<IDispatch> frames;
};

TEST_F(DispatchTable, HasEveryNameOfTheTypeLibrary) {
    std::size_t seen = 0;
    for (IDispatch* object : {static_cast<IDispatch*>(header.Get()), frames.Get()}) {
        for (const Function& function : functions_of(*type_of(*object).Get())) {
            for (const auto change : {std::towlower, std::towupper}) {
                std::vector<std::wstring> names = function.names;
                for (std::wstring& name : names) {
                    name = in_case(name, change);
                }
                // The value of a property is passed without a name.
                if (function.kind == INVOKE_PROPERTYPUT) {
                    names.resize(1);
                }
                std::vector<DISPID> ids;
                EXPECT_EQ(ids_of(*object, names, ids), S_OK) << narrow(names[0]);
                EXPECT_EQ(ids[0], function.id) << narrow(names[0]);
                for (std::size_t i = 1; i < names.size(); ++i) {
                    EXPECT_EQ(ids[i], static_cast<DISPID>(i - 1)) << narrow(names[i]);
                }
            }
            ++seen;
        }
    }
    EXPECT_EQ(seen, 89U + 8U);
}

TEST_F(DispatchTable, NamesThatAreUnknownAreToldApart) {
    std::vector<DISPID> ids;
    EXPECT_EQ(ids_of(*header.Get(), {L"v2Tag", L"indexInFrame", L"sFram", L"sFrame"}, ids),
              DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids, (std::vector<DISPID>{53, 1, DISPID_UNKNOWN, 0}));
    EXPECT_EQ(ids_of(*header.Get(), {L"Titl", L"sFrame"}, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids, (std::vector<DISPID>{DISPID_UNKNOWN, DISPID_UNKNOWN}));
    // AddRef is no business of a script.
    for (const wchar_t* name :
         {L"", L"Titles", L"T\u0131tle", L"Title ", L"_cMPEGHeader", L"AddRef"}) {
        EXPECT_EQ(ids_of(*header.Get(), {name}, ids), DISP_E_UNKNOWNNAME);
        EXPECT_EQ(ids[0], DISPID_UNKNOWN);
    }
}

TEST_F(DispatchTable, EveryPropertyReadsAsBySystem) {
    const auto untouched = create();
    std::size_t seen = 0;
    for (IDispatch* object : {static_cast<IDispatch*>(header.Get()),
                              static_cast<IDispatch*>(untouched.Get()), frames.Get()}) {
        const ComPtr<ITypeInfo> type = type_of(*object);
        for (const Function& function : functions_of(*type.Get())) {
            if (function.kind == INVOKE_PROPERTYGET && function.parameters.empty()) {
                expect_same(answer_of(*object, nullptr, function, {}),
                            answer_of(*object, type.Get(), function, {}), function);
                ++seen;
            }
        }
    }
    EXPECT_EQ(seen, 44U + 44U + 2U);
}

// Another object for each way, so that neither sees what the other has written.
TEST_F(DispatchTable, EveryPropertyIsWrittenAsBySystem) {
    const ComPtr<ITypeInfo> type = type_of(*header.Get());
    const std::vector<Function> functions = functions_of(*type.Get());
    const Text digits(L"12");
    VARIANTARG value{};
    value.vt = VT_BSTR;
    value.bstrVal = digits.get();
    std::size_t seen = 0;
    for (const Function& put : functions) {
        if (put.kind != INVOKE_PROPERTYPUT || put.names[0] == L"FileName") {
            continue;
        }
        // What was written as Song is read as Title.
        const DISPID read = put.names[0] == L"Song" ? 23 : put.id;
        const auto get = std::find_if(functions.begin(), functions.end(), [&](const Function& f) {
            return f.id == read && f.kind == INVOKE_PROPERTYGET;
        });
        ASSERT_NE(get, functions.end());
        const auto own = create();
        const auto system = create();
        EXPECT_EQ(assign(*own.Get(), file.name()), S_OK);
        EXPECT_EQ(assign(*system.Get(), file.name()), S_OK);
        const Answer before = answer_of(*own.Get(), type.Get(), *get, {});
        // The system converts by the user's country, which is the same for these digits.
        expect_same(answer_of(*own.Get(), nullptr, put, {value}),
                    answer_of(*system.Get(), type.Get(), put, {value}), put);
        const Answer after = answer_of(*own.Get(), type.Get(), *get, {});
        expect_same(after, answer_of(*system.Get(), type.Get(), *get, {}), put);
        if (put.id != 1) {  // g_InUse was True already
            EXPECT_NE(after.value, before.value) << narrow(put.names[0]);
        }
        ++seen;
    }
    EXPECT_EQ(seen, 34U);
}

TEST_F(DispatchTable, MembersWithArgumentsAnswerAsBySystem) {
    const Text frame(L"TIT2");
    const Text field(L"Cue In");
    VARIANTARG id{};
    id.vt = VT_BSTR;
    id.bstrVal = frame.get();
    VARIANTARG name = id;
    name.bstrVal = field.get();
    VARIANTARG number{};
    number.vt = VT_I4;
    number.lVal = 1;
    VARIANT_BOOL padding = VARIANT_TRUE;
    VARIANTARG flag{};
    flag.vt = VT_BYREF | VT_BOOL;
    flag.pboolVal = &padding;
    struct Case {
        IDispatch* object;
        const wchar_t* member;
        std::vector<VARIANTARG> arguments;
    };
    const Case cases[] = {
        {header.Get(), L"v2Tag", {id, number}},
        {header.Get(), L"CustomFieldAdd", {name, number}},
        {header.Get(), L"CustomFieldExists", {name}},
        {header.Get(), L"CustomFieldRetrieve", {name}},
        {header.Get(), L"ElapsedTimeFromMs", {number, number, flag}},
        {header.Get(), L"ID3TagSizeIncludingHeader", {}},
        {header.Get(), L"Test", {}},
        {header.Get(), L"RaiseScanningEvent", {name, number, number, flag}},
        {frames.Get(), L"Exists", {id}},
        {frames.Get(), L"Item", {number, name}},
        {frames.Get(), L"Item", {number, number}},
        {frames.Get(), L"Remove", {name}},
        {frames.Get(), L"Add", {number, id}},
        {frames.Get(), L"Reserved3", {}},
        {frames.Get(), L"Reserved6", {}},
    };
    for (const Case& row : cases) {
        const ComPtr<ITypeInfo> type = type_of(*row.object);
        const std::vector<Function> functions = functions_of(*type.Get());
        const auto function =
            std::find_if(functions.begin(), functions.end(),
                         [&](const Function& f) { return f.names[0] == row.member; });
        ASSERT_NE(function, functions.end());
        expect_same(answer_of(*row.object, nullptr, *function, row.arguments),
                    answer_of(*row.object, type.Get(), *function, row.arguments), *function);
    }
}

// Counts the calls of the type information that have to do with members, in the whole process: all
// objects of the system's class share one table of functions.
class TypeInformationCalls {
public:
    explicit TypeInformationCalls(ITypeInfo& type) : table_(*reinterpret_cast<void***>(&type)) {
        calls = 0;
        attributes = replace(3, &counted_attributes);
        function = replace(5, &counted_function);
        names = replace(7, &counted_names);
        ids = replace(10, &counted_ids);
        invoke = replace(11, &counted_invoke);
    }
    ~TypeInformationCalls() {
        replace(3, attributes);
        replace(5, function);
        replace(7, names);
        replace(10, ids);
        replace(11, invoke);
    }
    TypeInformationCalls(const TypeInformationCalls&) = delete;
    TypeInformationCalls& operator=(const TypeInformationCalls&) = delete;

    static inline int calls = 0;

private:
    using Attributes = HRESULT(__stdcall*)(ITypeInfo*, TYPEATTR**);
    using FunctionOf = HRESULT(__stdcall*)(ITypeInfo*, UINT, FUNCDESC**);
    using Names = HRESULT(__stdcall*)(ITypeInfo*, MEMBERID, BSTR*, UINT, UINT*);
    using Ids = HRESULT(__stdcall*)(ITypeInfo*, LPOLESTR*, UINT, MEMBERID*);
    using Invoke = HRESULT(__stdcall*)(ITypeInfo*, void*, MEMBERID, WORD, DISPPARAMS*, VARIANT*,
                                       EXCEPINFO*, UINT*);

    static HRESULT __stdcall counted_attributes(ITypeInfo* type, TYPEATTR** into) {
        ++calls;
        return attributes(type, into);
    }
    static HRESULT __stdcall counted_function(ITypeInfo* type, UINT index, FUNCDESC** into) {
        ++calls;
        return function(type, index, into);
    }
    static HRESULT __stdcall counted_names(ITypeInfo* type, MEMBERID id, BSTR* into, UINT most,
                                           UINT* count) {
        ++calls;
        return names(type, id, into, most, count);
    }
    static HRESULT __stdcall counted_ids(ITypeInfo* type, LPOLESTR* wanted, UINT count,
                                         MEMBERID* into) {
        ++calls;
        return ids(type, wanted, count, into);
    }
    static HRESULT __stdcall counted_invoke(ITypeInfo* type, void* object, MEMBERID id, WORD flags,
                                            DISPPARAMS* arguments, VARIANT* result,
                                            EXCEPINFO* exception, UINT* wrong) {
        ++calls;
        return invoke(type, object, id, flags, arguments, result, exception, wrong);
    }

    template <typename Call>
    Call replace(std::size_t slot, Call by) {
        DWORD protection = 0;
        EXPECT_NE(::VirtualProtect(&table_[slot], sizeof(void*), PAGE_READWRITE, &protection), 0);
        const auto before = reinterpret_cast<Call>(table_[slot]);
        table_[slot] = reinterpret_cast<void*>(by);
        ::VirtualProtect(&table_[slot], sizeof(void*), protection, &protection);
        return before;
    }

    static inline Attributes attributes = nullptr;
    static inline FunctionOf function = nullptr;
    static inline Names names = nullptr;
    static inline Ids ids = nullptr;
    static inline Invoke invoke = nullptr;
    void** table_;
};

TEST_F(DispatchTable, AsksNoTypeInformation) {
    const ComPtr<ITypeInfo> type = type_of(*header.Get());
    const TypeInformationCalls counter(*type.Get());
    const Function title{23, INVOKE_PROPERTYGET, VT_BSTR, {}, 0, {L"Title"}};
    EXPECT_EQ(answer_of(*header.Get(), type.Get(), title, {}).value, L"8:A title");
    EXPECT_GT(TypeInformationCalls::calls, 0);  // those of the system are seen

    TypeInformationCalls::calls = 0;
    EXPECT_EQ(answer_of(*header.Get(), nullptr, title, {}).value, L"8:A title");
    std::vector<DISPID> ids;
    EXPECT_EQ(ids_of(*header.Get(), {L"ElapsedTimeFromMs", L"UsePadding"}, ids), S_OK);
    EXPECT_EQ(ids_of(*frames.Get(), {L"Item"}, ids), S_OK);
    VARIANTARG first{};
    first.vt = VT_I4;
    first.lVal = 1;
    const Function indexed{52, INVOKE_PROPERTYGET, VT_DISPATCH, {}, 0, {L"v2Frames"}};
    EXPECT_EQ(answer_of(*header.Get(), nullptr, indexed, {first}).value, L"8:TIT2");
    EXPECT_EQ(TypeInformationCalls::calls, 0);
}

}  // namespace
}  // namespace brindle::com::test
