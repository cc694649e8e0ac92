"""`brindle normalize --pictures`: pictures become so small that hosts read them, or go into files."""

import collections
import functools
import io
import json
import os
import shutil
import signal
import struct
import subprocess
import sys
import zlib

import numpy
import pytest
from mutagen.id3 import APIC, ID3, TIT2
from PIL import Image, ImageOps

from mp3_bytes import frame, tag
from tagged_file import AUDIO, AUDIO_HASH, audio_hash, snapshot

LARGEST = 81_920
# An encoder of smaller pictures than this would give detail away.
WORTH = 40_000


def photo(width, height, seed=1):
    """Coarse shapes, so that a smaller picture can be compared, and noise, so that it is large."""
    random = numpy.random.default_rng(seed)
    shapes = Image.fromarray(random.integers(0, 256, (6, 6, 3), dtype=numpy.uint8))
    pixels = numpy.asarray(shapes.resize((width, height), Image.BICUBIC)).astype(int)
    noise = random.integers(-24, 25, (height, width, 3))
    return Image.fromarray(numpy.clip(pixels + noise, 0, 255).astype(numpy.uint8))


def saved(image, form, **options):
    file = io.BytesIO()
    image.save(file, form, **options)
    return file.getvalue()


def exif(orientation, order="<"):
    """A directory with one entry."""
    mark = b"II" if order == "<" else b"MM"
    return b"Exif\0\0" + mark + struct.pack(order + "HIHHHIHHI", 42, 8, 1, 0x0112, 3, 1,
                                            orientation, 0, 0)


def chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def png(width, height, depth, colours, data, interlaced=0, more=b""):
    header = struct.pack(">IIBBBBB", width, height, depth, colours, 0, 0, interlaced)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + more
            + chunk(b"IDAT", zlib.compress(data, 1)) + chunk(b"IEND", b""))


def png_of_16_bits(image):
    pixels = numpy.asarray(image).astype(">u2") * 257
    return png(*image.size, 16, 2, b"".join(b"\0" + row.tobytes() for row in pixels))


def interlaced_png(image):
    """Adam7: seven passes, each with every eighth to second pixel."""
    pixels = numpy.asarray(image)
    data = b""
    for x, y, right, down in ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4),
                              (1, 0, 2, 2), (0, 1, 1, 2)):
        data += b"".join(b"\0" + row.tobytes() for row in pixels[y::down, x::right])
    return png(*image.size, 8, 2, data, 1)


def with_alpha(image):
    alpha = Image.linear_gradient("L").resize(image.size)
    made = image.convert("RGBA")
    made.putalpha(alpha)
    return made


PHOTO = photo(700, 500)
PICTURES = {
    "jpeg": lambda: saved(PHOTO, "JPEG", quality=95),
    "progressive jpeg": lambda: saved(PHOTO, "JPEG", quality=95, progressive=True),
    "grey jpeg": lambda: saved(photo(1000, 700).convert("L"), "JPEG", quality=98),
    "cmyk jpeg": lambda: saved(PHOTO.convert("CMYK"), "JPEG", quality=95),
    "upright photo": lambda: saved(photo(500, 1200), "JPEG", quality=95),
    "large jpeg": lambda: saved(photo(3200, 1000), "JPEG", quality=60),
    "png": lambda: saved(PHOTO, "PNG"),
    "grey png": lambda: saved(PHOTO.convert("L"), "PNG"),
    "grey png with alpha": lambda: saved(with_alpha(PHOTO).convert("LA"), "PNG"),
    "png with alpha": lambda: saved(with_alpha(PHOTO), "PNG"),
    "palette png": lambda: saved(PHOTO.quantize(255), "PNG"),
    "transparent palette": lambda: saved(PHOTO.quantize(255), "PNG", transparency=0),
    "16-bit png": lambda: png_of_16_bits(PHOTO),
    "interlaced png": lambda: interlaced_png(PHOTO),
    "small sides": lambda: saved(photo(290, 280), "PNG"),
    "a line": lambda: saved(photo(40_000, 1), "PNG"),
}


