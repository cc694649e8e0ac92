"""`brindle export` and `brindle import`: points as other playout systems keep them. Expected values
are worked out by hand."""

import json
import random
import subprocess

import mutagen.id3
import pytest

from mp3_bytes import FRAME_HEADER, FRAME_LENGTH, audio, frame, tag, text_frame, user_frame
from tagged_file import AUDIO, RECORD, audio_hash, snapshot

# 120 frames of 1,152 samples at 44,100 Hz: 3,134.69 ms.
END = 3135


def lame_frame(before=576, after=1105):
    """The header frame of an encoder that tells its delay."""
    flags = (0).to_bytes(4, "big")
    delays = (before << 12 | after).to_bytes(3, "big")
    lame = b"LAME3.100" + bytes(12) + delays
    body = FRAME_HEADER + bytes(32) + b"Info" + flags + lame
    return body + bytes(FRAME_LENGTH - len(body))


# 576 and the decoder's 529 samples are 25.06 ms. After the sound are 1,105 - 529: together 38.12 ms.
TRIMMED = lame_frame() + AUDIO
BEFORE, TRIMMED_END = 25, 3135 - 38


def points(cue_in=0, intro=0, sectone=0, outro=0):
    return [user_frame(name, str(value))
            for name, value in (("Cue In", cue_in), ("Intro", intro), ("Sec Tone", sectone),
                                ("OutromSStart", outro)) if value]


def others(**fields):
    return [user_frame(name, text) for name, text in fields.items()]


def utf16_frame(name, value):
    return frame("TXXX", b"\1\xff\xfe" + name.encode("utf-16-le") + b"\0\0\xff\xfe"
                 + value.encode("utf-16-le"))


@pytest.fixture
def song(tmp_path):
    return tmp_path / "song.mp3"


def write(path, *frames, sound=AUDIO):
    path.write_bytes(tag(*frames, padding=4000) + sound)


def fields_of(path):
    """All custom fields, as another program reads them."""
    return {text.desc: str(text.text[0]) for text in mutagen.id3.ID3(path).getall("TXXX")}


OURS = {"TAGGED BY", "Agency", "Cue In", "Intro", "Sec Tone", "OutromSStart"}


def exported(path):
    return {name: text for name, text in fields_of(path).items() if name not in OURS}


def imported(path):
    names = {"Cue In": "cue_in", "Intro": "intro", "Sec Tone": "sectone"}
    return {names[name]: int(text) for name, text in fields_of(path).items() if name in names}


def fine(result):
    assert (result.returncode, result.stderr) == (0, b""), result
    return result.stdout.decode()


def failed(result):
    """Why the one file failed."""
    assert (result.returncode, result.stdout) == (1, b""), result
    text = result.stderr.decode()
    assert text.startswith("brindle: song.mp3: ") and text.count("\n") == 1, text
    return text[len("brindle: song.mp3: "):-1]


def rdxl(start=0, end=END, segue=(-1, -1), talk=(-1, -1), cart=()):
    """Two blanks a level, an element a line."""
    lines = [f"  <{name}>{text}</{name}>\n" for name, text in cart]
    values = (("startPoint", start), ("endPoint", end), ("segueStartPoint", segue[0]),
              ("segueEndPoint", segue[1]), ("talkStartPoint", talk[0]), ("talkEndPoint", talk[1]))
    cut = [f"      <{name}>{value}</{name}>\n" for name, value in values]
    return "<cart>\n" + "".join(lines) + "  <cutList>\n    <cut>\n" + "".join(cut) \
        + "    </cut>\n  </cutList>\n</cart>\n"


# --- export: the frames of a file, its sound, and the fields that it gets

