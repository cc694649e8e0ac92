"""Journals of brindle.exe, and the undoing of its changes."""

import os
import re
import subprocess
import time

import pytest

from conftest import ROOT, windows_name
from journal_bytes import BEGINNING, Entry, journal, part, read_journal, sha256
from mp3_bytes import audio, frame, id3v1, tag, text_frame

AUDIO = audio()
ROOM = tag(text_frame("TALB", "Album"), padding=600)
NEW = tag(text_frame("TIT2", "Song"), padding=600)
OLD = ROOM + AUDIO + id3v1(b"Old", b"Old")
NAME = "Grüße ☀.mp3"
LONG = "long " * 900
ENDING = "; nothing was changed; --no-journal does without one\n"

# Others can be given files only by root, who alone runs the 32-bit Wine.
needs_root = pytest.mark.skipif(os.geteuid() != 0, reason="only root can give files away")


def ticks(seconds):
    """Since 1601, in units of 100 ns."""
    return (seconds + 11_644_473_600) * 10**7


@pytest.fixture
def song(folder):
    path = folder / NAME
    path.write_bytes(OLD)
    os.utime(path, (1_000_000_000, 1_100_000_000))
    return path


def journals(state):
    return sorted((state / "brindle").glob("*"))


def recorded(path):
    """The name as a journal has it."""
    return "Z:" + str(path)


def entry_for(path, before, after):
    """The change of the bytes in front alone, from `before` to `after`, of the file that is there."""
    content = path.read_bytes()
    assert content.startswith(after)
    name = recorded(path).encode()
    return Entry(name, name, mode=0x80, accessed=ticks(10**9), modified=ticks(10**9),
                 front=before, kept=part(content[len(after):]), new_front=part(after))


@pytest.fixture
def given(folder):
    """Makes a journal of these bytes."""

    def make(content, mode=0o600):
        path = folder / "given.journal"
        path.write_bytes(content)
        path.chmod(mode)
        return path

    return make


# --- what is kept, and comes back

CHANGES = {
    "in_place": ("set", "--title", "New"),
    "rebuilt": ("set", "--comment", LONG),
    "strip": ("strip", "--all"),
}


@pytest.mark.parametrize("change", CHANGES)
def test_change_is_taken_back(brindle, song, folder, change):
    assert brindle(*CHANGES[change], windows_name(song))[0] == 0
    changed = song.read_bytes()
    assert changed != OLD
    status, printed = brindle("undo")
    assert (status, printed.splitlines()[0]) == (
        0, f"{recorded(song)}: restored, {len(OLD)} bytes")
    # Before the file is read.
    assert song.stat().st_atime == 1_000_000_000
    assert song.read_bytes() == OLD
    assert song.stat().st_mtime == 1_100_000_000
    assert {path.name for path in folder.iterdir()} == {NAME}
    if change == "strip":
        assert brindle("undo")[0] == 0
        assert song.read_bytes() == changed


def test_tables_and_normalized_files_are_taken_back(brindle, folder, state):
    content = tag(frame("TIT2", b"\1" + "Höhe".encode("utf-16"))) + AUDIO
    paths = [folder / f"{number} {NAME}" for number in range(3)]
    for path in paths:
        path.write_bytes(content)
    table = folder / "edits.csv"
    table.write_text("file,title\n" + "".join(
        f"{windows_name(path)},New\n" for path in paths), encoding="utf-8")
    for command in (("apply", windows_name(table)),
                    ("normalize", *map(windows_name, paths))):
        status, printed = brindle(*command)
        assert status == 0, printed
        assert all(path.read_bytes() != content for path in paths)
        status, printed = brindle("undo")
        assert (status, len(printed.splitlines())) == (0, 4)
        assert all(path.read_bytes() == content for path in paths)
    assert len(journals(state)) == 4


