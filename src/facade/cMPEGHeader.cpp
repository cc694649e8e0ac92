// The facade's own state, the load sequence, the events and the stream properties. The properties
// of tags and scheduling are in metadata.cpp.
#include <utility>

#include <brindle/cMPEGHeader.h>

#include "facade/elapsed_time.h"
#include "facade/handlers.h"
#include "facade/host_link.h"
#include "facade/model_access.h"
#include "id3v2/cMP3ID3v2.h"
#include "id3v2/error_sources.h"
#include "util/environment.h"
#include "util/skip_errors.h"

namespace brindle {

namespace {

// A handler of DurationNeeded that reads Duration would call itself until the stack is used up.
constexpr int kMaxDurationHandlers = 16;

// Counts a call for as long as it runs.
class RunningCall {
public:
    explicit RunningCall(int& count) noexcept : count_(count) { ++count_; }
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;
    ~RunningCall() { --count_; }

private:
    int& count_;
};

// The last three characters alone decide, no dot is asked for.
bool is_opened(const String& name) {
    constexpr std::size_t kSuffix = 3;
    if (name.size() < kSuffix) {
        return false;
    }
    String suffix = name.substr(name.size() - kSuffix);
    for (char16_t& unit : suffix) {
        if (unit >= u'A' && unit <= u'Z') {
            unit = static_cast<char16_t>(unit - u'A' + u'a');
        }
    }
    return suffix == u"mp3" || suffix == u"mp2";
}

// Made while there is memory to make it.
const Error kOtherName(static_cast<std::int32_t>(RuntimeError::InvalidCall),
                       u"Only names that end in mp3 or mp2 are opened");

}  // namespace

cMPEGHeader::cMPEGHeader() : cMPEGHeader(system_environment()) {}

cMPEGHeader::cMPEGHeader(Environment& environment) : environment_(&environment) {}

cMPEGHeader::cMPEGHeader(cMPEGHeader&& other) noexcept : environment_(other.environment_) {
    take(other);
}

cMPEGHeader& cMPEGHeader::operator=(cMPEGHeader&& other) noexcept {
    if (this != &other) {
        take(other);
    }
    return *this;
}

void cMPEGHeader::take(cMPEGHeader& other) noexcept {
    Reading = std::exchange(other.Reading, nullptr);
    Scanning = std::exchange(other.Scanning, nullptr);
    DurationNeeded = std::exchange(other.DurationNeeded, nullptr);
    OnYield = std::exchange(other.OnYield, nullptr);
    OnMessageBox = std::exchange(other.OnMessageBox, nullptr);
    environment_ = other.environment_;
    model_ = std::move(other.model_);
    host_ = std::move(other.host_);
    if (host_) {
        host_->speak_for(*this);
    }
    refusal_ = std::exchange(other.refusal_, std::nullopt);
    in_use_ = std::exchange(other.in_use_, false);
    separate_ = std::exchange(other.separate_, false);
    time_style_ = std::exchange(other.time_style_, NoFractions);
}

cMPEGHeader::~cMPEGHeader() = default;

bool cMPEGHeader::g_InUse() const {
    return in_use_;
}
void cMPEGHeader::g_InUse(bool value) {
    in_use_ = value;
}

eTimeDisplayStyle cMPEGHeader::TimeStyle() const {
    return time_style_;
}
void cMPEGHeader::TimeStyle(eTimeDisplayStyle value) {
    time_style_ = value;
}

bool cMPEGHeader::Writev1v2Separate() const {
    return separate_;
}
void cMPEGHeader::Writev1v2Separate(bool value) {
    separate_ = value;
}

void cMPEGHeader::FileName(const String& NewFileName) {
    if (in_loop_) {
        return;
    }
    const ReentrancyGuard mark(*this);
    if (!NewFileName.empty()) {
        raise_event(Reading, NewFileName);
    }
    model_.reset();
    skip_errors([&] {
        if (!host_) {
            host_ = std::make_unique<HostLink>(*this);
        }
        model_ = std::make_unique<cMP3ID3v2>(*environment_);
        model_->Owner = host_.get();
    });
    in_use_ = true;
    refusal_.reset();
    if (!model_) {
        refusal_ = kOutOfMemory;
    } else if (is_opened(NewFileName) || NewFileName.empty()) {
        try_modify(model_, [&](cMP3ID3v2& model) { model.FileName(NewFileName); });
    } else {
        refusal_ = kOtherName;
    }
}

String cMPEGHeader::FileName() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.FileName(); });
}

