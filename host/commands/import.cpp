// brindle import: scheduling fields from those of other playout systems.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "bridges/bridge.h"
#include "commands/bridged_points.h"
#include "commands/command_line.h"
#include "commands/row_change.h"
#include "commands/set_file.h"
#include "commands/set_target.h"
#include "output/standard_streams.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

struct ImportOptions : SetOptions {
    PlayoutSystem system = PlayoutSystem::Liquidsoap;
    bool overwrite = false;
};

PlannedChange plan(const std::string& name, const ImportOptions& options, Journal& journal) {
    const auto state = state_of(name);
    cMPEGHeader header;
    if (auto reason = open_file(header, name)) {
        return {reason};
    }
    const std::string no_points = "it has no points of " + word_of(options.system);
    const TagFacts facts = read_tag_facts(header);
    if (!has_fields_of(options.system, facts)) {
        return nothing_written(name, no_points);
    }
    const auto time = playing_time(header);
    if (!time) {
        return {"no MPEG audio found"};
    }
    HostPoints points;
    try {
        points = imported(options.system, facts, *time);
    } catch (const BridgeError& error) {
        return {error.what()};
    }
    const std::vector<std::pair<std::string, std::int64_t>> columns{
        {"cue-in", points.cue_in}, {"intro", points.intro}, {"sectone", points.sectone}};
    EditRow row;
    row.file = name;
    bool has_points = false;
    for (const auto& [column, point] : columns) {
        has_points = has_points || point != 0;
        if (point != 0 && (options.overwrite || !SetTarget(column).is_set(header, facts))) {
            row.cells.push_back({column, std::to_string(point)});
        }
    }
    if (row.cells.empty()) {
        return nothing_written(name, has_points ? "all values are already set" : no_points);
    }
    return plan_row(row, header, state, options, /*unicode=*/false, journal);
}

ExitStatus import_files(const ImportOptions& options) {
    if (const auto reason = reason_against(options.system)) {
        write_error("import --from " + word_of(options.system) + ": " + *reason);
        return ExitStatus::WrongUsage;
    }
    Journal journal(options.journal, "import");
    return change_files(
        options, [&](const std::string& name) { return plan(name, options, journal); }, journal);
}

}  // namespace

void add_import(CommandLine& program) {
    const auto options = std::make_shared<ImportOptions>();
    CommandOptions command =
        program.add("import", "Set scheduling fields from those of other playout systems",
                    "brindle import --from rivendell --dry-run music",
                    [options] { return import_files(*options); });
    command.word(
        "--from", "SYSTEM", playout_system_words(),
        [options](const std::string& word) { options->system = playout_system_of(word); },
        "The system whose fields are read");
    command.require("--from");
    command.flag("--overwrite", options->overwrite, "Also replace values that are already set");
    add_saving_options(command, *options);
    command.changed_paths(*options,
                          "Show old and new values and what a save would do; write nothing");
}

}  // namespace brindle::host
