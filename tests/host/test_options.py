"""Help, man page and completions know the same options."""

import os
import pathlib
import re
import shutil
import subprocess

import pytest

from manual import FOLDER, page_of

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMPLETIONS = ROOT / "host" / "completions"
COMMANDS = ("show", "set", "apply", "normalize", "export", "import", "strip", "undo", "journal", "scan", "check",
            "report", "listen", "time", "genres")
# Where the man page does not say it for each command again.
EVERYWHERE = {"-h", "--help", "--version"}

OPTION = r"(?<![\w-])(?:--[a-z][a-z0-9-]*|-[a-z0-9](?![\w-]))"


def options_of(brindle, command):
    """As --help has them."""
    text = brindle(command, "--help").stdout.decode()
    rows = re.findall(r"^ +(-\S+)", text.split("\nExample:")[0], re.MULTILINE)
    return {option for row in rows for option in row.split(",")}


@pytest.mark.parametrize("command", COMMANDS)
def test_man_page_explains_every_option(brindle, command):
    explained = {option for line in page_of(command).splitlines() if re.match(r"\*-", line)
                 for option in re.findall(OPTION, line)}
    assert explained | EVERYWHERE == options_of(brindle, command)


@pytest.mark.parametrize("command", COMMANDS)
def test_man_page_has_the_example_of_help(brindle, command):
    example = brindle(command, "--help").stdout.decode().splitlines()[-1].strip()
    assert f"\n# EXAMPLE\n\n*{example}*\n" in page_of(command)


def test_help_lists_the_commands(brindle):
    text = brindle("--help").stdout.decode()
    assert tuple(re.findall(r"^  ([a-z]+)  ", text.split("Subcommands:")[1], re.MULTILINE)) \
        == COMMANDS


def test_man_page_lists_the_reasons_of_check(brindle):
    rows = re.findall(r"^  ([a-z0-9-]+) +(bad|warn|note) +(.+: .+)$",
                      brindle("check", "--help").stdout.decode(), re.MULTILINE)
    assert len(rows) == 45
    told = re.findall(r"^\|  (\S+)\n:  (\S+)\n:  (.+)$", page_of("check"), re.MULTILINE)
    assert told == rows


def needs(tool):
    return pytest.mark.skipif(shutil.which(tool) is None, reason=f"needs {tool}")


def test_manual_has_a_page_for_each_command(brindle):
    assert {page.name for page in FOLDER.iterdir()} == {
        "brindle.1.scd", *(f"brindle-{command}.1.scd" for command in COMMANDS)}
    overview = (FOLDER / "brindle.1.scd").read_text()
    summaries = dict(re.findall(r"^\*brindle-([a-z]+)\*\(1\)\n\t(.*)\.$", overview, re.MULTILINE))
    assert tuple(summaries) == COMMANDS
    for command, summary in summaries.items():
        assert f"brindle-{command} - {summary[0].lower()}{summary[1:]}\n" in page_of(command)
        assert summary in " ".join(brindle(command, "--help").stdout.decode().split())


@needs("scdoc")
@pytest.mark.parametrize("page", sorted(page.name for page in FOLDER.iterdir()))
def test_man_page_is_made_without_a_complaint(page):
    made = subprocess.run(["scdoc"], stdin=(FOLDER / page).open("rb"), capture_output=True, check=False)
    assert (made.returncode, made.stderr) == (0, b"")
    assert f'.TH "{page.split(".")[0]}" "1"'.encode() in made.stdout
    if shutil.which("groff"):
        shown = subprocess.run(["groff", "-t", "-man", "-ww", "-Tascii", "-P-cbou"],
                               input=made.stdout, capture_output=True, check=False)
        assert shown.stderr == b""
        text = shown.stdout.decode()
        assert "\nSYNOPSIS\n" in text
        if page == "brindle-check.1.scd":
            assert re.search(r"\|dead-air +\| bad +\| ", text)


# --- completions

