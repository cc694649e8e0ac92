"""The page of `brindle report`, used in a browser by clicks and keys."""

import base64
import functools
import json
import os
import re
import subprocess

import mutagen.id3
import pytest

from browser import opened_browser
from commands import run
from settled_files import wait_until_settled

HOSTILE = "</script><img src=x onerror=alert(1)>"
ROWS = 100_000


def tagged(path, **texts):
    tags = mutagen.id3.ID3()
    for frame_id, text in texts.items():
        tags.add(getattr(mutagen.id3, frame_id)(encoding=3, text=[text]))
    tags.save(path)


def add_file(folder, name, content, **texts):
    path = folder / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)
    if texts:
        tagged(path, **texts)


@pytest.fixture(scope="module")
def library(tmp_path_factory):
    folder = tmp_path_factory.mktemp("report")
    content = {}
    for name, seconds, options in (("short", 4, ["-b", 128]), ("long", 65, ["-b", 192]),
                                   ("variable", 20, ["-V", 5])):
        run("sox", "-R", "-n", "-r", 44100, "-b", 16, folder / "a.wav", "synth", seconds, "pluck",
            "C4", "gain", "-n", -9)
        run("lame", "--quiet", *options, folder / "a.wav", folder / "a.mp3")
        content[name] = (folder / "a.mp3").read_bytes()
    music = folder / "music"
    add_file(music, "Zebra.mp3", content["short"], TIT2="Zebra", TPE1="Ann", TDRC="1999", TCON="Pop")
    add_file(music, "apple.mp3", content["long"], TIT2="apple", TPE1="Bob", TDRC="2005")
    add_file(music, "Mango.mp3", content["variable"], TIT2="Mango", TPE1="Ann", TDRC="1999-05-01")
    add_file(music, "cut/half.mp3", content["long"][:len(content["long"]) // 3], TIT2="Half",
             TPE1="Cid")
    add_file(music, "cut/none.mp3", b"no sound at all")
    add_file(music, "<img src=x onerror=alert(1)>/<img src=y onerror=alert(2)>.mp3",
             content["short"][:-100], TIT2=HOSTILE, TPE1=HOSTILE, TALB=HOSTILE, TCON=HOSTILE,
             TDRC="2010")
    return folder


@pytest.fixture(scope="module")
def page(program, library):
    done = subprocess.run([program, "report", "--quiet", "music", "music/gone.mp3",
                           "-o", "library.html"], cwd=library, capture_output=True, check=False)
    assert done.returncode == 1
    return library / "library.html"


@pytest.fixture(scope="module")
def checked(program, library):
    done = subprocess.run([program, "check", "--json", "--quiet", "music"], cwd=library,
                          capture_output=True, check=False)
    return {facts["file"]: facts for facts in map(json.loads, done.stdout.splitlines())}


@pytest.fixture(scope="module")
def started():
    with opened_browser() as browser:
        yield browser


def opened_page(started, page):
    """Its console stays silent whatever a test does."""
    started.open(page)
    started.wait_until(lambda: len(started.all("canvas")) == 4)
    yield started
    assert started.complaints() == []
    assert started.run("return document.querySelectorAll('img').length") == 0


@pytest.fixture
def browser(started, page):
    yield from opened_page(started, page)


def header(browser, field):
    return browser.one(f".tabulator-col[tabulator-field={field}] .tabulator-col-title")


def filter_field(browser, field):
    return browser.one(f".tabulator-col[tabulator-field={field}] input")


def column(browser, field):
    return browser.run("return [...document.querySelectorAll('.tabulator-row .tabulator-cell"
                       f"[tabulator-field={field}]')].map(cell => cell.textContent)")


def row_with(browser, field, text):
    (row,) = [row for row in browser.all(".tabulator-row") if row.find_element(
        "css selector", f"[tabulator-field={field}]").text == text]
    return row


def sort_by(browser, field, direction):
    header(browser, field).click()
    browser.wait_until(lambda: browser.one(f".tabulator-col[tabulator-field={field}]")
                       .get_attribute("aria-sort") == direction)


def test_page_opens_and_loads_nothing_else(browser, page):
    assert column(browser, "verdict").count("failed") == 1
    asked = [address for address in browser.requested() if not address.startswith("data:")]
    assert set(asked) == {page.as_uri()}


def test_policy_refuses_what_is_not_of_the_page(started, page, tmp_path):
    """So a silent console means something: this page has one script more."""
    text = page.read_text().replace("</body>", "<script>1</script><p style='color:red'></p>"
                                    "<img src=x></body>")
    (tmp_path / "changed.html").write_text(text)
    started.open(tmp_path / "changed.html")
    started.wait_until(lambda: len(started.all("canvas")) == 4)
    complaints = started.complaints()
    for directive in ("script-src", "style-src", "img-src"):
        assert any("Content Security Policy" in line and directive in line
                   for line in complaints), complaints


def test_totals_are_those_of_scan_and_check(browser, program, library, checked):
    summary = subprocess.run([program, "scan", "music", "music/gone.mp3"], cwd=library,
                             capture_output=True, check=False).stdout.decode()
    numbers = re.search(r"""^7 files, (\S+) hours of audio
  Bit rate  (\d+) constant, (\d+) variable, (\d+) without a stream
  Tags      (\d+) ID3v1, (\d+) ID3v2, (\d+) ID3v1 and ID3v2, (\d+) none
  Failed    (\d+)$""", summary, re.MULTILINE).groups()
    totals = {one.text.split("\n")[1]: one.text.split("\n")[0] for one in browser.all(".total")}
    assert totals.pop("size") == f"{sum_of_sizes(library) / 1e6:.1f} MB"
    verdicts = [facts["verdict"] for facts in checked.values()]
    for verdict in ("ok", "warn", "bad"):
        assert totals.pop(verdict) == str(verdicts.count(verdict))
    labels = ("hours of audio", "constant bit rate", "variable bit rate", "without a stream",
              "ID3v1 only", "ID3v2 only", "ID3v1 and ID3v2", "no tags", "failed")
    assert totals == {"files": "7", **dict(zip(labels, numbers, strict=True))}


def sum_of_sizes(library):
    return sum(path.stat().st_size for path in library.rglob("music/**/*.mp3"))


def test_plots_are_drawn(browser):
    """Each has more colours than an empty one, which has text and lines alone."""
    colours = browser.run("""
        return [...document.querySelectorAll("canvas")].map(canvas => {
            const data = canvas.getContext("2d").getImageData(0, 0, canvas.width,
                canvas.height).data;
            const count = {};
            for (let i = 0; i < data.length; i += 4) {
                if (data[i + 3] === 255 && Math.max(data[i], data[i + 1], data[i + 2]) -
                        Math.min(data[i], data[i + 1], data[i + 2]) > 60) {
                    const colour = [data[i], data[i + 1], data[i + 2]].join();
                    count[colour] = (count[colour] || 0) + 1;
                }
            }
            return Object.values(count).filter(pixels => pixels > 200).length;
        });""")
    assert colours[:3] == [1, 1, 1]
    assert colours[3] > 1  # a colour for each code
    for box in browser.all(".plot"):
        canvas = box.find_element("css selector", "canvas")
        assert 0.9 < canvas.size["width"] / box.size["width"] < 1
        assert canvas.get_attribute("aria-label") == box.find_element("css selector", "h2").text


def test_plot_of_folders_names_the_codes(browser, checked):
    def codes(*verdicts):
        return {reason["code"] for facts in checked.values() for reason in facts["reasons"]
                if reason["verdict"] in verdicts}

    def shown():
        return {label.text.rstrip(":") for label in browser.all(".wide .u-label")} - {"folder"}

    assert shown() == codes("warn", "bad")
    browser.one("#notes").click()
    assert shown() > codes("warn", "bad")
    assert shown() <= codes("warn", "bad", "note") | {"other codes"}


def test_click_on_a_header_sorts(browser):
    sort_by(browser, "title", "ascending")
    shown = column(browser, "title")
    assert len(shown) == 7
    assert [title for title in shown if title] == [HOSTILE, "apple", "Half", "Mango", "Zebra"]
    sort_by(browser, "title", "descending")
    assert [title for title in column(browser, "title") if title] == [
        "Zebra", "Mango", "Half", "apple", HOSTILE]
    sort_by(browser, "verdict", "ascending")
    shown = column(browser, "verdict")
    assert shown == sorted(shown, key=["failed", "bad", "warn", "ok"].index)
    sort_by(browser, "duration", "ascending")
    sort_by(browser, "duration", "descending")
    assert column(browser, "title")[0] == "apple"  # a minute; 0:20 and 0:04 follow


@pytest.mark.parametrize("field, typed, titles", [
    ("title", "APP", ["apple"]), ("title", "<img", [HOSTILE]), ("artist", "ann", ["Mango", "Zebra"]),
    ("year", "1999", ["Mango", "Zebra"]), ("year", "2000-2006", ["apple"]),
    ("rate", "192", ["Half", "apple"]), ("rate", "<192", [HOSTILE, "Mango", "Zebra"]),
    ("duration", ">=1:05", ["apple"]), ("duration", "<=20.2", [HOSTILE, "Mango", "Zebra"]),
    ("rate", "many", [])])
def test_typing_filters(browser, field, typed, titles):
    filter_field(browser, field).send_keys(typed)
    browser.wait_until(lambda: " of 7 files" in browser.one("#shown").text)
    assert sorted(column(browser, "title")) == sorted(titles)
    assert browser.one("#shown").text == f"{len(titles)} of 7 files"


def test_click_on_a_verdict_filters(browser, checked):
    bad = [name for name, facts in checked.items() if facts["verdict"] == "bad"]
    (button,) = [one for one in browser.all("button.total") if one.text.endswith("bad")]
    button.click()
    browser.wait_until(lambda: browser.one("#shown").text == f"{len(bad)} of 7 files")
    assert sorted(column(browser, "file")) == sorted(bad)
    button.click()
    browser.wait_until(lambda: browser.one("#shown").text == "7 files")


def test_click_on_a_file_unfolds_its_reasons(browser, checked):
    name = "music/cut/half.mp3"
    row = row_with(browser, "file", name)
    height = row.size["height"]
    row.find_element("css selector", "[tabulator-field=artist]").click()
    unfolded = row.find_element("css selector", ".reasons")
    assert row.size["height"] > height + 20
    assert checked[name]["reasons"]
    for reason in checked[name]["reasons"]:
        assert f"{reason['verdict']} {reason['code']}: {reason['text']}" in unfolded.text
    assert row.find_element("css selector", ".toggle").get_attribute("aria-expanded") == "true"
    row.find_element("css selector", ".toggle").click()
    assert row.find_elements("css selector", ".reasons") == []
    assert row.size["height"] == height


def test_failed_file_says_why(browser):
    row = row_with(browser, "file", "music/gone.mp3")
    assert row.find_element("css selector", "[tabulator-field=codes]").text == (
        "No such file or directory")
    row.click()
    assert "No such file or directory" in row.find_element("css selector", ".reasons").text


def test_hostile_texts_stay_texts(browser):
    name = "music/<img src=x onerror=alert(1)>/<img src=y onerror=alert(2)>.mp3"
    row = row_with(browser, "file", name)
    for field in ("title", "artist", "album", "genre"):
        cell = row.find_element("css selector", f"[tabulator-field={field}]")
        assert cell.text == HOSTILE or cell.get_attribute("textContent") == HOSTILE
        assert browser.run("return arguments[0].children.length", cell) <= 1  # the resize handle
    row.click()
    assert name in row.find_element("css selector", ".reasons").text
    # All that shows values once more: the legends of the plots, the filter, and the paper.
    filter_field(browser, "title").send_keys(HOSTILE)
    browser.wait_until(lambda: browser.one("#shown").text == "1 of 7 files")
    canvas = browser.one(".wide .u-over")
    browser.run("""
        const box = arguments[0].getBoundingClientRect();
        arguments[0].scrollIntoView();
        for (let x = 0; x < 1; x += 0.02) {
            arguments[0].dispatchEvent(new MouseEvent("mousemove", {bubbles: true,
                clientX: box.left + x * box.width, clientY: box.top + 20}));
        }""", canvas)
    browser.run("dispatchEvent(new Event('beforeprint'))")
    assert name in browser.one("#print").get_attribute("textContent")
    assert browser.run("return document.querySelectorAll('img').length") == 0
    assert browser.run("return document.querySelectorAll('script').length") == 4
    browser.run("dispatchEvent(new Event('afterprint'))")


@pytest.fixture(scope="module")
def heard_page(program, tmp_path_factory):
    """Three files that `listen` has measured, and one that it has not."""
    folder = tmp_path_factory.mktemp("heard")
    music = folder / "music"
    music.mkdir()
    for name, effects in (("loud", ["vol", 0.7]), ("soft", ["vol", 0.05]),
                          ("gap", ["vol", 0.7, "pad", "3@2"])):
        run("sox", "-R", "-n", "-r", 44100, "-c", 2, "-b", 16, folder / "a.wav", "synth", 6, "sine",
            1000, *effects)
        run("lame", "--quiet", "-b", 192, folder / "a.wav", music / f"{name}.mp3")
        tagged(music / f"{name}.mp3", TIT2=name)
    wait_until_settled()
    brindle = functools.partial(subprocess.run, cwd=folder, stdout=subprocess.DEVNULL, check=True)
    brindle([program, "listen", "--cache", "library.db", "music"])
    (music / "new.mp3").write_bytes((music / "loud.mp3").read_bytes())
    brindle([program, "report", "--cache", "library.db", "music", "-o", "library.html"])
    return folder / "library.html"


@pytest.fixture
def heard(started, heard_page):
    yield from opened_page(started, heard_page)


def test_loudness_and_silences_are_shown(heard):
    # A sine in both channels at 0.7 of full scale: 20 log10(0.7) = -3.1. Windows that hold a part of
    # the six seconds take 0.2 off, and lame a little more.
    shown = dict(zip(column(heard, "file"), zip(column(heard, "loudness"),
                                                column(heard, "silenceCount"), strict=True),
                     strict=True))
    assert {name: silences for name, (_, silences) in shown.items()} == {
        "music/gap.mp3": "1", "music/loud.mp3": "0", "music/new.mp3": "", "music/soft.mp3": "0"}
    loudness = {name: number for name, (number, _) in shown.items()}
    assert loudness["music/new.mp3"] == ""
    assert float(loudness["music/loud.mp3"]) == pytest.approx(-3.3, abs=0.3)
    # 20 log10(0.7 / 0.05) = 22.9 less.
    assert float(loudness["music/soft.mp3"]) == pytest.approx(-26.2, abs=0.3)
    labels = {canvas.get_attribute("aria-label") for canvas in heard.all("canvas")}
    assert "Loudness, LUFS" in labels
    sort_by(heard, "loudness", "ascending")
    assert column(heard, "file")[:2] == ["music/new.mp3", "music/soft.mp3"]
    row_with(heard, "file", "music/gap.mp3").click()
    unfolded = row_with(heard, "file", "music/gap.mp3").find_element("css selector", ".reasons").text
    assert re.search(r"^-3\.\d LUFS, range \d+\.\d LU, true peak -[23]\.\d dBTP$", unfolded, re.M)
    begin, end = re.search(r"^1 silence inside: 0:0(2\.0\d\d) to 0:0(5\.0\d\d)$", unfolded,
                           re.M).groups()
    # The delay of encoder and decoder is 25 ms.
    assert float(begin) == pytest.approx(2.025, abs=0.03)
    assert float(end) == pytest.approx(5.025, abs=0.03)
    row_with(heard, "file", "music/new.mp3").click()
    assert "LUFS" not in row_with(heard, "file", "music/new.mp3").text


@pytest.mark.parametrize("field, typed, files", [
    ("loudness", "-26", ["soft"]), ("loudness", "<-20", ["soft"]), ("loudness", ">=-10", ["gap", "loud"]),
    ("loudness", "-30--20", ["soft"]), ("loudness", "-5 - 0", ["gap", "loud"]),
    ("silenceCount", ">0", ["gap"]), ("silenceCount", "0", ["loud", "soft"])])
def test_typing_filters_sound(heard, field, typed, files):
    filter_field(heard, field).send_keys(typed)
    heard.wait_until(lambda: " of 4 files" in heard.one("#shown").text)
    assert sorted(column(heard, "file")) == [f"music/{name}.mp3" for name in files]


def test_page_without_measurements_has_no_columns_for_them(browser):
    assert browser.all("[tabulator-field=loudness], [tabulator-field=silenceCount]") == []


def background(browser):
    return browser.run("return getComputedStyle(document.body).backgroundColor")


def test_light_and_dark(started, page):
    for scheme, other in (("dark", "Light"), ("light", "Dark")):
        started.devtools("Emulation.setEmulatedMedia",
                         {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        started.open(page)
        started.wait_until(lambda: len(started.all("canvas")) == 4)
        of_system = background(started)
        assert (of_system == "rgb(255, 255, 255)") == (scheme == "light")
        button = started.one("#theme")
        assert button.text == other
        button.click()
        assert background(started) != of_system
        button.click()
        assert background(started) == of_system
    assert started.complaints() == []


def test_paper_has_the_files_that_the_filter_leaves(browser):
    filter_field(browser, "artist").send_keys("Ann")
    browser.wait_until(lambda: browser.one("#shown").text == "2 of 7 files")
    browser.one("#theme").click()
    on_screen = background(browser)
    browser.run("""
        addEventListener("beforeprint", () => {
            window.printed = [...document.querySelectorAll("#print tbody tr")].map(
                row => row.cells[1].textContent);
            window.paper = getComputedStyle(document.body).backgroundColor;
        });""")
    paper = base64.b64decode(browser.devtools("Page.printToPDF", {})["data"])
    assert paper.startswith(b"%PDF")
    assert sorted(browser.run("return window.printed")) == ["Mango", "Zebra"]
    assert browser.run("return window.paper") == "rgb(255, 255, 255)"
    assert background(browser) == on_screen
    assert browser.one("#print").get_attribute("textContent") == ""


# --- a large library

@pytest.fixture(scope="module")
def large_page(page):
    """The same page with the rows of its files again and again, each with a name of its own."""
    text = page.read_text()
    begin = text.index('id="library">') + len('id="library">')
    end = text.index("</script>", begin)
    data = json.loads(text[begin:end])
    place = data["columns"].index("/tag/title")
    files = []
    for number in range(ROWS):
        row = list(data["files"][number % len(data["files"])])
        row[0] = f"{row[0]} {number}"
        # Not in the order of the files.
        row[place] = f"Title {number * 7919 % ROWS}"
        files.append(row)
    data["files"] = files
    embedded = json.dumps(data, separators=(",", ":"))
    for character in "<>&":
        embedded = embedded.replace(character, f"\\u{ord(character):04x}")
    large = page.with_name("large.html")
    large.write_text(text[:begin] + embedded + text[end:])
    return large


# Times are taken in the page, from the beginning of the navigation or from the user's event to the
# frame that shows the answer.
WATCH_FIRST_ROW = """
    const look = () => {
        const row = document.querySelector(".tabulator-row");
        if (row && row.getBoundingClientRect().height > 0) {
            requestAnimationFrame(() => { window.firstRow = performance.now(); });
        } else {
            requestAnimationFrame(look);
        }
    };
    requestAnimationFrame(look);
"""
WATCH_EVENT = """
    const [type, selector, attribute, wanted] = arguments;
    window.answered = null;
    addEventListener(type, event => {
        const look = () => {
            const element = document.querySelector(selector);
            const value = attribute ? element.getAttribute(attribute) : element.textContent;
            if (value === wanted) {
                requestAnimationFrame(() => {
                    window.answered = performance.now() - event.timeStamp;
                });
            } else {
                requestAnimationFrame(look);
            }
        };
        requestAnimationFrame(look);
    }, {capture: true, once: true});
"""
FIRST_TITLE = ".tabulator-row [tabulator-field=title]"


def answer(browser):
    return browser.wait_until(lambda: browser.run("return window.answered")) / 1000


# With 1 it measures a machine that does nothing else.
LOADED = float(os.environ.get("BRINDLE_LOADED", "4"))


def test_large_library_is_fast(started, large_page):
    """The best of up to six loads; LOADED times the limit, as other programs share the machine."""
    script = started.devtools("Page.addScriptToEvaluateOnNewDocument",
                              {"source": WATCH_FIRST_ROW})["identifier"]
    limits = {"first row": 2, "sort": 2, "filter": 0.5, "scroll": 0.2}
    times = {}

    def add(what, seconds):
        times[what] = min(times.get(what, seconds), seconds)

    def is_fast():
        return times.keys() == limits.keys() and all(
            times[what] < LOADED * limit for what, limit in limits.items())

    for _ in range(6):
        if is_fast():
            break
        started.open(large_page)
        started.wait_until(lambda: len(started.all("canvas")) == 4)
        add("first row", started.run("return window.firstRow") / 1000)
        assert started.one("#shown").text == "100,000 files"

        # By code units in lower case, so 0, 1, 10, 100, 1000, 10000; and down from 99999.
        for first in ("Title 0", "Title 99999"):
            started.run(WATCH_EVENT, "click", FIRST_TITLE, None, first)
            header(started, "title").click()
            add("sort", answer(started))

        matching = sum("123" in str(number) for number in range(ROWS))
        shown = f"{matching} of 100,000 files"
        field = filter_field(started, "title")
        field.send_keys("12")
        started.wait_until(lambda: " of " in started.one("#shown").text)
        started.run(WATCH_EVENT, "input", "#shown", None, shown)
        field.send_keys("3")
        add("filter", answer(started))
        field.send_keys("\b\b\b")
        started.wait_until(lambda: started.one("#shown").text == "100,000 files")

        started.run("""
            const holder = document.querySelector(".tabulator-tableholder");
            const begin = performance.now();
            window.answered = null;
            holder.scrollTop = holder.scrollHeight / 2;
            const box = holder.getBoundingClientRect();
            document.querySelector("#table").scrollIntoView();
            const look = () => {
                const box = holder.getBoundingClientRect();
                const middle = document.elementFromPoint(box.left + 200, box.top + box.height / 2);
                if (middle && middle.closest(".tabulator-row")) {
                    window.answered = performance.now() - begin;
                } else {
                    requestAnimationFrame(look);
                }
            };
            requestAnimationFrame(look);""")
        add("scroll", answer(started))
    started.devtools("Page.removeScriptToEvaluateOnNewDocument", {"identifier": script})
    assert started.complaints() == []
    print({what: round(seconds, 3) for what, seconds in times.items()})
    assert is_fast(), times
