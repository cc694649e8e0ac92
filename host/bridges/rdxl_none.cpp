// A build without pugixml.
#include "bridges/rdxl.h"

namespace brindle::host {

std::optional<std::string> reason_against_rdxl() {
    return "built without pugixml, which reads XML";
}

SystemPoints read_rdxl(const TagFacts&) {
    return {};
}

std::vector<CustomField> rdxl_to_write(const WantedPoints&, const TagFacts&) {
    return {};
}

}  // namespace brindle::host
