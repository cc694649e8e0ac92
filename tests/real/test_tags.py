"""What the program reads of tags that other programs wrote."""

import shutil

import pytest
from mutagen import id3

import encoders
from mpeg_frames import Stream, constant_duration, tag_length, variable_bitrate, variable_duration
from taggers import TAGGERS

BASE = encoders.constant(1, 44100, "j", 192)
LATIN1 = id3.Encoding.LATIN1


def frames_of(data):
    """Ids and bodies of a tag whose frames are all shorter than 128 bytes, so that version 2.3 and
    2.4 write their sizes alike."""
    found, place = [], 10
    while place < tag_length(data) and data[place:place + 4] != bytes(4):
        size = int.from_bytes(data[place + 4:place + 8], "big")
        assert size < 128
        found.append((data[place:place + 4].decode(), data[place + 10:place + 10 + size]))
        place += 10 + size
    return found


@pytest.fixture(name="copy")
def copy_of_an_encoding(encoded, tmp_path):
    def copy(encoding=BASE):
        target = tmp_path / encoding.file_name
        shutil.copyfile(encoded(encoding), target)
        return target
    return copy


def save(path, *frames, version=3, **options):
    tags = id3.ID3()
    for frame in frames:
        tags.add(frame)
    tags.save(path, v2_version=version, **options)


@pytest.mark.parametrize("tagger", TAGGERS, ids=lambda tagger: tagger.name)
def test_fields(tagger, copy, show):
    path = copy()
    tagger.tag(path)
    data = path.read_bytes()
    frames = frames_of(data)
    # Should a program begin to write its texts otherwise, this says so and not a wrong title.
    assert dict(frames)["TIT2"] == tagger.title_body

    facts = show(path)
    assert {name: facts[name] for name in tagger.expected} == tagger.expected
    assert facts["TagType"] == 3
    assert facts["v2Frames"] == list(dict.fromkeys(name for name, _ in frames))
    assert facts["FrameCount"] == len(facts["v2Frames"])
    assert {name: len(values) for name, values in facts["v2Tag"].items()} == {
        name: sum(1 for other, _ in frames if other == name) for name, _ in frames}


@pytest.mark.parametrize("tagger", TAGGERS, ids=lambda tagger: tagger.name)
def test_the_stream_after_a_tag(tagger, copy, show):
    path = copy()
    tagger.tag(path)
    facts, stream = show(path), Stream(path)
    assert facts["ID3TagSizeIncludingHeader"] == stream.tag_length > 0
    assert facts["RepairRequired"] is False
    assert facts["BitRate"] == 192000
    # Neither the tag nor the record counts.
    assert facts["Duration"] == constant_duration(stream.end - stream.tag_length, 192)


@pytest.mark.parametrize("with_header", (True, False), ids=("header", "no-header"))
def test_variable_stream_after_a_tag(with_header, copy, show):
    options = () if with_header else ("-t",)
    path = copy(encoders.lame(1, 44100, "j", "-V", "4", *options))
    save(path, id3.TIT2(encoding=LATIN1, text=["Song"]), v1=id3.ID3v1SaveOptions.CREATE)
    facts, stream = show(path), Stream(path)
    count, size = stream.vbr_header() or (len(stream.frames), stream.end - stream.tag_length)
    assert facts["Title"] == "Song"
    assert facts["VBR"] is True
    assert facts["RepairRequired"] is False
    assert facts["Duration"] == variable_duration(stream.frames[0], count)
    assert facts["BitRate"] == variable_bitrate(stream.frames[0], count, size)


def test_layer_2_after_a_tag(copy, show):
    path = copy(encoders.layer2(1, 44100, "s", 192))
    save(path, id3.TIT2(encoding=LATIN1, text=["Song"]), v1=id3.ID3v1SaveOptions.CREATE)
    facts, stream = show(path), Stream(path)
    assert (facts["Title"], facts["Layer"]) == ("Song", "2")
    assert facts["Duration"] == constant_duration(stream.end - stream.tag_length, 192)


@pytest.mark.parametrize("stored, number", [
    ("(17)", "1"),       # one digit short
    ("(17)Rock", "1"),
    ("(255)", "25"),
    ("(7)", "0"),        # the one digit is left out, and an empty text is no number
    ("17", "0"),         # no parentheses: all of it is the name
    ("Rock", "0"),
])
def test_genre_number(stored, number, copy, show):
    path = copy()
    save(path, id3.TCON(encoding=LATIN1, text=[stored]))
    facts = show(path)
    assert facts["Genre"] == number
    assert facts["v2Tag"]["TCON"] == [stored]


def test_track_of_several_is_no_number(copy, show):
    path = copy()
    save(path, id3.TRCK(encoding=LATIN1, text=["3/12"]))
    facts = show(path)
    assert facts["Track"] == 0
    assert facts["v2Tag"]["TRCK"] == ["3/12"]


