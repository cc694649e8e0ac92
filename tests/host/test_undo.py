"""What was changed comes back byte for byte, and nothing else is touched."""

import os
import signal
import subprocess

import pytest

from journal_bytes import part, read_journal
from mp3_bytes import audio, frame, id3v1, tag, text_frame, user_frame

AUDIO = audio()
RECORD = id3v1(b"Old", b"Old")
ROOM = tag(text_frame("TALB", "Album"), padding=600)
TIGHT = tag(text_frame("TALB", "Album"))
LARGE = tag(text_frame("TALB", "Album"), frame("PRIV", b"x\0" + os.urandom(20_000)))


def tag_of_version(version, *frames, padding=300):
    content = b"".join(frames) + bytes(padding)
    size = bytes((len(content) >> shift) & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3" + bytes((version, 0, 0)) + size + content


V22 = tag_of_version(2, b"TT2" + (5).to_bytes(3, "big") + b"\0Song")
V24 = tag_of_version(4, frame("TIT2", b"\x03" + "Grüße".encode()), frame("TDRC", b"\x032020-01-02"))

SHAPES = {
    "bare": AUDIO,
    "room": ROOM + AUDIO,
    "room_and_record": ROOM + AUDIO + RECORD,
    "tight": TIGHT + AUDIO,
    "record": AUDIO + RECORD,
    "version_2": V22 + AUDIO + RECORD,
    "version_4": V24 + AUDIO,
    "two_tags": ROOM + V24 + AUDIO + RECORD,
    "large_frame": LARGE + AUDIO,
    "junk_in_front": ROOM + b"junk" * 20 + AUDIO + RECORD,
    "fields": tag(user_frame("Cue In", "120"), text_frame("TIT2", "Old"), padding=50) + AUDIO,
}
CHANGES = {
    "title": ("set", "--title", "New"),
    "separate": ("set", "--title", "New", "--separate"),
    "record_alone": ("set", "--v1-comment", "New"),
    "grown": ("set", "--comment", "long " * 900),
    "atomic": ("set", "--title", "New", "--atomic"),
    "field": ("set", "--field", "Show=Breakfast"),
    "remove": ("set", "--remove", "album", "--remove", "title"),
    "preserve": ("set", "--title", "New", "--preserve"),
    "normalize": ("normalize",),
    "host_form": ("set", "--title", "New", "--host-form", "--force"),
    "strip_v1": ("strip", "--v1"),
    "strip_v2": ("strip", "--v2"),
    "strip_all": ("strip", "--all"),
}


def journals(state_folder):
    folder = state_folder / "brindle"
    return sorted(folder.iterdir()) if folder.exists() else []


def age(path, seconds=1_000_000_000):
    os.utime(path, ns=(seconds * 10**9 + 7, seconds * 10**9 + 123_456_789))


def state(path):
    status = path.stat()
    return (path.read_bytes(), status.st_mtime_ns, status.st_mode, status.st_nlink)


@pytest.mark.parametrize("change", CHANGES)
@pytest.mark.parametrize("shape", SHAPES)
def test_change_is_taken_back_and_made_again(brindle, tmp_path, state_folder, shape, change):
    path = tmp_path / "song.mp3"
    path.write_bytes(SHAPES[shape])
    age(path)
    before = state(path)
    accessed = path.stat().st_atime_ns
    result = brindle(*CHANGES[change], "song.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    changed = path.read_bytes()
    if changed == SHAPES[shape]:
        assert journals(state_folder) == []
        return
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert path.stat().st_atime_ns == accessed or change == "host_form"
    assert state(path) == before
    assert os.listdir(tmp_path) == ["song.mp3"]
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert path.read_bytes() == changed
    assert len(journals(state_folder)) == 3


def test_apply_is_taken_back(brindle, tmp_path):
    for name, content in SHAPES.items():
        (tmp_path / f"{name}.mp3").write_bytes(content)
    table = "file,title,cue-in\n" + "".join(f"{name}.mp3,New {name},77\n" for name in SHAPES)
    (tmp_path / "edits.csv").write_text(table)
    assert brindle("apply", "edits.csv").returncode == 0
    changed = {name: (tmp_path / f"{name}.mp3").read_bytes() for name in SHAPES}
    assert all(changed[name] != SHAPES[name] for name in SHAPES)
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode().splitlines()[-1].startswith(f"{len(SHAPES)} files restored")
    for name, content in SHAPES.items():
        assert (tmp_path / f"{name}.mp3").read_bytes() == content, name
    brindle("undo")
    assert {name: (tmp_path / f"{name}.mp3").read_bytes() for name in SHAPES} == changed


def test_journal_holds_what_brings_the_file_back(brindle, tmp_path, state_folder):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOM + AUDIO + RECORD)
    age(path)
    path.chmod(0o640)
    os.setxattr(path, "user.note", b"kept")
    brindle("set", "--title", "New", "song.mp3")
    (journal,) = journals(state_folder)
    assert journal.stat().st_mode == 0o100600
    assert journal.parent.stat().st_mode == 0o40700
    command, (entry,) = read_journal(journal.read_bytes())
    assert command == b"set"
    assert entry.name == entry.target == str(path).encode()
    assert entry.mode == 0o100640
    assert entry.modified == 1_000_000_000_123_456_789
    assert entry.created == 0
    assert entry.attributes == {b"user.note": b"kept"}
    content = path.read_bytes()
    kept_from, kept_to = entry.new_front[0], entry.new_front[0] + entry.kept[0]
    assert AUDIO in content[kept_from:kept_to]
    assert entry.new_front == part(content[:kept_from])
    assert entry.kept == part(content[kept_from:kept_to])
    assert entry.new_back == part(content[kept_to:])
    assert entry.front + content[kept_from:kept_to] + entry.back == ROOM + AUDIO + RECORD


def test_mode_and_attributes_come_back(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOM + AUDIO)
    path.chmod(0o640)
    os.setxattr(path, "user.note", b"kept")
    os.setxattr(path, "user.gone", b"too")
    brindle("set", "--title", "New", "song.mp3")
    path.chmod(0o604)
    os.setxattr(path, "user.note", b"changed")
    os.setxattr(path, "user.later", b"stays")
    os.removexattr(path, "user.gone")
    assert brindle("undo").returncode == 0
    assert path.stat().st_mode == 0o100640
    assert {name: os.getxattr(path, name) for name in os.listxattr(path)} == {
        "user.note": b"kept", "user.gone": b"too", "user.later": b"stays"}


def test_other_names_and_links_are_treated_as_set_does(brindle, tmp_path):
    (tmp_path / "song.mp3").write_bytes(ROOM + AUDIO)
    os.link(tmp_path / "song.mp3", tmp_path / "other.mp3")
    (tmp_path / "link.mp3").symlink_to("song.mp3")
    brindle("set", "--title", "New", "link.mp3")
    assert (tmp_path / "other.mp3").read_bytes() != ROOM + AUDIO  # in place, under each name
    assert brindle("undo").returncode == 0
    for name in ("song", "other", "link"):
        assert (tmp_path / f"{name}.mp3").read_bytes() == ROOM + AUDIO
    assert (tmp_path / "song.mp3").stat().st_nlink == 2
    assert os.readlink(tmp_path / "link.mp3") == "song.mp3"


def test_one_file_by_several_names_is_changed_in_turn(brindle, tmp_path):
    (tmp_path / "song.mp3").write_bytes(ROOM + AUDIO)
    os.link(tmp_path / "song.mp3", tmp_path / "other.mp3")
    result = brindle("strip", "--v2", "song.mp3", "other.mp3", "song.mp3")
    assert result.returncode == 0, result.stderr
    assert brindle("undo").returncode == 0
    assert (tmp_path / "song.mp3").read_bytes() == ROOM + AUDIO
    assert (tmp_path / "other.mp3").read_bytes() == ROOM + AUDIO


def test_files_of_a_run_can_be_chosen(brindle, tmp_path, state_folder):
    for name in "abc":
        (tmp_path / f"{name}.mp3").write_bytes(ROOM + AUDIO)
    brindle("set", "--title", "New", "a.mp3", "b.mp3", "c.mp3")
    (journal,) = journals(state_folder)
    result = brindle("undo", journal.name, "b.mp3", "missing.mp3")
    assert result.returncode == 1
    assert result.stderr == b"brindle: missing.mp3: The journal has no such file\n"
    restored = [name for name in "abc" if (tmp_path / f"{name}.mp3").read_bytes() == ROOM + AUDIO]
    assert restored == ["b"]
    result = brindle("undo", str(journal))
    assert result.returncode == 0
    assert b"b.mp3: already has its old content\n" in result.stdout
    assert b"2 files restored, 1 unchanged, 0 failed: set of " in result.stdout


def test_dry_run_of_an_undo_touches_nothing(brindle, tmp_path, state_folder):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOM + AUDIO)
    brindle("set", "--title", "New", "song.mp3")
    before = state(path)
    result = brindle("undo", "--dry-run")
    assert result.returncode == 0
    assert f"{path}: would be restored, {len(ROOM + AUDIO)} bytes\n" in result.stdout.decode()
    assert state(path) == before
    assert len(journals(state_folder)) == 1