EXPORTED = {
    "cue-in and next": ("liquidsoap", points(1500, 2000, 2500), AUDIO,
                        {"liq_cue_in": "1.500", "liq_cue_out": "3.135",
                         "liq_cross_duration": "0.635"}),
    "cue-in alone": ("liquidsoap", points(7), AUDIO,
                     {"liq_cue_in": "0.007", "liq_cue_out": "3.135"}),
    "next alone": ("liquidsoap", points(sectone=3000), AUDIO,
                   {"liq_cue_in": "0.000", "liq_cue_out": "3.135", "liq_cross_duration": "0.135"}),
    "intro alone": ("liquidsoap", points(intro=1000), AUDIO, {}),
    "next at the end": ("liquidsoap", points(sectone=END), AUDIO,
                        {"liq_cue_in": "0.000", "liq_cue_out": "3.135",
                         "liq_cross_duration": "0.000"}),
    # The player leaves out 25 ms at the beginning and 13 at the end.
    "trimmed": ("liquidsoap", points(1500, 0, 2500), TRIMMED,
                {"liq_cue_in": "1.475", "liq_cue_out": "3.097", "liq_cross_duration": "0.622"}),
    "cue-in in the delay": ("liquidsoap", points(12), TRIMMED,
                            {"liq_cue_in": "0.000", "liq_cue_out": "3.097"}),
    "next in the padding": ("liquidsoap", points(sectone=END), TRIMMED,
                            {"liq_cue_in": "0.000", "liq_cue_out": "3.110",
                             "liq_cross_duration": "0.000"}),
    "cue-out that is set": ("liquidsoap", points(sectone=2500) + others(liq_cue_out="3.0"), AUDIO,
                            {"liq_cue_in": "0.000", "liq_cue_out": "3.0",
                             "liq_cross_duration": "0.500"}),
    "cue-out before the next": ("liquidsoap", points(sectone=2500) + others(liq_cue_out="2.4"),
                                AUDIO, {"liq_cue_in": "0.000", "liq_cue_out": "3.135",
                                        "liq_cross_duration": "0.635"}),
    "cue-out beyond the end": ("liquidsoap", points(1500) + others(liq_cue_out="4"), AUDIO,
                               {"liq_cue_in": "1.500", "liq_cue_out": "3.135"}),
    "cue-in of another that has none here": (
        "liquidsoap", points(sectone=2500) + others(liq_cue_in="0.5"), AUDIO,
        {"liq_cue_in": "0.5", "liq_cue_out": "3.135", "liq_cross_duration": "0.635"}),
    "same value in another form": ("liquidsoap", points(1500) + others(liq_cue_in="1.5"), AUDIO,
                                   {"liq_cue_in": "1.5", "liq_cue_out": "3.135"}),
    "other letters": ("liquidsoap", points(1500) + others(LIQ_CUE_IN="1.5"), AUDIO,
                      {"liq_cue_in": "1.500", "liq_cue_out": "3.135"}),
    "what is not a number": ("liquidsoap", points(1500) + others(liq_cue_in="soon", liq_cue_out="nan"),
                          AUDIO, {"liq_cue_in": "1.500", "liq_cue_out": "3.135"}),
    "azuracast": ("azuracast", points(1500, 2000, 2500), AUDIO,
                  {"cue_in": "1.500", "cue_out": "3.135", "cross_start_next": "2.500",
                   "liq_cross_start_next": "2.500"}),
    "azuracast, trimmed": ("azuracast", points(1500, 2000, 2500), TRIMMED,
                           {"cue_in": "1.475", "cue_out": "3.097", "cross_start_next": "2.475",
                            "liq_cross_start_next": "2.475"}),
    "fades and a cue-out from the end stay": (
        "azuracast", points(1500) + others(fade_in="2", fade_out="3.5", cue_out="-0.5"), AUDIO,
        {"cue_in": "1.500", "cue_out": "-0.5", "fade_in": "2", "fade_out": "3.5"}),
    "rivendell": ("rivendell", points(1500, 2000, 2500), AUDIO,
                  {"rdxl": rdxl(1500, END, (2500, END), (0, 2000))}),
    "rivendell, nothing trimmed": ("rivendell", points(1500), TRIMMED, {"rdxl": rdxl(1500)}),
    "rivendell, intro alone": ("rivendell", points(intro=2000), AUDIO,
                               {"rdxl": rdxl(talk=(0, 2000))}),
    "rivendell, what the cart has": (
        "rivendell",
        [text_frame("TIT2", "Rock & \"Roll\" isn't <all>"), text_frame("TPE1", "Größe"),
         text_frame("TALB", "A"), text_frame("TYER", "2011"), text_frame("TPUB", "P"),
         text_frame("TCOM", "C"), user_frame("Agency", "Hill & Dale"), *points(1)], AUDIO,
        {"rdxl": rdxl(1, cart=(("title", "Rock &amp; &quot;Roll&quot; isn&apos;t &lt;all&gt;"),
                               ("artist", "Größe"), ("album", "A"), ("year", "2011"),
                               ("agency", "Hill &amp; Dale"), ("publisher", "P"),
                               ("composer", "C")))}),
    "rivendell, a line feed in a title": (
        "rivendell", [text_frame("TIT2", "a\r\nb\tc"), *points(1)], AUDIO,
        {"rdxl": rdxl(1, cart=(("title", "a  b c"),))}),
}
RDXL_OF_ANOTHER = """<?xml version='1.0'?>
<!-- a & b </cut> -->
<cart xsi='">'>
  <number>010001</number>
  <title>Tom &quot;&amp;&quot; &#246; Jerry</title>
  <cutList>
    <cut>
      <cutName>010001_001</cutName>
      <startPoint>0</startPoint>
      <endPoint>3000</endPoint>
      <segueStartPoint>-1</segueStartPoint>
      <segueEndPoint>-1</segueEndPoint>
      <segueGain>-3000</segueGain>
      <talkStartPoint>100</talkStartPoint>
      <talkEndPoint>900</talkEndPoint>
    </cut>
    <cut>
      <startPoint>5</startPoint>
    </cut>
  </cutList>
</cart>"""


