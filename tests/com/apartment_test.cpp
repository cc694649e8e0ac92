#include <process.h>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

struct Work {
    std::wstring file;
    std::wstring title;
    int rounds = 0;
};

unsigned __stdcall work(void* given) {
    auto& task = *static_cast<Work*>(given);
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        const auto header = create();
        Sink sink;
        const DWORD cookie = advise(*header.Get(), sink);
        for (int round = 0; round < 200; ++round) {
            const Text title(task.title + std::to_wstring(round));
            if (assign(*header.Get(), task.file) == S_OK &&
                header->put_Title(title.get()) == S_OK && header->SaveAllInfo() == S_OK &&
                assign(*header.Get(), task.file) == S_OK &&
                text(*header.Get(), &host::_cMPEGHeader::get_Title) ==
                    task.title + std::to_wstring(round)) {
                ++task.rounds;
            }
        }
        EXPECT_EQ(sink.calls, 400);
        events_of(*header.Get())->Unadvise(cookie);
    }
    ::CoUninitialize();
    return 0;
}

TEST(Apartments, TwoThreadsEachWithAnObjectOfItsOwn) {
    const File files[] = {{L"first.mp3", tag({{"TIT2", "x"}}) + audio(120)},
                          {L"second.mp3", tag({{"TIT2", "x"}}) + audio(120)}};
    Work tasks[] = {{files[0].name(), L"one "}, {files[1].name(), L"two "}};
    HANDLE threads[2] = {};
    for (int i = 0; i < 2; ++i) {
        threads[i] =
            reinterpret_cast<HANDLE>(::_beginthreadex(nullptr, 0, work, &tasks[i], 0, nullptr));
        ASSERT_NE(threads[i], nullptr);
    }
    EXPECT_EQ(::WaitForMultipleObjects(2, threads, TRUE, 120'000), WAIT_OBJECT_0);
    for (int i = 0; i < 2; ++i) {
        ::CloseHandle(threads[i]);
        EXPECT_EQ(tasks[i].rounds, 200);
    }
}

// Each test's own thread is an apartment too.
class Apartment : public testing::Environment {
public:
    void SetUp() override { ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    void TearDown() override { ::CoUninitialize(); }
};

const testing::Environment* const apartment =
    testing::AddGlobalTestEnvironment(new Apartment);  // NOLINT: the framework owns it

}  // namespace
}  // namespace brindle::com::test
