"""The states of a block device that a power cut may leave, computed from the log of its writes.

Each write before the last flush is on the medium. Of each later write the medium has all sectors,
none, or some, independently of the other writes."""

import random
from typing import NamedTuple

from block_log import Flush, Mark, Write

SECTOR = 512


class State(NamedTuple):
    # Whether the power failed after the mark "done".
    done: bool
    # The sectors written since the log began: number -> bytes.
    sectors: dict

    def writes(self):
        return [Write(number * SECTOR, data) for number, data in sorted(self.sectors.items())]


def split_at_flush_before(name, events):
    """The writes that are on the medium when the mark is set, and the events after them."""
    before = events[:events.index(Mark(name))]
    flushed = number_flushed(before)
    return [event for event in events[:flushed] if isinstance(event, Write)], events[flushed:]


def number_flushed(events):
    """Number of events up to and including the last flush."""
    flushes = [place for place, event in enumerate(events) if isinstance(event, Flush)]
    return flushes[-1] + 1 if flushes else 0


def all_sectors(write):
    return range(len(write.data) // SECTOR)


def some_sectors(write, rng):
    """The first sectors of the write, or any."""
    if rng.random() < 0.5:
        return all_sectors(write)[:rng.randrange(len(all_sectors(write)) + 1)]
    return [sector for sector in all_sectors(write) if rng.random() < 0.5]


def kept_of_unflushed(writes, never_torn, rng):
    """Pairs of a write and the sectors of it that the medium has."""
    def torn(write):
        return all_sectors(write) if never_torn(write) else some_sectors(write, rng)

    if rng.random() < 0.3:  # the first ones in order, the last of them torn
        kept = [(write, all_sectors(write)) for write in writes[:rng.randrange(len(writes) + 1)]]
        return kept[:-1] + [(write, torn(write)) for write, _ in kept[-1:]]
    ways = [all_sectors, torn, lambda write: ()]
    return [(write, rng.choice(ways)(write)) for write in writes]


def state_after(events, never_torn, rng):
    """One of the states that are possible when the power fails after these events."""
    flushed = number_flushed(events)
    durable, pending = ([event for event in part if isinstance(event, Write)]
                        for part in (events[:flushed], events[flushed:]))
    kept = [(write, all_sectors(write)) for write in durable]
    kept += kept_of_unflushed(pending, never_torn, rng)
    sectors = {}
    for write, numbers in kept:
        for number in numbers:
            sectors[write.offset // SECTOR + number] = (
                write.data[number * SECTOR:(number + 1) * SECTOR])
    return State(Mark("done") in events, sectors)


def crash_states(events, count, seed, never_torn=lambda write: False):
    """Up to `count` different states: half of them before the mark "done", half after it.

    The power fails at any moment after the mark "start". A short log may have fewer states.
    `never_torn` tells which writes the medium has whole or not at all."""
    rng = random.Random(seed)
    start, done = (events.index(Mark(name)) for name in ("start", "done"))
    states = []
    for moments in (range(start + 1, done + 1), range(done + 1, len(events) + 1)):
        found = {}
        for _ in range(20 * count):
            state = state_after(events[:rng.choice(moments)], never_torn, rng)
            found.setdefault(tuple(state.writes()), state)
            if len(found) == count // 2:
                break
        states += found.values()
    return states
