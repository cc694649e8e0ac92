#include "facade/com/connection_point.h"

#include <algorithm>
#include <olectl.h>
#include <utility>

#include "facade/com/guard.h"
#include "facade/com/values.h"

namespace brindle::com {
namespace {

// The numbers by which hosts know the events.
constexpr DISPID kScanning = 1;
constexpr DISPID kDurationNeeded = 2;
constexpr DISPID kReading = 3;

VARIANTARG argument(BSTR text) {
    VARIANTARG made{};
    made.vt = VT_BSTR;
    made.bstrVal = text;
    return made;
}

VARIANTARG argument(LONG number) {
    VARIANTARG made{};
    made.vt = VT_I4;
    made.lVal = number;
    return made;
}

VARIANTARG reference(VARIANT_BOOL& flag) {
    VARIANTARG made{};
    made.vt = VT_BYREF | VT_BOOL;
    made.pboolVal = &flag;
    return made;
}

VARIANTARG reference(LONG& number) {
    VARIANTARG made{};
    made.vt = VT_BYREF | VT_I4;
    made.plVal = &number;
    return made;
}

// A sink's failure concerns no one else; the values that it leaves are freed.
void call(IDispatch& sink, DISPID event, std::vector<VARIANTARG>& arguments) {
    DISPPARAMS passed{};
    passed.rgvarg = arguments.data();
    passed.cArgs = static_cast<UINT>(arguments.size());
    OwnedVariant result;
    EXCEPINFO exception{};
    UINT wrong = 0;
    sink.Invoke(event, GUID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &passed, result.get(),
                &exception, &wrong);
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrHelpFile);
}

// Without memory for an event it does not take place: no member of the component fails by that.
template <typename Raise>
void raise_if_possible(Raise raise) {
    static_cast<void>(guarded(__uuidof(::__cMPEGHeader), raise));
}

}  // namespace

void ConnectionKind::give(const Sink& sink, CONNECTDATA& into) {
    into.dwCookie = sink.cookie;
    Microsoft::WRL::ComPtr<IUnknown>(sink.object).CopyTo(&into.pUnk);
}

void ConnectionKind::take_back(CONNECTDATA& given) noexcept {
    given.pUnk->Release();
    given = {};
}

void ConnectionPointKind::give(const Kept& point, IConnectionPoint*& into) {
    point.CopyTo(&into);
}

void ConnectionPointKind::take_back(IConnectionPoint*& given) noexcept {
    given->Release();
    given = nullptr;
}

HRESULT ConnectionPoint::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (iid != __uuidof(IUnknown) && iid != __uuidof(IConnectionPoint)) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* iid) {
    if (iid == nullptr) {
        return E_POINTER;
    }
    *iid = __uuidof(::__cMPEGHeader);
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (container == nullptr) {
        return E_POINTER;
    }
    *container = &container_;
    AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (cookie == nullptr || sink == nullptr) {
        return E_POINTER;
    }
    *cookie = 0;
    Microsoft::WRL::ComPtr<IDispatch> object;
    // Some scripting hosts answer for the general interface alone.
    if (FAILED(sink->QueryInterface(__uuidof(::__cMPEGHeader),
                                    reinterpret_cast<void**>(object.GetAddressOf()))) &&
        FAILED(sink->QueryInterface(__uuidof(IDispatch),
                                    reinterpret_cast<void**>(object.GetAddressOf())))) {
        return CONNECT_E_CANNOTCONNECT;
    }
    return guarded(__uuidof(IConnectionPoint), [&] {
        Sinks sinks = *sinks_;
        sinks.push_back({last_cookie_ + 1, object});
        sinks_ = std::make_shared<const Sinks>(std::move(sinks));
        *cookie = ++last_cookie_;
    });
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) {
    if (!listens(cookie)) {
        return CONNECT_E_NOCONNECTION;
    }
    std::shared_ptr<const Sinks> before;
    const HRESULT result = guarded(__uuidof(IConnectionPoint), [&] {
        Sinks sinks;
        std::copy_if(sinks_->begin(), sinks_->end(), std::back_inserter(sinks),
                     [cookie](const Sink& sink) { return sink.cookie != cookie; });
        before = std::exchange(sinks_, std::make_shared<const Sinks>(std::move(sinks)));
    });
    // The sink may go now, and come back to this object while it does.
    return result;
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** connections) {
    if (connections == nullptr) {
        return E_POINTER;
    }
    *connections = nullptr;
    return guarded(__uuidof(IConnectionPoint),
                   [&] { *connections = new Enumerator<ConnectionKind>(sinks_); });
}

void ConnectionPoint::reading(const String& FileName) {
    raise_if_possible([&] {
        const OwnedBstr name(FileName);
        const VARIANTARG arguments[] = {argument(name.get())};
        raise(kReading, arguments, [] {});
    });
}

void ConnectionPoint::scanning(const String& FileName, std::int32_t FilePos,
                               std::int32_t FileLength, bool& Cancel) {
    raise_if_possible([&] {
        const OwnedBstr name(FileName);
        VARIANT_BOOL cancel = Cancel ? VARIANT_TRUE : VARIANT_FALSE;
        const VARIANTARG arguments[] = {reference(cancel), argument(LONG{FileLength}),
                                        argument(LONG{FilePos}), argument(name.get())};
        raise(kScanning, arguments, [&] {
            // One sink's wish to stop is not another's to take back.
            Cancel = Cancel || cancel != VARIANT_FALSE;
            cancel = Cancel ? VARIANT_TRUE : VARIANT_FALSE;
        });
    });
}

void ConnectionPoint::duration_needed(std::int32_t& DurationinmS) {
    raise_if_possible([&] {
        LONG duration = DurationinmS;
        const VARIANTARG arguments[] = {reference(duration)};
        raise(kDurationNeeded, arguments, [&] { DurationinmS = duration; });
    });
}

bool ConnectionPoint::listens(DWORD cookie) const noexcept {
    return std::any_of(sinks_->begin(), sinks_->end(),
                       [cookie](const Sink& sink) { return sink.cookie == cookie; });
}

template <typename AfterEach>
void ConnectionPoint::raise(DISPID event, std::span<const VARIANTARG> arguments,
                            AfterEach after_each) {
    const std::shared_ptr<const Sinks> sinks = sinks_;
    for (const Sink& sink : *sinks) {
        if (!listens(sink.cookie)) {
            continue;
        }
        // Its own list: a sink may have changed the one that it got.
        std::vector<VARIANTARG> passed(arguments.begin(), arguments.end());
        call(*sink.object.Get(), event, passed);
        after_each();
    }
}

}  // namespace brindle::com