def expected(image):
    """As a program shows it that we did not write."""
    shown = ImageOps.exif_transpose(Image.open(io.BytesIO(image)))
    if shown.mode == "P":
        shown = shown.convert("RGBA")
    if "A" in shown.getbands():
        white = Image.new("RGBA", shown.size, "white")
        shown = Image.alpha_composite(white, shown.convert("RGBA"))
    return shown.convert("RGB")


def difference(one, other):
    """The mean one of all channels, at a size at which noise is gone."""
    small = [numpy.asarray(image.resize((40, 40), Image.BOX)).astype(int) for image in (one, other)]
    return numpy.abs(small[0] - small[1]).mean()


@pytest.fixture
def song(tmp_path):
    return tmp_path / "song.mp3"


def write(path, *frames, version=4, **options):
    path.write_bytes(AUDIO * 8)
    made = ID3()
    for one in (TIT2(3, "Söng"), *frames):
        made.add(one)
    made.save(path, v2_version=version, v1=0, **options)


def cover(image, mime="image/jpeg", kind=3, text="é"):
    return APIC(1, mime, kind, text, image)


def covers(path):
    return ID3(path).getall("APIC")


def reasons_of(brindle):
    checked = json.loads(brindle("check", "--json", "--notes", "song.mp3").stdout)
    return {found["code"] for found in checked["reasons"]}


def shrink(brindle, *options, expect=0, **more):
    result = brindle("normalize", "--pictures", "shrink", *options, "song.mp3", **more)
    assert result.returncode == expect, result.stdout + result.stderr
    return result


@pytest.mark.parametrize("name", PICTURES)
def test_shrunk_picture_shows_the_same(brindle, song, name):
    image = PICTURES[name]()
    assert len(image) > LARGEST
    write(song, cover(image))
    assert {"large-picture", "corrupt-tag"} <= reasons_of(brindle)
    result = shrink(brindle)
    assert b"shrunk APIC:1 from %d to " % len(image) in result.stdout
    assert reasons_of(brindle).isdisjoint({"large-picture", "corrupt-tag", "misread-text",
                                           "unread-text", "bad-picture"})
    made, = covers(song)
    assert (made.mime, made.type, made.desc) == ("image/jpeg", 3, "é")
    before, after = expected(image), Image.open(io.BytesIO(made.data))
    assert (after.format, after.mode) == ("JPEG", "RGB")
    assert max(after.size) >= min(300, max(before.size)) and max(after.size) <= max(before.size)
    width, height = after.size
    assert abs(width * before.height / before.width - height) <= 1.0
    assert difference(before, after) < 3
    if max(before.size) > 300:
        assert min(WORTH, len(image)) < len(made.data) or name == "a line"
    place = song.read_bytes().index(b"APIC")
    assert int.from_bytes(song.read_bytes()[place + 4:place + 8], "big") + 10 <= LARGEST
    assert audio_hash(song.read_bytes()) == AUDIO_HASH
    once = snapshot(song)
    assert shrink(brindle).stdout == (
        b"song.mp3: nothing written, the file already has these values\n")
    assert snapshot(song) == once



@pytest.mark.parametrize("orientation", range(1, 9))
def test_shrunk_photo_is_upright(brindle, song, orientation):
    corners = Image.new("RGB", (700, 500), "red")
    corners.paste("blue", (0, 0, 350, 250))
    corners.paste("green", (350, 250, 700, 500))
    picture = Image.blend(corners, photo(700, 500), 0.5)
    for image in (saved(picture, "JPEG", quality=97, exif=exif(orientation)),
                  saved(picture, "JPEG", quality=97, exif=exif(orientation, ">")),
                  png(700, 500, 8, 2, b"".join(b"\0" + row.tobytes()
                                               for row in numpy.asarray(picture)),
                      more=chunk(b"eXIf", exif(orientation)[6:]))):
        write(song, cover(image))
        shrink(brindle)
        made = Image.open(io.BytesIO(covers(song)[0].data))
        before = expected(image)
        assert (made.width > made.height) == (orientation < 5)
        assert difference(before, made) < 3
        assert not made.getexif()


