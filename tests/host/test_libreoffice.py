"""A table of `brindle scan --csv` that LibreOffice has opened and saved again is applied as it was: an
unchanged one changes nothing, and one changed cell only that value."""

import csv
import io
import json
import os
import shutil
import subprocess
import zipfile

import pytest

from mp3_bytes import audio, frame, id3v1, tag, text_frame, user_frame

pytestmark = [
    pytest.mark.deep,
    pytest.mark.skipif(shutil.which("soffice") is None, reason="needs LibreOffice"),
]

AUDIO = audio()
# What a spreadsheet takes for numbers, dates, times, formulas or its own marks.
TITLES = ["Song", "=1+1", "+2", "-3", "@x", "'quoted'", "007", "1e5", "1,5", "1.50", "1/2", "50%",
          "2020-01-02", "1.2.2020", "3:45", "TRUE", "12345678901234567890", " spaces  ", "a;b", "a,b",
          'say "x"', "#REF!", "$5.00", "Gr\u00fc\u00dfe", "", "0", "-0", "(17)", "a\u00a0b", "\u00d7", "two\nlines",
          "two\r\nlines", "two\rlines", "two\n"]
CHANGED, OTHER = "The changed one", "Another title"
SEPARATORS = {",": 44, ";": 59, "tab": 9}
TABLES = {"plain": (), "spreadsheet": ("--spreadsheet",)}
FORMATS = ("ods", "xlsx")
EXPORT = "csv:Text - txt - csv (StarCalc):{},34,76,1,,0,{},true,false"


def files():
    texts = [*TITLES, CHANGED]
    for number, text in enumerate(texts):
        text = text.encode("latin-1")
        content = tag(text_frame("TIT2", text.decode("latin-1")), text_frame("TYER", "1999"),
                      frame("COMM", b"\0eng\0" + text), user_frame("Cue In", "0100"),
                      user_frame("Show", text.decode("latin-1")), padding=600) + AUDIO
        if number % 3 == 0 or content.find(CHANGED.encode()) != -1:
            content += id3v1(text[:30], b"007", b"1/2", b"2001", b"=1", 3, 17)
        yield b"%02d.mp3" % number, content
    yield b"caf\xe9 =1.mp3", AUDIO
    yield "Gr\u00fc\u00dfe.mp3".encode(), AUDIO
    yield b"=1+1.mp3", AUDIO


def make_files(folder):
    for name, content in files():
        with open(os.fsencode(folder) + b"/" + name, "wb") as file:
            file.write(content)


def contents(folder):
    return {path.name: path.read_bytes() for path in folder.glob("*.mp3")}


def scanned(program, folder):
    done = subprocess.run([program, "scan", "--json", "--quiet", "."], cwd=folder, check=True,
                          stdout=subprocess.PIPE)
    return {line["file"]: line for line in map(json.loads, done.stdout.splitlines())}


def convert(folder, to, out, names, import_filter=None):
    """One start of LibreOffice for all."""
    (folder / out).mkdir(exist_ok=True)
    options = [f"--infilter={import_filter}"] if import_filter else []
    subprocess.run(["soffice", f"-env:UserInstallation=file://{folder}/profile", "--headless",
                    *options, "--convert-to", to, "--outdir", out, *names],
                   cwd=folder, check=True, capture_output=True, timeout=300)
    return folder / out


def change_cell(path, changed):
    """Replaces the text of the title in all parts of the document."""
    with zipfile.ZipFile(path) as document, zipfile.ZipFile(changed, "w") as copy:
        found = 0
        for part in document.infolist():
            content = document.read(part)
            if part.filename in ("content.xml", "xl/sharedStrings.xml"):
                found += content.count(f">{CHANGED} title<".encode())
                content = content.replace(f">{CHANGED} title<".encode(), f">{OTHER}<".encode())
            copy.writestr(part, content)
    assert found == 1


