"""`brindle set --host-form`: as hosts save, and what that costs."""

import mutagen.id3
import pytest

from mp3_bytes import audio, frame, tag, text_frame, user_frame
from tagged_file import AUDIO, AUDIO_HASH, RECORD, audio_hash, one_line, snapshot


@pytest.fixture
def song(tmp_path):
    """With an ID3v2 tag that has room, and an ID3v1 record."""
    path = tmp_path / "song.mp3"
    path.write_bytes(tag(text_frame("TIT2", "Old"), text_frame("TALB", "Album"), padding=2000)
                     + AUDIO + RECORD)
    return path


def id3(path):
    return mutagen.id3.ID3(path)


def test_link_and_comment_are_written_as_hosts_do(song, brindle):
    assert brindle("set", "--host-form", "--url", "http://a", "--comment", "x", "song.mp3").returncode == 0
    content = song.read_bytes()
    assert frame("WOAR", b"\0http://a") in content
    assert frame("COMM", b"\0\0nt\0x") in content


def test_record_is_always_written(song, brindle):
    song.write_bytes(song.read_bytes()[:-128])
    result = brindle("set", "--host-form", "--album", "x", "song.mp3")
    assert result.stdout.decode() == ("song.mp3: ID3v2 tag written in place (92 of 2040 bytes), "
                                      "ID3v1 record appended\n")


# --- A version 2 tag is converted first

def version2_frame(frame_id, body):
    return frame_id.encode() + len(body).to_bytes(3, "big") + body


def version2_tag(*frames):
    content = b"".join(frames) + bytes(100)
    assert len(content) < 16384
    return b"ID3\2\0\0\0\0" + bytes((len(content) >> 7, len(content) & 0x7F)) + content


TT2, TP1 = version2_frame("TT2", b"\0Old"), version2_frame("TP1", b"\0Ann")
TAL = version2_frame("TAL", b"\0Album")
TXX = version2_frame("TXX", b"\0Show\0Breakfast")


def test_version2_tag_is_converted(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(version2_tag(TT2, TP1) + AUDIO)
    result = brindle("set", "--host-form", "--composer", "Bea", "a.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == ("a.mp3: ID3v2.2 tag converted and file rebuilt, "
                                      "ID3v1 record appended\n")
    assert path.read_bytes()[3] == 3
    assert id3(path)["TIT2"].text == ["Old"]
    assert id3(path)["TPE1"].text == ["Ann"]
    assert id3(path)["TCOM"].text == ["Bea"]
    assert audio_hash(path.read_bytes()) == AUDIO_HASH


@pytest.mark.parametrize("frames, options, status", [
    ((TT2, TAL), ["--title", "New"], 1),
    ((TT2, TAL), ["--album", "New"], 0),
    ((TT2, TXX), ["--field", "Other=x"], 1),
    ((TT2, TXX), ["--field", "Show=x"], 0),
])
def test_what_the_conversion_drops_is_lost_unless_it_is_set(tmp_path, brindle, frames, options,
                                                            status):
    path = tmp_path / "a.mp3"
    path.write_bytes(version2_tag(*frames) + AUDIO)
    before = snapshot(path)
    assert brindle("set", "--host-form", "--dry-run", *options, "a.mp3").returncode == status
    assert snapshot(path) == before
    result = brindle("set", "--host-form", *options, "a.mp3")
    assert result.returncode == status, result.stderr
    if status == 1:
        assert snapshot(path) == before
        assert "dropped by the conversion" in one_line(result)
        assert brindle("set", "--host-form", "--force", *options, "a.mp3").returncode == 0
    assert path.read_bytes()[3] == 3
    assert audio_hash(path.read_bytes()) == AUDIO_HASH


# --- Refusals: frames that other programs see and a save would leave out

TOO_LONG = b"\0" + b"a" * 5000
LOSSES = {
    "too large": (tag(text_frame("TALB", "x"), frame("TIT3", TOO_LONG)),
                  ["TIT3:1 (5001 bytes, too large to be read)"]),
    "too large picture": (tag(text_frame("TALB", "x"), frame("APIC", b"a" * 81921)),
                          ["APIC:1 (81921 bytes, too large to be read)"]),
    "named": (tag(user_frame("Note", "a" * 5000)),
              ['TXXX:1 "Note" (5006 bytes, too large to be read)']),
    "after a corrupt frame": (tag(frame("TIT3", TOO_LONG), text_frame("TALB", "Album")),
                               ["TIT3:1 (5001 bytes, too large to be read)",
                                "TALB:1 (6 bytes, after a corrupt frame)"]),
    "after zeros": (tag(frame("GEOB", bytes(5001)), text_frame("TALB", "Album")),
                     ["GEOB:1 (5001 bytes, too large to be read)",
                      "TALB:1 (6 bytes, not reached when the tag was read)"]),
    # Version 4: the 201 bytes of the first frame are read as 329.
    "version 4 size": (b"ID3\4\0\0\0\0\5\x7e"
                       + b"TIT3\0\0\1\x49\0\0\0" + b"a" * 200 + b"TALB\0\0\0\6\0\0\0Album"
                       + bytes(6 + 512 + 128 - 16 - 211),
                       ["TIT3:1 (201 bytes, in an unknown form)",
                        "TALB:1 (6 bytes, not reached when the tag was read)"]),
    "empty user text": (tag(user_frame("A", "1"), frame("TXXX", b"\0\0"), user_frame("B", "2")),
                        ["TXXX:2 (2 bytes, left out when the tag is written)",
                         'TXXX:3 "B" (4 bytes, left out when the tag is written)']),
}


@pytest.mark.parametrize("name", LOSSES)
def test_save_that_loses_frames_is_refused(tmp_path, brindle, name):
    old_tag, lost = LOSSES[name]
    path = tmp_path / "a.mp3"
    path.write_bytes(old_tag + audio(400))
    before = snapshot(path)
    result = brindle("set", "--host-form", "--title", "New", "a.mp3")
    assert (result.returncode, result.stdout) == (1, b"")
    assert one_line(result) == ("brindle: a.mp3: Saving would lose " + ", ".join(lost)
                                + "; --force saves anyway")
    assert snapshot(path) == before

    forced = brindle("set", "--host-form", "--force", "--title", "New", "a.mp3")
    assert (forced.returncode, forced.stderr) == (0, b"")
    assert ("lost " + ", ".join(lost)) in forced.stdout.decode()
    assert path.read_bytes().count(audio(400)) == 1
    assert id3(path)["TIT2"].text == ["New"]


def test_frame_that_is_replaced_is_no_loss(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(tag(frame("TIT2", TOO_LONG)) + AUDIO)
    assert brindle("set", "--host-form", "--title", "New", "a.mp3").returncode == 0
    assert id3(path)["TIT2"].text == ["New"]


def test_frames_with_another_body_are_listed_and_not_refused(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(tag(frame("COMM", b"\0eng\0Hi"), frame("PRIV", b"me\0\1\2"), padding=99)
                     + AUDIO)
    shown = brindle("set", "--host-form", "--dry-run", "--title", "New", "a.mp3").stdout.decode()
    assert "  Would be changed: COMM:1 (7 bytes, same text in another form)\n" in shown
    assert "  Would be changed: PRIV:1 (5 bytes, with other content)\n" in shown
    assert brindle("set", "--host-form", "--title", "New", "a.mp3").returncode == 0
