"""Finishes what the compiler made of an IDL file.

usage: finish_type_library.py <IDL file> <type library>

Takes the time of the compilation out: the same sources make the same bytes. Gives the values of
enumerations their help strings, help("...") in the IDL file, for which the compiler has no
attribute.
"""

import pathlib
import re
import struct
import sys

NO_TIME = b"Thu Jan  1 00:00:00 1970"
# The text is filled up with "W" to whole words; a number is its type (19), its value and "WW".
STAMP = re.compile(rb"(Created by WIDL version [0-9.]+ at )[^\n]{24}(\nW{0,3}\x13\x00).{4}(WW)",
                   re.DOTALL)
HELP = re.compile(r'help\("([^"]*)"\)\s+(\w+) =')

# The file is a header, the number of each type, a directory of segments (16 bytes each: place,
# length, two more), the segments, and the members of each type in the order of the types.
COUNT_OF_TYPES = 0x20
HEADER_BYTES = 0x54
SEGMENTS = 15
TYPES, NAMES, STRINGS = 0, 7, 8
# The description of a type in its segment.
TYPE_BYTES = 100
KIND, MEMBERS, COUNTS = 0, 4, 24
ENUMERATION = 0
# The members are the bytes of their records, the records, and for each its number, its name and
# its place. The record of a value may go on with a help context and a help string.
VALUE_BYTES, VALUE_BYTES_WITH_HELP = 20, 28


def words(content, at, count=1):
    return struct.unpack_from(f"<{count}i", content, at)


def without_time(content):
    content, count = STAMP.subn(rb"\g<1>" + NO_TIME + rb"\g<2>\0\0\0\0\g<3>", content)
    assert count == 1, f"{count} time stamps where one was expected"
    return content


class HelpStrings:
    """Strings to be added after those that a library has."""

    def __init__(self, texts, place):
        self.texts, self.place, self.content = texts, place, b""

    def place_of(self, name):
        text = self.texts.pop(name).encode("ascii")
        place = self.place + len(self.content)
        entry = struct.pack("<h", len(text)) + text
        self.content += entry + b"W" * (-len(entry) % 4)
        return place


def values_with_help(members, count, name_at, strings):
    assert words(members, 0)[0] == count * VALUE_BYTES
    tables = words(members, 4 + count * VALUE_BYTES, 3 * count)
    made = struct.pack("<i", count * VALUE_BYTES_WITH_HELP)
    for i in range(count):
        record = members[4 + i * VALUE_BYTES:][:VALUE_BYTES]
        made += struct.pack("<h", VALUE_BYTES_WITH_HELP) + record[2:]
        made += struct.pack("<ii", 0, strings.place_of(name_at(tables[count + i])))
    made += struct.pack(f"<{2 * count}i", *tables[:2 * count])
    return made + struct.pack(f"<{count}i", *range(0, count * VALUE_BYTES_WITH_HELP,
                                                   VALUE_BYTES_WITH_HELP))


def with_help(content, texts):
    count = words(content, COUNT_OF_TYPES)[0]
    directory = HEADER_BYTES + 4 * count
    segments = [words(content, directory + 16 * i, 2) for i in range(SEGMENTS)]
    types = [segments[TYPES][0] + TYPE_BYTES * i for i in range(count)]
    # A type without members has those of length 0.
    starts = [words(content, at + MEMBERS)[0] for at in types]
    ends = [*starts[1:], len(content)]
    assert starts == sorted(starts)

    def name_at(place):
        start = segments[NAMES][0] + place
        return content[start + 12:][:content[start + 8]].decode("ascii")

    strings = HelpStrings(texts, segments[STRINGS][1])
    members = []
    for at, start, end in zip(types, starts, ends):
        part = content[start:end]
        if words(content, at + KIND)[0] & 0xF == ENUMERATION:
            part = values_with_help(part, words(content, at + COUNTS)[0] >> 16, name_at, strings)
        members.append(part)
    assert not texts, f"no values of these names: {', '.join(texts)}"

    end_of_strings = sum(segments[STRINGS])
    front = bytearray(content[:end_of_strings] + strings.content + content[end_of_strings:starts[0]])
    for i, (place, length) in enumerate(segments):
        if i == STRINGS:
            struct.pack_into("<i", front, directory + 16 * i + 4, length + len(strings.content))
        elif place >= end_of_strings:
            struct.pack_into("<i", front, directory + 16 * i, place + len(strings.content))
    place = len(front)
    for at, part in zip(types, members):
        struct.pack_into("<i", front, at + MEMBERS, place)
        place += len(part)
    return bytes(front) + b"".join(members)


def main():
    source, library = map(pathlib.Path, sys.argv[1:])
    texts = {name: text for text, name in HELP.findall(source.read_text())}
    library.write_bytes(with_help(without_time(library.read_bytes()), texts))


if __name__ == "__main__":
    main()