@pytest.mark.parametrize("name", EXPORTED)
def test_export_writes_what_the_system_reads(brindle, song, name):
    system, frames, sound, expected = EXPORTED[name]
    write(song, *frames, sound=sound)
    before = song.read_bytes()
    fine(brindle("export", "--to", system, "song.mp3"))
    assert exported(song) == expected
    once = snapshot(song)
    again = fine(brindle("export", "--to", system, "song.mp3"))
    assert again.startswith("song.mp3: nothing written, ")
    assert snapshot(song) == once
    assert song.read_bytes().endswith(sound)
    codes = [reason["code"] for reason in
             json.loads(brindle("check", "--json", "--quiet", "song.mp3").stdout)["reasons"]]
    if "that has none here" not in name:
        assert "points-disagree" not in codes
    if before != once[0]:
        assert brindle("undo").returncode == 0
        assert song.read_bytes() == before


def test_export_changes_nothing_of_an_rdxl_but_the_points(brindle, song):
    write(song, user_frame("rdxl", RDXL_OF_ANOTHER), *points(10, 1000, 2500))
    fine(brindle("export", "--to", "rivendell", "song.mp3"))
    wanted = RDXL_OF_ANOTHER
    for old, new in (("<startPoint>0<", "<startPoint>10<"), ("<segueStartPoint>-1<",
                     "<segueStartPoint>2500<"), ("<segueEndPoint>-1<", "<segueEndPoint>3000<"),
                     ("<talkStartPoint>100<", "<talkStartPoint>0<"),
                     ("<talkEndPoint>900<", "<talkEndPoint>1000<")):
        assert old in wanted
        wanted = wanted.replace(old, new, 1)
    assert fields_of(song)["rdxl"] == wanted
    once = snapshot(song)
    assert "nothing written" in fine(brindle("export", "--to", "rivendell", "song.mp3"))
    assert snapshot(song) == once


