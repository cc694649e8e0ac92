"""The registry before, between and after."""

import re

from conftest import BITS, windows_name

CLASS = "{0571B13A-907D-4C45-8E34-42489A98C25D}"
LIBRARY = "{3DD4AB2B-FE65-4BF7-996E-A3AFCE69FD27}"
INTERFACE = "{DA8F91CC-D5CC-48FE-AC55-C4566C2C3D84}"


def registry(wine, folder):
    """All that programs register, for the machine and for the user, as text."""
    file = folder / "registry.reg"
    text = ""
    for root in (r"HKEY_LOCAL_MACHINE\Software", r"HKEY_CURRENT_USER\Software"):
        file.unlink(missing_ok=True)
        result = wine("regedit", "/E", windows_name(file), root)
        assert result.returncode == 0, result.stdout
        text += file.read_bytes().decode("utf-16").replace("\r\n", "\n")
    assert r"\CLSID" in text
    # Wine's own notes on the session.
    return re.sub(r"^\[HKEY_CURRENT_USER\\Software\\Wine\\Temporary [^\]]*\]\n(.+\n)*\n", "", text,
                  flags=re.MULTILINE)


def value(text, key, name="@"):
    block = re.search(r"^\[HKEY_LOCAL_MACHINE\\Software\\Classes\\" + re.escape(key) + r"\]\n(.*?)^$",
                      text, re.MULTILINE | re.DOTALL | re.IGNORECASE)
    assert block, f"no key {key}"
    entry = re.search("^" + re.escape(name) + '="(.*)"$', block.group(1), re.MULTILINE)
    assert entry, f"no value {name} in {key}"
    return entry.group(1).replace("\\\\", "\\")


def test_registering_and_taking_back_leaves_the_registry_as_it_was(
        wine, dll, folder, fresh_registry, bits):
    before = registry(wine, folder)
    assert CLASS.lower() not in before.lower()
    # Twice does no harm.
    for _ in range(2):
        assert wine("regsvr32", "/s", windows_name(dll)).returncode == 0
    between = registry(wine, folder)
    assert value(between, r"Brindle.cMPEGHeader\CLSID") == CLASS
    assert value(between, rf"CLSID\{CLASS}\ProgID") == "Brindle.cMPEGHeader"
    assert value(between, rf"CLSID\{CLASS}\VersionIndependentProgID") == "Brindle.cMPEGHeader"
    server = value(between, rf"CLSID\{CLASS}\InprocServer32")
    assert server.lower() == windows_name(dll).lower()
    assert value(between, rf"CLSID\{CLASS}\InprocServer32", '"ThreadingModel"') == "Apartment"
    assert value(between, rf"CLSID\{CLASS}\TypeLib") == LIBRARY
    library = value(between, rf"TypeLib\{LIBRARY}\6.2\0\win{bits}")
    assert library.lower() == windows_name(dll).lower()
    assert value(between, rf"Interface\{INTERFACE}\TypeLib") == LIBRARY

    assert wine("regsvr32", "/s", "/u", windows_name(dll)).returncode == 0
    assert registry(wine, folder) == before
    # Taking back what is not there is no error either.
    assert wine("regsvr32", "/s", "/u", windows_name(dll)).returncode == 0
    assert registry(wine, folder) == before


if BITS == "64":  # a 32-bit Wine has no other width

    def test_name_stays_while_the_other_width_needs_it(wine, dll, fresh_registry):
        other = rf"HKLM\Software\Classes\Wow6432Node\CLSID\{CLASS}"
        name = r"HKLM\Software\Classes\Brindle.cMPEGHeader"

        def is_there(key):
            return wine("reg", "query", key).returncode == 0

        assert wine("regsvr32", "/s", windows_name(dll)).returncode == 0
        assert wine("reg", "add", other, "/f").returncode == 0
        assert wine("regsvr32", "/s", "/u", windows_name(dll)).returncode == 0
        assert is_there(name)
        assert not is_there(rf"HKLM\Software\Classes\CLSID\{CLASS}")

        assert wine("regsvr32", "/s", windows_name(dll)).returncode == 0
        assert wine("reg", "delete", other, "/f").returncode == 0
        assert wine("regsvr32", "/s", "/u", windows_name(dll)).returncode == 0
        assert not is_there(name)


def test_host_with_a_manifest_needs_no_registration(wine, build, dll, folder, fresh_registry):
    for source in (dll, build / "src" / "facade" / "com" / "Brindle.Automation.manifest",
                   build / "tests" / "com" / "unregistered_host.exe"):
        (folder / source.name).write_bytes(source.read_bytes())
    host = folder / "unregistered_host.exe"
    result = wine(host)
    assert (result.returncode, result.stdout.split()) == (0, [b"TagType", b"-1"])
    # It was the manifest: without it there is no such class.
    (folder / "Brindle.Automation.manifest").unlink()
    assert wine(host).returncode != 0
