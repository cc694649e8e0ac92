"""`brindle show`: every fact of a file, for people and for programs."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

import pytest

from commands import json_lines
from mp3_bytes import audio, audio_with_xing, frame, id3v1, tag, text_frame, user_frame

ROOT = pathlib.Path(__file__).resolve().parents[2]

KEYS = [
    "file", "MonoStereo", "BitRate", "Speed", "Volume", "Opener", "CueInmSStart", "CategoryLevel",
    "TagType", "VBR", "Layer", "Duration", "Frequency", "FrameCount", "Title", "NoFade", "Composer",
    "Publisher", "CopyRight", "Agency", "AccountExec", "URL", "Copy", "Artist", "ArtistUrl",
    "Sectone", "Intro", "Category", "Album", "Track", "Year", "Comments", "Endstyle",
    "OutromsStart", "Genre", "artistv1Tag", "Titlev1Tag", "Yearv1Tag", "v2Frames", "v2Tag",
    "Commentv1", "RepairRequired", "ID3TagSizeIncludingHeader", "MpegVersion",
]

PICTURE = b"\0image/png\0\x03\0" + b"\x89PNG" + bytes(range(16))  # 13 + 20 bytes

FULL_TAG = tag(
    text_frame("TIT2", "Morning jingle"),
    text_frame("TPE1", "Ann Other"),
    text_frame("TALB", "Café"),
    text_frame("TYER", "1999"),
    text_frame("TRCK", "7"),
    text_frame("TCON", "(8)Swing"),
    frame("COMM", b"\0eng\0Hi"),
    frame("COMM", b"\0eng\0Ho"),
    text_frame("TCOM", "Bea"),
    text_frame("TPUB", "House"),
    text_frame("TCOP", "1999 House"),
    frame("WOAR", b"http://ann.example"),
    user_frame("Cue In", "1500"),
    user_frame("Intro", "12.5"),
    user_frame("OutromSStart", "170000"),
    user_frame("Sec Tone", "250"),
    user_frame("TarnSpeed", "1.5"),
    user_frame("Volume", "-3"),
    user_frame("Opener", "-1"),
    user_frame("Category", "News"),
    user_frame("CatLevel", "2"),
    user_frame("End", "cold"),
    user_frame("NoFade", "1"),
    user_frame("Agency", "Smith"),
    user_frame("Account Exec", "Jo"),
    user_frame("Copy", "A\nB"),
    frame("APIC", PICTURE),
    padding=100)

FULL_ID3V1 = id3v1(b"Old title", b"Old artist", b"Old album", b"1998", b"Old comment", 3, 17)

# 120 frames of 417 bytes are 50040 bytes; at 128 kbit/s 50040 * 8 / 128 = 3127.5 ms, halves to even.
DURATION = 3128

FULL_TAG_LENGTH = len(FULL_TAG)

FULL_FACTS = {
    "file": "full.mp3", "MonoStereo": "Joint Stereo", "BitRate": 128000, "Speed": 1.5, "Volume": -3,
    "Opener": -1, "CueInmSStart": 1500, "CategoryLevel": "2", "TagType": 3, "VBR": False,
    "Layer": "3", "Duration": DURATION, "Frequency": 44100, "FrameCount": 13,
    "Title": "Morning jingle", "NoFade": 1, "Composer": "Bea", "Publisher": "House",
    "CopyRight": "1999 House", "Agency": "Smith", "AccountExec": "Jo",
    "URL": "http://ann.example", "Copy": "A\nB", "Artist": "Ann Other",
    "ArtistUrl": "http://ann.example", "Sectone": 250,
    "Intro": 12,  # 12.5, halves to even
    "Category": "News", "Album": "Café", "Track": 7, "Year": 1999,
    # Language, description and text run together; comments are joined by NUL, CR and LF, and the
    # NUL is left out when it is read.
    "Comments": "engHi\r\nengHo",
    "Endstyle": "cold", "OutromsStart": 170000,
    # Hosts rely on the number being read one digit short: of "(8)" nothing is left, so there is none.
    "Genre": "0",
    "artistv1Tag": "Old artist", "Titlev1Tag": "Old title", "Yearv1Tag": 1998,
    "v2Frames": ["TIT2", "TPE1", "TALB", "TYER", "TRCK", "TCON", "COMM", "TCOM", "TPUB", "TCOP",
                 "WOAR", "TXXX", "APIC"],
    "v2Tag": {
        "TIT2": ["Morning jingle"], "TPE1": ["Ann Other"], "TALB": ["Café"], "TYER": ["1999"],
        "TRCK": ["7"], "TCON": ["(8)Swing"], "COMM": ["engHi", "engHo"], "TCOM": ["Bea"],
        "TPUB": ["House"], "TCOP": ["1999 House"], "WOAR": ["http://ann.example"],
        "TXXX": ["Cue In\0" "1500", "Intro\0" "12.5", "OutromSStart\0" "170000", "Sec Tone\0" "250",
                 "TarnSpeed\0" "1.5", "Volume\0-3", "Opener\0-1", "Category\0News", "CatLevel\0" "2",
                 "End\0cold", "NoFade\0" "1", "Agency\0Smith", "Account Exec\0Jo", "Copy\0A\nB"],
        "APIC": [{"bytes": 33}],
    },
    "Commentv1": "Old comment", "RepairRequired": False,
    "ID3TagSizeIncludingHeader": FULL_TAG_LENGTH, "MpegVersion": "1",
}

PLAIN_FACTS = {
    "file": "plain.mp3", "MonoStereo": "Joint Stereo", "BitRate": 128000, "Speed": 0, "Volume": 0,
    "Opener": 0, "CueInmSStart": 0, "CategoryLevel": "0", "TagType": -1, "VBR": False, "Layer": "3",
    "Duration": DURATION, "Frequency": 44100, "FrameCount": 0, "Title": "", "NoFade": 0,
    "Composer": "", "Publisher": "", "CopyRight": "", "Agency": "", "AccountExec": "", "URL": "",
    "Copy": "", "Artist": "", "ArtistUrl": "", "Sectone": 0, "Intro": 0, "Category": None,
    "Album": "", "Track": 0, "Year": 0, "Comments": "", "Endstyle": "", "OutromsStart": 0,
    "Genre": "0", "artistv1Tag": "", "Titlev1Tag": "", "Yearv1Tag": 0, "v2Frames": [], "v2Tag": {},
    "Commentv1": "", "RepairRequired": False, "ID3TagSizeIncludingHeader": 0, "MpegVersion": "1",
}


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "full.mp3").write_bytes(FULL_TAG + audio() + FULL_ID3V1)
    (tmp_path / "plain.mp3").write_bytes(audio())
    return tmp_path


NEW_KEYS = ["schema", "tag", "file_facts"]


def host_facts(output):
    """What hosts read; the rest is tested in test_json.py."""
    return [{key: value for key, value in facts.items() if key not in NEW_KEYS}
            for facts in json_lines(output)]


def same_with_types(one, other):
    """As ==, but true is no 1 and no "1"."""
    return json.dumps(one) == json.dumps(other)


# --- JSON


def test_json_has_every_member_of_a_full_file(folder, brindle):
    result = brindle("show", "--json", "full.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    (facts,) = host_facts(result.stdout)
    assert facts == FULL_FACTS
    for key, value in facts.items():
        assert type(value) is type(FULL_FACTS[key]), key


def test_json_has_every_member_of_a_file_without_tags(folder, brindle):
    result = brindle("show", "--json", "plain.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    (facts,) = host_facts(result.stdout)
    assert same_with_types(facts, PLAIN_FACTS)


@pytest.mark.parametrize("name", ["full.mp3", "plain.mp3"])
def test_json_keys_stand_in_the_order_of_the_interface(folder, brindle, name):
    result = brindle("show", "--json", name)
    pairs = json.loads(result.stdout, object_pairs_hook=list)
    assert [key for key, _ in pairs] == KEYS + NEW_KEYS


def test_json_keeps_the_frames_in_the_order_of_the_file(folder, brindle):
    (folder / "a.mp3").write_bytes(
        tag(text_frame("TYER", "2001"), text_frame("TALB", "B"), text_frame("TIT2", "C"),
            text_frame("TALB", "D")) + audio())
    facts = dict(json.loads(brindle("show", "--json", "a.mp3").stdout, object_pairs_hook=list))
    assert facts["v2Frames"] == ["TYER", "TALB", "TIT2"]
    assert facts["v2Tag"] == [("TYER", ["2001"]), ("TALB", ["B", "D"]), ("TIT2", ["C"])]
    assert facts["FrameCount"] == 3


def test_json_of_a_file_without_stream_has_an_unknown_duration_of_0(folder, brindle):
    (folder / "text.mp3").write_bytes(b"a" * 6000)
    result = brindle("show", "--json", "text.mp3")
    assert result.returncode == 0
    expected = dict(PLAIN_FACTS, file="text.mp3", MonoStereo="", BitRate=0, Layer="0", Duration=0,
                    Frequency=0, MpegVersion="0")
    (facts,) = host_facts(result.stdout)
    assert same_with_types(facts, expected)


def test_json_of_an_empty_file_has_no_stream(folder, brindle):
    (folder / "empty.mp3").write_bytes(b"")
    result = brindle("show", "--json", "empty.mp3")
    assert result.returncode == 0
    (facts,) = host_facts(result.stdout)
    assert (facts["Duration"], facts["Layer"], facts["TagType"]) == (0, "0", -1)


def test_json_of_a_variable_bitrate_counts_in_kbit_per_second(folder, brindle):
    (folder / "vbr.mp3").write_bytes(audio_with_xing())
    (facts,) = host_facts(brindle("show", "--json", "vbr.mp3").stdout)
    assert facts["VBR"] is True
    # 50040 bytes / 120 frames = 417; 44100 / 1152 rounds to 38 a second; 417 * 38 * 8 / 1024 = 123.8
    assert facts["BitRate"] == 124
    # 1152 * 120 / 44100 = 3.1347 s with four decimals
    assert facts["Duration"] == 3135


@pytest.mark.parametrize("stored, written", [
    ("2", b'"Speed":2,'),
    ("0.5", b'"Speed":0.5,'),
    ("-1", b'"Speed":-1,'),
    ("fast", b'"Speed":0,'),
])
def test_json_writes_a_whole_speed_as_a_whole_number(folder, brindle, stored, written):
    (folder / "a.mp3").write_bytes(tag(user_frame("TarnSpeed", stored)) + audio())
    assert written in brindle("show", "--json", "a.mp3").stdout


@pytest.mark.parametrize("stored, category", [("", ""), ("12", "12"), ("News", "News")])
def test_json_category_is_a_string_when_it_is_there(folder, brindle, stored, category):
    (folder / "a.mp3").write_bytes(
        tag(user_frame("Category", stored), text_frame("TIT2", "x")) + audio())
    (facts,) = host_facts(brindle("show", "--json", "a.mp3").stdout)
    assert facts["Category"] == category


@pytest.mark.parametrize("version_2, version_1, tag_type", [
    (False, False, -1), (False, True, 1), (True, False, 2), (True, True, 3)])
def test_json_tag_type_is_a_number(folder, brindle, version_2, version_1, tag_type):
    content = audio()
    if version_2:
        content = tag(text_frame("TIT2", "x")) + content
    if version_1:
        content += id3v1(b"x")
    (folder / "a.mp3").write_bytes(content)
    (facts,) = host_facts(brindle("show", "--json", "a.mp3").stdout)
    assert facts["TagType"] == tag_type


def test_json_tells_that_audio_does_not_begin_after_the_tag(folder, brindle):
    (folder / "a.mp3").write_bytes(tag(text_frame("TIT2", "x")) + bytes(20) + audio())
    (facts,) = host_facts(brindle("show", "--json", "a.mp3").stdout)
    assert facts["RepairRequired"] is True
    assert facts["ID3TagSizeIncludingHeader"] == 22  # 10, and a frame of 10 + 2
    assert facts["Duration"] == DURATION


def test_json_is_utf_8_and_not_escaped(folder, brindle):
    result = brindle("show", "--json", "full.mp3")
    assert '"Album":"Café"'.encode() in result.stdout


def test_json_is_one_line_a_file_in_the_order_given(folder, brindle):
    result = brindle("show", "--json", "plain.mp3", "full.mp3", "plain.mp3")
    assert result.returncode == 0
    assert [facts["file"] for facts in host_facts(result.stdout)] == [
        "plain.mp3", "full.mp3", "plain.mp3"]


def test_json_option_may_stand_after_the_files(folder, brindle):
    result = brindle("show", "plain.mp3", "--json")
    assert [facts["file"] for facts in host_facts(result.stdout)] == ["plain.mp3"]


# --- for people

FULL_REPORT = f"""\
full.mp3
  Stream
    Format             MPEG 1 Layer 3
    Channels           Joint Stereo
    Duration           0:03.128  (3128 ms)
    Bitrate            128 kbit/s, constant
    Sampling rate      44100 Hz
  Tags
    Present            ID3v1 and ID3v2
    ID3v2 length       {FULL_TAG_LENGTH} bytes
    Title              Morning jingle
    Artist             Ann Other
    Album              Café
    Year               1999
    Track              7
    Genre number       8  (hosts read: "0")
    Comment            Hi  (hosts read: "engHi\\r\\nengHo")
    Composer           Bea
    Publisher          House
    Copyright          1999 House
    URL                http://ann.example
    ID3v1 title        Old title
    ID3v1 artist       Old artist
    ID3v1 year         1998
    ID3v1 comment      Old comment
  Scheduling fields
    Cue in             0:01.500  (1500 ms)
    Intro              0:00.012  (12 ms)
    Outro start        2:50.000  (170000 ms)
    Secondary tone     0:00.250  (250 ms)
    Speed              1.5
    Volume             -3
    Opener             yes
    Category           News
    Category level     2
    End style          cold
    No fade            1
    Agency             Smith
    Account executive  Jo
    Copy               A\\nB
  Frames
    TIT2               Morning jingle
    TPE1               Ann Other
    TALB               Café
    TYER               1999
    TRCK               7
    TCON               (8)Swing
    COMM               engHi
    COMM               engHo
    TCOM               Bea
    TPUB               House
    TCOP               1999 House
    WOAR               http://ann.example
    TXXX               Cue In = 1500
    TXXX               Intro = 12.5
    TXXX               OutromSStart = 170000
    TXXX               Sec Tone = 250
    TXXX               TarnSpeed = 1.5
    TXXX               Volume = -3
    TXXX               Opener = -1
    TXXX               Category = News
    TXXX               CatLevel = 2
    TXXX               End = cold
    TXXX               NoFade = 1
    TXXX               Agency = Smith
    TXXX               Account Exec = Jo
    TXXX               Copy = A\\nB
    APIC               33 bytes
  A save would change
    COMM:1             7 bytes, same text in another form
    COMM:2             7 bytes, same text in another form
    WOAR:1             18 bytes, same text in another form
