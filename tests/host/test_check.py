"""`brindle check`: one verdict a file, and each reason with a file that has it.

A frame of 1,152 samples at 44,100 Hz plays 26.12 ms; 120 of them 3,134.69, 3,135 ms. A file of
constant 128 kbit/s promises its bytes times 8 / 128.
"""

import json
import os
import re
import shutil
import subprocess

import pytest

from mp3_bytes import (FRAME_HEADER, FRAME_LENGTH, audio, audio_with_xing, frame, id3v1, tag,
                       text_frame, user_frame)

NAMES = (text_frame("TIT2", "Song"), text_frame("TPE1", "Ann"))
GOOD = tag(*NAMES)
AUDIO = audio()
RECORD = id3v1(b"Song", b"Ann")


def named(*frames):
    return tag(*NAMES, *frames)


def tag_with_size(size, content):
    """A tag whose header has any size, as seven bits per byte."""
    return (b"ID3\3\0\0" + bytes((size >> shift) & 0x7F for shift in (21, 14, 7, 0)) + content)


def tag22(*frames, padding=0):
    content = b"".join(
        name + len(body).to_bytes(3, "big") + body for name, body in frames) + bytes(padding)
    return b"ID3\2\0\0" + bytes((len(content) >> shift) & 0x7F
                                for shift in (21, 14, 7, 0)) + content


def points(cue_in=0, intro=0, outro=0):
    return named(user_frame("Cue In", str(cue_in)), user_frame("Intro", str(intro)),
                 user_frame("OutromSStart", str(outro)))


OTHER_MODE = bytes.fromhex("FFFB9004") + bytes(FRAME_LENGTH - 4)  # stereo, not joint
FAST = bytes.fromhex("FFFBE064") + bytes(1044 - 4)  # 320 kbit/s: 144000 * 320 / 44100, cut
UTF16 = "Müller".encode("utf-16-le")
GREEK = "Ωmega".encode("utf-16-le")

ITEM = b"\4\0\0\0\0\0\0\0Note\0text"
APE = (ITEM + b"APETAGEX" + (2000).to_bytes(4, "little") + (len(ITEM) + 32).to_bytes(4, "little")
       + (1).to_bytes(4, "little") + bytes(12))
LYRICS3 = b"LYRICSBEGIN" + b"IND00002" + b"00" + b"000021" + b"LYRICS200"

# MPEG 1 Layer III at 48,000 Hz, MPEG 2 Layer III at 22,050 Hz with 80 kbit/s, MPEG 1 Layer II.
OTHER_FREQUENCY = bytes.fromhex("FFFB9464") + bytes(384 - 4)
OTHER_VERSION = bytes.fromhex("FFF39064") + bytes(261 - 4)
OTHER_LAYER = bytes.fromhex("FFFD8064") + bytes(417 - 4)
FREE_FORMAT = bytes.fromhex("FFFB0064") + bytes(500 - 4)
LAYER1 = bytes.fromhex("FFFF9064") + bytes(312 - 4)


def crc16(bits):
    """The remainder of the polynomial x^16 + x^15 + x^2 + 1, as a long division."""
    value = int("1" * 16, 2) << len(bits) ^ int(bits, 2) << 16
    for shift in range(len(bits) - 1, -1, -1):
        if value >> shift + 16 & 1:
            value ^= 0x18005 << shift
    return value.to_bytes(2, "big")


def protected(header, covered_bits, length=FRAME_LENGTH):
    """A frame of zeros, of which the checksum covers this number of bits after itself."""
    header = bytes.fromhex(header)
    bits = f"{int.from_bytes(header[2:], 'big'):016b}" + "0" * covered_bits
    return header + crc16(bits) + bytes(length - 6)


def with_wrong_crc(frame_bytes):
    return frame_bytes[:4] + bytes((frame_bytes[4] ^ 1,)) + frame_bytes[5:]


PROTECTED = protected("FFFA9064", 32 * 8)
WRONG_CRC = with_wrong_crc(PROTECTED)
PROTECTED_MONO = protected("FFFA90C4", 17 * 8)
PROTECTED_VERSION2 = protected("FFF29064", 17 * 8, 261)
PROTECTED_VERSION2_MONO = protected("FFF290C4", 9 * 8, 261)
# 64 kbit/s a channel: 11 subbands of 4 bits, 12 of 3, 4 of 2; one of the two channels from the
# twelfth on: 2 * (11 * 4 + 3) + 11 * 3 + 4 * 2.
PROTECTED_LAYER2 = protected("FFFC8064", 135)
PROTECTED_LAYER2_STEREO = protected("FFFC8004", 2 * (11 * 4 + 12 * 3 + 4 * 2))


def encoder_frame(mark, header=FRAME_HEADER):
    content = header + bytes(32) + mark
    return content + bytes(FRAME_LENGTH - len(content))


def vbri(frames, audio_bytes):
    return encoder_frame(b"VBRI\0\1\0\0\0\0" + audio_bytes.to_bytes(4, "big")
                         + frames.to_bytes(4, "big"))


def picture(data, mime=b"image/png"):
    return named(frame("APIC", b"\0" + mime + b"\0\3\0" + data))


def seconds(**fields):
    return named(user_frame("Cue In", "1500"), user_frame("Sec Tone", "2500"),
                 *(user_frame(name, value) for name, value in fields.items()))


def misread(text, encoding, read_as="latin-1"):
    return named(frame("TALB", b"\0" + text.encode(encoding).decode(read_as).encode("latin-1")))


