"""brindle report, as far as that needs no browser: tests/real/test_report_page.py uses the page."""

import functools
import hashlib
import json
import os
import pathlib
import re
import signal
import subprocess
import time

import pytest

from cache_rows import rows
from mp3_bytes import audio, audio_with_xing, id3v1, tag, text_frame, with_missing_data
from other_user import as_nobody, needs_root
from report_page import Page, policy_hash
from settled_files import wait_until_settled

ROOT = pathlib.Path(__file__).resolve().parents[2]
THIRD_PARTY = ROOT / "third_party"
HOSTILE = "</script><img src=x onerror=alert(1)><!--&lt;\u2028\u2029"
# Known of files that `listen` has measured.
SOUND = ("/loudness_lufs", "/range_lu", "/true_peak_dbtp", "/silence_count", "/silences")
SONG = tag(text_frame("TIT2", "Old")) + audio()


def utf16_frame(frame_id, text):
    body = b"\1" + text.encode("utf-16")
    return frame_id.encode() + len(body).to_bytes(4, "big") + b"\0\0" + body


@pytest.fixture
def library(tmp_path):
    """One file of each kind that the page has to show."""
    files = {
        "good.mp3": tag(text_frame("TIT2", "A title"), text_frame("TPE1", "Somebody"),
                        text_frame("TALB", "Album"), text_frame("TYER", "1999"),
                        text_frame("TCON", "(17)")) + audio(),
        "record.mp3": audio() + id3v1(b"Old title", b"Old artist", genre=3),
        "cyrillic.mp3": tag(utf16_frame("TIT2", "Жизнь \U0001F3B5")) + audio(),
        "missing.mp3": audio_with_xing(120, promised_frames=500, promised_bytes=500 * 417),
        "no-sound.mp3": b"nothing",
        "empty.mp3": b"",
        "sub/deep.mp2": SONG,
        "<img src=x onerror=alert(1)>.mp3": tag(
            *(utf16_frame(frame_id, HOSTILE) for frame_id in ("TIT2", "TPE1", "TALB", "TCON",
                                                               "TYER"))) + audio(),
        "<b>&amp;</b>/<script>alert(1)</script>.mp3": SONG,
    }
    folder = tmp_path / "music"
    for name, content in files.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    (pathlib.Path(os.fsdecode(os.fsencode(folder) + b"/caf\xe9\n.mp3"))).write_bytes(SONG)
    return folder


@pytest.fixture
def made(brindle, tmp_path, library):
    result = brindle("report", "music", "-o", "library.html")
    assert b"\nbrindle:" not in b"\n" + result.stderr, result.stderr
    assert (result.returncode, result.stdout) == (0, b"")
    return (tmp_path / "library.html").read_text(encoding="utf-8")


def names_in(folder):
    return {path.name for path in folder.iterdir()}


# --- the page

def test_page_has_only_its_own_elements(made):
    page = Page(made)
    assert made.startswith("<!DOCTYPE html>\n")
    assert page.open == []
    names = [name for name, _ in page.elements]
    assert names.count("script") == 4  # the data, the table, the plots, the page's own
    assert names.count("style") == 3
    assert not {"img", "link", "iframe", "object", "base", "b"} & set(names)
    for name, attributes in page.elements:
        for attribute in attributes:
            assert attribute not in ("src", "href", "style"), (name, attribute)
            assert not attribute.startswith("on"), (name, attribute)


def test_policy_allows_exactly_the_scripts_and_styles_of_the_page(made):
    page = Page(made)
    scripts = [content for content, attributes
               in zip(page.contents["script"], page.attributes_of("script"), strict=True)
               if "type" not in attributes]
    assert page.policy == {
        "default-src": ["'none'"],
        "script-src": [policy_hash(script) for script in scripts],
        "style-src": [policy_hash(style) for style in page.contents["style"]],
        "base-uri": ["'none'"],
        "form-action": ["'none'"],
    }
    names = [name for name, _ in page.elements]
    # It applies to what follows it.
    assert min(names.index("script"), names.index("style")) > names.index("meta") + 1


