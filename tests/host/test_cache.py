"""`scan --cache` and `check --cache`: what an earlier run has printed of a file is printed again."""

import os
import re
import shutil
import signal
import struct
import subprocess
import time

import pytest

from cache_rows import change, facts, is_whole, opened, rows
from mp3_bytes import audio, audio_with_xing, id3v1, tag, text_frame, user_frame
from other_user import NOBODY, as_nobody, needs_root
from settled_files import wait_until_settled

AUDIO = audio()
SONG = tag(text_frame("TIT2", "Song"), text_frame("TPE1", "Ann"), padding=100) + AUDIO
# The footer alone, which claims no items.
APE = b"APETAGEX" + struct.pack("<IIII8x", 2000, 32, 0, 0)
APPLICATION_ID = 0x42524E44


def fill_library(folder):
    """A file of each kind, and some that fail."""
    folder.mkdir()
    (folder / "a.mp3").write_bytes(SONG + id3v1(b"Song"))
    (folder / "b.mp3").write_bytes(audio_with_xing(promised_frames=400))
    (folder / "c.MP2").write_bytes(AUDIO[:-100])
    (folder / "d.mp3").write_bytes(bytes(6000))
    (folder / "empty.mp3").write_bytes(b"")
    (folder / "Motörhead – Ænima.mp3").write_bytes(SONG)
    with open(os.fsencode(folder) + b"/\xff\n,\x1b.mp3", "wb") as file:
        file.write(tag(text_frame("TIT2", "=1+1"), user_frame("Show", "Early")) + AUDIO)
    (folder / ".brindle-1f.mp3").write_bytes(SONG)
    os.link(folder / "a.mp3", folder / "hard.mp3")
    (folder / "soft.mp3").symlink_to("a.mp3")
    (folder / "gone.mp3").symlink_to("nowhere")
    os.mkfifo(folder / "pipe.mp3")
    (folder / "e").mkdir()
    (folder / "e" / "e.mp3").write_bytes(SONG + APE)


GOOD_FILES = 11


@pytest.fixture(scope="module")
def libraries(tmp_path_factory):
    """Enough for all tests, so that one waits only once until the files have settled."""
    folder = tmp_path_factory.mktemp("libraries")
    made = []
    for number in range(150):
        (folder / str(number)).mkdir()
        fill_library(folder / str(number) / "music")
        made.append(folder / str(number))
    wait_until_settled()
    return made


@pytest.fixture
def library(libraries, tmp_path):
    """Of this test alone. The test's own folder has the program's name for it: music."""
    music = libraries.pop() / "music"
    (tmp_path / "music").symlink_to(music)
    return music


def is_poisoned(result):
    return b"FROM THE CACHE" in result.stdout


def poison(cache, where="1"):
    """Whatever is printed from the cache now shows it."""
    assert change(cache, f"UPDATE files SET output = CAST('FROM THE CACHE\n' AS BLOB) WHERE {where}")


SCAN_FORMS = [
    ("scan",), ("scan", "--quiet"), ("scan", "--json"), ("scan", "--csv"), ("scan", "--hash"),
    ("scan", "--json", "--hash"), ("scan", "--columns", "file,Title,field:Show"),
    ("scan", "--columns", "file,Title,error", "--csv"), ("scan", "--csv", "--spreadsheet"),
    ("scan", "--csv", "--utf8-names"), ("scan", "--csv", "--spreadsheet", "--utf8-names", "--hash"),
]
CHECK_FORMS = [
    ("check",), ("check", "--json"), ("check", "--notes"), ("check", "--only", "bad"),
    ("check", "--ignore", "no-stream", "--ignore", "dead-air"), ("check", "--fail-on", "never"),
    ("check", "--fail-on", "warn", "--quiet"), ("check", "--listen"),
    ("check", "--listen", "--json", "--too-quiet", "-50"), ("check", "--json", "--only", "warn"),
]
FORMS = SCAN_FORMS + CHECK_FORMS


# --- what is printed

@pytest.mark.parametrize("form", FORMS, ids=" ".join)
def test_output_is_the_same_without_with_a_new_and_with_a_warm_cache(brindle, library, cache, form):
    without = facts(brindle(*form, "music"))
    cached = (*form, "--cache", "cache.db", "music")
    assert facts(brindle(*cached)) == without
    assert facts(brindle(*cached)) == without
    assert facts(brindle(*cached, "--jobs", "7")) == without
    # And it was the cache that printed it. Files that fail are not in it.
    assert len(rows(cache, "name")) == GOOD_FILES
    poison(cache, f"name = CAST('music/{'d' if form[0] == 'check' else 'a'}.mp3' AS BLOB)")
    assert is_poisoned(brindle(*cached))


def test_different_options_do_not_mix(brindle, library, cache):
    without = {form: facts(brindle(*form, "music")) for form in FORMS}
    for _ in range(2):
        for form in FORMS:
            assert facts(brindle(*form, "--cache", "cache.db", "music")) == without[form], form
    assert is_whole(cache)


