"""`brindle apply`: what a table of edits changes, and what is said of one that cannot be."""

import csv
import io
import json
import os
import signal
import subprocess
import time

import pytest

from mp3_bytes import frame, id3v1, tag, text_frame, user_frame
from tagged_file import AUDIO, AUDIO_HASH, audio_hash, errors_of_dry_run, snapshot

SONG = tag(text_frame("TIT2", "Song"), text_frame("TYER", "1999"), text_frame("TCON", "(17)"),
           frame("COMM", b"\0eng\0Hello"), user_frame("Cue In", "1000"),
           user_frame("Show", "Breakfast"), padding=600) + AUDIO
RECORD = id3v1(b"Song", b"Band", b"Album", b"1998", b"Note", 3, 17)


def tag_of_version_4(*frames):
    """Texts in UTF-8."""
    content = b"".join(name.encode() + bytes((0, 0, 0, len(text) + 1, 0, 0)) + b"\3" + text
                       for name, text in frames)
    return b"ID3\4\0\0" + bytes((0, 0, len(content) >> 7, len(content) & 0x7F)) + content


@pytest.fixture
def files(tmp_path):
    """A tagged file, one without any tag, one with a record, too."""
    (tmp_path / "a.mp3").write_bytes(SONG)
    (tmp_path / "b.mp3").write_bytes(AUDIO)
    (tmp_path / "c.mp3").write_bytes(SONG + RECORD)
    return tmp_path


def snapshots(folder):
    return {path.name: snapshot(path) for path in folder.glob("*.mp3")}


@pytest.fixture
def apply(brindle, tmp_path):
    """Applies a table; its text is in UTF-8 unless it is bytes."""
    def run(table, *options):
        content = table if isinstance(table, bytes) else table.encode("utf-8")
        (tmp_path / "edits").write_bytes(content)
        return brindle("apply", "edits", *options)
    return run


@pytest.fixture
def value(brindle):
    def read(name, *columns):
        result = brindle("scan", "--csv", "--quiet", "--columns", ",".join(columns), name)
        values = list(csv.reader(io.StringIO(result.stdout.decode(), newline="")))[1]
        return values[0] if len(columns) == 1 else values
    return read


def errors(result):
    lines = result.stderr.decode("utf-8").split("\n")
    assert lines.pop() == ""
    return [line.removeprefix("brindle: ").removeprefix("edits: ") for line in lines]


def all_fine(result, rows, written):
    assert (result.returncode, result.stderr) == (0, b"")
    lines = result.stdout.decode("utf-8").splitlines()
    assert lines[-1] == (f"{rows} row{'' if rows == 1 else 's'}: {written} written, "
                         f"{rows - written} unchanged, 0 failed, 0 left out")
    return lines[:-1]


# --- what tables look like

TABLES = {
    "commas": "file,title,field:Show\na.mp3,New,Evening\n",
    "semicolons": "file;title;field:Show\r\na.mp3;New;Evening\r\n",
    "tabs": "file\ttitle\tfield:Show\na.mp3\tNew\tEvening\n",
    "byte order mark": "\ufefffile;title;field:Show\na.mp3;New;Evening\n",
    "no line end at the end": "file,title,field:Show\na.mp3,New,Evening",
    "line ends of CR alone": "file,title,field:Show\ra.mp3,New,Evening\r",
    "quotes": '"file","title","field:Show"\n"a.mp3","New","Evening"\n',
    "delimiter after a comma in quotes": '"field:A,B";file;title;field:Show\n;a.mp3;New;Evening\n',
    "columns of scan": "Title,field:Show,file\nNew,Evening,a.mp3\n",
    "blank rows": "file,title,field:Show\n,,\n\na.mp3,New,Evening\n,,\n",
    "JSON lines": '{"file": "a.mp3", "title": "New", "field:Show": "Evening"}\n',
    "JSON with a byte order mark": '\ufeff{"file":"a.mp3","Title":"New","field:Show":"Evening"}',
    "JSON with escapes": '{"file":"\\u0061.mp3","title":"N\\u0065w","field:Show":"Evening"}\r\n\n',
}