# What the file is, and the codes of its reasons, with the verdict where a code has two.
FILES = {
    "ok": (GOOD + AUDIO, []),
    "ok-with-a-record-only": (AUDIO + RECORD, []),
    "ok-with-both": (GOOD + AUDIO + RECORD, []),
    # Hosts begin with the second frame, as a hundred must follow it.
    "ok-of-100-frames": (GOOD + audio(100), []),
    "ok-layer-1": (GOOD + LAYER1 * 120, []),
    "ok-variable": (GOOD + audio_with_xing(), []),

    # --- no stream
    "no-stream": (GOOD + bytes(6000), ["no-stream"]),
    "empty": (b"", ["no-stream", "no-title", "no-artist"]),

    # --- played by others
    "ten-frames": (audio(10) + RECORD, ["not-playable-by-hosts"]),
    "ok-of-eleven-frames": (audio(11) + RECORD, []),
    "one-frame": (audio(1) + RECORD, ["not-playable-by-hosts"]),
    # Hosts want to divide by the frames of a header that they do not believe.
    "xing-promises-more-bytes-than-the-file-has": (
        GOOD + audio_with_xing(60, 240, 100_080), ["not-playable-by-hosts", "audio-missing"]),
    "xing-promises-as-many-bytes-as-the-file-has": (
        GOOD + audio_with_xing(121, 120, 39 + 121 * FRAME_LENGTH), ["header-mismatch"]),
    "tag-of-more-than-half": (tag(*NAMES, padding=60_000) + AUDIO, ["not-playable-by-hosts"]),
    "tag-of-less-than-half": (tag(*NAMES, padding=40_000) + AUDIO, []),
    "20000-bytes-before-audio": (bytes(20_000) + AUDIO + RECORD,
                                 ["not-playable-by-hosts", "junk-before-audio"]),
    # Neither part has the hundred frames that hosts want of a file of this length.
    "junk-among-the-first-frames": (GOOD + audio(98) + b"junk" * 5 + audio(20),
                                    ["not-playable-by-hosts", "junk-between-frames"]),
    "few-frames-and-junk": (audio(5) + b"junk" * 5 + RECORD,
                            ["not-playable-by-hosts", "junk-after-audio"]),
    "few-frames-of-which-the-last-is-cut": (audio(5) + AUDIO[:200] + RECORD,
                                            ["not-playable-by-hosts", "cut-last-frame"]),
    "modes-alternate": (GOOD + (AUDIO[:FRAME_LENGTH] + OTHER_MODE) * 60, ["not-playable-by-hosts"]),
    "kinds-alternate": (GOOD + (audio(8) + OTHER_FREQUENCY * 8) * 10,
                        ["not-playable-by-hosts", "changing-format:bad"]),
    "free-format": (GOOD + FREE_FORMAT * 120, ["free-format"]),
    "free-format-of-two-frames": (FREE_FORMAT * 2 + RECORD, ["no-stream"]),

    # --- the tag
    # A frame of 2^24 + 1 bytes is none.
    "corrupt-tag": (named(b"GEOB\1\0\0\1\0\0", bytes(20)) + AUDIO, ["corrupt-tag"]),
    "title-like-the-mark-of-a-corrupt-tag": (
        tag(text_frame("TIT2", "Corrupt ID3v2 Tag11162026 83421593"),
            text_frame("TPE1", "Corrupt ID3v2 Tag11162026 83421593")) + AUDIO, []),
    # Hosts leave the second one after its first frame, which ends at byte 64, after its size of 29.
    "duplicate-tag": (GOOD + GOOD + AUDIO, ["junk-before-audio", "unread-text", "duplicate-tag"]),
    "duplicate-tag-of-one-frame": (GOOD + tag(NAMES[0]) + AUDIO,
                                   ["junk-before-audio", "duplicate-tag"]),
    "tag-larger-than-file": (
        tag_with_size(90_000, b"".join(NAMES) + bytes(20)) + AUDIO,
        ["junk-before-audio", "tag-larger-than-file"]),
    "no-title": (tag(NAMES[1]) + AUDIO, ["no-title"]),
    "no-artist": (tag(NAMES[0]) + AUDIO, ["no-artist"]),
    "no-names": (AUDIO, ["no-title", "no-artist"]),
    "blank-names": (tag(text_frame("TIT2", "  "), text_frame("TPE1", "\t")) + AUDIO,
                    ["no-title", "no-artist"]),
    "names-in-the-record": (tag(text_frame("TALB", "Album")) + AUDIO + RECORD, []),

    # --- what hosts read
    "utf-8": (named(frame("TALB", b"\3Album")) + AUDIO, ["misread-text"]),
    "utf-16-greek": (named(frame("TALB", b"\1\xff\xfe" + GREEK)) + AUDIO, ["misread-text"]),
    # Without its NULs this is the same text in 8 bits.
    "utf-16-latin": (named(frame("TALB", b"\1\xff\xfe" + UTF16)) + AUDIO, []),
    # Hosts read the text after the first NUL: of "Album" all of it, of "Ωmega" not the first.
    "utf-16-big-endian": (
        named(frame("TALB", b"\1\xfe\xff" + "Album".encode("utf-16-be"))) + AUDIO, []),
    "utf-16-big-endian-greek": (
        named(frame("TALB", b"\1\xfe\xff" + "Ωmega".encode("utf-16-be"))) + AUDIO,
        ["misread-text"]),
    "utf-16-custom-field": (
        named(frame("TXXX", b"\1" + "\ufeffCue In\0\ufeff250".encode("utf-16-le"))) + AUDIO,
        ["misread-text"]),
    "version-2-utf-16": (
        tag22((b"TT2", b"\0Song"), (b"TP1", b"\0Ann"), (b"TAL", b"\1\xff\xfe" + GREEK),
              padding=20) + AUDIO,
        ["misread-text"]),
    "version-2": (tag22((b"TT2", b"\0Song"), (b"TP1", b"\0Ann"), (b"TAL", b"\0Album")) + AUDIO, []),
    # The walk continues inside the long text: at a header of NULs, which ends the tag.
    "text-of-5001-bytes": (named(frame("TALB", b"\0" + bytes(5000))) + AUDIO, ["unread-text"]),
    "text-of-5000-bytes": (named(text_frame("TALB", "x" * 4999)) + AUDIO, []),
    "picture-of-81921-bytes": (
        named(frame("APIC", b"\0\0\3\0" + bytes(81_921 - 4))) + audio(400),
        ["large-picture", "bad-picture"]),
    # The walk continues inside the picture, where "ge/p" is not the size of a frame.
    "picture-of-81921-bytes-and-its-type": (
        named(frame("APIC", b"\0image/png\0\3\0" + bytes(81_921 - 13))) + audio(400),
        ["corrupt-tag", "large-picture", "bad-picture"]),
    "picture-of-81920-bytes": (
        named(frame("APIC", b"\0image/png\0\3\0\x89PNG" + bytes(81_920 - 17))) + audio(400), []),
    "private-data-of-6000-bytes": (named(frame("PRIV", bytes(6000))) + AUDIO, []),

    "picture-png": (picture(b"\x89PNG\r\n\x1a\n" + bytes(100)) + AUDIO, []),
    "picture-jpeg": (picture(b"\xff\xd8\xff\xe0" + bytes(100)) + AUDIO, []),
    "picture-webp": (picture(b"RIFF\0\0\0\0WEBPVP8 ") + AUDIO, []),
    "picture-avif": (picture(b"\0\0\0\x1cftypavif" + bytes(100)) + AUDIO, []),
    "picture-of-text": (picture(b"<html>Not found</html>") + AUDIO, ["bad-picture"]),
    "picture-of-sound": (picture(b"RIFF\0\0\0\0WAVEfmt ") + AUDIO, ["bad-picture"]),
    "empty-picture": (picture(b"") + AUDIO, ["bad-picture"]),
    "picture-by-its-address": (picture(b"http://a.example/b.png", b"-->") + AUDIO, []),
    "utf-8-as-8-bits": (misread("Für Élise", "utf-8") + AUDIO, ["mojibake"]),
    "cyrillic-as-8-bits": (misread("Группа крови", "cp1251") + AUDIO, ["mojibake"]),
    "koi8-as-8-bits": (misread("Группа крови", "koi8-r") + AUDIO, ["mojibake"]),
    "greek-as-8-bits": (misread("Τα παιδιά του Πειραιά", "cp1253") + AUDIO, ["mojibake"]),
    "latin-1": (misread("Für Élise", "latin-1") + AUDIO, []),
    "utf-8-in-the-record": (AUDIO + id3v1("Für Élise".encode(), b"Ann"), ["mojibake"]),

    # --- the length
    # 120 frames; promised are 123, 124 and 125: 78, 104 and 130 ms too many.
    "promise-of-78-ms-more": (GOOD + audio_with_xing(121, 123), ["audio-missing"]),
    "promise-of-104-ms-more": (GOOD + audio_with_xing(121, 124), ["dead-air", "audio-missing"]),
    "promise-of-130-ms-more": (GOOD + audio_with_xing(121, 125), ["dead-air", "audio-missing"]),
    "promise-of-131-ms-less": (GOOD + audio_with_xing(121, 115), ["end-cut-off", "header-mismatch"]),
    # 2,000 frames play 52,245 ms, of which 0.5 % are 261.2: nine frames are 235, ten 261.2, eleven
    # 287 ms.
    "promise-of-nine-frames-in-2000": (GOOD + audio_with_xing(2001, 2009), ["audio-missing"]),
    "promise-of-eleven-frames-in-2000": (GOOD + audio_with_xing(2001, 2011), ["dead-air", "audio-missing"]),
    # 128 kbit/s by its first 101 frames, 320 after: its bytes are taken for more than they play.
    "faster-later": (GOOD + audio(110) + FAST * 100, ["dead-air"]),
    # Half of what was there when the header was written.
    "cut-in-half": (GOOD + audio_with_xing(240, 240, 40_000)[:50_000],
                    ["dead-air", "audio-missing", "cut-last-frame"]),
    # Six frames in another mode at the end: a host that counts 110 frames cuts them off.
    "mode-changes": (
        GOOD + (AUDIO[:FRAME_LENGTH] + FAST) * 55 + OTHER_MODE * 6, ["end-cut-off", "changing-format:note"]),

    # --- another kind of frames
    # Twenty frames of 24 ms, promised as 384 * 20 * 8 / 128.
    "frequency-changes": (GOOD + AUDIO + OTHER_FREQUENCY * 20, ["changing-format:bad"]),
    "frequency-changes-and-back": (GOOD + AUDIO + OTHER_FREQUENCY * 20 + AUDIO,
                                   ["changing-format:bad"]),
    # Twenty frames of 26 ms, promised as 261 * 20 * 8 / 128: 522 and 326 ms.
    "version-changes": (GOOD + AUDIO + OTHER_VERSION * 20, ["end-cut-off", "changing-format:bad"]),
    "layer-changes": (GOOD + AUDIO + OTHER_LAYER * 20, ["changing-format:bad"]),
    "other-frequency-first": (GOOD + OTHER_FREQUENCY * 3 + AUDIO, ["changing-format:bad"]),
    "two-frames-of-another-frequency": (GOOD + AUDIO + OTHER_FREQUENCY * 2 + AUDIO,
                                        ["changing-format:bad"]),
    "junk-and-another-frequency": (GOOD + AUDIO + b"junk" * 5 + OTHER_FREQUENCY * 20 + AUDIO,
                                   ["changing-format:bad", "junk-between-frames"]),
    "three-frames-among-junk": (
        GOOD + AUDIO + b"junk" + OTHER_FREQUENCY * 3 + b"junk" + AUDIO,
        ["changing-format:bad", "junk-between-frames"]),
    # Two headers are chance.
    "two-frames-among-junk": (
        GOOD + AUDIO + b"junk" + OTHER_FREQUENCY * 2 + b"junk" + AUDIO, ["junk-between-frames"]),
    "another-frequency-and-junk": (GOOD + AUDIO + OTHER_FREQUENCY * 20 + b"junk" * 5,
                                   ["changing-format:bad", "junk-after-audio"]),
    # Hosts begin with the run of one mode; three frames are 78 ms.
    "another-mode-first": (GOOD + OTHER_MODE * 3 + AUDIO, ["changing-format:note"]),

    # --- checksums
    "checksums": (GOOD + PROTECTED * 120, []),
    "checksums-of-mono": (GOOD + PROTECTED_MONO * 120, []),
    "checksums-of-version-2": (GOOD + PROTECTED_VERSION2 * 120, []),
    "checksums-of-version-2-mono": (GOOD + PROTECTED_VERSION2_MONO * 120, []),
    "checksums-of-layer-2": (GOOD + PROTECTED_LAYER2 * 120, []),
    "checksums-of-layer-2-stereo": (GOOD + PROTECTED_LAYER2_STEREO * 120, []),
    "wrong-checksums-in-2-of-201-frames": (
        GOOD + PROTECTED * 50 + WRONG_CRC * 2 + PROTECTED * 149, ["frame-crc:warn"]),
    "wrong-checksums-in-2-of-200-frames": (
        GOOD + PROTECTED * 50 + WRONG_CRC * 2 + PROTECTED * 148, ["frame-crc:bad"]),
    "wrong-checksum-of-mono": (
        GOOD + PROTECTED_MONO * 110 + with_wrong_crc(PROTECTED_MONO), ["frame-crc:warn"]),
    "wrong-checksum-of-version-2": (
        GOOD + PROTECTED_VERSION2 * 110 + with_wrong_crc(PROTECTED_VERSION2), ["frame-crc:warn"]),
    "wrong-checksum-of-layer-2": (
        GOOD + PROTECTED_LAYER2 * 110 + with_wrong_crc(PROTECTED_LAYER2), ["frame-crc:warn"]),
    "wrong-checksum-of-the-encoder's-frame": (
        GOOD + encoder_frame(b"Info", bytes.fromhex("FFFA9064")) + PROTECTED * 120, []),
    # The last bit of the 32 bytes of side information, and the first bit after them.
    "side-information-is-damaged": (
        GOOD + PROTECTED * 110 + PROTECTED[:37] + b"\1" + PROTECTED[38:], ["frame-crc:warn"]),
    "sound-is-damaged": (
        GOOD + PROTECTED * 110 + PROTECTED[:38] + b"\x80" + PROTECTED[39:], []),
    # The last of the 135 bits, at 48 + 134; the one after it.
    "allocation-is-damaged": (
        GOOD + PROTECTED_LAYER2 * 110 + PROTECTED_LAYER2[:22] + b"\2" + PROTECTED_LAYER2[23:],
        ["frame-crc:warn"]),
    "after-the-allocation-is-damaged": (
        GOOD + PROTECTED_LAYER2 * 110 + PROTECTED_LAYER2[:22] + b"\1" + PROTECTED_LAYER2[23:], []),

    # --- VBRI
    "vbri": (GOOD + vbri(120, 121 * FRAME_LENGTH) + AUDIO, []),
    "vbri-of-a-cut-file": (GOOD + vbri(240, 241 * FRAME_LENGTH) + AUDIO, ["audio-missing"]),
    "vbri-of-fewer-frames": (GOOD + vbri(100, 101 * FRAME_LENGTH) + AUDIO, ["header-mismatch"]),

    # --- the frames
    "junk-before-audio": (GOOD + b"junk" * 5 + AUDIO, ["junk-before-audio"]),
    "junk-at-the-beginning": (b"junk" * 5 + AUDIO + RECORD, ["junk-before-audio"]),
    "junk-between-frames": (GOOD + AUDIO + b"junk" * 5 + AUDIO, ["junk-between-frames"]),
    "cut-last-frame": (GOOD + AUDIO + AUDIO[:200] + RECORD, ["cut-last-frame"]),
    "one-frame-more-promised": (GOOD + audio_with_xing(121, 121), []),
    "one-frame-less-promised": (GOOD + audio_with_xing(121, 119), []),
    "two-frames-less-promised": (GOOD + audio_with_xing(121, 118), ["header-mismatch"]),
    # Hosts begin with the frame after the encoder's, as that one alone is mono.
    "encoder-header-in-another-mode": (
        GOOD + (lambda first: first[:3] + b"\xc4" + first[4:17 + 4] + first[36:FRAME_LENGTH] + bytes(15))(
            audio_with_xing()[:FRAME_LENGTH]) + AUDIO, []),
    "bytes-of-the-audio-with-its-header-frame": (
        GOOD + audio_with_xing(121, 120, 121 * FRAME_LENGTH), []),
    "bytes-of-the-audio-and-the-record": (
        GOOD + audio_with_xing(121, 120, 121 * FRAME_LENGTH + 128) + RECORD, []),
    "fewer-bytes-promised": (GOOD + audio_with_xing(121, 120, 119 * FRAME_LENGTH),
                             ["header-mismatch"]),
    "junk-after-audio": (GOOD + AUDIO + b"junk" * 5, ["junk-after-audio"]),
    "junk-after-audio-and-a-record": (GOOD + AUDIO + b"junk" * 5 + RECORD, ["junk-after-audio"]),
    "riff": (b"RIFF\0\0\0\0WAVEfmt " + bytes(40) + AUDIO + RECORD,
             ["junk-before-audio", "wrapped"]),
    "ape-tag": (GOOD + AUDIO + APE, ["apev2-tag"]),
    "ape-tag-and-a-record": (GOOD + AUDIO + APE + RECORD, ["apev2-tag"]),
    "lyrics3-tag": (GOOD + AUDIO + LYRICS3 + RECORD, ["lyrics3-tag"]),
    "both-and-a-record": (GOOD + AUDIO + APE + LYRICS3 + RECORD, ["apev2-tag", "lyrics3-tag"]),
    "record-of-another-title": (GOOD + AUDIO + id3v1(b"Sing", b"Ann"), ["tags-disagree"]),
    "record-of-another-artist": (GOOD + AUDIO + id3v1(b"Song", b"Bob"), ["tags-disagree"]),
    "record-of-another-album": (
        named(text_frame("TALB", "One")) + AUDIO + id3v1(b"Song", b"Ann", b"Two"),
        ["tags-disagree"]),
    "record-of-another-year": (
        named(text_frame("TYER", "1998")) + AUDIO + id3v1(b"Song", b"Ann", year=b"1999"),
        ["tags-disagree"]),
    "record-of-the-start-only": (GOOD + AUDIO + id3v1(b"Son", b"Ann"), ["tags-disagree"]),
    "record-without-names": (GOOD + AUDIO + id3v1(), []),
    "record-of-30-characters": (
        tag(text_frame("TIT2", "x" * 40), NAMES[1]) + AUDIO + id3v1(b"x" * 30, b"Ann"), []),
    "record-of-other-30-characters": (
        tag(text_frame("TIT2", "x" * 40), NAMES[1]) + AUDIO + id3v1(b"x" * 29 + b"y", b"Ann"),
        ["tags-disagree"]),
    "record-in-8-bits": (
        tag(text_frame("TIT2", "Müller"), NAMES[1]) + AUDIO + id3v1(b"M\xfcller", b"Ann"), []),
    "record-of-another-letter-in-8-bits": (
        tag(text_frame("TIT2", "Müller"), NAMES[1]) + AUDIO + id3v1(b"M\xf6ller", b"Ann"),
        ["tags-disagree"]),
    "record-in-ascii": (
        tag(text_frame("TIT2", "Müller"), NAMES[1]) + AUDIO + id3v1(b"M?ller", b"Ann"), []),
    "record-in-utf-8": (
        tag(text_frame("TIT2", "Müller"), NAMES[1]) + AUDIO + id3v1("Müller".encode(), b"Ann"), []),
    # What is after the first letter that the code page lacks can't be told.
    "record-of-a-text-that-it-cannot-hold": (
        tag(frame("TIT2", b"\1" + "\ufeffA Ωmega".encode("utf-16-le")), NAMES[1]) + AUDIO
        + id3v1(b"A ?mega", b"Ann"), ["misread-text"]),
    "record-of-another-text-that-it-cannot-hold": (
        tag(frame("TIT2", b"\1" + "\ufeffA Ωmega".encode("utf-16-le")), NAMES[1]) + AUDIO
        + id3v1(b"The ?", b"Ann"), ["misread-text", "tags-disagree"]),
    "two-records": (GOOD + AUDIO + RECORD + RECORD, ["second-id3v1"]),

    # --- the points: 3,135 ms
    "points-in-order": (points(100, 500, 3000) + AUDIO, []),
    "points-at-the-end": (points(3135, 3135, 3135) + AUDIO, []),
    "point-of-0-is-none": (points(100, 0, 50) + AUDIO, ["points-out-of-order"]),
    "outro-alone": (points(0, 0, 3000) + AUDIO, []),
    "cue-in-beyond-end": (points(3136) + AUDIO, ["cue-in-beyond-end"]),
    "intro-beyond-end": (points(0, 3136) + AUDIO, ["intro-beyond-end"]),
    "outro-beyond-end": (points(0, 0, 3136) + AUDIO, ["outro-beyond-end"]),
    "all-beyond-end": (points(4000, 5000, 6000) + AUDIO,
                       ["cue-in-beyond-end", "intro-beyond-end", "outro-beyond-end"]),
    "same-points-in-seconds": (seconds(liq_cue_in="1.5", cue_in="1.504", cross_start_next="2.50",
                                       liq_cross_start_next="2.491") + AUDIO, []),
    "other-cue-in-in-seconds": (seconds(liq_cue_in="1.52") + AUDIO, ["points-disagree"]),
    "other-cue-in-of-another-program": (seconds(cue_in="0") + AUDIO, ["points-disagree"]),
    "other-start-of-the-next": (seconds(liq_cross_start_next="3.0") + AUDIO, ["points-disagree"]),
    "cue-in-of-10-ms-more": (seconds(liq_cue_in="1.51") + AUDIO, []),
    "cue-in-of-11-ms-more": (seconds(liq_cue_in="1.511") + AUDIO, ["points-disagree"]),
    "no-number-of-seconds": (seconds(cue_in="1:05", cross_start_next="-2") + AUDIO, []),
    "point-in-seconds-alone": (named(user_frame("cue_in", "1.5")) + AUDIO, []),
    "intro-before-cue-in": (points(500, 499, 3000) + AUDIO, ["points-out-of-order"]),
    "outro-before-intro": (points(100, 500, 499) + AUDIO, ["points-out-of-order"]),
    "before-the-beginning": (points(-1) + AUDIO, ["points-out-of-order"]),
    "beyond-the-end-and-out-of-order": (points(4000, 500) + AUDIO,
                                        ["cue-in-beyond-end", "points-out-of-order"]),
}

