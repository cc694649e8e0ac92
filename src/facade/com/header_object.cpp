#include "facade/com/header_object.h"

#include <memory>
#include <olectl.h>
#include <utility>
#include <vector>

#include "facade/com/collection_object.h"
#include "facade/com/enumerator.h"
#include "facade/com/host_hooks.h"
#include "facade/com/server_environment.h"
#include "facade/com/type_library.h"
#include "util/skip_errors.h"

namespace brindle::com {
HeaderObject::HeaderObject() : header_(server_environment()), events_(*this) {
    header_.Reading = [this](const String& FileName) { events_.reading(FileName); };
    header_.Scanning = [this](const String& FileName, std::int32_t FilePos, std::int32_t FileLength,
                              bool& Cancel) {
        events_.scanning(FileName, FilePos, FileLength, Cancel);
    };
    header_.DurationNeeded = [this](std::int32_t& DurationinmS) {
        events_.duration_needed(DurationinmS);
    };
    header_.OnYield = pump_messages;
    header_.OnMessageBox = show_message;
}

HRESULT HeaderObject::RaiseScanningEvent(BSTR FileName, LONG FilePos, LONG FileLength,
                                         VARIANT_BOOL* Cancel) {
    return run([&] {
        require(Cancel != nullptr, E_POINTER);
        bool cancel = *Cancel != VARIANT_FALSE;
        header_.RaiseScanningEvent(text_of(FileName), FilePos, FileLength, cancel);
        hand_out(cancel, *Cancel);
    });
}

HRESULT HeaderObject::put_FileName(BSTR* NewFileName) {
    return run([&] {
        require(NewFileName != nullptr, E_POINTER);
        header_.FileName(text_of(*NewFileName));
    });
}

// A value without a text changes nothing, as every value that can't be converted.
HRESULT HeaderObject::put_Category(VARIANT Value) {
    return run([&] { skip_errors([&] { header_.Category(value_of(Value)); }); });
}

HRESULT HeaderObject::CustomFieldAdd(BSTR FieldDescriptor, VARIANT FieldValue) {
    return run([&] {
        skip_errors(
            [&] { header_.CustomFieldAdd(text_of(FieldDescriptor), value_of(FieldValue)); });
    });
}

HRESULT HeaderObject::CustomFieldExists(BSTR FieldDescriptor, VARIANT_BOOL* Result) {
    return give(Result, [&] { return header_.CustomFieldExists(text_of(FieldDescriptor)); });
}

HRESULT HeaderObject::CustomFieldRetrieve(BSTR FieldDescriptor, VARIANT* Result) {
    return give(Result, [&] { return header_.CustomFieldRetrieve(text_of(FieldDescriptor)); });
}

HRESULT HeaderObject::StripTags(::eTagType eTagTypes, VARIANT_BOOL* Result) {
    return give(Result, [&] { return header_.StripTags(static_cast<eTagType>(eTagTypes)); });
}

// UsePadding may be null, as an argument that has no effect.
HRESULT HeaderObject::ElapsedTimeFromMs(LONG ms, ::eTimeDisplayStyle TimeStyle,
                                        VARIANT_BOOL* /*UsePadding*/, BSTR* Result) {
    return give(Result, [&] {
        return header_.ElapsedTimeFromMs(ms, static_cast<eTimeDisplayStyle>(TimeStyle));
    });
}

HRESULT HeaderObject::get_v2Frames(IDispatch** Value) {
    return store(Value, [&](IDispatch*& place) {
        if (auto frames = header_.v2Frames()) {
            place = new CollectionObject(std::move(frames));
        }
    });
}

HRESULT HeaderObject::get_v2Tag(BSTR sFrame, LONG indexInFrame, BSTR* Value) {
    return give(Value, [&] { return header_.v2Tag(text_of(sFrame), indexInFrame); });
}

HRESULT HeaderObject::GetClassInfo(ITypeInfo** type) {
    return store(type,
                 [](ITypeInfo*& place) { load_type_info(__uuidof(::cMPEGHeader)).CopyTo(&place); });
}

HRESULT HeaderObject::GetGUID(DWORD kind, GUID* guid) {
    return store(guid, [&](GUID& place) {
        require(kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID, E_INVALIDARG);
        place = __uuidof(::__cMPEGHeader);
    });
}

HRESULT HeaderObject::EnumConnectionPoints(IEnumConnectionPoints** points) {
    return store(points, [&](IEnumConnectionPoints*& place) {
        using Points = std::vector<ConnectionPointKind::Kept>;
        place = new Enumerator<ConnectionPointKind>(
            std::make_shared<const Points>(Points{ConnectionPointKind::Kept(&events_)}));
    });
}

HRESULT HeaderObject::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
    return store(point, [&](IConnectionPoint*& place) {
        require(iid == __uuidof(::__cMPEGHeader), CONNECT_E_NOCONNECTION);
        place = &events_;
        events_.AddRef();
    });
}

}  // namespace brindle::com
