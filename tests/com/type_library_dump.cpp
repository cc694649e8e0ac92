// Prints the type library in a DLL as a table: what hosts that were compiled against it rely on.
//
// usage: type_library_dump <DLL> <file for the table>
#include <cstdio>
#include <oaidl.h>
#include <oleauto.h>
#include <set>
#include <string>
#include <vector>

#include <wrl/client.h>

namespace {

using Microsoft::WRL::ComPtr;

std::FILE* table = nullptr;

void must(HRESULT result, const char* what) {
    if (FAILED(result)) {
        std::fprintf(stderr, "%s: %08lx\n", what, static_cast<unsigned long>(result));
        std::exit(1);
    }
}

std::string plain(const wchar_t* text) {
    std::string made;
    for (; text != nullptr && *text != 0; ++text) {
        made.push_back(static_cast<char>(*text));
    }
    return made;
}

std::string text_of(BSTR text) {
    std::string made = plain(text);
    ::SysFreeString(text);
    return made;
}

std::string name_of(ITypeInfo& type, MEMBERID member = MEMBERID_NIL) {
    BSTR name = nullptr;
    must(type.GetDocumentation(member, &name, nullptr, nullptr, nullptr), "GetDocumentation");
    return text_of(name);
}

// What an object browser shows of a member or of the type itself, on a line of its own.
void print_help(ITypeInfo& type, const char* indent, MEMBERID member = MEMBERID_NIL) {
    BSTR help = nullptr;
    must(type.GetDocumentation(member, nullptr, &help, nullptr, nullptr), "GetDocumentation");
    std::fprintf(table, "%s# %s\n", indent, text_of(help).c_str());
}

std::string guid_of(const GUID& guid) {
    wchar_t text[64];
    ::StringFromGUID2(guid, text, 64);
    return plain(text);
}

std::string type_of(ITypeInfo& owner, const TYPEDESC& type) {
    switch (type.vt) {
        case VT_PTR:
            return type_of(owner, *type.lptdesc) + "*";
        case VT_USERDEFINED: {
            ComPtr<ITypeInfo> referred;
            must(owner.GetRefTypeInfo(type.hreftype, &referred), "GetRefTypeInfo");
            return name_of(*referred.Get());
        }
        case VT_I2:
            return "short";
        case VT_I4:
            return "long";
        case VT_R8:
            return "double";
        case VT_BSTR:
            return "BSTR";
        case VT_BOOL:
            return "VARIANT_BOOL";
        case VT_VARIANT:
            return "VARIANT";
        case VT_DISPATCH:
            return "IDispatch*";
        case VT_UNKNOWN:
            return "IUnknown*";
        case VT_HRESULT:
            return "HRESULT";
        case VT_VOID:
            return "void";
        default:
            return "type" + std::to_string(type.vt);
    }
}

std::string kind_of(INVOKEKIND kind) {
    switch (kind) {
        case INVOKE_FUNC:
            return "method";
        case INVOKE_PROPERTYGET:
            return "get";
        case INVOKE_PROPERTYPUT:
            return "put";
        default:
            return "putref";
    }
}

std::string flags_of(const PARAMDESC& parameter) {
    std::string flags;
    const auto add = [&](USHORT flag, const char* name) {
        if ((parameter.wParamFlags & flag) != 0) {
            flags += (flags.empty() ? "" : ",") + std::string(name);
        }
    };
    add(PARAMFLAG_FIN, "in");
    add(PARAMFLAG_FOUT, "out");
    add(PARAMFLAG_FRETVAL, "retval");
    add(PARAMFLAG_FOPT, "optional");
    if ((parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0) {
        const VARIANT& value = parameter.pparamdescex->varDefaultValue;
        flags += ",default=" +
                 std::to_string(value.vt == VT_I2 || value.vt == VT_BOOL ? value.iVal : value.lVal);
    }
    return flags;
}

std::string function_flags(WORD flags) {
    std::string made;
    if ((flags & FUNCFLAG_FRESTRICTED) != 0) {
        made += " restricted";
    }
    if ((flags & FUNCFLAG_FHIDDEN) != 0) {
        made += " hidden";
    }
    return made;
}

void print_functions(ITypeInfo& type, const TYPEATTR& attributes) {
    std::set<MEMBERID> shown;
    for (UINT i = 0; i < attributes.cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        must(type.GetFuncDesc(i, &function), "GetFuncDesc");
        std::vector<BSTR> names(static_cast<std::size_t>(function->cParams) + 1);
        UINT count = 0;
        must(type.GetNames(function->memid, names.data(), static_cast<UINT>(names.size()), &count),
             "GetNames");
        std::vector<std::string> words;
        for (UINT n = 0; n < names.size(); ++n) {
            words.push_back(n < count ? " " + text_of(names[n]) : "");
        }
        // The value of a property has no name for a host.
        if (function->invkind != INVOKE_FUNC) {
            words.back().clear();
        }
        if (function->funckind == FUNC_PUREVIRTUAL) {
            std::fprintf(table, "  slot %d:", static_cast<int>(function->oVft / sizeof(void*)));
        } else {
            std::fprintf(table, "  event:");
        }
        std::fprintf(table, " %ld %s %s%s(", static_cast<long>(function->memid),
                     kind_of(function->invkind).c_str(),
                     type_of(type, function->elemdescFunc.tdesc).c_str(), words[0].c_str());
        for (SHORT p = 0; p < function->cParams; ++p) {
            const ELEMDESC& parameter = function->lprgelemdescParam[p];
            std::fprintf(table, "%s[%s] %s%s", p == 0 ? "" : ", ",
                         flags_of(parameter.paramdesc).c_str(),
                         type_of(type, parameter.tdesc).c_str(),
                         words[static_cast<std::size_t>(p) + 1].c_str());
        }
        std::fprintf(table, ")%s\n", function_flags(function->wFuncFlags).c_str());
        // Systems show one help string for both functions of a property.
        if (shown.insert(function->memid).second) {
            print_help(type, "    ", function->memid);
        }
        type.ReleaseFuncDesc(function);
    }
}

std::string type_flags(WORD flags) {
    constexpr struct {
        WORD flag;
        const char* name;
    } kNames[] = {
        {TYPEFLAG_FCANCREATE, "creatable"},
        {TYPEFLAG_FHIDDEN, "hidden"},
        {TYPEFLAG_FDUAL, "dual"},
        {TYPEFLAG_FNONEXTENSIBLE, "nonextensible"},
        {TYPEFLAG_FOLEAUTOMATION, "automation"},
        {TYPEFLAG_FRESTRICTED, "restricted"},
    };
    std::string made;
    for (const auto& row : kNames) {
        if ((flags & row.flag) != 0) {
            made += std::string(" ") + row.name;
        }
    }
    return made;
}

void print_enumeration(ITypeInfo& type, const TYPEATTR& attributes) {
    std::fprintf(table, "enum %s\n", name_of(type).c_str());
    print_help(type, "  ");
    for (UINT i = 0; i < attributes.cVars; ++i) {
        VARDESC* variable = nullptr;
        must(type.GetVarDesc(i, &variable), "GetVarDesc");
        std::fprintf(table, "  %s = %ld\n", name_of(type, variable->memid).c_str(),
                     static_cast<long>(variable->lpvarValue->lVal));
        print_help(type, "    ", variable->memid);
        type.ReleaseVarDesc(variable);
    }
}

void print_class(ITypeInfo& type, const TYPEATTR& attributes) {
    std::fprintf(table, "class %s %s%s\n", name_of(type).c_str(), guid_of(attributes.guid).c_str(),
                 type_flags(attributes.wTypeFlags).c_str());
    print_help(type, "  ");
    for (UINT i = 0; i < attributes.cImplTypes; ++i) {
        HREFTYPE reference = 0;
        INT flags = 0;
        ComPtr<ITypeInfo> implemented;
        must(type.GetRefTypeOfImplType(i, &reference), "GetRefTypeOfImplType");
        must(type.GetImplTypeFlags(i, &flags), "GetImplTypeFlags");
        must(type.GetRefTypeInfo(reference, &implemented), "GetRefTypeInfo");
        std::fprintf(table, "  %s%s %s\n", (flags & IMPLTYPEFLAG_FDEFAULT) != 0 ? "default" : "",
                     (flags & IMPLTYPEFLAG_FSOURCE) != 0 ? " source" : "",
                     name_of(*implemented.Get()).c_str());
    }
}

// Of a dual interface the side with the slots.
ComPtr<ITypeInfo> side_with_slots(ITypeInfo& type) {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> slots;
    must(type.GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), "GetRefTypeOfImplType");
    must(type.GetRefTypeInfo(reference, &slots), "GetRefTypeInfo");
    return slots;
}

void print_interface(ITypeInfo& type, const TYPEATTR& attributes) {
    const bool is_dual = (attributes.wTypeFlags & TYPEFLAG_FDUAL) != 0;
    const auto print_heading = [&](const char* kind, WORD flags) {
        std::fprintf(table, "%s %s %s%s\n", kind, name_of(type).c_str(),
                     guid_of(attributes.guid).c_str(), type_flags(flags).c_str());
        print_help(type, "  ");
    };
    if (!is_dual) {
        print_heading("dispinterface", attributes.wTypeFlags);
        print_functions(type, attributes);
        return;
    }
    const ComPtr<ITypeInfo> slots = side_with_slots(type);
    TYPEATTR* slot_attributes = nullptr;
    must(slots->GetTypeAttr(&slot_attributes), "GetTypeAttr");
    print_heading("interface", slot_attributes->wTypeFlags);
    print_functions(*slots.Get(), *slot_attributes);
    slots->ReleaseTypeAttr(slot_attributes);
}

void print(ITypeInfo& type) {
    TYPEATTR* attributes = nullptr;
    must(type.GetTypeAttr(&attributes), "GetTypeAttr");
    switch (attributes->typekind) {
        case TKIND_ENUM:
            print_enumeration(type, *attributes);
            break;
        case TKIND_COCLASS:
            print_class(type, *attributes);
            break;
        case TKIND_DISPATCH:
            print_interface(type, *attributes);
            break;
        default:
            std::fprintf(table, "kind %d %s\n", attributes->typekind, name_of(type).c_str());
            break;
    }
    type.ReleaseTypeAttr(attributes);
}

std::wstring wide(const char* text) {
    return {text, text + std::string(text).size()};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: type_library_dump <DLL> <file for the table>\n");
        return 2;
    }
    ComPtr<ITypeLib> library;
    must(::LoadTypeLibEx(wide(argv[1]).c_str(), REGKIND_NONE, &library), "LoadTypeLibEx");
    table = std::fopen(argv[2], "wb");
    if (table == nullptr) {
        std::perror(argv[2]);
        return 1;
    }
    TLIBATTR* attributes = nullptr;
    must(library->GetLibAttr(&attributes), "GetLibAttr");
    BSTR name = nullptr;
    must(library->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), "GetDocumentation");
    std::fprintf(table, "library %s %s %d.%d\n", text_of(name).c_str(),
                 guid_of(attributes->guid).c_str(), attributes->wMajorVerNum,
                 attributes->wMinorVerNum);
    library->ReleaseTLibAttr(attributes);
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> type;
        must(library->GetTypeInfo(i, &type), "GetTypeInfo");
        print(*type.Get());
    }
    return std::fclose(table) == 0 ? 0 : 1;
}