BAD = {"no-stream", "not-playable-by-hosts", "free-format", "dead-air", "audio-missing",
       "end-cut-off", "frame-crc:bad", "changing-format:bad", "cue-in-beyond-end",
       "intro-beyond-end", "outro-beyond-end"}
WARN = {"corrupt-tag", "points-out-of-order", "points-disagree", "junk-before-audio",
        "junk-between-frames", "junk-after-audio", "cut-last-frame", "frame-crc:warn", "wrapped",
        "tag-larger-than-file", "misread-text", "unread-text", "large-picture", "mojibake"}
NOTE = {"header-mismatch", "changing-format:note", "duplicate-tag", "no-title", "no-artist",
        "tags-disagree", "bad-picture", "apev2-tag", "lyrics3-tag", "second-id3v1", "leftover"}
# With --listen, of whatever real encoders make: tests/real/test_check_listen.py.
HEARD_WARN = {"decode-error", "channel-missing", "cue-in-in-silence", "silent-start",
              "silence-inside", "silent-end"}
HEARD_NOTE = {"clipped", "too-loud", "too-quiet"}
WITH_TWO_VERDICTS = {"frame-crc", "changing-format"}


def named_code(code, verdict):
    return f"{code}:{verdict}" if code in WITH_TWO_VERDICTS else code