def test_small_pictures_stay_byte_for_byte(brindle, song):
    image = saved(photo(300, 200), "JPEG", quality=90)
    write(song, cover(image), version=3)
    shrink(brindle)
    once = snapshot(song)
    assert covers(song)[0].data == image
    assert shrink(brindle).stdout.startswith(b"song.mp3: nothing written")
    assert snapshot(song) == once


@pytest.mark.parametrize("spare, is_shrunk", [(0, False), (-1, True)])
def test_picture_is_shrunk_from_the_first_byte_too_many(brindle, song, spare, is_shrunk):
    image = saved(photo(500, 400), "JPEG", quality=85)
    around = len(b"\0image/jpeg\0\3\0")
    image += bytes(LARGEST - around - len(image) - spare)  # after its end a decoder reads nothing
    song.write_bytes(tag(frame("APIC", b"\0image/jpeg\0\3\0" + image)) + AUDIO * 8)
    result = shrink(brindle)
    assert (b"shrunk APIC:1" in result.stdout) == is_shrunk
    assert (covers(song)[0].data != image) == is_shrunk


def test_each_of_several_pictures_is_shrunk(brindle, song):
    front, back = saved(PHOTO, "PNG"), saved(photo(640, 480, 2), "JPEG", quality=97)
    small = saved(photo(90, 90), "PNG")
    song.write_bytes(tag(frame("APIC", b"\1image/png\0\3" + "\ufeff前\0".encode("utf-16le") + front),
                         frame("APIC", b"\0image/jpeg\0\4back\0" + back),
                         frame("APIC", b"\0image/png\0\5small\0" + small)) + AUDIO * 8)
    result = shrink(brindle)
    assert b"shrunk APIC:1 from" in result.stdout and b"shrunk APIC:2 from" in result.stdout
    by_type = {one.type: one for one in covers(song)}
    first, second, third = by_type[3], by_type[4], by_type[5]
    assert (first.desc, second.desc, third.desc) == ("前", "back", "small")
    assert difference(expected(front), Image.open(io.BytesIO(first.data))) < 3
    assert difference(expected(back), Image.open(io.BytesIO(second.data))) < 3
    assert third.data == small
    assert reasons_of(brindle).isdisjoint({"large-picture", "corrupt-tag"})


def test_picture_of_version_2_2_is_shrunk(brindle, song):
    image = saved(PHOTO, "JPEG", quality=95)
    body = b"\0JPG\3\0" + image
    pic = b"PIC" + len(body).to_bytes(3, "big") + body
    size = bytes((len(pic) >> shift) & 0x7F for shift in (21, 14, 7, 0))
    song.write_bytes(b"ID3\2\0\0" + size + pic + AUDIO * 8)
    shrink(brindle)
    made, = covers(song)
    assert made.mime == "image/jpeg"
    assert difference(expected(image), Image.open(io.BytesIO(made.data))) < 3


def test_unsynchronised_picture_is_shrunk(brindle, song):
    image = saved(PHOTO, "JPEG", quality=95)
    write(song, cover(image))
    made = ID3(song)
    made.unsynch = True
    made.save(song, v2_version=4, v1=0)
    shrink(brindle)
    assert difference(expected(image), Image.open(io.BytesIO(covers(song)[0].data))) < 3


def test_colour_profile_stays_with_the_picture(brindle, song):
    profile = bytearray(400)
    profile[0:4], profile[16:20], profile[36:40] = (400).to_bytes(4, "big"), b"RGB ", b"acsp"
    for kept in (bytes(profile), bytes(profile[:16] + b"CMYK" + profile[20:])):
        write(song, cover(saved(PHOTO, "JPEG", quality=95, icc_profile=kept)))
        shrink(brindle)
        made = Image.open(io.BytesIO(covers(song)[0].data))
        assert made.info.get("icc_profile") == (kept if kept[16:19] == b"RGB" else None)