def test_colours_are_an_option_too(program, brindle, library, cache):
    # script(1) gives the program a terminal.
    command = f"{program} check --quiet --cache cache.db music 2>/dev/null"
    environment = {**os.environ, "TERM": "xterm"}
    environment.pop("NO_COLOR", None)

    def on_a_terminal():
        return subprocess.run(["script", "-qec", command, "/dev/null"], cwd=cache.parent,
                              env=environment, capture_output=True, timeout=60, check=False).stdout

    plain = facts(brindle("check", "--quiet", "--cache", "cache.db", "music"))
    coloured = on_a_terminal()
    assert b"\x1b[31mbad" in coloured
    assert on_a_terminal() == coloured
    assert facts(brindle("check", "--quiet", "--cache", "cache.db", "music")) == plain
    assert b"\x1b[" not in plain[1]


def test_order_and_number_of_ignored_codes_are_no_other_option(brindle, library, cache):
    brindle("check", "--ignore", "no-stream", "--ignore", "dead-air", "--cache", "cache.db", "music")
    poison(cache)
    assert is_poisoned(brindle("check", "--ignore", "dead-air", "--ignore", "no-stream", "--ignore",
                               "dead-air", "--jobs", "3", "--quiet", "--fail-on", "never",
                               "--cache", "cache.db", "music"))


@pytest.mark.plain_build
def test_files_are_not_opened_again(program, library, cache):
    def opened_files(*form):
        trace = cache.parent / "trace"
        subprocess.run(["strace", "-f", "-o", trace, "-e", "trace=open,openat", program, *form,
                        "--cache", "cache.db", "music"], cwd=cache.parent, capture_output=True,
                       timeout=60, check=False)
        return re.findall(r'open(?:at)?\([^"]*"([^"]*\.mp[23])"', trace.read_text("latin-1"),
                          re.IGNORECASE)

    for form in (("scan", "--json"), ("check", "--listen")):
        assert len(set(opened_files(*form))) == GOOD_FILES
        assert opened_files(*form) == []


def test_same_names_in_other_folders_are_other_files(brindle, library, cache, tmp_path):
    other = tmp_path / "other"
    other.mkdir()
    here = ("scan", "--cache", str(cache), "a.mp3")
    for folder in (library, library / "e"):
        shutil.copy2(library / "e" / "e.mp3", folder / "x.mp3")
    outputs = [facts(brindle(*here, cwd=folder)) for folder in (library, library / "e")] * 2
    assert outputs[0] == outputs[2] and outputs[0][0] == 0 and outputs[1][0] == 1
    assert [facts(brindle("scan", "--cache", str(cache), name, cwd=library))[1].split()[-1]
            for name in ("x.mp3", "./x.mp3")] != []


def test_names_of_this_run_are_printed(brindle, library, cache):
    """Whatever the names were under which the cache came to know the file."""
    cached = ("scan", "--quiet", "--cache", "cache.db")
    for names in (["music/a.mp3"], ["./music/a.mp3", "music/hard.mp3"], ["music/../music/a.mp3"],
                  ["music/a.mp3", "music/a.mp3", "music/soft.mp3"]):
        printed = brindle(*cached, *names).stdout.decode().splitlines()
        assert [line.split()[-1] for line in printed] == names
    os.rename(library / "a.mp3", library / "z.mp3")
    result = brindle(*cached, "music/a.mp3", "music/z.mp3")
    assert result.stderr == b"brindle: music/a.mp3: No such file or directory\n"
    assert result.stdout.decode().splitlines()[0].endswith("  music/z.mp3")


# --- files that change

def title_of(brindle, *names):
    result = brindle("scan", "--columns", "Title", "--quiet", "--cache", "cache.db",
                     *(names or ["music/a.mp3"]))
    return result.stdout.decode().splitlines()


def other_title(content):
    return content.replace(b"Song", b"Sang")


def set_preserve(brindle, path):
    brindle("set", "--title", "Sang", "--preserve", str(path))


def set_atomic(brindle, path):
    brindle("set", "--title", "Sang", "--preserve", "--atomic", str(path))


def write_in_place(_, path):
    status = path.stat()
    with path.open("r+b") as file:
        file.write(other_title(path.read_bytes()))
    os.utime(path, ns=(status.st_atime_ns, status.st_mtime_ns))
    assert path.stat().st_size == status.st_size and path.stat().st_mtime_ns == status.st_mtime_ns


def replace(_, path):
    status = path.stat()
    other = path.with_name("other")
    other.write_bytes(other_title(path.read_bytes()))
    os.utime(other, ns=(status.st_atime_ns, status.st_mtime_ns))
    os.replace(other, path)


def swap_names(_, path):
    os.rename(path.parent / "sang.mp3", path)