def level_of(code):
    return "bad" if code in BAD else "warn" if code in WARN else "note"


def verdict_of(codes):
    levels = {level_of(code) for code in codes}
    return "bad" if "bad" in levels else "warn" if "warn" in levels else "ok"


def checked(result):
    lines = result.stdout.decode("utf-8").split("\n")
    assert lines.pop() == ""
    return [json.loads(line) for line in lines]


def codes_of(facts):
    return [named_code(reason["code"], reason["verdict"]) for reason in facts["reasons"]]


@pytest.mark.parametrize("name", FILES)
def test_file_has_its_reasons_and_its_verdict(tmp_path, brindle, name):
    content, codes = FILES[name]
    (tmp_path / "a.mp3").write_bytes(content)
    result = brindle("check", "--json", "a.mp3")
    (facts,) = checked(result)
    assert facts["file"] == "a.mp3"
    assert codes_of(facts) == codes, facts
    assert facts["verdict"] == verdict_of(codes)
    assert result.returncode == (1 if facts["verdict"] == "bad" else 0)
    for reason in facts["reasons"]:
        assert list(reason) == ["code", "verdict", "text"]
        assert reason["verdict"] == level_of(named_code(reason["code"], reason["verdict"]))
        assert reason["text"]


def test_every_code_has_a_file():
    # A leftover is known by its name.
    assert {code for _, codes in FILES.values() for code in codes} | {"leftover"} == BAD | WARN | NOTE


