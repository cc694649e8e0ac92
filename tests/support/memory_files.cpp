#include "support/memory_files.h"

#include <algorithm>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

#include <brindle/text.h>

namespace brindle::test {
namespace {

// "*" is any run of characters, "?" any one.
bool matches(std::u16string_view pattern, std::u16string_view text) {
    if (pattern.empty()) {
        return text.empty();
    }
    if (pattern.front() == u'*') {
        return matches(pattern.substr(1), text) ||
               (!text.empty() && matches(pattern, text.substr(1)));
    }
    return !text.empty() && (pattern.front() == u'?' || pattern.front() == text.front()) &&
           matches(pattern.substr(1), text.substr(1));
}

std::u16string_view folder_of(std::u16string_view name) {
    const std::size_t slash = name.rfind(u'/');
    return slash == std::u16string_view::npos ? std::u16string_view() : name.substr(0, slash + 1);
}

}  // namespace

std::string_view name_of(FileCall call) {
    constexpr std::array<std::string_view, kFileCalls> kNames{"open",
                                                              "length",
                                                              "state",
                                                              "read",
                                                              "write",
                                                              "copy",
                                                              "set length",
                                                              "flush",
                                                              "flush data",
                                                              "close",
                                                              "exists",
                                                              "resolve",
                                                              "require writable",
                                                              "create",
                                                              "copy attributes",
                                                              "clone",
                                                              "remove",
                                                              "replace",
                                                              "flush folder"};
    return kNames.at(static_cast<std::size_t>(call));
}

void PrintTo(const LoggedCall& logged, std::ostream* stream) {
    *stream << name_of(logged.call) << ' ' << to_utf8(logged.name);
}

class MemoryFile : public BinaryFile {
public:
    MemoryFile(MemoryFiles& files, String name, MemoryFiles::Content content, OpenMode mode)
        : files_(files), name_(std::move(name)), content_(std::move(content)), mode_(mode) {
        ++files_.handles_[content_.get()];
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() override { let_go(); }

    std::int64_t length() override {
        files_.count_or_raise(FileCall::Length, name_);
        return static_cast<std::int64_t>(open_content().size());
    }

    FileState state() override {
        files_.count_or_raise(FileCall::State, name_);
        return MemoryFiles::state_of(open_node());
    }

    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override {
        const MemoryFiles::Outcome outcome = files_.count(FileCall::Read, name_);
        if (outcome == MemoryFiles::Outcome::Fails) {
            throw Error(files_.fault().error);
        }
        std::span<const std::uint8_t> found = from(offset, into.size());
        if (outcome == MemoryFiles::Outcome::Shortened) {
            found = found.first(found.size() / 2);
        }
        std::copy(found.begin(), found.end(), into.begin());
        files_.bytes_read_ += found.size();
        if (const auto action = files_.after_read_) {
            action();  // which may take itself away
        }
        return found.size();
    }

    void write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        if (files_.count(FileCall::Write, name_) == MemoryFiles::Outcome::Fails) {
            put(offset, bytes.first(std::min(bytes.size(), files_.fault().bytes_before)));
            throw Error(files_.fault().error);
        }
        put(offset, bytes);
    }

    // From a file in memory without counting a call.
    static Bytes bytes_of(BinaryFile& source, std::int64_t offset, std::size_t count) {
        if (auto* const other = dynamic_cast<MemoryFile*>(&source)) {
            const std::span<const std::uint8_t> found = other->from(offset, count);
            return {found.begin(), found.end()};
        }
        Bytes bytes = zeros(count);
        bytes.resize(source.read_at(offset, bytes));
        return bytes;
    }
    std::size_t copy_from(BinaryFile& source, std::int64_t source_offset, std::int64_t offset,
                          std::size_t count) override {
        const MemoryFiles::Outcome outcome = files_.count(FileCall::Copy, name_);
        // A copy of its own: the two may be one file.
        Bytes moved = bytes_of(source, source_offset, count);
        if (outcome == MemoryFiles::Outcome::Fails) {
            put(offset, moved.first(files_.fault().bytes_before));
            throw Error(files_.fault().error);
        }
        if (outcome == MemoryFiles::Outcome::Shortened) {
            moved = moved.first((moved.size() + 1) / 2);
        }
        put(offset, moved);
        files_.bytes_read_ += moved.size();
        return moved.size();
    }

    void set_length(std::int64_t length) override {
        files_.count_or_raise(FileCall::SetLength, name_);
        writable_content().resize(static_cast<std::size_t>(length));
        files_.record([&] { return LengthSet{name_, static_cast<std::size_t>(length)}; });
    }

