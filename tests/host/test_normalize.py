"""`brindle normalize`: afterwards hosts and other programs read the same, and the same as before."""

import json

import pytest
from mutagen.id3 import (APIC, COMM, ID3, IPLS, OWNE, POPM, RVA2, TALB, TCON, TDOR, TDRC, TIPL, TIT2, TMCL,
                         TPE1, TPE2, TSOP, TXXX, UFID, USLT, WOAR, WXXX)

from mp3_bytes import frame, id3v1, tag, text_frame, user_frame
from tagged_file import AUDIO, AUDIO_HASH, audio_hash, snapshot

PNG = b"\x89PNG\r\n\x1a\n" + b"p" * 2000
STAMP = user_frame("TAGGED BY", "CorvaneTagger- Revised Feb 2011")


@pytest.fixture
def song(tmp_path):
    return tmp_path / "song.mp3"


def write(path, *frames, version=4, **options):
    path.write_bytes(AUDIO)
    made = ID3()
    for one in frames:
        made.add(one)
    made.save(path, v2_version=version, v1=0, **options)


def values(path):
    """What mutagen reads, by its own keys, in any encoding."""
    read = {}
    for key, one in ID3(path).items():
        held = dict(vars(one))
        held.pop("encoding", None)
        read[key] = {name: str(value) for name, value in held.items()}
    return read


def shown(brindle, path):
    return json.loads(brindle("show", "--json", path.name).stdout)


# What mutagen may read otherwise, and why.
EXPECTED = {
    "the stamp that every saved tag bears": {"TXXX:TAGGED BY"},
    "version 2.3 has one list of people": {"TIPL", "TMCL"},
    "a comment without description loses its language": {"COMM::eng", "COMM::\0\0\0"},
}


def assert_same_values(before, after, *also):
    other = {key for key in before.keys() | after.keys() if before.get(key) != after.get(key)}
    assert other <= set().union(*EXPECTED.values(), also), other


@pytest.mark.parametrize("version,encoding", [(3, 0), (3, 1), (4, 0), (4, 1), (4, 2), (4, 3)])
def test_hosts_read_what_others_read(brindle, song, version, encoding):
    write(song, TIT2(encoding, "Grüße"), TPE1(encoding, "Größe"), TALB(encoding, "Ä"),
          TPE2(encoding, "Band"), TXXX(encoding, "Cue In", "1500"), TXXX(encoding, "Móod", "señor"),
          COMM(encoding, "eng", "", "Hi"), USLT(encoding, "eng", "", "la\nla"),
          WXXX(encoding, "dé", "http://x"), TSOP(encoding, "s"), UFID("me", b"\0\1"),
          POPM("a", 5, 1), APIC(encoding, "image/png", 3, "é", PNG), version=version)
    before = values(song)
    assert brindle("normalize", "song.mp3").returncode == 0
    assert_same_values(before, values(song))
    facts = shown(brindle, song)
    assert (facts["Title"], facts["Artist"], facts["Album"]) == ("Grüße", "Größe", "Ä")
    assert facts["tag"]["title"] == "Grüße" and facts["tag"]["artist"] == "Größe"
    assert facts["Comments"] == facts["tag"]["comments"][0]["text"] == "Hi"
    assert facts["CueInmSStart"] == 1500
    assert facts["tag"]["custom"]["Móod"] == "señor"
    assert b"misread-text" not in brindle("check", "--notes", "song.mp3").stdout
    assert audio_hash(song.read_bytes()) == AUDIO_HASH
    once = snapshot(song)
    again = brindle("normalize", "song.mp3")
    assert again.stdout == b"song.mp3: nothing written, the file already has these values\n"
    assert snapshot(song) == once


