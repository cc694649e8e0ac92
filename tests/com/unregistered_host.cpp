// A host whose manifest names the component: works with a registry that knows nothing of it.
//
// Prints what it found; exit status 0 when the class could be made and answered.
#include <cstdio>
#include <oaidl.h>

#include <wrl/client.h>

namespace {

bool is_registered() {
    HKEY key = nullptr;
    const LSTATUS status = ::RegOpenKeyExW(
        HKEY_CLASSES_ROOT, L"CLSID\\{0571B13A-907D-4C45-8E34-42489A98C25D}", 0, KEY_READ, &key);
    if (status == ERROR_SUCCESS) {
        ::RegCloseKey(key);
    }
    return status == ERROR_SUCCESS;
}

int run() {
    if (is_registered()) {
        std::puts("the class is registered: this shows nothing");
        return 1;
    }
    CLSID id{};
    HRESULT result = ::CLSIDFromProgID(L"Brindle.cMPEGHeader", &id);
    if (FAILED(result)) {
        std::printf("no class of that name: %08lx\n", static_cast<unsigned long>(result));
        return 1;
    }
    Microsoft::WRL::ComPtr<IDispatch> header;
    result = ::CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDispatch),
                                reinterpret_cast<void**>(header.GetAddressOf()));
    if (FAILED(result)) {
        std::printf("no object: %08lx\n", static_cast<unsigned long>(result));
        return 1;
    }
    wchar_t name[] = L"TagType";
    wchar_t* names[] = {name};
    DISPID member = 0;
    DISPPARAMS none{};
    VARIANT value{};
    if (FAILED(header->GetIDsOfNames(GUID_NULL, names, 1, 0, &member)) ||
        FAILED(header->Invoke(member, GUID_NULL, 0, DISPATCH_PROPERTYGET, &none, &value, nullptr,
                              nullptr))) {
        std::puts("it does not answer");
        return 1;
    }
    std::printf("TagType %ld\n", static_cast<long>(value.lVal));
    return value.lVal == -1 ? 0 : 1;
}

}  // namespace

int main() {
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const int status = run();
    ::CoUninitialize();
    return status;
}
