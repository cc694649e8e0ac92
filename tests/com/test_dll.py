"""The built DLL as a file: its exports, imports and size, and the content of its type library."""

import pathlib
import re
import subprocess

from conftest import PRODUCT_VERSION, ROOT, version_of

TABLE = pathlib.Path(__file__).with_name("type_library.txt")

# Every Windows has these; what is not in this list would have to be brought along.
SYSTEM = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "user32.dll",
          "winmm.dll"}
MOST_BYTES = 600_000


def headers_of(dll):
    # One tool reads both kinds.
    return subprocess.run(["x86_64-w64-mingw32-objdump", "-p", dll], check=True,
                          stdout=subprocess.PIPE, text=True).stdout


def test_exports_are_the_four_functions_of_a_server(dll):
    table = headers_of(dll).split("[Ordinal/Name Pointer] Table")[1]
    names = re.findall(r"^\s*\[ *\d+\] (\S+)$", table, re.MULTILINE)
    assert names == ["DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                     "DllUnregisterServer"]


def test_imports_are_of_the_system(dll):
    imported = {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers_of(dll))}
    assert imported == SYSTEM


def test_stamp_of_corrupt_tags_is_that_of_the_multimedia_timer(dll):
    table = re.split("DLL Name: winmm", headers_of(dll), flags=re.IGNORECASE)[1]
    table = table.split("DLL Name:")[0]
    assert re.findall(r"^\s+[0-9a-f]+\s+\d+\s+(\w+)$", table, re.MULTILINE) == ["timeGetTime"]


def test_it_is_small(dll):
    assert 100_000 < dll.stat().st_size < MOST_BYTES


def test_bits_are_those_of_the_host(dll, bits):
    content = dll.read_bytes()
    start = int.from_bytes(content[0x3C:0x40], "little")
    assert content[start:start + 4] == b"PE\0\0"
    assert content[start + 4:start + 6] == {"32": b"\x4c\x01", "64": b"\x64\x86"}[bits]


def test_it_says_what_it_is(dll):
    file, product, texts = version_of(dll)
    assert file == product == (*map(int, PRODUCT_VERSION.split(".")), 0)
    assert texts == {
        "CompanyName": "the Brindle authors",
        "FileDescription": "Brindle: facts and tags of MP3 files",
        "FileVersion": f"{PRODUCT_VERSION}.0",
        "InternalName": "Brindle",
        "LegalCopyright": "Copyright (c) 2026 the Brindle authors",
        "OriginalFilename": "Brindle.dll",
        "ProductName": "Brindle",
        "ProductVersion": PRODUCT_VERSION}
    # The same owner as the licence names.
    assert texts["LegalCopyright"] in (ROOT / "LICENSE").read_text()


def test_type_library_is_the_frozen_one(build):
    assert (build / "tests" / "com" / "type_library.txt").read_text() == TABLE.read_text()


def test_every_member_value_and_event_has_a_help_string(build):
    lines = (build / "tests" / "com" / "type_library.txt").read_text().splitlines()
    helps = [line.strip()[1:].strip() for line in lines if line.strip().startswith("#")]
    # 6 types, 7 values, 55 members, 3 events, 8 members of the collection.
    assert len(helps) == 6 + 7 + 55 + 3 + 8
    assert all(help for help in helps)


def test_same_sources_make_the_same_bytes(build, dll, tmp_path):
    """From nothing, in another place, at another time, and as a host's programmer builds it."""
    for command in (["cmake", "--preset", build.name, "-B", tmp_path, "-DBRINDLE_BUILD_TESTS=OFF",
                     "-DBRINDLE_BUILD_PROGRAM=OFF"],
                    ["cmake", "--build", tmp_path, "-j", "2"]):
        subprocess.run(command, check=True, cwd=ROOT, stdout=subprocess.DEVNULL)
    again = tmp_path / dll.relative_to(build)
    assert again.read_bytes() == dll.read_bytes()
