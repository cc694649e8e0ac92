"""The table of fields in host/fields.cpp: each row is known wherever fields are listed."""

import json
import pathlib
import re

import pytest

from manual import page_of
from mp3_bytes import audio

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
COMPLETIONS = ROOT / "host" / "completions"

# Options of `set` that assign no field of the table.
OTHER_OPTIONS = {"-h", "--help", "--version", "--field", "--remove", "--separate", "--dry-run",
                 "--preserve", "--force", "--atomic", "--unicode", "--host-form", "--yes"}
# Of all commands that change files; completions list them once.
JOURNAL_OPTIONS = {"--no-journal", "--journal", "--journal-days", "--journal-megabytes"}

SETTABLE_ROW = re.compile(r'^    \{(\d+),\s*"(\w+)",\s*"(--[a-z0-9-]+)",\s*"([^"]+)",\s*"([^"]+)",',
                          re.MULTILINE)
READ_ONLY_ROW = re.compile(r'^    read_only\((\d+), "(\w+)",', re.MULTILINE)

# By the placeholder in the help: a value, and the word in the completion of zsh.
VALUES = {"TEXT": "abc", "N": "7", "MS": "1500", "X": "1.5"}
ZSH_WORDS = {"TEXT": "text", "N": "number", "MS": "milliseconds", "X": "factor"}


class Row:
    def __init__(self, place, key, option=None, label=None, help_text=None):
        self.place = int(place)
        self.key = key
        self.option = option
        self.label = label
        self.help_text = help_text

    def __repr__(self):
        return self.key


def table():
    source = (ROOT / "host" / "fields.cpp").read_text(encoding="utf-8")
    rows = [Row(*match) for match in SETTABLE_ROW.findall(source)]
    rows += [Row(*match) for match in READ_ONLY_ROW.findall(source)]
    return sorted(rows, key=lambda row: row.place)


ROWS = table()
SETTABLE = [row for row in ROWS if row.option]
each_settable_row = pytest.mark.parametrize("row", SETTABLE, ids=repr)


def options_in(text):
    return set(re.findall(r"(?<![\w-])--?[a-z][a-z0-9-]*", text))


def table_options():
    return {row.option for row in SETTABLE} | {"--no-opener"}


@pytest.fixture
def help_lines(brindle):
    """The help of `set`, with each option and its text on one line, by the option."""
    text = brindle("set", "--help").stdout.decode().split("Options:\n")[1].split("\n\nExample")[0]
    lines = re.sub(r"\n {20,}", "  ", text).split("\n")
    return {re.split(r"[ ,]", line.strip())[0]: line for line in lines}


def placeholder(line):
    word = line.split()[1]
    return word if word in VALUES else None