# --- What is not shrunk is listed, and stays

def jpeg_of_scans(count):
    """A progressive one whose last scan comes again and again."""
    image = saved(photo(160, 160), "JPEG", quality=97, progressive=True)
    last = image.rindex(b"\xff\xda")
    return image[:-2] + image[last:-2] * (count - image.count(b"\xff\xda")) + b"\xff\xd9"


def header_that_lies():
    return png(7_000, 7_000, 8, 2, b"", more=chunk(b"tEXt", b"a\0" + b"x" * 90_000))


@functools.cache
def bomb(side, depth=8, colours=2):
    channels = {0: 1, 2: 3, 6: 4}[colours]
    row = b"\0" + bytes(side * channels * depth // 8)
    squeeze = zlib.compressobj(1)
    data = b"".join(squeeze.compress(row) for _ in range(side)) + squeeze.flush()
    header = struct.pack(">IIBBBBB", side, side, depth, colours, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"tEXt", b"a\0" + b"x" * 90_000) + chunk(b"IDAT", data) + chunk(b"IEND", b""))


def with_size(image, width, height):
    """A JPEG image whose header claims another size."""
    place = max(image.find(b"\xff\xc0"), image.find(b"\xff\xc2"))
    return image[:place + 5] + struct.pack(">HH", height, width) + image[place + 9:]