@pytest.mark.parametrize("way", [set_preserve, set_atomic, write_in_place, replace])
def test_changed_file_is_read_again(brindle, library, cache, way):
    assert title_of(brindle) == ["Song"]
    time_before = (library / "a.mp3").stat().st_mtime_ns
    way(brindle, library / "a.mp3")
    assert (library / "a.mp3").stat().st_mtime_ns == time_before
    assert title_of(brindle) == ["Sang"]
    assert title_of(brindle) == ["Sang"]


def test_touched_file_is_read_again(brindle, library, cache):
    cached = ("scan", "--json", "--quiet", "--cache", "cache.db", "music/a.mp3")
    before = brindle(*cached).stdout
    os.utime(library / "a.mp3", (1_000_000_000, 1_000_000_000))
    after = brindle(*cached).stdout
    assert b"2001-09-09T01:46:40Z" in after
    assert after != before
    # A mode that changes is a status that changes.
    poison(cache)
    (library / "a.mp3").chmod(0o600)
    assert not is_poisoned(brindle(*cached))


def test_other_file_of_the_same_name_is_read(brindle, library, cache):
    """Both are settled: only volume and number of the file tell them apart."""
    assert title_of(brindle, "music/soft.mp3") == ["Song"]
    (library / "soft.mp3").unlink()
    (library / "soft.mp3").symlink_to(os.fsdecode(b"\xff\n,\x1b.mp3"))
    assert title_of(brindle, "music/soft.mp3") == ["=1+1"]


def test_fresh_file_is_stored_but_not_served(brindle, library, cache):
    """A clock may be so coarse that a further change leaves the same times."""
    (library / "a.mp3").write_bytes(SONG)
    assert title_of(brindle) == ["Song"]
    assert rows(cache, "settled") == [(0,)]
    poison(cache)
    assert title_of(brindle) == ["Song"]
    (library / "a.mp3").write_bytes(other_title(SONG))
    status = (library / "a.mp3").stat()
    assert change(cache, "UPDATE files SET modified = ?, modified_nanoseconds = ?, changed = ?,"
                  " changed_nanoseconds = ?", status.st_mtime_ns // 10**9,
                  status.st_mtime_ns % 10**9, status.st_ctime_ns // 10**9,
                  status.st_ctime_ns % 10**9) == 1
    assert title_of(brindle) == ["Sang"]
    assert title_of(brindle, "music/e/e.mp3") == ["Song"]
    assert rows(cache, "settled") == [(0,), (1,)]


def test_time_of_the_status_lies_two_seconds_before_the_reading(brindle, library, cache):
    settled = {}
    (library / "a.mp3").chmod(0o600)
    changed = (library / "a.mp3").stat().st_ctime
    while 1 not in settled.values():
        age = time.time() - changed
        title_of(brindle)
        settled[age] = rows(cache, "settled")[0][0]
        time.sleep(0.2)
    assert 2 < max(settled) < 4
    assert len(settled) > 5


@pytest.mark.plain_build
def test_file_that_changes_while_it_is_read_is_not_stored(program, library, cache):
    song = library / "a.mp3"
    # The program waits after it has opened the file, with the old state in hand.
    command = ["strace", "-f", "-qq", "-o", "/dev/null", "-P", "music/a.mp3", "-e", "trace=openat",
               "-e", "inject=openat:delay_exit=1000000", program, "scan", "--cache", "cache.db",
               "music/a.mp3", "music/b.mp3"]
    with subprocess.Popen(command, cwd=cache.parent, stdout=subprocess.PIPE) as run:
        time.sleep(0.6)
        os.utime(song, (1_000_000_000, 1_000_000_000))
        assert run.wait(timeout=60) == 0
    assert rows(cache, "name") == [(b"music/b.mp3",)]


def test_file_that_failed_is_tried_again(program, library, cache, reachable):
    """So an error that goes away by itself is not told again."""
    shutil.copytree(library / "e", reachable / "music")
    song = reachable / "music" / "e.mp3"
    os.chown(reachable, NOBODY, NOBODY)

    def run():
        return as_nobody(program, "scan", "--json", "--quiet", "--cache", "cache.db", "music",
                         cwd=reachable)

    song.chmod(0o600)
    if os.geteuid() != 0:
        pytest.skip("takes a file of somebody else")
    assert run().stderr == b"brindle: music/e.mp3: Permission denied\n"
    assert rows(reachable / "cache.db", "name") == []
    song.chmod(0o644)
    first = run()
    assert (first.returncode, first.stderr) == (0, b"")
    assert facts(run()) == facts(first)
    song.chmod(0o600)
    assert run().stderr == b"brindle: music/e.mp3: Permission denied\n"


@pytest.mark.plain_build
@pytest.mark.parametrize("call, error", [("pread64", "EIO"), ("openat", "EMFILE")])
@pytest.mark.parametrize("form", [("scan", "--json"), ("scan", "--hash"), ("check", "--json"),
                                  ("check", "--listen")], ids=" ".join)
