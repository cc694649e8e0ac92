#include "mpeg/reference_analyser.h"

#include <cctype>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

namespace brindle::test {
namespace {

// a / b to the nearest whole number, halves to even.
std::int64_t nearest(std::int64_t a, std::int64_t b) {
    if (b == 0) {
        throw std::domain_error("division by zero");
    }
    std::int64_t whole = a / b;
    while (whole * b > a) {
        --whole;
    }
    const std::int64_t rest = a - whole * b;
    if (rest * 2 > b || (rest * 2 == b && whole % 2 != 0)) {
        ++whole;
    }
    return whole;
}

std::int32_t to_32_bits(std::int64_t value) {
    if (value > std::numeric_limits<std::int32_t>::max() ||
        value < std::numeric_limits<std::int32_t>::min()) {
        throw std::overflow_error("more than 32 bits");
    }
    return static_cast<std::int32_t>(value);
}

}  // namespace

void ReferenceAnalyser::reset() {
    found = false;
    DurationmS = -1;
    FrameCounter = 0;
    bit_rate_sum_ = 0;
    header = {};
    HeaderStartPos = 0;
    VBR = false;
}

void ReferenceAnalyser::FileName(const Bytes& file) {
    file_ = file;
    reset();
    std::int32_t start = -1;
    bool result = false;
    ScanFile(start, false, result);
    if (!result) {
        reset();
    }
    found = result;
}

void ReferenceAnalyser::SetFileName(const Bytes& file, std::int32_t tag_size) {
    file_ = file;
    std::int32_t start = tag_size;
    bool result = false;
    ScanFile(start, false, result);
    if (!result) {
        start = -1;
        ScanFile(start, false, result);
    }
    if (!result) {
        reset();
    }
    found = result;
}

void ReferenceAnalyser::ScanFile(std::int32_t& StartOffset, bool FullScan, bool& Result) {
    try {
        scan(StartOffset, FullScan, Result);
    } catch (const std::exception&) {
        Result = false;
    }
    retrying_ = false;
}

// `position` counts from 1.
bool ReferenceAnalyser::decode(std::int64_t position, bool with_file, Candidate& candidate) const {
    candidate = {};
    candidate.HeaderStartPos = position - 1;
    const auto length = static_cast<std::int64_t>(file_.size());
    if (position + 3 > length) {
        return false;
    }
    std::uint32_t bits = 0;
    for (std::int64_t byte = position; byte < position + 4; ++byte) {
        bits = bits * 256 + file_[static_cast<std::size_t>(byte - 1)];
    }
    const HeaderMeaning meaning = meaning_of(bits);
    if (!meaning.valid) {
        return false;
    }
    candidate.header = meaning;
    if (with_file) {
        if (position - 1 + meaning.length > length) {
            return false;
        }
        candidate.FrameData = file_.part(static_cast<std::size_t>(position + 3),
                                         static_cast<std::size_t>(meaning.length - 4));
    }
    return true;
}

void ReferenceAnalyser::FindConsec(const Candidate& First, int Needed, Candidate& Last,
                                   bool& BitrateDiffers, bool& Bailed, std::int32_t& Count) const {
    Bailed = false;
    Count = 0;
    const auto length = static_cast<std::int64_t>(file_.size());
    Candidate previous = First;
    std::int32_t count = 0;
    while (count != Needed) {
        const std::int64_t next = previous.HeaderStartPos + previous.header.length + 1;
        if (next + 4 > length && count != 0) {
            Bailed = true;
            Count = count;
            return;
        }
        Candidate candidate;
        if (!decode(next, true, candidate)) {
            Count = 0;
            return;
        }
        const HeaderMeaning& a = First.header;
        const HeaderMeaning& b = candidate.header;
        if (a.frequency != b.frequency || a.version != b.version || a.mode != b.mode ||
            a.emphasis != b.emphasis || a.layer != b.layer || a.copyright != b.copyright ||
            a.original != b.original) {
            Count = 0;
            return;
        }
        if (b.kbps != a.kbps) {
            BitrateDiffers = true;
        }
        previous = candidate;
        Last = candidate;
        count += 1;
    }
    Count = count;
}

void ReferenceAnalyser::scan(std::int32_t& StartOffset, bool FullScan, bool& Result) {
    xing_tag_ = false;
    if (StartOffset == -1) {
        StartOffset = ID3v2Length + ID3v2Offset;
    }
    if (FullScan) {
        FrameCounter = 0;
        bit_rate_sum_ = 0;
    }
    const auto length = static_cast<std::int64_t>(file_.size());
    const std::int64_t v1 = HasV1Tag ? 128 : 0;
    if (static_cast<double>(StartOffset) > static_cast<double>(length) / 2) {
        StartOffset = 0;
    }
    std::int64_t p = std::int64_t{StartOffset} + 1;
    if (p < 1) {
        throw std::out_of_range("seek before the file");
    }
    std::int32_t accepted_run = 0;
    std::int32_t count = 0;
    int attempts = 0;
    bool BitrateDiffers = false;
    bool left_by_full_scan = false;
    while (accepted_run < 10) {
        Candidate candidate;
        bool is_found = false;
        const bool decodes = decode(p, !FullScan, candidate);
        p += 4;
        if (FullScan) {
            if (decodes) {
                bool bailed = false;
                do {
                    Candidate next;
                    FindConsec(candidate, 1, next, BitrateDiffers, bailed, count);
                    is_found = count == 1;
                    bit_rate_sum_ += candidate.header.kbps;
                    FrameCounter += 1;
                    if (is_found) {
                        candidate = next;
                    }
                } while (is_found && !bailed);
                if (FrameCounter > 10) {
                    is_found = bit_rate_sum_ > 20 * std::int64_t{FrameCounter};
                    if (is_found) {
                        VBR = true;
                        header.kbps = to_32_bits(nearest(bit_rate_sum_, FrameCounter));
                        left_by_full_scan = true;
                    }
                }
            }
            if (left_by_full_scan) {
                break;
            }
        } else if (decodes) {
            const std::int64_t remaining = length - candidate.HeaderStartPos - v1;
            if (remaining < 0) {
                Result = false;
                return;
            }
            const std::int64_t frames = nearest(remaining, candidate.header.length);
            int needed = 100;
            if (frames < 100) {
                needed = static_cast<int>(frames) - 1;
                if (needed < 0) {
                    needed = 1;
                }
            }
            Candidate last;
            bool bailed = false;
            FindConsec(candidate, needed, last, BitrateDiffers, bailed, count);
            is_found = count == needed;
            if (is_found) {
                if (header.frequency == 0) {
                    header = candidate.header;
                    HeaderStartPos = static_cast<std::int32_t>(candidate.HeaderStartPos);
                }
                read_xing(candidate);
                if (xing_tag_) {
                    if (xing_bytes_ > length) {
                        xing_tag_ = false;
                    }
                    VBR = true;
                    CalcDuration(xing_bytes_);
                    Result = true;
                    return;
                }
                accepted_run = needed;
            }
        }
        if (!is_found) {
            const bool at_tag_end =
                candidate.HeaderStartPos == std::int64_t{ID3v2Length} + ID3v2Offset;
            if (count > 0 && !retrying_ && candidate.HeaderStartPos >= 10 && at_tag_end) {
                retrying_ = true;
                auto earlier = static_cast<std::int32_t>(candidate.HeaderStartPos - 10);
                ScanFile(earlier, false, Result);
                return;
            }
            FrameCounter = 0;
            bit_rate_sum_ = 0;
            BitrateDiffers = false;
            p -= 3;
            attempts += 1;
            if ((attempts > 16384 && header.kbps == 0) || p + 4 >= length) {
                break;
            }
        }
    }
    if (FullScan) {
        Result = true;
        return;
    }
    if (accepted_run < 10) {
        Result = false;
        return;
    }
    if (BitrateDiffers) {
        bool ignored = false;
        ScanFile(HeaderStartPos, true, ignored);
    }
    std::int64_t audio_bytes = length - v1;
    if (HeaderStartPos != 0) {
        audio_bytes -= HeaderStartPos;
    }
    CalcDuration(audio_bytes);
    Result = true;
}

void ReferenceAnalyser::read_xing(const Candidate& candidate) {
    xing_tag_ = false;
    std::string text = candidate.FrameData.text();
    for (char& character : text) {
        character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    const std::size_t place = text.find("XING") + 1;  // from 1; 0 when there is none
    if (place != 33 && place != 18 && place != 10) {
        return;
    }
    std::int64_t words[3] = {};
    std::size_t byte = place + 3;
    for (std::int64_t& word : words) {
        for (int count = 0; count < 4; ++count, ++byte) {
            if (byte >= candidate.FrameData.size()) {
                return;
            }
            word = word * 256 + candidate.FrameData[byte];
        }
        if (word > 2147483647) {
            return;
        }
        if (&word == words && (word & 3) != 3) {
            return;
        }
    }
    xing_tag_ = true;
    xing_frames_ = words[1];
    xing_bytes_ = words[2];
}

void ReferenceAnalyser::CalcDuration(std::int64_t AudioBytes) {
    if (header.kbps <= 0) {
        DurationmS = -1;
        return;
    }
    const int samples =
        header.layer == 1 ? 384 : (header.version == 1 || header.layer == 2 ? 1152 : 576);
    const std::int64_t frames_per_second = nearest(header.frequency, samples);
    if (xing_tag_) {
        FrameCounter = static_cast<std::int32_t>(xing_frames_);
    }
    if (!VBR) {
        average_bit_rate_ = header.kbps;
        const std::int64_t four_places = nearest(AudioBytes * 8 * 10000, header.kbps);
        DurationmS = to_32_bits(nearest(four_places, 10000));
        return;
    }
    const std::int64_t all_samples = to_32_bits(std::int64_t{samples} * FrameCounter);
    const std::int64_t seconds = nearest(all_samples * 10000, header.frequency);
    DurationmS = to_32_bits(nearest(seconds * 1000, 10000));
    if (AudioBytes != 0) {
        const std::int64_t bytes_per_frame = nearest(AudioBytes * 10000, FrameCounter);
        average_bit_rate_ = to_32_bits(
            nearest(bytes_per_frame * frames_per_second * 8, std::int64_t{1024} * 10000));
    }
}

}  // namespace brindle::test