def test_journal_holds_what_brings_the_file_back(brindle, song, state):
    assert brindle("set", "--title", "New", windows_name(song))[0] == 0
    (kept,) = journals(state)
    # Others have no rights to either. Wine also gives the group those of the user.
    assert kept.stat().st_mode & 0o007 == 0
    assert kept.parent.stat().st_mode & 0o007 == 0
    command, (entry,) = read_journal(kept.read_bytes())
    assert command == b"set"
    assert entry.name == entry.target == recorded(song).encode()
    assert entry.modified == ticks(1_100_000_000)
    assert entry.accessed == ticks(1_000_000_000)
    assert entry.created > ticks(1_000_000_000)
    content = song.read_bytes()
    kept_from, kept_to = entry.new_front[0], entry.new_front[0] + entry.kept[0]
    assert AUDIO in content[kept_from:kept_to]
    assert entry.kept == part(content[kept_from:kept_to])
    assert entry.front + content[kept_from:kept_to] + entry.back == OLD


def shown_attributes(wine, path):
    before_name = wine("attrib", windows_name(path)).stdout.split(b"Z:")[0]
    return before_name.replace(b"A", b"").strip()


def test_attributes_come_back(brindle, wine, song):
    wine("attrib", "+h", windows_name(song))
    assert brindle("set", "--comment", LONG, windows_name(song))[0] == 0
    assert shown_attributes(wine, song) == b""
    assert brindle("undo")[0] == 0
    assert song.read_bytes() == OLD
    assert shown_attributes(wine, song) == b"H"


def test_other_case_names_the_same_file(brindle, song, folder, state):
    assert brindle("set", "--title", "New", windows_name(folder).upper() + "\\GRÜSSE ☀.MP3")[0] == 1
    assert brindle("set", "--title", "New", windows_name(folder).upper() + "\\GRÜßE ☀.MP3")[0] == 0
    (kept,) = journals(state)
    assert read_journal(kept.read_bytes())[1][0].name == recorded(song).encode()
    assert brindle("undo", kept.name, windows_name(song).lower())[0] == 0
    assert song.read_bytes() == OLD


def test_file_changed_since_is_left_alone(brindle, song, folder):
    other = folder / "other.mp3"
    other.write_bytes(OLD)
    assert brindle("set", "--title", "New", windows_name(song), windows_name(other))[0] == 0
    since = song.read_bytes()[:-1] + b"\1"
    song.write_bytes(since)
    status, printed = brindle("undo")
    assert status == 1
    assert f"brindle: {recorded(song)}: It has been changed since: other bytes\n" in printed
    assert "1 file restored, 0 unchanged, 1 failed" in printed
    assert (song.read_bytes(), other.read_bytes()) == (since, OLD)


def test_dry_runs_write_nothing(brindle, song, state):
    status, printed = brindle("set", "--dry-run", "--title", "New", windows_name(song))
    assert (status, song.read_bytes()) == (0, OLD)
    assert re.search(r"^The journal would have about \d+ bytes$", printed, re.MULTILINE)
    assert journals(state) == []
    assert brindle("set", "--title", "New", windows_name(song))[0] == 0
    changed = song.read_bytes()
    status, printed = brindle("undo", "--dry-run")
    assert (status, song.read_bytes()) == (0, changed)
    assert f"{recorded(song)}: would be restored, {len(OLD)} bytes\n" in printed
    assert len(journals(state)) == 1


# --- where journals are kept, and how they go

def test_journals_are_listed(brindle, song, state):
    assert brindle("journal") == (0, "")
    brindle("set", "--title", "New", windows_name(song))
    (kept,) = journals(state)
    (state / "brindle" / "2.journal").write_bytes(b"no journal")
    (state / "brindle" / "2.journal").chmod(0o600)
    status, printed = brindle("journal")
    when = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ"
    size = kept.stat().st_size
    listed, refused = sorted(printed.splitlines())
    assert status == 1
    assert re.fullmatch(rf"{when}  set  1 file  {size} bytes  {recorded(kept)}", listed)
    assert refused == f"brindle: {recorded(kept.parent)}/2.journal: Not a journal"
    status, printed = brindle("journal", kept.name)
    assert status == 0
    assert printed.splitlines()[1] == (
        f"{recorded(song)}: {len(OLD)} bytes before, {song.stat().st_size} after")