"""

PLAIN_REPORT = """\
plain.mp3
  Stream
    Format         MPEG 1 Layer 3
    Channels       Joint Stereo
    Duration       0:03.128  (3128 ms)
    Bitrate        128 kbit/s, constant
    Sampling rate  44100 Hz
  Tags
    Present        none
"""


def test_report_of_a_full_file(folder, brindle):
    result = brindle("show", "full.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == FULL_REPORT


@pytest.mark.parametrize("frames, year", [
    ((("TDRC", "2024-05-01"),), "2024"),
    ((("TYER", "1999"), ("TDRC", "2024")), "2024"),
    ((("TYER", "1999"),), "1999"),
])
def test_year_of_the_report_is_that_of_the_tag_in_json(tmp_path, brindle, frames, year):
    content = bytearray(tag(*(text_frame(*one) for one in frames)))
    content[3] = 4  # version 2.4; sizes below 128 are the same there
    (tmp_path / "a.mp3").write_bytes(bytes(content) + audio())
    assert json.loads(brindle("show", "--json", "a.mp3").stdout)["tag"]["year"] == year
    assert re.search(rf"^    Year +{year}\b", brindle("show", "a.mp3").stdout.decode(), re.MULTILINE)


@pytest.mark.parametrize("text, shown, number", [
    ("(17)", "17", 17), ("(17)Refinement", "17", 17), ("17", "17", 17), ("(017)", "017", 17),
    ("Rock", "Rock", None), ("(RX)", "RX", None), ("256", "256", None), ("(17", "(17", None),
])
def test_genre_of_the_report_is_that_of_the_tag_in_json(tmp_path, brindle, text, shown, number):
    (tmp_path / "a.mp3").write_bytes(tag(text_frame("TCON", text)) + audio())
    genre = json.loads(brindle("show", "--json", "a.mp3").stdout)["tag"]["genre"]
    assert (genre["text"], genre["number"]) == (text, number)
    line = re.search(r"^    Genre number +(.*)$", brindle("show", "a.mp3").stdout.decode(),
                     re.MULTILINE)[1]
    assert line.split("  ")[0] == shown


def test_report_tells_what_a_save_would_lose(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(tag(frame("GEOB", bytes(5001))) + audio())
    assert brindle("show", "a.mp3").stdout.decode().endswith(
        "  A save would lose\n    GEOB:1         5001 bytes, too large to be read\n")


def test_report_leaves_out_what_is_not_there(folder, brindle):
    assert brindle("show", "plain.mp3").stdout.decode() == PLAIN_REPORT


def test_report_separates_files_by_a_blank_line(folder, brindle):
    result = brindle("show", "plain.mp3", "full.mp3", "plain.mp3")
    assert result.stdout.decode() == PLAIN_REPORT + "\n" + FULL_REPORT + "\n" + PLAIN_REPORT


def test_report_shows_a_scheduling_field_that_is_0(folder, brindle):
    (folder / "a.mp3").write_bytes(
        tag(user_frame("Cue In", "0"), user_frame("Opener", "0"), user_frame("Volume", "loud"))
        + audio())
    report = brindle("show", "a.mp3").stdout.decode()
    assert "    Cue in         0:00.000  (0 ms)\n" in report
    assert "    Opener         no\n" in report
    assert "    Volume         0\n" in report
    assert "    TXXX           Volume = loud\n" in report


def test_report_shows_a_variable_bitrate_in_the_same_unit(folder, brindle):
    (folder / "vbr.mp3").write_bytes(audio_with_xing())
    report = brindle("show", "vbr.mp3").stdout.decode()
    assert "    Bitrate        124 kbit/s on average, variable\n" in report
    assert "    Duration       0:03.135  (3135 ms)\n" in report


def test_report_says_that_there_is_no_stream(folder, brindle):
    (folder / "text.mp3").write_bytes(b"a" * 6000)
    assert brindle("show", "text.mp3").stdout.decode() == (
        "text.mp3\n  Stream\n    Format   no MPEG audio found\n  Tags\n    Present  none\n")


def test_report_says_that_a_repair_is_required(folder, brindle):
    (folder / "a.mp3").write_bytes(tag(text_frame("TIT2", "x")) + bytes(20) + audio())
    assert "    Repair required  yes, audio does not begin where the tag ends\n" in \
        brindle("show", "a.mp3").stdout.decode()


def test_report_shows_control_characters(folder, brindle):
    (folder / "a.mp3").write_bytes(
        tag(text_frame("TIT2", "a\tb\x1b[31mc\x7f\r\n"), frame("TALB", b"\0\x81d")) + audio())
    report = brindle("show", "a.mp3").stdout.decode()
    assert "    Title          a\\tb\\x1B[31mc\\x7F\\r\\n\n" in report
    # 81 is no character of the code page and stays the control U+0081.
    assert "    Album          \\u0081d\n" in report
    assert all(character >= " " or character == "\n" for character in report)


def test_report_cuts_a_long_value_that_json_has_in_full(folder, brindle):
    (folder / "a.mp3").write_bytes(
        tag(text_frame("TENC", "y" * 121), text_frame("TOPE", "z" * 120)) + audio())
    report = brindle("show", "a.mp3").stdout.decode()
    assert "    TENC           " + "y" * 120 + " ... (121 characters)\n" in report
    assert "    TOPE           " + "z" * 120 + "\n" in report
    (facts,) = host_facts(brindle("show", "--json", "a.mp3").stdout)
    assert facts["v2Tag"]["TENC"] == ["y" * 121]


def test_report_takes_a_user_text_apart(folder, brindle):
    (folder / "a.mp3").write_bytes(
        tag(frame("TXXX", b"\0End\0Fade\0"), frame("TXXX", b"\0Mix\0a\0b\0\0"),
            frame("TXXX", b"\0Note\0")) + audio())
    report = brindle("show", "a.mp3").stdout.decode()
    # A terminating NUL says nothing; any other one is shown.
    assert "    TXXX           End = Fade\n" in report
    assert "    TXXX           Mix = a\\x00b\\x00\n" in report
    assert "    TXXX           Note = \n" in report
    (facts,) = host_facts(brindle("show", "--json", "a.mp3").stdout)
    assert facts["v2Tag"]["TXXX"] == ["End\0Fade\0", "Mix\0a\0b\0\0", "Note\0"]


def test_report_lists_a_frame_without_text(folder, brindle):
    (folder / "a.mp3").write_bytes(tag(text_frame("TENC", ""), text_frame("TIT2", "x")) + audio())
    assert "    TENC           (empty)\n" in brindle("show", "a.mp3").stdout.decode()


# --- files that can't be shown

NO_SUCH_FILE = "No such file or directory"


def make_missing(_folder, name):
    return name, NO_SUCH_FILE


def make_fifo(folder, name):
    os.mkfifo(folder / name)
    return name, "Not a regular file"


def make_device(folder, name):
    (folder / name).symlink_to("/dev/zero")
    return name, "Not a regular file"


def make_dangling_link(folder, name):
    (folder / name).symlink_to("nowhere.mp3")
    return name, NO_SUCH_FILE


def make_link_to_itself(folder, name):
    (folder / name).symlink_to(name)
    return name, "Too many levels of symbolic links"


def make_under_a_file(folder, name):
    (folder / name).write_bytes(audio())
    return name + "/x.mp3", "Not a directory"


def make_wrong_ending(folder, _name):
    (folder / "song.wav").write_bytes(audio())
    return "song.wav", "The name does not end in mp3 or mp2"


def make_ending_too_short(folder, _name):
    (folder / "p3").write_bytes(audio())
    return "p3", "The name does not end in mp3 or mp2"


def make_empty_name(_folder, _name):
    return "", NO_SUCH_FILE


def make_long_name(_folder, _name):
    return "x" * 300 + ".mp3", "File name too long"


BAD_FILES = [
    make_missing, make_fifo, make_device, make_dangling_link, make_link_to_itself,
    make_under_a_file, make_wrong_ending, make_ending_too_short, make_empty_name, make_long_name,
]


@pytest.mark.parametrize("make", BAD_FILES)
def test_bad_file_is_one_line_on_standard_error(folder, brindle, make):
    name, reason = make(folder, "bad.mp3")
    result = brindle("show", name)
    assert result.returncode == 1
    assert result.stdout == b""
    assert result.stderr.decode() == f"brindle: {name}: {reason}\n"


@pytest.mark.parametrize("make", BAD_FILES)
def test_bad_file_is_also_an_object_in_json(folder, brindle, make):
    name, reason = make(folder, "bad.mp3")
    result = brindle("show", "--json", name)
    assert result.returncode == 1
    assert result.stderr.decode() == f"brindle: {name}: {reason}\n"
    assert result.stdout.decode() == json.dumps(
        {"file": name, "error": reason}, separators=(",", ":")) + "\n"


def test_other_files_are_shown_beside_a_bad_one(folder, brindle):
    result = brindle("show", "plain.mp3", "nowhere.mp3", "full.mp3")
    assert result.returncode == 1
    assert result.stdout.decode() == PLAIN_REPORT + "\n" + FULL_REPORT
    assert result.stderr.decode() == f"brindle: nowhere.mp3: {NO_SUCH_FILE}\n"


def test_other_files_are_shown_beside_a_bad_one_in_json(folder, brindle):
    result = brindle("show", "--json", "nowhere.mp3", "plain.mp3", "song.ogg", "full.mp3")
    assert result.returncode == 1
    assert [(facts["file"], "error" in facts) for facts in host_facts(result.stdout)] == [
        ("nowhere.mp3", True), ("plain.mp3", False), ("song.ogg", True), ("full.mp3", False)]
    assert len(result.stderr.splitlines()) == 2


def test_answer_and_error_stand_in_the_order_of_the_files(folder, brindle):
    result = brindle("show", "plain.mp3", "nowhere.mp3", "plain.mp3", stderr=subprocess.STDOUT)
    assert result.stdout.decode() == (
        PLAIN_REPORT + f"brindle: nowhere.mp3: {NO_SUCH_FILE}\n" + "\n" + PLAIN_REPORT)


@pytest.fixture
def open_folder():
    """A folder that every user may enter, unlike those of pytest."""
    path = pathlib.Path(tempfile.mkdtemp(prefix="brindle-", dir="/tmp"))
    path.chmod(0o755)
    yield path
    shutil.rmtree(path)


def as_user_without_rights(program, folder):
    """How to run the program as a user without the permission."""
    if os.geteuid() != 0:
        return [program]
    if shutil.which("setpriv") is None:
        pytest.skip("COULD NOT RUN: root is refused nothing, and setpriv is not installed")
    # The build folder may be closed to others.
    copy = folder / "brindle"
    shutil.copy(program, copy)
    copy.chmod(0o755)
    # A build for coverage writes its counts at the end; where the build is, it may not.
    counts = folder / "counts"
    counts.mkdir()
    counts.chmod(0o777)
    command = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
               "env", f"GCOV_PREFIX={counts}"]
    attempt = subprocess.run([*command, str(copy), "--version"], check=False, timeout=60,
                             capture_output=True)
    if attempt.returncode != 0:
        pytest.skip(f"COULD NOT RUN: no other user can be taken on: {attempt.stderr.decode()}")
    return [*command, str(copy)]


@pytest.mark.parametrize("json_mode", [False, True])
def test_file_without_permission_has_its_reason(program, open_folder, json_mode):
    command = as_user_without_rights(program, open_folder)
    for name in ("closed.mp3", "open.mp3"):
        (open_folder / name).write_bytes(audio())
    (open_folder / "closed.mp3").chmod(0o000)
    result = subprocess.run(
        [*command, "show", *(["--json"] if json_mode else []), "closed.mp3", "open.mp3"],
        cwd=open_folder, capture_output=True, check=False, timeout=60)
    assert result.returncode == 1
    assert result.stderr == b"brindle: closed.mp3: Permission denied\n"
    if json_mode:
        refused, shown = host_facts(result.stdout)
        assert refused == {"file": "closed.mp3", "error": "Permission denied"}
        assert shown["Duration"] == DURATION
    else:
        assert result.stdout.decode() == PLAIN_REPORT.replace("plain.mp3", "open.mp3")


def test_file_in_a_closed_folder_has_its_reason(program, open_folder):
    command = as_user_without_rights(program, open_folder)
    (open_folder / "inner").mkdir()
    (open_folder / "inner" / "a.mp3").write_bytes(audio())
    (open_folder / "inner").chmod(0o000)
    result = subprocess.run([*command, "show", "inner/a.mp3"], cwd=open_folder, check=False,
                            capture_output=True, timeout=60)
    (open_folder / "inner").chmod(0o755)
    assert (result.returncode, result.stdout) == (1, b"")
    assert result.stderr == b"brindle: inner/a.mp3: Permission denied\n"


# --- names

@pytest.mark.parametrize("name", [
    "SONG.MP3", "song.Mp2", "xmp3", "mp3", "a b.mp3", "Grüße 日本 🎵.mp3", "a*b?.mp3", "a,b.mp3",
    "[x,y].mp3", "a\\nb.mp3", "show.mp3", "a=b.mp3", "%%.mp3",
    "./-mp3",
])
def test_name_is_taken_as_it_is(folder, brindle, name):
    (folder / name).write_bytes(audio())
    result = brindle("show", "--json", name)
    assert (result.returncode, result.stderr) == (0, b"")
    (facts,) = host_facts(result.stdout)
    assert same_with_types(facts, dict(PLAIN_FACTS, file=name))
    assert brindle("show", name).stdout.decode() == PLAIN_REPORT.replace("plain.mp3", name)


@pytest.mark.parametrize("name", ["[a,b]", "{}", "[]", "%%", "show", "show,plain.mp3"])
def test_name_that_looks_like_something_else_is_one_name(folder, brindle, name):
    result = brindle("show", name, "plain.mp3", name)
    assert result.returncode == 1
    assert result.stderr.decode() == f"brindle: {name}: {NO_SUCH_FILE}\n" * 2
    assert result.stdout.decode() == PLAIN_REPORT


@pytest.mark.parametrize("name", ["-a.mp3", "--json.mp3", "--json", "--"])
def test_name_may_begin_with_a_dash_after_two_dashes(folder, brindle, name):
    (folder / name).write_bytes(audio())
    result = brindle("show", "--", name, "plain.mp3")
    if name.endswith("mp3"):
        assert (result.returncode, result.stderr) == (0, b"")
        assert result.stdout.decode() == (
            PLAIN_REPORT.replace("plain.mp3", name) + "\n" + PLAIN_REPORT)
    else:
        assert result.returncode == 1
        assert result.stderr.decode() == (
            f"brindle: {name}: The name does not end in mp3 or mp2\n")
        assert result.stdout.decode() == PLAIN_REPORT


def test_option_before_two_dashes_counts_and_after_them_does_not(folder, brindle):
    result = brindle("show", "--json", "plain.mp3", "--", "-a.mp3")
    assert [facts["file"] for facts in host_facts(result.stdout)] == ["plain.mp3", "-a.mp3"]


@pytest.mark.parametrize("name, as_json, shown", [
    (b"\xff\xfe.mp3", b'"\\udcff\\udcfe.mp3"', b"\\xFF\\xFE.mp3"),
    (b"caf\xe9.mp3", b'"caf\\udce9.mp3"', b"caf\\xE9.mp3"),
    # A surrogate written out is no UTF-8.
    (b"\xed\xb2\x80.mp3", b'"\\udced\\udcb2\\udc80.mp3"', b"\\xED\\xB2\\x80.mp3"),
    # A note, and a byte too many.
    (b"\xf0\x9f\x8e\xb5\x80.mp3", b'"\xf0\x9f\x8e\xb5\\udc80.mp3"',
     b"\xf0\x9f\x8e\xb5\\x80.mp3"),
])
def test_name_that_is_no_utf_8_travels_through_json_and_back(
        folder, brindle, name, as_json, shown):
    (pathlib.Path(os.fsdecode(os.fsencode(folder) + b"/" + name))).write_bytes(audio())
    result = brindle(b"show", b"--json", name)
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.startswith(b'{"file":' + as_json + b",")
    (facts,) = host_facts(result.stdout)
    assert facts["Duration"] == DURATION
    assert os.fsencode(facts["file"]) == name
    # Bytes that are no text would make the whole report binary for other programs.
    assert brindle(b"show", name).stdout == PLAIN_REPORT.encode().replace(b"plain.mp3", shown)


def test_error_names_a_file_that_is_no_utf_8(folder, brindle):
    result = brindle(b"show", b"--json", b"\xff.mp3")
    assert result.stderr == b"brindle: \\xFF.mp3: No such file or directory\n"
    assert host_facts(result.stdout) == [{"file": "\udcff.mp3", "error": NO_SUCH_FILE}]


@pytest.mark.parametrize("name, shown", [
    ("a\nb.mp3", "a\\nb.mp3"),
    ("a\rb\t.mp3", "a\\rb\\t.mp3"),
    ("\x1b]0;x\x07.mp3", "\\x1B]0;x\\x07.mp3"),
    ("\x01\x7f.mp3", "\\x01\\x7F.mp3"),
    ("\x9b31m.mp3", "\\u009B31m.mp3"),
])
def test_control_characters_in_a_name_do_not_break_the_line(folder, brindle, name, shown):
    missing = brindle("show", "--json", name)
    assert missing.returncode == 1
    assert missing.stderr.decode() == f"brindle: {shown}: {NO_SUCH_FILE}\n"
    assert host_facts(missing.stdout) == [{"file": name, "error": NO_SUCH_FILE}]

    (folder / name).write_bytes(audio())
    assert brindle("show", name).stdout.decode() == PLAIN_REPORT.replace("plain.mp3", shown)
    (facts,) = host_facts(brindle("show", "--json", name).stdout)
    assert same_with_types(facts, dict(PLAIN_FACTS, file=name))


# --- usage

@pytest.mark.parametrize("arguments", [
    [], ["show"], ["show", "--json"], ["show", "--"], ["show", "--jsno", "plain.mp3"],
    ["show", "-j", "plain.mp3"], ["sohw", "plain.mp3"], ["plain.mp3"], ["--json", "plain.mp3"],
    ["show", "--json=maybe", "plain.mp3"],
])
def test_wrong_usage_is_told_and_nothing_is_shown(folder, brindle, arguments):
    result = brindle(*arguments)
    assert result.returncode == 2
    assert result.stdout == b""
    assert result.stderr.startswith(b"brindle: ")
    assert b"--help" in result.stderr


def test_wrong_usage_names_what_is_wrong(folder, brindle):
    result = brindle("show", "--jsno\n", "plain.mp3")
    first, hint = result.stderr.decode().splitlines()
    assert "--jsno\\n" in first
    assert hint == "brindle: see 'brindle show --help'"


@pytest.mark.parametrize("arguments", [
    ["--help"], ["-h"], ["show", "--help"], ["show", "-h"], ["show", "plain.mp3", "--help"]])
def test_help_has_an_example(folder, brindle, arguments):
    result = brindle(*arguments)
    assert (result.returncode, result.stderr) == (0, b"")
    text = result.stdout.decode()
    assert "Usage: brindle" in text
    assert re.search(r"^Example:\n  brindle show ", text, re.MULTILINE)
    assert "--version" in text
    if "show" in arguments:
        assert "--json" in text
        assert "PATH" in text


def test_help_lists_the_commands(brindle):
    assert re.search(r"^  show  ", brindle("--help").stdout.decode(), re.MULTILINE)


def test_example_of_help_runs(folder, brindle):
    example = re.search(r"^Example:\n  brindle (.*)$", brindle("show", "--help").stdout.decode(),
                        re.MULTILINE).group(1).split()
    names = [argument for argument in example if argument.endswith(".mp3")]
    assert names
    for name in names:
        (folder / name).write_bytes(audio())
    assert brindle(*example).returncode == 0


@pytest.mark.parametrize("arguments", [["--version"], ["show", "--version"]])
def test_version_is_that_of_the_project(brindle, arguments):
    project = re.search(r"project\(Brindle VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())
    result = brindle(*arguments)
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == f"brindle {project.group(1)}\n"


# --- where the output goes

def closed_pipe():
    reader, writer = os.pipe()
    os.close(reader)
    return writer


@pytest.mark.parametrize("arguments", [
    ["show", "plain.mp3", "nowhere.mp3"], ["show", "--json", "plain.mp3", "nowhere.mp3"],
    ["--help"], ["show", "--version"]])
@pytest.mark.parametrize("signals_restored", [True, False])
def test_closed_pipe_ends_the_program_quietly(folder, brindle, arguments, signals_restored):
    writer = closed_pipe()
    try:
        result = brindle(*arguments, stdout=writer, restore_signals=signals_restored)
    finally:
        os.close(writer)
    # There is no reader, so the missing second file is not reported.
    assert (result.returncode, result.stderr) == (1, b"")


def test_closed_pipe_at_standard_error_changes_nothing(folder, brindle):
    writer = closed_pipe()
    try:
        result = brindle("show", "nowhere.mp3", "plain.mp3", stderr=writer)
    finally:
        os.close(writer)
    assert result.returncode == 1
    assert result.stdout.decode() == PLAIN_REPORT


@pytest.mark.parametrize("arguments", [
    ["show", "plain.mp3"], ["show", "--json", "plain.mp3"], ["show", "--json", "nowhere.mp3"],
    ["--help"], ["--version"]])
def test_full_disk_is_an_error(folder, brindle, arguments):
    if not os.path.exists("/dev/full"):
        pytest.skip("COULD NOT RUN: this system has no /dev/full")
    with open("/dev/full", "wb") as full:
        result = brindle(*arguments, stdout=full)
    assert result.returncode == 1
    assert result.stderr.endswith(b"brindle: standard output: No space left on device\n")


@pytest.mark.parametrize("closed", ["<&-", ">&-", "2>&-", "<&- >&- 2>&-"])
def test_closed_standard_stream_is_never_taken_for_a_file(folder, program, closed):
    before = (folder / "full.mp3").read_bytes()
    result = subprocess.run(
        ["sh", "-c", f'exec "$0" show --json nowhere.mp3 full.mp3 {closed}', program], cwd=folder,
        capture_output=True, check=False, timeout=60)
    assert result.returncode == 1
    assert (folder / "full.mp3").read_bytes() == before
    if ">&-" not in closed.split():
        assert [facts["file"] for facts in host_facts(result.stdout)] == ["nowhere.mp3", "full.mp3"]
    elif closed == ">&-":
        assert result.stderr.endswith(b"brindle: standard output: Bad file descriptor\n")


def test_reader_may_leave_after_the_first_answer(folder, program):
    with subprocess.Popen(
            [program, "show", "--json", *["plain.mp3"] * 5000, "nowhere.mp3"], cwd=folder,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE) as running:
        first = json.loads(running.stdout.readline())
        running.stdout.close()
        errors = running.stderr.read()
        status = running.wait(timeout=60)
    assert first["file"] == "plain.mp3"
    assert (status, errors) == (1, b"")


def test_files_are_only_read(folder, brindle):
    before = {path: (path.read_bytes(), path.stat().st_mtime_ns) for path in folder.iterdir()}
    assert brindle("show", "full.mp3", "plain.mp3").returncode == 0
    assert {path: (path.read_bytes(), path.stat().st_mtime_ns)
            for path in folder.iterdir()} == before
