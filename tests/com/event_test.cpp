#include <ocidl.h>
#include <olectl.h>
#include <vector>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

TEST(Events, ReadingPassesTheName) {
    const auto header = create();
    std::vector<std::wstring> names;
    Sink sink;
    sink.on_reading = [&](const std::wstring& name) { names.push_back(name); };
    const DWORD cookie = advise(*header.Get(), sink);
    EXPECT_EQ(assign(*header.Get(), L"track.wav"), S_OK);
    EXPECT_EQ(assign(*header.Get(), L""), S_OK);
    EXPECT_EQ(events_of(*header.Get())->Unadvise(cookie), S_OK);
    EXPECT_EQ(assign(*header.Get(), L"another.wav"), S_OK);
    EXPECT_EQ(names, std::vector<std::wstring>{L"track.wav"});
    EXPECT_EQ(sink.references, 0U);
}

TEST(Events, DurationIsWhatTheHostAnswersEachTime) {
    const File file(L"no audio.mp3", "no audio in here");
    const auto header = create();
    Sink sink;
    long next = 1000;
    sink.on_duration_needed = [&](long& duration) {
        EXPECT_EQ(duration, 0);
        duration = next++;
    };
    const DWORD cookie = advise(*header.Get(), sink);
    EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 0);
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 1000);
    EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 1001);
    events_of(*header.Get())->Unadvise(cookie);
    EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 0);
}

TEST(Events, EachSinkReceivesTheValueOfThePreviousOne) {
    const File file(L"no audio.mp3", "no audio in here");
    const auto header = create();
    Sink first;
    Sink second;
    first.on_duration_needed = [](long& duration) { duration = 70; };
    second.on_duration_needed = [](long& duration) { duration += 7; };
    const DWORD cookies[] = {advise(*header.Get(), first), advise(*header.Get(), second)};
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 77);
    for (const DWORD cookie : cookies) {
        EXPECT_EQ(events_of(*header.Get())->Unadvise(cookie), S_OK);
    }
}

TEST(Events, RaisedScanningComesBackWithTheHostsCancel) {
    const auto header = create();
    Sink sink;
    VARIANT_BOOL wish = VARIANT_FALSE;
    sink.on_scanning = [&](const std::wstring& name, long position, long length,
                           VARIANT_BOOL& cancel) {
        EXPECT_EQ(name, L"x.mp3");
        EXPECT_EQ(position, 5);
        EXPECT_EQ(length, 2147483647);
        EXPECT_EQ(cancel, VARIANT_FALSE);
        cancel = wish;
    };
    const DWORD cookie = advise(*header.Get(), sink);
    const Text name(L"x.mp3");
    VARIANT_BOOL cancel = VARIANT_FALSE;
    EXPECT_EQ(header->RaiseScanningEvent(name.get(), 5, 2147483647, &cancel), S_OK);
    EXPECT_EQ(cancel, VARIANT_FALSE);
    wish = 1;  // some hosts' true
    EXPECT_EQ(header->RaiseScanningEvent(name.get(), 5, 2147483647, &cancel), S_OK);
    EXPECT_EQ(cancel, VARIANT_TRUE);
    EXPECT_EQ(sink.calls, 2);
    EXPECT_EQ(header->RaiseScanningEvent(name.get(), 5, 2147483647, nullptr), E_POINTER);
    events_of(*header.Get())->Unadvise(cookie);
}

TEST(Events, CancelOnceTrueStaysTrue) {
    const auto header = create();
    Sink sinks[3];
    std::vector<VARIANT_BOOL> seen;
    const auto set = [&seen](VARIANT_BOOL value) {
        return [&seen, value](const std::wstring&, long, long, VARIANT_BOOL& cancel) {
            seen.push_back(cancel);
            cancel = value;
        };
    };
    sinks[0].on_scanning = set(VARIANT_TRUE);
    sinks[1].on_scanning = set(VARIANT_FALSE);
    sinks[2].on_scanning = set(VARIANT_FALSE);
    std::vector<DWORD> cookies;
    for (Sink& sink : sinks) {
        cookies.push_back(advise(*header.Get(), sink));
    }
    VARIANT_BOOL cancel = VARIANT_FALSE;
    EXPECT_EQ(header->RaiseScanningEvent(nullptr, 0, 0, &cancel), S_OK);
    EXPECT_EQ(cancel, VARIANT_TRUE);
    EXPECT_EQ(seen, (std::vector<VARIANT_BOOL>{VARIANT_FALSE, VARIANT_TRUE, VARIANT_TRUE}));
    for (const DWORD cookie : cookies) {
        events_of(*header.Get())->Unadvise(cookie);
    }
}

