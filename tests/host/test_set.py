"""`brindle set`: values go into the file, and nothing else is lost."""

import json
import os
import shutil
import subprocess

import mutagen.id3
import pytest

from commands import ENVIRONMENT
from mp3_bytes import audio, frame, tag, text_frame
from tagged_file import AUDIO, AUDIO_HASH, RECORD, audio_hash, errors_of_dry_run, one_line, snapshot

OLD_TIME = 1_000_000_000_123_456_789


@pytest.fixture
def song(tmp_path):
    """With an ID3v2 tag that has room, and an ID3v1 record."""
    path = tmp_path / "song.mp3"
    path.write_bytes(tag(text_frame("TIT2", "Old"), text_frame("TALB", "Album"), padding=2000)
                     + AUDIO + RECORD)
    return path


@pytest.fixture
def plain(tmp_path):
    path = tmp_path / "plain.mp3"
    path.write_bytes(AUDIO)
    return path


def id3(path):
    return mutagen.id3.ID3(path)


def user_text(path):
    return {text.desc: text.text[0] for text in id3(path).getall("TXXX")}


# --- Every option, read back by another program

TEXTS = [
    # option, frame
    ("--title", "TIT2"), ("--artist", "TPE1"), ("--album", "TALB"), ("--composer", "TCOM"),
    ("--publisher", "TPUB"), ("--copyright", "TCOP"),
]
NUMBERS = [
    ("--year", "TYER", "1999"), ("--year", "TYER", "-32768"), ("--track", "TRCK", "32767"),
    ("--genre", "TCON", "0"), ("--genre", "TCON", "255"),
]
FIELDS = [
    # option, value, name of the field, its content
    ("--cue-in", "1500", "Cue In", "1500"),
    ("--intro", "-1", "Intro", "-1"),
    ("--outro", "2147483647", "OutromSStart", "2147483647"),
    ("--sectone", "-2147483648", "Sec Tone", "-2147483648"),
    ("--speed", "1.5", "TarnSpeed", "1.5"),
    ("--speed", "-1e2", "TarnSpeed", "-100"),
    ("--speed", ".25", "TarnSpeed", "0.25"),
    ("--volume", "-3", "Volume", "-3"),
    ("--category", "News", "Category", "News"),
    ("--category-level", "-32768", "CatLevel", "-32768"),
    ("--end-style", "cold", "End", "cold"),
    ("--no-fade", "1", "NoFade", "1"),
    ("--agency", "Smith & Co", "Agency", "Smith & Co"),
    ("--account-exec", "Jo", "Account Exec", "Jo"),
    ("--copy", "Good morning", "Copy", "Good morning"),
    ("--field", "Show=Breakfast", "Show", "Breakfast"),
    ("--field", "a=b=c", "a", "b=c"),
]