def completed(folder, *words):
    """What bash offers for the last word."""
    script = f"""
source {COMPLETIONS}/brindle.bash
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_brindle
printf '%s\\n' "${{COMPREPLY[@]}}"
"""
    done = subprocess.run(["bash", "--norc", "-c", script, "bash", *words], cwd=folder,
                          capture_output=True, text=True, check=True)
    assert done.stderr == ""
    return set(done.stdout.split("\n")) - {""}


def test_bash_completes_commands(tmp_path):
    assert completed(tmp_path, "brindle", "") >= set(COMMANDS)
    assert completed(tmp_path, "brindle", "s") == {"show", "set", "strip", "scan"}


@pytest.mark.parametrize("command", COMMANDS)
def test_bash_completes_every_option(brindle, tmp_path, command):
    assert completed(tmp_path, "brindle", command, "-") == options_of(brindle, command)


def test_bash_completes_values_and_files(tmp_path):
    for name in ("a.mp3", "b.MP2", "c.wav", "d e.mp3"):
        (tmp_path / name).touch()
    (tmp_path / "folder").mkdir()
    files = {"a.mp3", "b.MP2", "d e.mp3", "folder"}
    assert completed(tmp_path, "brindle", "time", "--style", "") == {"none", "fraction", "all"}
    assert completed(tmp_path, "brindle", "scan", "--jobs", "") == set()
    assert completed(tmp_path, "brindle", "set", "--title", "") == set()
    for command in ("show", "strip", "scan", "check", "listen"):
        assert completed(tmp_path, "brindle", command, "") == files
    assert completed(tmp_path, "brindle", "set", "--dry-run", "") == files
    assert completed(tmp_path, "brindle", "scan", "d") == {"d e.mp3"}
    assert completed(tmp_path, "brindle", "genres", "") == set()


def test_bash_completion_is_registered():
    done = subprocess.run(["bash", "--norc", "-c",
                           f"source {COMPLETIONS}/brindle.bash; complete -p brindle"],
                          capture_output=True, text=True, check=True)
    assert done.stdout == "complete -F _brindle brindle\n"


@pytest.mark.parametrize("file", ["_brindle", "brindle.fish"])
def test_completion_knows_every_option(brindle, file):
    text = (COMPLETIONS / file).read_text()
    for command in COMMANDS:
        assert re.search(rf"\b{command}\b", text)
        for option in options_of(brindle, command):
            name = re.escape(option.lstrip("-"))
            assert re.search(rf"(--?|-l |-s |[ \n]){name}\b", text), option


@needs("zsh")
def test_zsh_completion_is_loaded(tmp_path):
    script = f"""
fpath=({COMPLETIONS} $fpath)
autoload -Uz compinit && compinit -u -d {tmp_path}/dump
print -r -- $_comps[brindle]
autoload +X _brindle && print loaded
"""
    done = subprocess.run(["zsh", "-f", "-c", script], capture_output=True, text=True, check=False)
    assert (done.returncode, done.stderr, done.stdout) == (0, "", "_brindle\nloaded\n")
    subprocess.run(["zsh", "-n", COMPLETIONS / "_brindle"], check=True)


@needs("fish")
def test_fish_completes_options(brindle, tmp_path):
    def offered(line):
        done = subprocess.run(
            ["fish", "--no-config", "-c",
             f"source {COMPLETIONS}/brindle.fish; complete -C '{line}'"],
            cwd=tmp_path, capture_output=True, text=True, check=True,
            env={**os.environ, "HOME": str(tmp_path)})
        assert done.stderr == ""
        return {row.split("\t")[0] for row in done.stdout.splitlines()}

    assert offered("brindle ") >= set(COMMANDS)
    for command in COMMANDS:
        wanted = {option for option in options_of(brindle, command) if option.startswith("--")}
        assert offered(f"brindle {command} --") >= wanted - {"--version"}
    assert offered("brindle time --style ") == {"none", "fraction", "all"}
