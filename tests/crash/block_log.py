"""The log of a block device: its writes and flushes in their order.

A record is a kind (one letter), an offset (8 bytes, little-endian), a length (4 bytes) and that many
bytes of data. The device appends each record in one write, and so does a test that marks a moment.
A state of the device is stored in the same format, as the writes that lead to it."""

import os
import struct
from typing import NamedTuple, Union

HEADER = struct.Struct("<cQI")


class Write(NamedTuple):
    offset: int
    data: bytes


class Flush(NamedTuple):
    """All writes before it are on the medium."""


class Mark(NamedTuple):
    """A moment that a test names."""
    name: str


Event = Union[Write, Flush, Mark]


def encoded(event):
    if isinstance(event, Write):
        return HEADER.pack(b"W", event.offset, len(event.data)) + event.data
    if isinstance(event, Flush):
        return HEADER.pack(b"F", 0, 0)
    name = event.name.encode()
    return HEADER.pack(b"M", 0, len(name)) + name


def decoded(content):
    events = []
    place = 0
    while place < len(content):
        if len(content) - place < HEADER.size:
            raise ValueError("the log ends within a record")
        kind, offset, length = HEADER.unpack_from(content, place)
        place += HEADER.size
        data = content[place:place + length]
        if len(data) != length:
            raise ValueError("the log ends within a record")
        place += length
        if kind == b"W":
            events.append(Write(offset, data))
        elif kind == b"F":
            events.append(Flush())
        elif kind == b"M":
            events.append(Mark(data.decode()))
        else:
            raise ValueError(f"unknown kind of record: {kind!r}")
    return events


def append(path, event):
    descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_APPEND | os.O_CLOEXEC, 0o600)
    try:
        record = encoded(event)
        if os.write(descriptor, record) != len(record):
            raise OSError(f"{path}: only part of a record was written")
    finally:
        os.close(descriptor)
