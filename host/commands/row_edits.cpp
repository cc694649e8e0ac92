#include "commands/row_edits.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include <brindle/text.h>

#include "commands/misread_code_page.h"
#include "fields.h"
#include "output/file_columns.h"
#include "output/printable_text.h"
#include "output/tag_reading.h"

namespace brindle::host {

namespace {

// Columns of `scan` that a save changes by itself, or that are not values of the file.
constexpr std::string_view kIgnored[] = {
    "audio_sha256", "error",      "file_escaped",   "file_facts",
    "schema",       "tag",        "TagType",        "v2Frames",
    "v2Tag",        "FrameCount", "RepairRequired", "ID3TagSizeIncludingHeader"};
constexpr std::string_view kLink = "URL";
constexpr std::string_view kSameLink = "ArtistUrl";
constexpr std::string_view kCustomPrefix = "field:";

bool is_ignored(std::string_view title) {
    return std::find(std::begin(kIgnored), std::end(kIgnored), title) != std::end(kIgnored);
}

std::string custom_title(const String& name) {
    return std::string(kCustomPrefix) + to_utf8(name);
}

// The same for two names of one field.
std::string identity_of(const Field& field) {
    return field.is_custom() ? custom_title(field.custom_name) : field.key;
}

std::string identity_of(const Column& column) {
    return column.field != nullptr ? identity_of(*column.field) : column.title();
}

std::string identity_of_removed(const std::string& name) {
    const std::optional<Column> column = edit_column(name);
    return column ? identity_of(*column) : name;
}

// CR, LF and both together as LF.
std::string with_one_kind_of_line_ends(const std::string& text) {
    std::string lines;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            lines += text[i];
        } else if (text.substr(i + 1, 1) != "\n") {
            lines += '\n';
        }
    }
    return lines;
}

// A spreadsheet writes true and false in capitals, and line ends of its own kind.
bool is_same_value(const std::string& cell, const std::string& value) {
    return cell == value || (cell == "TRUE" && value == "true") ||
           (cell == "FALSE" && value == "false") ||
           with_one_kind_of_line_ends(cell) == with_one_kind_of_line_ends(value);
}

// 0 is printed where a file has no year and no track.
bool is_empty(const Column& column, const std::string& cell) {
    constexpr std::string_view kNumbers[] = {"Track", "Year", "Yearv1Tag"};
    return cell == "0" && column.field != nullptr &&
           std::find(std::begin(kNumbers), std::end(kNumbers), column.field->key) !=
               std::end(kNumbers);
}

// The character that hosts read before a UTF-8 text of version 2.4: its encoding byte.
constexpr char kUtf8Mark = '\x03';

std::optional<String> text_by_documents(const Column& column, const TagFacts& facts) {
    if (column.field == nullptr || column.field->frame_id[0] == u'\0') {
        return std::nullopt;
    }
    const std::u16string_view id = column.field->frame_id;
    return id == u"COMM" ? facts.comment() : facts.text(id);
}

// Whether the cell is what hosts read of the file's text where that is in UTF-8. A save converts
// it to UTF-16, and the table must mean the same before and after.
bool is_reading_of_utf8(const std::string& cell, const Column& column, const TagFacts& facts) {
    const std::optional<String> text = text_by_documents(column, facts);
    if (!text) {
        return false;
    }
    const bool has_mark = cell.front() == kUtf8Mark;
    const String read = from_utf8(has_mark ? cell.substr(1) : cell);
    if (has_mark && read == *text) {
        return true;
    }
    const auto misread = find_misread_encoding(read);
    return misread && misread->encoding == MeantEncoding::Utf8 && misread->meant == *text;
}

// The value of a field that is not in the file.
bool is_nothing(const std::string& value) {
    return value.empty() || value == "0";
}

// The reason alone; the column precedes it.
std::string reason_of(const UsageError& error) {
    const std::string text = error.what();
    const std::size_t colon = text.find(": ");
    return colon == std::string::npos ? text : text.substr(colon + 2);
}

class RowReader {
public:
    RowReader(const EditRow& row, const cMPEGHeader& header, bool unicode)
        : row_(row), header_(header), unicode_(unicode) {}

    RowEdits read() {
        for (const EditCell& cell : row_.cells) {
            read_cell(cell);
        }
        // Removing a title clears that of the ID3v1 record, which a cell may set again.
        for (const std::string& name : row_.removed) {
            remove(name);
        }
        find_edits();
        pin_record();
        add_edits();
        return std::move(result_);
    }

private:
    // A cell of a value that can be set.
    struct Given {
        const EditCell* cell;
        Column column;
        std::string now;
        bool is_edit = false;
        bool is_removed = false;
    };

    void refuse(const std::string& column, const std::string& why) {
        result_.errors.push_back("column " + printable(column) + ": " + why);
    }

    [[nodiscard]] bool has_cell(std::string_view title) const {
        return std::any_of(row_.cells.begin(), row_.cells.end(),
                           [&](const EditCell& cell) { return cell.column == title; });
    }

    Given* given_of(const std::string& identity) {
        const auto given = std::find_if(given_.begin(), given_.end(), [&](const Given& candidate) {
            return identity_of(candidate.column) == identity;
        });
        return given == given_.end() ? nullptr : &*given;
    }

