"""An nbdkit plugin: a block device of changed blocks over a read-only base.

    nbdkit python block_device_plugin.py base=FILE log=FILE state=FILE

While there is no state file, the device logs its writes and flushes. With a state file it shows
the base with the writes of that file, and loads it again whenever another file takes its place;
what is then written to the device stays in memory until that moment and is not logged."""

import os
import pathlib
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import nbdkit  # noqa: E402

import block_log  # noqa: E402

API_VERSION = 2
BLOCK = 4096

options = {}
base = -1
changed = {}  # block number -> bytes
loaded = None  # identity of the state file in `changed`


def config(key, value):
    options[key] = value


def config_complete():
    if set(options) != {"base", "log", "state"}:
        raise ValueError("needs base=, log= and state=")


def get_ready():
    global base
    base = os.open(options["base"], os.O_RDONLY | os.O_CLOEXEC)


def thread_model():
    # The order of the log is the order of the requests.
    return nbdkit.THREAD_MODEL_SERIALIZE_ALL_REQUESTS


def open(readonly):
    return 1


def get_size(handle):
    return os.fstat(base).st_size


def can_write(handle):
    return True


def can_flush(handle):
    return True


def block(number):
    return changed.get(number) or os.pread(base, BLOCK, number * BLOCK)


def change(offset, data):
    place = 0
    while place < len(data):
        number, begin = divmod(offset + place, BLOCK)
        count = min(BLOCK - begin, len(data) - place)
        if number not in changed:
            changed[number] = bytearray(block(number))
        changed[number][begin:begin + count] = data[place:place + count]
        place += count


def shows_state():
    """Whether there is a state file; loads it when it is another than before."""
    global loaded
    try:
        status = os.stat(options["state"])
    except FileNotFoundError:
        return False
    identity = (status.st_ino, status.st_mtime_ns)
    if identity != loaded:
        changed.clear()
        for write in block_log.decoded(pathlib.Path(options["state"]).read_bytes()):
            change(write.offset, write.data)
        loaded = identity
    return True


def pread(handle, into, offset, flags):
    shows_state()
    numbers = range(offset // BLOCK, -(-(offset + len(into)) // BLOCK))
    if any(number in changed for number in numbers):
        begin = offset - numbers[0] * BLOCK
        into[:] = b"".join(map(block, numbers))[begin:begin + len(into)]
    else:
        into[:] = os.pread(base, len(into), offset)


def pwrite(handle, data, offset, flags):
    if not shows_state():
        block_log.append(options["log"], block_log.Write(offset, bytes(data)))
    change(offset, data)


def flush(handle, flags):
    if not shows_state():
        block_log.append(options["log"], block_log.Flush())
