"""`brindle set` on files of today's taggers: what was not named stays as it is."""

import itertools
import json
import subprocess

import mutagen.id3
import pytest
from mutagen.id3 import (APIC, CHAP, COMM, CTOC, GEOB, POPM, PRIV, RVA2, SYLT, TALB, TDRC, TIT2, TPE1,
                         TXXX, USLT, WOAR, WXXX)

from mp3_bytes import audio

pytestmark = pytest.mark.deep

AUDIO = audio(12_000)  # longer than the largest tag, so that hosts look after it

TEXTS = {
    "latin": ("Song", "Artist"),
    "accented": ("Caf\u00e9 \u00dcber", "Bj\u00f6rk"),
    "greek": ("\u039a\u03b1\u03bb\u03b7\u03bc\u03ad\u03c1\u03b1", "\u0391\u03bd\u03bd\u03b1"),
    "cyrillic": ("\u041f\u0435\u0441\u043d\u044f", "\u0410\u043d\u043d\u0430"),
    "japanese": ("\u6771\u4eac\u306e\u6b4c", "\u82b1\u5b50"),
    "emoji": ("Music \U0001f3b5", "B\u0000C"),
}
COVERS = (0, 30_000, 181_000, 2_000_000)
UNSYNCHRONISED_COVERS = (0, 30_000, 181_000)
EXTRAS = ("none", "lyrics", "binary", "chapters")


