"""A library as today's encoders and taggers make it: what `scan` says of a tag, mutagen reads, too."""

import dataclasses
import hashlib
import json
import re
import shutil
import struct
import subprocess
import zlib

import eyed3
import pytest
from mutagen import id3

import encoders
from commands import run

ENCODINGS = (
    *(encoders.constant(1, 44100, "j", kbps) for kbps in (64, 128, 320)),
    encoders.constant(2, 22050, "m", 32),
    encoders.constant(25, 11025, "s", 32),
    *(encoders.lame(1, 44100, "j", "-V", quality) for quality in "249"),
    encoders.lame(1, 48000, "s", "-V", "4", "-t"),
    encoders.layer2(1, 48000, "s", 192),
)


@dataclasses.dataclass(frozen=True)
class Song:
    title: str
    artist: str
    album: str
    custom: dict


SONGS = (
    Song("Song", "The Artist", "Album", {"Cue In": "1500", "MOOD": "calm"}),
    Song("Für Élise", "Björk Guðmundsdóttir", "Ça va", {"Straße": "schön"}),
    Song("Καλημέρα", "Άννα", "Τραγούδια", {"όνομα": "τιμή"}),
    Song("Группа крови", "Кино", "Песни", {"Метка": "значение"}),
    Song("東京の歌", "花子", "音楽", {"名前": "値"}),
    Song("كلمات", "فيروز", "أغاني", {"key": "قيمة"}),
    Song("שיר", "עפרה", "אלבום", {}),
    Song("노래", "아이유", "앨범", {"X": "값"}),
    Song("Music 🎵", "Zażółć gęślą", "Ďábel", {"emoji": "🎧"}),
    Song("A/B = C;D", "AC/DC", "50% \"off\"", {"a=b": "c/d", "empty": ""}),
    Song("x" * 300, "y" * 3_000, " blank ", {"long": "z" * 20_000}),
    Song("line\nbreak", "tab\there", "end.", {}),
)
LATIN = [song for song in SONGS if all(ord(letter) < 256 for letter in song.title + song.artist +
                                       song.album + "".join([*song.custom, *song.custom.values()]))]