def test_files_of_others_are_those_that_were_published(made):
    sums = dict(reversed(line.split("  ")) for line in
                (THIRD_PARTY / "SHA256SUMS").read_text().splitlines())
    files = {str(path.relative_to(THIRD_PARTY)) for path in THIRD_PARTY.glob("*/*")}
    assert set(sums) == files
    for name in files:
        content = (THIRD_PARTY / name).read_bytes()
        assert hashlib.sha256(content).hexdigest() == sums[name]
        assert content.decode() in made
    table = (THIRD_PARTY / "README.md").read_text()
    for name, mark in {"tabulator/tabulator.min.js": r"Tabulator v([\d.]+)",
                       "uplot/uPlot.iife.min.js": r"\(v([\d.]+)\)"}.items():
        version = re.search(mark, (THIRD_PARTY / name).read_text()[:200])[1]
        assert f"| {version} |" in table


def test_changed_file_of_others_stops_the_build(tmp_path):
    for folder in ("third_party", "host/report"):
        (tmp_path / folder).parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(["cp", "-r", ROOT / folder, tmp_path / folder], check=True)

    def make():
        return subprocess.run(
            ["cmake", "-D", f"source={tmp_path}", "-D", f"output={tmp_path}/page.cpp", "-P",
             ROOT / "cmake" / "report_page.cmake"], capture_output=True, text=True, check=False)

    assert make().returncode == 0
    with open(tmp_path / "third_party" / "uplot" / "uPlot.min.css", "a") as style:
        style.write(" ")
    result = make()
    assert result.returncode != 0
    assert "third_party/uplot/uPlot.min.css is not the file" in result.stderr


# --- its data

def at(pointer, value):
    for key in pointer.split("/")[1:]:
        value = value.get(key) if isinstance(value, dict) else None
    return value


def test_data_is_that_of_scan_and_check(brindle, made):
    def lines(command):
        printed = brindle(command, "--json", "--quiet", "music").stdout.splitlines()
        return {facts["file"]: facts for facts in map(json.loads, printed)}

    scanned, checked = lines("scan"), lines("check")
    data = Page(made).data
    assert len(data["files"]) == 10
    # In the order of the files.
    assert [row[0] for row in data["files"]] == list(scanned)
    for name, row in Page(made).rows().items():
        for column, value in row.items():
            assert value == at(column, {**scanned[name], **checked[name]}), (name, column)


def test_columns_are_filled(made):
    """What the page shows is not null for a file that has all of it."""
    row = Page(made).rows()["music/good.mp3"]
    assert {column for column, value in row.items() if value is None} == {"/error", *SOUND}
    assert (row["/tag/title"], row["/tag/genre/name"], row["/verdict"]) == (
        "A title", "Rock", "ok")
    # 120 frames of 417 bytes at 128 kbit/s.
    assert (row["/Duration"], row["/file_facts/bit_rate"]) == (3128, 128000)
    bad = Page(made).rows()["music/missing.mp3"]
    assert bad["/verdict"] == "bad"
    assert "audio-missing" in {reason["code"] for reason in bad["/reasons"]}


@pytest.fixture(scope="module")
def music(tmp_path_factory, tone):
    """A tone, one with a silence of five seconds in it, and one that cannot be decoded."""
    folder = tmp_path_factory.mktemp("heard") / "music"
    folder.mkdir()
    (folder / "tone.mp3").write_bytes(tone)
    run = functools.partial(subprocess.run, cwd=folder, check=True)
    run(["sox", "-R", "-n", "-r", "44100", "-c", "2", "-b", "16", "a.wav", "synth", "4", "sine",
         "1000", "vol", "0.5", "pad", "0", "5", ":", "synth", "3", "sine", "500", "vol", "0.5"])
    run(["lame", "--quiet", "-b", "128", "a.wav", "silence.mp3"])
    (folder / "a.wav").unlink()
    (folder / "damaged.mp3").write_bytes(with_missing_data(tone))
    wait_until_settled()
    return folder