@pytest.fixture
def full_file(brindle, help_lines, tmp_path):
    """All fields that can be set have a value."""
    path = tmp_path / "full.mp3"
    path.write_bytes(audio())
    arguments = []
    for row in SETTABLE:
        kind = placeholder(help_lines[row.option])
        arguments += [row.option, VALUES[kind]] if kind else [row.option]
    result = brindle("set", *arguments, "full.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    return result.stdout.decode()


def test_keys_of_json_are_the_table_in_its_order(brindle, full_file):
    facts = json.loads(brindle("show", "--json", "full.mp3").stdout)
    keys = list(facts)
    assert keys[0] == "file"
    assert keys[1:-3] == [row.key for row in ROWS]
    assert keys[-3:] == ["schema", "tag", "file_facts"]


def test_columns_of_csv_are_the_table_in_its_order(brindle, full_file):
    header = brindle("scan", "--csv", "--quiet", "full.mp3").stdout.decode().split("\r\n")[0]
    # The values of all frames are too long for a cell.
    keys = [row.key for row in ROWS if row.key != "v2Tag"]
    assert header.split(",") == ["file", *keys, "error"]


def test_options_of_set_are_the_table(help_lines):
    assert {option for option in help_lines if option.startswith("--")} == (
        table_options() | OTHER_OPTIONS | JOURNAL_OPTIONS) - {"-h", "--help"}


@each_settable_row
def test_option_has_its_help(help_lines, row):
    assert help_lines[row.option].endswith("  " + row.help_text)


@each_settable_row
def test_value_is_set_and_shown_under_one_label(brindle, full_file, row):
    line = re.search(rf"; {row.label}: ([^;\n]*)", full_file)
    assert line and line[1] not in ('""', "0", "null"), full_file
    report = brindle("show", "full.mp3").stdout.decode()
    assert re.search(rf"^    {row.label}  +\S", report, re.MULTILINE), report


@each_settable_row
def test_value_is_in_json(brindle, full_file, row):
    facts = json.loads(brindle("show", "--json", "full.mp3").stdout)
    assert facts[row.key] not in ("", 0, None)


def test_completion_of_bash_lists_the_table():
    text = (COMPLETIONS / "brindle.bash").read_text(encoding="utf-8")
    options = re.search(r'set\)\s+options="([^"]*)"', text)[1]
    # The other completions know the options of all commands with paths at once.
    of_paths = {"-0", "--null"}
    assert options_in(options) - of_paths == (
        table_options() | OTHER_OPTIONS - {"-h", "--help", "--version"})


def test_completion_of_fish_lists_the_table():
    text = (COMPLETIONS / "brindle.fish").read_text(encoding="utf-8")
    loop = re.search(r"for option in ((?:.*\\\n)*.*)\n", text)[1].replace("\\", " ")
    taking_values = {"--" + word for word in loop.split()}
    flags = {"--" + word for word in
             re.findall(r"from set(?: [a-z]+)*' -l ([a-z-]+) -d", text)}
    assert not taking_values & flags
    assert taking_values | flags == table_options() | OTHER_OPTIONS - {"-h", "--help", "--version"}


@pytest.mark.parametrize("name", ["brindle.bash", "brindle.fish", "_brindle"])
def test_completions_know_the_options_of_journals(name):
    text = (COMPLETIONS / name).read_text(encoding="utf-8")
    options = options_in(text) | {"--" + word for word in re.findall(r"-l ([a-z-]+) ", text)}
    assert JOURNAL_OPTIONS <= options


@each_settable_row
def test_completion_of_zsh_has_the_option_with_its_help(help_lines, row):
    text = (COMPLETIONS / "_brindle").read_text(encoding="utf-8").split("        set)")[1]
    entry = re.search(rf"'(?:\([a-z -]+\))?{row.option}\[([^\]]+)\](?::(\w+))?'", text)
    assert entry
    described, word = entry.groups()
    assert row.help_text.lower().startswith(described.lower())
    kind = placeholder(help_lines[row.option])
    assert word == (ZSH_WORDS[kind] if kind else None)


def test_completion_of_zsh_lists_no_other_options():
    text = (COMPLETIONS / "_brindle").read_text(encoding="utf-8")
    entries = text.split("        set)")[1].split(";;")[0]
    options = set(re.findall(r"(--[a-z0-9-]+)\[", entries))
    assert options == table_options() | OTHER_OPTIONS - {"-h", "--help", "--version"}


@each_settable_row
def test_manual_has_the_option(help_lines, row):
    kind = placeholder(help_lines[row.option])
    written = f"*{row.option}* _{kind}_" if kind else f"*{row.option}*"
    entries = [line for line in page_of("set").split("\n") if line.startswith("*--")]
    assert any(written in re.split(r", (?=\*)", line) for line in entries)


def test_manual_has_no_other_options():
    entries = "\n".join(line for line in page_of("set").split("\n") if line.startswith("*--"))
    assert set(re.findall(r"\*(--[a-z0-9-]+)\*", entries)) == (
        table_options() | JOURNAL_OPTIONS | OTHER_OPTIONS - {"-h", "--help", "--version"})
