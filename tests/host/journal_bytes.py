"""The format of journals by host/journal/journal_format.h, read and written without the program."""

import dataclasses
import hashlib
import struct
import zlib

BEGINNING = b"brindle journal\x01"


def sha256(content):
    return hashlib.sha256(content).hexdigest()


def text(value):
    return struct.pack("<q", len(value)) + value


def packed(record, length=None):
    """`length`: another one than the record has."""
    stored = zlib.compress(record)
    lengths = struct.pack("<qq", len(stored), len(record) if length is None else length)
    check = sha256(lengths)[:16] + sha256(stored)
    return lengths + check.encode() + stored


def run_record(command=b"set", started=1_000_000_000, undone=b""):
    return packed(text(command) + struct.pack("<q", started) + text(undone))


@dataclasses.dataclass
class Picture:
    """A file beside that the change made, or removed."""
    number: int
    extension: bytes
    is_made: int = 1
    content: tuple = (0, sha256(b""))  # of one that was made
    body: bytes = b""  # of one that was removed
    state: tuple = (0o100644, 10**18, 10**18, 0)

    def record(self):
        record = struct.pack("<q", self.number) + text(self.extension)
        record += struct.pack("<q", self.is_made)
        if self.is_made:
            length, digits = self.content
            return record + struct.pack("<q", length) + text(digits.encode())
        return record + text(self.body) + struct.pack("<qqqq", *self.state)


@dataclasses.dataclass
class Entry:
    name: bytes
    target: bytes
    mode: int = 0o100644
    accessed: int = 10**18
    modified: int = 10**18
    attributes: dict = dataclasses.field(default_factory=dict)
    front: bytes = b""
    back: bytes = b""
    kept: tuple = (0, sha256(b""))
    new_front: tuple = (0, sha256(b""))
    new_back: tuple = (0, sha256(b""))
    created: int = 0  # 0 and no pictures: without the field
    pictures: list = dataclasses.field(default_factory=list)

    def record(self):
        record = text(self.name) + text(self.target)
        record += struct.pack("<qqq", self.mode, self.accessed, self.modified)
        record += struct.pack("<q", len(self.attributes))
        for name, value in self.attributes.items():
            record += text(name) + text(value)
        record += text(self.front) + text(self.back)
        for length, digits in (self.kept, self.new_front, self.new_back):
            record += struct.pack("<q", length) + text(digits.encode())
        if self.created or self.pictures:
            record += struct.pack("<q", self.created)
        if self.pictures:
            record += struct.pack("<q", len(self.pictures))
            record += b"".join(picture.record() for picture in self.pictures)
        return record


def part(content):
    return (len(content), sha256(content))


def entry_for(path, before, after):
    """The change of the bytes in front alone, from `before` to `after`, of the file that is there."""
    content = path.read_bytes()
    assert content.startswith(after)
    name = str(path).encode()
    return Entry(name, name, front=before, kept=part(content[len(after):]), new_front=part(after))


def journal(*entries):
    return BEGINNING + run_record() + b"".join(packed(entry.record()) for entry in entries)


class Fields:
    def __init__(self, record):
        self.rest = record

    def number(self):
        value, = struct.unpack_from("<q", self.rest)
        self.rest = self.rest[8:]
        return value

    def text(self):
        length = self.number()
        value, self.rest = self.rest[:length], self.rest[length:]
        assert len(value) == length
        return value


def records(content):
    assert content.startswith(BEGINNING)
    rest = content[len(BEGINNING):]
    while rest:
        stored, length = struct.unpack_from("<qq", rest)
        check, body = rest[16:96].decode(), rest[96:96 + stored]
        assert check == sha256(rest[:16])[:16] + sha256(body)
        record = zlib.decompress(body)
        assert len(record) == length
        yield record
        rest = rest[96 + stored:]


def picture_of(fields):
    picture = Picture(fields.number(), fields.text(), fields.number())
    if picture.is_made:
        picture.content = fields.number(), fields.text().decode()
    else:
        picture.body = fields.text()
        picture.state = tuple(fields.number() for _ in range(4))
    return picture


def read_journal(content):
    """The command, and the entries."""
    first, *others = records(content)
    entries = []
    for record in others:
        fields = Fields(record)
        entry = Entry(fields.text(), fields.text(), fields.number(), fields.number(),
                      fields.number())
        for _ in range(fields.number()):
            name = fields.text()
            entry.attributes[name] = fields.text()
        entry.front, entry.back = fields.text(), fields.text()
        entry.kept, entry.new_front, entry.new_back = (
            (fields.number(), fields.text().decode()) for _ in range(3))
        if fields.rest:
            entry.created = fields.number()
        if fields.rest:
            entry.pictures = [picture_of(fields) for _ in range(fields.number())]
        assert fields.rest == b""
        entries.append(entry)
    return Fields(first).text(), entries