def picture(size):
    return bytes(range(256)) * (size // 256)


def extra_frames(kind, encoding, title):
    if kind == "lyrics":
        return [USLT(encoding=encoding, lang="eng", desc="d", text=title * 50),
                SYLT(encoding=encoding, lang="eng", format=2, type=1, desc="s",
                     text=[(title, 10), ("x", 20)]),
                COMM(encoding=encoding, lang="deu", desc="about", text=title)]
    if kind == "binary":
        return [GEOB(encoding=encoding, mime="text/plain", filename="f", desc=title,
                     data=b"\0\xff\xe0\0" * 20),
                PRIV(owner="me", data=b"\0\1\xff\xfb\2"), POPM(email="me@x", rating=3, count=9),
                WXXX(encoding=encoding, desc=title, url="http://a/b"), WOAR(url="http://c"),
                RVA2(desc="track", channel=1, gain=-2.5, peak=0.5),
                TXXX(encoding=encoding, desc="Other", text=title)]
    if kind == "chapters":
        return [CHAP(element_id="c1", start_time=0, end_time=5,
                     sub_frames=[TIT2(encoding=encoding, text=title)]),
                CTOC(element_id="toc", flags=3, child_element_ids=["c1"],
                     sub_frames=[TIT2(encoding=encoding, text=title)])]
    return []


def unsynchronised(tag):
    """The same tag of version 2.3, every FF followed by an inserted zero where the rule requires it."""
    assert tag[3] == 3
    size = from_syncsafe(tag[6:10])
    body = tag[10:10 + size].replace(b"\xff", b"\xff\0")
    return tag[:5] + b"\x80" + syncsafe(len(body)) + body + tag[10 + size:]


def syncsafe(number):
    return bytes((number >> shift) & 0x7F for shift in (21, 14, 7, 0))


def from_syncsafe(four):
    return four[0] << 21 | four[1] << 14 | four[2] << 7 | four[3]


def unsynchronised_frames(tag):
    """The same tag of version 2.4, each frame unsynchronised, with its length in front."""
    assert tag[3] == 4
    end, position, frames = 10 + from_syncsafe(tag[6:10]), 10, b""
    while position < end and tag[position] != 0:
        length = from_syncsafe(tag[position + 4:position + 8])
        body = tag[position + 10:position + 10 + length]
        stands = syncsafe(length) + body.replace(b"\xff", b"\xff\0")
        frames += tag[position:position + 4] + syncsafe(len(stands)) + b"\0\3" + stands
        position += 10 + length
    return b"ID3\4\0\x80" + syncsafe(len(frames)) + frames + tag[end:]


def mutagen_files():
    for version, encoding, script, cover, extra in itertools.product(
            (3, 4), (0, 1, 3), TEXTS, COVERS, EXTRAS):
        if version == 3 and encoding == 3:
            continue
        title, artist = TEXTS[script]
        if encoding == 0 and script not in ("latin", "accented"):
            continue
        yield version, encoding, script, cover, extra


def made_by_mutagen(path, version, encoding, script, cover, extra):
    title, artist = TEXTS[script]
    if version == 3:
        artist = artist.replace("\0", "/")
    frames = [TIT2(encoding=encoding, text=title), TPE1(encoding=encoding, text=artist.split("\0")),
              TALB(encoding=encoding, text=title), TDRC(encoding=encoding, text="2003-05-06")]
    if cover:
        frames.append(APIC(encoding=encoding, mime="image/jpeg", type=3, desc=title[:10],
                           data=picture(cover)))
    frames += extra_frames(extra, encoding, title)
    tag = mutagen.id3.ID3()
    for one in frames:
        tag.add(one)
    path.write_bytes(AUDIO)
    tag.save(path, v2_version=version, v1=0)


# --- A reader of this test's own, for tags of version 2.3

def plain_frames(content):
    """Id, flags and body of each frame of a tag of version 2.3 without flags."""
    assert content[:6] == b"ID3\3\0\0"
    size = from_syncsafe(content[6:10])
    position, frames = 10, []
    while position < 10 + size and content[position] != 0:
        length = int.from_bytes(content[position + 4:position + 8], "big")
        frames.append(content[position:position + 4] + content[position + 8:position + 10 + length])
        position += 10 + length
    assert not any(content[position:10 + size])
    return frames, 10 + size


def without_ours(frames):
    return sorted(frame for frame in frames
                  if not frame.startswith((b"TXXX\0\0\0Cue In\0", b"TXXX\0\0\0TAGGED BY\0")))


def values(path):
    """What mutagen makes of every frame, whatever its encoding."""
    found = {}
    for key, frame in mutagen.id3.ID3(path, translate=False).items():
        if key in ("TXXX:Cue In", "TXXX:TAGGED BY"):
            continue
        fields = {spec.name: getattr(frame, spec.name) for spec in frame._framespec
                  if spec.name not in ("encoding", "sub_frames")}
        sub_frames = {name: [str(text) for text in sub.text] for name, sub in
                      getattr(frame, "sub_frames", {}).items()}
        found[key] = (repr(fields), sub_frames)
    return found


HOSTS_READ = {"Title": "title", "Artist": "artist", "Album": "album"}


def assert_hosts_read_no_worse(old, new):
    """Of each text what they read before, or what the tag says, or the mark of a frame that they
    cannot step over."""
    for member, key in HOSTS_READ.items():
        assert new[member] in (old[member], new["tag"][key], "Corrupt ID3v2 Tag") or (
            # UTF-16 in the place of UTF-8; neither is text to them.
            old[member] != old["tag"][key]), (member, old[member], new[member])


def assert_edited(brindle, path, before, old_frames, is_version3):
    old = json.loads(brindle("show", "--json", path.name).stdout)
    result = brindle("set", "--cue-in", "200", path.name)
    assert (result.returncode, result.stderr) == (0, b""), result
    content = path.read_bytes()
    frames, end = plain_frames(content)
    assert content[end:] == AUDIO
    assert b"TXXX\0\0\0Cue In\x00200" in frames
    if is_version3:
        assert without_ours(frames) == sorted(old_frames)
    after = values(path)
    for made in ("TYER", "TDAT", "TIME"):  # of TDRC
        if made not in before:
            after.pop(made, None)
    assert after == before
    new = json.loads(brindle("show", "--json", path.name).stdout)
    assert new["CueInmSStart"] == 200
    assert_hosts_read_no_worse(old, new)
    again = brindle("set", "--cue-in", "200", path.name)
    assert again.returncode == 0 and b"nothing written" in again.stdout
    assert path.read_bytes() == content


def group(names, count=12):
    names = list(names)
    return [names[i::count] for i in range(count)]


@pytest.mark.parametrize("files", group(mutagen_files()), ids=lambda files: str(len(files)))
def test_files_of_mutagen(tmp_path, brindle, files):
    path = tmp_path / "song.mp3"
    for version, encoding, script, cover, extra in files:
        made_by_mutagen(path, version, encoding, script, cover, extra)
        old = plain_frames(path.read_bytes())[0] if version == 3 else None
        assert_edited(brindle, path, values(path), old, version == 3)


@pytest.mark.parametrize("script", TEXTS)
@pytest.mark.parametrize("extra", EXTRAS)
@pytest.mark.parametrize("version, encoding", [(3, 1), (4, 3)])
def test_unsynchronised_files(tmp_path, brindle, script, extra, version, encoding):
    path = tmp_path / "song.mp3"
    for cover in UNSYNCHRONISED_COVERS:
        made_by_mutagen(path, version, encoding, script, cover, extra)
        plain = path.read_bytes()
        old, before = plain_frames(plain)[0] if version == 3 else None, values(path)
        path.write_bytes(unsynchronised(plain) if version == 3 else unsynchronised_frames(plain))
        assert values(path) == before
        assert_edited(brindle, path, before, old, version == 3)


def test_there_are_enough_files():
    unsynchronised_count = 2 * len(UNSYNCHRONISED_COVERS) * len(TEXTS) * len(EXTRAS)
    assert len(list(mutagen_files())) + unsynchronised_count + 43 >= 500  # 43 by others, below


OTHER_TAGGERS = {
    "eyeD3 2.3": ["eyeD3", "--quiet", "--to-v2.3", "--encoding", "utf16"],
    "eyeD3 2.4": ["eyeD3", "--quiet", "--to-v2.4", "--encoding", "utf8"],
    "id3v2": ["id3v2"],
    "ffmpeg 2.3": "3",
    "ffmpeg 2.4": "4",
}


@pytest.mark.parametrize("tagger", OTHER_TAGGERS)
@pytest.mark.parametrize("script", ["latin", "accented", "greek", "cyrillic", "japanese"])
def test_files_of_other_taggers(tmp_path, brindle, tagger, script):
    title, artist = TEXTS[script]
    if tagger == "id3v2" and script not in ("latin", "accented"):
        title = title.encode("utf-8").decode("latin-1")  # bytes are what it writes
    path = tmp_path / "song.mp3"
    path.write_bytes(AUDIO)
    command = OTHER_TAGGERS[tagger]
    if tagger.startswith("ffmpeg"):
        source = tmp_path / "source.mp3"
        source.write_bytes(AUDIO)
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "mp3", "-i", source, "-c", "copy",
                        "-write_xing", "0", "-id3v2_version", command, "-metadata", f"title={title}",
                        "-metadata", f"artist={artist}", "-metadata", "date=2003-05-06",
                        "-metadata", "comment=c", path], check=True)
    elif tagger == "id3v2":
        subprocess.run([*command, "-2", "-t", title.encode("latin-1", "replace"),
                        "-a", "Ann", "-c", "c", path], check=True)
    else:
        subprocess.run([*command, "-t", title, "-a", artist, "-c", "about", path], check=True,
                       capture_output=True)
    content = path.read_bytes()
    assert content[:3] == b"ID3"
    is_version3 = content[3] == 3
    old = plain_frames(content)[0] if is_version3 else None
    before = values(path)
    tail = content[content.index(AUDIO[:400]):]
    result = brindle("set", "--cue-in", "200", "song.mp3")
    assert (result.returncode, result.stderr) == (0, b""), result
    edited = path.read_bytes()
    frames, end = plain_frames(edited)
    assert edited[end:] == tail
    if is_version3:
        assert without_ours(frames) == sorted(old)
    after = values(path)
    for made in ("TYER", "TDAT", "TIME"):
        if made not in before:
            after.pop(made, None)
    assert after == before