    void flush() override {
        files_.count_or_raise(FileCall::Flush, name_);
        files_.record([&] { return Flushed{name_}; });
    }
    void flush_data() override {
        files_.count_or_raise(FileCall::FlushData, name_);
        files_.record([&] { return Flushed{name_}; });
    }

    void close() override {
        let_go();
        files_.count_or_raise(FileCall::Close, name_);
    }

private:
    friend class MemoryFiles;

    void let_go() noexcept {
        if (content_ == nullptr) {
            return;
        }
        const auto handles = files_.handles_.find(content_.get());
        if (--handles->second == 0) {
            files_.handles_.erase(handles);
        }
        content_.reset();
    }

    MemoryFiles::Node& open_node() {
        if (content_ == nullptr) {
            throw std::logic_error("a file was used after close()");
        }
        return *content_;
    }
    Bytes& open_content() { return open_node().bytes; }

    Bytes& writable_content() {
        if (mode_ == OpenMode::Read) {
            throw std::logic_error("a write to a file opened for reading");
        }
        ++open_node().modified;
        return open_content();
    }

    std::span<const std::uint8_t> from(std::int64_t offset, std::size_t count) {
        const Bytes& all = open_content();
        const std::size_t begin = std::min(static_cast<std::size_t>(offset), all.size());
        return std::span<const std::uint8_t>(all).subspan(begin,
                                                          std::min(count, all.size() - begin));
    }

    void put(std::int64_t offset, std::span<const std::uint8_t> bytes) {
        Bytes& all = writable_content();
        const auto begin = static_cast<std::size_t>(offset);
        all.resize(std::max(all.size(), begin + bytes.size()));
        std::copy(bytes.begin(), bytes.end(), all.begin() + static_cast<std::ptrdiff_t>(begin));
        files_.bytes_written_ += bytes.size();
        files_.record([&] { return Written{name_, begin, {bytes.begin(), bytes.end()}}; });
    }

