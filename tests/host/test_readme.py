"""What README.md shows of the program is what the program prints."""

import json
import os
import pathlib
import re
import shutil
import subprocess

import pytest

from mp3_bytes import audio
from ssh_server import ssh_server

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


@pytest.mark.parametrize("arguments", [
    ["strip", "--all", "--dry-run", SAMPLE], ["scan", "examples"], ["check", "examples"],
    ["listen", "examples"],
    ["listen", "--set", "cue-in,loudness", "--dry-run", "examples"]],
    ids=lambda arguments: " ".join(arguments[:2]))
def test_the_command_is_shown_as_really_printed(brindle, arguments):
    printed = brindle(*arguments, cwd=ROOT, text=True).stdout
    assert SAMPLE in printed
    assert f"$ ./run {' '.join(arguments)}\n{printed}" in README


def pipelines():
    """The examples of the shell that use find."""
    return [block for block in re.findall(r"^```\n(.*?)```$", README, re.MULTILINE | re.DOTALL)
            if re.search(r"^find ", block, re.MULTILINE)]


@pytest.fixture
def music(program, tmp_path):
    """Some names that a shell could stumble over, and the program where a shell finds it."""
    names = ["a.mp3", "b c.mp3", "d\ne.mp3", "-f.mp3", "g'h.mp3", "caf\u00e9.mp3", "x/$(i).mp3", "j.MP3",
             "k.mp2"]
    for name in names:
        path = tmp_path / "music" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(audio())
    (tmp_path / "bin").mkdir()
    (tmp_path / "bin" / "brindle").symlink_to(program)
    return {f"{tmp_path}/music/{name}" for name in names}


def run_in_shell(command, folder, **environment):
    subprocess.run(
        ["bash", "-o", "pipefail", "-c", command.replace("/music", f"{folder}/music")], cwd=folder,
        check=True, capture_output=True, stdin=subprocess.DEVNULL, timeout=120,
        env={**os.environ, "PATH": f"{folder}/bin:{os.environ['PATH']}", "HOME": str(folder),
             **environment})


def test_names_from_find_are_checked(music, tmp_path):
    (command,) = [one for one in pipelines() if "brindle check" in one]
    (first,) = re.findall(r"^\(`(touch .*?)` once", README, re.MULTILINE)
    run_in_shell(first, tmp_path)

    def checked_files():
        run_in_shell(command, tmp_path)
        lines = (tmp_path / "verdicts.jsonl").read_text().splitlines()
        return {json.loads(line)["file"] for line in lines}

    assert checked_files() == music
    new = tmp_path / "music" / "new.Mp2"
    new.write_bytes(audio())
    later = (tmp_path / "last-check").stat().st_mtime_ns + 1
    os.utime(new, ns=(later, later))
    assert checked_files() == {str(new)}


@pytest.mark.skipif(shutil.which("parallel") is None, reason="needs parallel")
def test_library_is_spread_over_machines(music, tmp_path):
    (command,) = [one for one in pipelines() if "--sshlogin" in one]
    # This machine takes the place of the others, and a block has only a few names.
    here = re.sub(r"--sshlogin \S+", "--sshlogin 2/:", command).replace("100k", "100")
    assert here != command
    run_in_shell(here, tmp_path)
    lines = (tmp_path / "library.jsonl").read_text().splitlines()
    assert {json.loads(line)["file"] for line in lines} == music
    assert len(lines) == len(music)


@pytest.mark.deep
@pytest.mark.skipif(shutil.which("parallel") is None, reason="needs parallel")
def test_library_is_spread_over_machines_through_ssh(music, program, tmp_path):
    (command,) = [one for one in pipelines() if "--sshlogin" in one]
    machines = re.search(r"--sshlogin (\S+)", command).group(1).split(",")
    # Enough names for some blocks for each machine.
    for number in range(2500):
        os.link(tmp_path / "music" / "a.mp3", tmp_path / "music" / f"{number:0230}.mp3")
    os.link(tmp_path / "music" / "a.mp3", os.fsencode(tmp_path / "music") + b"/\xff\n.mp3")
    run_in_shell("find /music -iname '*.mp[23]' -print0 | brindle scan --json --quiet -0 - > one",
                 tmp_path)

    # Only the other machines have the program.
    (tmp_path / "bin" / "brindle").unlink()
    there = tmp_path / "there"
    there.mkdir()
    (there / "brindle").write_text(
        f'#!/bin/sh\necho "$LOGIN" >>{tmp_path}/logins\nexec {program} "$@"\n')
    (there / "brindle").chmod(0o755)
    with ssh_server(tmp_path / "ssh", machines, f"{there}:/usr/bin:/bin") as ssh:
        run_in_shell(command, tmp_path, PARALLEL_SSH=ssh)
    assert set((tmp_path / "logins").read_text().split()) == set(machines)
    assert (tmp_path / "library.jsonl").read_bytes() == (tmp_path / "one").read_bytes()
    assert (tmp_path / "one").read_bytes().count(b"\n") == len(music) + 2501
