"""`brindle check` and texts in another encoding than a tag says: how many it recognises, and that it
takes no correct text for such a one.
"""

import json
import random
import re

import pytest

from mp3_bytes import frame, tag

# Words of titles, of which each has a letter that is not ASCII; and words between them.
LANGUAGES = {
    "German": ("Männer Frühling für Über Größe Straße schön Träume Mädchen Glück müde Füße ÄRGER Öl "
               "Küsse Zärtlichkeit Grüße Überall Äpfel heißt", "und der die mit dir Nacht Leben im"),
    "French": ("Été été où à déjà Noël cœur Français garçon âme forêt fenêtre fête même très Où "
               "rêve sœur Ça naïve ÉTÉ DÉJÀ", "la vie en rose le monde et mon amour"),
    "Spanish": ("corazón niña mañana Canción Adiós más señor camión Árbol sueño pequeña ¿Dónde? ¡Olé! "
                "según Ángel AÑOS pasión", "de la vida y el amor mi tierra"),
    "Portuguese": ("coração São não Canção você manhã João Água irmã ÁGUA então paixão saudações "
                   "MANHÃ IRMÃ É À café", "de uma noite e o mar que vem"),
    "Italian": ("perché città più così felicità È libertà Volerò già sarà però verità lassù POTRÀ "
                "Cioè né", "il mondo e la notte di un amore"),
    "Swedish": ("Å PÅ på går är än över Ängel Öppna själ hjärta för två mör FÖR ÅR sjö blå öar älv",
                "den vackra dagen jag vill med dig och"),
    "Danish": ("kærlighed på Så før æble øl Ærlig Ørken hjælp Århus går natløb gå blå ØEN Ø sjæl",
               "en sommer dag og jeg vil hjem til"),
    "Icelandic": ("Það ég þú Ísland ástin Ó nótt þú ætíð Hoppípolla hvíslar þögn Æði Öll ró Ást "
                  "Svefn-g-englar í á ljósið", "og minn hjarta sem er Sigur"),
    "Polish": ("miłość dzień Życie noc że się już Zażółć gęślą jaźń Łódź świat Źle ŻYCIE będę",
               "moja to nie do ja jest tam"),
    "Czech": ("láska Čas život můj Říkej příběh nebe že ještě světlo Žena dům ŽÁR věčně Šťastný úsměv",
              "moje a ty jsi na to je"),
    "Russian": ("Группа крови Звезда Кукушка Кино Пачка Ночь любовь Перемен война дождь Солнце мама "
                "город ПЕСНЯ Ещё море", "и на по в мы где"),
    "Greek": ("Τα παιδιά του Πειραιά θάλασσα Ζορμπά καρδιά νύχτα Αγάπη Μοίρα ουρανός όνειρο ΖΩΗ "
              "Σαββατόβραδο Μάτια Χωρίς Ένα", "και το μου σε για"),
}
PATTERNS = ("{0}", "{0} {1}", "{1} {0} {1}", "{0} {1} {0}", "« {0} »", "„{0}“ {1}", "“{0}”", "»{0}«",
            "»{0}»", "{0}… {1}", "{0}…", "{1} – {0}", "{0} (Live ’99)", "{0}!", "L’{0} {1}",
            "{0}’s {1}", "{0} № 1", "{0} © {1}", "{0}: {1} & {0}")
# Code pages that are not Latin, with the mark № in none of their texts but these.
CODE_PAGES = {"Russian": ("cp1251", "koi8-r"), "Greek": ("cp1253",)}
TEXTS_PER_LANGUAGE = 850
TEXTS_PER_FILE = 100


def texts_of(language):
    """Equal in each run."""
    chosen = random.Random(language)
    words, others = (part.split() for part in LANGUAGES[language])
    texts = []
    while len(texts) < TEXTS_PER_LANGUAGE:
        text = chosen.choice(PATTERNS).format(chosen.choice(words), chosen.choice(others))
        text = chosen.choice((str, str, str, str.upper, str.title))(text)
        if not text.isascii():
            texts.append(text)
    return texts


def field(number, text):
    """As a tagger writes it: in 8 bits where they hold it, else in UTF-16."""
    name = str(number)
    try:
        return frame("TXXX", b"\0" + name.encode() + b"\0" + text.encode("latin-1"))
    except UnicodeEncodeError:
        return frame("TXXX", b"\1" + f"\ufeff{name}\0\ufeff{text}".encode("utf-16-le"))


@pytest.fixture
def recognised(brindle, tmp_path):
    """The texts that are reported as being in another encoding."""

    def numbers_of(texts):
        names = []
        for first in range(0, len(texts), TEXTS_PER_FILE):
            part = enumerate(texts[first:first + TEXTS_PER_FILE], first)
            names.append(tmp_path / f"{first:08}.mp3")
            names[-1].write_bytes(tag(*(field(number, text) for number, text in part)))
        done = brindle("check", "--json", "--quiet", *names)
        numbers = set()
        for line in done.stdout.splitlines():
            for reason in json.loads(line)["reasons"]:
                if reason["code"] == "mojibake":
                    numbers |= {int(number) for number in
                                re.findall(r'TXXX "(\d+)" (?:means|is)', reason["text"])}
        return numbers

    return numbers_of


def test_correct_texts_are_left_alone(recognised):
    texts = [text for language in LANGUAGES for text in texts_of(language)]
    assert len(texts) >= 10_000
    assert [texts[number] for number in sorted(recognised(texts))] == []


def damaged(text, encoding, reading):
    """None where the text has letters that the encoding lacks."""
    try:
        return text.encode(encoding).decode(reading)
    except UnicodeError:
        return None


@pytest.mark.parametrize("reading", ["latin-1", "cp1252"])
@pytest.mark.parametrize("language", LANGUAGES)
def test_utf_8_read_as_latin_is_recognised(recognised, language, reading):
    """Of each language on its own, so that none is hidden by the others."""
    texts = [damaged(text, "utf-8", reading) for text in texts_of(language)]
    texts = [text for text in texts if text]
    assert len(texts) >= TEXTS_PER_LANGUAGE // 4
    missed = [texts[i] for i in sorted(set(range(len(texts))) - recognised(texts))]
    assert len(missed) <= 0.05 * len(texts), missed[:20]


@pytest.mark.parametrize("language,encoding", [(language, encoding)
                                               for language, pages in CODE_PAGES.items()
                                               for encoding in pages])
def test_other_code_pages_read_as_latin_are_recognised(recognised, language, encoding):
    texts = [damaged(text, encoding, "latin-1") for text in texts_of(language)]
    texts = [text for text in texts if text and not text.isascii()]
    assert len(texts) >= TEXTS_PER_LANGUAGE // 4
    missed = [texts[i] for i in sorted(set(range(len(texts))) - recognised(texts))]
    assert len(missed) <= 0.05 * len(texts), missed[:20]
