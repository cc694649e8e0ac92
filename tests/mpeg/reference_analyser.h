// The analysis done the slow and simple way, one header at a time over a file in memory, with
// nothing remembered and every chain walked again from each of its frames. The analyser must agree
// with it on every file.
#pragma once

#include <cstdint>

#include "mpeg/header_formulas.h"
#include "support/bytes.h"

namespace brindle::test {

class ReferenceAnalyser {
public:
    std::int32_t ID3v2Length = 0;
    std::int32_t ID3v2Offset = 0;
    bool HasV1Tag = false;

    // What is known afterwards.
    bool found = false;
    std::int32_t HeaderStartPos = 0;
    HeaderMeaning header;  // kbps as the scan left it
    bool VBR = false;
    std::int32_t DurationmS = -1;
    std::int32_t FrameCounter = 0;
    [[nodiscard]] std::int32_t BitRate() const {
        return VBR ? average_bit_rate_ : header.kbps * 1000;
    }

    void FileName(const Bytes& file);
    void SetFileName(const Bytes& file, std::int32_t tag_size);

private:
    struct Candidate {
        HeaderMeaning header;
        std::int64_t HeaderStartPos = 0;
        Bytes FrameData;
    };

    void reset();
    void ScanFile(std::int32_t& StartOffset, bool FullScan, bool& Result);
    void scan(std::int32_t& StartOffset, bool FullScan, bool& Result);
    bool decode(std::int64_t position, bool with_file, Candidate& candidate) const;
    void FindConsec(const Candidate& First, int Needed, Candidate& Last, bool& BitrateDiffers,
                    bool& Bailed, std::int32_t& Count) const;
    void read_xing(const Candidate& candidate);
    void CalcDuration(std::int64_t AudioBytes);

    Bytes file_;
    bool retrying_ = false;
    bool xing_tag_ = false;
    std::int64_t xing_frames_ = 0;
    std::int64_t xing_bytes_ = 0;
    std::int64_t bit_rate_sum_ = 0;
    std::int32_t average_bit_rate_ = 0;
};

}  // namespace brindle::test