def test_all_that_version_2_3_has_is_mapped(brindle, song):
    write(song, TDRC(3, "2003-05-06T10:20:33"), TDOR(3, "1999-01-02"), TCON(3, ["17", "Salsa"]),
          TIPL(3, [["producer", "P"]]), TMCL(3, [["guitar", "G"]]), TPE1(3, ["A", "B"]),
          RVA2("t", 1, 2.0, 0.5))
    before = values(song)
    result = brindle("normalize", "song.mp3")
    assert b'joined the values of TPE1:1 with "/"' in result.stdout
    content = song.read_bytes()
    for made in (text_frame("TYER", "2003"), text_frame("TDAT", "0605"), text_frame("TIME", "1020"),
                 text_frame("TORY", "1999"), text_frame("TCON", "(17)Salsa"),
                 text_frame("TPE1", "A/B"),
                 frame("IPLS", b"\0producer\0P\0guitar\0G\0")):
        assert made in content, made
    assert b"TIPL" not in content and b"TMCL" not in content
    assert_same_values(before, values(song), "TPE1", "TORY")
    assert values(song)["RVA2:t"] == before["RVA2:t"]


def test_frames_that_hold_more_than_text_stay(brindle, song):
    write(song, TIT2(1, "x"), OWNE(1, "EUR10", "20260101", "Säller"), version=3)
    body = song.read_bytes()
    owned = body[body.index(b"OWNE"):][:10 + len("EUR10") + 1 + 1 + 8 + 2 + 12]
    assert brindle("normalize", "song.mp3").returncode == 0
    assert owned in song.read_bytes() and text_frame("TIT2", "x") in song.read_bytes()
    assert values(song)["OWNE"]["price"] == "EUR10"


def test_texts_without_a_common_form_are_named_and_stay(brindle, song):
    write(song, TIT2(1, "Жук"), TALB(3, "it’s"), TPE2(3, "ok"), WOAR("http://a"))
    before = values(song)
    result = brindle("normalize", "song.mp3")
    assert result.returncode == 0
    kept = (b"kept TIT2:1, TALB:1, WOAR:1 as it is: no form of it reads the same in hosts and "
            b"other programs\n")
    assert result.stdout.endswith(kept)
    assert_same_values(before, values(song))
    assert text_frame("TPE2", "ok") in song.read_bytes()
    once = snapshot(song)
    assert brindle("normalize", "song.mp3").stdout == (
        b"song.mp3: nothing written, the file already has these values; " + kept)
    assert snapshot(song) == once


@pytest.mark.parametrize("content", [
    AUDIO,
    AUDIO + id3v1(b"Song"),
    tag(text_frame("TIT2", "Song"), user_frame("Intro", "7"), padding=100) + AUDIO,
    tag(text_frame("TIT2", "Song"), frame("PRIV", b"x\0\1\2")) + AUDIO + id3v1(b"Song"),
    tag(text_frame("TIT2", "Song\0"), STAMP, padding=9) + AUDIO,
    tag(text_frame("TIT2", "Song"), frame("APIC", b"\0image/png\0\3\0" + PNG)) + AUDIO,
], ids=["no tag", "a record alone", "8-bit texts", "no padding", "a terminator", "a picture"])
def test_what_all_read_alike_is_not_written(brindle, song, content):
    song.write_bytes(content)
    before = snapshot(song)
    assert brindle("normalize", "song.mp3").stdout == (
        b"song.mp3: nothing written, the file already has these values\n")
    assert snapshot(song) == before


@pytest.mark.parametrize("made", [
    USLT(3, "eng", "", "x" * 40_000),  # UTF-16 in between has more than 64 KiB
    USLT(0, "eng", "", "x" * 70_000),
    USLT(3, "eng", "", "x" * 32_760),
    TIPL(3, [["producer", "é" * 40_000]]),
    TMCL(3, [["guitar", "x" * 70_000], ["drums", "y"]]),
], ids=["larger in between", "8-bit text", "next to the limit", "people", "players"])
def test_no_text_is_too_long_to_be_kept_whole(brindle, song, made):
    write(song, TIT2(3, "ü"), made)
    song.write_bytes(song.read_bytes() + AUDIO * 4)  # hosts find no stream after a larger tag
    before = values(song)
    assert brindle("normalize", "song.mp3").returncode == 0
    after = values(song)
    assert_same_values(before, after)
    people = [key for key in before if key in ("TIPL", "TMCL")]
    assert [before[key]["people"] for key in people] == [after[key]["people"] for key in people] or (
        people == ["TMCL"] and before["TMCL"]["people"] == after["TIPL"]["people"])