def test_file_that_is_read_in_part_is_not_stored(program, brindle, library, cache, form, call, error):
    """Each call for its bytes fails in turn; the device may do better the next time."""
    plain = [program, *form, "--cache", "cache.db", "music/e/e.mp3"]
    traced = ["strace", "-f", "-qq", "-P", "music/e/e.mp3", "-e", f"trace={call}"]
    without = brindle(*form, "music/e/e.mp3").stdout
    trace = cache.parent / "trace"
    subprocess.run([*traced, "-o", trace, *plain], cwd=cache.parent, capture_output=True, check=False,
                   timeout=60)
    assert brindle(*plain[1:]).stdout == without
    poison(cache)
    assert is_poisoned(brindle(*plain[1:]))
    count = trace.read_text("latin-1").count("music/e/e.mp3" if call == "openat" else f"{call}(")
    assert count == 1 if call == "openat" else count >= 4
    changed = 0
    for number in range(1, count + 1):
        cache.unlink()
        result = subprocess.run(
            [*traced, "-o", "/dev/null", "-e", f"inject={call}:error={error}:when={number}", *plain],
            cwd=cache.parent, capture_output=True, check=False, timeout=60)
        changed += result.stdout != without
        assert brindle(*plain[1:]).stdout == without, number
    # Without it nothing can be read.
    assert changed >= (1 if call == "openat" else 2)


# --- --new

def new(brindle, *form):
    return brindle(*form, "--new", "--cache", "cache.db", "music")


def test_new_prints_what_no_run_has_printed(brindle, library, cache):
    form = ("scan", "--columns", "file,Title")
    everything = brindle(*form, "music").stdout
    assert new(brindle, *form).stdout == everything
    nothing = new(brindle, *form)
    assert (nothing.returncode, nothing.stdout) == (1, b"")
    # Files that fail fail each time.
    assert nothing.stderr.decode().startswith("brindle: music/gone.mp3: No such file or directory\n"
                                              "brindle: music/pipe.mp3: Not a regular file\n"
                                              "2 new files, 11 unchanged, 0:00:00 hours of audio\n")
    set_preserve(brindle, library / "e" / "e.mp3")
    shutil.copy(library / "b.mp3", library / "f.mp3")
    (library / "gone.mp3").unlink()
    (library / "pipe.mp3").unlink()
    some = new(brindle, *form)
    assert (some.returncode, some.stdout) == (0, b"music/e/e.mp3\tSang\nmusic/f.mp3\t\n")
    assert some.stderr.decode().startswith("2 new files, 10 unchanged, 0:00:")
    # They are too fresh to be taken from the cache, but as they were.
    assert new(brindle, *form).stdout == b""
    assert rows(cache, "settled") == [(0,)] * 2 + [(1,)] * 10
    # All is printed without the option.
    assert brindle(*form, "--cache", "cache.db", "music").stdout.count(b"\n") == 12
    wait_until_settled()
    assert new(brindle, *form).stdout == b""
    assert rows(cache, "settled") == [(1,)] * 12
    assert new(brindle, *form).stdout == b""


@pytest.mark.parametrize("form", [("scan", "--csv"), ("scan", "--json"), ("check", "--json")])
def test_new_leaves_whole_rows_out(brindle, library, cache, form):
    whole = brindle(*form, "--quiet", "--cache", "cache.db", "music").stdout.splitlines(True)
    again = new(brindle, *form, "--quiet").stdout.splitlines(True)
    assert again == [line for line in whole if b"No such file" in line or b"Not a reg" in line
                     or line == whole[0] and form[1] == "--csv"]
    assert len(again) in (2, 3)


def test_status_and_summary_of_check_are_those_of_new_files(brindle, library, cache):
    for name in ("gone.mp3", "pipe.mp3"):
        (library / name).unlink()
    first = new(brindle, "check")
    assert first.returncode == 1
    assert first.stdout.splitlines()[-1].startswith(b"11 new files, 0 unchanged: ")
    second = new(brindle, "check")
    assert (second.returncode, second.stdout) == (
        0, b"0 new files, 11 unchanged: 0 ok, 0 warn, 0 bad, 0 failed\n")
    (library / "x.mp3").write_bytes(bytes(5000))
    third = new(brindle, "check")
    assert third.returncode == 1
    assert third.stdout.endswith(b"1 new file, 11 unchanged: 0 ok, 0 warn, 1 bad, 0 failed\n")
    assert third.stdout.startswith(b"music/x.mp3: bad: no-stream")


