"""A loop device over block_device_plugin.py: nbdkit serves it and nbdfuse makes it a file."""

import contextlib
import ctypes
import fcntl
import os
import pathlib
import subprocess
import time

import block_log

BLKFLSBUF = 0x1261  # <linux/fs.h>
PLUGIN = pathlib.Path(__file__).with_name("block_device_plugin.py")


def run(*command, **options):
    """Raises SubprocessError with what the command printed when it fails."""
    done = subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60,
                          check=False, text=True, **options)
    if done.returncode != 0:
        raise subprocess.SubprocessError(done.stdout.strip() or
                                         f"{command[0]} ended with status {done.returncode}")
    return done.stdout.strip()


class BlockDevice:
    """Logs what is written to it, until a state is shown."""

    def __init__(self, path, base, log, state):
        self.path = path
        self._base = base
        self._log = log
        self._state = state

    def mark(self, name):
        block_log.append(self._log, block_log.Mark(name))

    def log(self):
        return block_log.decoded(self._log.read_bytes())

    def put_into_base(self, writes):
        """Every state has these writes; before the first state is shown."""
        with open(self._base, "r+b") as base:
            for write in writes:
                base.seek(write.offset)
                base.write(write.data)

    def show(self, writes):
        """From now on the device has the base and these writes, and nothing of earlier states."""
        new = self._state.with_suffix(".new")
        new.write_bytes(b"".join(map(block_log.encoded, writes)))
        new.replace(self._state)
        # The kernel may have cached blocks of the state before.
        with open(self.path, "rb") as device:
            fcntl.ioctl(device, BLKFLSBUF)


def wait_for(path, process):
    for _ in range(2000):
        if path.exists():
            return
        if process.poll() is not None:
            raise subprocess.SubprocessError(f"nbdfuse ended with status {process.returncode}")
        time.sleep(0.01)
    raise subprocess.SubprocessError(f"nbdfuse does not make {path}")


@contextlib.contextmanager
def served_file(folder, *plugin):
    """A file in `folder` through which a plugin of nbdkit is read and written."""
    mountpoint = folder / "fuse"
    mountpoint.mkdir()
    with open(folder / "nbdfuse.log", "wb") as output:
        process = subprocess.Popen(
            ["nbdfuse", str(mountpoint / "disk"), "[", "nbdkit", "--exit-with-parent", *plugin,
             "]"], stdin=subprocess.DEVNULL, stdout=output, stderr=output)
    try:
        wait_for(mountpoint / "disk", process)
        yield mountpoint / "disk"
    finally:
        if os.path.ismount(mountpoint):
            run("umount", "--lazy", mountpoint)
        try:
            process.wait(timeout=20)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


@contextlib.contextmanager
def loop_device(path):
    # Direct I/O: the page cache of the file would put off writes.
    device = run("losetup", "--direct-io=on", "--find", "--show", path)
    try:
        yield device
    finally:
        run("losetup", "--detach", device)


@contextlib.contextmanager
def block_device(folder, base):
    """A device with the content of the file `base`; `folder` receives its files."""
    log, state = folder / "log", folder / "state"
    log.touch()
    with served_file(folder, "python", str(PLUGIN), f"base={base}", f"log={log}",
                     f"state={state}") as path, loop_device(path) as device:
        yield BlockDevice(device, base, log, state)


def call(name, *arguments):
    """Calls a function of the C library: the programs mount and umount would double the time."""
    libc = ctypes.CDLL(None, use_errno=True)
    if getattr(libc, name)(*arguments) != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"{name}: {os.strerror(error)}")


@contextlib.contextmanager
def mounted(device, folder, file_system):
    target = os.fsencode(folder)
    call("mount", os.fsencode(device), target, file_system.name.encode(), ctypes.c_ulong(0), None)
    try:
        yield
    finally:
        call("umount", target)
