import pytest

from verdict import wrong_with

A, B, C, D = (letter * 512 for letter in (b"a", b"b", b"c", b"d"))
AUDIO = b"audio" * 200
OLD = A + B + AUDIO
NEW = C + D + AUDIO
LONGER = NEW + b"record"

NEITHER = "neither the old nor the new file"
NOT_NEW = "not the new file"

# The file found, the new file, and what is wrong: of a save in place, of a replacement, and of
# either after the program has ended.
CASES = {
    "old": (OLD, NEW, None, None, NOT_NEW),
    "new": (NEW, NEW, None, None, None),
    "a sector of each": (A + D + AUDIO, NEW, None, NEITHER, NOT_NEW),
    "the same the other way round": (C + B + AUDIO, NEW, None, NEITHER, NOT_NEW),
    "a sector of neither": (A + bytes(512) + AUDIO, NEW, NEITHER, NEITHER, NOT_NEW),
    "a sector half old, half new": (A[:256] + C[:256] + B + AUDIO, NEW, NEITHER, NEITHER, NOT_NEW),
    "sectors in the wrong place": (D + C + AUDIO, NEW, NEITHER, NEITHER, NOT_NEW),
    "a byte of audio lost": (C + D + AUDIO[1:], NEW, "audio is lost, 2023 bytes are left",
                             "audio is lost, 2023 bytes are left",
                             "audio is lost, 2023 bytes are left"),
    "a byte more": (NEW + b"x", NEW, NEITHER, NEITHER, NOT_NEW),
    "empty": (b"", NEW, "audio is lost, 0 bytes are left", "audio is lost, 0 bytes are left",
              "audio is lost, 0 bytes are left"),
    "old where the new one is longer": (OLD, LONGER, None, None, NOT_NEW),
    "grown": (LONGER, LONGER, None, None, None),
    "mixed and grown": (A + D + AUDIO + b"record", LONGER, None, NEITHER, NOT_NEW),
    "mixed and not grown": (A + D + AUDIO, LONGER, None, NEITHER, NOT_NEW),
    "grown by NULs": (NEW + bytes(6), LONGER, None, NEITHER, NOT_NEW),
    "grown in part": (NEW + b"rec", LONGER, NEITHER, NEITHER, NOT_NEW),
    "grown by other bytes": (NEW + b"RECORD", LONGER, NEITHER, NEITHER, NOT_NEW),
}


@pytest.mark.parametrize("content, new, in_place, replaced, done", CASES.values(),
                         ids=CASES.keys())
def test_one_file(content, new, in_place, replaced, done):
    def verdict(**what):
        return wrong_with({"song.mp3": content}, OLD, new, AUDIO, **what)

    assert verdict(in_place=True, done=False) == in_place
    assert verdict(in_place=False, done=False) == replaced
    assert verdict(in_place=True, done=True) == done
    assert verdict(in_place=False, done=True) == done


@pytest.mark.parametrize("files, wrong", [
    ({}, "the file is missing"),
    ({".brindle-1": NEW}, "the file is missing"),
    ({"song.mp3": NEW, ".brindle-1": b""}, None),
    ({"song.mp3": NEW, "song.tmp": b""}, "other files: ['song.tmp']"),
])
def test_the_files_of_a_folder(files, wrong):
    assert wrong_with(files, OLD, NEW, AUDIO, in_place=False, done=False) == wrong
