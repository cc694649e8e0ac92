#include <array>
#include <string_view>

#include <brindle/genres.h>

namespace brindle {
namespace {

// Hosts compare these names with their own lists, so spelling and spacing are part of the data.
// Number 123 never had a name here.
// clang-format off
constexpr std::array<std::u16string_view, 148> kGenreNames{
    /*   0 */ u"Blues", u"Classic Rock", u"Country", u"Dance", u"Disco", u"Funk", u"Grunge",
              u"Hip Hop", u"Jazz", u"Metal",
    /*  10 */ u"New Age", u"Oldies", u"Other", u"Pop", u"R&B", u"Rap", u"Reggae", u"Rock",
              u"Techno", u"Industrial",
    /*  20 */ u"Alternative", u"Ska", u"Death Metal", u"Pranks", u"Soundtrack", u"Euro - Techno",
              u"Ambient", u"Trip Hop", u"Vocal", u"Jazz - Funk",
    /*  30 */ u"Fusion", u"Trance", u"Classical", u"Instrumental", u"Acid", u"House", u"Game",
              u"Sound Clip", u"Gospel", u"Noise",
    /*  40 */ u"Alt.Rock", u"Bass", u"Soul", u"Punk", u"Space", u"Meditative",
              u"Instrumental Pop", u"Instrumental Rock", u"Ethnic", u"Gothic",
    /*  50 */ u"Darkwave", u"Techno - Industrial", u"Electronic", u"Pop / Folk", u"Eurodance",
              u"Dream", u"Southern Rock", u"Comedy", u"Cult", u"Gangsta Rap",
    /*  60 */ u"Top 40", u"Christian Rap", u"Pop / Funk", u"Jungle", u"Native American",
              u"Cabaret", u"New Wave", u"Psychedelic", u"Rave", u"Showtunes",
    /*  70 */ u"Trailer", u"Lo - fi", u"Tribal", u"Acid Punk", u"Acid Jazz", u"Polka", u"Retro",
              u"Musical", u"Rock 'n'Roll", u"Hard Rock",
    /*  80 */ u"Folk", u"Folk / Rock", u"National Folk", u"Swing", u"Fast Fusion", u"Bebob",
              u"Latin", u"Revival", u"Celtic", u"Blue Grass",
    /*  90 */ u"Avant Garde", u"Gothic Rock", u"Progressive Rock", u"Psychedelic Rock",
              u"Symphonic Rock", u"Slow Rock", u"Big Band", u"Chorus", u"Easy Listening",
              u"Acoustic",
    /* 100 */ u"Humour", u"Speech", u"Chanson", u"Opera", u"Chamber Music", u"Sonata",
              u"Symphony", u"Booty Bass", u"Primus", u"Pr0n Groove",
    /* 110 */ u"Satire", u"Slow Jam", u"Club", u"Tango", u"Samba", u"Folklore", u"Ballad",
              u"Power Ballad", u"Rhythmic Soul", u"Freestyle",
    /* 120 */ u"Duet", u"Punk Rock", u"Drum Solo", u"", u"Euro - House", u"Dance Hall", u"Goa",
              u"Drum & Bass", u"Club - House", u"Hardcore",
    /* 130 */ u"Terror", u"Indie", u"Brit Pop", u"Negerpunk", u"Polsk Punk", u"Beat",
              u"Christian Gangsta Rap", u"Heavy Metal", u"Black Metal", u"Crossover",
    /* 140 */ u"Contemporary Christian", u"Christian Rock", u"Merengue", u"Salsa",
              u"Thrash Metal", u"Anime", u"JPop", u"Synth Pop",
};
// clang-format on

}  // namespace

String GenreName(std::uint8_t Genre) {
    return Genre < kGenreNames.size() ? String(kGenreNames[Genre]) : String();
}

}  // namespace brindle