@pytest.mark.parametrize("table", TABLES.values(), ids=TABLES)
def test_table_is_read(files, apply, value, table):
    before = snapshots(files)
    lines = all_fine(apply(table), 1, 1)
    assert [line.split(":")[0] for line in lines] == ["a.mp3"]
    assert value("a.mp3", "Title", "field:Show") == ["New", "Evening"]
    assert audio_hash((files / "a.mp3").read_bytes()) == AUDIO_HASH
    after = snapshots(files)
    assert (after["b.mp3"], after["c.mp3"]) == (before["b.mp3"], before["c.mp3"])


CELLS = {
    # table, column, value afterwards
    "cell of several lines": ('file,agency\na.mp3,"one\r\ntwo, ""three"""\n', "Agency",
                              'one\r\ntwo, "three"'),
    "line feed of JSON": ('{"file":"a.mp3","agency":"one\\ntwo"}', "Agency", "one\ntwo"),
    "backslash of JSON": ('{"file":"a.mp3","agency":"a\\\\udc80\\\\n"}', "Agency", "a\\udc80\\n"),
    "text of the code page": ("file,title\na.mp3,Grüße €\n", "Title", "Grüße €"),
    "number": ("file,cue-in\na.mp3,2500\n", "CueInmSStart", "2500"),
    "number of JSON": ('{"file":"a.mp3","cue-in":2500}', "CueInmSStart", "2500"),
    "negative number": ("file,Volume\na.mp3,-3\n", "Volume", "-3"),
    "real number": ('{"file":"a.mp3","speed":1.25}', "Speed", "1.25"),
    "yes as scan prints it": ("file,Opener\na.mp3,-1\n", "Opener", "-1"),
    "yes of JSON": ('{"file":"a.mp3","opener":true}', "Opener", "-1"),
    "yes of a spreadsheet": ("file,opener\na.mp3,TRUE\n", "Opener", "-1"),
    "custom field with an equals sign": ("file,field:A=B\na.mp3,x\n", "field:A=B", "x"),
    "empty cell": ("file,title,album\na.mp3,,New\n", "Title", "Song"),
    "null": ('{"file":"a.mp3","title":null,"album":"New"}', "Title", "Song"),
    "empty text of JSON": ('{"file":"a.mp3","title":"","album":"New"}', "Title", "Song"),
    "year of nothing": ("file,Year,album\na.mp3,0,New\n", "Year", "1999"),
    "removed": ("file,remove\na.mp3,title\n", "Title", ""),
    "removed with others": ('file,remove\na.mp3,"comment,cue-in,field:Show"\n', "CueInmSStart", "0"),
    "removed custom field": ("file;remove\na.mp3;cue-in,field:Show\n", "field:Show", ""),
    "removed by JSON": ('{"file":"a.mp3","remove":["title","year"]}', "Year", "0"),
    "removed though a cell has the old value": ("file,Title,remove\na.mp3,Song,title\n", "Title",
                                                ""),
}


@pytest.mark.parametrize("table, column, expected", CELLS.values(), ids=CELLS)
def test_cell_is_set_and_set_once(files, apply, value, table, column, expected):
    all_fine(apply(table), 1, 1)
    assert value("a.mp3", column) == expected
    assert audio_hash((files / "a.mp3").read_bytes()) == AUDIO_HASH
    before = snapshots(files)
    all_fine(apply(table), 1, 0)
    assert snapshots(files) == before


