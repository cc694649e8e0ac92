"""An undo also takes back the pictures that `brindle normalize` has written beside the files."""

import collections
import os
import shutil
import signal
import subprocess

import pytest

from journal_bytes import (
    BEGINNING, Picture, entry_for, journal, packed, part, read_journal, run_record)
from mp3_bytes import audio, frame, tag

AUDIO = audio()
JPEG = b"\xff\xd8\xff\xe0" + bytes(range(256)) * 40
GIF = b"GIF89a" + bytes(range(255, -1, -1)) * 3
FRONT = frame("APIC", b"\0image/jpeg\0\3\0" + JPEG)
BACK = frame("APIC", b"\0image/gif\0\4back\0" + GIF)
SONG = tag(frame("TIT2", b"\1" + "\ufeffSong".encode("utf-16le")), FRONT, BACK, padding=100) + AUDIO
COVERS = {"song.cover.jpg": JPEG, "song.cover-2.gif": GIF}


@pytest.fixture
def song(tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(SONG)
    os.utime(path, ns=(10**18 + 7, 10**18 + 123_456_789))
    return path


def journals(state_folder):
    return sorted((state_folder / "brindle").iterdir())


def listing(folder):
    """All that a user sees of a folder."""
    return {path.name: (os.readlink(path) if path.is_symlink() else path.read_bytes(),
                        path.lstat().st_mode, path.lstat().st_mtime_ns)
            for path in folder.iterdir()}


def extract(brindle, *more, what="extract"):
    result = brindle("normalize", "--pictures", what, *more, "song.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    return result


@pytest.mark.parametrize("what", ["extract", "extract,drop"])
def test_undo_leaves_the_folder_as_it_was(brindle, song, tmp_path, what):
    (tmp_path / "song.cover-3.jpg").write_bytes(b"of the user")
    before = listing(tmp_path)
    extract(brindle, what=what)
    after = listing(tmp_path)
    assert {name: after[name][0] for name in COVERS} == COVERS
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode().splitlines()[0].endswith(
        "; removed song.cover.jpg; removed song.cover-2.gif")
    assert listing(tmp_path) == before
    # And back, with the same bytes, access rights and times.
    os.chmod(song, 0o600)
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert b"; wrote song.cover.jpg; wrote song.cover-2.gif\n" in result.stdout
    made = listing(tmp_path)
    assert {name: made[name] for name in COVERS} == {name: after[name] for name in COVERS}
    assert {name: content for name, (content, *_) in made.items()} == {
        name: content for name, (content, *_) in after.items()}
    assert brindle("undo").returncode == 0
    assert {name: content for name, (content, *_) in listing(tmp_path).items()} == {
        name: content for name, (content, *_) in before.items()}


def test_file_that_did_not_change_itself(brindle, song, tmp_path, state_folder):
    """Its tag has the form of hosts already."""
    brindle("normalize", "song.mp3")
    before = listing(tmp_path)
    assert b"nothing written" in extract(brindle).stdout
    assert set(listing(tmp_path)) == {"song.mp3", *COVERS}
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert b"song.mp3: already has its old content; removed song.cover.jpg; removed" in result.stdout
    assert listing(tmp_path) == before
    assert brindle("undo").returncode == 0
    assert {name: content for name, (content, *_) in listing(tmp_path).items()} == {
        "song.mp3": before["song.mp3"][0], **COVERS}
    assert len(journals(state_folder)) == 4


def test_shrunk_pictures_are_taken_back(brindle, song, tmp_path):
    image = pytest.importorskip("PIL.Image")
    noise = image.frombytes("RGB", (400, 300), os.urandom(360_000))
    noise.save(tmp_path / "noise.png")
    content = (tmp_path / "noise.png").read_bytes()
    (tmp_path / "noise.png").unlink()
    song.write_bytes(tag(frame("APIC", b"\0image/png\0\3\0" + content)) + AUDIO)
    before = listing(tmp_path)
    extract(brindle, what="shrink,extract")
    assert (tmp_path / "song.cover.png").read_bytes() == content
    assert brindle("undo").returncode == 0
    assert listing(tmp_path) == before


def test_journal_holds_no_picture_that_it_can_tell_by_its_hash(brindle, song, state_folder):
    extract(brindle)
    _, (entry,) = read_journal(journals(state_folder)[0].read_bytes())
    assert entry.pictures == [Picture(1, b"jpg", content=part(JPEG)),
                              Picture(2, b"gif", content=part(GIF))]
    brindle("undo")
    _, (entry,) = read_journal(journals(state_folder)[1].read_bytes())
    assert [(one.number, one.extension, one.is_made, one.body) for one in entry.pictures] == [
        (1, b"jpg", 0, JPEG), (2, b"gif", 0, GIF)]


def test_journal_lists_pictures(brindle, song, state_folder):
    extract(brindle)
    brindle("undo")
    first, second = journals(state_folder)
    assert b" after; made song.cover.jpg; made song.cover-2.gif\n" in brindle(
        "journal", first.name).stdout
    assert b" after; removed song.cover.jpg; removed song.cover-2.gif\n" in brindle(
        "journal", second.name).stdout


@pytest.mark.parametrize("command", [("normalize", "--pictures", "extract", "song.mp3"), ("undo",)])
def test_dry_run_touches_nothing(brindle, song, tmp_path, state_folder, command):
    if command[0] == "undo":
        extract(brindle)
    before, kept = listing(tmp_path), len(list(state_folder.glob("brindle/*")))
    result = brindle(*command, "--dry-run")
    assert result.returncode == 0
    if command[0] == "undo":
        assert (f"{song}: would be restored, {len(SONG)} bytes; would remove song.cover.jpg; "
                "would remove song.cover-2.gif\n") in result.stdout.decode()
    assert listing(tmp_path) == before
    assert len(list(state_folder.glob("brindle/*"))) == kept
    told = int(result.stderr.split()[5])
    assert brindle(*command).returncode == 0
    assert abs(told - journals(state_folder)[-1].stat().st_size) < 50


CHANGES = {
    "a byte": (lambda path: path.write_bytes(JPEG[:-1] + b"?"), "other bytes than were written"),
    "longer": (lambda path: path.write_bytes(JPEG + b"\0"),
               f"it has {len(JPEG) + 1} bytes, not {len(JPEG)}"),
    "a folder": (lambda path: (path.unlink(), path.mkdir()), "it is not a regular file"),
    "a fifo": (lambda path: (path.unlink(), os.mkfifo(path)), "it is not a regular file"),
    "a link": (lambda path: (path.rename(path.with_name("other.jpg")),
                             path.symlink_to("other.jpg")), "it is not a regular file"),
    "a dangling link": (lambda path: (path.unlink(), path.symlink_to("nowhere")),
                        "it is not a regular file"),
}


def identity(path):
    """All but the time of access: a look changes that."""
    status = path.lstat()
    return status.st_ino, status.st_mode, status.st_size, status.st_mtime_ns, status.st_ctime_ns


@pytest.mark.parametrize("change", CHANGES)
@pytest.mark.parametrize("options", [(), ("--dry-run",)], ids=["undo", "dry"])
def test_picture_that_was_changed_stays(brindle, song, tmp_path, change, options):
    extract(brindle, what="extract,drop")
    changed, reason = CHANGES[change]
    changed(tmp_path / "song.cover.jpg")
    kept = identity(tmp_path / "song.cover.jpg")
    result = brindle("undo", *options)
    assert result.returncode == 1
    assert result.stderr.decode().splitlines()[0] == (
        f"brindle: {song}: would be restored, {len(SONG)} bytes; would remove song.cover-2.gif"
        f"; song.cover.jpg stays: {reason}" if options else
        f"brindle: {song}: restored, {len(SONG)} bytes; removed song.cover-2.gif"
        f"; song.cover.jpg stays: {reason}")
    assert identity(tmp_path / "song.cover.jpg") == kept
    assert ("other.jpg" in os.listdir(tmp_path)) == (change == "a link")
    if change == "a link":
        assert (tmp_path / "other.jpg").read_bytes() == JPEG
    assert (tmp_path / "song.cover-2.gif").exists() == bool(options)
    assert (song.read_bytes() == SONG) == (not options)


def test_picture_that_is_gone_is_no_error(brindle, song, tmp_path):
    extract(brindle)
    (tmp_path / "song.cover.jpg").unlink()
    result = brindle("undo")
    assert (result.returncode, result.stderr) == (0, b"")
    assert os.listdir(tmp_path) == ["song.mp3"]
    # It was not there before that undo.
    assert brindle("undo").returncode == 0
    assert sorted(os.listdir(tmp_path)) == ["song.cover-2.gif", "song.mp3"]


def test_picture_of_a_file_that_was_changed_stays(brindle, song, tmp_path):
    """It may be the only one."""
    extract(brindle, what="extract,drop")
    brindle("set", "--title", "New", "song.mp3", "--no-journal")
    result = brindle("undo")
    assert result.returncode == 1
    assert b"It has been changed since" in result.stderr
    assert {name: (tmp_path / name).read_bytes() for name in COVERS} == COVERS


@pytest.mark.parametrize("obstacle", ["file", "link", "folder"])
def test_nothing_is_overwritten_when_pictures_come_back(brindle, song, tmp_path, obstacle):
    extract(brindle, what="extract,drop")
    brindle("undo")
    place = tmp_path / "song.cover-2.gif"
    if obstacle == "file":
        place.write_bytes(GIF[:-1] + b"?")
    elif obstacle == "link":
        place.symlink_to("nowhere")
    else:
        place.mkdir()
    before = None if obstacle == "folder" else listing(tmp_path)
    result = brindle("undo")
    assert (result.returncode, result.stderr.decode()) == (
        1, f"brindle: {song}: song.cover-2.gif is another file\n")
    assert song.read_bytes() == SONG
    assert not (tmp_path / "song.cover.jpg").exists() and not (tmp_path / "nowhere").exists()
    if before:
        assert listing(tmp_path) == before


def test_same_picture_in_its_place_stays_as_it_is(brindle, song, tmp_path):
    extract(brindle)
    brindle("undo")
    (tmp_path / "song.cover.jpg").write_bytes(JPEG)
    os.chmod(tmp_path / "song.cover.jpg", 0o600)
    assert brindle("undo").returncode == 0
    assert {name: (tmp_path / name).read_bytes() for name in COVERS} == COVERS
    assert (tmp_path / "song.cover.jpg").stat().st_mode == 0o100600


def test_run_without_a_journal_leaves_its_pictures(brindle, song, tmp_path):
    extract(brindle, "--no-journal")
    assert brindle("undo").returncode == 1
    assert set(os.listdir(tmp_path)) == {"song.mp3", *COVERS}


def test_pictures_lie_beside_the_name_of_a_link(brindle, song, tmp_path):
    (tmp_path / "folder").mkdir()
    (tmp_path / "folder" / "link.mp3").symlink_to("../song.mp3")
    result = brindle("normalize", "--pictures", "extract", "folder/link.mp3")
    assert result.returncode == 0, result.stderr
    assert set(os.listdir(tmp_path / "folder")) == {"link.mp3", "link.cover.jpg",
                                                     "link.cover-2.gif"}
    assert brindle("undo").returncode == 0
    assert os.listdir(tmp_path / "folder") == ["link.mp3"]
    assert song.read_bytes() == SONG


# --- journals that are not to be trusted

def undo(brindle, content, tmp_path):
    path = tmp_path / "given.journal"
    path.write_bytes(content)
    path.chmod(0o600)
    return brindle("undo", "--no-journal", "given.journal")


def entry_with(song, *pictures):
    entry = entry_for(song, b"", b"")
    entry.pictures = list(pictures)
    return entry


def test_hand_made_journal_is_taken_back(brindle, tmp_path, song):
    """So those below are refused for what is wrong with them alone."""
    (tmp_path / "song.cover.jpg").write_bytes(JPEG)
    entry = entry_with(song, Picture(1, b"jpg", content=part(JPEG)),
                       Picture(99, b"gif", is_made=0, body=GIF))
    result = undo(brindle, journal(entry), tmp_path)
    assert (result.returncode, result.stderr) == (0, b"")
    assert not (tmp_path / "song.cover.jpg").exists()
    assert (tmp_path / "song.cover-99.gif").read_bytes() == GIF


@pytest.mark.parametrize("is_made", [0, 1])
@pytest.mark.parametrize("number, extension", [
    (0, b"jpg"), (-1, b"jpg"), (100, b"jpg"), (2**62, b"jpg"), (1, b"mp3"), (1, b"txt"), (1, b""),
    (1, b"jpg/../../other.jpg"), (1, b"/../other.jpg"), (1, b"jpg\0"), (1, b"JPG"), (1, b".jpg")])
def test_other_names_are_refused(brindle, tmp_path, song, number, extension, is_made):
    (tmp_path / "song.cover.jpg").mkdir()
    for name in ("other.jpg", "song.cover.mp3", "song.cover.txt", "song.cover-100.jpg",
                 "song.cover.", "song.cover-0.jpg"):
        (tmp_path / name).write_bytes(JPEG)
    before = set(os.listdir(tmp_path))
    entry = entry_with(song, Picture(number, extension, is_made, part(JPEG), JPEG))
    result = undo(brindle, journal(entry), tmp_path)
    assert (result.returncode, result.stderr.decode()) == (
        1, f"brindle: {song}: The journal names no picture of the file\n")
    assert set(os.listdir(tmp_path)) - {"given.journal"} == before
    assert (tmp_path / "other.jpg").read_bytes() == JPEG


def test_file_in_another_folder_is_refused(brindle, tmp_path, song):
    """The folder in the name is a link, so the pictures would be beside another file."""
    (tmp_path / "way").symlink_to(".")
    (tmp_path / "song.cover.jpg").write_bytes(JPEG)
    entry = entry_with(song, Picture(1, b"jpg", content=part(JPEG)))
    entry.name = os.fsencode(tmp_path / "way" / "song.mp3")
    result = undo(brindle, journal(entry), tmp_path)
    assert result.returncode == 1
    assert b"The journal names a file in another folder" in result.stderr
    assert (tmp_path / "song.cover.jpg").read_bytes() == JPEG


@pytest.mark.parametrize("content", [(len(JPEG), ""), (len(JPEG), "x" * 64), (0, part(b"")[1]),
                                     (2**60, part(JPEG)[1]), (len(JPEG) - 1, part(JPEG[:-1])[1])])
def test_picture_with_a_wrong_mark_stays(brindle, tmp_path, song, content):
    (tmp_path / "song.cover.jpg").write_bytes(JPEG)
    entry = entry_with(song, Picture(1, b"jpg", content=content))
    assert undo(brindle, journal(entry), tmp_path).returncode == 1
    assert (tmp_path / "song.cover.jpg").read_bytes() == JPEG


@pytest.mark.parametrize("count", [-1, 2, 60_000, 2**62])
def test_wrong_count_of_pictures_is_damage(brindle, tmp_path, song, count):
    (tmp_path / "song.cover.jpg").write_bytes(JPEG)
    picture = Picture(1, b"jpg", content=part(JPEG))
    record = entry_with(song, picture).record()
    place = len(record) - len(picture.record()) - 8
    record = record[:place] + count.to_bytes(8, "little", signed=True) + record[place + 8:]
    result = undo(brindle, BEGINNING + run_record() + packed(record), tmp_path)
    assert result.returncode == 1 and b"it is damaged" in result.stderr
    assert (tmp_path / "song.cover.jpg").read_bytes() == JPEG


def test_torn_entry_is_ignored(brindle, tmp_path, song):
    """The run that was killed while it wrote it has not yet written the picture."""
    (tmp_path / "song.cover.jpg").write_bytes(JPEG)
    content = journal(entry_with(song, Picture(1, b"jpg", content=part(JPEG))))
    beginning = len(BEGINNING + run_record())
    for length in range(beginning + 1, len(content), 7):
        result = undo(brindle, content[:length], tmp_path)
        assert result.returncode == 0
        assert b"its last entry is incomplete and is ignored" in result.stderr
        assert (tmp_path / "song.cover.jpg").read_bytes() == JPEG
    assert undo(brindle, content, tmp_path).returncode == 0
    assert not (tmp_path / "song.cover.jpg").exists()


# --- kills

CALLS = ("write", "pwrite64", "fsync", "fdatasync", "rename", "unlink", "ftruncate", "openat",
         "fchmod", "utimensat", "close")


@pytest.mark.deep
@pytest.mark.plain_build
@pytest.mark.skipif(shutil.which("strace") is None, reason="needs strace")
@pytest.mark.parametrize("turn", ["undo", "redo"])
@pytest.mark.parametrize("what", ["extract", "extract,drop"])
def test_undo_that_is_killed_at_each_call_goes_on(program, brindle, song, tmp_path, state_folder,
                                                  what, turn):
    """And at no time is a picture neither in the tag nor in a file."""

    def contents():
        return {path.name: path.read_bytes() for path in tmp_path.iterdir() if path.name != "trace"}

    def prepare():
        shutil.rmtree(state_folder / "brindle", ignore_errors=True)
        for name in os.listdir(tmp_path):
            (tmp_path / name).unlink()
        song.write_bytes(SONG)
        extract(brindle, what=what)
        if turn == "redo":
            assert brindle("undo").returncode == 0
        return str(journals(state_folder)[-1])

    def run(given, *tracing):
        return subprocess.run(["strace", "-f", "-qq", "-o", "trace", *tracing, program, "undo", given],
                              cwd=tmp_path, capture_output=True, check=False, timeout=60).returncode

    given = prepare()
    assert run(given, "-e", "trace=" + ",".join(CALLS)) == 0
    calls = collections.Counter(line.split()[1].split("(")[0]
                                for line in (tmp_path / "trace").read_text().splitlines())
    assert calls["unlink" if turn == "undo" else "fsync"] >= 2, calls
    wanted = contents()
    assert set(wanted) == ({"song.mp3"} if turn == "undo" else {"song.mp3", *COVERS})
    killed, seen = 0, set()
    for name in CALLS:
        for place in range(1, calls[name] + 1):
            given = prepare()
            status = run(given, "-e", f"trace={name}", "-e",
                         f"inject={name}:signal=KILL:when={place}")
            killed += status in (-signal.SIGKILL, 128 + signal.SIGKILL)
            held = contents()
            for cover, image in COVERS.items():
                assert image in held["song.mp3"] or held.get(cover) == image, (name, place)
            seen.add(tuple(held.get(cover) for cover in COVERS))
            # A picture that was cut off is in the way, and is told.
            cut = [cover for cover, image in COVERS.items() if held.get(cover, image) != image]
            for cover in cut:
                (tmp_path / cover).unlink()
            assert brindle("undo", given).returncode == 0, (name, place)
            assert contents() == wanted, (name, place)
    assert killed > 0.8 * sum(calls.values())
    assert {(None, None), (JPEG, GIF)} <= seen
