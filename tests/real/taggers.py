"""Tagging with programs that we did not write, and what must come out of each of them.

The same facts go in everywhere. What comes out differs, since Brindle reads texts in one simple way:
the bytes after the first NUL, or all of them where there is none; and UTF-16 with its mark in
front loses the mark and its NULs. So the text of an encoding that needs none of ISO-8859-1's
encoding byte 0, and the NUL that some programs put after a text, decide what is seen.
"""

import dataclasses

from mutagen import id3

from commands import run

TITLE, ARTIST, ALBUM, COMMENT = "Song \u00c4", "The Artist", "Album", "A comment"
UTF8_TITLE_AS_BYTES = "Song \u00c3\u201e"  # C3 84, each a character of the code page

NOTHING = {"Title": "", "Artist": "", "Album": "", "Year": 0, "Track": 0, "Genre": "0",
           "Comments": "", "CueInmSStart": 0}
ALL = {"Title": TITLE, "Artist": ARTIST, "Album": ALBUM, "Year": 1999, "Track": 7,
       "Genre": "1",  # "(17)" without its last digit
       "Comments": "eng" + COMMENT, "CueInmSStart": 1500}
V1 = {"Titlev1Tag": TITLE, "artistv1Tag": ARTIST, "Yearv1Tag": 1999, "Commentv1": COMMENT}
NO_V1 = {"Titlev1Tag": "", "artistv1Tag": "", "Yearv1Tag": 0, "Commentv1": ""}


def with_id3v2(path):
    run("id3v2", "-t", TITLE, "-a", ARTIST, "-A", ALBUM, "-y", 1999, "-T", 7, "-g", 17,
        "-c", f":{COMMENT}:eng", "--TXXX", "Cue In:1500", path)


def with_eyed3(version):
    def tag(path):
        facts = ("-Q", "--no-color", "-t", TITLE, "-a", ARTIST, "-A", ALBUM, "-n", 7, "-G", "Rock",
                 "--comment", COMMENT)
        # The record first: eyeD3 would make it of the other tag otherwise, and lose the comment.
        run("eyeD3", "-1", *facts, "-Y", 1999, path)
        run("eyeD3", "-2", *facts, f"--to-v{version}", "--recording-date", 1999,
            "--user-text-frame", "Cue In:1500", path)
    return tag


def with_mutagen(version, encoding):
    def tag(path):
        tags = id3.ID3()
        year = id3.TYER if version == 3 else id3.TDRC
        for frame, text in ((id3.TIT2, TITLE), (id3.TPE1, ARTIST), (id3.TALB, ALBUM),
                            (year, "1999"), (id3.TRCK, "7"), (id3.TCON, "(17)")):
            tags.add(frame(encoding=encoding, text=[text]))
        tags.add(id3.COMM(encoding=encoding, lang="eng", desc="", text=[COMMENT]))
        tags.add(id3.TXXX(encoding=encoding, desc="Cue In", text=["1500"]))
        tags.save(path, v1=id3.ID3v1SaveOptions.CREATE, v2_version=version)
    return tag


def with_ffmpeg(version):
    def tag(path):
        untagged = path.with_suffix(".untagged.mp3")
        path.rename(untagged)
        facts = {"title": TITLE, "artist": ARTIST, "album": ALBUM, "date": 1999, "track": 7,
                 "genre": "Rock", "comment": COMMENT, "Cue In": 1500}
        words = [word for name, value in facts.items() for word in ("-metadata", f"{name}={value}")]
        # Its own header frame would be another story.
        run("ffmpeg", "-v", "error", "-i", untagged, "-c", "copy", "-write_xing", 0,
            "-id3v2_version", version, "-write_id3v1", 1, *words, path)
    return tag


@dataclasses.dataclass(frozen=True)
class Tagger:
    name: str
    tag: object  # the function that tags a file
    title_body: bytes  # of the title's frame: how this program writes a text
    expected: dict


LATIN1 = b"\x00Song \xc4"
UTF16 = b"\x01\xff\xfeS\0o\0n\0g\0 \0\xc4\0"
UTF8 = b"\x03Song \xc3\x84"
UTF16_COMMENT = "\u00ff\u00fe" + COMMENT  # after the description's NULs, with its mark

TAGGERS = (
    Tagger("id3v2", with_id3v2, LATIN1, {**ALL, **V1}),
    # UTF-16 for all. A genre name is no number. A field's name is never found in UTF-16.
    Tagger("eyeD3-2.3", with_eyed3("2.3"), UTF16,
           {**ALL, "Genre": "0", "Comments": UTF16_COMMENT, "CueInmSStart": 0, **V1}),
    # UTF-8 without a NUL: the encoding byte 3 is taken for text, so "\x0307" is no number, and a
    # name is found with it only. The year has another frame in version 2.4.
    Tagger("eyeD3-2.4", with_eyed3("2.4"), UTF8,
           {"Title": "\x03" + UTF8_TITLE_AS_BYTES, "Artist": "\x03" + ARTIST,
            "Album": "\x03" + ALBUM, "Year": 0, "Track": 0, "Genre": "0", "Comments": COMMENT,
            "CueInmSStart": 0, **V1}),
    Tagger("mutagen-2.3-latin1", with_mutagen(3, id3.Encoding.LATIN1), LATIN1 + b"\0",
           {**ALL, **V1, "Commentv1": ""}),
    Tagger("mutagen-2.3-utf16", with_mutagen(3, id3.Encoding.UTF16), UTF16 + b"\0\0",
           {**ALL, "Comments": UTF16_COMMENT, "CueInmSStart": 0, **V1, "Commentv1": ""}),
    Tagger("mutagen-2.4-latin1", with_mutagen(4, id3.Encoding.LATIN1), LATIN1 + b"\0",
           {**ALL, "Year": 0, **V1, "Commentv1": ""}),
    Tagger("mutagen-2.4-utf16", with_mutagen(4, id3.Encoding.UTF16), UTF16 + b"\0\0",
           {**ALL, "Year": 0, "Comments": UTF16_COMMENT, "CueInmSStart": 0, **V1,
            "Commentv1": ""}),
    # UTF-8 with a NUL after it: nothing follows the first NUL.
    Tagger("mutagen-2.4-utf8", with_mutagen(4, id3.Encoding.UTF8), UTF8 + b"\0",
           {**NOTHING, "Comments": COMMENT, **V1, "Commentv1": ""}),
    # ISO-8859-1 where it suffices, else UTF-16; comments are a field of that name.
    Tagger("ffmpeg-2.3", with_ffmpeg(3), UTF16 + b"\0\0",
           {**ALL, "Genre": "0", "Comments": "", **V1, "Titlev1Tag": UTF8_TITLE_AS_BYTES}),
    Tagger("ffmpeg-2.4", with_ffmpeg(4), UTF8 + b"\0",
           {**NOTHING, **V1, "Titlev1Tag": UTF8_TITLE_AS_BYTES}),
)