# --- Tags of version 2.2, which no tagger writes any more

def version2(*frames, padding=100):
    content = b"".join(frames) + bytes(padding)
    return b"ID3\2\0\0" + syncsafe(len(content)) + content


def frame2(frame_id, body):
    return frame_id + len(body).to_bytes(3, "big") + body


@pytest.mark.parametrize("cover", [0, 30_000, 181_000])
@pytest.mark.parametrize("script", TEXTS)
def test_tags_of_version_2(tmp_path, brindle, cover, script):
    title, artist = TEXTS[script]
    text = lambda value: b"\1" + value.encode("utf-16")
    frames = [frame2(b"TT2", text(title)), frame2(b"TP1", text(artist.replace("\0", "/"))),
              frame2(b"TYE", b"\x002003"), frame2(b"TRK", b"\x003/9"), frame2(b"TCO", b"\0(17)"),
              frame2(b"COM", b"\0eng\0about"), frame2(b"TXX", b"\0Show\0Breakfast"),
              frame2(b"ULT", b"\1eng" + "d".encode("utf-16") + b"\0\0" + title.encode("utf-16")),
              frame2(b"UFI", b"me\0\1\2"), frame2(b"WAR", b"http://a")]
    if cover:
        frames.append(frame2(b"PIC", b"\0JPG\3\0" + picture(cover)))
    path = tmp_path / "song.mp3"
    path.write_bytes(version2(*frames) + AUDIO)
    before = {key: repr([str(part) for part in getattr(frame, "text", [frame])])
              for key, frame in mutagen.id3.ID3(path).items() if key[:4] not in ("APIC", "UFID")}
    result = brindle("set", "--cue-in", "200", "song.mp3")
    assert (result.returncode, result.stderr) == (0, b""), result
    content = path.read_bytes()
    _, end = plain_frames(content)
    assert content[end:] == AUDIO
    tag = mutagen.id3.ID3(path)
    after = {key: repr([str(part) for part in getattr(frame, "text", [frame])])
             for key, frame in tag.items()
             if key[:4] not in ("APIC", "UFID") and key not in ("TXXX:Cue In", "TXXX:TAGGED BY")}
    assert after == before
    assert tag["UFID:me"].data == b"\1\2"
    if cover:
        assert tag.getall("APIC")[0].data == picture(cover)
        assert tag.getall("APIC")[0].mime == "image/jpeg"