@pytest.mark.parametrize("title,encoding", [("Größe", 0), ("it’s", 1), ("€", 1), ("Жук", 1)])
def test_rdxl_is_in_latin1_where_that_holds_it(brindle, song, title, encoding):
    """Quotes and the euro sign are in the code page of hosts, but not in ISO-8859-1."""
    write(song, utf16_frame("Other", title),
          frame("TIT2", b"\1\xff\xfe" + title.encode("utf-16-le")), *points(1500))
    fine(brindle("export", "--to", "rivendell", "song.mp3"))
    (made,) = [text for text in mutagen.id3.ID3(song).getall("TXXX") if text.desc == "rdxl"]
    assert (made.encoding, made.text[0]) == (encoding, rdxl(1500, cart=(("title", title),)))


# --- import

IMPORTED = {
    "cue-in and overlap": ("liquidsoap", {"liq_cue_in": "1.5", "liq_cue_out": "3.135",
                                          "liq_cross_duration": "0.635"}, AUDIO,
                           {"cue_in": 1500, "sectone": 2500}),
    "overlap without a cue-out": ("liquidsoap", {"liq_cross_duration": "0.635"}, AUDIO,
                                  {"sectone": 2500}),
    "overlap of an earlier cue-out": ("liquidsoap", {"liq_cue_out": "3", "liq_cross_duration": "1"},
                                      AUDIO, {"sectone": 2000}),
    "earlier cue-out": ("liquidsoap", {"liq_cue_out": "3"}, AUDIO, {"sectone": 3000}),
    "cue-out at the end": ("liquidsoap", {"liq_cue_out": "3.13", "liq_cue_in": "0"}, AUDIO, {}),
    "cue-in with two places at the end": ("liquidsoap", {"liq_cue_in": "3.14"}, AUDIO,
                                          {"cue_in": END}),
    "player that trims": ("liquidsoap", {"liq_cue_in": "1.475", "liq_cue_out": "3.097",
                                         "liq_cross_duration": "0.622"}, TRIMMED,
                          {"cue_in": 1500, "sectone": 2500}),
    "letters": ("liquidsoap", {"LIQ_CUE_IN": "1.5"}, AUDIO, {"cue_in": 1500}),
    "blanks": ("liquidsoap", {"liq_cue_in": " 1.5 "}, AUDIO, {"cue_in": 1500}),
    "empty": ("liquidsoap", {"liq_cue_in": "", "liq_cue_out": ""}, AUDIO, {}),
    "azuracast": ("azuracast", {"cue_in": "1.5", "cross_start_next": "2.5", "fade_in": "x"}, AUDIO,
                  {"cue_in": 1500, "sectone": 2500}),
    "autocue": ("azuracast", {"liq_cross_start_next": "2.5"}, AUDIO, {"sectone": 2500}),
    "both agree": ("azuracast", {"liq_cross_start_next": "2.5", "cross_start_next": "2.50"}, AUDIO,
                   {"sectone": 2500}),
    "cue-out from the end": ("azuracast", {"cue_out": "-0.135"}, AUDIO, {"sectone": 3000}),
    "rivendell": ("rivendell", {"rdxl": rdxl(1500, END, (2500, END), (0, 2000))}, TRIMMED,
                  {"cue_in": 1500, "intro": 2000, "sectone": 2500}),
    "rivendell without points": ("rivendell", {"rdxl": rdxl(-1, -1)}, AUDIO, {}),
    "rivendell without a segue": ("rivendell", {"rdxl": rdxl(0, 3000)}, AUDIO, {"sectone": 3000}),
    "rdxl of another": ("rivendell", {"RDXL": RDXL_OF_ANOTHER}, AUDIO,
                        {"intro": 900, "sectone": 3000}),
    "rdxl on one line": ("rivendell",
                         {"rdxl": "<cart><cutList><cut><startPoint>7</startPoint></cut></cutList>"
                                  "</cart>"}, AUDIO, {"cue_in": 7}),
}


