// The cost of a property for a host that binds late, against the system's own dispatch on the same
// type information and against opening the file.
//
// usage: brindle_dispatch <Brindle.dll> <MP3 file>
//
// Each round runs the contenders in turn; the medians of all rounds are printed. Exit status 1: a
// bound is exceeded.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <oaidl.h>
#include <oleauto.h>
#include <string>
#include <vector>
#include <windows.h>

#include <wrl/client.h>

namespace {

using Microsoft::WRL::ComPtr;

constexpr int kRounds = 31;
constexpr int kCalls = 2'000;
constexpr int kFiles = 20;
// Maximum ratio of a property read to the system's own dispatch.
constexpr double kMaxTimesSystem = 3;

constexpr GUID kClass = {
    0x0571B13A, 0x907D, 0x4C45, {0x8E, 0x34, 0x42, 0x48, 0x9A, 0x98, 0xC2, 0x5D}};
constexpr DISPID kFileName = 7;
constexpr DISPID kSpeed = 8;
constexpr DISPID kDuration = 20;
constexpr DISPID kTitle = 23;

// What a playout screen shows of a file.
constexpr const wchar_t* kProperties[] = {
    L"FileName",    L"Title",      L"Artist",       L"Album",       L"Year",
    L"Track",       L"Genre",      L"Comments",     L"Composer",    L"Publisher",
    L"CopyRight",   L"URL",        L"ArtistUrl",    L"Duration",    L"BitRate",
    L"Frequency",   L"MonoStereo", L"VBR",          L"Layer",       L"FrameCount",
    L"TagType",     L"Speed",      L"Volume",       L"Opener",      L"CueInmSStart",
    L"Sectone",     L"Intro",      L"OutromsStart", L"Category",    L"CategoryLevel",
    L"Endstyle",    L"NoFade",     L"Agency",       L"AccountExec", L"Copy",
    L"artistv1Tag", L"Titlev1Tag", L"Yearv1Tag",    L"Commentv1",   L"RepairRequired",
};
static_assert(std::size(kProperties) == 40);

[[noreturn]] void give_up(const std::string& reason) {
    static_cast<void>(std::fputs((reason + "\n").c_str(), stderr));
    std::exit(2);
}

void must(HRESULT result, const char* what) {
    if (FAILED(result)) {
        give_up(std::string(what) + " failed: " + std::to_string(result));
    }
}

std::wstring wide(const char* text) {
    return {text, text + std::string(text).size()};
}

ComPtr<IDispatch> create(const char* library) {
    const HMODULE module = ::LoadLibraryW(wide(library).c_str());
    if (module == nullptr) {
        give_up(std::string(library) + " cannot be loaded");
    }
    using GetClass = HRESULT(__stdcall*)(REFCLSID, REFIID, void**);
    const auto get_class = reinterpret_cast<GetClass>(
        reinterpret_cast<void*>(::GetProcAddress(module, "DllGetClassObject")));
    ComPtr<IClassFactory> factory;
    must(get_class(kClass, __uuidof(IClassFactory),
                   reinterpret_cast<void**>(factory.GetAddressOf())),
         "DllGetClassObject");
    ComPtr<IDispatch> object;
    must(factory->CreateInstance(nullptr, __uuidof(IDispatch),
                                 reinterpret_cast<void**>(object.GetAddressOf())),
         "CreateInstance");
    return object;
}

double now() {
    LARGE_INTEGER ticks{};
    LARGE_INTEGER ticks_per_second{};
    ::QueryPerformanceCounter(&ticks);
    ::QueryPerformanceFrequency(&ticks_per_second);
    return static_cast<double>(ticks.QuadPart) / static_cast<double>(ticks_per_second.QuadPart);
}

void assign(IDispatch& object, BSTR name) {
    DISPID put = DISPID_PROPERTYPUT;
    VARIANTARG value{};
    value.vt = VT_BSTR;
    value.bstrVal = name;
    DISPPARAMS passed{&value, &put, 1, 1};
    must(object.Invoke(kFileName, GUID_NULL, LOCALE_INVARIANT, DISPATCH_PROPERTYPUT, &passed,
                       nullptr, nullptr, nullptr),
         "FileName");
}

void read(IDispatch& object, DISPID id) {
    DISPPARAMS none{};
    VARIANT value{};
    EXCEPINFO exception{};
    UINT wrong = 0;
    must(object.Invoke(id, GUID_NULL, LOCALE_INVARIANT, DISPATCH_PROPERTYGET, &none, &value,
                       &exception, &wrong),
         "Invoke");
    ::VariantClear(&value);
}

void read_by_system(ITypeInfo& type, IDispatch& object, DISPID id) {
    DISPPARAMS none{};
    VARIANT value{};
    EXCEPINFO exception{};
    UINT wrong = 0;
    must(type.Invoke(&object, id, DISPATCH_PROPERTYGET, &none, &value, &exception, &wrong),
         "ITypeInfo::Invoke");
    ::VariantClear(&value);
}

DISPID number_of(IDispatch& object, const wchar_t* name) {
    auto* text = const_cast<wchar_t*>(name);
    DISPID id = 0;
    must(object.GetIDsOfNames(GUID_NULL, &text, 1, LOCALE_INVARIANT, &id), "GetIDsOfNames");
    return id;
}

DISPID number_by_system(ITypeInfo& type, const wchar_t* name) {
    auto* text = const_cast<wchar_t*>(name);
    DISPID id = 0;
    must(type.GetIDsOfNames(&text, 1, &id), "ITypeInfo::GetIDsOfNames");
    return id;
}

struct Contender {
    const char* name;
    std::function<void()> call;
    int calls;
    std::vector<double> times = {};  // microseconds a call, one for each round
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void run_round(std::vector<Contender>& contenders) {
    for (Contender& contender : contenders) {
        const double begin = now();
        for (int i = 0; i < contender.calls; ++i) {
            contender.call();
        }
        contender.times.push_back((now() - begin) * 1e6 / contender.calls);
    }
}

// The median of the ratios of each round: other load on the machine affects both.
double ratio(const Contender& contender, const Contender& to) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < contender.times.size(); ++i) {
        ratios.push_back(contender.times[i] / to.times[i]);
    }
    return median(ratios);
}