def test_comments_are_joined(copy, show):
    path = copy()
    save(path, id3.COMM(encoding=LATIN1, lang="eng", desc="", text=["Hi"]),
         id3.COMM(encoding=LATIN1, lang="deu", desc="", text=["Hallo"]))
    facts = show(path)
    values = facts["v2Tag"]["COMM"]
    assert sorted(values) == ["deuHallo", "engHi"]
    # A NUL between them, which reading removes.
    assert facts["Comments"] == "\r\n".join(values)


def test_picture_passes_as_bytes(copy, show):
    path = copy()
    data = bytes(range(256)) * 4
    save(path, id3.APIC(encoding=LATIN1, mime="image/png", type=3, desc="Cover", data=data))
    facts = show(path)
    # Encoding, type of file and its NUL, kind of picture, description and its NUL, picture.
    size = 1 + len("image/png") + 1 + 1 + len("Cover") + 1 + len(data)
    assert facts["v2Tag"]["APIC"] == [{"bytes": size}]
    assert facts["RepairRequired"] is False


def test_version_2_4_sizes_above_127_are_taken_as_plain_numbers(copy, show):
    """A body of 202 bytes (encoding byte, 200 letters, NUL) has the syncsafe size 00 00 01 4A, taken
    plainly 330: 128 bytes too many, which are the frames after it."""
    path = copy()
    save(path, id3.TIT2(encoding=LATIN1, text=["x" * 200]),
         id3.TPE1(encoding=LATIN1, text=["The Artist"]), version=4)
    data = path.read_bytes()
    place = data.index(b"TIT2")
    assert data[place + 4:place + 8] == b"\x00\x00\x01\x4a"
    # mutagen puts short frames first, unless they are titles and artists: those keep their order.
    assert data[place + 10 + 202:place + 10 + 206] == b"TPE1"
    facts = show(path)
    # Id, size 12 and flags, encoding byte, text and NUL, and then padding: without their NULs.
    assert facts["Title"] == "x" * 200 + "TPE1" + "\x0c" + "The Artist"
    assert facts["Artist"] == ""
    assert facts["v2Frames"] == ["TIT2"]


def test_text_above_5000_bytes_is_not_kept_and_its_body_read_as_frames(copy, show):
    """5,001 bytes with encoding byte and NUL. The next header is then 00 and nine x: a size of
    0x78787878, which no frame has, so the tag counts as corrupt."""
    path = copy()
    save(path, id3.TIT2(encoding=LATIN1, text=["Song"]),
         id3.TALB(encoding=LATIN1, text=["x" * 4999]))
    facts = show(path)
    assert facts["v2Tag"] == {"TIT2": ["Song"]}
    assert facts["Album"] == ""
    for name in ("Title", "Artist"):
        assert facts[name] == "Corrupt ID3v2 Tag"


def test_text_of_5000_bytes_is_kept(copy, show):
    path = copy()
    save(path, id3.TALB(encoding=LATIN1, text=["x" * 4998]))
    assert show(path)["Album"] == "x" * 4998


@pytest.mark.parametrize("length, seen", [(4097, False), (4098, True)])
def test_tag_of_a_small_file_is_not_searched(length, seen, encoded, show, tmp_path):
    """A block of 4,096 bytes must fit with at least one byte to spare after its first."""
    source = encoded(encoders.lame(1, 44100, "s", "--cbr", "-b", "32", "-t", kbps=32))
    stream = Stream(source)
    audio = stream.data[:stream.frames[25].offset]
    path = tmp_path / "small.mp3"
    path.write_bytes(audio)
    room = length - len(audio)
    save(path, id3.TIT2(encoding=LATIN1, text=["Song"]),
         padding=lambda info: room - (10 + 16))  # tag header, and a frame of 6 bytes
    assert path.stat().st_size == length
    facts = show(path)
    assert facts["Title"] == ("Song" if seen else "")
    assert facts["v2Frames"] == (["TIT2"] if seen else [])
    assert facts["TagType"] == (2 if seen else -1)
    assert facts["ID3TagSizeIncludingHeader"] == (room if seen else 0)
    # The stream is still found, after an unknown tag.
    assert facts["RepairRequired"] == (not seen)
    assert facts["Duration"] == constant_duration(len(audio), 32)


def test_file_with_a_record_only(copy, show):
    path = copy()
    save(path, id3.TIT2(encoding=LATIN1, text=["Song"]), v1=id3.ID3v1SaveOptions.CREATE)
    id3.delete(path, delete_v1=False, delete_v2=True)
    facts, stream = show(path), Stream(path)
    assert facts["TagType"] == 1
    assert (facts["Title"], facts["Titlev1Tag"]) == ("", "Song")
    assert facts["Duration"] == constant_duration(stream.end, 192)
    assert facts["RepairRequired"] is False