@pytest.mark.parametrize("option, frame_id", TEXTS)
@pytest.mark.parametrize("value", ["Caf\u00e9 \u20ac", "[a,b]", "{}", "-x", "--title", ""])
def test_text_is_read_back(song, brindle, option, frame_id, value):
    result = brindle("set", option, value, "song.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    content = song.read_bytes()
    assert audio_hash(content) == AUDIO_HASH
    assert frame(frame_id, b"\0" + value.encode("cp1252")) in content
    if value == "":
        return  # other programs take an empty text for none
    # Windows-1252, as hosts write and read it; other programs take the euro sign for a control.
    written = value.encode("cp1252").decode("latin-1")
    assert id3(song)[frame_id].text == [written]


@pytest.mark.parametrize("option, frame_id, value", NUMBERS)
def test_number_is_read_back(song, brindle, option, frame_id, value):
    assert brindle("set", option, value, "song.mp3").returncode == 0
    written = {"TCON": "(" + value + ")"}.get(frame_id, value)
    assert (b"\0" + written.encode() in song.read_bytes())
    if frame_id == "TRCK":
        assert id3(song)[frame_id].text == [value]


@pytest.mark.parametrize("option, value, name, written", FIELDS)
def test_field_is_read_back(song, brindle, option, value, name, written):
    result = brindle("set", option, value, "song.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    assert user_text(song) == {"TAGGED BY": "CorvaneTagger- Revised Feb 2011", name: written}


@pytest.mark.parametrize("option, written", [("--opener", "-1"), ("--no-opener", "0")])
def test_opener_is_read_back(song, brindle, option, written):
    assert brindle("set", option, "song.mp3").returncode == 0
    assert user_text(song)["Opener"] == written


def test_comment_is_written_as_hosts_do_and_a_link_as_others_do(song, brindle):
    assert brindle("set", "--url", "http://a", "--comment", "x", "song.mp3").returncode == 0
    content = song.read_bytes()
    assert frame("WOAR", b"http://a") in content
    assert frame("COMM", b"\0\0nt\0x") in content
    assert [link.url for link in id3(song).getall("WOAR")] == ["http://a"]


def test_option_with_an_equals_sign_and_nothing_sets_an_empty_text(song, brindle):
    (song.parent / "b.mp3").write_bytes(song.read_bytes())
    assert brindle("set", "--title=", "song.mp3", "b.mp3").returncode == 0
    assert frame("TIT2", b"\0") in song.read_bytes()
    assert frame("TIT2", b"\0") in (song.parent / "b.mp3").read_bytes()


def test_empty_field_is_written(song, brindle):
    assert brindle("set", "--field", "Empty=", "song.mp3").returncode == 0
    assert frame("TXXX", b"\0Empty\0") in song.read_bytes()


def test_other_programs_read_the_title(song, brindle):
    assert brindle("set", "--title", "New", "--artist", "Ann", "song.mp3").returncode == 0
    for command, lines in ((["id3v2", "-l"], ["TIT2 (Title/songname/content description): New",
                                             "TPE1 (Lead performer(s)/Soloist(s)): Ann"]),
                           (["eyeD3", "--no-color"], ["title: New", "artist: Ann"])):
        shown = subprocess.run([*command, song], capture_output=True, check=True, env=ENVIRONMENT)
        for line in lines:
            assert line in shown.stdout.decode("utf-8"), command


def test_picture_stays_byte_for_byte(tmp_path, brindle):
    picture = b"\0image/png\0\x03\0" + bytes(range(256)) * 300
    path = tmp_path / "a.mp3"
    # The audio must be longer than the tag to be found.
    path.write_bytes(tag(frame("APIC", picture), text_frame("TIT2", "Old")) + audio(400))
    assert brindle("set", "--title", "New and longer", "a.mp3").returncode == 0
    assert id3(path).getall("APIC")[0].data == bytes(range(256)) * 300
    assert frame("APIC", picture) in path.read_bytes()
    assert path.read_bytes().count(audio(400)) == 1


# --- The two tags

V1_TITLE, V1_ARTIST, V1_YEAR, V1_COMMENT = (slice(3, 33), slice(33, 63), slice(93, 97),
                                            slice(97, 125))

RECORD_CASES = {
    "title, artist and year go into both":
        (["--title", "T", "--artist", "A", "--year", "2001"], b"T", b"A", b"2001", b"Old comment"),
    "separate leaves the record alone":
        (["--title", "T", "--artist", "A", "--year", "2001", "--separate"],
         b"Old title", b"Old artist", b"1998", b"Old comment"),
    "its own options come last":
        (["--v1-title", "V", "--title", "T", "--v1-artist", "W", "--v1-year", "7",
          "--v1-comment", "C"], b"V", b"W", b"7", b"C"),
    "long texts are cut":
        (["--title", "t" * 31, "--v1-comment", "c" * 29], b"t" * 30, b"Old artist", b"1998",
         b"c" * 28),
}


@pytest.mark.parametrize("name", RECORD_CASES)
def test_record(song, brindle, name):
    options, title, artist, year, comment = RECORD_CASES[name]
    assert brindle("set", *options, "song.mp3").returncode == 0
    record = song.read_bytes()[-128:]
    assert record[V1_TITLE] == title.ljust(30)
    assert record[V1_ARTIST] == artist.ljust(30)
    assert record[V1_YEAR] == year.ljust(4)
    assert record[V1_COMMENT].rstrip(b"\0 ") == comment


# --- In one line what was written, and how

def test_tag_that_fits_is_written_in_place(song, brindle):
    before = song.read_bytes()
    inode = song.stat().st_ino
    result = brindle("set", "--title", "New", "song.mp3")
    # Header 10, TIT2 14, TALB 16, stamp 52, end 4; the old tag is 10 + 14 + 16 + 2000.
    assert result.stdout.decode() == ("song.mp3: ID3v2 tag written in place (96 of 2040 bytes), "
                                      "ID3v1 record overwritten; Title: \"New\"; "
                                      "ID3v1 title: \"New\"\n")
    after = song.read_bytes()
    assert len(after) == len(before) and song.stat().st_ino == inode
    assert after[2040:-128] == before[2040:-128]


def test_file_without_a_tag_is_rebuilt_and_gets_a_record(plain, brindle):
    result = brindle("set", "--title", "New", "plain.mp3")
    assert result.stdout.decode() == ("plain.mp3: file rebuilt with a larger ID3v2 tag (80 bytes "
                                      "and padding), ID3v1 record appended; Title: \"New\"; "
                                      "ID3v1 title: \"New\"\n")
    content = plain.read_bytes()
    assert content[2048:-128] == AUDIO
    assert content[-128:-125] == b"TAG"
    assert os.listdir(plain.parent) == ["plain.mp3"]


def test_line_breaks_of_a_name_do_not_break_the_line(tmp_path, brindle):
    (tmp_path / "a\nb.mp3").write_bytes(AUDIO)
    result = brindle("set", "--title", "x", "a\nb.mp3")
    assert result.stdout.startswith(b"a\\nb.mp3: ") and result.stdout.count(b"\n") == 1


# --- Dry run

def test_dry_run_shows_old_and_new_and_touches_nothing(song, brindle):
    before = snapshot(song)
    result = brindle("set", "--dry-run", "--preserve", "--title", "New", "--cue-in", "1500",
                     "--field", "Show=Breakfast", "song.mp3")
    assert (result.returncode, errors_of_dry_run(result)) == (0, b"")
    # Header 10, TIT2 14, TALB 16, stamp 52, Cue In 22, Show 25, end 4.
    assert result.stdout.decode() == (
        'song.mp3: dry run, nothing is written\n'
        '  Title: "Old" -> "New"\n'
        '  ID3v1 title: "Old title" -> "New"\n'
        '  Cue in: 0 -> 1500\n'
        '  Field "Show": null -> "Breakfast"\n'
        '  Fits in place: the tag needs 143 bytes of 2040\n'
        '  Would be replaced: TIT2:1 (4 bytes)\n')
    assert snapshot(song) == before
    assert os.listdir(song.parent) == ["song.mp3"]


def test_dry_run_tells_that_a_tag_does_not_fit(plain, brindle):
    before = snapshot(plain)
    shown = brindle("set", "--dry-run", "--title", "x", "plain.mp3").stdout.decode()
    assert "  Would be rebuilt: the tag needs 78 bytes, there is none yet\n" in shown
    assert "  An ID3v1 record would be appended\n" in shown
    shown = brindle("set", "--dry-run", "--album", "x", "plain.mp3").stdout.decode()
    assert "ID3v1" not in shown
    assert snapshot(plain) == before


# --- Preserve

@pytest.mark.parametrize("fits", [True, False])
def test_preserve_keeps_time_mode_and_owner(tmp_path, brindle, fits):
    path = tmp_path / "a.mp3"
    path.write_bytes((tag(padding=2000) if fits else b"") + AUDIO)
    path.chmod(0o604)
    root = os.geteuid() == 0
    if root:
        os.chown(path, 12345, 23456)
    os.utime(path, ns=(OLD_TIME, OLD_TIME))
    inode = path.stat().st_ino
    assert brindle("set", "--preserve", "--title", "New", "a.mp3").returncode == 0
    status = path.stat()
    assert (status.st_ino == inode) == fits
    assert status.st_mtime_ns == OLD_TIME
    assert status.st_mode & 0o7777 == 0o604
    if root:
        assert (status.st_uid, status.st_gid) == (12345, 23456)


def test_without_preserve_the_time_is_that_of_the_save(song, brindle):
    os.utime(song, ns=(OLD_TIME, OLD_TIME))
    assert brindle("set", "--title", "New", "song.mp3").returncode == 0
    assert song.stat().st_mtime_ns != OLD_TIME


# --- Several files

def test_file_that_fails_does_not_stop_the_others(song, plain, tmp_path, brindle):
    refused = tmp_path / "refused.mp3"
    # Its frame claims a byte more than the tag has.
    refused.write_bytes(tag(frame("TIT3", b"\0abc")[:-1]) + AUDIO)
    before = snapshot(refused)
    result = brindle("set", "--title", "New", "missing.mp3", "refused.mp3", "song.mp3",
                     "plain.mp3")
    assert result.returncode == 1
    errors = result.stderr.decode().splitlines()
    assert errors[0] == "brindle: missing.mp3: No such file or directory"
    assert errors[1].startswith("brindle: refused.mp3: Saving would lose TIT3:1 ")
    assert len(errors) == 2
    assert snapshot(refused) == before
    assert id3(song)["TIT2"].text == id3(plain)["TIT2"].text == ["New"]


@pytest.mark.parametrize("name, reason", [
    ("song.wav", "The name does not end in mp3 or mp2"),
    ("pipe.mp3", "Not a regular file"),
])
def test_what_is_no_mp3_file_fails(tmp_path, brindle, name, reason):
    (tmp_path / "song.wav").write_bytes(AUDIO)
    os.mkfifo(tmp_path / "pipe.mp3")
    result = brindle("set", "--title", "New", name)
    assert (result.returncode, one_line(result)) == (1, f"brindle: {name}: {reason}")


# --- Errors of usage: before any file is touched

LONGEST = "x" * 4999
USAGE_ERRORS = [
    [], ["--separate"], ["--dry-run"], ["--force", "--preserve"],
    ["--nonsense", "x"], ["--title"],
    ["--field", "=x"], ["--field", "x"], ["--field", ""],
    ["--genre", "256"], ["--genre", "-1"], ["--genre", "Blues"], ["--genre", "1.5"],
    ["--genre", ""], ["--genre", " 1"],
    ["--year", "32768"], ["--year", "-32769"], ["--year", "x"], ["--year", "1e3"],
    ["--track", "32768"], ["--track", "3/12"], ["--v1-year", "32768"], ["--no-fade", "32768"],
    ["--category-level", "32768"], ["--category-level", "high"],
    ["--cue-in", "2147483648"], ["--intro", "-2147483649"], ["--outro", "1.5"],
    ["--sectone", "99999999999999999999"], ["--volume", "loud"],
    ["--speed", "fast"], ["--speed", "inf"], ["--speed", "nan"], ["--speed", "1e999"],
    ["--speed", "0x10"], ["--speed", ""], ["--speed", "1.5x"],
    ["--opener", "--no-opener"],
    ["--title", "a", "--title", "b"],
    *[[option, LONGEST + "x"] for option in (
        "--title", "--artist", "--album", "--composer", "--publisher", "--copyright", "--url",
        "--v1-title", "--v1-artist", "--v1-comment")],
    ["--comment", "x" * 4996],
    ["--category", "x" * (4998 - len("Category") + 1)],
    ["--field", "n=" + "x" * 4998],
]


@pytest.mark.parametrize("options", USAGE_ERRORS, ids=lambda options: " ".join(options)[:40])
def test_wrong_usage_touches_no_file(song, brindle, options):
    before = snapshot(song)
    extra = ["--album", "x"] if options and options[0] not in (
        "--separate", "--dry-run", "--force") else []
    result = brindle("set", "song.mp3", *extra, *options)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.startswith(b"brindle: ")
    assert snapshot(song) == before


def test_without_a_file_is_wrong_usage(brindle):
    assert brindle("set", "--title", "x").returncode == 2


@pytest.mark.parametrize("options, key, value", [
    (["--title", LONGEST], "Title", LONGEST),
    # Hosts read what they write with its language in front.
    (["--comment", "x" * 4995], "Comments", "nt" + "x" * 4995),
    (["--category", "x" * (4998 - len("Category"))], "Category", "x" * (4998 - len("Category"))),
    (["--field", "Copy=" + "x" * 4994], "Copy", "x" * 4994),
    (["--speed", "-1e300"], "Speed", -1e300),
])
def test_longest_values_are_read_back(song, brindle, options, key, value):
    assert brindle("set", *options, "song.mp3").returncode == 0
    shown = brindle("show", "--json", "song.mp3").stdout
    assert json.loads(shown)[key] == value


def test_help_ends_with_an_example(brindle):
    result = brindle("set", "--help")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode().splitlines()[-2] == "Example:"
    assert result.stdout.decode().splitlines()[-1].startswith("  brindle set --title")


# --- The file system

@pytest.mark.plain_build
@pytest.mark.skipif(os.geteuid() != 0 or not shutil.which("setpriv"),
                    reason="needs another user for whom permissions count")
def test_read_only_file_is_refused_and_left_as_it_was(song, brindle, program):
    song.chmod(0o444)
    song.parent.chmod(0o755)
    for parent in list(song.parents)[:-2]:
        if not parent.stat().st_mode & 0o001:
            parent.chmod(parent.stat().st_mode | 0o011)
    before = snapshot(song)
    result = subprocess.run(
        ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", program, "set", "--title",
         "New", str(song)], capture_output=True, check=False)
    assert result.returncode == 1, result.stderr
    assert result.stderr.startswith(b"brindle: ")
    assert snapshot(song) == before


def test_symbolic_link_stays_one(song, brindle):
    (song.parent / "link.mp3").symlink_to("song.mp3")
    assert brindle("set", "--title", "x" * 3000, "link.mp3").returncode == 0
    assert (song.parent / "link.mp3").is_symlink()
    assert id3(song)["TIT2"].text == ["x" * 3000]
