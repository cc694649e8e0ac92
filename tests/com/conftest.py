import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BITS = os.environ.get("BRINDLE_BITS", "32")
BUILD = ROOT / "build" / {"32": "windows-x86", "64": "windows-x64"}[BITS]

# The bytes of MP3 files and journals are the same everywhere.
sys.path.append(str(ROOT / "tests" / "host"))

# The package needs the builds of both widths: it is tested by name.
collect_ignore = ["test_package.py"]


PRODUCT_VERSION = re.search(r"^project\(.* VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(),
                            re.MULTILINE).group(1)


def version_of(file):
    """The numbers of a program's version resource, of file and product, and its texts."""
    content = file.read_bytes()
    at = content.index(struct.pack("<I", 0xFEEF04BD))
    high, low, product_high, product_low = struct.unpack_from("<4I", content, at + 8)
    numbers = [(high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF),
               (product_high >> 16, product_high & 0xFFFF, product_low >> 16, product_low & 0xFFFF)]
    # A string is its lengths and type, its name and its value, each starting at a multiple of 4 and
    # ended by a NUL.
    texts = content[at:].decode("utf-16-le", "replace")
    return (*numbers, {name: value
                       for name, value in re.findall(r"\x01([A-Z]\w+)\0+([^\0]+)\0", texts)
                       if not name.endswith("FileInfo")})


def windows_name(path):
    return "Z:" + str(path).replace("/", "\\")


@pytest.fixture(scope="session")
def bits():
    return BITS


@pytest.fixture(scope="session")
def build():
    return BUILD


@pytest.fixture(scope="session")
def dll():
    return BUILD / "src" / "facade" / "com" / "Brindle.dll"


@pytest.fixture(scope="session")
def wine():
    """Runs a Windows program; gives its exit status and its output on the screen."""

    def run(*command, timeout=120):
        # No pipe: Wine's services would hold it open for seconds after the program's end.
        with tempfile.TemporaryFile() as output:
            result = subprocess.run(
                [ROOT / "scripts" / "wine", "run", BITS, ROOT, *map(str, command)],
                stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                timeout=timeout, check=False)
            output.seek(0)
            result.stdout = output.read()
        return result

    return run


@pytest.fixture
def state():
    """The folder of the user's data."""
    path = BUILD / "test-state"
    shutil.rmtree(path, ignore_errors=True)
    path.mkdir()
    yield path
    shutil.rmtree(path)


@pytest.fixture
def brindle_script(state):
    """Makes a script that runs the program with a folder of the user's data; every process of Wine
    begins with its own."""

    def make(place):
        script = state / "run.cmd"
        program = windows_name(BUILD / "host" / "brindle.exe")
        script.write_text(f"@set LOCALAPPDATA={place}\r\n@{program} %*\r\n")
        return script

    return make


@pytest.fixture
def brindle(wine, brindle_script, state):
    """Gives the exit status and the text."""

    def run(*arguments, place=windows_name(state)):
        result = wine("cmd", "/c", windows_name(brindle_script(place)), *arguments)
        return result.returncode, result.stdout.decode("utf-8")

    return run


@pytest.fixture
def fresh_registry():
    subprocess.run([ROOT / "scripts" / "wine", "fresh", BITS], check=True)


@pytest.fixture(scope="module")
def registered(wine, dll):
    """Once for all tests that only use the class; registering again is harmless."""
    assert wine("regsvr32", "/s", windows_name(dll)).returncode == 0


@pytest.fixture
def folder():
    """A folder that Windows programs see too; the system's temporary folder is not theirs."""
    path = BUILD / "test-files"
    path.mkdir(exist_ok=True)
    for old in path.iterdir():
        old.unlink()
    return path