TEST(Events, ScanIsWatchedAndCanBeCancelled) {
    const File file(L"varying.mp3", varying_audio(2000));
    const auto header = create_with_clock(0.6);
    Sink sink;
    long last = -1;
    sink.on_scanning = [&](const std::wstring& name, long position, long length,
                           VARIANT_BOOL& cancel) {
        EXPECT_EQ(name, file.name());
        EXPECT_EQ(length, 939000);  // 1000 * (417 + 522)
        EXPECT_GE(position, 0);
        EXPECT_LE(position, length);
        EXPECT_EQ(cancel, VARIANT_FALSE);
        last = position;
    };
    const DWORD cookie = advise(*header.Get(), sink);
    sink.on_reading = [&](const std::wstring&) { sink.calls = 0; };

    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    const int calls = sink.calls;
    EXPECT_GT(calls, 5);  // about one for each 64 KiB
    EXPECT_GT(last, 65536);
    VARIANT_BOOL varies = VARIANT_FALSE;
    EXPECT_EQ(header->get_VBR(&varies), S_OK);
    EXPECT_EQ(varies, VARIANT_TRUE);

    sink.on_scanning = [](const std::wstring&, long, long, VARIANT_BOOL& cancel) {
        cancel = VARIANT_TRUE;
    };
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(header->get_VBR(&varies), S_OK);
    EXPECT_EQ(varies, VARIANT_FALSE);
    EXPECT_EQ(text(*header.Get(), &host::_cMPEGHeader::get_MonoStereo), L"");
    events_of(*header.Get())->Unadvise(cookie);
}

// Whatever it answers, what it stored by reference counts.
TEST(Events, FailingSinkStopsNeitherTheOthersNorTheMember) {
    const File file(L"no audio.mp3", "no audio in here");
    for (const HRESULT answer : {E_FAIL, DISP_E_EXCEPTION, RPC_E_DISCONNECTED, E_NOTIMPL}) {
        const auto header = create();
        Sink failing;
        Sink listening;
        failing.answer = answer;
        failing.on_duration_needed = [](long& duration) { duration = 70; };
        failing.on_scanning = [](const std::wstring&, long, long, VARIANT_BOOL& cancel) {
            cancel = VARIANT_TRUE;
        };
        listening.on_duration_needed = [](long& duration) { duration += 7; };
        const DWORD cookies[] = {advise(*header.Get(), failing), advise(*header.Get(), listening)};
        EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
        EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 77);
        VARIANT_BOOL cancel = VARIANT_FALSE;
        EXPECT_EQ(header->RaiseScanningEvent(nullptr, 0, 0, &cancel), S_OK);
        EXPECT_EQ(cancel, VARIANT_TRUE);
        EXPECT_EQ(failing.calls, 3);
        EXPECT_EQ(listening.calls, 3);
        for (const DWORD cookie : cookies) {
            events_of(*header.Get())->Unadvise(cookie);
        }
    }
}

TEST(Events, SinkMayTakeItselfAndOthersOffInsideAnEvent) {
    const auto header = create();
    Sink first;
    Sink second;
    Sink third;
    DWORD cookies[3] = {};
    cookies[0] = advise(*header.Get(), first);
    cookies[1] = advise(*header.Get(), second);
    cookies[2] = advise(*header.Get(), third);
    first.on_reading = [&](const std::wstring&) {
        EXPECT_EQ(events_of(*header.Get())->Unadvise(cookies[0]), S_OK);
        EXPECT_EQ(events_of(*header.Get())->Unadvise(cookies[1]), S_OK);
    };
    EXPECT_EQ(assign(*header.Get(), L"x.wav"), S_OK);
    EXPECT_EQ(assign(*header.Get(), L"y.wav"), S_OK);
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 0);
    EXPECT_EQ(third.calls, 2);
    EXPECT_EQ(first.references, 0U);
    EXPECT_EQ(second.references, 0U);
    EXPECT_EQ(events_of(*header.Get())->Unadvise(cookies[0]), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(events_of(*header.Get())->Unadvise(cookies[2]), S_OK);
}

