// brindle export: scheduling fields as other playout systems read them.
#include <memory>
#include <optional>
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>
#include <brindle/text.h>

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

struct ExportOptions : SetOptions {
    PlayoutSystem system = PlayoutSystem::Liquidsoap;
};

bool has_points(const HostPoints& points, PlayoutSystem system) {
    const bool has_talk = system == PlayoutSystem::Rivendell && points.intro != 0;
    return points.cue_in != 0 || points.sectone != 0 || has_talk;
}

PlannedChange plan(const std::string& name, const ExportOptions& options, Journal& journal) {
    const auto state = state_of(name);
    cMPEGHeader header;
    if (auto reason = open_file(header, name)) {
        return {reason};
    }
    const HostPoints points = host_points(header);
    if (!has_points(points, options.system)) {
        return nothing_written(name, "it has no points for " + word_of(options.system));
    }
    const auto time = playing_time(header);
    if (!time) {
        return {"no MPEG audio found"};
    }
    const TagFacts facts = read_tag_facts(header);
    EditRow row;
    row.file = name;
    try {
        for (const CustomField& field : exported(options.system, points, facts, *time)) {
            row.cells.push_back({"field:" + to_utf8(field.name), to_utf8(field.text)});
            remove_other_cases(field.name, facts, row);
        }
    } catch (const BridgeError& error) {
        return {error.what()};
    }
    return plan_row(row, header, state, options, /*unicode=*/true, journal);
}

ExitStatus export_files(const ExportOptions& options) {
    if (const auto reason = reason_against(options.system)) {
        write_error("export --to " + word_of(options.system) + ": " + *reason);
        return ExitStatus::WrongUsage;
    }
    Journal journal(options.journal, "export");
    return change_files(
        options, [&](const std::string& name) { return plan(name, options, journal); }, journal);
}

}  // namespace

void add_export(CommandLine& program) {
    const auto options = std::make_shared<ExportOptions>();
    CommandOptions command =
        program.add("export", "Write scheduling fields for other playout systems",
                    "brindle export --to liquidsoap --dry-run music",
                    [options] { return export_files(*options); });
    command.word(
        "--to", "SYSTEM", playout_system_words(),
        [options](const std::string& word) { options->system = playout_system_of(word); },
        "The system for which the fields are written");
    command.require("--to");
    add_saving_options(command, *options);
    command.changed_paths(*options,
                          "Show old and new values and what a save would do; write nothing");
}

}  // namespace brindle::host
