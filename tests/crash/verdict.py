"""What may be in a folder after a power cut, and what may not."""

SECTOR = 512


def sectors(content):
    return [content[place:place + SECTOR] for place in range(0, len(content), SECTOR)]


def is_mix(content, old, new):
    """Whether each sector is one of the old file or of the new one.

    Where the new file is longer, its length may be there before its bytes, which are NULs then."""
    if len(content) not in (len(old), len(new)):
        return False
    lengthened = old + bytes(len(content) - len(old))
    return all(found in either for found, *either
               in zip(sectors(content), sectors(lengthened), sectors(new)))


def wrong_with(files, old, new, audio, in_place, done):
    """What is wrong with the files (name -> bytes) after a save of "song.mp3", or None.

    `in_place`: whether the save may be seen halfway; `done`: whether the program had ended."""
    others = [name for name in files if name != "song.mp3" and not name.startswith(".brindle-")]
    if others:
        return f"other files: {others}"
    if "song.mp3" not in files:
        return "the file is missing"
    content = files["song.mp3"]
    if audio not in content:
        return f"audio is lost, {len(content)} bytes are left"
    if done and content != new:
        return "not the new file"
    if content in (old, new) or (in_place and is_mix(content, old, new)):
        return None
    return "neither the old nor the new file"
