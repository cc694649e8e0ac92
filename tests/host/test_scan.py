"""`brindle scan`: a line for each file of a library, in a stable order, and a summary."""

import csv
import io
import os

import pytest

from commands import json_lines
from mp3_bytes import audio, audio_with_xing, frame, id3v1, tag, text_frame, user_frame

# 120 frames at 128 kbit/s: 50,040 bytes, 3,128 ms (3,127.5, halves to even).
AUDIO = audio()
TAG = tag(text_frame("TIT2", "Song"), text_frame("TPE1", "Ann"))
RECORD = id3v1(b"Song")
NO_SUCH_FILE = "No such file or directory"


def names(result):
    return [os.fsencode(facts["file"]) for facts in json_lines(result.stdout)]


@pytest.fixture
def library(tmp_path):
    """One file of each kind of stream and tag."""
    (tmp_path / "a.mp3").write_bytes(TAG + AUDIO + RECORD)
    (tmp_path / "b.mp3").write_bytes(TAG + audio_with_xing())
    (tmp_path / "c.MP2").write_bytes(AUDIO + RECORD)
    (tmp_path / "d.mp3").write_bytes(AUDIO)
    (tmp_path / "e.mp3").write_bytes(bytes(6000))
    return tmp_path


# --- what is printed

# 3,128 and 3,135 and 3,128 and 3,128 ms are 12.5 s.
SUMMARY = """\
5 files, 0:00:13 hours of audio
  Bit rate  3 constant, 1 variable, 1 without a stream
  Tags      1 ID3v1, 1 ID3v2, 1 ID3v1 and ID3v2, 2 none
  Failed    0
"""

LINES = """\
0:03.128   128 kbit/s      ID3v1 and ID3v2  ./a.mp3
0:03.135   124 kbit/s VBR  ID3v2            ./b.mp3
0:03.128   128 kbit/s      ID3v1            ./c.MP2
0:03.128   128 kbit/s      none             ./d.mp3
-          no stream       none             ./e.mp3
"""


def test_a_line_a_file_and_a_summary(library, brindle):
    result = brindle("scan", ".")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == LINES + SUMMARY


def test_quiet_leaves_the_summary_out(library, brindle):
    result = brindle("scan", "--quiet", ".")
    assert (result.returncode, result.stdout.decode(), result.stderr) == (0, LINES, b"")


def test_json_lines_are_those_of_show_without_the_values_of_frames(library, brindle):
    result = brindle("scan", "--json", ".")
    shown = json_lines(brindle("show", "--json", *(f"./{name}" for name in (
        "a.mp3", "b.mp3", "c.MP2", "d.mp3", "e.mp3"))).stdout)
    for facts in shown:
        del facts["v2Tag"]
    scanned = json_lines(result.stdout)
    assert [list(facts.items()) for facts in scanned] == [list(facts.items()) for facts in shown]
    assert scanned[0]["v2Frames"] == ["TIT2", "TPE1"]
    assert result.stderr.decode() == SUMMARY  # programs read nothing but facts


def test_hours_are_counted_on(tmp_path, brindle):
    # 1,500,000 frames of 1,152 samples at 44,100 Hz: 39,183.67 s.
    (tmp_path / "a.mp3").write_bytes(audio_with_xing(promised_frames=1_500_000))
    assert b"1 file, 10:53:04 hours of audio\n" in brindle("scan", "a.mp3").stdout


CSV_COLUMNS = [
    "file", "MonoStereo", "BitRate", "Speed", "Volume", "Opener", "CueInmSStart", "CategoryLevel",
    "TagType", "VBR", "Layer", "Duration", "Frequency", "FrameCount", "Title", "NoFade", "Composer",
    "Publisher", "CopyRight", "Agency", "AccountExec", "URL", "Copy", "Artist", "ArtistUrl",
    "Sectone", "Intro", "Category", "Album", "Track", "Year", "Comments", "Endstyle",
    "OutromsStart", "Genre", "artistv1Tag", "Titlev1Tag", "Yearv1Tag", "v2Frames", "Commentv1",
    "RepairRequired", "ID3TagSizeIncludingHeader", "MpegVersion", "error",
]


def csv_rows(output):
    text = output.decode("utf-8", "surrogateescape")
    assert text.endswith("\r\n")
    return list(csv.reader(io.StringIO(text, newline=""), strict=True))


def test_csv_has_a_header_and_a_row_a_file(library, brindle):
    result = brindle("scan", "--csv", ".", "missing.mp3")
    header, *rows = csv_rows(result.stdout)
    assert header == CSV_COLUMNS
    assert {len(row) for row in rows} == {len(CSV_COLUMNS)}
    first = dict(zip(header, rows[0]))
    assert first["file"] == "./a.mp3"
    assert first["Title"] == "Song"
    assert first["VBR"] == "false"
    assert first["Duration"] == "3128"
    assert first["Category"] == ""  # null
    assert first["v2Frames"] == "TIT2 TPE1"
    assert first["error"] == ""
    last = dict(zip(header, rows[-1]))
    assert (last.pop("file"), last.pop("error")) == ("missing.mp3", NO_SUCH_FILE)
    assert set(last.values()) == {""}
    assert SUMMARY.split("\n")[1] in result.stderr.decode()


