"""`brindle scan --csv` and `--columns`: which columns, and cells that other programs read right."""

import csv
import io
import os
import sqlite3

import pytest

from mp3_bytes import audio, tag, text_frame, user_frame

AUDIO = audio()
SONG = tag(text_frame("TIT2", "Song"), user_frame("Show", "Breakfast"), user_frame("A,B", "x"))


def rows(output):
    return list(csv.reader(io.StringIO(output.decode("utf-8"), newline=""), strict=True))


def test_columns_of_csv_are_those_asked_for(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(SONG + AUDIO)
    (tmp_path / "b.mp3").write_bytes(AUDIO)
    result = brindle("scan", "--csv", "--columns", "Duration,file,field:Show,Title,error", "a.mp3",
                     "b.mp3", "c.mp3")
    assert rows(result.stdout) == [
        ["Duration", "file", "field:Show", "Title", "error"],
        ["3128", "a.mp3", "Breakfast", "Song", ""],
        ["3128", "b.mp3", "", "", ""],
        ["", "c.mp3", "", "", "No such file or directory"]]


def test_column_with_a_comma_is_quoted(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(SONG + AUDIO)
    result = brindle("scan", "--csv", "--columns", '"field:A,B",file', "a.mp3")
    assert result.stdout == b'"field:A,B",file\r\nx,a.mp3\r\n'


def test_columns_without_csv_are_lines_with_tabs(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(tag(text_frame("TIT2", "So\tng\nx")) + AUDIO)
    result = brindle("scan", "--columns", "Title,Artist,file", "a.mp3", "missing.mp3")
    assert result.stdout == b"So\\tng\\nx\t\ta.mp3\n"
    lines = result.stderr.split(b"\n")
    assert lines[0] == b"brindle: missing.mp3: No such file or directory"
    assert lines[1].startswith(b"2 files, ")


@pytest.mark.parametrize("arguments, message", [
    (["--columns", "Title,Nonsense"], "--columns: unknown column 'Nonsense'"),
    (["--columns", "v2Tag"], "--columns: unknown column 'v2Tag'"),
    (["--columns", "file_escaped"], "--columns: unknown column 'file_escaped'"),
    (["--columns", "field:"], "--columns: unknown column 'field:'"),
    (["--columns", ""], "--columns: the list is empty"),
    (["--columns", '"file'], "--columns: a quoted cell has no closing quote"),
    (["--columns", 'fi"le'], "--columns: a cell without quotes contains a quote"),
    (["--columns", "file", "--json"], "--json excludes --columns"),
    (["--spreadsheet"], "--spreadsheet is for --csv"),
    (["--utf8-names", "--json"], "--utf8-names is for --csv"),
])
def test_usage(brindle, arguments, message):
    result = brindle("scan", *arguments, ".")
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.decode().split("\n")[0] == f"brindle: {message}"


@pytest.mark.parametrize("title, cell", [
    ("=1+1", "'=1+1"), ("+1", "'+1"), ("-1", "'-1"), ("@x", "'@x"), ("'x", "''x"), ("'", "''"),
    ("\tx", "'\tx"), ("\rx", "'\rx"), ("\nx", "\nx"), ("a=1", "a=1"), ("", ""),
    ("''=", "'''="),
])
def test_spreadsheets_see_no_formula(tmp_path, brindle, title, cell):
    (tmp_path / "a.mp3").write_bytes(tag(text_frame("TIT2", title)) + AUDIO)
    arguments = ("scan", "--csv", "--columns", "Title,Duration", "a.mp3")
    assert rows(brindle(*arguments).stdout)[1:] == [[title, "3128"]]
    assert rows(brindle(*arguments, "--spreadsheet").stdout)[1:] == [[cell, "3128"]]


def test_spreadsheets_see_no_formula_in_a_name(tmp_path, brindle):
    (tmp_path / "=x.mp3").write_bytes(AUDIO)
    result = brindle("scan", "--csv", "--spreadsheet", "--columns", "file,Volume", "=x.mp3")
    assert result.stdout == b"file,Volume\r\n'=x.mp3,0\r\n"


NAMES = {
    b"plain.mp3": ("plain.mp3", "false"),
    b"caf\xc3\xa9.mp3": ("caf\u00e9.mp3", "false"),
    b"caf\xe9.mp3": ("caf\\udce9.mp3", "true"),
    b"\\udce9.mp3": ("\\\\udce9.mp3", "true"),
    b"\xf0\x9f\x8e\xb5\x80\xff.mp3": ("\U0001f3b5\\udc80\\udcff.mp3", "true"),
    b"\xed\xb3\xbf.mp3": ("\\udced\\udcb3\\udcbf.mp3", "true"),  # a surrogate in three bytes
}


@pytest.fixture
def named_files(tmp_path):
    for name in NAMES:
        with open(os.fsencode(tmp_path) + b"/" + name, "wb") as file:
            file.write(AUDIO)
    return [*NAMES]


def test_names_as_utf8(named_files, brindle):
    result = brindle("scan", "--csv", "--utf8-names", "--columns", "file,Duration", *named_files)
    assert rows(result.stdout) == [["file", "file_escaped", "Duration"],
                                   *([*cells, "3128"] for cells in NAMES.values())]


def test_escaped_names_are_read_back_by_python(named_files, brindle):
    result = brindle("scan", "--csv", "--utf8-names", *named_files)
    table = csv.DictReader(io.StringIO(result.stdout.decode("utf-8"), newline=""))

    def name_of(row):
        text = row["file"]
        if row["file_escaped"] == "true":
            text = text.encode("ascii", "backslashreplace").decode("unicode_escape")
        return os.fsencode(text)

    # Python's escapes are these; characters outside of ASCII have escapes of their own.
    assert [name_of(row) for row in table] == named_files


def test_sqlite_reads_the_table(tmp_path, named_files, brindle):
    result = brindle("scan", "--csv", "--utf8-names", *named_files)
    (tmp_path / "table.csv").write_bytes(result.stdout)
    with open(tmp_path / "table.csv", encoding="utf-8", newline="") as file:
        header, *cells = csv.reader(file)
    database = sqlite3.connect(":memory:")
    database.execute(f"create table files ({', '.join(header)})")
    database.executemany(f"insert into files values ({', '.join('?' * len(header))})", cells)
    assert database.execute("select count(*) from files where file_escaped = 'true'").fetchone() \
        == (4,)


def test_lone_empty_cell_is_no_empty_line(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    assert brindle("scan", "--csv", "--columns", "Title", "a.mp3").stdout == b'Title\r\n""\r\n'