@pytest.mark.parametrize("command", [("set", "--title", "New"), ("strip", "--v2")])
def test_dry_run_tells_the_size_of_the_journal(brindle, tmp_path, state_folder, command):
    for name in "abc":
        (tmp_path / f"{name}.mp3").write_bytes(LARGE + AUDIO)
    names = [f"{name}.mp3" for name in "abc"]
    note = brindle(*command, "--dry-run", *names).stderr.decode()
    assert journals(state_folder) == []
    brindle(*command, *names)
    (journal,) = journals(state_folder)
    told = int(note.removeprefix("The journal would have about ").removesuffix(" bytes\n"))
    assert abs(told - journal.stat().st_size) < 50


def test_dry_run_of_apply_tells_the_size_of_the_journal(brindle, tmp_path):
    (tmp_path / "a.mp3").write_bytes(ROOM + AUDIO)
    (tmp_path / "edits.csv").write_text("file,title\na.mp3,New\n")
    note = brindle("apply", "--dry-run", "edits.csv").stderr.decode()
    assert note.startswith("The journal would have about ")
    assert brindle("apply", "--dry-run", "--no-journal", "edits.csv").stderr == b""


CHANGED_SINCE = {
    "audio": lambda content: content[:-500] + b"\x55" + content[-499:],
    "front": lambda content: content[:14] + b"\x55" + content[15:],
    "longer": lambda content: content + b"\0",
    "shorter": lambda content: content[:-1],
    "empty": lambda content: b"",
}