def test_other_frames_stay_byte_for_byte(files, apply):
    all_fine(apply("file,album\na.mp3,New\n"), 1, 1)
    content = (files / "a.mp3").read_bytes()
    assert len(content) == len(SONG)
    for kept in (text_frame("TIT2", "Song"), text_frame("TYER", "1999"), text_frame("TCON", "(17)"),
                 frame("COMM", b"\0eng\0Hello"), user_frame("Cue In", "1000"),
                 user_frame("Show", "Breakfast")):
        assert content.count(kept) == 1
    assert text_frame("TALB", "New") in content


def test_standard_input_is_a_table(files, brindle, value):
    result = brindle("apply", "-", input=b"file,title\na.mp3,New\n", stdin=None)
    all_fine(result, 1, 1)
    assert value("a.mp3", "Title") == "New"


def test_file_named_like_standard_input_is_a_file(files, brindle):
    """Names from standard input would be changed by a row that was not written for them."""
    (files / "-").write_bytes(SONG)
    (files / "edits").write_text("file,title\n-,New\n")
    before = snapshots(files)
    result = brindle("apply", "edits", input=b"a.mp3\n", stdin=None)
    assert result.returncode == 1
    assert errors(result) == ["row 2, ./-: The name does not end in mp3 or mp2",
                              "nothing was written"]
    assert snapshots(files) == before


NAME = b"caf\xe9 \\ \xf0\x9f\x8e\xb5.mp3"  # a byte that is no UTF-8, a backslash, a pair


@pytest.mark.parametrize("columns", [("--csv",), ("--csv", "--utf8-names"), ("--json",)])
def test_name_that_is_no_utf_8(tmp_path, brindle, apply, columns):
    path = os.fsencode(tmp_path) + b"/" + NAME
    with open(path, "wb") as file:
        file.write(SONG)
    table = brindle("scan", *columns, "--quiet", NAME).stdout
    assert table.count(b"Song") >= 1
    table = table.replace(b'"Title":"Song"', b'"Title":"New"').replace(b",Song,", b",New,")
    all_fine(apply(table), 1, 1)
    with open(path, "rb") as file:
        assert text_frame("TIT2", "New") in file.read()


def test_rows_are_answered_in_their_order(tmp_path, apply):
    names = [f"{number * 7 % 60:02}.mp3" for number in range(60)]
    for name in names:
        (tmp_path / name).write_bytes(SONG)
    table = "file,title\n" + "".join(f"{name},Title {name}\n" for name in names)
    lines = all_fine(apply(table), 60, 60)
    assert [line.split(":")[0] for line in lines] == names
    assert 'Title: "Title 00.mp3"' in lines[0]


def test_dry_run_touches_nothing(files, apply):
    before = snapshots(files)
    result = apply("file,title\na.mp3,New\nb.mp3,Other\n", "--dry-run")
    assert (result.returncode, errors_of_dry_run(result)) == (0, b"")
    text = result.stdout.decode()
    assert 'a.mp3: dry run, nothing is written\n  Title: "Song" -> "New"\n' in text
    assert text.index("a.mp3: ") < text.index("b.mp3: ")
    assert snapshots(files) == before


# --- there and back

def rows_of(output):
    return list(csv.DictReader(io.StringIO(output.decode("utf-8"), newline=""), strict=True))


def csv_of(rows, **form):
    text = io.StringIO(newline="")
    writer = csv.DictWriter(text, list(rows[0]), **form)
    writer.writeheader()
    writer.writerows(rows)
    return text.getvalue()


def library(folder):
    """Twenty files of five kinds."""
    kinds = [
        SONG, AUDIO, SONG + RECORD,
        tag(frame("TIT2", b"\1\xff\xfe" + "Größe".encode("utf-16-le")),
            frame("COMM", b"\0deu\0Hallo"), text_frame("TCON", "Rock")) + AUDIO,
        tag_of_version_4(("TIT2", "Tür".encode()), ("TPE1", b"Ann"), ("TDRC", b"2004-05"),
                         ("TRCK", b"5"), ("COMM", b"eng\0" + "Grüß".encode())) + AUDIO + RECORD,
    ]
    for number in range(20):
        (folder / f"{number:02}.mp3").write_bytes(kinds[number % len(kinds)])