def test_file_that_comes_up_twice_is_new_twice(brindle, library, cache):
    names = ("music/a.mp3", "music/b.mp3", "music/a.mp3")
    command = ("scan", "--quiet", "--columns", "file", "--jobs", "1", "--cache", "cache.db", "--new")
    assert brindle(*command, *names).stdout.decode().split() == list(names)
    assert brindle(*command, *names).stdout == b""
    # Also where the row was stored before the file came up again.
    many = [f"music/e/{'./' * (number % 1000)}e.mp3" for number in range(1500)]
    assert brindle(*command, "-", input="\n".join(many).encode(), stdin=None).stdout.decode(
        ).split() == many
    assert brindle(*command, "-", input="\n".join(many).encode(), stdin=None).stdout == b""


@pytest.mark.parametrize("arguments", [["--new"], ["--new", "--json"], ["--cache"],
                                       ["--cache", "a", "--cache", "b"]], ids=str)
@pytest.mark.parametrize("command", ["scan", "check"])
def test_wrong_usage(brindle, library, tmp_path, command, arguments):
    result = brindle(command, "music", *arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.count(b"\n") >= 1
    assert not (tmp_path / "a").exists()


# --- what is stored, and for how long

def test_cache_is_for_its_user_alone(brindle, library, cache):
    before = os.umask(0)
    try:
        brindle("scan", "--cache", "cache.db", "music")
    finally:
        os.umask(before)
    assert cache.stat().st_mode == 0o100600
    assert sorted(path.name for path in cache.parent.iterdir()) == ["cache.db", "music"]
    with opened(cache) as database:
        assert database.execute("PRAGMA application_id").fetchone() == (APPLICATION_ID,)


def test_other_version_of_the_program_uses_no_rows(brindle, library, cache):
    cached = ("scan", "--cache", "cache.db", "music")
    without = facts(brindle(*cached))
    version = brindle("--version").stdout.split()[-1]
    poison(cache)
    assert is_poisoned(brindle(*cached))
    (before,) = rows(cache, "text", "options")
    assert before[0].startswith(version + b"\n")
    assert change(cache, "UPDATE options SET text = ?", b"0.0.9" + before[0][len(version):]) == 1
    assert facts(brindle(*cached)) == without
    assert facts(brindle(*cached)) == without


def test_files_that_no_run_comes_across_are_forgotten(brindle, library, cache):
    brindle("scan", "--json", "--cache", "cache.db", "music")
    brindle("scan", "--cache", "cache.db", "music/a.mp3", "music/b.mp3")
    today = int(time.time() // 86_400)
    assert set(rows(cache, "day")) <= {(today,), (today - 1,)}
    change(cache, "UPDATE files SET day = ?", today - 89)
    brindle("scan", "--cache", "cache.db", "music/c.MP2")
    assert len(rows(cache, "name")) == GOOD_FILES + 3
    change(cache, "UPDATE files SET day = ?", today - 91)
    # The one that is served stays.
    result = brindle("scan", "--cache", "cache.db", "music/a.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    assert rows(cache, "name") == [(b"music/a.mp3",)]
    assert len(rows(cache, "text", "options")) == 1
    assert rows(cache, "day") in ([(today,)], [(today + 1,)])


def test_rows_are_marked_once_a_week(brindle, library, cache):
    today = int(time.time() // 86_400)
    for day, marked in ((today - 6, False), (today - 8, True), (today + 9, True)):
        brindle("scan", "--cache", "cache.db", "music/a.mp3")
        change(cache, "UPDATE files SET day = ?", day)
        brindle("scan", "--cache", "cache.db", "--new", "music/a.mp3")
        assert (rows(cache, "day") != [(day,)]) == marked
        assert brindle("scan", "--quiet", "--cache", "cache.db", "--new",
                       "music/a.mp3").stdout == b""


# --- files that are no cache

def plain_file(path):
    path.write_bytes(b"My thesis")


def header_alone(path):
    path.write_bytes(b"SQLite format 3\0" + bytes(52) + APPLICATION_ID.to_bytes(4, "big"))


def other_database(path):
    change(path, "CREATE TABLE thesis(chapter)")


def database_of_another_program(path):
    with opened(path) as database:
        database.execute("PRAGMA application_id = 17")
        database.execute("CREATE TABLE thesis(chapter)")


def our_id_and_other_tables(path):
    with opened(path) as database:
        database.execute(f"PRAGMA application_id = {APPLICATION_ID}")
        database.execute("PRAGMA user_version = 1")
        database.execute("CREATE TABLE thesis(chapter)")


def link(path):
    path.with_name("target").write_bytes(b"")
    path.symlink_to("target")


def dangling_link(path):
    path.symlink_to("nowhere")


def group_writes(path):
    path.write_bytes(b"")
    path.chmod(0o660)


def others_write(path):
    path.write_bytes(b"")
    path.chmod(0o602)


def journal_link(path):
    path.write_bytes(b"")
    path.with_name("target").write_bytes(b"")
    path.with_name(path.name + "-journal").symlink_to("target")


def journal_others_write(path):
    path.write_bytes(b"")
    path.with_name(path.name + "-wal").write_bytes(b"x")
    path.with_name(path.name + "-wal").chmod(0o666)


NO_CACHE = "It is no cache of brindle"


def snapshot(folder):
    """Of everything but the music."""
    return {path.name: (os.lstat(path).st_mode, os.lstat(path).st_mtime_ns,
                        path.read_bytes() if path.is_file() else None)
            for path in folder.iterdir() if path.name != "music"}


@pytest.mark.parametrize("make, reason", [
    (plain_file, NO_CACHE), (header_alone, NO_CACHE), (other_database, NO_CACHE),
    (database_of_another_program, NO_CACHE),
    (our_id_and_other_tables, "It has other tables than a cache of brindle"),
    (link, "It is a symbolic link"), (dangling_link, "It is a symbolic link"),
    (group_writes, "Others can write to it"), (others_write, "Others can write to it"),
    (os.mkdir, "Not a regular file"), (os.mkfifo, "Not a regular file"),
    (journal_link, "-journal: It is a symbolic link"),
    (journal_others_write, "-wal: Others can write to it"),
], ids=lambda value: getattr(value, "__name__", ""))
@pytest.mark.parametrize("command", [("scan", "--csv"), ("check",)], ids=" ".join)
def test_what_is_no_cache_is_refused_and_left_alone(brindle, library, cache, command, make, reason):
    make(cache)
    before = snapshot(cache.parent)
    result = brindle(*command, "--cache", "cache.db", "music")
    separator = "" if reason.startswith("-") else ": "
    assert facts(result) == (1, b"", f"brindle: cache.db{separator}{reason}\n".encode())
    assert snapshot(cache.parent) == before


@needs_root
def test_cache_of_somebody_else_is_refused(brindle, library, cache):
    brindle("scan", "--cache", "cache.db", "music")
    os.chown(cache, NOBODY, NOBODY)
    result = brindle("scan", "--cache", "cache.db", "music")
    assert facts(result) == (1, b"", b"brindle: cache.db: It belongs to another user\n")


@pytest.mark.parametrize("name, reason", [("no/cache.db", "No such file or directory"),
                                          ("", "No such file or directory"),
                                          ("music/a.mp3/cache.db", "Not a directory")])
def test_cache_that_cannot_be_made_ends_the_run(brindle, library, name, reason):
    result = brindle("scan", "--cache", name, "music")
    assert facts(result) == (1, b"", f"brindle: {name}: {reason}\n".encode())


def test_any_name_will_do(brindle, library, tmp_path):
    names = [":memory:", "file:x?mode=memory", "ä\n.db", os.fsdecode(b"\xff.db")]
    for name in names:
        for _ in range(2):
            assert brindle("scan", "--cache", name, "music").stderr.count(b"\n") == 2
        assert len(rows(os.fsencode(tmp_path) + b"/" + os.fsencode(name), "name")) == GOOD_FILES
    # A folder may be a link.
    (tmp_path / "real").mkdir()
    (tmp_path / "way").symlink_to("real")
    assert brindle("scan", "--cache", "way/cache.db", "music").stderr.count(b"\n") == 2
    assert (tmp_path / "real" / "cache.db").exists()


def test_empty_file_becomes_a_cache(brindle, library, cache):
    cache.write_bytes(b"")
    brindle("scan", "--cache", "cache.db", "music")
    assert len(rows(cache, "name")) == GOOD_FILES


def test_newer_cache_is_refused(brindle, library, cache):
    brindle("scan", "--cache", "cache.db", "music")
    change(cache, "PRAGMA user_version = 2")
    before = cache.read_bytes()
    assert facts(brindle("scan", "--cache", "cache.db", "music")) == (
        1, b"", b"brindle: cache.db: It was made by a newer version of brindle\n")
    assert cache.read_bytes() == before


@pytest.mark.parametrize("sql", [
    "CREATE TRIGGER t AFTER INSERT ON files BEGIN DELETE FROM files; END",
    "CREATE VIEW v AS SELECT 1", "CREATE TABLE t(x)", "DROP INDEX files_by_day",
    "ALTER TABLE files ADD COLUMN x"])
def test_cache_with_other_tables_is_refused(brindle, library, cache, sql):
    brindle("scan", "--cache", "cache.db", "music")
    change(cache, sql)
    before = cache.read_bytes()
    assert facts(brindle("scan", "--cache", "cache.db", "music")) == (
        1, b"", b"brindle: cache.db: It has other tables than a cache of brindle\n")
    assert cache.read_bytes() == before


def test_damaged_cache_is_refused(brindle, library, cache):
    """Every page in turn, and cut ends."""
    brindle("scan", "--json", "--cache", "cache.db", "music")
    whole = cache.read_bytes()
    without = facts(brindle("scan", "--json", "music"))
    page = 4096
    damaged = [whole[:page * number] for number in range(1, len(whole) // page)]
    damaged += [whole[:page * number] + os.urandom(page) + whole[page * (number + 1):]
                for number in range(1, len(whole) // page)]
    damaged.append(whole[:100] + bytes(page - 100) + whole[page:])
    assert len(damaged) > 10
    refused = 0
    for content in damaged:
        cache.write_bytes(content)
        result = brindle("scan", "--json", "--cache", "cache.db", "music")
        if result.returncode == 1 and result.stdout == b"":
            assert result.stderr == b"brindle: cache.db: It is damaged\n"
            assert cache.read_bytes() == content
            refused += 1
        else:
            # A page that holds no more than a part of a value.
            assert result.returncode == without[0]
    assert refused >= len(damaged) * 0.5


HOSTILE = ["output = NULL", "output = 5", "output = 1.5", "output = zeroblob(1048577)",
           "output = zeroblob(104857600)", "counted_1 = 3", "counted_1 = -1", "counted_1 = 'x'",
           "counted_1 = NULL", "counted_1 = zeroblob(104857600)", "counted_3 = 4",
           "counted_2 = 2147483648", "counted_2 = 9223372036854775807", "settled = 'x'",
           "settled = 2", "settled = NULL", "run = 'x'", "day = NULL", "day = 'x'"]
NOT_USED_BY_NEW = ("counted_1 = 3", "counted_1 = -1", "counted_3 = 4", "settled = 2",
                   "counted_2 = 2147483648", "counted_2 = 9223372036854775807")


@pytest.mark.plain_build
@pytest.mark.parametrize("options, values", [
    *(((), values) for values in HOSTILE),
    *((("--new",), values) for values in HOSTILE if values not in NOT_USED_BY_NEW)], ids=str)
def test_row_that_nobody_stored_so_is_none(program, brindle, library, cache, values, options):
    names = ["music/a.mp3", "music/b.mp3"]
    without = brindle("scan", *names).stdout.splitlines()[:2]
    brindle("scan", "--cache", "cache.db", *names)
    assert change(cache, f"UPDATE files SET {values}") == 2
    result = subprocess.run(
        ["prlimit", f"--as={128 * 1024 * 1024}", program, "scan", "--jobs", "2", *options, "--cache",
         "cache.db", *names], cwd=cache.parent, capture_output=True, timeout=60, check=False)
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.splitlines()[:2] == without
    # The file has taken its place.
    if not values.startswith("settled = 2"):
        poison(cache)
        assert is_poisoned(brindle("scan", "--cache", "cache.db", *names))


@pytest.mark.parametrize("values", ["counted_1 = 4", "counted_1 = -1", "counted_1 = 'x'"])
def test_row_of_check_that_nobody_stored_so_is_none(brindle, library, cache, values):
    without = facts(brindle("check", "music"))
    brindle("check", "--cache", "cache.db", "music")
    change(cache, f"UPDATE files SET {values}")
    assert facts(brindle("check", "--cache", "cache.db", "music")) == without


@pytest.mark.deep
@pytest.mark.plain_build
def test_memory_does_not_grow_with_the_cache(program, brindle, library, cache):
    without = facts(brindle("scan", "music"))
    brindle("scan", "--cache", "cache.db", "music")
    with opened(cache) as database:
        *row, _ = database.execute("SELECT * FROM files").fetchone()
        database.execute("BEGIN")
        row[2:4] = "?", "?"
        values = ", ".join("?" if value == "?" else str(value) for value in row)
        database.executemany(f"INSERT INTO files VALUES ({values}, zeroblob(3000))",
                             ((number, b"other") for number in range(100_000)))
        database.execute("COMMIT")
    assert cache.stat().st_size > 300_000_000
    result = subprocess.run(
        ["prlimit", f"--as={128 * 1024 * 1024}", program, "scan", "--jobs", "2", "--cache",
         "cache.db", "music"], cwd=cache.parent, capture_output=True, timeout=60, check=False)
    assert facts(result) == without


# --- several runs, and runs that cannot store

def test_two_runs_at_once_end_correctly(program, brindle, library, cache):
    without = facts(brindle("scan", "--json", "music"))
    for _ in range(20):
        cache.unlink(missing_ok=True)
        runs = [subprocess.Popen([program, "scan", "--json", "--cache", "cache.db", "music"],
                                 cwd=cache.parent, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                for _ in range(3)]
        for run in runs:
            output, errors = run.communicate(timeout=60)
            assert (run.returncode, output, errors) == without
        assert is_whole(cache)
        assert len(rows(cache, "name")) == GOOD_FILES


NOT_ALL = b"; the cache does not hold all of this run\n"


@pytest.mark.deep
@pytest.mark.parametrize("lock, is_served", [("EXCLUSIVE", False), ("IMMEDIATE", True)])
def test_run_that_is_locked_out_prints_all(brindle, library, cache, lock, is_served):
    cached = ("scan", "--quiet", "--cache", "cache.db", "music/a.mp3", "music/b.mp3")
    whole = brindle(*cached).stdout
    poison(cache, "name = CAST('music/a.mp3' AS BLOB)")
    change(cache, "DELETE FROM files WHERE name = CAST('music/b.mp3' AS BLOB)")
    with opened(cache) as database:
        database.execute(f"BEGIN {lock}")
        result = brindle(*cached)
    assert (result.returncode, result.stderr) == (0, b"brindle: cache.db: database is locked" + NOT_ALL)
    assert is_poisoned(result) == is_served
    assert result.stdout.splitlines()[1] == whole.splitlines()[1]
    assert is_served or result.stdout == whole


def test_full_disk_costs_no_line(brindle, library, tmp_path, small_disk):
    cache = small_disk / "cache.db"
    (tmp_path / "long").mkdir()
    long = tag(text_frame("TIT2", "x" * 4000)) + AUDIO
    for number in range(30):
        (tmp_path / "long" / f"{number:02}.mp3").write_bytes(long)
    without = facts(brindle("scan", "--json", "--quiet", "long"))
    result = brindle("scan", "--json", "--quiet", "--cache", str(cache), "long")
    assert facts(result) == (0, without[1], f"brindle: {cache}: database or disk is full".encode()
                             + NOT_ALL)
    assert is_whole(cache)
    assert facts(brindle("scan", "--cache", str(cache), "music/a.mp3"))[0] == 0
    # Without room for the tables there is no cache.
    cache.unlink()
    (small_disk / "filler").write_bytes(bytes(64 * 1024 - 4096))
    result = brindle("scan", "--cache", str(cache), "music")
    assert facts(result) == (1, b"", f"brindle: {cache}: database or disk is full\n".encode())


# --- runs that end early

def fed(program, folder, names, signal_number, *options, wait_for=None):
    """Kills a run that has printed the first names, and waits for others, as soon as wait_for()."""
    with subprocess.Popen([program, "scan", "--columns", "file", "--jobs", "3", *options, "--cache",
                           "cache.db", "-"], cwd=folder, stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as run:
        run.stdin.write(("\n".join(names) + "\n").encode())
        run.stdin.flush()
        printed = [run.stdout.readline().decode().rstrip("\n") for _ in names]
        end = time.monotonic() + 60
        while wait_for and not wait_for() and time.monotonic() < end:
            time.sleep(0.05)
        run.send_signal(signal_number)
        if signal_number == signal.SIGINT:
            run.stdin.close()
        assert run.wait(timeout=60) != 0
        assert run.stdout.read() == b""
    return printed


def has_block(cache):
    """Whether the first rows are stored, which happens while the next lines are printed."""
    return len(rows(cache, "name")) >= 512


def names_of(count):
    """Of one file, but each of another key."""
    return [f"music/{'./' * (number // 30)}{'e/../' * (number % 30)}a.mp3" for number in range(count)]


def test_interrupted_run_is_stored_whole(program, brindle, library, cache):
    names = names_of(700)
    assert fed(program, cache.parent, names, signal.SIGINT) == names
    assert len(rows(cache, "name")) == 700


def test_killed_run_is_taken_up(program, brindle, library, cache):
    names = names_of(1400)
    assert fed(program, cache.parent, names[:700], signal.SIGKILL,
               wait_for=lambda: has_block(cache)) == names[:700]
    stored = rows(cache, "name")
    assert 512 <= len(stored) <= 700
    poison(cache)
    result = brindle("scan", "--columns", "file", "--quiet", "--cache", "cache.db", "-",
                     input="\n".join(names).encode(), stdin=None)
    assert result.stdout.count(b"FROM THE CACHE") == len(stored)
    assert len(rows(cache, "name")) == 1400


def test_new_of_a_killed_run_prints_what_that_has_not(program, brindle, library, cache):
    """Never is a file lost to both; at most one transaction of them is printed twice."""
    names = names_of(1400)
    printed = fed(program, cache.parent, names[:700], signal.SIGKILL, "--new",
                  wait_for=lambda: has_block(cache))
    rest = brindle("scan", "--columns", "file", "--quiet", "--new", "--cache", "cache.db", "-",
                   input="\n".join(names).encode(), stdin=None).stdout.decode().split()
    assert set(printed) | set(rest) == set(names)
    assert 700 <= len(rest) <= 888


def test_what_could_not_be_printed_is_still_new(program, brindle, library, cache):
    names = names_of(300)
    with subprocess.Popen([program, "scan", "--columns", "file", "--new", "--cache", "cache.db",
                           "-"], cwd=cache.parent, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as run:
        run.stdout.close()
        run.stdin.write(("\n".join(names) + "\n").encode())
        run.stdin.close()
        assert run.wait(timeout=60) == 1
    assert rows(cache, "name") == []
    rest = brindle("scan", "--columns", "file", "--quiet", "--new", "--cache", "cache.db", "-",
                   input="\n".join(names).encode(), stdin=None).stdout.decode().split()
    assert rest == names