def png(size):
    """A picture of one colour, filled up to the given size by a chunk that is not displayed."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    picture = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 8, 8, 8, 0, 0, 0, 0)) +
               chunk(b"IDAT", zlib.compress(bytes(9 * 8))))
    return picture + chunk(b"prVt", bytes(range(256)) * (size // 256)) + chunk(b"IEND", b"")


PICTURES = {0: b"", 2_000: png(2_000), 60_000: png(60_000), 181_000: png(181_000),
            600_000: png(600_000)}


def with_mutagen(version, encoding, padding, separator="/"):
    def tag(path, song, size):
        tags = id3.ID3()
        tags.add(id3.TIT2(encoding=encoding, text=[song.title]))
        tags.add(id3.TPE1(encoding=encoding, text=[song.artist, "Second"]))
        tags.add(id3.TALB(encoding=encoding, text=[song.album]))
        for name, value in song.custom.items():
            tags.add(id3.TXXX(encoding=encoding, desc=name, text=[value]))
        if size:
            tags.add(id3.APIC(encoding=encoding, mime="image/png", type=3, desc=song.title[:20],
                              data=PICTURES[size]))
        tags.save(path, v2_version=version, v23_sep=separator, padding=lambda info: padding)
    return tag


def with_eyed3(version):
    def tag(path, song, size):
        file = eyed3.load(path)
        file.initTag(version)
        file.tag.title, file.tag.artist, file.tag.album = song.title, song.artist, song.album
        for name, value in song.custom.items():
            file.tag.user_text_frames.set(value, name)
        if size:
            file.tag.images.set(3, PICTURES[size], "image/png", "cover")
        file.tag.save(version=version)
    return tag


def with_id3v2(path, song, size):
    del size  # it takes no pictures
    options = ["-t", song.title, "-a", song.artist, "-A", song.album]
    for name, value in song.custom.items():
        options += ["--TXXX", f"{name}:{value}"]
    # Its texts are bytes of ISO-8859-1.
    subprocess.run([b"id3v2", *(option.encode("latin-1") for option in options), str(path).encode()],
                   check=True, capture_output=True)


def with_ffmpeg(version):
    def tag(path, song, size):
        untagged = path.with_name("untagged" + path.suffix)
        path.rename(untagged)
        facts = {"title": song.title, "artist": song.artist, "album": song.album, **song.custom}
        words = [word for name, value in facts.items()
                 for word in ("-metadata", f"{name.replace('=', '')}={value}")]
        inputs = ["-i", untagged]
        if size:
            cover = path.with_suffix(".png")
            cover.write_bytes(PICTURES[size])
            inputs += ["-i", cover, "-map", "0:a", "-map", "1:v", "-disposition:v", "attached_pic",
                       "-metadata:s:v", "comment=Cover (front)"]
        run("ffmpeg", "-v", "error", "-y", *inputs, "-c", "copy", "-id3v2_version", version,
            "-f", "mp3", *words, path)
        untagged.unlink()
        path.with_suffix(".png").unlink(missing_ok=True)
    return tag


# Each with the songs it can write.
TAGGERS = {
    "mutagen-2.3-latin1": (with_mutagen(3, id3.Encoding.LATIN1, 0), LATIN),
    "mutagen-2.3-utf16": (with_mutagen(3, id3.Encoding.UTF16, 1_024), SONGS),
    "mutagen-2.3-semicolon": (with_mutagen(3, id3.Encoding.UTF16, 50_000, "; "), SONGS),
    "mutagen-2.4-latin1": (with_mutagen(4, id3.Encoding.LATIN1, 0), LATIN),
    "mutagen-2.4-utf16": (with_mutagen(4, id3.Encoding.UTF16, 1_024), SONGS),
    "mutagen-2.4-utf16be": (with_mutagen(4, id3.Encoding.UTF16BE, 0), SONGS),
    "mutagen-2.4-utf8": (with_mutagen(4, id3.Encoding.UTF8, 1_024), SONGS),
    "eyeD3-2.3": (with_eyed3((2, 3, 0)), SONGS),
    "eyeD3-2.4": (with_eyed3((2, 4, 0)), SONGS),
    "id3v2": (with_id3v2, LATIN),
    "ffmpeg-2.3": (with_ffmpeg(3), SONGS),
    "ffmpeg-2.4": (with_ffmpeg(4), SONGS),
}

def files():
    """Tagger, song, size of the picture, encoding."""
    number = 0
    for name, (_, songs) in TAGGERS.items():
        for song in songs:
            for size in PICTURES:
                for _ in range(4 if name.startswith("mutagen") else 1):
                    encoding = ENCODINGS[number % len(ENCODINGS)]
                    # ffmpeg writes no tag before Layer II.
                    if encoding.layer == 2 and name.startswith("ffmpeg"):
                        encoding = ENCODINGS[0]
                    yield name, song, size, encoding
                    number += 1


@dataclasses.dataclass(frozen=True)
class Reading:
    title: str
    artist: str
    album: str
    custom: tuple
    pictures: tuple


def joined(frame):
    return "/".join(frame.text) if frame else None


def as_mutagen_reads(path):
    tags = id3.ID3(path, translate=False)
    custom = {}
    for frame in tags.getall("TXXX"):
        custom.setdefault(frame.desc, joined(frame))
    pictures = [(int(one.type), one.mime, len(one.data)) for one in tags.getall("APIC")]
    return Reading(joined(tags.get("TIT2")), joined(tags.get("TPE1")), joined(tags.get("TALB")),
                   tuple(sorted(custom.items())), tuple(sorted(pictures)))


def as_scan_prints(facts):
    tag = facts["tag"]
    return Reading(tag["title"], tag["artist"], tag["album"], tuple(sorted(tag["custom"].items())),
                   tuple(sorted((one["type"], one["mime_type"], one["bytes"])
                                for one in tag["pictures"])))


def only_fields_without_a_value(ours, theirs):
    """In version 2.4 eyeD3 ends such a frame after the name, and mutagen leaves it out."""
    with_value = tuple((name, value) for name, value in ours.custom if value)
    return dataclasses.replace(ours, custom=with_value) == theirs


# Why the two may differ.
DIFFERENCES = (only_fields_without_a_value,)


@pytest.fixture(scope="module", name="library")
def made_library(tmp_path_factory, encoded):
    folder = tmp_path_factory.mktemp("library")
    for number, (tagger, song, size, encoding) in enumerate(files()):
        path = folder / f"{number:04}-{tagger}{'.mp3' if encoding.layer == 3 else '.mp2'}"
        shutil.copyfile(encoded(encoding), path)
        TAGGERS[tagger][0](path, song, size)
    return folder


def test_scan_prints_what_mutagen_reads(library, program):
    done = subprocess.run([program, "scan", "--json", "--quiet", str(library)],
                          stdin=subprocess.DEVNULL, capture_output=True, check=False)
    assert (done.returncode, done.stderr) == (0, b"")
    scanned = [json.loads(line) for line in done.stdout.splitlines()]
    assert len(scanned) == len(list(library.iterdir())) > 1_400
    readings = [(as_scan_prints(facts), as_mutagen_reads(facts["file"])) for facts in scanned]
    differing = [(ours, theirs) for ours, theirs in readings if ours != theirs]
    assert len(differing) <= len(readings) / 100
    assert [pair for pair in differing if not any(known(*pair) for known in DIFFERENCES)] == []


def test_two_scans_print_the_same(library, program):
    def digest(*options):
        done = subprocess.run([program, "scan", "--quiet", *options, str(library)],
                              stdin=subprocess.DEVNULL, capture_output=True, check=True)
        return hashlib.sha256(done.stdout).hexdigest()

    for form in ("--json", "--csv"):
        assert digest(form) == digest(form, "--jobs", "1")


# Id and name: a frame's number may change.
LABEL = re.compile(r'\b([A-Z0-9]{4}):\d+(?: "([^"]*)")?')


def values_of(path):
    """As mutagen reads them, without the stamp of a saved tag; of pictures what stays. A field that
    eyeD3 ends after its name has an empty value afterwards, so it is left out."""
    reading = as_mutagen_reads(path)
    custom = tuple(pair for pair in reading.custom if pair[0] != "TAGGED BY" and pair[1])
    return dataclasses.replace(reading, custom=custom,
                               pictures=tuple(kind for kind, _, _ in reading.pictures))


def test_normalized_library_is_read_alike(library, program, tmp_path):
    """What cannot be read alike, or not at all by hosts, is listed."""
    copy = tmp_path / "copy"
    shutil.copytree(library, copy)

    def printed(*words):
        done = subprocess.run([program, *words, str(copy)], stdin=subprocess.DEVNULL,
                              capture_output=True, check=False)
        return done.stdout.decode().splitlines()

    def by_name(*words):
        return {facts["file"]: facts for facts in map(json.loads, printed(*words))}

    def normalize():
        lines = printed("normalize", "--yes", "--pictures", "shrink", "--strip-foreign")
        return dict(line.split(": ", 1) for line in lines)

    before = {str(path): values_of(path) for path in copy.iterdir()}
    hashes = {name: facts["file_facts"]["audio_sha256"]
              for name, facts in by_name("scan", "--json", "--hash", "--quiet").items()}
    done = normalize()
    # Of some short files more than half would be tag.
    assert len(before) - len(done) <= 3 and len(done) > 1_400
    assert {name: value for name, value in before.items() if values_of(name) != value} == {}
    scanned = by_name("scan", "--json", "--hash", "--quiet")
    assert {name: facts["file_facts"]["audio_sha256"] for name, facts in scanned.items()} == hashes
    shrunk = [name for name, text in done.items() if "; shrunk APIC:1 from " in text]
    large = [path for path in library.iterdir()
             if any(size > 81_900 for _, _, size in as_mutagen_reads(path).pictures)]
    assert len(large) - len(shrunk) <= 3 and len(shrunk) > 500
    for name, checked in by_name("check", "--json", "--notes", "--quiet").items():
        if name not in done:
            continue
        found = {reason["code"]: reason["text"] for reason in checked["reasons"]}
        listed = set(LABEL.findall(done[name]))
        assert "large-picture" not in found, (name, done[name])
        assert "corrupt-tag" not in found or "which they cannot skip" in done[name], name
        for code in ("misread-text", "unread-text"):
            assert set(LABEL.findall(found.get(code, ""))) <= listed, (name, found, done[name])
        if "corrupt-tag" in found:
            continue
        facts = scanned[name]
        for ours, theirs, label in (("Title", "title", "TIT2"), ("Artist", "artist", "TPE1"),
                                    ("Album", "album", "TALB")):
            assert (label, "") in listed or facts[ours] == facts["tag"][theirs], (name, ours)
    once = {path.name: (path.stat().st_mtime_ns, path.stat().st_ino) for path in copy.iterdir()}
    assert all(text.startswith("nothing written") for text in normalize().values())
    assert {path.name: (path.stat().st_mtime_ns, path.stat().st_ino)
            for path in copy.iterdir()} == once
