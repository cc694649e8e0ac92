"""`brindle normalize --repair-text`: text in a wrong encoding is put right where that is certain."""

import json
import re

import pytest
from mutagen.id3 import COMM, ID3, IPLS, TALB, TIT2, TPE1, TXXX, USLT

from tagged_file import AUDIO, AUDIO_HASH, audio_hash, snapshot

CODE_PAGES = {"utf-8": "utf-8", "windows-1251": "cp1251", "koi8-r": "koi8-r",
              "iso-8859-5": "iso8859-5", "windows-1253": "cp1253", "iso-8859-7": "iso8859-7"}
CYRILLIC = ("windows-1251", "koi8-r", "iso-8859-5")
GREEK = ("windows-1253", "iso-8859-7")

RUSSIAN = ("Владимир Высоцкий", "Группа крови", "Земфира", "Звезда по имени Солнце",
           "Би-2 — Полковнику никто не пишет", "Кино", "Последний герой", "Алла Пугачёва",
           "Миллион алых роз", "Машина времени (live 1999)", "Ария", "Беспечный ангел",
           "АКВАРИУМ", "ЧИЖ & Co", "«Город золотой»", "Чайковский П. И.", "Подмосковные вечера",
           "Комбинация", "Ночные снайперы feat. Би-2", "Океан Ельзи", "Тодор Колев")
GREEK_NAMES = ("Μίκης Θεοδωράκης", "Νάνα Μούσχουρη", "Ελλάδα", "Χάρις Αλεξίου", "Ζορμπάς",
               "Τα παιδιά του Πειραιά", "Γιώργος Νταλάρας", "Ο κόσμος", "ΔΗΜΗΤΡΗΣ ΜΗΤΡΟΠΑΝΟΣ",
               "Μαρινέλλα - Live", "Σ' αγαπώ")
LATIN = ("Müller", "Dvořák: Rusalka", "Motörhead — Überfall", "Beyoncé", "naïve café", "Ångström",
         "日本語の歌", "Кино – Группа крови", "“Señorita”", "Sigur Rós – ágætis byrjun")


@pytest.fixture
def song(tmp_path):
    return tmp_path / "song.mp3"


def misread(text, code_page, read_as="latin-1"):
    return text.encode(CODE_PAGES[code_page]).decode(read_as)


def write(path, *frames, version=3):
    path.write_bytes(AUDIO * 3)
    made = ID3()
    for one in frames:
        made.add(one)
    made.save(path, v2_version=version, v1=0)


def repair(brindle, code_page, *options):
    result = brindle("normalize", "--repair-text", code_page, *options, "song.mp3")
    assert result.returncode == 0, result.stderr
    return result.stdout.decode()


def reported(brindle):
    """The user-defined texts that `check` calls misread."""
    checked = json.loads(brindle("check", "--json", "--notes", "song.mp3").stdout)
    texts = [found["text"] for found in checked["reasons"] if found["code"] == "mojibake"]
    return set(re.findall(r'TXXX "(\d+)"', " ".join(texts)))


def repaired_of(brindle, song, texts, code_page, given):
    """By text, what became of it; nothing for those that `check` does not report."""
    wrong = {}
    for number, text in enumerate(texts):
        try:
            wrong[str(number)] = misread(text, code_page)
        except UnicodeEncodeError:
            continue  # the page has no such characters
    write(song, *(TXXX(0, name, text) for name, text in wrong.items()))
    names = reported(brindle)
    output = repair(brindle, given)
    read = {name: str(ID3(song)[f"TXXX:{name}"]) for name in wrong}
    for name, text in wrong.items():
        if name not in names:
            assert read[name] == text
        elif read[name] == text:
            assert f'"{name}" as it is: its text is misread, but not certainly of {given}' in output
        else:
            assert f'"{name}": "{read[name]}"' in output
    assert reported(brindle) == {name for name in names if read[name] == wrong[name]}
    once = snapshot(song)
    assert "nothing written" in repair(brindle, given) and snapshot(song) == once
    assert audio_hash(song.read_bytes()) == AUDIO_HASH
    return {texts[int(name)]: read[name] for name in names}


@pytest.mark.parametrize("code_page, texts, most", [
    ("windows-1251", RUSSIAN, 18), ("koi8-r", RUSSIAN, 16), ("iso-8859-5", RUSSIAN, 12),
    ("windows-1253", GREEK_NAMES, 9), ("iso-8859-7", GREEK_NAMES, 9), ("utf-8", RUSSIAN, 21),
    ("utf-8", GREEK_NAMES, 11), ("utf-8", LATIN, 10)])
