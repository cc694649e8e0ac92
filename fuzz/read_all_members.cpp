#include "fuzz/read_all_members.h"

#include <type_traits>
#include <variant>

namespace brindle::fuzz {
namespace {

class Answers {
public:
    template <typename Value>
    Answers& operator<<(const Value& value) {
        if constexpr (std::is_same_v<Value, String>) {
            text_ += value;
        } else if constexpr (std::is_same_v<Value, Variant>) {
            std::visit([this](const auto& held) { *this << held; }, value);
        } else if constexpr (!std::is_same_v<Value, Empty>) {
            const std::string digits = std::to_string(value);
            text_.append(digits.begin(), digits.end());
        }
        text_.push_back(u'\n');
        return *this;
    }
    [[nodiscard]] const String& text() const { return text_; }

private:
    String text_;
};

}  // namespace

std::u16string read_all_members(const cMPEGHeader& header) {
    Answers answers;
    answers << header.MonoStereo() << header.BitRate() << header.VBR() << header.Layer()
            << header.Duration() << header.Frequency() << header.RepairRequired()
            << header.MpegVersion();
    answers << header.TagType() << header.FrameCount() << header.ID3TagSizeIncludingHeader();
    answers << header.Title() << header.Artist() << header.Album() << header.Year()
            << header.Track() << header.Genre() << header.Comments() << header.Composer()
            << header.Publisher() << header.CopyRight() << header.URL() << header.ArtistUrl();
    answers << header.Speed() << header.Volume() << header.Opener() << header.CueInmSStart()
            << header.Sectone() << header.Intro() << header.OutromsStart() << header.CategoryLevel()
            << header.Category() << header.Endstyle() << header.NoFade() << header.Agency()
            << header.AccountExec() << header.Copy();
    answers << header.Titlev1Tag() << header.artistv1Tag() << header.Yearv1Tag()
            << header.Commentv1();

    const auto frames = header.v2Frames();
    for (std::int32_t place = 1; frames && place <= frames->Count(); ++place) {
        const String id = std::get<String>(frames->Item(place));
        answers << id;
        for (std::int32_t number = 1; number <= header.TagsInFrame(id); ++number) {
            answers << header.v2Tag(id, number);
        }
    }
    return answers.text();
}

}  // namespace brindle::fuzz