TEST(Events, SinkMayJoinInsideAnEvent) {
    const auto header = create();
    Sink first;
    Sink second;
    DWORD late = 0;
    first.on_reading = [&](const std::wstring&) { late = advise(*header.Get(), second); };
    const DWORD cookie = advise(*header.Get(), first);
    EXPECT_EQ(assign(*header.Get(), L"x.wav"), S_OK);
    EXPECT_EQ(second.calls, 0);
    first.on_reading = nullptr;
    EXPECT_EQ(assign(*header.Get(), L"y.wav"), S_OK);
    EXPECT_EQ(second.calls, 1);
    events_of(*header.Get())->Unadvise(cookie);
    events_of(*header.Get())->Unadvise(late);
}

TEST(Events, SinkMayReleaseTheLastReferenceInsideAnEvent) {
    auto header = create();
    Sink sink;
    host::_cMPEGHeader* const plain = header.Get();
    sink.on_reading = [&](const std::wstring&) { header.Reset(); };
    static_cast<void>(advise(*plain, sink));
    Text name(L"x.wav");
    EXPECT_EQ(plain->put_FileName(name.reference()), S_OK);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(sink.references, 0U);  // the object is gone and has let its sinks go
}

// The same from inside a call by name, which has more to do after the member.
TEST(Events, SinkMayReleaseTheLastReferenceInsideACallByName) {
    auto header = create();
    Sink sink;
    host::_cMPEGHeader* const plain = header.Get();
    sink.on_reading = [&](const std::wstring&) { header.Reset(); };
    static_cast<void>(advise(*plain, sink));
    DISPID put = DISPID_PROPERTYPUT;
    const Text name(L"x.wav");
    VARIANTARG value{};
    value.vt = VT_BSTR;
    value.bstrVal = name.get();
    DISPPARAMS arguments{&value, &put, 1, 1};
    EXPECT_EQ(plain->Invoke(7, GUID_NULL, LOCALE_INVARIANT, DISPATCH_PROPERTYPUT, &arguments,
                            nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(sink.references, 0U);
}

TEST(Events, SinkMayReleaseTheLastReferenceInsideAScan) {
    const File file(L"varying.mp3", varying_audio(2000));
    auto header = create_with_clock(0.6);
    Sink sink;
    host::_cMPEGHeader* const plain = header.Get();
    sink.on_scanning = [&](const std::wstring&, long, long, VARIANT_BOOL&) { header.Reset(); };
    static_cast<void>(advise(*plain, sink));
    Text name(file.name());
    EXPECT_EQ(plain->put_FileName(name.reference()), S_OK);
    EXPECT_GT(sink.calls, 5);  // to the end of the scan
    EXPECT_EQ(sink.references, 0U);
}

TEST(Events, SinkMayReleaseTheLastReferenceInDurationNeeded) {
    const File file(L"no audio.mp3", "no audio in here");
    auto header = create();
    Sink sink;
    host::_cMPEGHeader* const plain = header.Get();
    sink.on_duration_needed = [&](long& duration) {
        duration = 5;
        header.Reset();
    };
    static_cast<void>(advise(*plain, sink));
    EXPECT_EQ(assign(*plain, file.name()), S_OK);
    EXPECT_EQ(number(*plain, &host::_cMPEGHeader::get_Duration), 5);
    EXPECT_EQ(sink.references, 0U);
}

TEST(Events, SinkThatAsksForTheDurationWithoutEndGets0AtADepthOf16) {
    const File file(L"no audio.mp3", "no audio in here");
    const auto header = create();
    Sink sink;
    sink.on_duration_needed = [&](long& duration) {
        duration = number(*header.Get(), &host::_cMPEGHeader::get_Duration) + 1;
    };
    const DWORD cookie = advise(*header.Get(), sink);
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    sink.calls = 0;
    EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 16);
    EXPECT_EQ(sink.calls, 16);
    EXPECT_EQ(number(*header.Get(), &host::_cMPEGHeader::get_Duration), 16);
    events_of(*header.Get())->Unadvise(cookie);
}

// No loop of the component runs meanwhile.
TEST(Events, FileNameFromInsideAScanningThatTheHostRaisedIsObeyed) {
    const File file(L"song.mp3", audio(120));
    const auto header = create();
    Sink sink;
    sink.on_scanning = [&](const std::wstring&, long, long, VARIANT_BOOL&) {
        EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
        EXPECT_EQ(text(*header.Get(), &host::_cMPEGHeader::get_FileName), file.name());
    };
    const DWORD cookie = advise(*header.Get(), sink);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    EXPECT_EQ(header->RaiseScanningEvent(nullptr, 0, 0, &cancel), S_OK);
    EXPECT_EQ(text(*header.Get(), &host::_cMPEGHeader::get_FileName), file.name());
    events_of(*header.Get())->Unadvise(cookie);
}

TEST(Events, FileNameFromInsideReadingIsNotObeyed) {
    const File file(L"song.mp3", audio(120));
    const auto header = create();
    Sink sink;
    sink.on_reading = [&](const std::wstring&) {
        EXPECT_EQ(assign(*header.Get(), L"other.wav"), S_OK);
    };
    const DWORD cookie = advise(*header.Get(), sink);
    EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
    EXPECT_EQ(text(*header.Get(), &host::_cMPEGHeader::get_FileName), file.name());
    EXPECT_EQ(sink.calls, 1);
    events_of(*header.Get())->Unadvise(cookie);
}

TEST(Events, ConnectionPointsAndConnectionsAreListed) {
    const auto header = create();
    ComPtr<IConnectionPointContainer> container;
    ASSERT_EQ(header.As(&container), S_OK);
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(container->EnumConnectionPoints(&points), S_OK);
    IConnectionPoint* found[2] = {};
    ULONG count = 9;
    EXPECT_EQ(points->Next(2, found, &count), S_FALSE);
    ASSERT_EQ(count, 1U);
    ComPtr<IConnectionPoint> point(found[0]);
    found[0]->Release();
    IID iid{};
    EXPECT_EQ(point->GetConnectionInterface(&iid), S_OK);
    EXPECT_EQ(iid, host::kEventsId);
    ComPtr<IConnectionPointContainer> back;
    EXPECT_EQ(point->GetConnectionPointContainer(&back), S_OK);
    EXPECT_EQ(back.Get(), container.Get());
    EXPECT_EQ(points->Next(1, found, nullptr), S_FALSE);
    EXPECT_EQ(points->Reset(), S_OK);
    EXPECT_EQ(points->Skip(1), S_OK);
    EXPECT_EQ(points->Skip(1), S_FALSE);

    Sink sinks[2];
    const DWORD cookies[] = {advise(*header.Get(), sinks[0]), advise(*header.Get(), sinks[1])};
    ComPtr<IEnumConnections> connections;
    ASSERT_EQ(point->EnumConnections(&connections), S_OK);
    ComPtr<IEnumConnections> clone;
    EXPECT_EQ(connections->Clone(&clone), S_OK);
    CONNECTDATA data[2] = {};
    EXPECT_EQ(clone->Next(2, data, &count), S_OK);
    ASSERT_EQ(count, 2U);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(data[i].dwCookie, cookies[i]);
        EXPECT_EQ(data[i].pUnk, static_cast<IUnknown*>(&sinks[i]));
        data[i].pUnk->Release();
        EXPECT_EQ(point->Unadvise(cookies[i]), S_OK);
    }
    EXPECT_EQ(container->FindConnectionPoint(__uuidof(IDispatch), &point), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(container->FindConnectionPoint(host::kEventsId, nullptr), E_POINTER);
    EXPECT_EQ(container->EnumConnectionPoints(nullptr), E_POINTER);
}

TEST(Events, WhatIsNoSinkIsRefused) {
    struct Deaf : Sink {
        HRESULT __stdcall QueryInterface(REFIID, void** object) override {
            *object = nullptr;
            return E_NOINTERFACE;
        }
    };
    const auto header = create();
    Deaf deaf;
    DWORD cookie = 7;
    EXPECT_EQ(events_of(*header.Get())->Advise(&deaf, &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0U);
    EXPECT_EQ(events_of(*header.Get())->Advise(nullptr, &cookie), E_POINTER);
    EXPECT_EQ(events_of(*header.Get())->Advise(&deaf, nullptr), E_POINTER);
    EXPECT_EQ(events_of(*header.Get())->Unadvise(0), CONNECT_E_NOCONNECTION);
}

}  // namespace
}  // namespace brindle::com::test