String cMPEGHeader::MonoStereo() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.MonoStereo(); });
}

std::int32_t cMPEGHeader::BitRate() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.BitRate(); });
}

bool cMPEGHeader::VBR() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.IsVBR(); });
}

String cMPEGHeader::Layer() const {
    if (!model_) {
        throw Error(RuntimeError::ObjectNotSet);
    }
    return model_->MpegLayer();
}

std::int32_t cMPEGHeader::Frequency() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.Frequency(); });
}

String cMPEGHeader::MpegVersion() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.MpegVersion(); });
}

std::int32_t cMPEGHeader::Duration() const {
    std::int32_t duration =
        read_or_default(model_, [](const cMP3ID3v2& model) { return model.Duration(); });
    // The analyser says -1 for a file without a stream.
    duration = duration == -1 ? 0 : duration;
    if (duration == 0 && DurationNeeded && !FileName().empty() &&
        running_duration_handlers_ < kMaxDurationHandlers) {
        const RunningCall running(running_duration_handlers_);
        raise_event(DurationNeeded, duration);
    }
    return duration;
}

std::optional<Error> cMPEGHeader::OpeningError() const {
    if (refusal_) {
        return refusal_;
    }
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.opening_error(); });
}

bool cMPEGHeader::RepairRequired() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) {
        const std::int32_t expected = model.HasID3v2Tag() ? model.Id3v2TagSize() : 0;
        return model.has_file() && model.analyser().HeaderStartPos() != expected;
    });
}

eTagType cMPEGHeader::TagType() const {
    // A file without tags is -1, not NoTags: hosts tell "looked at" from "none asked for" by it.
    constexpr auto kUntagged = static_cast<eTagType>(-1);
    if (!model_) {
        return kUntagged;
    }
    if (model_->HasID3v2Tag()) {
        return model_->HasID3v1Tag() ? v1andv2TagsBothPresent : v2TagOnly;
    }
    return model_->HasID3v1Tag() ? v1TagOnly : kUntagged;
}

std::int32_t cMPEGHeader::ID3TagSizeIncludingHeader() const {
    return read_or_default(model_, [](const cMP3ID3v2& model) { return model.Id3v2TagSize(); });
}

String cMPEGHeader::ElapsedTimeFromMs(std::int32_t ms, eTimeDisplayStyle TimeStyle,
                                      bool /*UsePadding*/) const {
    String text;
    skip_errors([&] { text = elapsed_time(ms, TimeStyle); });
    return text;
}

void cMPEGHeader::RaiseScanningEvent(const String& FileName, std::int32_t FilePos,
                                     std::int32_t FileLength, bool& Cancel) const {
    call_handler(Scanning, FileName, FilePos, FileLength, Cancel);
}

void cMPEGHeader::Test() {}

void cMPEGHeader::SaveAllInfo() {
    SaveAllInfo(SaveOptions());
}

void cMPEGHeader::SaveAllInfo(const SaveOptions& options) {
    const ReentrancyGuard mark(*this);
    if (cMP3ID3v2& model = model_to_change(mark); !model.FileName().empty()) {
        model.Update(options);
    }
}

void cMPEGHeader::RemoveTags(eTagType eTagTypes, const SaveOptions& options) {
    const String name = FileName();
    {
        const ReentrancyGuard mark(*this);
        model_to_change(mark).RemoveTags(eTagTypes, options);
    }
    FileName(name);
}

// A model that is inside a loop of its own must not be changed.
cMP3ID3v2& cMPEGHeader::model_to_change(const ReentrancyGuard& mark) {
    if (!model_) {
        throw Error(kFileNameNotSet);
    }
    if (mark.was_in_loop()) {
        throw Error(RuntimeError::InvalidCall);
    }
    return *model_;
}

bool cMPEGHeader::StripTags(eTagType eTagTypes) {
    if (in_loop_) {
        return false;
    }
    const String name = FileName();
    bool stripped = false;
    {
        const ReentrancyGuard mark(*this);
        try_modify(model_, [&](cMP3ID3v2& model) { stripped = model.StripTags(eTagTypes); });
    }
    FileName(name);
    return stripped;
}

}  // namespace brindle
