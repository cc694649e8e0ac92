"""The package for Windows, which holds everything for hosts of both widths."""

import hashlib
import re
import shutil
import subprocess
import zipfile

import pytest

from conftest import ROOT, windows_name

SAMPLE = ROOT / "examples" / "morning-jingle.mp3"


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
        "x64/Brindle.dll", "x64/Brindle.tlb", "x64/Brindle.Automation.manifest", "x64/brindle.exe",
        "register.cmd", "unregister.cmd", "README.md", "LICENSE", "CHANGELOG.md", "SHA256SUMS",
        "examples/automation/tag_file.vbs", "docs/automation.md", "docs/brindle.html",
        "docs/brindle.txt", "docs/brindle-set.html", "docs/brindle-set.txt"}
    for width in ("x86", "x64"):
        build = ROOT / "build" / f"windows-{width}"
        for built in (build / "src" / "facade" / "com" / "Brindle.dll",
                      build / "host" / "brindle.exe"):
            assert (package / width / built.name).read_bytes() == built.read_bytes()


def test_manual_is_there_to_be_read(package):
    assert not list(package.rglob("*.scd"))
    assert "docs/brindle.html" in (package / "README.md").read_text()
    sources = list((ROOT / "docs" / "manual").iterdir())
    assert len(sources) > 10
    options = set()
    for source in sources:
        name = source.name.removesuffix(".1.scd")
        text = (package / "docs" / f"{name}.txt").read_bytes()
        page = (package / "docs" / f"{name}.html").read_bytes()
        assert b"\b" not in text and b"\x1b" not in text  # no bold letters as terminals have them
        assert text.count(b"\r\n") == text.count(b"\n") > 10
        assert page.lower().startswith(b"<!doctype html>") and page.rstrip().endswith(b"</html>")
        # Every option of its source; lines are broken after hyphens, too.
        text = re.sub(rb"-\r\n +", b"-", text)
        explained = set(re.findall(r"\*(--[a-z-]+)\*", source.read_text()))
        for option in explained:
            assert option.encode() in text
            assert option.encode() in page
        options |= explained
    assert len(options) > 20


def test_licences_of_what_others_wrote_are_there(package):
    text = (package / "docs" / "licences.txt").read_text(encoding="utf-8")
    assert text.startswith("The pages of brindle report contain tabulator:\n\nThe MIT License (MIT)\n")
    assert "The pages of brindle report contain uplot:" in text and "Leon Sorokin" in text
    zlib = text[text.index("\nbrindle.exe contains zlib:\n\nzlib.h -- interface of"):]
    assert "Jean-loup Gailly and Mark Adler" in zlib and "3. This notice may not be removed" in zlib
    assert text.rstrip()[-1] != "/" and not re.search(r"[@$]\w+[@{]", text)


# The document on the C++ library names headers that a Windows host does not need.
@pytest.mark.parametrize("name", ["README.md", "docs/automation.md"])
def test_links_lead_somewhere(package, name):
    document = package / name
    links = re.findall(r"\]\(([^)#:]+)\)", document.read_text())
    assert links
    for link in links:
        assert (document.parent / link).exists(), link


def test_example_in_cpp_finds_what_it_imports(package):
    example = package / "examples" / "automation" / "tag_file.cpp"
    [imported] = re.findall(r'^#import "([^"]+)"', example.read_text(), re.MULTILINE)
    folders = re.findall(r"^//   cl .* /I (\S+)", example.read_text(), re.MULTILINE)
    assert len(folders) == 2
    libraries = {(example.parent / folder.replace("\\", "/") / imported).resolve()
                 for folder in folders}
    assert libraries == {(package / width / "Brindle.tlb").resolve() for width in ("x86", "x64")}


def test_every_file_has_its_checksum(package):
    lines = (package / "SHA256SUMS").read_text().splitlines()
    sums = dict(reversed(line.split(" *", 1)) for line in lines)
    files = {str(path.relative_to(package)) for path in package.rglob("*") if path.is_file()}
    assert set(sums) == files - {"SHA256SUMS"}
    assert list(sums) == sorted(sums)
    for name, digest in sums.items():
        assert hashlib.sha256((package / name).read_bytes()).hexdigest() == digest
    assert subprocess.run(["sha256sum", "--check", "--quiet", "SHA256SUMS"], cwd=package,
                          check=False).returncode == 0


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