def rows_of_sound(brindle, music, *options):
    result = brindle("report", "--quiet", *options, "music", "-o", "-", cwd=music.parent)
    assert result.returncode == 0
    return Page(result.stdout.decode()).rows()


def test_sound_is_that_of_listen_where_the_cache_holds_it(brindle, music, cache):
    cached = ("--cache", cache)
    nothing = dict.fromkeys(SOUND)

    def sound():
        return {pathlib.Path(name).name: {column: row[column] for column in SOUND}
                for name, row in rows_of_sound(brindle, music, *cached).items()}

    names = ("tone.mp3", "silence.mp3", "damaged.mp3")
    assert sound() == dict.fromkeys(names, nothing)
    # Measured otherwise than the page would have it.
    for number, options in enumerate([("--quick",), ("--sound-range", "20")], 1):
        brindle("listen", *cached, *options, "music", cwd=music.parent)
        # Three of the report, and two of each: what cannot be decoded is not kept.
        assert len(rows(cache, "name")) == 3 + 2 * number
        assert sound() == dict.fromkeys(names, nothing)
    printed = brindle("listen", "--json", "--quiet", "--reference", "-23", *cached, "music",
                      cwd=music.parent)
    heard = {pathlib.Path(facts["file"]).name: facts
             for facts in map(json.loads, printed.stdout.splitlines())}
    for _ in range(2):
        shown = sound()
        for name in ("tone.mp3", "silence.mp3"):
            assert shown[name] == {column: heard[name][column[1:]] for column in SOUND}
        assert shown["damaged.mp3"] == nothing
    assert shown["tone.mp3"]["/loudness_lufs"] == pytest.approx(-20.13, abs=0.05)
    ((begin, end),) = [(silence["begin_ms"], silence["end_ms"])
                       for silence in shown["silence.mp3"]["/silences"]]
    assert 4_000 <= begin <= 4_060 and 9_000 <= end <= 9_060
    # Without the cache nothing of it is known.
    assert all(row[column] is None for row in rows_of_sound(brindle, music).values()
               for column in SOUND)


def test_sound_of_a_file_that_has_changed_is_not_shown(brindle, music, tmp_path):
    library = tmp_path / "music"
    library.mkdir()
    (library / "a.mp3").write_bytes((music / "tone.mp3").read_bytes())
    wait_until_settled()
    brindle("listen", "--cache", "cache", "music")
    (row,) = rows_of_sound(brindle, library, "--cache", tmp_path / "cache").values()
    assert row["/silence_count"] == 0
    with open(library / "a.mp3", "ab") as file:
        file.write(bytes(1))
    (row,) = rows_of_sound(brindle, library, "--cache", tmp_path / "cache").values()
    assert row["/silence_count"] is None


def test_hostile_texts_are_data(made):
    row = Page(made).rows()["music/<img src=x onerror=alert(1)>.mp3"]
    for column in ("/tag/title", "/tag/artist", "/tag/album", "/tag/genre/text"):
        assert row[column] == HOSTILE
    assert "music/<b>&amp;</b>/<script>alert(1)</script>.mp3" in Page(made).rows()
    text = made[made.index('id="library">') + len('id="library">'):]
    data = text[:text.index("</script>")]
    assert not set(data) & set("<>&\u2028\u2029")
    assert "onerror=alert" in data


def test_name_that_is_no_utf8_is_kept(made):
    (name,) = [name for name in Page(made).rows() if "caf" in name]
    assert os.fsencode(name) == b"music/caf\xe9\n.mp3"


def test_paths_are_named(brindle, library):
    result = brindle("report", "--quiet", "music/sub", "music/<b>&amp;</b>", "-o", "-")
    assert Page(result.stdout.decode()).data["paths"] == ["music/sub", "music/<b>&amp;</b>"]


def test_two_runs_are_identical(brindle, made, tmp_path):
    for options in (("--jobs", "1"), ("--jobs", "16"), ("--cache", "cache"), ("--cache", "cache")):
        result = brindle("report", *options, "music", "-o", "again.html")
        assert result.returncode == 0
        assert (tmp_path / "again.html").read_text(encoding="utf-8") == made


