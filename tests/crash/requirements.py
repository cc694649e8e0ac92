"""What a test here needs of the machine. A test that lacks it is skipped with the reason."""

import os
import shutil
import subprocess

import pytest

from block_device import loop_device, mounted, served_file
from file_systems import make


def skip_without_commands(*commands):
    missing = [command for command in commands if shutil.which(command) is None]
    if missing:
        pytest.skip(f"needs {', '.join(missing)}")


def one_line(text):
    return " ".join(str(text).split())


def skip_without_devices(folder):
    """Tries a loop device over a file of nbdfuse, with a plugin that is not ours."""
    if os.geteuid() != 0:
        pytest.skip("needs root for mount and losetup")
    skip_without_commands("nbdkit", "nbdfuse", "losetup", "umount")
    try:
        with served_file(folder, "memory", "1M") as path, loop_device(path):
            pass
    except subprocess.SubprocessError as error:
        output = (folder / "nbdfuse.log").read_text()
        pytest.skip(f"needs FUSE and loop devices: {one_line(error)} {one_line(output)}")


def reason_against(file_system, folder):
    """Why the machine cannot make and mount the file system, or None. No device of ours is used."""
    if shutil.which(file_system.make[0]) is None:
        return file_system.make[0]
    image, mountpoint = folder / "image", folder / "mounted"
    mountpoint.mkdir()
    try:
        make(file_system, image)
        with loop_device(image) as device, mounted(device, mountpoint, file_system):
            return None
    except (subprocess.SubprocessError, OSError) as error:
        return f"{file_system}: {one_line(error)}"
    finally:
        image.unlink()
