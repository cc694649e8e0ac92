#include "util/kept_open_files.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "util/file_for_reading.h"

namespace brindle {

namespace {

class SharedFile final : public FileForReading {
public:
    explicit SharedFile(std::shared_ptr<BinaryFile> file) noexcept : file_(std::move(file)) {}

    std::int64_t length() override { return file_->length(); }
    FileState state() override { return file_->state(); }
    void expect_reads(ReadOrder order) override { file_->expect_reads(order); }
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override {
        return file_->read_at(offset, into);
    }
    std::size_t read_scattered_at(std::int64_t offset, std::span<std::uint8_t> first,
                                  std::span<std::uint8_t> second) override {
        return file_->read_scattered_at(offset, first, second);
    }
    ByteRange data_in(const ByteRange& range) override { return file_->data_in(range); }

private:
    std::shared_ptr<BinaryFile> file_;
};

}  // namespace

std::unique_ptr<BinaryFile> KeptOpenFiles::open(const String& name, OpenMode mode) {
    if (mode != OpenMode::Read) {
        refuse_change();
    }
    if (!last_opened_ || name != name_) {
        last_opened_.reset();
        last_opened_ = files_.open(name, mode);
        name_ = name;
    }
    return std::make_unique<SharedFile>(last_opened_);
}

void KeptOpenFiles::require_writable(const String& /*name*/) {
    refuse_change();
}

std::unique_ptr<BinaryFile> KeptOpenFiles::create_beside(const String& /*neighbour*/,
                                                         String& /*name*/) {
    refuse_change();
}

void KeptOpenFiles::copy_attributes(const String& /*from*/, BinaryFile& /*to*/) {
    refuse_change();
}

bool KeptOpenFiles::clone(BinaryFile& /*from*/, BinaryFile& /*to*/) {
    refuse_change();
}

void KeptOpenFiles::remove(const String& /*name*/) {
    refuse_change();
}

void KeptOpenFiles::replace(const String& /*from*/, const String& /*to*/) {
    refuse_change();
}

void KeptOpenFiles::flush_folder_of(const String& /*name*/) {
    refuse_change();
}

}  // namespace brindle
