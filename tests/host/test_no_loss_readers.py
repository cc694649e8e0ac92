"""What is saved is what programs that we did not write read."""

import re
import shutil
import subprocess

import mutagen.id3
import pytest

from commands import output_of
from mp3_bytes import audio, frame, tag, text_frame, user_frame

AUDIO = audio()
PICTURE = bytes(i * 7 % 256 for i in range(40_000))
VALUES = ("--title", "Grüße", "--artist", "Duo", "--album", "Disc", "--year", "1999",
          "--track", "3", "--genre", "17", "--composer", "Ludwig", "--publisher", "House",
          "--copyright", "2026 us", "--url", "http://example.org/a", "--cue-in", "1500",
          "--category", "Jingles", "--field", "Show=Breakfast")


def picture_frame():
    return frame("APIC", b"\0image/png\0\x03Front\0" + PICTURE)


# A tag with room, one without, and none.
@pytest.fixture(params=["in_place", "rebuilt", "untagged"])
def song(request, brindle, tmp_path):
    """A path, and whether its old tag had a picture and other frames."""
    path = tmp_path / "song.mp3"
    frames = (text_frame("TIT2", "Old"), user_frame("Kept", "yes"), picture_frame(),
              text_frame("TPE2", "Band"))
    old = {"in_place": tag(*frames, padding=2000), "rebuilt": tag(*frames), "untagged": b""}
    path.write_bytes(old[request.param] + AUDIO)
    result = brindle("set", *VALUES, "song.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    return path, request.param != "untagged"


def test_mutagen_reads_it(song):
    path, had_frames = song
    read = mutagen.id3.ID3(path)
    assert read.version == (2, 3, 0)
    texts = {"TIT2": "Grüße", "TPE1": "Duo", "TALB": "Disc", "TRCK": "3", "TCOM": "Ludwig",
             "TPUB": "House", "TCOP": "2026 us"}
    assert {name: str(read[name]) for name in texts} == texts
    assert str(read["TDRC"]) == "1999"
    assert read["TCON"].genres == ["Rock"]
    fields = {"TAGGED BY": "CorvaneTagger- Revised Feb 2011", "Cue In": "1500",
              "Category": "Jingles", "Show": "Breakfast"}
    if had_frames:
        fields["Kept"] = "yes"
        assert str(read["TPE2"]) == "Band"
        assert read["APIC:Front"].data == PICTURE
        assert read["APIC:Front"].mime == "image/png" and read["APIC:Front"].type == 3
    assert {text.desc: text.text[0] for text in read.getall("TXXX")} == fields
    assert path.read_bytes()[read.size:-128] == AUDIO


@pytest.mark.skipif(shutil.which("eyeD3") is None, reason="needs eyeD3")
def test_eyed3_reads_it(song, tmp_path):
    path, had_frames = song
    pictures = tmp_path / "pictures"
    pictures.mkdir()
    text = output_of("eyeD3", "--no-color", "--write-images", pictures, path,
                     stderr=subprocess.STDOUT).decode()
    for line in ("ID3 v2.3:", "title: Grüße", "artist: Duo", "album: Disc"):
        assert line in text
    assert re.search(r"track: 3\b", text)
    assert "Rock" in text
    if had_frames:
        (picture,) = pictures.iterdir()
        assert picture.read_bytes() == PICTURE


@pytest.mark.skipif(shutil.which("id3v2") is None, reason="needs id3v2")
def test_id3v2_reads_it(song):
    path, had_frames = song
    lines = output_of("id3v2", "-l", path).decode("latin-1").splitlines()
    for wanted in ("TPE1 (Lead performer(s)/Soloist(s)): Duo",
                   "TALB (Album/Movie/Show title): Disc", "TYER (Year): 1999",
                   "TRCK (Track number/Position in set): 3", "TCOM (Composer): Ludwig",
                   "TXXX (User defined text information): (Cue In): 1500",
                   "TXXX (User defined text information): (Show): Breakfast"):
        assert wanted in lines
    assert any(line.startswith("APIC") for line in lines) == had_frames