    void read_cell(const EditCell& cell) {
        if (is_ignored(cell.column)) {
            return;
        }
        const std::optional<Column> column = edit_column(cell.column);
        if (!column) {
            refuse(cell.column, "unknown column");
            return;
        }
        if (!cell.is_plain) {
            refuse(cell.column, "not a single value");
            return;
        }
        const std::string now = column->text({.name = "", .header = &header_});
        if (column->field != nullptr && column->field->option == nullptr) {
            // The link has two names; the one that can be set counts.
            const bool counts = cell.column != kSameLink || !has_link();
            if (counts && !is_same_value(cell.text, now)) {
                refuse(cell.column, "cannot be set; it is '" + printable(now) + "'");
            }
            return;
        }
        if (const Given* other = given_of(identity_of(*column))) {
            refuse(cell.column, "the same value as in column " + printable(other->cell->column));
            return;
        }
        if (is_empty(*column, cell.text)) {
            return;
        }
        given_.push_back({.cell = &cell, .column = *column, .now = now});
    }

    [[nodiscard]] bool has_link() const { return has_cell(kLink) || has_cell("url"); }

    void remove(const std::string& name) {
        try {
            result_.edits.push_back(removal_of(name));
        } catch (const UsageError& error) {
            refuse("remove", reason_of(error));
            return;
        }
        const std::string identity = identity_of_removed(name);
        removed_.insert(identity);
        Given* const given = given_of(identity);
        if (given == nullptr) {
            return;
        }
        given->is_removed = true;
        // A value that is already gone was removed by the same row.
        if (!is_same_value(given->cell->text, given->now) && !is_nothing(given->now)) {
            refuse("remove", "'" + printable(name) + "' is also set");
        }
    }

    void find_edits() {
        std::optional<TagFacts> facts;
        for (Given& given : given_) {
            const std::string& text = given.cell->text;
            if (given.is_removed || is_same_value(text, given.now)) {
                continue;
            }
            facts = facts ? facts : read_tag_facts(header_);
            if (is_reading_of_utf8(text, given.column, *facts)) {
                continue;
            }
            if (is_stamp(text)) {
                refuse(
                    given.cell->column,
                    "hosts read '" + text + "' where they cannot read the tag; it is not a value");
            } else if (text.front() == kUtf8Mark) {
                refuse(given.cell->column,
                       "the text begins with \\x03, which hosts read before UTF-8; remove it");
            } else {
                given.is_edit = true;
            }
        }
    }

    // Setting or removing a title also changes that of the ID3v1 record, but a cell for the
    // record takes precedence.
    void pin_record() {
        for (const Field& field : all_fields()) {
            if (field.record_option == nullptr) {
                continue;
            }
            const Given* const given = given_of(identity_of(field));
            const bool is_changed =
                (given != nullptr && given->is_edit) || removed_.contains(identity_of(field));
            const std::string record = std::string(field.record_option).substr(2);
            Given* const pinned = given_of(identity_of_removed(record));
            if (is_changed && pinned != nullptr && !pinned->is_removed) {
                pinned->is_edit = true;
            }
        }
    }

    // In the order in which `set` assigns them: the ID3v1 record after the tag.
    void add_edits() {
        std::stable_sort(given_.begin(), given_.end(), [](const Given& one, const Given& other) {
            return order_of(one.column) < order_of(other.column);
        });
        for (const Given& given : given_) {
            if (given.is_edit) {
                add_edit(given);
            } else if (!given.is_removed) {
                result_.kept.push_back(kept(given));
            }
        }
    }

    static KeptValue kept(const Given& given) {
        const auto text = [column = given.column](const cMPEGHeader& header) {
            return column.text({.name = "", .header = &header});
        };
        return {{given.cell->column, text},
                [text, column = given.column, cell = given.cell->text](const cMPEGHeader& header,
                                                                       const TagFacts& facts) {
                    return is_same_value(cell, text(header)) ||
                           is_reading_of_utf8(cell, column, facts);
                }};
    }

    static std::size_t order_of(const Column& column) {
        return column.field != nullptr
                   ? static_cast<std::size_t>(column.field - all_fields().data())
                   : all_fields().size();
    }

    void add_edit(const Given& given) {
        // What the record keeps is written as it is there.
        const std::string& text =
            is_same_value(given.cell->text, given.now) ? given.now : given.cell->text;
        try {
            result_.edits.push_back(
                given.column.field != nullptr
                    ? edit_for(*given.column.field, text, unicode_)
                    : edit_for_custom_field(to_utf8(given.column.custom_name), text, unicode_));
        } catch (const UsageError& error) {
            refuse(given.cell->column, reason_of(error));
        }
    }

    const EditRow& row_;
    const cMPEGHeader& header_;
    const bool unicode_;
    std::vector<Given> given_;
    std::set<std::string> removed_;
    RowEdits result_;
};

}  // namespace

// A custom field, or a field of the table by its key or its option.
std::optional<Column> edit_column(const std::string& title) {
    for (const Field& field : all_fields()) {
        if (field.option != nullptr && field.option == "--" + title) {
            return Column{.field = &field};
        }
    }
    const std::optional<Column> column = column_of(title);
    const bool is_value =
        column && (column->kind == ColumnKind::Field || column->kind == ColumnKind::CustomField);
    return is_value ? column : std::nullopt;
}

bool is_edit_column(const std::string& title) {
    return is_ignored(title) || edit_column(title);
}

RowEdits edits_of(const EditRow& row, const cMPEGHeader& header, bool unicode) {
    return RowReader(row, header, unicode).read();
}

SetOptions changes_of(RowEdits row, bool unicode) {
    SetOptions changes;
    changes.unicode = unicode;
    changes.edits = std::move(row.edits);
    changes.kept = std::move(row.kept);
    changes.way_to_force = "brindle set --force";
    return changes;
}

}  // namespace brindle::host
