"""`brindle normalize --strip-foreign`: tags of other programs go, and not a byte of audio."""

import json

import mutagen.apev2
import pytest

from mp3_bytes import audio, id3v1, tag, text_frame
from tagged_file import errors_of_dry_run, snapshot

AUDIO = audio()
TAG = tag(text_frame("TIT2", "Song"), padding=100)
RECORD = id3v1(b"Song")
NOTHING = b"song.mp3: nothing written, the file already has these values"


def item(key, value):
    return len(value).to_bytes(4, "little") + bytes(4) + key + b"\0" + value


def ape(*items, header=False, count=None, size=None, version=2000):
    content = b"".join(items)
    numbers = (version.to_bytes(4, "little")
               + (len(content) + 32 if size is None else size).to_bytes(4, "little")
               + (len(items) if count is None else count).to_bytes(4, "little"))
    flags = 0x80000000 if header else 0
    footer = b"APETAGEX" + numbers + flags.to_bytes(4, "little") + bytes(8)
    first = b"APETAGEX" + numbers + (flags | 0x20000000).to_bytes(4, "little") + bytes(8)
    return (first if header else b"") + content + footer


def lyrics3(*fields, size=None):
    content = b"LYRICSBEGIN" + b"".join(name + b"%05d" % len(text) + text for name, text in fields)
    return content + b"%06d" % (len(content) if size is None else size) + b"LYRICS200"


