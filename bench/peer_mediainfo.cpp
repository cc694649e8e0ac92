#include <MediaInfo/MediaInfo.h>
#include <benchmark/benchmark.h>

#include "peers.h"

namespace brindle::bench::mediainfo {

void open(const std::string& path) {
    MediaInfoLib::MediaInfo file;
    file.Open(std::wstring(path.begin(), path.end()));
    std::size_t sum = 0;
    for (const wchar_t* const name :
         {L"Title", L"Performer", L"Album", L"Recorded_Date", L"Track/Position", L"Genre",
          L"Composer", L"Publisher", L"Copyright", L"EncodedBy", L"Duration", L"Category"}) {
        sum += file.Get(MediaInfoLib::Stream_General, 0, name).size();
    }
    for (const wchar_t* const name : {L"BitRate", L"SamplingRate", L"Channel(s)", L"Format"}) {
        sum += file.Get(MediaInfoLib::Stream_Audio, 0, name).size();
    }
    benchmark::DoNotOptimize(sum);
}

}  // namespace brindle::bench::mediainfo
