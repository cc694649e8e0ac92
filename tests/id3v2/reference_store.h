// The frame store and its operations as plain steps over keyed collections: slow, and with no
// thought of how the real one keeps its values.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/values.h>

#include "util/numeric_text.h"

namespace brindle::test {

// What a collection raises. Every step below runs with errors suppressed.
struct CollectionError {};

template <typename Item>
class ReferenceCollection {
public:
    void remove(const String& key) { entries_.erase(entries_.begin() + position(key)); }
    void add(Item item, const String& key) {
        if (exists(key)) {
            throw CollectionError();
        }
        entries_.emplace_back(key, std::move(item));
    }
    [[nodiscard]] Item item(const String& key) const {
        return entries_[static_cast<std::size_t>(position(key))].second;
    }
    [[nodiscard]] Item item_at(std::int32_t place) const {
        if (place < 1 || place > count()) {
            throw CollectionError();
        }
        return entries_[static_cast<std::size_t>(place) - 1].second;
    }
    [[nodiscard]] bool exists(const String& key) const {
        for (const auto& entry : entries_) {
            if (entry.first == key) {
                return true;
            }
        }
        return false;
    }
    [[nodiscard]] std::int32_t count() const { return static_cast<std::int32_t>(entries_.size()); }

private:
    [[nodiscard]] std::ptrdiff_t position(const String& key) const {
        for (std::size_t place = 0; place < entries_.size(); ++place) {
            if (entries_[place].first == key) {
                return static_cast<std::ptrdiff_t>(place);
            }
        }
        throw CollectionError();
    }

    std::vector<std::pair<String, Item>> entries_;
};

template <typename Step>
bool suppressed(Step step) {
    try {
        step();
        return true;
    } catch (const CollectionError&) {
        return false;
    }
}

struct ReferenceStore {
    ReferenceCollection<String> FrameList;
    ReferenceCollection<std::int32_t> TagCounts;
    ReferenceCollection<String> TagValues;
    ReferenceCollection<String> CustomFields;
    std::map<String, String> cached;  // by frame id
    int genre = 0;
    bool has_file = false;
    int messages = 0;

    static String key(const String& frame, std::int32_t index) {
        return frame + u":" + to_text(index);
    }

    void AddTag(const String& sFrame, const String& sTag, std::int32_t IndexToAddInto = 0) {
        String listed;
        suppressed([&] { listed = FrameList.item(sFrame); });
        if (listed.empty()) {
            suppressed([&] { FrameList.add(sFrame, sFrame); });
            suppressed([&] { TagCounts.add(1, sFrame); });
            suppressed([&] { TagValues.add(sTag, key(sFrame, 1)); });
        } else if (IndexToAddInto == 0) {
            std::int32_t n = 0;
            suppressed([&] { n = TagCounts.item(sFrame) + 1; });
            suppressed([&] { TagCounts.remove(sFrame); });
            suppressed([&] { TagCounts.add(n, sFrame); });
            suppressed([&] { TagValues.add(sTag, key(sFrame, n)); });
        } else {
            String custom;
            suppressed([&] { custom = FrameList.item(u"TXXX"); });
            if (custom.empty()) {
                suppressed([&] { FrameList.add(sFrame, sFrame); });
                suppressed([&] { TagCounts.add(1, sFrame); });
            }
            suppressed([&] { TagValues.add(sTag, key(sFrame, IndexToAddInto)); });
        }
    }

    [[nodiscard]] std::int32_t find_custom(const String& description) const {
        for (std::int32_t n = 1;; ++n) {
            String text;
            suppressed([&] { text = TagValues.item(key(u"TXXX", n)); });
            const std::size_t nul = text.find(u'\0');
            if (nul != String::npos && text.substr(0, nul) == description) {
                return n;
            }
            if (text.empty()) {
                return 0;
            }
        }
    }

    void RemoveFrame(const String& Frame, const String& CustomFrameTitle,
                     std::int32_t& IndexRemoved) {
        if (Frame == u"TXXX") {
            if (!CustomFrameTitle.empty()) {
                IndexRemoved = find_custom(CustomFrameTitle);
                if (IndexRemoved == 0) {
                    return;
                }
            } else {
                ++messages;
                IndexRemoved = 0;
            }
        }
        if (!FrameList.exists(Frame)) {
            return;
        }
        if (IndexRemoved != 0) {
            suppressed([&] { TagValues.remove(key(Frame, IndexRemoved)); });
            int counted = 0;
            for (std::int32_t i = 1;; ++i) {
                String text;
                suppressed([&] { text = TagValues.item(key(Frame, i)); });
                counted += text.empty() ? 0 : 1;
                if (i == TagValues.count() || TagValues.count() == 0) {
                    break;
                }
            }
            if (counted == 0) {
                suppressed([&] { FrameList.remove(Frame); });
                suppressed([&] { TagCounts.remove(Frame); });
            }
        } else {
            for (std::int32_t i = 1; suppressed([&] { TagValues.remove(key(Frame, i)); }); ++i) {
            }
            suppressed([&] { FrameList.remove(Frame); });
            suppressed([&] { TagCounts.remove(Frame); });
        }
    }

    // The value as held is stored under the frame; the value as given is what the property reads.
    void set_standard(const String& frame, const String& value, const String& held) {
        cached[frame] = value;
        std::int32_t index = 0;
        RemoveFrame(frame, u"", index);
        AddTag(frame, held, index);
    }

    void AddCustomField(const String& name, const String& value) {
        if (!has_file) {
            return;
        }
        String listed;
        suppressed([&] { listed = FrameList.item(u"TXXX"); });
        if (listed.empty()) {
            const String stamp = String(u"TAGGED BY") + u'\0' + u"CorvaneTagger - Revised Feb 2011";
            suppressed([&] { FrameList.add(u"TXXX", u"TXXX"); });
            suppressed([&] { TagCounts.add(1, u"TXXX"); });
            suppressed([&] { TagValues.add(stamp, u"TXXX:1"); });
        }
        std::int32_t index = 0;
        RemoveFrame(u"TXXX", name, index);
        AddTag(u"TXXX", name + u'\0' + value, index);
        suppressed([&] { CustomFields.remove(name); });
        suppressed([&] { CustomFields.add(value, name); });
    }

    [[nodiscard]] String GetCustomField(const String& name) const {
        String text;
        suppressed([&] { text = CustomFields.item(name); });
        std::erase(text, u'\0');
        return text;
    }
};

}  // namespace brindle::test