@pytest.mark.parametrize("name", IMPORTED)
def test_import_sets_what_the_system_says(brindle, song, name):
    system, fields, sound, expected = IMPORTED[name]
    write(song, *others(**fields), sound=sound)
    before = song.read_bytes()
    output = fine(brindle("import", "--from", system, "song.mp3"))
    assert imported(song) == expected
    if any(fields.values()):
        assert exported(song) == fields  # stay as they are
    assert song.read_bytes().endswith(sound)
    if not expected:
        assert output == f"song.mp3: nothing written, it has no points of {system}\n"
        assert song.read_bytes() == before


HOSTILE = {
    "no number": ("liquidsoap", {"liq_cue_in": "soon"}, 'liq_cue_in is "soon", no number'),
    "decimal comma": ("liquidsoap", {"liq_cue_in": "1,5"}, 'liq_cue_in is "1,5", no number'),
    "nan": ("liquidsoap", {"liq_cue_in": "nan"}, 'liq_cue_in is "nan", no number'),
    "infinity": ("azuracast", {"cue_out": "-inf"}, 'cue_out is "-inf", no number'),
    "too large": ("azuracast", {"cue_in": "1e400"}, 'cue_in is "1e400", no number'),
    "large": ("azuracast", {"cue_in": "9" * 400},
              'cue_in is "' + "9" * 40 + '...", beyond any file\'s end'),
    "line feed": ("liquidsoap", {"liq_cue_in": "1\n2"}, 'liq_cue_in is "1\\n2", no number'),
    "negative": ("liquidsoap", {"liq_cue_in": "-1"}, 'liq_cue_in is "-1", before the beginning'),
    "cue-out before the beginning": ("azuracast", {"cue_out": "-4"},
                                     'cue_out is "-4", before the beginning'),
    "next from the end": ("azuracast", {"cross_start_next": "-2"},
                          'cross_start_next is "-2", before the beginning'),
    "beyond the end": ("liquidsoap", {"liq_cue_in": "3.146"},
                       "liq_cue_in is at 3146 ms, the audio ends at 3135 ms"),
    "overlap beyond the beginning": ("liquidsoap", {"liq_cross_duration": "3.2"},
                                     'liq_cross_duration is "3.2", before the beginning'),
    "disagreement": ("azuracast", {"cross_start_next": "2", "liq_cross_start_next": "2.011"},
                     "cross_start_next is at 2000 ms, liq_cross_start_next at 2011 ms"),
    "no xml": ("rivendell", {"rdxl": "<cart><cut>"}, "rdxl is no XML that can be read"),
    "no cart": ("rivendell", {"rdxl": "<a/>"}, "rdxl has no cart with a cut"),
    "no cut": ("rivendell", {"rdxl": "<cart><cutList/></cart>"}, "rdxl has no cart with a cut"),
    "no element": ("rivendell", {"rdxl": "soon"}, "rdxl is no XML that can be read"),
    "rdxl without a number": ("rivendell", {"rdxl": rdxl("1.5")},
                              'startPoint in rdxl is "1.5", no whole number'),
    "large number in rdxl": ("rivendell", {"rdxl": rdxl("9" * 30)},
                             'startPoint in rdxl is "' + "9" * 30 + '", no whole number'),
    "elements in a point": ("rivendell", {"rdxl": rdxl("<a>1</a>")},
                            'startPoint in rdxl is "", no whole number'),
    "negative in rdxl": ("rivendell", {"rdxl": rdxl(0, END, (-2, -1))},
                         'segueStartPoint in rdxl is "-2", before the beginning'),
    "beyond the end in rdxl": ("rivendell", {"rdxl": rdxl(0, END, (3200, 3200))},
                               "segueStartPoint in rdxl is at 3200 ms, the audio ends at 3135 ms"),
    "deep xml": ("rivendell", {"rdxl": "<a>" * 1600}, "rdxl is no XML that can be read"),
    "entities of its own": (
        "rivendell", {"rdxl": '<!DOCTYPE c [<!ENTITY a "1">]>' + rdxl("&a;")},
        'startPoint in rdxl is "&a;", no whole number'),
}


@pytest.mark.parametrize("name", HOSTILE)
def test_import_names_what_it_cannot_take(brindle, song, name):
    system, fields, reason = HOSTILE[name]
    write(song, *others(**fields))
    before = snapshot(song)
    assert failed(brindle("import", "--from", system, "song.mp3")) == reason
    assert snapshot(song) == before