@pytest.mark.parametrize("form", [("--csv",), ("--json",), ("--csv", "--spreadsheet")])
def test_what_scan_prints_is_no_edit(tmp_path, brindle, apply, form):
    library(tmp_path)
    before = snapshots(tmp_path)
    table = brindle("scan", *form, "--hash", "--quiet", ".").stdout
    assert len(table.splitlines()) >= 20
    all_fine(apply(table, *form[1:]), 20, 0)
    assert snapshots(tmp_path) == before


@pytest.mark.parametrize("form", [{}, {"delimiter": ";"}, {"dialect": "excel-tab"}], ids=str)
def test_table_of_scan_is_edited_and_applied(tmp_path, brindle, apply, form):
    library(tmp_path)
    rows = rows_of(brindle("scan", "--csv", "--quiet", ".").stdout)
    assert len(rows) == 20
    for number, row in enumerate(rows):
        row["CueInmSStart"] = str(100 + number)
        row["Album"] = f'Vol. {number}; "live", in\nBerlin'
    before = snapshots(tmp_path)
    all_fine(apply(csv_of(rows, **form)), 20, 20)
    now = rows_of(brindle("scan", "--csv", "--quiet", ".").stdout)
    assert [(row["CueInmSStart"], row["Album"]) for row in now] == [
        (str(100 + number), f'Vol. {number}; "live", in\nBerlin') for number in range(20)]
    for name in before:
        assert audio_hash((tmp_path / name).read_bytes()) == AUDIO_HASH
    # Comments, genres, titles and all else read as before; only version 2.4 has become 2.3.
    for number, (row, old) in enumerate(zip(now, rows)):
        other_version = ["Title", "Artist", "Year", "Track", "Comments"] if number % 5 == 4 else []
        for key in set(row) - {"TagType", "v2Frames", "ID3TagSizeIncludingHeader", "FrameCount",
                               *other_version}:
            assert row[key] == old[key], key
    after = snapshots(tmp_path)
    assert all(after[name] != before[name] for name in before)
    # The same table again, though its cells of version 2.4 read otherwise now.
    all_fine(apply(csv_of(rows, **form)), 20, 0)
    assert snapshots(tmp_path) == after


def test_texts_of_version_4_mean_the_same_after_the_save(tmp_path, brindle, apply, value):
    (tmp_path / "a.mp3").write_bytes(
        tag_of_version_4(("TIT2", "Tür".encode()), ("TPE1", b"Ann"), ("TDRC", b"2004-05")) + AUDIO)
    rows = rows_of(brindle("scan", "--csv", "--quiet", "a.mp3").stdout)
    assert (rows[0]["Title"], rows[0]["Artist"], rows[0]["Year"]) == ("\3TÃ¼r", "\3Ann", "0")
    rows[0]["Album"] = "New"
    for written in (1, 0):
        all_fine(apply(csv_of(rows)), 1, written)
        assert value("a.mp3", "Title", "Artist", "Year", "Album") == ["Tür", "Ann", "2004", "New"]


def test_spreadsheet_prefix_is_taken_off(tmp_path, brindle, apply, value):
    (tmp_path / "=a.mp3").write_bytes(tag(text_frame("TIT2", "-x"), text_frame("TPE1", "'y"),
                                          padding=600) + AUDIO)
    table = brindle("scan", "--csv", "--spreadsheet", "--quiet", "=a.mp3").stdout
    assert b"'=a.mp3" in table and b"'-x" in table and b"''y" in table
    table = table.replace(b"'-x", b"'+new")
    for written in (1, 0):
        all_fine(apply(table, "--spreadsheet"), 1, written)
        assert value("=a.mp3", "Title", "Artist") == ["+new", "'y"]