APE = ape(item(b"Title", b"Song"), item(b"Cover Art (Front)", b"\xff\xd8" * 4_000), header=True)
LYRICS3 = lyrics3((b"IND", b"00"), (b"LYR", b"la\r\nla"))
GONE = {
    "ape with a header": APE,
    "ape without one": ape(item(b"Title", b"Song")),
    "ape of version 1": ape(item(b"Title", b"Song"), version=1000),
    "ape without items": ape(),
    "lyrics3": LYRICS3,
    "lyrics3 before ape": LYRICS3 + APE,
    "ape before lyrics3": APE + LYRICS3,
    "two of each": ape(item(b"a", b"b")) + LYRICS3 + APE + lyrics3(),
}
# Why they stay.
DAMAGED = {
    "ape of a size past the audio": (ape(size=0x7fffffff), "kept the APEv2 tag, whose parts"),
    "ape of too many items": (ape(item(b"a", b"b"), count=2), "kept the APEv2 tag, whose parts"),
    "ape of too few items": (ape(item(b"a", b"b"), count=0), "kept the APEv2 tag, whose parts"),
    "ape over audio": (ape(item(b"a", b"b"), size=32 + 11 + 417), "kept the APEv2 tag, whose parts"),
    "ape without its header": (ape(item(b"a", b"b"), header=True)[32:],
                               "kept the APEv2 tag, whose parts"),
    "ape with a key without end": (ape(b"\1\0\0\0\0\0\0\0" + b"k" * 300),
                                   "kept the APEv2 tag, whose parts"),
    "ape with a long value": (ape(b"\xff\xff\xff\x7f\0\0\0\0key\0v"),
                              "kept the APEv2 tag, whose parts"),
    "lyrics3 without a beginning": (lyrics3((b"IND", b"00"))[1:], "kept the Lyrics3 tag, whose"),
    "lyrics3 of another size": (lyrics3((b"IND", b"00"), size=999_999),
                                "kept the Lyrics3 tag, whose parts"),
    "lyrics3 with a long field": (lyrics3((b"IND", b"00")).replace(b"00002", b"99999"),
                                  "kept the Lyrics3 tag, whose parts"),
    "frames as a value": (
        (len(AUDIO) // 2).to_bytes(4, "little") + bytes(4) + b"k\0" + AUDIO[:len(AUDIO) // 2]
        + ape(count=1, size=32 + 10 + len(AUDIO) // 2),
        "kept the tags at the end, where an audio frame may be"),
    "ape in a frame that is cut": (AUDIO[:100] + ape(item(b"a", b"b")),
                                   "kept the tags at the end, where an audio frame may be"),
}


@pytest.fixture
def song(tmp_path):
    return tmp_path / "song.mp3"


def strip(brindle, *options):
    return brindle("normalize", "--strip-foreign", *options, "song.mp3")


def hash_of(brindle):
    return json.loads(brindle("scan", "--json", "--hash", "song.mp3").stdout)[
        "file_facts"]["audio_sha256"]


def notes(brindle):
    checked = json.loads(brindle("check", "--json", "--notes", "song.mp3").stdout)
    return {found["code"] for found in checked["reasons"]}


@pytest.mark.parametrize("record", [b"", RECORD, RECORD * 2], ids=["no record", "record", "two"])
@pytest.mark.parametrize("front", [b"", TAG], ids=["no tag", "tag"])
@pytest.mark.parametrize("name", GONE)
def test_foreign_tags_go(brindle, song, name, front, record):
    song.write_bytes(front + AUDIO + GONE[name] + record)
    sound = hash_of(brindle)
    before = song.read_bytes()
    assert notes(brindle) & {"apev2-tag", "lyrics3-tag"}
    dry = strip(brindle, "--dry-run")
    assert b"  removed the " in dry.stdout and errors_of_dry_run(dry) == b""
    assert song.read_bytes() == before
    result = strip(brindle)
    assert result.returncode == 0, result.stderr
    sizes = sum(int(words.split(b"(")[1].split()[0])
                for words in result.stdout.split(b"; removed the ")[1:])
    assert sizes == len(GONE[name])
    assert song.read_bytes() == front + AUDIO + record
    assert hash_of(brindle) == sound
    assert not notes(brindle) & {"apev2-tag", "lyrics3-tag"}
    once = snapshot(song)
    assert strip(brindle).stdout == NOTHING + b"\n"
    assert snapshot(song) == once
    assert brindle("undo").returncode == 0
    assert song.read_bytes() == before


@pytest.mark.parametrize("record", [b"", RECORD], ids=["no record", "record"])
@pytest.mark.parametrize("name", DAMAGED)
def test_what_may_be_audio_stays(brindle, song, name, record):
    content, reason = DAMAGED[name]
    song.write_bytes(TAG + AUDIO + content + record)
    before = snapshot(song)
    result = strip(brindle)
    assert result.returncode == 0, result.stderr
    assert result.stdout.startswith(NOTHING + b"; " + reason.encode())
    assert snapshot(song) == before


def test_whole_tag_after_a_damaged_one_goes(brindle, song):
    damaged = ape(item(b"a", b"b"), count=2)
    song.write_bytes(AUDIO + damaged + LYRICS3)
    result = strip(brindle)
    assert b"kept the APEv2 tag, whose parts do not add up; removed the Lyrics3 tag" in result.stdout
    assert song.read_bytes() == AUDIO + damaged


def test_foreign_tags_stay_without_the_option(brindle, song):
    song.write_bytes(TAG + AUDIO + APE)
    before = snapshot(song)
    assert brindle("normalize", "song.mp3").stdout == NOTHING + b"\n"
    assert snapshot(song) == before


def test_texts_are_normalized_in_the_same_write(brindle, song):
    utf16 = b"TIT2\0\0\0\x0d\0\0\1" + "\ufeffSöng!".encode("utf-16le")
    song.write_bytes(tag(utf16, padding=500) + AUDIO + APE + RECORD)
    result = strip(brindle)
    assert b"removed the APEv2 tag" in result.stdout
    content = song.read_bytes()
    assert text_frame("TIT2", "Söng!") in content and content.endswith(AUDIO + RECORD)
    assert brindle("undo").returncode == 0
    assert song.read_bytes() == tag(utf16, padding=500) + AUDIO + APE + RECORD


def test_tag_of_another_program_that_we_did_not_make(brindle, song):
    song.write_bytes(TAG + AUDIO)
    made = mutagen.apev2.APEv2()
    made["Title"], made["Artist"] = "Söng", ["A", "B"]
    made.save(song)
    assert song.read_bytes() != TAG + AUDIO
    assert strip(brindle).returncode == 0
    assert song.read_bytes() == TAG + AUDIO
    with pytest.raises(mutagen.apev2.APENoHeaderError):
        mutagen.apev2.APEv2(song)


def test_other_names_of_the_file_are_told(brindle, song, tmp_path):
    song.write_bytes(AUDIO + APE)
    (tmp_path / "other.mp3").hardlink_to(song)
    assert b"its other names keep the old content" in strip(brindle).stdout
    assert (tmp_path / "other.mp3").read_bytes() == AUDIO + APE