@pytest.mark.plain_build  # strace
def test_cached_files_are_not_read_again(program, library, tmp_path):
    def opens():
        subprocess.run(["strace", "-f", "-e", "trace=openat", "-o", tmp_path / "trace", program,
                        "report", "--quiet", "--cache", "cache", "music", "-o", "library.html"],
                       cwd=tmp_path, check=True)
        return (tmp_path / "trace").read_text().count("music/good.mp3")

    wait_until_settled()
    assert opens() > 0
    page = (tmp_path / "library.html").read_bytes()
    assert opens() == 0
    assert (tmp_path / "library.html").read_bytes() == page


def test_summary_counts_verdicts(brindle, library):
    result = brindle("report", "music", "-o", "library.html")
    counts = re.fullmatch(r"10 files: (\d+) ok, (\d+) warn, (\d+) bad, 0 failed\n",
                          result.stderr.decode())
    assert sum(map(int, counts.groups())) == 10
    assert brindle("report", "--quiet", "music", "-o", "library.html").stderr == b""


def test_no_file_is_a_page_too(brindle, tmp_path):
    (tmp_path / "none").mkdir()
    assert brindle("report", "none", "-o", "library.html").returncode == 0
    assert Page((tmp_path / "library.html").read_text()).data["files"] == []


# --- files that fail

def test_failing_file_is_named_and_the_others_are_there(brindle, tmp_path, library):
    result = brindle("report", "--quiet", "music/good.mp3", "music/gone<.mp3", "music/record.mp3",
                     "-o", "library.html")
    assert result.returncode == 1
    assert result.stderr == b"brindle: music/gone<.mp3: No such file or directory\n"
    rows = Page((tmp_path / "library.html").read_text()).rows()
    assert list(rows) == ["music/good.mp3", "music/gone<.mp3", "music/record.mp3"]
    failed = rows["music/gone<.mp3"]
    assert {column: value for column, value in failed.items() if value is not None} == {
        "/file": "music/gone<.mp3", "/error": "No such file or directory"}


# --- the file of the page

def test_older_report_is_replaced_and_keeps_its_rights(brindle, tmp_path, library):
    assert brindle("report", "music/sub", "-o", "library.html").returncode == 0
    page = tmp_path / "library.html"
    page.chmod(0o664)
    number = page.stat().st_ino
    (tmp_path / "link.html").symlink_to("library.html")
    assert brindle("report", "music", "-o", "link.html").returncode == 0
    assert (tmp_path / "link.html").is_symlink()
    assert page.stat().st_ino != number
    assert page.stat().st_mode & 0o7777 == 0o664
    assert len(Page(page.read_text()).data["files"]) == 10
    assert names_in(tmp_path) == {"music", "library.html", "link.html"}


def test_new_page_has_the_rights_of_the_mask(program, tmp_path, library):
    subprocess.run(["sh", "-c", 'umask 027; "$0" report --quiet music -o library.html', program],
                   cwd=tmp_path, check=True)
    assert (tmp_path / "library.html").stat().st_mode & 0o7777 == 0o640


@pytest.mark.parametrize("target, reason", [
    ("music/good.mp3", "It exists and is not a report"),
    ("notes.txt", "It exists and is not a report"),
    ("music", "Is a directory"),
    ("pipe", "Not a regular file"),
    ("none/library.html", "No such file or directory"),
    ("dangling", "No such file or directory"),
])
def test_what_is_no_report_is_left_alone(brindle, tmp_path, library, target, reason):
    (tmp_path / "notes.txt").write_text("<!DOCTYPE html>\nmine\n")
    os.mkfifo(tmp_path / "pipe")
    (tmp_path / "dangling").symlink_to("nowhere")
    before = {path: path.read_bytes() for path in tmp_path.rglob("*") if path.is_file()}
    result = brindle("report", "music", "-o", target)
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr.decode() == f"brindle: {target}: {reason}\n"
    assert before == {path: path.read_bytes() for path in tmp_path.rglob("*") if path.is_file()}