def test_journal_has_another_place_or_none(brindle, song, folder, state):
    other = windows_name(folder / "run.journal")
    assert brindle("set", "--no-journal", "--title", "New", windows_name(song))[0] == 0
    changed = song.read_bytes()
    assert changed != OLD
    assert brindle("set", "--journal", other, "--title", "Newer", windows_name(song))[0] == 0
    assert journals(state) == []
    # What is there already stays.
    newer, kept = song.read_bytes(), (folder / "run.journal").read_bytes()
    assert brindle("set", "--journal", other, "--title", "No", windows_name(song)) == (
        1, f"brindle: no journal can be kept: {other}: File exists{ENDING}")
    assert (song.read_bytes(), (folder / "run.journal").read_bytes()) == (newer, kept)
    assert brindle("undo", "--no-journal", other)[0] == 0
    assert song.read_bytes() == changed
    assert journals(state) == []


def test_place_that_cannot_be_used_refuses_the_run(brindle, song, state):
    (state / "file").write_bytes(b"")
    place = windows_name(state / "file")
    status, printed = brindle("set", "--title", "New", windows_name(song), place=place)
    assert status == 1
    assert printed.startswith(f"brindle: no journal can be kept: {recorded(state)}/file/brindle: ")
    assert printed.endswith(ENDING)
    for place in ("", "relative"):
        assert brindle("set", "--title", "New", windows_name(song), place=place) == (
            1, "brindle: no journal can be kept: the home folder: LOCALAPPDATA is not set" + ENDING)
    assert song.read_bytes() == OLD


def test_old_journals_go_by_age(brindle, song, state):
    brindle("set", "--title", "New", windows_name(song))
    brindle("undo")
    first, second = journals(state)
    os.utime(first, (time.time() - 89.9 * 86_400,) * 2)
    os.utime(second, (time.time() - 90.1 * 86_400,) * 2)
    brindle("set", "--title", "New", windows_name(song))
    left = journals(state)
    assert first in left and second not in left and len(left) == 2
    # The one that is taken back is in use.
    brindle("undo", "--journal-days", "0")
    assert len(journals(state)) == 2 and journals(state)[0] == left[1]


