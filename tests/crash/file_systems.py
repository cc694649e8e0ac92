"""The file systems on which the program saves."""

import os
from typing import NamedTuple

from block_device import run

MIB = 1 << 20


class FileSystem(NamedTuple):
    name: str
    size: int
    make: tuple
    # Offsets of superblocks with a checksum over more than one sector. A torn one keeps the file
    # system from being mounted, whatever the program does; real devices write 4,096 bytes at once.
    superblocks: tuple = ()

    def __str__(self):
        return self.name

    def never_torn(self, write):
        return any(write.offset < superblock + 4096
                   and superblock < write.offset + len(write.data)
                   for superblock in self.superblocks)


FILE_SYSTEMS = [
    FileSystem("ext4", 32 * MIB,
               ("mkfs.ext4", "-q", "-b", "4096", "-E",
                "nodiscard,lazy_itable_init=0,lazy_journal_init=0"), superblocks=(0,)),
    FileSystem("xfs", 300 * MIB, ("mkfs.xfs", "-q", "-K")),
    FileSystem("btrfs", 128 * MIB, ("mkfs.btrfs", "-q", "-K"), superblocks=(64 << 10, 64 * MIB)),
]


def make(file_system, path):
    """A sparse file that has the empty file system on it."""
    path.touch()
    os.truncate(path, file_system.size)
    run(*file_system.make, path)
