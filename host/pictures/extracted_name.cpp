#include "pictures/extracted_name.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "pictures/image_kind.h"
#include "system/file_path.h"

namespace brindle::host {

std::string extracted_name(const std::string& file, std::int64_t number,
                           const std::string& extension) {
    std::filesystem::path path = path_of(file);
    path.replace_extension();
    path += ".cover" + (number == 1 ? "" : "-" + std::to_string(number)) + "." + extension;
    return name_of(path);
}

bool is_extracted_name(std::int64_t number, const std::string& extension) {
    const std::vector<std::string> extensions = image_extensions();
    return number >= 1 && number <= kMaxExtracted &&
           std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

}  // namespace brindle::host
