#include "commands/check_json.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace brindle::host {

Json findings_json(const std::vector<Finding>& findings) {
    Json reasons = Json::array();
    for (const Finding& finding : findings) {
        const ReasonRow& row = row_of(finding.reason);
        reasons.push_back(
            Json{{"code", row.code}, {"verdict", word(row.verdict)}, {"text", text_of(finding)}});
    }
    return Json{{"verdict", word(verdict_of(findings))}, {"reasons", std::move(reasons)}};
}

}  // namespace brindle::host