def test_help_lists_every_code_once(brindle):
    text = brindle("check", "--help").stdout.decode()
    rows = re.findall(r"^  ([a-z0-9-]+) +(bad|warn|note) +[A-Z]", text, re.MULTILINE)
    assert len(rows) == len(BAD | WARN | NOTE | HEARD_WARN | HEARD_NOTE)
    for level, codes in (("bad", BAD), ("warn", WARN | HEARD_WARN), ("note", NOTE | HEARD_NOTE)):
        assert {named_code(code, verdict) for code, verdict in rows if verdict == level} == codes
    assert text.splitlines()[-2:] == ["Example:", "  brindle check --quiet /music/new"]


TEXTS = {
    "no-stream": "no MPEG audio found: fetch the file again from its source",
    "ten-frames": "10 frames of audio, hosts need 11: add silence",
    "xing-promises-more-bytes-than-the-file-has":  # 39 + 60 * 417
        "the Xing header promises 100080 bytes of a file of 25059: it is incomplete; fetch it again, or "
        "encode it again as it is",
    "tag-of-more-than-half":  # 60,000 + 39, and 120 * 417 more
        "the ID3v2 tag takes 60039 bytes of 110079, more than half of the file: remove "
        "pictures",
    "20000-bytes-before-audio":
        "20000 bytes before the first frame, hosts give up after 16384: remove them",
    "modes-alternate": "hosts find no run of frames that agree: encode the file again",
    "free-format": "MPEG 1 Layer 3, 44100 Hz in free format: encode the file again at a bit rate of "
                   "the standard",
    "version-changes":
        "MPEG 1 Layer 3, 44100 Hz changes to MPEG 2 Layer 3, 22050 Hz, 20 frames from byte 50079: "
        "encode the file again in one format",
    "wrong-checksums-in-2-of-201-frames":  # 39 + 50 * 417
        "the checksum of 2 of 201 frames is wrong, from byte 20889: fetch the file again from its "
        "source",
    "utf-8-as-8-bits":
        'read in the wrong encoding: TALB means "Für Élise": set these texts again, or brindle '
        "normalize --repair-text",
    "greek-as-8-bits":
        "read in the wrong encoding: TALB is Cyrillic or Greek text: set these texts again, or "
        "brindle normalize --repair-text",
    "record-of-another-title":
        "ID3v1 and ID3v2 differ in title: set it again, which writes both",
    "picture-of-text":
        "not an image by its first bytes: APIC:1: remove it or put the picture in again",
    "other-cue-in-in-seconds":
        "cue-in at 1500 ms, liq_cue_in at 1520 ms: set the one that is wrong",
    "promise-of-130-ms-more":
        "promises 3265 ms, plays 3135 ms: 130 ms of dead air: fetch the file again, or encode it "
        "again",  # 125 frames: 3,265.31
    "promise-of-131-ms-less":
        "promises 3004 ms, plays 3135 ms: 131 ms cut off: encode the file again",  # 115 frames: 3,004.08
    "cue-in-beyond-end": "cue-in at 3136 ms, the audio ends at 3135 ms: set it again",
    "intro-before-cue-in": "intro at 499 ms before cue-in at 500 ms: set the one that is wrong",
    "before-the-beginning": "cue-in at -1 ms before the beginning: set the one that is wrong",
    "junk-between-frames":  # GOOD is 10 + 15 + 14 bytes
        f"20 bytes that are not audio, at 1 place from byte {39 + 120 * 417}: fetch the file again, "
        "or encode it again",
    "cut-last-frame": "the last frame ends after 200 bytes: fetch the file again if its end is missing",
    "tag-larger-than-file":
        f"the ID3v2 tag claims 90010 bytes of a file of {10 + 29 + 20 + 120 * 417}: "
        "fetch the file again from its source",
    "utf-8": "hosts read another text: TALB:1: brindle normalize writes a form that all programs read",
    "utf-16-custom-field": 'hosts read another text: TXXX:1 "Cue In": '
                             'brindle normalize writes a form that all programs read',
    "text-of-5001-bytes": "hosts do not read TALB:1: shorten it",
    "picture-of-81921-bytes":
        "hosts do not read APIC:1: brindle normalize --pictures shrink makes it small enough",
}


