"""brindle.exe."""

import json
import os
import re
import shutil
import subprocess

import pytest

from conftest import BUILD, PRODUCT_VERSION, ROOT, version_of, windows_name

SAMPLE = ROOT / "examples" / "morning-jingle.mp3"
NAME = "Grüße ☀.mp3"


@pytest.fixture
def song(folder):
    copy = folder / NAME
    shutil.copyfile(SAMPLE, copy)
    return copy


def test_says_what_it_is(brindle):
    file, product, texts = version_of(BUILD / "host" / "brindle.exe")
    assert file == product == (*map(int, PRODUCT_VERSION.split(".")), 0)
    assert texts["CompanyName"] == "the Brindle authors"
    assert texts["OriginalFilename"] == "brindle.exe"
    assert texts["ProductVersion"] == PRODUCT_VERSION
    status, printed = brindle("--version")
    assert (status, printed.split()) == (0, ["brindle", PRODUCT_VERSION])


def test_needs_nothing_but_the_system():
    printed = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", BUILD / "host" / "brindle.exe"],
                             check=True, stdout=subprocess.PIPE, text=True).stdout
    imported = {name.lower() for name in re.findall(r"DLL Name: (\S+)", printed)}
    assert imported == {"advapi32.dll", "bcrypt.dll", "kernel32.dll", "msvcrt.dll", "shell32.dll",
                        "winmm.dll"}


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
    status, printed = brindle("check", "--listen", windows_name(song))
    assert (status, printed) == (2, "brindle: check --listen: built without libmpg123 and "
                                    "libebur128, which listening needs\n")
    status, printed = brindle("export", "--to", "rivendell", windows_name(song))
    assert (status, printed) == (2, "brindle: export --to rivendell: built without pugixml, "
                                    "which reads XML\n")
    status, printed = brindle("normalize", "--pictures", "shrink", windows_name(song))
    assert (status, printed) == (2, "brindle: normalize --pictures shrink: built without "
                                    "libjpeg-turbo and libpng, which decode pictures\n")
    for command in ("scan", "check"):
        status, printed = brindle(command, "--cache", "c.db", windows_name(song))
        assert (status, printed) == (2, f"brindle: {command} --cache: built without SQLite, "
                                        "which the cache needs\n")


def test_scans_a_folder(brindle, song):
    status, printed = brindle("scan", windows_name(song.parent))
    assert status == 0
    assert NAME in printed
    assert "1 file, 0:00:06 hours of audio" in printed


def test_tells_of_a_missing_file(brindle, folder):
    status, printed = brindle("show", windows_name(folder / "gone.mp3"))
    assert status == 1
    assert printed == f"brindle: {windows_name(folder / 'gone.mp3')}: No such file or directory\n"


def test_shows_the_files_of_a_folder(brindle, song):
    status, printed = brindle("show", windows_name(song.parent))
    assert status == 0
    assert NAME in printed


def test_page_of_a_report_appears_under_its_name(brindle, song, folder):
    page = folder / "library.html"
    for _ in range(2):  # the second page replaces the first
        assert brindle("report", "--quiet", windows_name(song), "-o", windows_name(page))[0] == 0
    data = re.search(r'id="library">(.*?)</script>', page.read_text(encoding="utf-8"), re.DOTALL)[1]
    assert [row[0] for row in json.loads(data)["files"]] == [windows_name(song)]
    assert not list(folder.glob(".brindle-*"))
    assert brindle("report", "--quiet", windows_name(song), "-o", windows_name(song))[0] == 1
    assert song.read_bytes() == SAMPLE.read_bytes()
