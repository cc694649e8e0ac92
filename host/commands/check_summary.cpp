#include "commands/check_summary.h"

#include <cstddef>

namespace brindle::host {

Counted CheckSummary::counted(const std::vector<Finding>& findings) {
    return {static_cast<std::int64_t>(verdict_of(findings))};
}

bool CheckSummary::add(const Counted& counted) {
    const std::int64_t verdict = counted.front();
    if (verdict < 0 || verdict >= static_cast<std::int64_t>(counts_.size())) {
        return false;
    }
    ++counts_.at(static_cast<std::size_t>(verdict));
    return true;
}

std::int64_t CheckSummary::files_with(Verdict verdict) const {
    return counts_.at(static_cast<std::size_t>(verdict));
}

std::string CheckSummary::text(const BatchOutcome& outcome) const {
    std::string text = outcome.files_text() + ": ";
    for (const Verdict verdict : {Verdict::Ok, Verdict::Warn, Verdict::Bad}) {
        text += std::to_string(files_with(verdict)) + " " + word(verdict) + ", ";
    }
    return text + std::to_string(outcome.failures) + " failed\n";
}

}  // namespace brindle::host
