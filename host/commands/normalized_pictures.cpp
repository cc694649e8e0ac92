#include "commands/normalized_pictures.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "output/printable_text.h"
#include "output/save_text.h"
#include "pictures/extracted_name.h"
#include "pictures/image_kind.h"
#include "pictures/shrunk_picture.h"
#include "system/created_file.h"
#include "system/file_access.h"
#include "system/file_path.h"

namespace brindle::host {

namespace {

// Hosts do not read a picture of a larger body.
constexpr std::size_t kLargestBody = 81'920;
constexpr std::size_t kFrameHeader = 10;
// The smallest room in which a shrunk image can be expected to fit.
constexpr std::size_t kLeastRoom = 4'096;
constexpr std::u16string_view kLink = u"-->";
constexpr std::u16string_view kJpegType = u"image/jpeg";

void visit_pictures(const cMPEGHeader& header,
                    const std::function<void(const EditedPicture&)>& visit) {
    const TagEdit edit(header, {.new_image = [&](const EditedPicture& picture) {
                           visit(picture);
                           return std::optional<NewImage>();
                       }});
}

std::string name_in_folder(const std::string& name) {
    return printable(name_of(path_of(name).filename()));
}

bool is_there(const std::string& name) {
    std::error_code error;  // also if there is nothing
    return std::filesystem::symlink_status(path_of(name), error).type() !=
           std::filesystem::file_type::not_found;
}

bool has_content(const std::string& name, const std::vector<std::uint8_t>& content) {
    std::int64_t size = 0;
    if (reason_against_file(name, size) || static_cast<std::size_t>(size) != content.size()) {
        return false;
    }
    const std::string held = read_bytes(name, 0, content.size());
    return std::equal(
        held.begin(), held.end(), content.begin(), content.end(),
        [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; });
}

}  // namespace

NormalizedPictures::NormalizedPictures(std::string file, const PictureOptions& options)
    : file_(std::move(file)),
      options_(options),
      extensions_(options.extracts ? image_extensions() : std::vector<std::string>()) {}

std::string NormalizedPictures::file_name_of(const Extraction& extraction) const {
    return extracted_name(file_, extraction.number, extraction.extension);
}

// A picture may have been extracted by an earlier run, which then has put it after others, or has
// made a smaller one of it, of another format.
NormalizedPictures::Extraction NormalizedPictures::extraction_of(
    const EditedPicture& picture) const {
    const auto number = static_cast<std::int64_t>(extractions_.size()) + 1;
    if (picture.mime_type == kLink) {
        return {};
    }
    if (number > kMaxExtracted) {
        return {0, "", frame_label(picture) + " is not extracted: a file has too many pictures"};
    }
    const std::string extension = image_kind(picture.image).extension;
    for (std::int64_t i = 1; i <= kMaxExtracted; ++i) {
        const std::string name = extracted_name(file_, i, extension);
        if (i > number && !is_there(name)) {
            break;
        }
        if (has_content(name, picture.image)) {
            return {};
        }
    }
    for (const std::string& other : extensions_) {
        const std::string name = extracted_name(file_, number, other);
        if (is_there(name)) {
            return {0, "",
                    name_in_folder(name) + " is another file, so " + frame_label(picture) +
                        " is not extracted"};
        }
    }
    return {number, extension, ""};
}

std::optional<std::string> NormalizedPictures::plan_extraction(const cMPEGHeader& header) {
    if (!options_.extracts) {
        return std::nullopt;
    }
    visit_pictures(header, [this](const EditedPicture& picture) {
        extractions_.push_back(extraction_of(picture));
    });
    for (const Extraction& extraction : extractions_) {
        if (extraction.why_not.empty()) {
            continue;
        }
        if (options_.drops) {
            return extraction.why_not + ", and not dropped";
        }
        remarks_.push_back(extraction.why_not);
    }
    return std::nullopt;
}

void NormalizedPictures::keep(const EditedPicture& picture, const std::string& reason) {
    remarks_.push_back("kept " + frame_label(picture) + " as it is: " + reason);
}

std::optional<NewImage> NormalizedPictures::new_image(const EditedPicture& picture) {
    const std::size_t place = seen_++;
    const std::size_t body = picture.other_bytes + picture.mime_type.size() + picture.image.size();
    if (!options_.shrinks || body <= kLargestBody) {
        return std::nullopt;
    }
    auto image = shrunk(picture);
    if (!image) {
        return std::nullopt;
    }
    if (options_.extracts && !extractions_[place].why_not.empty()) {
        failure_ = extractions_[place].why_not + ", and not shrunk";
        return std::nullopt;
    }
    remarks_.push_back("shrunk " + frame_label(picture) + " from " +
                       std::to_string(picture.image.size()) + " to " +
                       std::to_string(image->size()) + " bytes");
    return NewImage{String(kJpegType), std::move(*image)};
}

std::optional<std::vector<std::uint8_t>> NormalizedPictures::shrunk(const EditedPicture& picture) {
    const ImageKind kind = image_kind(picture.image);
    const std::size_t around = kFrameHeader + picture.other_bytes + kJpegType.size();
    if (picture.mime_type == kLink) {
        keep(picture, "it is a link");
    } else if (kind.format == ImageFormat::Other) {
        keep(picture, std::string("its format is ") + kind.name +
                          ", and only JPEG and PNG images are shrunk");
    } else if (around + kLeastRoom > kLargestBody) {
        keep(picture, "its description is too long");
    } else {
        try {
            ShrunkPicture made = shrink_picture(picture.image, kLargestBody - around);
            if (made.refusal.empty()) {
                return std::move(made.image);
            }
            keep(picture, printable(made.refusal));
        } catch (const PictureError& error) {
            failure_ = frame_label(picture) + ": " + error.what();
        }
    }
    return std::nullopt;
}

void NormalizedPictures::visit_extracted(
    const cMPEGHeader& header,
    const std::function<void(const Extraction&, const EditedPicture&)>& visit) const {
    if (std::all_of(extractions_.begin(), extractions_.end(),
                    [](const Extraction& extraction) { return extraction.number == 0; })) {
        return;
    }
    std::size_t place = 0;
    visit_pictures(header, [&](const EditedPicture& picture) {
        const Extraction& extraction = extractions_[place++];
        if (extraction.number != 0) {
            visit(extraction, picture);
        }
    });
}

std::vector<PictureFile> NormalizedPictures::files_to_write(const cMPEGHeader& header) const {
    std::vector<PictureFile> files;
    visit_extracted(header, [&](const Extraction& extraction, const EditedPicture& picture) {
        PictureFile file;
        file.number = extraction.number;
        file.extension = extraction.extension;
        file.is_made = true;
        file.bytes = picture.image;
        files.push_back(std::move(file));
    });
    return files;
}

std::optional<std::string> NormalizedPictures::extract(const cMPEGHeader& header,
                                                       const FileState& state) const {
    std::optional<std::string> failure;
    visit_extracted(header, [&](const Extraction& extraction, const EditedPicture& picture) {
        if (failure) {
            return;
        }
        const std::string name = file_name_of(extraction);
        if (const auto reason = write_new_file(name, picture.image, state)) {
            failure = name_in_folder(name) + " was not written: " + *reason;
        }
    });
    return failure;
}

std::vector<std::string> NormalizedPictures::remarks(bool dry_run) const {
    std::vector<std::string> remarks = remarks_;
    for (const Extraction& extraction : extractions_) {
        if (extraction.number != 0) {
            remarks.push_back((dry_run ? "would write " : "wrote ") +
                              name_in_folder(file_name_of(extraction)));
        }
    }
    return remarks;
}

}  // namespace brindle::host