def test_pairs_that_are_not_whole_are_not_joined(brindle, song):
    song.write_bytes(tag(frame("TMCL", b"\1\xff\xfea\0\0\0\xff\xfeb\0\0\0\xff\xfec\0")) + AUDIO)
    assert brindle("normalize", "song.mp3").returncode == 0
    assert frame("TMCL", b"\0a\0b\0c\0") in song.read_bytes()


def test_unsynchronisation_and_extended_header_go(brindle, song):
    body = text_frame("TIT2", "\xff\xe0"[:1]).replace(b"\xff", b"\xff\0")  # FF, then an inserted 0
    body = body + frame("PRIV", b"x\0y")
    song.write_bytes(b"ID3\3\0\x80" + bytes((0, 0, 0, len(body))) + body + AUDIO)
    assert brindle("normalize", "song.mp3").returncode == 0
    content = song.read_bytes()
    assert content[:6] == b"ID3\3\0\0"
    assert ID3(song)["TIT2"].text == ["ÿ"]
    assert frame("PRIV", b"x\0y") in content


def test_what_hosts_cannot_step_over_is_named_each_time(brindle, song):
    song.write_bytes(tag(text_frame("TIT2", "Song"), text_frame("TIT3", "x" * 5001)) + AUDIO)
    before = snapshot(song)
    assert brindle("normalize", "song.mp3").stdout == (
        b"song.mp3: nothing written, the file already has these values; hosts read title and artist "
        b'as "Corrupt ID3v2 Tag..." because of TIT3:1, which they cannot skip\n')
    assert snapshot(song) == before


def test_texts_come_before_what_hosts_cannot_step_over(brindle, song):
    song.write_bytes(tag(frame("APIC", b"\0image/png\0\3\0" + b"p" * 90_000),
                         text_frame("TIT2", "Song")) + AUDIO)
    result = brindle("normalize", "song.mp3")
    assert b"Corrupt ID3v2 Tag" in result.stdout
    content = song.read_bytes()
    assert content.index(b"TIT2") < content.index(b"APIC")


def test_pictures_are_dropped_on_demand(brindle, song):
    write(song, TIT2(3, "Song"), APIC(3, "image/png", 3, "a", PNG),
          APIC(3, "image/png", 4, "b", PNG * 50))
    assert brindle("normalize", "--pictures", "drop", "song.mp3").returncode == 0
    assert sorted(ID3(song)) == ["TIT2", "TXXX:TAGGED BY"]


def test_dry_run_touches_nothing(brindle, song):
    write(song, TIT2(3, "Song"), IPLS(3, [["a", "b"]]), version=3)
    before = snapshot(song)
    result = brindle("normalize", "--dry-run", "song.mp3")
    assert b"Would be converted: TIT2:1" in result.stdout
    assert snapshot(song) == before


def test_a_tag_that_would_lose_frames_is_refused(brindle, song):
    """The last frame claims more than the tag holds."""
    body = frame("TIT2", b"\1\xff\xfeS\0") + b"TALB" + bytes((0, 0, 1, 0, 0, 0)) + b"\0A"
    song.write_bytes(b"ID3\3\0\0" + bytes((0, 0, 0, len(body))) + body + AUDIO)
    before = snapshot(song)
    result = brindle("normalize", "song.mp3")
    assert result.returncode == 1 and b"would lose" in result.stderr
    assert snapshot(song) == before
    assert brindle("normalize", "--force", "song.mp3").returncode == 0
    assert text_frame("TIT2", "S") in song.read_bytes()


def test_a_folder_is_normalized_with_one_line_a_file(brindle, tmp_path):
    for name in ("a.mp3", "b.mp3", "c.mp3"):
        write(tmp_path / name, TIT2(3, "ü"))
    (tmp_path / "b.mp3").write_bytes(b"")
    result = brindle("normalize", "--yes", ".")
    assert result.stdout.count(b"ID3v2.4 tag converted") == 2
    assert brindle("normalize", ".").returncode == 2, "there is no terminal to ask"