@pytest.mark.parametrize("end", ["\n", "\r", "\r\n"], ids=repr)
@pytest.mark.parametrize("saved", ["\n", "\r\n"], ids=repr)
def test_line_ends_that_a_spreadsheet_changes_are_no_edit(tmp_path, apply, value, end, saved):
    text = f"one{end}two{end}{end}three"
    (tmp_path / "a.mp3").write_bytes(tag(text_frame("TIT2", text), text_frame("TALB", "Old"),
                                         padding=600) + AUDIO + id3v1(b"1" + end.encode() + b"2"))
    table = ("file,title,album,v1-title\na.mp3,\"" + text.replace(end, saved) + '","{}","1'
             + saved + '2"\n')
    before = snapshots(tmp_path)
    all_fine(apply(table.format("Old")), 1, 0)
    assert snapshots(tmp_path) == before
    # Other cells are edits, and leave both as they are.
    all_fine(apply(table.format("New")), 1, 1)
    assert value("a.mp3", "Title", "Album", "Titlev1Tag") == [text, "New", f"1{end}2"]
    # More or fewer lines are another text.
    all_fine(apply(table.format("New").replace(f"two{saved}{saved}", f"two{saved}")), 1, 1)
    title, record = value("a.mp3", "Title", "Titlev1Tag")
    assert (len(title.splitlines()), record) == (3, f"1{end}2")


def test_comment_and_genre_are_written_once(files, apply, value):
    table = "file,comment,genre\na.mp3,Hello again,8\n"
    all_fine(apply(table), 1, 1)
    content = (files / "a.mp3").read_bytes()
    assert b"Hello again" in content and b"Hello\0" not in content
    before = snapshots(files)
    all_fine(apply(table), 1, 0)
    assert snapshots(files) == before


RECORDS = {
    # cells, title and title of the record afterwards
    "no cell of the record": ("file,Title\nc.mp3,New\n", ["New", "New"]),
    "empty cell of the record": ("file,Title,Titlev1Tag\nc.mp3,New,\n", ["New", "New"]),
    "unchanged cell of the record": ("file,Title,Titlev1Tag\nc.mp3,New,Song\n", ["New", "Song"]),
    "changed cell of the record": ("file,Title,v1-title\nc.mp3,New,Other\n", ["New", "Other"]),
    "record before the title": ("file,v1-title,title\nc.mp3,Other,New\n", ["New", "Other"]),
    "record alone": ("file,v1-title\nc.mp3,Other\n", ["Song", "Other"]),
    "title removed": ("file,remove\nc.mp3,title\n", ["", ""]),
    "title removed, cell of the record": ("file,remove,Titlev1Tag\nc.mp3,title,Song\n",
                                          ["", "Song"]),
    "both removed": ('file,remove\nc.mp3,"title,v1-title"\n', ["", ""]),
    "no record": ("file,Title,Titlev1Tag,Yearv1Tag\na.mp3,New,,0\n", ["New", "New"]),
}


@pytest.mark.parametrize("table, titles", RECORDS.values(), ids=RECORDS)
def test_cell_pins_the_record(files, apply, value, table, titles):
    name = table.split("\n")[1].split(",")[0]
    for written in (1, 0):
        all_fine(apply(table), 1, written)
        assert value(name, "Title", "Titlev1Tag") == titles


# --- errors