def test_csv_cells_are_quoted_where_they_must_be(tmp_path, brindle):
    title = 'a "b", c\r\nd'
    (tmp_path / 'x,"\n.mp3').write_bytes(tag(text_frame("TIT2", title)) + AUDIO)
    result = brindle("scan", "--csv", ".")
    assert b'"a ""b"", c\r\nd"' in result.stdout
    header, row = csv_rows(result.stdout)
    facts = dict(zip(header, row))
    assert facts["Title"] == title
    assert facts["file"] == './x,"\n.mp3'


def test_csv_keeps_the_bytes_of_a_name(tmp_path, brindle):
    with open(os.fsencode(tmp_path) + b"/\xff.mp3", "wb") as file:
        file.write(AUDIO)
    assert b"\r\n./\xff.mp3,Joint Stereo," in brindle("scan", "--csv", ".").stdout


# --- which files

def test_folders_are_walked_in_the_order_of_the_bytes_of_the_paths(tmp_path, brindle):
    # "-" and "." sort before "/", "0" after it; capitals sort before small letters.
    wanted = [b"B.mp3", b"a-.mp3", b"a.mp3", b"a.x/1.mp3", b"a/B/2.mp3", b"a/b.mp3", b"a0.mp3",
              b"b.mp3", b"\xc3\xa9.mp3", b"\xff.mp3"]
    root = os.fsencode(tmp_path)
    for name in reversed(wanted):
        os.makedirs(os.path.dirname(root + b"/" + name), exist_ok=True)
        with open(root + b"/" + name, "wb") as file:
            file.write(AUDIO)
    found = names(brindle("scan", "--json", "--jobs", "8", "."))
    assert found == [b"./" + name for name in wanted]
    assert found == sorted(found)


def test_arguments_keep_their_order(library, brindle):
    (library / "sub").mkdir()
    (library / "sub" / "z.mp3").write_bytes(AUDIO)
    assert names(brindle("scan", "--json", "d.mp3", "sub/", "sub", "a.mp3")) == [
        b"d.mp3", b"sub/z.mp3", b"sub/z.mp3", b"a.mp3"]


def test_only_mp3_and_mp2_files_of_a_folder_are_opened(tmp_path, brindle):
    for name in ("a.mp3", "b.Mp2", "c.wav", "xmp3", "mp3", "e.mp3.txt", ".mp3"):
        (tmp_path / name).write_bytes(AUDIO)
    (tmp_path / "folder.mp3").mkdir()
    (tmp_path / "folder.mp3" / "inside.mp3").write_bytes(AUDIO)
    assert names(brindle("scan", "--json", ".")) == [
        b"./.mp3", b"./a.mp3", b"./b.Mp2", b"./folder.mp3/inside.mp3"]


def test_argument_that_is_no_mp3_is_an_error_as_in_show(tmp_path, brindle):
    (tmp_path / "c.wav").write_bytes(AUDIO)
    result = brindle("scan", "--json", "c.wav")
    assert result.returncode == 1
    assert json_lines(result.stdout) == [
        {"file": "c.wav", "error": "The name does not end in mp3 or mp2"}]


def test_empty_folder_is_fine(tmp_path, brindle):
    result = brindle("scan", ".")
    assert result.returncode == 0
    assert result.stdout.startswith(b"0 files, 0:00:00 hours of audio\n")


def test_links_to_folders_are_not_followed_within_a_folder(tmp_path, brindle):
    folder = tmp_path / "folder"
    folder.mkdir()
    (folder / "a.mp3").write_bytes(AUDIO)
    (folder / "loop").symlink_to("..")
    (folder / "self").symlink_to(".")
    (folder / "link.mp3").symlink_to("a.mp3")
    (tmp_path / "way-in").symlink_to("folder")
    assert names(brindle("scan", "--json", "folder")) == [b"folder/a.mp3", b"folder/link.mp3"]
    # But an argument that is a link to a folder is followed.
    assert names(brindle("scan", "--json", "way-in")) == [b"way-in/a.mp3", b"way-in/link.mp3"]


