#include "peers.h"

#include "process.h"

namespace brindle::bench {
namespace {

using Job = void (*)(const std::string&);

Contender on(const std::string& name, Job job, const std::string& path) {
    return {name, [job, path] { job(path); }};
}

}  // namespace

std::vector<Contender> opening_peers(const std::string& path) {
    return {
        on("libmad", libmad::open, path),   on("libid3tag", libid3tag::open, path),
        on("TagLib", taglib::open, path),   on("libmpg123", libmpg123::open, path),
        on("id3lib", id3lib::open, path),   on("libavformat", libavformat::open, path),
        on("mutagen", mutagen::open, path), on("MediaInfo", mediainfo::open, path),
    };
}

std::vector<Contender> walking_peers(const std::string& path) {
    return {
        on("libmad", libmad::walk, path),
        on("libmpg123", libmpg123::walk, path),
        on("libavformat", libavformat::walk, path),
        on("mp3val", mp3val::walk, path),
    };
}

std::vector<Contender> listening_peers(const std::string& path) {
    const auto program = [](const std::string& name, const std::vector<std::string>& arguments) {
        return Contender{name, [arguments] { run_program(arguments); }};
    };
    return {
        program("ffmpeg",
                {"ffmpeg", "-nostdin", "-i", path, "-af", "ebur128=peak=true", "-f", "null", "-"}),
        program("loudgain", {"loudgain", "-q", path}),
        program("sox", {"sox", path, "-n", "stats"}),
    };
}

std::vector<Contender> saving_peers(const MakeCopy& copy) {
    return {
        on("libid3tag", libid3tag::save, copy("libid3tag")),
        on("TagLib", taglib::save, copy("TagLib")),
        on("id3lib", id3lib::save, copy("id3lib")),
        on("mutagen", mutagen::save, copy("mutagen")),
    };
}

std::vector<Contender> growing_peers(const MakeCopy& copy) {
    std::vector<Contender> peers = {
        on("TagLib", taglib::grow, copy("TagLib")),
        on("id3lib", id3lib::grow, copy("id3lib")),
        on("mutagen", mutagen::grow, copy("mutagen")),
    };
    for (Contender& peer : peers) {
        peer.prepare = [copy, name = peer.name] { copy(name); };
    }
    return peers;
}

std::vector<std::pair<std::string, void (*)(const std::string&)>> threaded_peers() {
    return {{"libmad", libmad::open}, {"TagLib", taglib::open}, {"libmpg123", libmpg123::open}};
}

}  // namespace brindle::bench