JPEG = saved(PHOTO, "JPEG", quality=95)
PNG = saved(PHOTO, "PNG")
KEPT = {
    "cut jpeg": (JPEG[:-len(JPEG) // 4], b"it is damaged"),
    "cut progressive jpeg": (PICTURES["progressive jpeg"]()[:100_000], b"it is damaged"),
    "cut png": (PNG[:-len(PNG) // 4], b"it is damaged"),
    "jpeg of more pixels": (with_size(JPEG, 7_000, 7_000), b"it is damaged"),
    "progressive jpeg of more pixels": (
        with_size(PICTURES["progressive jpeg"](), 7_000, 7_000), b"it is damaged"),
    "jpeg of too many pixels": (
        with_size(JPEG, 65_000, 65_000), b"it has more than 50 megapixels, or none"),
    "png of too many pixels": (bomb(7_100), b"it has more than 50 megapixels, or none"),
    "png of no data": (header_that_lies(), b"Not enough image data"),
    "501 scans": (jpeg_of_scans(501), b"it has more than 500 scans"),
    "header alone": (b"\xff\xd8\xff" + b"x" * 90_000, b"Unsupported marker type"),
    "gif": (b"GIF89a" + b"x" * 90_000,
            b"its format is GIF, and only JPEG and PNG images are shrunk"),
    "unknown": (b"?" * 90_000,
                b"its format is unknown, and only JPEG and PNG images are shrunk"),
}


@pytest.mark.parametrize("name", KEPT)
def test_picture_that_is_not_shrunk_is_listed(brindle, song, name):
    image, reason = KEPT[name]
    assert len(image) > LARGEST
    write(song, cover(image))
    result = shrink(brindle)
    assert b"; kept APIC:1 as it is: " + reason in result.stdout
    assert covers(song)[0].data == image
    assert ID3(song)["TIT2"].encoding == 0, "the texts are normalized all the same"
    once = snapshot(song)
    assert b"nothing written" in shrink(brindle).stdout
    assert snapshot(song) == once


def test_500_scans_are_decoded(brindle, song):
    write(song, cover(jpeg_of_scans(500)))
    assert b"shrunk APIC:1" in shrink(brindle).stdout


def test_linked_picture_is_no_image(brindle, song):
    write(song, cover(b"http://a/" + b"x" * 90_000, "-->"))
    assert b"kept APIC:1 as it is: it is a link" in shrink(brindle).stdout


def test_description_that_leaves_no_room(brindle, song):
    write(song, cover(JPEG, text="x" * 40_000))
    assert b"kept APIC:1 as it is: its description is too long" in shrink(brindle).stdout


MEASURED = """
import resource, subprocess, sys
subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, check=True)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
"""


def peak_kilobytes(program, song, *options):
    """Of the program and of the process that it starts. A process counts the memory of the one that
    has started it, too, so that is a small one."""
    return int(subprocess.run([sys.executable, "-c", MEASURED, program, "normalize", *options, song],
                              stdout=subprocess.PIPE, check=True).stdout)


@pytest.mark.plain_build
@pytest.mark.parametrize("name", ["jpeg of more pixels", "png of too many pixels",
                                  "png of no data", "jpeg of too many pixels"])
def test_memory_does_not_follow_the_header(program, song, name):
    write(song, cover(KEPT[name][0]))
    assert peak_kilobytes(program, song, "--pictures", "shrink", "--dry-run") < 60_000


@pytest.mark.deep
@pytest.mark.plain_build
def test_picture_at_the_limit_needs_some_hundred_megabytes(program, song):
    write(song, cover(bomb(7_071, 8, 6)))
    assert peak_kilobytes(program, song, "--pictures", "shrink") < 400_000
    assert Image.open(io.BytesIO(covers(song)[0].data)).size == (2_400, 2_400)


# --- The process that decodes

def test_death_of_the_process_is_the_error_of_the_file(program, song, tmp_path):
    """The first file's process is killed; the second file is not harmed."""
    write(song, cover(bomb(7_071)))
    other = tmp_path / "z.mp3"
    write(other, TIT2(3, "ü"))
    before = snapshot(song)
    with subprocess.Popen([program, "normalize", "--pictures", "shrink", song, other],
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE) as run:
        children = f"/proc/{run.pid}/task/{run.pid}/children"
        found = ""
        while not found and run.poll() is None:
            with open(children, encoding="ascii") as file:
                found = file.read()
        os.kill(int(found.split()[0]), signal.SIGKILL)
        output, errors = run.communicate(timeout=60)
    assert run.returncode == 1
    assert errors.endswith(
        b"song.mp3: APIC:1: The process that shrinks pictures has died: signal 9\n")
    assert snapshot(song) == before
    assert b"z.mp3: ID3v2.4 tag converted" in output


@pytest.mark.plain_build
def test_processor_time_is_limited(program, song):
    """A scan of 50 megapixels takes a tenth of a second and a few bytes."""
    image = saved(Image.new("L", (7_000, 7_000)), "JPEG", progressive=True)
    write(song, cover(image[:-2] + image[image.rindex(b"\xff\xda"):-2] * 400 + b"\xff\xd9"))
    before = snapshot(song)
    result = subprocess.run(["prlimit", "--cpu=1:1", program, "normalize", "--pictures", "shrink",
                             song], capture_output=True, check=False, timeout=60)
    assert result.returncode == 1, result
    assert b"The process that shrinks pictures has died: " in result.stderr
    assert snapshot(song) == before


@pytest.mark.plain_build
def test_memory_is_limited(program, song):
    write(song, cover(bomb(7_071)))
    result = subprocess.run(["prlimit", "--as=180000000", program, "normalize", "--pictures",
                             "shrink", song], capture_output=True, check=False, timeout=60)
    assert b"kept APIC:1 as it is: it needs too much memory" in result.stdout
    assert result.returncode == 0


# --- Files beside

def test_extracted_picture_is_the_original(brindle, song, tmp_path):
    song.write_bytes(tag(frame("APIC", b"\0image/jpeg\0\3\0" + JPEG),
                         frame("APIC", b"\0image/png\0\4b\0" + PNG),
                         frame("APIC", b"\0image/gif\0\5c\0GIF89a")) + AUDIO * 8)
    song.chmod(0o640)
    tagged = song.read_bytes()
    dry = brindle("normalize", "--dry-run", "--pictures", "extract", "song.mp3")
    assert b"  would write song.cover.jpg\n  would write song.cover-2.png\n" in dry.stdout
    assert os.listdir(tmp_path) == ["song.mp3"] and song.read_bytes() == tagged
    result = brindle("normalize", "--pictures", "extract", "song.mp3")
    assert result.stdout.endswith(
        b"wrote song.cover.jpg; wrote song.cover-2.png; wrote song.cover-3.gif\n")
    assert (tmp_path / "song.cover.jpg").read_bytes() == JPEG
    assert (tmp_path / "song.cover-2.png").read_bytes() == PNG
    assert (tmp_path / "song.cover-3.gif").read_bytes() == b"GIF89a"
    assert (tmp_path / "song.cover.jpg").stat().st_mode & 0o777 == 0o640
    assert {one.data for one in covers(song)} == {JPEG, PNG, b"GIF89a"}
    once = {path.name: snapshot(path) for path in tmp_path.iterdir()}
    again = brindle("normalize", "--pictures", "extract", "song.mp3")
    assert again.stdout.startswith(b"song.mp3: nothing written")
    assert {path.name: snapshot(path) for path in tmp_path.iterdir()} == once


@pytest.mark.parametrize("what", ["shrink,extract", "extract,drop"])
def test_originals_are_kept_without_a_journal(brindle, song, tmp_path, what):
    """The shrunk ones are other pictures, of which nothing is written."""
    song.write_bytes(tag(frame("APIC", b"\0image/jpeg\0\3\0" + JPEG),
                         frame("APIC", b"\0image/png\0\4b\0" + PNG)) + AUDIO * 8)
    result = brindle("normalize", "--no-journal", "--pictures", what, "song.mp3")
    assert result.returncode == 0, result.stderr
    assert (tmp_path / "song.cover.jpg").read_bytes() == JPEG
    assert (tmp_path / "song.cover-2.png").read_bytes() == PNG
    assert len(covers(song)) == (2 if "shrink" in what else 0)
    once = {path.name: snapshot(path) for path in tmp_path.iterdir()}
    assert len(once) == 3
    again = brindle("normalize", "--no-journal", "--pictures", what, "song.mp3")
    assert again.returncode == 0 and again.stdout.startswith(b"song.mp3: nothing written")
    assert {path.name: snapshot(path) for path in tmp_path.iterdir()} == once


def test_one_hundredth_picture_is_not_extracted(brindle, song, tmp_path):
    song.write_bytes(tag(*(frame("APIC", b"\0image/gif\0\0%d\0GIF89a%d" % (i, i))
                           for i in range(1, 101))) + AUDIO * 8)
    result = brindle("normalize", "--pictures", "extract", "song.mp3")
    assert b"APIC:100 is not extracted: a file has too many pictures" in result.stdout
    assert (tmp_path / "song.cover-99.gif").read_bytes() == b"GIF89a99"
    assert len(os.listdir(tmp_path)) == 100


@pytest.mark.parametrize("obstacle", ["file", "link", "dangling link", "folder"])
@pytest.mark.parametrize("what, status", [("extract", 0), ("shrink,extract", 1),
                                          ("extract,drop", 1)])
def test_no_file_is_overwritten(brindle, song, tmp_path, obstacle, what, status):
    write(song, cover(JPEG))
    place, other = tmp_path / "song.cover.jpg", tmp_path / "other"
    other.write_bytes(b"another picture")
    if obstacle == "file":
        place.write_bytes(JPEG[:-1] + b"?")
    elif obstacle == "folder":
        place.mkdir()
    else:
        place.symlink_to("other" if obstacle == "link" else "nowhere")
    before = snapshot(song)
    result = brindle("normalize", "--pictures", what, "song.mp3")
    assert result.returncode == status
    assert b"song.cover.jpg is another file, so APIC:1 is not extracted" in (
        result.stdout + result.stderr)
    assert (snapshot(song) == before) == (status == 1)
    assert other.read_bytes() == b"another picture" and not (tmp_path / "nowhere").exists()
    assert len(os.listdir(tmp_path)) == 3
    if obstacle == "file":
        assert place.read_bytes() == JPEG[:-1] + b"?"


def test_full_disk_leaves_no_part_of_a_picture(brindle, small_disk):
    song = small_disk / "song.mp3"
    song.write_bytes(tag(frame("APIC", b"\0image/jpeg\0\3\0" + b"\xff\xd8\xff" + b"x" * 30_000))
                     + AUDIO[:20_000])
    before = snapshot(song)
    result = brindle("normalize", "--no-journal", "--pictures", "extract,drop", song)
    assert result.returncode == 1
    assert b"song.cover.jpg was not written: No space left on device" in result.stderr
    assert snapshot(song) == before and os.listdir(small_disk) == ["song.mp3"]


def test_undo_brings_the_large_picture_back(brindle, song, tmp_path):
    write(song, cover(JPEG))
    before = song.read_bytes()
    shrink(brindle)
    assert song.read_bytes() != before
    assert brindle("undo").returncode == 0
    assert song.read_bytes() == before


def test_dry_run_tells_how_small_the_picture_would_be(brindle, song):
    write(song, cover(JPEG))
    before = snapshot(song)
    result = shrink(brindle, "--dry-run")
    assert b"  Would be replaced: APIC:1 " in result.stdout and b"  shrunk APIC:1 " in result.stdout
    assert snapshot(song) == before


@pytest.mark.parametrize("options, reason", [
    (("--no-journal", "--pictures", "shrink"),
     "--pictures shrink requires a journal, or shrink,extract"),
    (("--pictures", "shrink,drop"), "--pictures: only one of keep, shrink and drop"),
    (("--pictures", "smaller"), "--pictures: 'smaller' is not keep, shrink, extract or drop"),
    (("--pictures", ""), "--pictures: one of keep, shrink, extract and drop"),
])
def test_wrong_usage(brindle, song, options, reason):
    write(song, cover(JPEG))
    result = brindle("normalize", *options, "song.mp3")
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.decode().startswith(f"brindle: {reason}\n")


# --- Kills

CHANGING_CALLS = ("write", "pwrite64", "fsync", "fdatasync", "rename", "unlink", "ftruncate", "fchown",
                  "fchmod", "close")


@pytest.mark.deep
@pytest.mark.plain_build
@pytest.mark.skipif(shutil.which("strace") is None, reason="needs strace")
@pytest.mark.parametrize("what", ["extract,drop", "shrink,extract"])
def test_kill_at_each_call_loses_no_original(program, song, tmp_path, what):
    """Without a journal the original is in the file beside before the tag loses it."""
    content = tag(frame("APIC", b"\0image/jpeg\0\3\0" + JPEG)) + AUDIO * 8
    cover_file = tmp_path / "song.cover.jpg"
    words = [program, "normalize", "--no-journal", "--pictures", what, "song.mp3"]

    def run(*tracing):
        song.write_bytes(content)
        cover_file.unlink(missing_ok=True)
        return subprocess.run(["strace", "-qq", "-o", "trace", *tracing, *words], cwd=tmp_path,
                              capture_output=True, check=False, timeout=60).returncode

    assert run("-e", "trace=" + ",".join(CHANGING_CALLS)) == 0
    calls = collections.Counter(line.split("(")[0]
                                for line in (tmp_path / "trace").read_text().splitlines())
    assert calls["write"] >= 2 and calls["fsync"] >= 2 and calls["pwrite64"] >= 2, calls
    made = song.read_bytes()
    seen = set()
    for name in CHANGING_CALLS:
        for place in range(1, calls[name] + 1):
            assert run("-e", f"trace={name}", "-e",
                       f"inject={name}:signal=KILL:when={place}") == -signal.SIGKILL
            held = cover_file.read_bytes() if cover_file.exists() else b""
            now = song.read_bytes()
            assert now.endswith(AUDIO * 8)
            assert JPEG.startswith(held) and (now == content or held == JPEG)
            seen.add((now == content, now == made, held == JPEG))
    assert seen >= {(True, False, False), (True, False, True), (False, True, True)}