    MemoryFiles& files_;
    String name_;
    MemoryFiles::Content content_;
    OpenMode mode_;
};

void MemoryFiles::put(const String& name, const Bytes& content) {
    files_[name] = std::make_shared<Node>(Node{content, ++put_, 0});
}

void MemoryFiles::link(const String& name, const String& to) {
    links_[name] = to;
}

void MemoryFiles::make_folder(const String& name) {
    folders_.insert(name);
}

std::vector<String> MemoryFiles::names() const {
    std::vector<String> names;
    for (const auto& [name, content] : files_) {
        names.push_back(name);
    }
    return names;
}

std::size_t MemoryFiles::open_files() const {
    std::size_t open = 0;
    for (const auto& [content, handles] : handles_) {
        open += handles;
    }
    return open;
}

std::uint64_t MemoryFiles::calls() const {
    std::uint64_t all = 0;
    for (const std::uint64_t calls : calls_) {
        all += calls;
    }
    return all;
}

void MemoryFiles::reset_counts() {
    calls_ = {};
    bytes_read_ = 0;
    bytes_written_ = 0;
    log_.clear();
}

void MemoryFiles::fail(Fault fault) {
    calls_until_fault_ = fault.nth;
    fault_ = std::move(fault);
    has_failed_ = false;
}

MemoryFiles::Outcome MemoryFiles::count(FileCall call, const String& name) {
    ++calls_[static_cast<std::size_t>(call)];
    log_.push_back({call, name});
    if (!fault_ || (fault_->call && *fault_->call != call)) {
        return Outcome::Works;
    }
    if (calls_until_fault_ > 0) {
        --calls_until_fault_;
        if (calls_until_fault_ > 0) {
            return Outcome::Works;
        }
    } else if (!fault_->from_then_on) {
        return Outcome::Works;
    }
    has_failed_ = true;
    return fault_->kind == Fault::Kind::Raise ? Outcome::Fails : Outcome::Shortened;
}

void MemoryFiles::count_or_raise(FileCall call, const String& name) {
    if (count(call, name) == Outcome::Fails) {
        throw Error(fault_->error);
    }
}

String MemoryFiles::followed(const String& name) const {
    String target = name;
    for (auto link = links_.find(target); link != links_.end(); link = links_.find(target)) {
        target = link->second;
    }
    return target;
}

bool MemoryFiles::is_folder(const String& name) const {
    return folders_.contains(name) ||
           std::any_of(files_.begin(), files_.end(),
                       [&](const auto& file) { return file.first.starts_with(name + u"/"); });
}

std::unique_ptr<BinaryFile> MemoryFiles::handle(const String& name, OpenMode mode) {
    return std::make_unique<MemoryFile>(*this, name, files_.at(name), mode);
}

std::unique_ptr<BinaryFile> MemoryFiles::open(const String& name, OpenMode mode) {
    count_or_raise(FileCall::Open, name);
    const String target = followed(name);
    if (is_folder(target) ||
        (mode != OpenMode::Read &&
         (read_only_.contains(target) || (folders_read_only_ && !files_.contains(target))))) {
        throw Error(RuntimeError::PathFileAccess);
    }
    if (!files_.contains(target)) {
        if (mode != OpenMode::ReadWriteOrCreate || target.empty()) {
            throw Error(RuntimeError::FileNotFound);
        }
        put(target, {});
        record([&] { return Created{target}; });
    }
    return handle(target, mode);
}

bool MemoryFiles::exists(const String& name) {
    if (count(FileCall::Exists, name) == Outcome::Fails || name.empty() || name.back() == u'/') {
        return false;
    }
    const String target = followed(name);
    if (files_.contains(target) || is_folder(target)) {
        return true;
    }
    return std::any_of(files_.begin(), files_.end(), [&](const auto& file) {
        return folder_of(file.first) == folder_of(name) && matches(name, file.first);
    });
}

String MemoryFiles::resolve_links(const String& name) {
    count_or_raise(FileCall::Resolve, name);
    return followed(name);
}

FileState MemoryFiles::state_of(const Node& node) {
    return {.volume = 1,
            .number = node.number,
            .length = static_cast<std::int64_t>(node.bytes.size()),
            .modified = node.modified};
}

FileState MemoryFiles::state(const String& name) {
    count_or_raise(FileCall::State, name);
    const auto file = files_.find(followed(name));
    if (file == files_.end()) {
        throw Error(RuntimeError::FileNotFound);
    }
    return state_of(*file->second);
}

void MemoryFiles::require_writable(const String& name) {
    count_or_raise(FileCall::RequireWritable, name);
    const String target = followed(name);
    if (!files_.contains(target) && !is_folder(target)) {
        throw Error(RuntimeError::FileNotFound);
    }
    if (read_only_.contains(target)) {
        throw Error(RuntimeError::PathFileAccess);
    }
}

void MemoryFiles::copy_attributes(const String& from, BinaryFile& /*to*/) {
    count_or_raise(FileCall::CopyAttributes, from);
}

bool MemoryFiles::clone(BinaryFile& from, BinaryFile& to) {
    auto& source = dynamic_cast<MemoryFile&>(from);
    auto& target = dynamic_cast<MemoryFile&>(to);
    if (count(FileCall::Clone, target.name_) == Outcome::Fails || !clones_) {
        return false;
    }
    target.writable_content() = source.open_content();
    record([&] { return Written{target.name_, 0, source.open_content()}; });
    return true;
}

std::unique_ptr<BinaryFile> MemoryFiles::create_beside(const String& neighbour, String& name) {
    count_or_raise(FileCall::Create, neighbour);
    if (folders_read_only_) {
        throw Error(RuntimeError::PathFileAccess);
    }
    ++created_;
    String unique =
        String(folder_of(neighbour)) + u"new" + from_utf8(std::to_string(created_)) + u".tmp";
    put(unique, {});
    try {
        auto created = handle(unique, OpenMode::ReadWrite);
        record([&] { return Created{unique}; });
        name = std::move(unique);
        return created;
    } catch (...) {
        // A caller that was not told of a file can't remove it.
        files_.erase(unique);
        throw;
    }
}

void MemoryFiles::refuse_if_open(const String& name) const {
    const auto file = files_.find(name);
    if (file != files_.end() && handles_.contains(file->second.get())) {
        throw Error(RuntimeError::PermissionDenied);
    }
}

void MemoryFiles::remove(const String& name) {
    count_or_raise(FileCall::Remove, name);
    if (!files_.contains(name)) {
        throw Error(RuntimeError::FileNotFound);
    }
    if (folders_read_only_) {
        throw Error(RuntimeError::PermissionDenied);
    }
    refuse_if_open(name);
    files_.erase(name);
    record([&] { return Removed{name}; });
}

void MemoryFiles::replace(const String& from, const String& to) {
    count_or_raise(FileCall::Replace, to);
    if (!files_.contains(from)) {
        throw Error(RuntimeError::FileNotFound);
    }
    if (folders_read_only_) {
        throw Error(RuntimeError::PermissionDenied);
    }
    refuse_if_open(from);
    refuse_if_open(to);
    if (is_folder(to)) {
        throw Error(RuntimeError::PathFileAccess);
    }
    links_.erase(to);  // a rename replaces the link itself
    files_[to] = files_[from];
    files_.erase(from);
    record([&] { return Renamed{from, to}; });
}

void MemoryFiles::flush_folder_of(const String& name) {
    count_or_raise(FileCall::FlushFolder, name);
    record([] { return FolderFlushed{}; });
}

}  // namespace brindle::test
