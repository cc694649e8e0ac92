"""A check that is believed: sound files have no warning."""

import json
import subprocess

from mutagen import id3

import encoders


def plain(version, encoding):
    def tag(path):
        tags = id3.ID3()
        for frame, text in ((id3.TIT2, "Song"), (id3.TPE1, "The Artist"), (id3.TALB, "Album"),
                            (id3.TRCK, "7")):
            tags.add(frame(encoding=encoding, text=[text]))
        tags.save(path, v1=id3.ID3v1SaveOptions.CREATE, v2_version=version)
    return tag


def with_picture(path):
    plain(3, 0)(path)
    tags = id3.ID3(path)
    tags.add(id3.APIC(encoding=0, mime="image/jpeg", type=3, desc="", data=b"\xff\xd8" + b"x" * 1_500))
    tags.save(path, v2_version=3)


def only_a_record(path):
    plain(3, 0)(path)
    id3.ID3(path).delete(path, delete_v1=False)


TAGS = {
    "untagged": lambda path: None,
    "2.3": plain(3, 0),
    "2.4": plain(4, 0),
    "utf-16": plain(3, 1),
    "record": only_a_record,
    "picture": with_picture,
}


def test_sound_files_have_no_warning(encoded, program, tmp_path):
    files = 0
    for encoding in {*encoders.CONSTANT, *encoders.WITH_VBR_HEADER}:
        for name, tag in TAGS.items():
            source = encoded(encoding)
            path = tmp_path / f"{name}-{source.name}"
            path.write_bytes(source.read_bytes())
            tag(path)
            files += 1
    assert files >= 500
    done = subprocess.run([program, "check", "--json", "--quiet", str(tmp_path)],
                          stdin=subprocess.DEVNULL, capture_output=True, check=False)
    checked = [json.loads(line) for line in done.stdout.splitlines()]
    assert len(checked) == files
    assert [facts for facts in checked if facts["verdict"] != "ok"] == []
    assert done.returncode == 0
