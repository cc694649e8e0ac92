"""The Debian packages, taken apart, checked and installed beside the system."""

import gzip
import os
import re
import shutil
import subprocess

import pytest
from conftest import PACKAGED, ROOT, run

PACKAGES = ["brindle", "libbrindle-dev", "libbrindle0"]
SOURCE_DATE = "1750000000"


def packed(build, environment, mask=0o022):
    folder = build / "packages"
    for old in folder.glob("*.deb"):
        old.unlink()
    run("cpack", cwd=build, env=environment, preexec_fn=lambda: os.umask(mask))
    return sorted(folder.glob("*.deb"))


@pytest.fixture(scope="module")
def packages(shared_build):
    paths = packed(shared_build, os.environ | {"SOURCE_DATE_EPOCH": SOURCE_DATE})
    return {run("dpkg-deb", "-f", path, "Package").strip(): path for path in paths}


def test_package_for_windows_says_which_build_is_missing(tmp_path):
    shutil.copytree(ROOT / "cmake", tmp_path / "cmake")
    shutil.copy(ROOT / "CMakeLists.txt", tmp_path)
    for name in ("src/facade/com/Brindle.dll", "host/brindle.exe"):
        built = tmp_path / "build" / "windows-x86" / name
        built.parent.mkdir(parents=True)
        built.touch()
    result = subprocess.run(["cpack", "--config", "cmake/windows-package.cmake"], cwd=tmp_path,
                            stdin=subprocess.DEVNULL, text=True, check=False,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert result.returncode != 0
    assert "cmake --preset windows-x64 && cmake --build --preset windows-x64" in result.stdout
    assert "windows-x86" not in result.stdout


@pytest.fixture(scope="module")
def system(packages, tmp_path_factory):
    """A folder into which the packages were unpacked, as dpkg unpacks them into /."""
    root = tmp_path_factory.mktemp("system")
    for path in packages.values():
        run("dpkg-deb", "-x", path, root)
    return root


def test_there_is_one_for_each_kind_of_user(packages):
    assert sorted(packages) == PACKAGES


def test_lintian_finds_nothing_wrong(packages):
    printed = run("lintian", "--fail-on", "error,warning", "--allow-root", "--display-info",
                  *packages.values())
    for tag in ("hardening-no-bindnow", "hardening-no-fortify-functions",
                "no-symbols-control-file"):
        assert tag not in printed


def test_each_depends_on_what_it_needs(packages):
    def depends(name):
        return run("dpkg-deb", "-f", packages[name], "Depends")

    assert "libbrindle0 (= 0.1.0)" in depends("libbrindle-dev")
    assert "libbrindle0" in depends("brindle")
    assert "libstdc++6" in depends("libbrindle0")


def test_static_build_says_what_the_packages_need(tmp_path):
    run("cmake", "-G", "Ninja", "-S", ROOT, "-B", tmp_path)
    result = subprocess.run(["cpack"], cwd=tmp_path, stdin=subprocess.DEVNULL, text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    assert result.returncode != 0
    assert "-DBUILD_SHARED_LIBS=ON" in result.stdout


def test_symbols_of_the_library_are_listed(packages, system):
    printed = run("dpkg-deb", "-I", packages["libbrindle0"], "symbols")
    assert printed.startswith("libbrindle.so.0 libbrindle0 #MINVER#\n")
    listed = set(re.findall(r"^ (\S+)@Base 0\.1\.0$", printed, re.MULTILINE))
    [library] = system.glob("usr/lib/**/libbrindle.so.0.1.0")
    objects = run("objdump", "-T", library).splitlines()
    defined = {line.split()[-1] for line in objects
               if " DF .text" in line or " DO .rodata" in line}
    assert len(defined) > 100
    assert defined <= listed


def test_licence_of_every_source_file_is_told(system):
    documents = sorted(system.glob("usr/share/doc/*/brindle.spdx.gz"))
    assert [path.parent.name for path in documents] == PACKAGES
    text = gzip.decompress(documents[0].read_bytes()).decode()
    assert text.startswith("SPDXVersion: SPDX-2.1\n")
    files = re.findall(r"^FileName: \./(.*)", text, re.MULTILINE)
    assert "src/mpeg/frame_header.cpp" in files
    assert not any(name.startswith("build/") for name in files)
    assert text.count("\nLicenseInfoInFile: MIT\n") == len(files)


def test_program_comes_with_the_licences_of_what_it_contains(system):
    copyright_file = (system / "usr/share/doc/brindle/copyright").read_text()
    for licence in (ROOT / "LICENSE", *(ROOT / "third_party").glob("*/LICENSE")):
        assert licence.read_text().strip() in copyright_file


def test_reuse_finds_a_licence_for_every_file():
    run("reuse", "--root", ROOT, "lint")


@pytest.mark.slow
def test_another_build_makes_the_same_packages(packages, tmp_path):
    """In another folder, at another time, in another language, and by another user's mask."""
    tree = tmp_path / "a folder of some other length"
    names = run("git", "-C", ROOT, "ls-files", "-z", "--cached", "--others",
                "--exclude-standard").split("\0")
    for name in names:
        if name and (ROOT / name).is_file():
            (tree / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, tree / name)
    # A cache would hand out what the first build has made.
    environment = os.environ | {"SOURCE_DATE_EPOCH": SOURCE_DATE, "TZ": "Pacific/Kiritimati",
                                "LC_ALL": "C", "CCACHE_DISABLE": "1"}
    build = tree / "build" / "here"
    run("cmake", "--preset", "release", "-B", build, *PACKAGED, cwd=tree, env=environment)
    run("cmake", "--build", build, env=environment, preexec_fn=lambda: os.umask(0o002))
    again = packed(build, environment, 0o002)
    assert [path.name for path in again] == sorted(path.name for path in packages.values())
    for path in again:
        [first] = [old for old in packages.values() if old.name == path.name]
        assert path.read_bytes() == first.read_bytes(), path.name


def test_apt_installs_the_program_on_a_bare_system(packages, song, tmp_path):
    """As README.md says: the program and the library, with what they need from Debian."""
    [command] = re.findall(r"^apt install (.*)$", (ROOT / "README.md").read_text(), re.MULTILINE)
    assert command == "./brindle_*.deb ./libbrindle0_*.deb"
    result = subprocess.run(
        ["mmdebstrap", "--variant=apt", "--mode=root", "--format=null",
         f"--customize-hook=mkdir $1/packages && cp {packages['brindle'].parent}/*.deb $1/packages",
         f"--customize-hook=cp {song} $1/song.mp3",
         "--customize-hook=chroot $1 sh -c "
         f"'cd /packages && apt-get install -y --no-install-recommends {command}'",
         "--customize-hook=chroot $1 brindle show /song.mp3",
         "bookworm", "-"],
        stdin=subprocess.DEVNULL, text=True, check=False,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert result.returncode == 0, result.stdout
    assert "Good Morning" in result.stdout


def test_installed_program_shows_the_sample(system, song, environment):
    environment["LD_LIBRARY_PATH"] = next(system.glob("usr/lib/**/libbrindle.so.0")).parent
    printed = run(system / "usr/bin/brindle", "show", song, env=environment)
    assert "Good Morning" in printed


def test_program_has_its_pages_and_completions(system):
    share = system / "usr" / "share"
    for page in (ROOT / "docs" / "manual").iterdir():
        assert (share / "man/man1" / f"{page.stem}.gz").exists()
    assert (share / "bash-completion/completions/brindle").exists()
    assert (share / "zsh/vendor-completions/_brindle").exists()
    assert (share / "fish/vendor_completions.d/brindle.fish").exists()


def test_dpkg_installs_and_removes_them(packages, tmp_path):
    """Into a database of their own, without the scripts and dependencies of a whole system."""
    root = tmp_path / "root"
    (root / "var/lib/dpkg/updates").mkdir(parents=True)
    (root / "var/lib/dpkg/info").mkdir()
    (root / "var/lib/dpkg/status").touch()
    dpkg = ["dpkg", f"--root={root}", "--force-depends", "--force-not-root",
            "--force-script-chrootless", f"--log={tmp_path}/log"]
    run(*dpkg, "--install", *packages.values())
    assert (root / "usr/bin/brindle").exists()
    assert run(*dpkg, "--list", "brindle").splitlines()[-1].startswith("ii")
    run(*dpkg, "--purge", *PACKAGES)
    assert not (root / "usr/bin/brindle").exists()