@pytest.fixture(scope="module")
def saved(program, tmp_path_factory):
    """The tables that LibreOffice saves: by name of the table, format, change and separator."""
    folder = tmp_path_factory.mktemp("tables")
    library = tmp_path_factory.mktemp("library")
    make_files(library)
    # One that is found in no other cell.
    subprocess.run([program, "set", "--no-journal", "--title", f"{CHANGED} title", "--separate",
                    f"{len(TITLES):02}.mp3"], cwd=library, check=True, capture_output=True)
    for name, options in TABLES.items():
        done = subprocess.run([program, "scan", "--csv", "--utf8-names", *options, "."], cwd=library,
                              check=True, stdout=subprocess.PIPE)
        (folder / f"{name}.csv").write_bytes(done.stdout)
    columns = done.stdout.split(b"\r\n")[0].count(b",") + 1
    as_text = "/".join(f"{column}/2" for column in range(1, columns + 1))
    names = [f"{name}.csv" for name in TABLES]
    for form in FORMATS:
        convert(folder, form, form, names, f"CSV:44,34,76,1,{as_text}")
        for name in TABLES:
            change_cell(folder / form / f"{name}.{form}", folder / form / f"{name}-changed.{form}")
    tables = {}
    for form in FORMATS:
        for number, (separator, code) in enumerate(SEPARATORS.items()):
            documents = [f"{form}/{path.name}" for path in (folder / form).glob(f"*.{form}")]
            # With and without quotes around all texts.
            out = convert(folder, EXPORT.format(code, "true" if number else "false"),
                          f"{form}-{code}", documents)
            for path in out.iterdir():
                tables[path.stem, form, separator] = path.read_bytes()
    return library, tables


@pytest.mark.parametrize("separator", SEPARATORS)
@pytest.mark.parametrize("form", FORMATS)
@pytest.mark.parametrize("table", TABLES)
@pytest.mark.parametrize("change", ["", "-changed"], ids=["unchanged", "one cell"])
def test_saved_table_is_applied(program, saved, tmp_path, table, form, separator, change):
    library, tables = saved
    folder = tmp_path / "library"
    shutil.copytree(library, folder)
    (tmp_path / "edits.csv").write_bytes(tables[table + change, form, separator])
    before, values = contents(folder), scanned(program, folder)
    result = subprocess.run([program, "apply", "../edits.csv", *TABLES[table]], cwd=folder,
                            capture_output=True, check=False)
    assert (result.returncode, result.stderr) == (0, b"")
    count = len(before)
    written = 1 if change else 0
    assert result.stdout.decode().splitlines()[-1] == (
        f"{count} rows: {written} written, {count - written} unchanged, 0 failed, 0 left out")
    after = contents(folder)
    name = f"{len(TITLES):02}.mp3"
    assert [one for one in before if after[one] != before[one]] == ([name] if change else [])
    if change:
        now = scanned(program, folder)
        assert now[f"./{name}"]["Title"] == OTHER
        # What a save itself changes, and the tag's own frames.
        mine = {key: value for key, value in now[f"./{name}"].items()
                if values[f"./{name}"][key] != value}
        assert set(mine) <= {"Title", "tag", "TagType", "v2Frames", "FrameCount",
                             "RepairRequired", "ID3TagSizeIncludingHeader", "file_facts"}


def test_saved_table_is_not_the_same_text(saved):
    """Otherwise the tests above would say nothing of LibreOffice."""
    library, tables = saved
    plain = tables["plain", "ods", ";"].decode("utf-8-sig")
    table = list(csv.reader(io.StringIO(plain, newline=""), delimiter=";"))
    assert {len(row) for row in table} == {len(table[0])}
    assert len(table) == 1 + len(list(library.glob("*.mp3")))
    assert plain.count('";"') > len(table)
    titles = {row[table[0].index("Title")] for row in table[1:]}
    assert {title for title in TITLES if "\r" not in title and title == title.rstrip()} <= titles