def test_deep_folders_are_walked(tmp_path, brindle):
    # Deeper than a path may be long: what is below can't be opened, and all else is found.
    here = os.open(tmp_path, os.O_RDONLY)
    for depth in range(50):
        os.mkdir("x" * 100, dir_fd=here)
        below = os.open("x" * 100, os.O_RDONLY, dir_fd=here)
        os.close(here)
        here = below
        with os.fdopen(os.open("a.mp3", os.O_WRONLY | os.O_CREAT, dir_fd=here), "wb") as file:
            file.write(AUDIO)
    os.close(here)
    result = brindle("scan", "--json", ".")
    assert result.returncode == 1
    lines = json_lines(result.stdout)
    good = [facts for facts in lines if "error" not in facts]
    # 40 folders of 101 characters and "./a.mp3" stay below 4,096.
    assert 39 <= len(good) <= 41
    assert [facts["error"] for facts in lines if "error" in facts] == ["File name too long"]


# --- what fails

def test_files_that_fail_stand_in_their_place(library, brindle):
    (library / "b.mp3").unlink()
    (library / "b.mp3").symlink_to("nowhere")
    os.mkfifo(library / "c.mp3")
    (library / "d1.mp3").symlink_to("/dev/zero")
    result = brindle("scan", "--json", ".")
    assert result.returncode == 1
    assert [(facts["file"], facts.get("error")) for facts in json_lines(result.stdout)] == [
        ("./a.mp3", None), ("./b.mp3", NO_SUCH_FILE), ("./c.MP2", None),
        ("./c.mp3", "Not a regular file"), ("./d.mp3", None), ("./d1.mp3", "Not a regular file"),
        ("./e.mp3", None)]
    assert result.stderr.decode().startswith(
        f"brindle: ./b.mp3: {NO_SUCH_FILE}\n"
        "brindle: ./c.mp3: Not a regular file\nbrindle: ./d1.mp3: Not a regular file\n")
    assert result.stderr.decode().endswith("  Failed    3\n")


@pytest.mark.skipif(os.geteuid() != 0, reason="becomes another user, as root")
def test_closed_folder_and_closed_file_are_named(program, tmp_path_factory):
    import shutil
    import subprocess
    folder = tmp_path_factory.mktemp("open")
    for part in (folder, *folder.parents):
        if part.stat().st_mode & 0o005 != 0o005:
            part.chmod(part.stat().st_mode | 0o055)
    copy = shutil.copy(program, folder / "brindle")
    (folder / "music" / "closed").mkdir(parents=True)
    (folder / "music" / "closed").chmod(0)
    (folder / "music" / "a.mp3").write_bytes(AUDIO)
    (folder / "music" / "a.mp3").chmod(0)
    (folder / "music" / "z.mp3").write_bytes(AUDIO)
    # A build for coverage writes its counts at the end; where the build is, it may not.
    counts = folder / "counts"
    counts.mkdir()
    counts.chmod(0o777)
    result = subprocess.run(
        ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", copy, "scan", "--quiet",
         "music"], cwd=folder, capture_output=True, timeout=60, check=False,
        env={**os.environ, "GCOV_PREFIX": str(counts)})
    assert result.returncode == 1
    assert result.stdout.decode().endswith("  music/z.mp3\n")
    assert result.stdout.count(b"\n") == 1
    assert result.stderr.decode() == ("brindle: music/a.mp3: Permission denied\n"
                                      "brindle: music/closed: Permission denied\n")


@pytest.mark.parametrize("arguments", [
    [], ["--jobs", "0", "."], ["--jobs", "x", "."], ["--jobs", "257", "."],
    ["--json", "--csv", "."], ["--json=false", "."], ["--fast", "."],
], ids=str)
def test_wrong_usage(library, brindle, arguments):
    result = brindle("scan", *arguments)
    assert (result.returncode, result.stdout) == (2, b"")


# --- many threads

def test_any_number_of_threads_prints_the_same(tmp_path, brindle):
    for number in range(300):
        content = TAG + AUDIO if number % 7 else bytes(number)
        (tmp_path / f"{number:03}.mp3").write_bytes(content)
    (tmp_path / "150.mp3").unlink()
    (tmp_path / "150.mp3").symlink_to("nowhere")
    outputs = set()
    for jobs in ("1", "2", "7", "64"):
        result = brindle("scan", "--json", "--jobs", jobs, ".")
        assert result.returncode == 1
        outputs.add((result.stdout, result.stderr))
    assert len(outputs) == 1
    assert len(json_lines(outputs.pop()[0])) == 300


def test_help_ends_with_an_example(brindle):
    result = brindle("scan", "--help")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode().splitlines()[-2:] == [
        "Example:", "  brindle scan --json /music > library.jsonl"]


def test_hosts_fields_are_in_the_lines(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(
        tag(user_frame("Cue In", "250"), frame("APIC", b"\0image/png\0\3\0" + bytes(9))) + AUDIO)
    (facts,) = json_lines(brindle("scan", "--json", ".").stdout)
    assert facts["CueInmSStart"] == 250
    assert facts["v2Frames"] == ["TXXX", "APIC"]
