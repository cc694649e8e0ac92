"""The device without a file system: its log, and the states that it shows."""

import mmap
import os

import pytest

from block_device import block_device
from block_log import Flush, Mark, Write

SIZE = 1 << 20


@pytest.fixture
def device(devices, tmp_path):
    base = tmp_path / "base"
    base.write_bytes(b"." * SIZE)
    with block_device(tmp_path, base) as opened:
        yield opened


def write(device, offset, data, flush=False):
    with open(device.path, "r+b", buffering=0) as file:
        file.seek(offset)
        file.write(data)
        if flush:
            os.fsync(file.fileno())


def content(device):
    with open(device.path, "rb") as file:
        return file.read()


def test_writes_and_flushes_are_logged_in_order(device):
    device.mark("begin")
    write(device, 4096, b"a" * 4096, flush=True)
    device.mark("middle")
    write(device, 12288, b"b" * 8192, flush=True)
    log = device.log()
    # Attaching the loop device may flush.
    assert log[log.index(Mark("begin")):] == [
        Mark("begin"), Write(4096, b"a" * 4096), Flush(),
        Mark("middle"), Write(12288, b"b" * 8192), Flush()]
    assert content(device) == (
        b"." * 4096 + b"a" * 4096 + b"." * 4096 + b"b" * 8192 + b"." * (SIZE - 20480))


def test_a_state_is_the_base_and_its_writes(device):
    device.show([Write(512, b"a" * 512), Write(6144, b"b" * 4096)])
    assert content(device) == (
        b"." * 512 + b"a" * 512 + b"." * 5120 + b"b" * 4096 + b"." * (SIZE - 10240))
    device.show([Write(0, b"c" * 512)])
    assert content(device) == b"c" * 512 + b"." * (SIZE - 512)


def test_a_state_is_read_from_any_sector_on(device):
    device.show([Write(512, b"a" * 512 + b"b" * 512)])
    descriptor = os.open(device.path, os.O_RDONLY | os.O_DIRECT | os.O_CLOEXEC)
    try:
        with mmap.mmap(-1, 1024) as found:
            assert os.preadv(descriptor, [found], 1024) == 1024
            assert found[:] == b"b" * 512 + b"." * 512
    finally:
        os.close(descriptor)


def test_a_state_is_shown_to_those_who_hold_the_device_open(device):
    with open(device.path, "rb") as held:
        assert held.read() == b"." * SIZE
        device.show([Write(0, b"a" * 512)])
        assert content(device) == b"a" * 512 + b"." * (SIZE - 512)


def test_what_is_written_to_a_state_is_gone_in_the_next(device):
    write(device, 0, b"a" * 4096, flush=True)
    log = device.log()
    device.show([])
    write(device, 8192, b"b" * 4096, flush=True)
    assert content(device)[8192:12288] == b"b" * 4096
    device.show([])
    assert content(device) == b"." * SIZE
    assert device.log() == log


def test_writes_put_into_the_base_are_in_each_state(device):
    device.put_into_base([Write(0, b"a" * 512), Write(SIZE - 512, b"b" * 512)])
    for writes in ([], [Write(0, b"c" * 512)]):
        device.show(writes)
        assert content(device) == (
            (b"c" if writes else b"a") * 512 + b"." * (SIZE - 1024) + b"b" * 512)
