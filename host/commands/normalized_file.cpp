#include "commands/normalized_file.h"

namespace brindle::host {

namespace {

class NormalizedFile final : public FileWork {
public:
    NormalizedFile(const std::string& name, const NormalizeOptions& options)
        : options_(options), pictures_(name, options.pictures) {}

    std::optional<std::string> prepare(const cMPEGHeader& header,
                                       brindle::EditOptions& options) override {
        if (options_.pictures.shrinks) {
            options.new_image = [this](const EditedPicture& picture) {
                return pictures_.new_image(picture);
            };
        }
        return pictures_.plan_extraction(header);
    }

    std::optional<std::string> failure() const override { return pictures_.failure(); }

    std::optional<std::string> before_save(const cMPEGHeader& header,
                                           const FileState& state) override {
        return pictures_.extract(header, state);
    }

    std::vector<std::string> remarks(bool dry_run) const override {
        return pictures_.remarks(dry_run);
    }

private:
    const NormalizeOptions& options_;
    NormalizedPictures pictures_;
};

}  // namespace

std::unique_ptr<FileWork> normalize_file(const std::string& name, const NormalizeOptions& options) {
    return std::make_unique<NormalizedFile>(name, options);
}

}  // namespace brindle::host
