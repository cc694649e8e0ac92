"""Takes the time of the compilation out of a type library: the same sources make the same bytes.

usage: stamp_type_library.py <type library>

The compiler leaves a text with its name, version and the time, and behind it the time as a number.
"""

import pathlib
import re
import sys

NO_TIME = b"Thu Jan  1 00:00:00 1970"
# The text is filled up with "W" to whole words; a number is its type (19), its value and "WW".
STAMP = re.compile(rb"(Created by WIDL version [0-9.]+ at )[^\n]{24}(\nW{0,3}\x13\x00).{4}(WW)",
                   re.DOTALL)


def main():
    path = pathlib.Path(sys.argv[1])
    content, count = STAMP.subn(rb"\g<1>" + NO_TIME + rb"\g<2>\0\0\0\0\g<3>", path.read_bytes())
    if count != 1:
        sys.exit(f"{path}: {count} time stamps where one was expected")
    path.write_bytes(content)


if __name__ == "__main__":
    main()