def test_repaired_texts_are_the_right_ones(brindle, song, code_page, texts, most):
    made = repaired_of(brindle, song, texts, code_page, code_page)
    right = [text for text in made if made[text] == text]
    assert {text: made[text] for text in made
            if made[text] not in (text, misread(text, code_page))} == {}
    assert len(right) >= most, set(texts) - set(right)


@pytest.mark.parametrize("code_page, given, texts", [
    *((page, given, RUSSIAN) for page in CYRILLIC for given in (*CYRILLIC, *GREEK, "utf-8")
      if given != page),
    *((page, given, GREEK_NAMES) for page in GREEK for given in (*CYRILLIC, "utf-8"))])
def test_nothing_is_repaired_by_a_wrong_code_page(brindle, song, code_page, given, texts):
    made = repaired_of(brindle, song, texts, code_page, given)
    assert {text: made[text] for text in made if made[text] != misread(text, code_page)} == {}


@pytest.mark.parametrize("code_page", CODE_PAGES)
@pytest.mark.parametrize("text", [
    "Müller", "Größe", "Façade déjà vu", "ÄÖÜ", "İstanbul".encode("cp1254").decode("latin-1"),
    "Ελλάδα", "Кино", "plain"])
def test_right_text_stays(brindle, song, text, code_page):
    write(song, TIT2(0 if all(ord(c) < 256 for c in text) else 1, text))
    assert "repaired" not in repair(brindle, code_page)
    assert ID3(song)["TIT2"].text == [text]


def test_each_kind_of_text_is_repaired(brindle, song):
    bad = misread("Müller", "utf-8", "cp1252")
    write(song, TIT2(1, bad), TPE1(0, misread("Größe", "utf-8")), TALB(0, "plain"),
          COMM(1, "eng", "note", bad), USLT(1, "eng", "", bad), TXXX(1, "Who", bad),
          IPLS(1, [["producer", bad]]))
    dry = repair(brindle, "utf-8", "--dry-run")
    assert '  repaired TIT2:1: "Müller"\n' in dry and str(ID3(song)["TIT2"]) == bad
    repair(brindle, "utf-8")
    read = ID3(song)
    assert str(read["TIT2"]) == "Müller" and str(read["TPE1"]) == "Größe"
    assert str(read["TALB"]) == "plain"
    assert str(read["COMM:note:eng"]) == "Müller" and read["USLT::eng"].text == "Müller"
    assert str(read["TXXX:Who"]) == "Müller"
    assert read["TIPL"].people == [["producer", "Müller"]]
    facts = json.loads(brindle("show", "--json", "song.mp3").stdout)
    assert facts["Title"] == facts["tag"]["title"] == "Müller", "hosts read it, too"
    assert brindle("undo").returncode == 0
    assert str(ID3(song)["TIT2"]) == bad


def test_version_2_4_is_repaired_while_it_is_converted(brindle, song):
    write(song, TIT2(3, misread("Müller", "utf-8")), TPE1(3, ["A", misread("Größe", "utf-8")]),
          version=4)
    repair(brindle, "utf-8")
    assert ID3(song).version[:2] == (2, 3)
    assert str(ID3(song)["TIT2"]) == "Müller" and str(ID3(song)["TPE1"]) == "A/Größe"


def test_text_that_was_misread_twice(brindle, song):
    write(song, TIT2(1, misread(misread("Müller läuft", "utf-8"), "utf-8")))
    repair(brindle, "utf-8")
    assert str(ID3(song)["TIT2"]) == "Müller läuft"
    assert "nothing written" in repair(brindle, "utf-8")


def test_text_that_was_cut_in_a_character_is_listed(brindle, song):
    bad = misread("Müller läuft", "utf-8") + "Ã"
    write(song, TIT2(0, bad))
    assert "kept TIT2:1 as it is: its text is misread, but not certainly of utf-8" in (
        repair(brindle, "utf-8"))
    assert str(ID3(song)["TIT2"]) == bad


def test_cyrillic_has_no_form_that_hosts_read(brindle, song):
    write(song, TIT2(0, misread("Владимир Высоцкий", "windows-1251")))
    output = repair(brindle, "windows-1251")
    assert "; kept TIT2:1 as it is: no form of it reads the same" in output
    assert str(ID3(song)["TIT2"]) == "Владимир Высоцкий"


def test_texts_stay_without_the_option(brindle, song):
    bad = misread("Müller", "utf-8")
    write(song, TIT2(0, bad))
    assert brindle("normalize", "song.mp3").returncode == 0
    assert str(ID3(song)["TIT2"]) == bad


def test_unknown_code_page(brindle, song):
    write(song, TIT2(0, "x"))
    result = brindle("normalize", "--repair-text", "windows-1252", "song.mp3")
    assert (result.returncode, result.stdout) == (2, b"")