ERRORS = {
    # table, options, what is said
    "unknown column": ("file,nonsense\na.mp3,x\n", (), ["row 1, column nonsense: unknown column"]),
    "unknown column that is empty": ("file,Titel\na.mp3,\n", (),
                                     ["row 1, column Titel: unknown column"]),
    "no column of names": ("title\nNew\n", (), ["row 1, the column 'file' is missing"]),
    "empty table": ("", (), ["row 1, the column 'file' is missing"]),
    "column twice": ("file,title,title\na.mp3,x,y\n", (),
                     ["row 1, two columns are named 'title'"]),
    "UTF-16": ("file\n".encode("utf-16"), (), ["row 1, the table is UTF-16; save the table as UTF-8"]),
    "column under two names": ("file,title,Title\na.mp3,x,y\n", (),
                               ["row 2, column Title: the same value as in column title"]),
    "field under two names": ("file,cue-in,field:Cue In\na.mp3,5,6\n", (),
                              ["row 2, column field:Cue In: the same value as in column cue-in"]),
    "no number": ("file,cue-in\na.mp3,1.5\n", (),
                  ["row 2, column cue-in: '1.5' is not a whole number"]),
    "number of two lines": ('file,cue-in\na.mp3,"1\n\x1b2"\n', (),
                            ["row 2, column cue-in: '1\\n\\x1B2' is not a whole number"]),
    "number out of range": ("file,Year\na.mp3,40000\n", (),
                            ["row 2, column Year: 40000 is not in the range of -32768 to 32767"]),
    "no yes": ("file,opener\na.mp3,maybe\n", (),
               ["row 2, column opener: 'maybe' is neither yes nor no"]),
    "not in the code page": ("file,Title\na.mp3,Жук\n", (),
                             ["row 2, column Title: hosts read text of Windows-1252, which does "
                              'not contain "Жук"; --unicode writes it anyway']),
    "no UTF-8": (b"file,Title\na.mp3,\xff\n", (), ["row 2, column Title: the text is not UTF-8"]),
    "read-only": ("file,Duration\na.mp3,99\n", (),
                  ["row 2, column Duration: cannot be set; it is '3128'"]),
    "no such file": ("file,title\nd.mp3,x\n", (),
                     ["row 2, column file: d.mp3: No such file or directory"]),
    "folder": ("file,title\n.,x\n", (), ["row 2, column file: .: Is a directory"]),
    "no name": ("file,title\n,x\n", (), ["row 2, column file: the cell is empty"]),
    "cell too many": ("file,title\na.mp3,x,y\n", (), ["row 2, 3 cells where the header has 2"]),
    "cell too few": ("file,title\na.mp3\n", (), ["row 2, 1 cells where the header has 2"]),
    "quote without an end": ('file,title\na.mp3,x\nb.mp3,"y\n', (),
                             ["row 3, a quoted cell has no closing quote"]),
    "same name twice": ("file,title\na.mp3,x\na.mp3,y\n", (),
                        ["row 2, column file: the same file as in row 3",
                         "row 3, column file: the same file as in row 2"]),
    "same file by two names": ("file,title\na.mp3,x\n./a.mp3,y\n", (),
                               ["row 2, column file: the same file as in row 3",
                                "row 3, column file: the same file as in row 2"]),
    "unknown name to remove": ("file,remove\na.mp3,Titel\n", (),
                               ["row 2, column remove: unknown field 'Titel'"]),
    "set and removed": ("file,title,remove\na.mp3,New,title\n", (),
                        ["row 2, column remove: 'title' is also set"]),
    "bad quote in remove": ('file,remove\na.mp3,"""title"\n', (),
                            ["row 2, column remove: a quoted cell has no closing quote"]),
    "escape of a name": ("file,file_escaped\na\\.mp3,true\n", (),
                         ["row 2, column file: a backslash does not begin an escape"]),
    "stamp of a corrupt tag": ("file,title\na.mp3,Corrupt ID3v2 Tag\n", (),
                               ["row 2, column title: hosts read 'Corrupt ID3v2 Tag' where they "
                                "cannot read the tag; it is not a value"]),
    "mark of UTF-8": ("file,title\na.mp3,\3New\n", (),
                      ["row 2, column title: the text begins with \\x03, which hosts read before "
                       "UTF-8; remove it"]),
    "row after a cell of two lines": ('file,title,cue-in\na.mp3,"x\ny",1\nb.mp3,x,z\n', (),
                                      ["row 3 (line 4), column cue-in: 'z' is not a whole number"]),
    "no JSON": ('{"file":"a.mp3","title":"x"}\n{"file":"b.mp3"\n', (),
                ["row 2, the line is not a JSON object"]),
    "JSON as deep as a stack": ('{"file":"a.mp3","title":' + "[" * 300_000 + "]" * 300_000 + "}",
                                (), ["row 1, column title: not a single value"]),
    "unknown key": ('{"file":"a.mp3","titel":"x"}\n', (),
                    ["row 1, column titel: unknown column"]),
    "list where a text belongs": ('{"file":"a.mp3","title":["x"]}\n', (),
                                  ["row 1, column title: not a single value"]),
    "no key of names": ('{"title":"x"}\n', (), ["row 1, 'file' is missing"]),
    "number to remove": ('{"file":"a.mp3","remove":[1]}\n', (),
                         ["row 1, column remove: not a list of names"]),
    "all of them": ("file,cue-in,title\nz.mp3,1,\na.mp3,x,Жук\nb.mp3,5,Good\n", (),
                    ["row 2, column file: z.mp3: No such file or directory",
                     'row 3, column title: hosts read text of Windows-1252, which does not contain '
                     '"Жук"; --unicode writes it anyway',
                     "row 3, column cue-in: 'x' is not a whole number"]),
}


