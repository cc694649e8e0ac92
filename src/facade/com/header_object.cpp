#include "facade/com/header_object.h"

#include <memory>
#include <olectl.h>
#include <vector>

#include <brindle/error.h>

#include "facade/com/collection_object.h"
#include "facade/com/enumerator.h"
#include "facade/com/host_hooks.h"
#include "facade/com/server_environment.h"
#include "facade/com/type_library.h"

namespace brindle::com {
namespace {

void hand_out(std::shared_ptr<KeyedCollection> collection, IDispatch*& into) {
    if (collection) {
        into = new CollectionObject(std::move(collection));
    }
}

}  // namespace

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
    if (Cancel == nullptr) {
        return E_POINTER;
    }
    return run([&] {
        bool cancel = *Cancel != VARIANT_FALSE;
        header_.RaiseScanningEvent(text_of(FileName), FilePos, FileLength, cancel);
        com::hand_out(cancel, *Cancel);
    });
}

HRESULT HeaderObject::put_FileName(BSTR* NewFileName) {
    if (NewFileName == nullptr) {
        return E_POINTER;
    }
    return run([&] { header_.FileName(text_of(*NewFileName)); });
}

// A value without a text changes nothing, as every value that can't be converted.
HRESULT HeaderObject::put_Category(VARIANT Value) {
    return run([&] {
        try {
            header_.Category(value_of(Value));
        } catch (const Error&) {
            return;
        }
    });
}

HRESULT HeaderObject::CustomFieldAdd(BSTR FieldDescriptor, VARIANT FieldValue) {
    return run([&] {
        try {
            header_.CustomFieldAdd(text_of(FieldDescriptor), value_of(FieldValue));
        } catch (const Error&) {
            return;
        }
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
    if (Value == nullptr) {
        return E_POINTER;
    }
    *Value = nullptr;
    return run([&] { hand_out(header_.v2Frames(), *Value); });
}

HRESULT HeaderObject::get_v2Tag(BSTR sFrame, LONG indexInFrame, BSTR* Value) {
    return give(Value, [&] { return header_.v2Tag(text_of(sFrame), indexInFrame); });
}

HRESULT HeaderObject::GetClassInfo(ITypeInfo** type) {
    if (type == nullptr) {
        return E_POINTER;
    }
    *type = nullptr;
    return run([&] { load_type_info(__uuidof(::cMPEGHeader)).CopyTo(type); });
}

HRESULT HeaderObject::GetGUID(DWORD kind, GUID* guid) {
    if (guid == nullptr) {
        return E_POINTER;
    }
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
        *guid = GUID_NULL;
        return E_INVALIDARG;
    }
    *guid = __uuidof(::__cMPEGHeader);
    return S_OK;
}

HRESULT HeaderObject::EnumConnectionPoints(IEnumConnectionPoints** points) {
    if (points == nullptr) {
        return E_POINTER;
    }
    *points = nullptr;
    return run([&] {
        using Points = std::vector<ConnectionPointKind::Kept>;
        *points = new Enumerator<ConnectionPointKind>(
            std::make_shared<const Points>(Points{ConnectionPointKind::Kept(&events_)}));
    });
}

HRESULT HeaderObject::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
    if (point == nullptr) {
        return E_POINTER;
    }
    *point = nullptr;
    if (iid != __uuidof(::__cMPEGHeader)) {
        return CONNECT_E_NOCONNECTION;
    }
    *point = &events_;
    events_.AddRef();
    return S_OK;
}

}  // namespace brindle::com