def test_journal_of_a_run_that_goes_on_stays_and_is_not_undone(brindle, brindle_script, bits, song, folder,
                                                                state):
    other = folder / "other.mp3"
    other.write_bytes(OLD)
    with subprocess.Popen(
            [ROOT / "scripts" / "wine", "run", bits, ROOT, "cmd", "/c",
             windows_name(brindle_script(windows_name(state))), "set", "--title", "New", "-"],
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as run:
        run.stdin.write(windows_name(other).encode() + b"\n")
        run.stdin.flush()
        deadline = time.monotonic() + 20
        while other.read_bytes() == OLD and time.monotonic() < deadline:
            time.sleep(0.02)
        (going_on,) = journals(state)
        assert brindle("undo") == (
            1, f"brindle: {recorded(going_on)}: Its run is still going on\n")
        brindle("set", "--title", "New", "--journal-days", "0", windows_name(song))
        assert going_on in journals(state) and len(journals(state)) == 2
        run.stdin.close()
        assert run.wait(timeout=30) == 0
    assert other.read_bytes() != OLD


# --- those that are not to be trusted

def test_hand_made_journal_is_taken_back(brindle, song, given):
    """So those below are refused for what is wrong with them alone."""
    song.write_bytes(NEW + AUDIO)
    path = given(journal(entry_for(song, ROOM, NEW)))
    assert brindle("undo", windows_name(path))[0] == 0
    assert song.read_bytes() == ROOM + AUDIO
    assert song.stat().st_mtime == 10**9


def test_other_names_are_refused(brindle, song, folder, given):
    song.write_bytes(NEW + AUDIO)
    os.link(song, folder / "song.txt")
    os.link(song, folder / "plain.mp3")
    place = recorded(folder)
    names = ["plain.mp3", "./plain.mp3", f"{place}/../{folder.name}/plain.mp3",
             f"{place}/./plain.mp3", f"{place}//plain.mp3", f"{place}/song.txt", "", "/", "Z:/",
             windows_name(folder / "plain.mp3"), str(folder / "plain.mp3"), f"Z:{folder.name}.mp3",
             f"{place}/plain.mp3\0", f"{place}/plain.mp3.", f"{place}/plain.mp3 ",
             f"{place}/song.txt:stream.mp3", f"//?/{place}/plain.mp3", f"//./{place}/plain.mp3",
             "//./pipe/plain.mp3", f"{place}/*.mp3", f"{place}/./", f"{place}/\x01.mp3"]
    entries = []
    for name in names:
        entry = entry_for(song, ROOM, NEW)
        entry.name = name.encode()
        entries.append(entry)
    status, printed = brindle("undo", windows_name(given(journal(*entries))))
    assert status == 1
    assert printed.count(": The journal names no MP3 file\n") == len(entries)
    assert f"0 files restored, 0 unchanged, {len(entries)} failed" in printed
    assert song.read_bytes() == NEW + AUDIO


def test_names_of_other_files_are_refused(brindle, song, folder, given):
    song.write_bytes(NEW + AUDIO)
    (folder / "folder.mp3").mkdir()
    try:
        entries = []
        for name, target in ((NAME, "other.mp3"), ("gone.mp3", "gone.mp3"),
                             ("folder.mp3", "folder.mp3")):
            entry = entry_for(song, ROOM, NEW)
            entry.name = recorded(folder / name).encode()
            entry.target = recorded(folder / target).encode()
            entries.append(entry)
        entries[1].name = recorded(folder).encode() + b"/\xff.mp3"
        status, printed = brindle("undo", windows_name(given(journal(*entries))))
    finally:
        (folder / "folder.mp3").rmdir()
    assert status == 1
    assert f"{recorded(song)}: The name now belongs to another file\n" in printed
    assert f"{recorded(folder)}/\\xFF.mp3: No such file or directory\n" in printed
    assert f"{recorded(folder / 'folder.mp3')}: Is a directory\n" in printed
    assert song.read_bytes() == NEW + AUDIO


def test_damaged_journals_change_nothing(brindle, song, given):
    song.write_bytes(NEW + AUDIO)
    entry = entry_for(song, ROOM, NEW)
    good = journal(entry)
    wrong = entry_for(song, ROOM, NEW)
    wrong.kept = (1, sha256(b""))
    cases = {
        "checksum": (good[:-1] + bytes([good[-1] ^ 1]), 1, "it is damaged"),
        "length": (journal(wrong), 1, "It has been changed since"),
        "torn": (good[:-1], 0, "its last entry is incomplete and is ignored"),
        "run": (BEGINNING, 1, "It is empty"),
        "other": (OLD, 1, "Not a journal"),
    }
    for case, (content, expected, reason) in cases.items():
        status, printed = brindle("undo", windows_name(given(content)))
        assert (status, reason in printed) == (expected, True), (case, printed)
        assert song.read_bytes() == NEW + AUDIO, case


def test_journal_that_others_can_write_is_refused(brindle, song, given):
    song.write_bytes(NEW + AUDIO)
    path = given(journal(entry_for(song, ROOM, NEW)), 0o602)
    for command in ("undo", "journal"):
        assert brindle(command, windows_name(path)) == (
            1, f"brindle: {windows_name(path)}: Others can write to it\n")
    assert song.read_bytes() == NEW + AUDIO
    path.chmod(0o644)
    assert brindle("undo", windows_name(path))[0] == 0
    assert song.read_bytes() == ROOM + AUDIO


@needs_root
def test_journal_of_somebody_else_is_refused(brindle, song, given):
    song.write_bytes(NEW + AUDIO)
    path = given(journal(entry_for(song, ROOM, NEW)), 0o644)
    os.chown(path, 65_534, 65_534)
    assert brindle("undo", windows_name(path)) == (
        1, f"brindle: {windows_name(path)}: It belongs to another user\n")
    assert song.read_bytes() == NEW + AUDIO


def test_what_is_no_file_is_no_journal(brindle, state, folder):
    assert brindle("undo", windows_name(folder)) == (
        1, f"brindle: {windows_name(folder)}: Not a regular file\n")
    gone = windows_name(folder / "gone.journal")
    assert brindle("undo", gone) == (1, f"brindle: {gone}: No such file or directory\n")
    assert brindle("undo") == (1, f"brindle: {recorded(state)}/brindle: There is no journal\n")
