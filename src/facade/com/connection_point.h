#pragma once

#include <cstdint>
#include <memory>
#include <ocidl.h>
#include <span>
#include <vector>

#include <wrl/client.h>

#include <brindle/values.h>

#include "facade/com/enumerator.h"

namespace brindle::com {

struct Sink {
    DWORD cookie;
    Microsoft::WRL::ComPtr<IDispatch> object;
};
using Sinks = std::vector<Sink>;

struct ConnectionKind {
    using Interface = IEnumConnections;
    using Kept = Sink;
    using Given = CONNECTDATA;
    static void give(const Sink& sink, CONNECTDATA& into);
    static void take_back(CONNECTDATA& given) noexcept;
};

struct ConnectionPointKind {
    using Interface = IEnumConnectionPoints;
    using Kept = Microsoft::WRL::ComPtr<IConnectionPoint>;
    using Given = IConnectionPoint*;
    static void give(const Kept& point, IConnectionPoint*& into);
    static void take_back(IConnectionPoint*& given) noexcept;
};

// The events of one object and the sinks that listen to them. A part of the object: it has an
// identity of its own, but lives as long as the object and by its references.
class ConnectionPoint final : public IConnectionPoint {
public:
    explicit ConnectionPoint(IConnectionPointContainer& container) : container_(container) {}
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;
    virtual ~ConnectionPoint() = default;

    HRESULT __stdcall QueryInterface(REFIID iid, void** object) override;
    ULONG __stdcall AddRef() override { return container_.AddRef(); }
    ULONG __stdcall Release() override { return container_.Release(); }

    HRESULT __stdcall GetConnectionInterface(IID* iid) override;
    HRESULT __stdcall GetConnectionPointContainer(IConnectionPointContainer** container) override;
    HRESULT __stdcall Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT __stdcall Unadvise(DWORD cookie) override;
    HRESULT __stdcall EnumConnections(IEnumConnections** connections) override;

    // Each raises its event in every sink, in the order in which they came. Whatever a sink
    // answers, the next one is called; one that was taken off meanwhile is not. Each sees the value
    // by reference that the one before has left.
    void reading(const String& FileName);
    void scanning(const String& FileName, std::int32_t FilePos, std::int32_t FileLength,
                  bool& Cancel);
    void duration_needed(std::int32_t& DurationinmS);

private:
    [[nodiscard]] bool listens(DWORD cookie) const noexcept;
    // `arguments` in reverse, as IDispatch has them. `after_each` follows each sink.
    template <typename AfterEach>
    void raise(DISPID event, std::span<const VARIANTARG> arguments, AfterEach after_each);

    IConnectionPointContainer& container_;
    // Replaced by every change, so that a loop over the old list is not disturbed.
    std::shared_ptr<const Sinks> sinks_ = std::make_shared<const Sinks>();
    DWORD last_cookie_ = 0;
};

}  // namespace brindle::com