@pytest.mark.plain_build
def test_large_xml_costs_little_memory(program, tmp_path):
    """Of a text 65,536 bytes are read. With all of its elements it would take gigabytes."""
    song = tmp_path / "song.mp3"
    write(song, user_frame("rdxl", "<cart><cutList><cut>" + "<a>" * 10_000_000), sound=AUDIO * 700)
    before = snapshot(song)
    done = subprocess.run(["bash", "-c", 'ulimit -v 300000; exec "$@"', "bash", program, "import",
                           "--from", "rivendell", song], stdin=subprocess.DEVNULL, check=False,
                          capture_output=True)
    assert (done.returncode, done.stderr) == (
        1, f"brindle: {song}: rdxl is no XML that can be read\n".encode())
    assert snapshot(song) == before


def test_import_keeps_what_is_set_and_overwrites_on_demand(brindle, song):
    write(song, *points(700), *others(liq_cue_in="1.5", liq_cue_out="3"))
    fine(brindle("import", "--from", "liquidsoap", "song.mp3"))
    assert imported(song) == {"cue_in": 700, "sectone": 3000}
    before = snapshot(song)
    assert fine(brindle("import", "--from", "liquidsoap", "song.mp3")) == (
        "song.mp3: nothing written, all values are already set\n")
    assert snapshot(song) == before
    fine(brindle("import", "--from", "liquidsoap", "--overwrite", "song.mp3"))
    assert imported(song) == {"cue_in": 1500, "sectone": 3000}
    before = snapshot(song)
    assert fine(brindle("import", "--from", "liquidsoap", "--overwrite", "song.mp3")) == (
        "song.mp3: nothing written, the file already has these values\n")
    assert snapshot(song) == before


# --- there and back

def random_point(chance):
    return chance.choice([0, 1, 999, 1000, END - 1, END, chance.randint(1, END)])


@pytest.mark.parametrize("sound", [AUDIO, TRIMMED], ids=["plain", "with a delay"])
@pytest.mark.parametrize("system", ["liquidsoap", "azuracast", "rivendell"])
def test_there_and_back_leaves_the_values(brindle, tmp_path, system, sound):
    chance = random.Random(7)
    trims = sound is TRIMMED and system != "rivendell"
    expected = {}
    for number in range(150):
        name = f"{number:03}.mp3"
        values = {"cue_in": random_point(chance), "sectone": random_point(chance)}
        if system == "rivendell":
            values["intro"] = random_point(chance)
        write(tmp_path / name, *points(**values), sound=sound)
        # A player that trims begins where the delay ends: there is nothing before.
        expected[name] = {key: value for key, value in values.items()
                          if value > (BEFORE if trims else 0)}
    for command in (["export", "--to", system],
                    ["set", "--remove", "cue-in", "--remove", "sectone", "--remove", "intro"],
                    ["import", "--from", system]):
        fine(brindle(*command, "--yes", "."))
        if command[0] == "set":
            assert all(imported(tmp_path / name) == {} for name in expected)
    assert {name: imported(tmp_path / name) for name in expected} == expected


# --- what else is in the file

@pytest.mark.parametrize("system", ["liquidsoap", "azuracast", "rivendell"])
def test_all_else_stays_byte_for_byte(brindle, song, system):
    frames = [frame("TIT2", b"\1\xff\xfe" + "Жук".encode("utf-16-le")),
              frame("PRIV", b"me\0" + bytes(range(256))), frame("APIC", b"\0image/png\0\3\0" + b"p" * 900),
              *points(1500, 2000, 2500)]
    song.write_bytes(tag(*frames, padding=40) + AUDIO + RECORD)
    hash_before = audio_hash(song.read_bytes())
    fine(brindle("export", "--to", system, "song.mp3"))
    content = song.read_bytes()
    for one in frames:
        assert one in content
    assert content.endswith(AUDIO + RECORD)
    assert audio_hash(content) == hash_before