@pytest.mark.parametrize("table, options, said", ERRORS.values(), ids=ERRORS)
def test_error_is_told_and_nothing_written(files, apply, table, options, said):
    before = snapshots(files)
    result = apply(table, *options)
    assert (result.returncode, result.stdout) == (1, b"")
    assert errors(result) == [*said, "nothing was written"]
    assert snapshots(files) == before
    # A dry run tells the same.
    result = apply(table, *options, "--dry-run")
    assert result.returncode == 1
    assert errors(result) == said
    assert snapshots(files) == before


def test_what_set_refuses_is_refused(files, apply):
    """A frame that the end of the tag cuts would be lost."""
    cut = tag(text_frame("TIT2", "Song"), b"TPE1\0\0\0\x60\0\0" + bytes(40)) + AUDIO
    (files / "d.mp3").write_bytes(cut)
    before = snapshots(files)
    result = apply("file,title\na.mp3,New\nd.mp3,New\n")
    told = errors(result)
    assert result.returncode == 1 and len(told) == 2
    assert told[0].startswith("row 3, d.mp3: Saving would lose TPE1")
    assert told[0].endswith("; brindle set --force saves anyway")
    assert snapshots(files) == before


def test_value_that_the_save_alone_would_change_is_refused(files, apply, brindle):
    """Hosts find a frame after the move of one that they cannot step over."""
    (files / "d.mp3").write_bytes(
        tag(text_frame("TALB", "Old"), frame("PRIV", bytes(6000)), user_frame("Intro", "5000"))
        + AUDIO)
    rows = rows_of(brindle("scan", "--csv", "--quiet", "d.mp3").stdout)
    assert rows[0]["Intro"] == "0"
    rows[0]["Album"] = "New"
    before = snapshots(files)
    told = errors(apply(csv_of(rows)))
    assert told[0] == ("row 2, d.mp3: Hosts would then read '5000' as Intro, not '0', which the "
                       "next run would write; leave the cell empty")
    assert snapshots(files) == before
    rows[0]["Intro"] = ""
    for written in (1, 0):
        all_fine(apply(csv_of(rows)), 1, written)


def test_unicode_writes_what_the_code_page_lacks(files, apply):
    table = "file,title\na.mp3,Жук\n"
    for written in (1, 0):
        all_fine(apply(table, "--unicode"), 1, written)
        assert "\ufeffЖук".encode("utf-16-le") in (files / "a.mp3").read_bytes()


