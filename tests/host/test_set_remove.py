"""`brindle set --remove`: fields that go, and everything else that stays."""

import pytest
from mutagen.id3 import COMM, ID3, TALB, TDRC, TIT2, TPE1, TXXX, WOAR

from mp3_bytes import audio, id3v1, tag, text_frame, user_frame
from tagged_file import snapshot

AUDIO = audio(600)
RECORD = id3v1(b"Old title", b"Old artist", b"Old album", b"1998", b"Old comment", 3, 17)
STAMP = "TXXX:TAGGED BY"


@pytest.fixture
def song(tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(AUDIO)
    frames = ID3()
    for one in (TIT2(encoding=3, text="T"), TPE1(encoding=0, text="A"), TALB(encoding=0, text="B"),
                TDRC(encoding=0, text="2003-05-06"), WOAR(url="http://a"),
                COMM(encoding=0, lang="eng", desc="", text="c"),
                COMM(encoding=0, lang="eng", desc="kept", text="c"),
                TXXX(encoding=0, desc="Cue In", text="200"),
                TXXX(encoding=1, desc="Show", text="S")):
        frames.add(one)
    frames.save(path, v2_version=4, v1=0)
    path.write_bytes(path.read_bytes() + RECORD)
    return path


ALL = {"TIT2", "TPE1", "TALB", "TDRC", "WOAR:http://a", "COMM::eng", "COMM:kept:eng", "TXXX:Cue In",
       "TXXX:Show"}


def frames_of(path):
    return set(ID3(path, translate=False, load_v1=False)) - {STAMP, "TYER", "TDAT"}


@pytest.mark.parametrize("names, gone", [
    (["album"], {"TALB"}),
    (["title"], {"TIT2"}),
    (["url"], {"WOAR:http://a"}),
    (["comment"], {"COMM::eng"}),
    (["cue-in"], {"TXXX:Cue In"}),
    (["field:Cue In"], {"TXXX:Cue In"}),
    (["field:Show", "album"], {"TXXX:Show", "TALB"}),
])
def test_field_is_gone_and_all_others_stay(brindle, song, names, gone):
    arguments = [word for name in names for word in ("--remove", name)]
    result = brindle("set", *arguments, "song.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    assert frames_of(song) == ALL - gone
    assert AUDIO in song.read_bytes()
    before = snapshot(song)
    result = brindle("set", *arguments, "song.mp3")
    assert b"nothing written, the file already has these values" in result.stdout
    assert snapshot(song) == before


def test_year_goes_with_the_recording_time(brindle, song):
    assert brindle("set", "--remove", "year", "song.mp3").returncode == 0
    assert not {"TDRC", "TYER"} & set(ID3(song, translate=False, load_v1=False))
    assert b"1998" not in song.read_bytes()[-128:]


def test_title_goes_from_the_record_too(brindle, song):
    result = brindle("set", "--remove", "title", "--remove", "artist", "song.mp3")
    assert b'; Title: ""' in result.stdout and b'; ID3v1 title: ""' in result.stdout
    record = song.read_bytes()[-128:]
    assert (record[3:33].strip(b"\0 "), record[33:63].strip(b"\0 ")) == (b"", b"")
    assert record[63:] == RECORD[63:]


@pytest.mark.parametrize("arguments", [("--remove", "title", "--separate"), ("--remove", "album")])
def test_record_stays(brindle, song, arguments):
    assert brindle("set", *arguments, "song.mp3").returncode == 0
    assert song.read_bytes()[-128:] == RECORD


def test_no_record_is_made(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(tag(text_frame("TIT2", "x"), text_frame("TALB", "y")) + AUDIO)
    result = brindle("set", "--remove", "title", "--remove", "v1-comment", "a.mp3")
    assert (result.returncode, b"ID3v1 record" in result.stdout) == (0, False)
    assert path.read_bytes().endswith(AUDIO)


def test_file_without_the_field_is_left_alone(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(tag(text_frame("TALB", "y")) + AUDIO)
    before = snapshot(path)
    result = brindle("set", "--remove", "title", "--remove", "field:Show", "a.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    assert snapshot(path) == before


def test_removed_beside_set(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(tag(text_frame("TIT2", "x"), user_frame("Show", "y")) + AUDIO)
    assert brindle("set", "--title", "New", "--remove", "field:Show", "a.mp3").returncode == 0
    assert set(ID3(path)) == {"TIT2", STAMP}
    assert ID3(path)["TIT2"].text == ["New"]


def test_dry_run_tells(brindle, song):
    before = snapshot(song)
    result = brindle("set", "--remove", "album", "--dry-run", "song.mp3")
    assert b'  Album: "B" -> ""\n' in result.stdout
    assert b"  Would be removed: TALB:1 (" in result.stdout
    assert snapshot(song) == before


@pytest.mark.parametrize("arguments, message", [
    (["--remove", "nonsense"], "--remove: unknown field 'nonsense'"),
    (["--remove", "--title"], "--remove: unknown field '--title'"),
    (["--remove", "field:"], "--remove: unknown field 'field:'"),
    (["--remove", "title", "--title", "x"], "--remove: 'title' is also set"),
    (["--remove", "field:A", "--field", "A=1"], "--remove: 'field:A' is also set"),
    (["--remove", "title", "--host-form"], "--remove excludes --host-form"),
    ([], "A value to set or remove is required"),
])
def test_usage(brindle, song, arguments, message):
    before = snapshot(song)
    result = brindle("set", "song.mp3", *arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.decode().split("\n")[0] == f"brindle: {message}"
    assert snapshot(song) == before
