#include <fcntl.h>
#include <id3tag.h>
#include <limits>
#include <mad.h>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include "peers.h"

namespace brindle::bench::libmad {
namespace {

long decode_headers(const unsigned char* bytes, std::size_t count, long most) {
    mad_stream stream{};
    mad_header header{};
    mad_stream_init(&stream);
    mad_header_init(&header);
    mad_stream_buffer(&stream, bytes, count);
    long frames = 0;
    long rates = 0;
    while (frames < most) {
        if (mad_header_decode(&header, &stream) == 0) {
            ++frames;
            rates += static_cast<long>(header.bitrate);
        } else if (!MAD_RECOVERABLE(stream.error)) {
            break;
        }
    }
    mad_header_finish(&header);
    mad_stream_finish(&stream);
    return rates;
}

}  // namespace

void open(const std::string& path) {
    constexpr std::size_t kBlock = 65'536;
    constexpr long kFrames = 101;
    static thread_local std::vector<unsigned char> block(kBlock);
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    auto count = static_cast<std::size_t>(::pread(file, block.data(), kBlock, 0));
    const long tag = id3_tag_query(block.data(), ID3_TAG_QUERYSIZE);
    if (tag > 0) {
        count = static_cast<std::size_t>(::pread(file, block.data(), kBlock, tag));
    }
    ::close(file);
    benchmark::DoNotOptimize(decode_headers(block.data(), count, kFrames));
}

void walk(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    ::fstat(file, &status);
    const auto length = static_cast<std::size_t>(status.st_size);
    void* const bytes = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, file, 0);
    benchmark::DoNotOptimize(decode_headers(static_cast<const unsigned char*>(bytes), length,
                                            std::numeric_limits<long>::max()));
    ::munmap(bytes, length);
    ::close(file);
}

}  // namespace brindle::bench::libmad