def test_keep_going_writes_the_good_rows(files, apply, value):
    before = snapshots(files)
    table = "file,title,cue-in\na.mp3,New,\nb.mp3,Bad,x\nz.mp3,,\nc.mp3,Newer,7\nc.mp3\n"
    result = apply(table, "--keep-going")
    assert result.returncode == 1
    assert errors(result) == ["row 3, column cue-in: 'x' is not a whole number",
                              "row 4, column file: z.mp3: No such file or directory",
                              "row 6, 1 cells where the header has 3"]
    assert result.stdout.decode().splitlines()[-1] == (
        "5 rows: 2 written, 0 unchanged, 0 failed, 3 left out")
    assert value("a.mp3", "Title") == "New"
    assert value("c.mp3", "Title", "CueInmSStart") == ["Newer", "7"]
    assert snapshots(files)["b.mp3"] == before["b.mp3"]


def test_keep_going_leaves_out_both_rows_of_one_file(files, apply):
    before = snapshots(files)
    os.link(files / "a.mp3", files / "link")
    result = apply("file,title\na.mp3,x\nlink,y\n", "--keep-going")
    assert errors(result) == ["row 2, column file: the same file as in row 3",
                              "row 3, column file: the same file as in row 2"]
    assert snapshots(files) == before


@pytest.mark.parametrize("header", ["file,titel", "title,title,file", "title"])
def test_keep_going_does_not_trust_a_wrong_header(files, apply, header):
    before = snapshots(files)
    result = apply(header + "\na.mp3,x\n", "--keep-going")
    assert result.returncode == 1 and errors(result)[-1] == "nothing was written"
    assert snapshots(files) == before


def test_table_that_is_not_there(brindle):
    result = brindle("apply", "missing.csv")
    assert result.returncode == 1
    assert result.stderr == b"brindle: missing.csv: No such file or directory\n"


# --- an end before the end

OLD = tag(text_frame("TIT2", "Old"), padding=600) + AUDIO
COUNT = 3_000


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM], ids=lambda one: one.name)
def test_files_begun_are_finished_and_the_same_again_goes_on(tmp_path, program, apply, number):
    names = [f"{index:04}.mp3" for index in range(COUNT)]
    for name in names:
        (tmp_path / name).write_bytes(OLD)
    table = "file,title\n" + "".join(f"{name},New\n" for name in names)
    (tmp_path / "edits").write_text(table)
    with subprocess.Popen([program, "apply", "edits"], cwd=tmp_path, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, pipesize=4096) as run:
        lines = [run.stdout.readline()]  # the first file is written
        time.sleep(0.5)  # until it waits for a reader
        for _ in range(3):
            run.send_signal(number)
            time.sleep(0.05)
        lines += run.stdout.readlines()
        assert run.wait(timeout=30) == 128 + number
        note = run.stderr.read().decode()
    done = len(lines)
    assert 0 < done < COUNT
    assert note == (f"brindle: interrupted after {done} of {COUNT} files, 0 failed; run the "
                    "same command again to continue\n")
    assert [line.decode().split(":")[0] for line in lines] == names[:done]
    new = text_frame("TIT2", "New")
    for index, name in enumerate(names):
        content = (tmp_path / name).read_bytes()
        assert new in content if index < done else content == OLD, name
    all_fine(apply(table), COUNT, COUNT - done)
    assert all(new in (tmp_path / name).read_bytes() for name in names)
    assert len(os.listdir(tmp_path)) == COUNT + 1  # no temporary file


def test_json_of_scan_is_edited_and_applied(tmp_path, brindle, apply, value):
    library(tmp_path)
    facts = [json.loads(line) for line in
             brindle("scan", "--json", "--quiet", ".").stdout.splitlines()]
    for number, row in enumerate(facts):
        row["Intro"] = 5000 + number
        row["remove"] = ["album"]
    table = "".join(json.dumps(row) + "\n" for row in facts)
    all_fine(apply(table), 20, 20)
    assert [value(f"{number:02}.mp3", "Intro") for number in (0, 7, 19)] == ["5000", "5007", "5019"]
    all_fine(apply(table), 20, 0)
