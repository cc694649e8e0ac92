#include "facade/com/guard.h"

#include <new>
#include <oaidl.h>
#include <oleauto.h>

#include <wrl/client.h>

#include <brindle/error.h>

#include "facade/com/result_error.h"
#include "facade/com/values.h"

namespace brindle::com {
namespace {

constexpr std::int32_t kLastRuntimeError = 0xFFFF;

// Numbers of the automation runtime travel in its own facility, all others are result codes.
HRESULT result_of(std::int32_t number) {
    return number > 0 && number <= kLastRuntimeError
               ? MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number)
               : static_cast<HRESULT>(number);
}

HRESULT result_of(RuntimeError error) {
    return result_of(static_cast<std::int32_t>(error));
}

void leave_error_object(REFIID interface_id, const Error& error) {
    Microsoft::WRL::ComPtr<ICreateErrorInfo> creation;
    check(::CreateErrorInfo(&creation));
    check(creation->SetGUID(interface_id));
    check(creation->SetSource(OwnedBstr(error.source()).get()));
    check(creation->SetDescription(OwnedBstr(error.description()).get()));
    Microsoft::WRL::ComPtr<IErrorInfo> information;
    check(creation.As(&information));
    check(::SetErrorInfo(0, information.Get()));
}

HRESULT report(REFIID interface_id, const Error& error) noexcept {
    try {
        leave_error_object(interface_id, error);
    } catch (const std::exception&) {
        // Without its texts the number says enough.
    }
    return result_of(error.number());
}

}  // namespace

HRESULT report_exception(REFIID interface_id) noexcept {
    // What an earlier failure left there does not explain this one.
    ::SetErrorInfo(0, nullptr);
    try {
        // cppcheck-suppress rethrowNoCurrentException; called from handlers alone
        throw;
    } catch (const Error& error) {
        return report(interface_id, error);
    } catch (const ResultError& error) {
        return error.result();
    } catch (const std::bad_alloc&) {
        return result_of(RuntimeError::OutOfMemory);
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace brindle::com