bool is_within(const char* what, double found, double most) {
    std::printf("%-40s %6.2f, at most %.2f%s\n", what, found, most,
                found <= most ? "" : ": EXCEEDED");
    return found <= most;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        give_up("usage: brindle_dispatch <Brindle.dll> <MP3 file>");
    }
    must(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "CoInitializeEx");
    const ComPtr<IDispatch> object = create(argv[1]);
    ComPtr<ITypeInfo> type;
    must(object->GetTypeInfo(0, LOCALE_INVARIANT, &type), "GetTypeInfo");
    const std::wstring file = wide(argv[2]);
    BSTR name = ::SysAllocStringLen(file.data(), static_cast<UINT>(file.size()));
    assign(*object.Get(), name);

    IDispatch& own = *object.Get();
    ITypeInfo& system = *type.Get();
    std::vector<Contender> contenders = {
        {"Title", [&] { read(own, kTitle); }, kCalls},
        {"Title by the system", [&] { read_by_system(system, own, kTitle); }, kCalls},
        {"Duration", [&] { read(own, kDuration); }, kCalls},
        {"Duration by the system", [&] { read_by_system(system, own, kDuration); }, kCalls},
        {"Speed", [&] { read(own, kSpeed); }, kCalls},
        {"Speed by the system", [&] { read_by_system(system, own, kSpeed); }, kCalls},
        {"number of RepairRequired", [&] { number_of(own, L"repairrequired"); }, kCalls},
        {"the same by the system", [&] { number_by_system(system, L"repairrequired"); }, kCalls},
        {"40 properties by name",
         [&] {
             for (const wchar_t* property : kProperties) {
                 read(own, number_of(own, property));
             }
         },
         kFiles},
        {"opening the file", [&] { assign(own, name); }, kFiles},
    };
    for (int round = 0; round < kRounds; ++round) {
        run_round(contenders);
    }
    for (const Contender& contender : contenders) {
        std::printf("%-26s %9.3f us\n", contender.name, median(contender.times));
    }
    bool is_good = true;
    for (std::size_t i = 0; i + 2 < contenders.size(); i += 2) {
        is_good &= is_within((std::string(contenders[i].name) + ", times the system's").c_str(),
                             ratio(contenders[i], contenders[i + 1]), kMaxTimesSystem);
    }
    is_good &= is_within("40 properties, times opening the file",
                         ratio(contenders[contenders.size() - 2], contenders.back()), 1);
    ::SysFreeString(name);
    return is_good ? 0 : 1;
}