@needs_root
def test_folder_that_may_not_be_written_is_told(program, reachable):
    (reachable / "song.mp3").write_bytes(SONG)
    reachable.chmod(0o755)
    result = as_nobody(program, "report", "song.mp3", "-o", "library.html", cwd=reachable)
    assert (result.returncode, result.stderr) == (
        1, b"brindle: library.html: Permission denied\n")


def test_full_disk_leaves_the_older_report(brindle, small_disk, library):
    page = small_disk / "library.html"
    page.write_text("<!DOCTYPE html>\n<!-- Made by brindle report -->\nolder")
    result = brindle("report", "--quiet", "music", "-o", page)
    assert result.returncode == 1
    assert result.stderr.decode() == f"brindle: {page}: No space left on device\n"
    assert page.read_text().endswith("older")
    assert names_in(small_disk) == {"library.html"}


def test_page_goes_to_standard_output(brindle, made, tmp_path):
    result = brindle("report", "--quiet", "music", "-o", "-")
    assert (result.returncode, result.stdout.decode()) == (0, made)
    with open("/dev/full", "wb") as full:
        result = brindle("report", "--quiet", "music", "-o", "-", stdout=full)
    assert result.returncode == 1
    assert b"standard output" in result.stderr


def wait_until(is_so):
    end = time.monotonic() + 30
    while not is_so():
        assert time.monotonic() < end
        time.sleep(0.01)


@pytest.fixture
def waiting(program, tmp_path, library):
    """A run that has read a file and waits for the next name."""

    def start(output, **options):
        run = subprocess.Popen([program, "report", "-", "-o", output], cwd=tmp_path,
                               stdin=subprocess.PIPE, stderr=subprocess.PIPE, **options)
        run.stdin.write(b"music/good.mp3\n")
        run.stdin.flush()
        if output == "-":
            run.written = b""
            while b"music/good.mp3" not in run.written:
                run.written += os.read(run.stdout.fileno(), 65_536)
        else:
            wait_until(lambda: any(b"music/good.mp3" in path.read_bytes()
                                   for path in tmp_path.glob(".brindle-*")))
        return run

    return start


def test_interrupted_run_leaves_no_page(waiting, tmp_path):
    older = "<!DOCTYPE html>\n<!-- Made by brindle report -->\nolder"
    (tmp_path / "library.html").write_text(older)
    run = waiting("library.html")
    assert (tmp_path / "library.html").read_text() == older
    run.send_signal(signal.SIGINT)
    assert run.wait(timeout=30) == 130
    _, errors = run.communicate(timeout=30)
    assert errors.decode().splitlines()[-1] == "brindle: library.html: Not written"
    assert errors.startswith(b"Interrupted: ")
    assert (tmp_path / "library.html").read_text() == older
    assert names_in(tmp_path) == {"music", "library.html"}


def test_interrupted_page_on_standard_output_says_so(waiting):
    run = waiting("-", stdout=subprocess.PIPE)
    run.send_signal(signal.SIGTERM)
    page = run.stdout.read()
    assert run.wait(timeout=30) == 143
    run.communicate(timeout=30)
    data = Page((run.written + page).decode()).data
    assert data["message"] == "Interrupted: not all files are in this report."
    assert [row[0] for row in data["files"]] == ["music/good.mp3"]


def test_killed_run_leaves_no_page(waiting, tmp_path):
    run = waiting("library.html")
    run.kill()
    run.communicate(timeout=30)
    (left,) = names_in(tmp_path) - {"music"}
    assert re.fullmatch(r"\.brindle-[0-9a-f]{16}", left)


# --- usage

@pytest.mark.parametrize("arguments", [("music",), ("music", "-o"), ("-o", "library.html")],
                         ids=" ".join)
def test_usage_errors(brindle, library, arguments):
    result = brindle("report", *arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert b"brindle: see 'brindle report --help'" in result.stderr
