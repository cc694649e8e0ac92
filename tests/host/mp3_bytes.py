"""MP3 files made byte by byte, so that what must be read from them is known."""

# MPEG 1, layer 3, 128 kbit/s, 44100 Hz, joint stereo, no CRC, no padding.
FRAME_HEADER = bytes.fromhex("FFFB9064")
FRAME_LENGTH = 417  # 144000 * 128 / 44100, cut


def audio(frames=120):
    """More than the 100 frames that have to agree."""
    return (FRAME_HEADER + bytes(FRAME_LENGTH - 4)) * frames


def audio_with_xing(frames=120, promised_frames=120, promised_bytes=120 * FRAME_LENGTH):
    """The first frame has the header of a variable bit rate, after 32 bytes of side information."""
    xing = (b"Xing" + (3).to_bytes(4, "big") + promised_frames.to_bytes(4, "big")
            + promised_bytes.to_bytes(4, "big"))
    first = FRAME_HEADER + bytes(32) + xing
    return first + bytes(FRAME_LENGTH - len(first)) + audio(frames - 1)


def frame(frame_id, body):
    return frame_id.encode("ascii") + len(body).to_bytes(4, "big") + b"\0\0" + body


def text_frame(frame_id, text):
    return frame(frame_id, b"\0" + text.encode("cp1252"))


def user_frame(description, value):
    return frame("TXXX", b"\0" + description.encode("cp1252") + b"\0" + value.encode("cp1252"))


def tag(*frames, padding=0):
    """An ID3v2.3 tag; 10 bytes longer than its frames and padding."""
    content = b"".join(frames) + bytes(padding)
    size = len(content)
    syncsafe = bytes((size >> shift) & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\x03\0\0" + syncsafe + content


def id3v1(title=b"", artist=b"", album=b"", year=b"", comment=b"", track=0, genre=255):
    return (b"TAG" + title.ljust(30) + artist.ljust(30) + album.ljust(30) + year.ljust(4)
            + comment.ljust(28) + bytes((0, track, genre)))


def with_missing_data(song):
    """A file of which a part of several frames in the middle was lost: it can't be decoded."""
    return song[:200_000] + bytes(2_048) + song[202_048:]
