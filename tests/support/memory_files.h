// A file system in memory that counts every call and fails on demand.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/error.h>
#include <brindle/values.h>

#include "support/bytes.h"
#include "support/file_operation.h"
#include "util/binary_file.h"

namespace brindle::test {

enum class FileCall {
    Open,
    Length,
    State,
    Read,
    Write,
    Copy,
    SetLength,
    Flush,
    FlushData,
    Close,
    Exists,
    Resolve,
    RequireWritable,
    Create,
    CopyAttributes,
    Clone,
    Remove,
    Replace,
    FlushFolder,
};
inline constexpr std::size_t kFileCalls = 19;

[[nodiscard]] std::string_view name_of(FileCall call);

// Which call fails, and how.
struct Fault {
    enum class Kind {
        Raise,    // the call raises `error`; exists() answers false
        Shorten,  // a read or a copy hands over half of what it could; other calls do their work
    };

    // Counted from 1 on, over the calls of `call`, or over all calls where that is empty, from the
    // moment the plan is set.
    std::uint64_t nth = 1;
    std::optional<FileCall> call = std::nullopt;
    bool from_then_on = false;
    Error error = Error(RuntimeError::DeviceInputOutput);
    // Number of bytes that a failing write or copy writes before it raises, as on a full disk.
    std::size_t bytes_before = 0;
    Kind kind = Kind::Raise;
};

struct LoggedCall {
    FileCall call;
    String name;  // of the file; of the new name in Replace

    friend bool operator==(const LoggedCall&, const LoggedCall&) = default;
};

// Prints as "write song.mp3".
void PrintTo(const LoggedCall& logged, std::ostream* stream);

class MemoryFiles : public FileSystem {
public:
    MemoryFiles() { log_.reserve(kUsualCalls); }

    // --- what the test puts there and finds there ---

    void put(const String& name, const Bytes& content);
    // A symbolic link; chains of them are followed.
    void link(const String& name, const String& to);
    void make_folder(const String& name);
    // Opening it for writing is refused (75).
    void make_read_only(const String& name) { read_only_.insert(name); }
    // Nothing can be created, removed or renamed in a read-only folder (75 and 70).
    void make_folders_read_only() { folders_read_only_ = true; }
    // Called after each read of any file: time may go by, or another program may come.
    void after_each_read(std::function<void()> action) { after_read_ = std::move(action); }
    // As on a file system that lets files share their content.
    void let_files_share() { clones_ = true; }

    [[nodiscard]] bool has(const String& name) const { return files_.contains(name); }
    [[nodiscard]] const Bytes& content(const String& name) const { return files_.at(name)->bytes; }
    // All files, without links and folders.
    [[nodiscard]] std::vector<String> names() const;
    // Handles not closed yet, of any file.
    [[nodiscard]] std::size_t open_files() const;

    // --- what it counted since the last reset_counts() ---

    [[nodiscard]] std::uint64_t calls(FileCall call) const {
        return calls_[static_cast<std::size_t>(call)];
    }
    // All calls together.
    [[nodiscard]] std::uint64_t calls() const;
    [[nodiscard]] std::uint64_t bytes_read() const { return bytes_read_; }
    [[nodiscard]] std::uint64_t bytes_written() const { return bytes_written_; }  // copies too
    // In the order in which they came, failed ones too.
    [[nodiscard]] const std::vector<LoggedCall>& log() const { return log_; }
    void reset_counts();
    // Adds every change that is made from now on, with its bytes, to `operations`.
    void record_into(std::vector<FileOperation>& operations) { operations_ = &operations; }

    // --- what goes wrong ---

    void fail(Fault fault);
    void fail_nothing() { fault_.reset(); }
    // Whether the planned fault has come about.
    [[nodiscard]] bool has_failed() const { return has_failed_; }

    // --- the file system ---

    std::unique_ptr<BinaryFile> open(const String& name, OpenMode mode) override;
    bool exists(const String& name) override;
    String resolve_links(const String& name) override;
    void require_writable(const String& name) override;
    FileState state(const String& name) override;
    std::unique_ptr<BinaryFile> create_beside(const String& neighbour, String& name) override;
    void copy_attributes(const String& from, BinaryFile& to) override;
    bool clone(BinaryFile& from, BinaryFile& to) override;
    // Both refuse a file that is still open (70), as the strictest of the systems does.
    void remove(const String& name) override;
    void replace(const String& from, const String& to) override;
    void flush_folder_of(const String& name) override;

private:
    friend class MemoryFile;
    struct Node {
        Bytes bytes;
        std::uint64_t number = 0;
        std::int64_t modified = 0;  // counts up with every change
    };
    using Content = std::shared_ptr<Node>;
    [[nodiscard]] static FileState state_of(const Node& node);

    // The log takes no memory during a test that counts or denies it.
    static constexpr std::size_t kUsualCalls = 1000;

    enum class Outcome { Works, Shortened, Fails };
    // Counts a call and tells what becomes of it.
    Outcome count(FileCall call, const String& name);
    // The same for a call that can only work or raise.
    void count_or_raise(FileCall call, const String& name);
    [[nodiscard]] const Fault& fault() const { return *fault_; }
    [[nodiscard]] String followed(const String& name) const;
    [[nodiscard]] bool is_folder(const String& name) const;
    [[nodiscard]] std::unique_ptr<BinaryFile> handle(const String& name, OpenMode mode);
    void refuse_if_open(const String& name) const;
    // Allocates nothing unless recording: tests let allocations fail.
    template <typename MakeOperation>
    void record(MakeOperation make_operation) {
        if (operations_ != nullptr) {
            operations_->push_back(make_operation());
        }
    }

    std::map<String, Content> files_;
    std::map<String, String> links_;
    std::set<String> folders_;
    std::set<String> read_only_;
    bool folders_read_only_ = false;
    bool clones_ = false;
    std::function<void()> after_read_;
    // By content: a file that was replaced while open is another one than that of its name.
    std::map<const Node*, std::size_t> handles_;
    unsigned created_ = 0;
    std::uint64_t put_ = 0;

    std::array<std::uint64_t, kFileCalls> calls_{};
    std::uint64_t bytes_read_ = 0;
    std::uint64_t bytes_written_ = 0;
    std::vector<LoggedCall> log_;
    std::vector<FileOperation>* operations_ = nullptr;

    std::optional<Fault> fault_;
    std::uint64_t calls_until_fault_ = 0;
    bool has_failed_ = false;
};

}  // namespace brindle::test