def test_check_and_normalize_leave_the_fields_alone(brindle, song):
    write(song, text_frame("TIT2", "Größe & Co"), text_frame("TPE1", "A"),
          *points(1500, 2000, 2500), sound=TRIMMED)
    for system in ("liquidsoap", "azuracast", "rivendell"):
        fine(brindle("export", "--to", system, "song.mp3"))
    before, fields = snapshot(song), fields_of(song)
    assert len(exported(song)) == 8
    assert fine(brindle("check", "--notes", "--quiet", "song.mp3")) == "song.mp3: ok\n"
    assert snapshot(song) == before
    assert fine(brindle("normalize", "song.mp3")) == (
        "song.mp3: nothing written, the file already has these values\n")
    assert snapshot(song) == before
    # Also where there is something to do.
    fine(brindle("set", "--unicode", "--album", "Жук", "song.mp3"))
    write(song, frame("TALB", b"\1\xff\xfe" + "Ä".encode("utf-16-le")),
          *[user_frame(name, text) for name, text in fields.items()])
    fine(brindle("normalize", "song.mp3"))
    assert fields_of(song) == fields


def test_check_compares_in_any_letters(brindle, song):
    write(song, *points(1500), *others(LIQ_CUE_IN="1.6"))
    assert b"points-disagree" in brindle("check", "song.mp3").stdout


# --- what is refused, and how it is called

REFUSED = {
    "cue-in beyond the end": (points(END + 1), "cue-in at 3136 ms, the audio ends at 3135 ms"),
    "negative": (points(sectone=-1), "secondary tone at -1 ms is before the beginning"),
    "broken rdxl": (points(1) + others(rdxl="<cart>"), "rdxl is no XML that can be read"),
    "rdxl without a number": (
        points(1) + others(rdxl="<cart><cutList><cut><startPoint/></cut></cutList></cart>"),
        "rdxl has no startPoint that could be changed"),
    "rdxl without a cut": (points(1) + others(rdxl="<cart/>"), "rdxl has no cart with a cut"),
}


@pytest.mark.parametrize("name", REFUSED)
def test_export_refuses(brindle, song, name):
    frames, reason = REFUSED[name]
    write(song, *frames)
    before = snapshot(song)
    assert failed(brindle("export", "--to", "rivendell", "song.mp3")) == reason
    assert snapshot(song) == before


def test_rdxl_that_hosts_could_not_step_over_is_refused(brindle, song):
    """Hosts would not find the fields after it."""
    write(song, text_frame("TIT2", "t" * 2000), text_frame("TPE1", "a" * 2900), *points(1))
    before = snapshot(song)
    reason = failed(brindle("export", "--to", "rivendell", "song.mp3"))
    assert "characters; more than" in reason
    assert snapshot(song) == before


def test_file_without_audio_fails(brindle, song):
    song.write_bytes(tag(*points(1500), *others(liq_cue_in="1"), padding=100) + bytes(9000))
    assert failed(brindle("export", "--to", "liquidsoap", "song.mp3")) == "no MPEG audio found"
    assert failed(brindle("import", "--from", "liquidsoap", "--overwrite", "song.mp3")) == (
        "no MPEG audio found")


def test_file_without_points_is_left(brindle, song):
    write(song, text_frame("TIT2", "Song"))
    before = snapshot(song)
    for system in ("liquidsoap", "azuracast", "rivendell"):
        assert fine(brindle("export", "--to", system, "song.mp3")) == (
            f"song.mp3: nothing written, it has no points for {system}\n")
        assert fine(brindle("import", "--from", system, "song.mp3")) == (
            f"song.mp3: nothing written, it has no points of {system}\n")
    assert snapshot(song) == before