@pytest.mark.parametrize("kind", CHANGED_SINCE)
@pytest.mark.parametrize("change", ["title", "grown", "strip_all"])
def test_file_that_was_changed_since_is_left_alone(brindle, tmp_path, change, kind):
    for name in "ab":
        (tmp_path / f"{name}.mp3").write_bytes(ROOM + AUDIO)
    brindle(*CHANGES[change], "a.mp3", "b.mp3")
    changed = CHANGED_SINCE[kind]((tmp_path / "a.mp3").read_bytes())
    (tmp_path / "a.mp3").write_bytes(changed)
    result = brindle("undo")
    assert result.returncode == 1
    assert result.stderr.decode().startswith(f"brindle: {tmp_path}/a.mp3: It has been changed since")
    assert result.stderr.count(b"\n") == 1
    assert (tmp_path / "a.mp3").read_bytes() == changed
    assert (tmp_path / "b.mp3").read_bytes() == ROOM + AUDIO


def in_place_halves(old, new):
    """The record is written first, then the tag: the other order comes from a cut undo."""
    front = len(ROOM)
    return [old[:front] + new[front:], new[:front] + old[front:]]


@pytest.mark.parametrize("half", [0, 1])
@pytest.mark.parametrize("old", [ROOM + AUDIO, ROOM + AUDIO + RECORD], ids=["new", "over"])
def test_change_in_place_that_was_cut_off_is_taken_back(brindle, tmp_path, old, half):
    path = tmp_path / "song.mp3"
    path.write_bytes(old)
    brindle("set", "--title", "New", "song.mp3")
    path.write_bytes(in_place_halves(old, path.read_bytes())[half])
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert path.read_bytes() == old


