"""brindle.exe and the package for Windows, which holds it for hosts of both widths."""

import json
import os
import shutil
import subprocess
import zipfile

import pytest

from conftest import BUILD, ROOT, windows_name

SAMPLE = ROOT / "examples" / "morning-jingle.mp3"
NAME = "Grüße ☀.mp3"

@pytest.fixture
def brindle(wine):
    def run(*arguments):
        result = wine(windows_name(BUILD / "host" / "brindle.exe"), *arguments)
        return result.returncode, result.stdout.decode("utf-8")

    return run


@pytest.fixture
def song(folder):
    copy = folder / NAME
    shutil.copyfile(SAMPLE, copy)
    return copy


def test_shows_a_file_of_any_name(brindle, song):
    status, printed = brindle("show", windows_name(song))
    assert status == 0
    assert printed.startswith(windows_name(song) + "\n")
    assert "    Title              Good Morning\n" in printed


def test_sets_wide_text_and_leaves_the_audio(brindle, song):
    status, printed = brindle("set", "--title", "Höhe", "--preserve", windows_name(song))
    assert (status, "written in place" in printed) == (0, True)
    status, printed = brindle("show", "--json", windows_name(song))
    assert json.loads(printed)["Title"] == "Höhe"
    before, after = SAMPLE.read_bytes(), song.read_bytes()
    assert after[1935:-128] == before[1935:-128]


def test_preserves_the_time_of_a_file(brindle, song):
    os.utime(song, (1_000_000_000, 1_000_000_000))
    assert brindle("set", "--title", "x", "--preserve", windows_name(song))[0] == 0
    assert int(song.stat().st_mtime) == 1_000_000_000


def test_says_what_it_was_built_without(brindle, song):
    status, printed = brindle("listen", windows_name(song))
    assert (status, printed) == (2, "brindle: listen: built without libmpg123 and libebur128, "
                                    "which listening needs\n")


def test_scans_a_folder(brindle, song):
    status, printed = brindle("scan", windows_name(song.parent))
    assert status == 0
    assert NAME in printed
    assert "1 file, 0:00:06 hours of audio" in printed


def test_tells_of_a_missing_file(brindle, folder):
    status, printed = brindle("show", windows_name(folder / "gone.mp3"))
    assert status == 1
    assert printed == f"brindle: {windows_name(folder / 'gone.mp3')}: No such file or directory\n"


def test_tells_of_a_folder(brindle, folder):
    status, printed = brindle("show", windows_name(folder))
    assert status == 1
    assert printed.endswith(": Is a directory\n")


@pytest.fixture(scope="module")
def package(tmp_path_factory):
    subprocess.run(["cpack", "--config", "cmake/windows-package.cmake"], cwd=ROOT, check=True,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    [path] = (ROOT / "build" / "packages").glob("brindle-*-windows.zip")
    folder = tmp_path_factory.mktemp("package")
    with zipfile.ZipFile(path) as archive:
        archive.extractall(folder)
    return folder / path.stem


def test_package_has_what_a_station_needs(package):
    files = {str(path.relative_to(package)) for path in package.rglob("*") if path.is_file()}
    assert files >= {
        "x86/Brindle.dll", "x86/Brindle.tlb", "x86/Brindle.Automation.manifest", "x86/brindle.exe",
        "x64/Brindle.dll", "x64/Brindle.tlb", "x64/Brindle.Automation.manifest",
        "register.cmd", "unregister.cmd", "README.md", "LICENSE", "CHANGELOG.md",
        "examples/automation/tag_file.vbs", "docs/automation.md"}
    for width in ("x86", "x64"):
        built = ROOT / "build" / f"windows-{width}" / "src" / "facade" / "com" / "Brindle.dll"
        assert (package / width / "Brindle.dll").read_bytes() == built.read_bytes()


def test_package_registers_itself_from_where_it_lies(wine, package, folder, fresh_registry):
    place = folder / "package"
    if place.exists():
        shutil.rmtree(place)
    shutil.copytree(package, place)
    script = windows_name(ROOT / "examples" / "automation" / "tag_file.js")
    song = folder / "song.mp3"
    shutil.copyfile(SAMPLE, song)

    def runs():
        result = wine("cscript", "//nologo", script, windows_name(song))
        return b"Good Morning" in result.stdout

    try:
        assert not runs()
        assert wine("cmd", "/c", windows_name(place / "register.cmd")).returncode == 0
        assert runs()
        assert wine("cmd", "/c", windows_name(place / "unregister.cmd")).returncode == 0
        assert not runs()
    finally:
        shutil.rmtree(place)
