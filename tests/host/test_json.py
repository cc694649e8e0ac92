"""What the tag says, beside what hosts read of it."""

import json
import os
import pathlib
import subprocess

import jsonschema
import pytest
from mutagen.id3 import APIC, COMM, ID3, TALB, TCON, TDRC, TIT2, TPE1, TRCK, TXXX, USLT

from mp3_bytes import audio, frame, id3v1, tag, text_frame

SCHEMA = json.loads((pathlib.Path(__file__).resolve().parents[2] / "docs" / "brindle.schema.json")
                    .read_text())
AUDIO = audio(1_000)
COVER = b"\xff\xd8\xff\xe0" + bytes(range(256)) * 700


def valid(line):
    facts = json.loads(line)
    jsonschema.validate(facts, SCHEMA)
    return facts


@pytest.fixture
def shown(tmp_path, brindle):
    """The objects of `show --json` and `scan --json`, which agree."""

    def show(path):
        of_show = valid(brindle("show", "--json", path.name).stdout)
        of_scan = valid(brindle("scan", "--json", path.name).stdout)
        assert of_scan["tag"] == of_show["tag"]
        assert of_scan["file_facts"] == of_show["file_facts"]
        return of_show

    return show


def modern_tag(path, version, encoding, title):
    frames = ID3()
    for one in (TIT2(encoding=encoding, text=title), TPE1(encoding=encoding, text=["A", "B"]),
                TALB(encoding=encoding, text=title), TRCK(encoding=0, text="3/9"),
                TDRC(encoding=0, text="2003-05-06"), TCON(encoding=0, text="(17)"),
                COMM(encoding=encoding, lang="eng", desc="", text=title),
                COMM(encoding=encoding, lang="deu", desc="about", text="x"),
                TXXX(encoding=encoding, desc="Cue In", text="200"),
                USLT(encoding=encoding, lang="eng", desc="", text=title * 3),
                APIC(encoding=encoding, mime="image/jpeg", type=3, desc="front", data=COVER)):
        frames.add(one)
    path.write_bytes(AUDIO)
    frames.save(path, v2_version=version, v1=0)


@pytest.mark.parametrize("version", [3, 4])
@pytest.mark.parametrize("encoding, title", [(0, "Caf\u00e9"), (1, "\u6771\u4eac"),
                                             (1, "\U0001f3b5"), (3, "\u041f\u0435\u0441\u043d\u044f")])
def test_tag_equals_what_mutagen_reads(tmp_path, shown, version, encoding, title):
    if version == 3 and encoding == 3:
        encoding = 1
    path = tmp_path / "song.mp3"
    modern_tag(path, version, encoding, title)
    facts = shown(path)
    read = ID3(path)
    of_tag = facts["tag"]
    assert of_tag["title"] == read["TIT2"].text[0] == title
    assert of_tag["artist"] == "A/B"
    assert of_tag["album"] == title
    assert of_tag["track"] == "3/9"
    assert of_tag["year"] == "2003"
    assert of_tag["genre"]["text"] in ("(17)", "17")
    assert (of_tag["genre"]["number"], of_tag["genre"]["name"]) == (17, "Rock")
    assert {(c["text"], c["language"], c["description"]) for c in of_tag["comments"]} == {
        (title, "eng", ""), ("x", "deu", "about")}
    assert of_tag["custom"] == {"Cue In": "200"}
    assert of_tag["lyrics"] == title * 3
    assert of_tag["pictures"] == [{"type": 3, "mime_type": "image/jpeg", "description": "front",
                                   "bytes": len(COVER), "width": None, "height": None}]


@pytest.mark.parametrize("encoder, ending", [
    (["-c:v", "png"], "png"), (["-c:v", "mjpeg"], "jpg"), (["-c:v", "gif"], "gif"),
    (["-c:v", "bmp"], "bmp"), (["-c:v", "libwebp"], "webp"),
    (["-c:v", "libwebp", "-lossless", "1"], "webp")])
@pytest.mark.parametrize("version", [3, 4])
def test_picture_has_the_size_of_its_image(tmp_path, shown, encoder, ending, version):
    image = tmp_path / f"cover.{ending}"
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=302x208",
                    "-frames:v", "1", *encoder, image], check=True)
    path = tmp_path / "song.mp3"
    path.write_bytes(AUDIO)
    frames = ID3()
    frames.add(APIC(encoding=0, mime="image/x", type=3, desc="a", data=image.read_bytes()))
    frames.add(APIC(encoding=1, mime="", type=4, desc="b", data=b"no image"))
    frames.save(path, v2_version=version, v1=0)
    first, second = sorted(shown(path)["tag"]["pictures"], key=lambda picture: picture["type"])
    assert (first["width"], first["height"]) == (302, 208)
    assert (second["width"], second["height"]) == (None, None)


def test_file_facts(tmp_path, shown):
    path = tmp_path / "song.mp3"
    ape_items = b"\4\0\0\0\0\0\0\0Note\0text"
    ape = (b"APETAGEX" + (2000).to_bytes(4, "little") + (len(ape_items) + 32).to_bytes(4, "little")
           + (1).to_bytes(4, "little") + bytes(4) + bytes(8))
    lyrics = b"LYRICSBEGININD00002" + b"00" + b"000021" + b"LYRICS200"
    front = tag(text_frame("TIT2", "x"), padding=50)
    path.write_bytes(front + AUDIO + ape_items + ape + lyrics + id3v1(b"x"))
    os.utime(path, (1_000_000_000, 1_000_000_000))
    facts = shown(path)["file_facts"]
    assert facts == {
        "size": path.stat().st_size, "modified": "2001-09-09T01:46:40Z",
        "tags": [{"kind": "ID3v2.3", "bytes": len(front)}, {"kind": "Lyrics3", "bytes": 36},
                 {"kind": "APEv2", "bytes": len(ape_items) + 32}, {"kind": "ID3v1", "bytes": 128}],
        "bit_rate": 128_000}


def test_file_without_tag_and_stream(tmp_path, shown):
    path = tmp_path / "song.mp3"
    path.write_bytes(bytes(5000))
    facts = shown(path)
    assert facts["tag"] is None
    assert facts["file_facts"]["bit_rate"] is None
    assert facts["file_facts"]["tags"] == []


def test_failure_is_of_the_schema(tmp_path, brindle):
    assert "error" in valid(brindle("show", "--json", "missing.mp3").stdout)


def test_stamp_of_a_corrupt_tag_has_no_time(tmp_path, shown):
    path = tmp_path / "song.mp3"
    path.write_bytes(tag(frame("TIT3", b"\0" + b"a" * 6000), text_frame("TIT2", "Song"), padding=9)
                     + AUDIO)
    facts = shown(path)
    assert facts["Title"] == facts["Artist"] == "Corrupt ID3v2 Tag"
    assert facts["tag"]["title"] == "Song"


def test_report_shows_both_readings(tmp_path, brindle):
    path = tmp_path / "song.mp3"
    modern_tag(path, 4, 3, "Caf\u00e9")
    report = brindle("show", "song.mp3").stdout.decode()
    # Without a cover in front of it hosts read each byte of UTF-8 as a character.
    assert "Caf\u00e9  (hosts read: " in report
    path.write_bytes(tag(text_frame("TIT2", "Caf\u00e9"), padding=9) + AUDIO)
    assert "hosts read" not in brindle("show", "song.mp3").stdout.decode()
