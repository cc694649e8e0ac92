#include "mpeg/clsMPEG.h"

#include <new>
#include <utility>

#include "mpeg/bit_digits.h"
#include "mpeg/duration.h"
#include "mpeg/stream_scan.h"

namespace brindle {

template <typename Step>
void clsMPEG::with_file(const String& name, Step&& step) {
    try {
        const auto file = environment_->files.open(name, OpenMode::Read);
        FileWindow window(*file);
        std::forward<Step>(step)(window);
        return;
    } catch (const Error& error) {
        read_fault_ = error;
    } catch (const std::bad_alloc&) {
        read_fault_.emplace(RuntimeError::OutOfMemory);
    }
    state_.reset();
}

void clsMPEG::forget() {
    ID3v2Length = 0;
    ID3v2Offset = 0;
    HasV1Tag = false;
    Owner = nullptr;
    state_ = {};
    read_fault_.reset();
}

void clsMPEG::FileName(const String& Name) {
    read_fault_.reset();
    with_file(Name, [&](FileWindow& window) { analyse(Name, window); });
}

void clsMPEG::analyse(const String& name, FileWindow& window) {
    read_fault_.reset();
    state_.reset();
    if (scan(name, window, kStartBehindTag)) {
        state_.file_name = name;
    } else {
        state_.reset();
    }
}

void clsMPEG::SetFileName(const ScannedFile& id3v2) {
    read_fault_.reset();
    const String name = id3v2.FileName();
    with_file(name, [&](FileWindow& window) {
        if (scan(name, window, id3v2.Id3v2TagSize()) || scan(name, window, kStartBehindTag)) {
            state_.file_name = name;
        } else {
            state_.reset();
        }
    });
}

bool clsMPEG::scan(const String& name, FileWindow& window, std::int32_t start) {
    StreamScan stream_scan(state_, name, {ID3v2Length, ID3v2Offset, HasV1Tag}, window,
                           environment_->clock, Owner);
    const bool accepted = stream_scan.ScanFile(start);
    if (stream_scan.read_fault()) {
        read_fault_ = stream_scan.read_fault();
    }
    return accepted;
}

StreamKinds clsMPEG::stream_kinds() const {
    return {kind_of(header_bits(state_.header.HeaderBytes.data())),
            kind_of(state_.confirmed_header)};
}

std::int32_t clsMPEG::BitRate() const {
    constexpr std::int32_t kBitsPerKilobit = 1'000;
    return state_.header.VBR ? state_.average_bit_rate : state_.header.BitRate * kBitsPerKilobit;
}

String clsMPEG::SecsToTimeString(double& Secs) {
    return brindle::SecsToTimeString(Secs);
}

std::int64_t clsMPEG::BinToDec(std::u16string_view BinValue) {
    return brindle::BinToDec(BinValue);
}

String clsMPEG::ByteToBit(std::span<const std::uint8_t> ByteArray) {
    return brindle::ByteToBit(ByteArray);
}

}  // namespace brindle