@pytest.mark.parametrize("command", [("export", "--to"), ("import", "--from")])
def test_it_is_called_like_other_commands_that_change_files(brindle, song, command):
    write(song, *points(1500), *others(liq_cue_out="3"))
    call = [*command, "liquidsoap"]
    before = snapshot(song)
    dry = brindle(*call, "--dry-run", ".")
    assert dry.returncode == 0 and b"dry run, nothing is written" in dry.stdout
    assert dry.stderr.startswith(b"The journal would have about ")
    assert snapshot(song) == before
    refused = brindle(*call, ".")
    assert refused.returncode == 2 and b"--yes" in refused.stderr
    assert brindle(*command, "winamp", "song.mp3").returncode == 2
    assert brindle(command[0], "song.mp3").returncode == 2
    both = brindle(*call, "none.mp3", "song.mp3")
    assert both.returncode == 1 and both.stderr.startswith(b"brindle: none.mp3: ")
    assert snapshot(song) != before
    assert brindle("undo").returncode == 0
    assert song.read_bytes() == before[0]
    fine(brindle(*call, "--yes", "-", stdin=None, input=b"song.mp3\n"))
    assert song.read_bytes() != before[0]


# --- other programs

@pytest.mark.deep
def test_taglib_reads_the_rdxl_that_was_written(brindle, song):
    import taglib  # pylint: disable=import-outside-toplevel

    for title in ("Rock & 'Roll'", "Größe", "it’s", "Жук"):
        write(song, frame("TIT2", b"\1\xff\xfe" + title.encode("utf-16-le")),
              *points(1500, 2000, 2500))
        fine(brindle("export", "--to", "rivendell", "song.mp3"))
        escaped = title.replace("&", "&amp;").replace("'", "&apos;")
        assert taglib.File(str(song)).tags["RDXL"] == [
            rdxl(1500, END, (2500, END), (0, 2000), (("title", escaped),))]


SCRIPT = """
settings.init.allow_root.set(true)
source = {cut}(once(single("{song}")))
source.on_metadata(fun(known) -> begin
  def tell(name)
    print("#{{name}}=#{{known[name]}}")
  end
  list.iter(tell, {names})
end)
clock.assign_new(sync="none", [source])
output.file(%wav, "{out}", fallible=true, on_stop=shutdown, source)
"""


def played(tmp_path, song, names, cut=""):
    """What Liquidsoap says of the file, and the samples that it plays."""
    script = tmp_path / "play.liq"
    out = tmp_path / "out.wav"
    script.write_text(SCRIPT.format(song=song, names=json.dumps(names), out=out, cut=cut))
    done = subprocess.run(["liquidsoap", script], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, timeout=120, check=False)
    told = dict(line.split("=", 1) for line in done.stdout.splitlines() if "=" in line
                and line.split("=", 1)[0] in names)
    return told, out.read_bytes()[44:]


@pytest.mark.deep
def test_liquidsoap_reads_what_was_written(brindle, song, tmp_path, tone):
    write(song, *points(1500, 2000, 9000), sound=tone)
    for system in ("liquidsoap", "azuracast"):
        fine(brindle("export", "--to", system, "song.mp3"))
    written = exported(song)
    assert len(written) == 7
    told, _ = played(tmp_path, song, sorted(written))
    assert told == written


@pytest.mark.deep
def test_liquidsoap_begins_where_the_cue_in_is(brindle, song, tmp_path, tone):
    """A second of silence is before the tone; the encoder's delay, which it leaves out, is no part
    of that."""
    import numpy  # pylint: disable=import-outside-toplevel

    write(song, sound=tone)
    fine(brindle("listen", "--set", "cue-in", "song.mp3"))
    fine(brindle("export", "--to", "liquidsoap", "song.mp3"))
    _, sound = played(tmp_path, song, ["liq_cue_in"], "cue_cut")
    samples = numpy.frombuffer(sound, "<i2").reshape(-1, 2)[:, 0]
    first = int(numpy.argmax(numpy.abs(samples.astype(int)) > 1000))
    assert first < 0.015 * 44100
    # Neither is more left out than the silence: the rest of 10 s of tone and one of silence.
    assert 10.99 * 44100 < len(samples) < 11.02 * 44100
