"""The Debian packages, taken apart, checked and installed beside the system."""

import os

import pytest
from conftest import run

PACKAGES = ["brindle", "libbrindle-dev", "libbrindle0"]


@pytest.fixture(scope="module")
def packages(shared_build):
    folder = shared_build / "packages"
    for old in folder.glob("*.deb"):
        old.unlink()
    # Where the caller's mask is strict, packages must not be.
    run("cpack", "-G", "DEB", cwd=shared_build, preexec_fn=lambda: os.umask(0o022))
    return {run("dpkg-deb", "-f", path, "Package").strip(): path for path in folder.glob("*.deb")}


@pytest.fixture(scope="module")
def system(packages, tmp_path_factory):
    """A folder into which the packages were unpacked, as dpkg unpacks them into /."""
    root = tmp_path_factory.mktemp("system")
    for path in packages.values():
        run("dpkg-deb", "-x", path, root)
    return root


def test_there_is_one_for_each_kind_of_user(packages):
    assert sorted(packages) == PACKAGES


def test_lintian_finds_no_error(packages):
    printed = run("lintian", "--fail-on", "error", "--allow-root", *packages.values())
    assert "E: " not in printed


def test_each_depends_on_what_it_needs(packages):
    def depends(name):
        return run("dpkg-deb", "-f", packages[name], "Depends")

    assert "libbrindle0 (= 0.1.0)" in depends("libbrindle-dev")
    assert "libbrindle0" in depends("brindle")
    assert "libstdc++6" in depends("libbrindle0")


def test_installed_program_shows_the_sample(system, song, environment):
    environment["LD_LIBRARY_PATH"] = next(system.glob("usr/lib/**/libbrindle.so.0")).parent
    printed = run(system / "usr/bin/brindle", "show", song, env=environment)
    assert "Good Morning" in printed


def test_program_has_its_pages_and_completions(system):
    share = system / "usr" / "share"
    assert (share / "man/man1/brindle.1.gz").exists()
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
