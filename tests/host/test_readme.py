"""What README.md shows of the program is what the program prints."""

import pathlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
README = (ROOT / "README.md").read_text()
SAMPLE = "examples/morning-jingle.mp3"


def test_the_sample_is_shown_as_really_printed(brindle):
    printed = brindle("show", SAMPLE, cwd=ROOT, text=True).stdout
    assert printed.startswith(SAMPLE)
    assert "$ ./run\n" + printed in README


def test_the_dry_run_begins_as_really_printed(brindle):
    command = ["set", "--title", "Good morning", "--cue-in", "250", "--dry-run", SAMPLE]
    printed = brindle(*command, cwd=ROOT, text=True).stdout
    first_lines = "".join(printed.splitlines(keepends=True)[:5])
    shown = '$ ./run set --title "Good morning" --cue-in 250 --dry-run ' + SAMPLE + "\n"
    assert first_lines.startswith(SAMPLE)
    assert shown + first_lines in README