@pytest.mark.parametrize("name", TEXTS)
def test_text_tells_the_numbers(tmp_path, brindle, name):
    (tmp_path / "a.mp3").write_bytes(FILES[name][0])
    (facts,) = checked(brindle("check", "--json", "a.mp3"))
    assert TEXTS[name] in [reason["text"] for reason in facts["reasons"]]
    plain = brindle("check", "--quiet", "--notes", "a.mp3").stdout.decode()
    assert plain.startswith(f"a.mp3: {facts['verdict']}: {facts['reasons'][0]['code']} (")
    assert plain.count("\n") == 1
    assert all(reason["text"] in plain for reason in facts["reasons"])


# --- listening

def with_bad_frames():
    """big_values of the first granule, 9 bits from bit 32 of the side information on, above 288."""
    bad = bytearray(audio(1))
    bad[8:10] = b"\xff\x80"
    return GOOD + audio(110) + bytes(bad) + audio(5) + bytes(bad) + audio(5)


def test_frames_that_cannot_be_decoded_are_a_warning(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(with_bad_frames())
    assert brindle("check", "--quiet", "a.mp3").stdout == b"a.mp3: ok\n"
    result = brindle("check", "--listen", "--json", "--quiet", "a.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    (facts,) = checked(result)
    assert facts["verdict"] == "warn"
    # The first after 110 frames, 2,873.47 ms, and 39 bytes of the tag.
    assert facts["reasons"] == [{
        "code": "decode-error", "verdict": "warn",
        "text": f"2 frames can't be decoded, the first at byte {39 + 110 * 417} (0:02.873): its side "
                "information is not valid: fetch the file again from its source"}]


def test_silent_file_is_a_warning(tmp_path, brindle):
    """120 frames of NULs are 3.135 s of silence, 70 are 1.829 s."""
    (tmp_path / "a.mp3").write_bytes(GOOD + AUDIO)
    line = (b"a.mp3: warn: silent-start (silent from beginning to end, 0:03.135: fetch the file "
            b"again from its source)\n")
    assert brindle("check", "--listen", "--quiet", "a.mp3").stdout == line
    assert brindle("check", "--listen", "--silent-start", "3.2", "--quiet",
                   "a.mp3").stdout == b"a.mp3: ok\n"
    (tmp_path / "a.mp3").write_bytes(GOOD + audio(70))
    assert brindle("check", "--listen", "--quiet", "a.mp3").stdout == b"a.mp3: ok\n"


def test_file_without_a_stream_is_not_listened_to(tmp_path, brindle):
    for name in ("no-stream", "ten-frames", "free-format", "empty"):
        content, codes = FILES[name]
        (tmp_path / "a.mp3").write_bytes(content)
        (facts,) = checked(brindle("check", "--listen", "--json", "a.mp3"))
        assert codes_of(facts) == codes


def test_listening_adds_reasons_and_takes_none_away(tmp_path, brindle):
    for name, (content, _) in FILES.items():
        (tmp_path / f"{name}.mp3").write_bytes(content)
    without, heard = (checked(brindle("check", "--json", "--quiet", *options, "."))
                      for options in ([], ["--listen"]))
    assert [facts["file"] for facts in heard] == [facts["file"] for facts in without]
    for one, other in zip(without, heard):
        codes = HEARD_WARN | HEARD_NOTE
        assert [reason for reason in other["reasons"] if reason["code"] not in codes] == one[
            "reasons"]


@pytest.mark.parametrize("option", ["--silent-start", "--silence-inside", "--silent-end",
                                    "--too-loud", "--too-quiet", "--sound-range"])
def test_limits_are_numbers_and_need_to_listen(tmp_path, brindle, option):
    (tmp_path / "a.mp3").write_bytes(GOOD + AUDIO)
    value = "-10" if "too" in option else "1"
    assert brindle("check", "--listen", option, value, "a.mp3").returncode == 0
    for wrong in ([option, value], ["--listen", option, "x"], ["--listen", option, "3601"],
                  ["--listen", option, "-71"]):
        result = brindle("check", *wrong, "a.mp3")
        assert result.returncode == 2
        assert result.stdout == b""


@pytest.mark.plain_build
def test_file_is_read_once(program, tmp_path):
    """As many bytes as without listening."""
    (tmp_path / "a.mp3").write_bytes(GOOD + audio(1000))

    def bytes_read(*options):
        trace = tmp_path / "trace"
        subprocess.run(["strace", "-qq", "-f", "-o", trace, "-e", "trace=pread64", program, "check",
                        "--quiet", *options, "a.mp3"], cwd=tmp_path, capture_output=True, timeout=60,
                       check=True)
        return sum(int(line.rsplit("=", 1)[1]) for line in trace.read_text().splitlines())

    assert bytes_read("--listen") == bytes_read() > 417 * 1000


# --- many files

def test_folder_is_checked_and_summed_up(tmp_path, brindle):
    for name in ("ok", "no-stream", "no-title", "dead-air-2", "missing"):
        content = FILES.get(name, FILES["cut-in-half"])[0]
        (tmp_path / f"{name}.mp3").write_bytes(content)
    (tmp_path / "missing.mp3").unlink()
    (tmp_path / "missing.mp3").symlink_to("nowhere")
    result = brindle("check", "--jobs", "4", ".")
    assert result.returncode == 1
    lines = result.stdout.decode().splitlines()
    assert [line.split(":")[0] for line in lines] == [
        "./dead-air-2.mp3", "./no-stream.mp3", "./no-title.mp3", "./ok.mp3", "5 files"]
    assert lines[2] == "./no-title.mp3: ok"
    assert lines[3] == "./ok.mp3: ok"
    assert lines[4] == "5 files: 2 ok, 0 warn, 2 bad, 1 failed"
    assert result.stderr == b"brindle: ./missing.mp3: No such file or directory\n"


def test_notes_are_printed_when_asked_for(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(FILES["no-title"][0])
    assert brindle("check", "--quiet", "a.mp3").stdout == b"a.mp3: ok\n"
    assert brindle("check", "--quiet", "--notes", "a.mp3").stdout == (
        b"a.mp3: ok: no-title (no title: set --title)\n")


def test_leftover_is_told(tmp_path, brindle):
    (tmp_path / ".brindle-1a2b.mp3").write_bytes(FILES["ok"][0])
    (facts,) = checked(brindle("check", "--json", ".brindle-1a2b.mp3"))
    assert codes_of(facts) == ["leftover"]


def test_only_ignore_and_fail_on(tmp_path, brindle):
    for name in ("ok", "no-stream", "utf-8", "dead-air"):
        content = FILES.get(name, FILES["cut-in-half"])[0]
        (tmp_path / f"{name}.mp3").write_bytes(content)

    def names(*options):
        result = brindle("check", *options, ".")
        return [line.split(":")[0] for line in result.stdout.decode().splitlines()[:-1]]

    assert names("--only", "warn") == ["./dead-air.mp3", "./no-stream.mp3", "./utf-8.mp3"]
    assert names("--only", "bad") == ["./dead-air.mp3", "./no-stream.mp3"]
    assert names("--only", "bad", "--ignore", "no-stream") == ["./dead-air.mp3"]
    assert brindle("check", "--fail-on", "warn", "utf-8.mp3").returncode == 1
    assert brindle("check", "--fail-on", "bad", "utf-8.mp3").returncode == 0
    assert brindle("check", "--fail-on", "never", "no-stream.mp3").returncode == 0
    assert brindle("check", "--fail-on", "warn", "--ignore", "misread-text",
                   "utf-8.mp3").returncode == 0
    for wrong in (["--only", "ok"], ["--ignore", "nonsense"], ["--fail-on", "ok"]):
        assert brindle("check", *wrong, "ok.mp3").returncode == 2


def test_json_of_a_file_that_fails_has_its_error(tmp_path, brindle):
    result = brindle("check", "--json", "gone.mp3")
    assert result.returncode == 1
    assert checked(result) == [{"file": "gone.mp3", "error": "No such file or directory"}]
    assert result.stderr.decode().endswith("1 file: 0 ok, 0 warn, 0 bad, 1 failed\n")


def test_names_from_standard_input(tmp_path, brindle):
    (tmp_path / "x\ny.mp3").write_bytes(FILES["ok"][0])
    with open(os.fsencode(tmp_path) + b"/\xff.mp3", "wb") as file:
        file.write(FILES["no-stream"][0])
    result = brindle("check", "--json", "--quiet", "-", input=b"x\ny.mp3\0\xff.mp3\0", stdin=None)
    assert [(os.fsencode(facts["file"]), facts["verdict"]) for facts in checked(result)] == [
        (b"x\ny.mp3", "ok"), (b"\xff.mp3", "bad")]
    assert result.stderr == b""


def test_warnings_alone_are_no_failure(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    assert brindle("check", "a.mp3").returncode == 0


def test_fifo_and_device_do_not_block(tmp_path, brindle):
    os.mkfifo(tmp_path / "a.mp3")
    (tmp_path / "b.mp3").symlink_to("/dev/zero")
    result = brindle("check", "--quiet", ".")
    assert result.stderr.decode() == ("brindle: ./a.mp3: Not a regular file\n"
                                      "brindle: ./b.mp3: Not a regular file\n")


def test_nothing_is_written(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(FILES["duplicate-tag"][0])
    os.utime(path, ns=(10**18, 10**18))
    before = (path.read_bytes(), path.stat().st_mtime_ns, path.stat().st_ino)
    brindle("check", ".")
    assert (path.read_bytes(), path.stat().st_mtime_ns, path.stat().st_ino) == before


@pytest.mark.skipif(os.geteuid() != 0, reason="becomes another user, as root")
def test_file_that_may_not_be_written_is_checked(program, tmp_path_factory):
    folder = tmp_path_factory.mktemp("open")
    for part in (folder, *folder.parents):
        if part.stat().st_mode & 0o005 != 0o005:
            part.chmod(part.stat().st_mode | 0o055)
    copy = shutil.copy(program, folder / "brindle")
    (folder / "a.mp3").write_bytes(FILES["utf-8"][0])
    (folder / "a.mp3").chmod(0o444)
    result = subprocess.run(
        ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", copy, "check", "--quiet",
         "a.mp3"], cwd=folder, capture_output=True, timeout=60, check=False)
    assert result.stdout.startswith(b"a.mp3: warn: misread-text (")


@pytest.mark.plain_build
def test_fault_of_the_disk_is_no_verdict(program, tmp_path):
    """A file that can't be read to its end is not called good or bad."""
    (tmp_path / "a.mp3").write_bytes(GOOD + audio(1000))
    result = subprocess.run(
        ["strace", "-qq", "-f", "-o", "/dev/null", "-e", "trace=pread64",
         "-e", "inject=pread64:error=EIO:when=6+", program, "check", "--quiet", "a.mp3"],
        cwd=tmp_path, capture_output=True, timeout=60, check=False)
    assert result.returncode == 1
    assert result.stdout == b""
    assert result.stderr == b"brindle: a.mp3: The device could not be read or written\n"


@pytest.mark.parametrize("arguments", [[], ["--csv", "."], ["--jobs", "0", "."], ["--json=no", "."]],
                         ids=str)
def test_wrong_usage(brindle, arguments):
    assert brindle("check", *arguments).returncode == 2


def test_frame_header_of_the_tests_is_joint_stereo():
    """The files above depend on it: modes 01 and 00."""
    assert (FRAME_HEADER[3] >> 6, OTHER_MODE[3] >> 6) == (1, 0)
