"""`show`, `set` and `strip` take folders and names from standard input."""

import os
import pty
import subprocess

import pytest

from mp3_bytes import audio, id3v1, tag, text_frame
from tagged_file import errors_of_dry_run

AUDIO = audio()
SONG = tag(text_frame("TIT2", "Song"), padding=100) + AUDIO + id3v1(b"Song")


@pytest.fixture
def music(tmp_path):
    for name in ("b.mp3", "a/2.MP2", "a/1.mp3", "note.txt"):
        path = tmp_path / "music" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(SONG)
    return tmp_path / "music"


FILES = ["music/a/1.mp3", "music/a/2.MP2", "music/b.mp3"]
COMMANDS = {"set": ["set", "--album", "New"], "strip": ["strip", "--v1"]}
each_command = pytest.mark.parametrize("command", COMMANDS)


def changed(music):
    return sorted(str(path.relative_to(music.parent)) for path in music.rglob("*.*")
                  if path.read_bytes() != SONG)


def test_show_enters_folders(music, brindle):
    report = brindle("show", "music").stdout.decode()
    assert [line for line in report.split("\n") if line.startswith("music/")] == FILES
    names = brindle("show", "--json", "-", input=None,
                    stdin=subprocess.DEVNULL).stdout
    assert names == b""


def test_show_takes_names_from_standard_input(music, brindle, tmp_path):
    names = tmp_path / "names"
    names.write_bytes(b"music/b.mp3\0music/a\0")
    with open(names, "rb") as file:
        report = brindle("show", "-0", "-", stdin=file).stdout.decode()
    assert [line for line in report.split("\n") if line.startswith("music/")] == [
        "music/b.mp3", "music/a/1.mp3", "music/a/2.MP2"]


@each_command
def test_folder_without_anybody_to_ask_takes_yes(music, brindle, command):
    result = brindle(*COMMANDS[command], "music/b.mp3", "music")
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.startswith(b"brindle: Changing all files in a folder requires --yes\n")
    assert changed(music) == []


@each_command
def test_yes_changes_all_files_of_a_folder(music, brindle, command):
    result = brindle(*COMMANDS[command], "--yes", "music")
    assert (result.returncode, result.stderr) == (0, b"")
    assert [line.split(":")[0] for line in result.stdout.decode().splitlines()] == FILES
    assert changed(music) == FILES


@each_command
def test_dry_run_does_not_ask(music, brindle, command):
    result = brindle(*COMMANDS[command], "--dry-run", "music")
    assert (result.returncode, errors_of_dry_run(result)) == (0, b"")
    assert result.stdout.count(b"dry run") == 3
    assert changed(music) == []


@each_command
def test_names_from_standard_input_need_no_yes(music, brindle, tmp_path, command):
    (tmp_path / "names").write_bytes(b"music/b.mp3\nmusic/a/1.mp3\n")
    with open(tmp_path / "names", "rb") as file:
        result = brindle(*COMMANDS[command], "-", stdin=file)
    assert (result.returncode, result.stderr) == (0, b"")
    assert changed(music) == ["music/a/1.mp3", "music/b.mp3"]


@each_command
def test_folder_that_standard_input_names_takes_yes(music, brindle, tmp_path, command):
    (tmp_path / "names").write_bytes(b"music/a\nmusic/b.mp3\n")
    with open(tmp_path / "names", "rb") as file:
        result = brindle(*COMMANDS[command], "-", stdin=file)
    assert result.returncode == 1
    assert result.stderr == b"brindle: music/a: Is a folder; --yes changes all files in it\n"
    assert changed(music) == ["music/b.mp3"]
    with open(tmp_path / "names", "rb") as file:
        assert brindle(*COMMANDS[command], "--yes", "-", stdin=file).returncode == 0
    assert changed(music) == FILES


@pytest.mark.parametrize("answer, is_yes", [
    (b"y\n", True), (b"yes\n", True), (b"Y\n", True), (b"n\n", False), (b"\n", False),
    (b"\x04", False), (b"yy\n", False)])
@each_command
def test_person_at_the_terminal_is_asked(music, program, tmp_path, command, answer, is_yes):
    master, slave = pty.openpty()
    with subprocess.Popen([program, *COMMANDS[command], "music", "music/a"], cwd=tmp_path,
                          stdin=slave, stdout=subprocess.PIPE, stderr=slave) as child:
        os.close(slave)
        asked = b""
        while not asked.endswith(b"? [y/N] "):
            asked += os.read(master, 1000)
        assert asked == b"Change 5 files in music, music/a? [y/N] "
        os.write(master, answer)
        child.communicate(timeout=30)
    os.close(master)
    assert child.returncode == (0 if is_yes else 1)
    assert changed(music) == (FILES if is_yes else [])


def test_folder_that_cannot_be_listed_has_failed(brindle):
    result = brindle("set", "--album", "x", "--yes", "missing")
    assert result.returncode == 1
    assert result.stderr.startswith(b"brindle: missing: ")
