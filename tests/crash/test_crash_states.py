"""Small logs, and by hand all states that they may leave of a small device.

A letter is a sector; "." is a sector that was never written. The words of a text are the events of
a log: "0:ab" writes two sectors from sector 0 on, "|" is a flush."""

import pytest

from block_log import Flush, Mark, Write
from crash_states import SECTOR, crash_states, split_at_flush_before

WORDS = {"|": Flush(), "start": Mark("start"), "done": Mark("done")}


def events_of(text):
    def event_of(word):
        if word in WORDS:
            return WORDS[word]
        place, letters = word.split(":")
        return Write(int(place) * SECTOR,
                     b"".join(letter.encode() * SECTOR for letter in letters))
    return [event_of(word) for word in text.split()]


def image_of(state, length):
    letters = ["."] * length
    for number, sector in state.sectors.items():
        assert sector == sector[:1] * SECTOR
        letters[number] = sector[:1].decode()
    return "".join(letters)


def images_of(text, length, **options):
    """Those before and those after the mark "done", of many samples."""
    states = crash_states(events_of(text), 500, seed=1, **options)
    return tuple({image_of(state, length) for state in states if state.done == done}
                 for done in (False, True))


# The log, the states before "done", the states after it.
CASES = {
    "nothing is written": ("start done", {"."}, {"."}),
    "one write is there or not": ("start 0:a done", {".", "a"}, {".", "a"}),
    "a flushed write is there": ("start 0:a | done", {".", "a"}, {"a"}),
    "a flush keeps what was before it": ("start 0:a | 1:b done", {"..", "a.", "ab"}, {"a.", "ab"}),
    "the second of two writes may be there alone": (
        "start 0:a 1:b done", {"..", "a.", ".b", "ab"}, {"..", "a.", ".b", "ab"}),
    "three writes of which the first is flushed": (
        "start 0:a | 1:b 2:c | done", {"...", "a..", "ab.", "a.c", "abc"}, {"abc"}),
    "the later write of a sector wins": ("start 0:a 0:b done", {".", "a", "b"}, {".", "a", "b"}),
    "a flushed sector is overwritten or not": (
        "start 0:a | 0:b done", {".", "a", "b"}, {"a", "b"}),
    "a write is torn at its sectors": (
        "start 0:abc done", {"...", "a..", ".b.", "..c", "ab.", "a.c", ".bc", "abc"},
        {"...", "a..", ".b.", "..c", "ab.", "a.c", ".bc", "abc"}),
    "a flushed write is never torn": ("start 0:ab | done", {"..", "a.", ".b", "ab"}, {"ab"}),
    "two writes are torn at once": (
        "start 0:ab 2:cd | done",
        {a + b + c + d for a in ".a" for b in ".b" for c in ".c" for d in ".d"}, {"abcd"}),
    "what is written after the end may be there": (
        "start 0:a | done 1:b |", {"..", "a."}, {"a.", "ab"}),
    "without a flush nothing need be there after the end": (
        "start 0:a done 1:b |", {"..", "a."}, {"..", "a.", ".b", "ab"}),
    "what was flushed before the start is there": (
        "0:a | start 1:b done", {"a.", "ab"}, {"a.", "ab"}),
    "what was not flushed before the start may be missing": (
        "0:a start | done", {".", "a"}, {"a"}),
}


@pytest.mark.parametrize("text, before, after", CASES.values(), ids=CASES.keys())
def test_states_of_a_log(text, before, after):
    length = len(next(iter(before)))
    assert images_of(text, length) == (before, after)


def test_a_write_that_is_never_torn():
    images = {"....", "ab..", "..c.", "...d", "..cd", "abc.", "ab.d", "abcd"}
    assert images_of("start 0:ab 2:cd done", 4, never_torn=lambda write: write.offset == 0) == (
        images, images)


def test_states_are_different_and_as_many_as_asked_for():
    states = crash_states(events_of("start 0:abcdefghijklmnop done 20:abcdefghijklmnop"), 200, 7)
    assert [sum(state.done == done for state in states) for done in (False, True)] == [100, 100]
    assert len({(state.done, image_of(state, 36)) for state in states}) == 200


def test_a_seed_gives_the_same_states_again():
    events = events_of("start 0:abcdefgh 8:abcdefgh done")
    assert crash_states(events, 50, 3) == crash_states(events, 50, 3)
    assert crash_states(events, 50, 3) != crash_states(events, 50, 4)


def test_a_state_is_written_sector_by_sector():
    state = crash_states(events_of("0:ab 3:c | start done"), 2, 1)[0]
    assert state.writes() == events_of("0:a 1:b 3:c")


def test_what_is_on_the_medium_at_a_mark():
    a, b, c = events_of("0:a 1:b 2:c")
    assert split_at_flush_before("start", [a, Flush(), b, Mark("start"), c, Flush()]) == (
        [a], [b, Mark("start"), c, Flush()])
    assert split_at_flush_before("start", [a, Mark("start"), b]) == ([], [a, Mark("start"), b])
