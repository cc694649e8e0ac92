#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>

#include <pugixml.hpp>

#include <brindle/text.h>

#include "bridges/bridge_error.h"
#include "bridges/custom_text.h"
#include "bridges/rdxl.h"
#include "output/printable_text.h"
#include "output/tag_reading.h"

namespace brindle::host {

namespace {

constexpr std::int64_t kNone = -1;

constexpr const char* kStart = "startPoint";
constexpr const char* kEnd = "endPoint";
constexpr const char* kSegueStart = "segueStartPoint";
constexpr const char* kSegueEnd = "segueEndPoint";
constexpr const char* kTalkStart = "talkStartPoint";
constexpr const char* kTalkEnd = "talkEndPoint";

// Nothing is turned into something else, so that places in the tree are places in the text.
constexpr unsigned kParsing =
    pugi::parse_pi | pugi::parse_comments | pugi::parse_cdata | pugi::parse_ws_pcdata;

std::optional<std::int64_t> whole_number(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool is_whole = error == std::errc() && end == text.data() + text.size();
    return is_whole ? std::optional(number) : std::nullopt;
}

// The text of a file, and the first cut in it.
class Rdxl {
public:
    explicit Rdxl(std::string text) : text_(std::move(text)) { parse(); }

    // Nothing where there is no such element.
    [[nodiscard]] std::optional<std::string> text_of(const char* element) const {
        const pugi::xml_node node = cut_.child(element);
        return node ? std::optional<std::string>(node.child_value()) : std::nullopt;
    }
    [[nodiscard]] bool has(const char* element, std::int64_t number) const {
        return whole_number(text_of(element).value_or("")) == number;
    }

    // Every other byte stays.
    void set(const char* element, std::int64_t number) {
        const pugi::xml_node value = cut_.child(element).first_child();
        const std::ptrdiff_t place =
            value.type() == pugi::node_pcdata ? value.offset_debug() : kNowhere;
        if (place == kNowhere) {
            throw BridgeError(std::string("rdxl has no ") + element + " that could be changed");
        }
        const auto begin = static_cast<std::size_t>(place);
        text_.replace(begin, text_.find('<', begin) - begin, std::to_string(number));
        parse();
    }

    [[nodiscard]] const std::string& text() const { return text_; }

private:
    static constexpr std::ptrdiff_t kNowhere = -1;

    void parse() {
        if (!document_.load_buffer(text_.data(), text_.size(), kParsing, pugi::encoding_utf8)) {
            throw BridgeError("rdxl is no XML that can be read");
        }
        cut_ = document_.child("cart").child("cutList").child("cut");
        if (!cut_) {
            throw BridgeError("rdxl has no cart with a cut");
        }
    }

    std::string text_;
    pugi::xml_document document_;
    pugi::xml_node cut_;
};

// --- a cart of a file that has none

// Control characters would end the line, or are not allowed.
std::string escaped(const String& text) {
    std::string made;
    for (const char c : to_utf8(text)) {
        switch (c) {
            case '&':
                made += "&amp;";
                break;
            case '<':
                made += "&lt;";
                break;
            case '>':
                made += "&gt;";
                break;
            case '"':
                made += "&quot;";
                break;
            case '\'':
                made += "&apos;";
                break;
            default:
                made += static_cast<unsigned char>(c) < ' ' || c == '\x7F' ? ' ' : c;
        }
    }
    return made;
}

std::string element(const std::string& indent, const char* name, const std::string& text) {
    return indent + "<" + name + ">" + text + "</" + name + ">\n";
}

std::string new_rdxl(const TagFacts& facts) {
    const std::array<std::pair<const char*, std::optional<String>>, 7> described{{
        {"title", facts.text(u"TIT2")},
        {"artist", facts.text(u"TPE1")},
        {"album", facts.text(u"TALB")},
        {"year", tag_year(facts)},
        {"agency", facts.custom(u"Agency")},
        {"publisher", facts.text(u"TPUB")},
        {"composer", facts.text(u"TCOM")},
    }};
    std::string text = "<cart>\n";
    for (const auto& [name, value] : described) {
        if (value && !value->empty()) {
            text += element("  ", name, escaped(*value));
        }
    }
    text += "  <cutList>\n    <cut>\n";
    for (const char* name : {kStart, kEnd, kSegueStart, kSegueEnd, kTalkStart, kTalkEnd}) {
        text += element("      ", name, std::to_string(kNone));
    }
    return text + "    </cut>\n  </cutList>\n</cart>\n";
}

// --- reading

std::optional<FieldPoint> point_in(const Rdxl& rdxl, const char* element,
                                   std::vector<std::string>& errors) {
    const std::optional<std::string> text = rdxl.text_of(element);
    if (!text) {
        return std::nullopt;
    }
    const std::string field = std::string(element) + " in rdxl";
    const auto told = [&](const char* what) {
        return field + " is " + in_quotes(from_utf8(*text)) + ", " + what;
    };
    const auto number = whole_number(*text);
    if (!number) {
        errors.push_back(told("no whole number"));
        return std::nullopt;
    }
    if (*number < kNone) {
        errors.push_back(told("before the beginning"));
        return std::nullopt;
    }
    return *number == kNone ? std::nullopt : std::optional(FieldPoint{field, *number});
}

void set_range(Rdxl& rdxl, const char* begin, std::int64_t begin_at, const char* end,
               std::int64_t end_at) {
    rdxl.set(begin, begin_at);
    rdxl.set(end, end_at);
}

}  // namespace

std::optional<std::string> reason_against_rdxl() {
    return std::nullopt;
}

SystemPoints read_rdxl(const TagFacts& facts) {
    SystemPoints points;
    if (const auto text = custom_text(facts, kRdxlName)) {
        const Rdxl rdxl(to_utf8(*text));
        points.cue_in = point_in(rdxl, kStart, points.errors);
        points.cue_out = point_in(rdxl, kEnd, points.errors);
        points.next_start = point_in(rdxl, kSegueStart, points.errors);
        points.talk_end = point_in(rdxl, kTalkEnd, points.errors);
    }
    return points;
}

std::vector<CustomField> rdxl_to_write(const WantedPoints& wanted, const TagFacts& facts) {
    const auto old = custom_text(facts, kRdxlName);
    const std::string before = old ? to_utf8(*old) : new_rdxl(facts);
    Rdxl rdxl(before);
    if (!rdxl.has(kStart, wanted.cue_in)) {
        rdxl.set(kStart, wanted.cue_in);
    }
    if (!rdxl.has(kEnd, wanted.cue_out)) {
        rdxl.set(kEnd, wanted.cue_out);
    }
    if (wanted.next_start && !rdxl.has(kSegueStart, *wanted.next_start)) {
        set_range(rdxl, kSegueStart, *wanted.next_start, kSegueEnd, wanted.cue_out);
    }
    if (wanted.talk_end && !rdxl.has(kTalkEnd, *wanted.talk_end)) {
        set_range(rdxl, kTalkStart, 0, kTalkEnd, *wanted.talk_end);
    }
    const bool is_named_so = facts.custom(kRdxlName) && texts_named(facts, kRdxlName).size() == 1;
    if (is_named_so && rdxl.text() == before) {
        return {};
    }
    return {{String(kRdxlName), from_utf8(rdxl.text())}};
}

}  // namespace brindle::host
