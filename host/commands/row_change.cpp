#include "commands/row_change.h"

#include <memory>
#include <utility>

#include "commands/row_edits.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"

namespace brindle::host {

PlannedChange plan_row(const EditRow& row, const cMPEGHeader& header,
                       const std::optional<FileState>& state, const SetOptions& options,
                       bool unicode, Journal& journal) {
    RowEdits edits = edits_of(row, header, unicode);
    if (!edits.errors.empty()) {
        return {edits.errors.front()};
    }
    if (edits.edits.empty()) {
        return nothing_written(row.file, "the file already has these values");
    }
    const auto changes = std::make_shared<SetOptions>(changes_of(std::move(edits), unicode));
    changes->latin1 = unicode;
    changes->dry_run = options.dry_run;
    changes->preserve = options.preserve;
    changes->force = options.force;
    changes->atomic = options.atomic;
    changes->way_to_force = options.way_to_force;
    changes->expected_state = state;
    PlannedChange change = plan_and_print(row.file, *changes, journal);
    if (change.write) {
        // The change refers to its options.
        change.write = [changes, save = std::move(change.write)] { return save(); };
    }
    return change;
}

PlannedChange nothing_written(const std::string& name, const std::string& why) {
    write_output(printable(name) + ": nothing written, " + why + "\n");
    return {};
}

}  // namespace brindle::host