def test_missing_and_replaced_files_are_told(brindle, tmp_path):
    for name in "abcd":
        (tmp_path / f"{name}.mp3").write_bytes(ROOM + AUDIO)
    brindle("set", "--title", "New", *(f"{name}.mp3" for name in "abcd"))
    new = (tmp_path / "d.mp3").read_bytes()
    (tmp_path / "a.mp3").unlink()
    (tmp_path / "b.mp3").unlink()
    (tmp_path / "b.mp3").mkdir()
    (tmp_path / "elsewhere.mp3").write_bytes(new)
    (tmp_path / "c.mp3").unlink()
    (tmp_path / "c.mp3").symlink_to("elsewhere.mp3")
    result = brindle("undo")
    assert result.returncode == 1
    assert result.stderr.decode().splitlines() == [
        f"brindle: {tmp_path}/c.mp3: The name now belongs to another file",
        f"brindle: {tmp_path}/b.mp3: Is a directory",
        f"brindle: {tmp_path}/a.mp3: No such file or directory"]
    assert (tmp_path / "elsewhere.mp3").read_bytes() == new
    assert (tmp_path / "d.mp3").read_bytes() == ROOM + AUDIO


def test_run_that_changes_nothing_leaves_no_journal(brindle, tmp_path, state_folder):
    (tmp_path / "song.mp3").write_bytes(ROOM + AUDIO)
    brindle("set", "--remove", "title", "song.mp3")
    brindle("strip", "--v1", "song.mp3")
    brindle("set", "--title", "New", "--dry-run", "song.mp3")
    assert journals(state_folder) == []
    result = brindle("undo")
    assert result.returncode == 1
    assert result.stderr == f"brindle: {state_folder}/brindle: There is no journal\n".encode()


def test_many_files_in_groups(brindle, tmp_path):
    names = [f"{number:03}.mp3" for number in range(150)]
    for name in names:
        (tmp_path / name).write_bytes(ROOM + AUDIO + name.encode())
    result = brindle("set", "--title", "New", "--yes", ".")
    assert result.returncode == 0
    assert [line.split(":")[0] for line in result.stdout.decode().splitlines()] == [
        "./" + name for name in names]
    assert brindle("undo").returncode == 0
    for name in names:
        assert (tmp_path / name).read_bytes() == ROOM + AUDIO + name.encode()


def test_names_that_come_slowly_are_done_at_once(program, tmp_path):
    (tmp_path / "a.mp3").write_bytes(ROOM + AUDIO)
    (tmp_path / "b.mp3").write_bytes(ROOM + AUDIO)
    with subprocess.Popen([program, "set", "--title", "New", "-"], cwd=tmp_path,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as run:
        for name in (b"a.mp3", b"b.mp3"):
            run.stdin.write(name + b"\n")
            run.stdin.flush()
            assert run.stdout.readline().startswith(name)
        run.stdin.close()
        assert run.wait(timeout=30) == 0


@pytest.mark.parametrize("first", [("set", "--title", "New", "--yes", "."), ("apply", "edits.csv"),
                                   ("undo",)], ids=lambda words: words[0])
def test_run_that_is_interrupted_is_taken_back(program, brindle, tmp_path, state_folder, first):
    # More than the answers that wait for a reader.
    names = [f"{number:04}.mp3" for number in range(1_600)]
    for name in names:
        (tmp_path / name).write_bytes(ROOM + AUDIO)
    (tmp_path / "edits.csv").write_text("file,title\n" + "".join(f"{name},New\n" for name in names))
    if first == ("undo",):
        assert brindle("strip", "--v2", "--yes", ".").returncode == 0
    with subprocess.Popen([program, *first], cwd=tmp_path, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, pipesize=4096) as run:
        run.stdout.readline()
        run.send_signal(signal.SIGINT)
        run.stdout.read()
        assert run.wait(timeout=30) == 130
        assert b"brindle: interrupted after " in run.stderr.read()
    as_before = [name for name in names if (tmp_path / name).read_bytes() == ROOM + AUDIO]
    assert 0 < len(as_before) < len(names)
    # The rest of an undo, or what the run has done.
    journal = journals(state_folder)[0]
    assert brindle("undo", str(journal)).returncode == 0
    assert all((tmp_path / name).read_bytes() == ROOM + AUDIO for name in names)
