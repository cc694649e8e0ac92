"""Programs that use the library as others get it: installed, shared or static, or as a folder."""

import re

import pytest
from conftest import ROOT, run

TOUR = ROOT / "examples" / "cpp"

# The sample's facts and, further down, what the tour has set.
FIRST = "Layer 3, Joint Stereo, 44100 Hz\n128 kbit/s, 5564 ms\ntitle Good Morning, cue-in 120 ms\n"
AFTERWARDS = "title Morning jingle, cue-in 250 ms\nmood bright\n"


def check_tour(program, song, environment):
    audio = song.read_bytes()[1935:-128]
    printed = run(program, song, env=environment)
    assert FIRST in printed
    assert printed.endswith(AFTERWARDS)
    # 212 frames of 1,152 samples at 44,100 Hz; the file's size also counts its header's frame.
    assert "212 frames, 5538 ms\n" in printed
    assert "dead air" not in printed
    # As many as eyeD3 finds.
    assert "25 texts, 212 frames\n" in printed
    assert audio in song.read_bytes()


@pytest.fixture(params=["static", "shared"])
def prefix(request, tmp_path):
    build = request.getfixturevalue(request.param + "_build")
    place = tmp_path / "prefix"
    run("cmake", "--install", build, "--prefix", place)
    return place


def test_installed_package_is_found_by_cmake(prefix, song, environment, tmp_path):
    build = tmp_path / "build"
    run("cmake", "-S", TOUR, "-B", build, f"-DCMAKE_PREFIX_PATH={prefix}", env=environment)
    run("cmake", "--build", build, env=environment)
    check_tour(build / "tour", song, environment)


def test_installed_package_is_found_by_pkg_config(prefix, song, environment, tmp_path):
    environment["PKG_CONFIG_PATH"] = next(prefix.glob("lib*/**/pkgconfig"))
    flags = run("pkg-config", "--cflags", "--libs", "brindle", env=environment).split()
    library = next(prefix.glob("lib*/**/libbrindle.*")).parent
    run("g++", "-std=c++20", TOUR / "tour.cpp", *flags, f"-Wl,-rpath,{library}",
        "-o", tmp_path / "tour", env=environment)
    check_tour(tmp_path / "tour", song, environment)


def test_moved_package_is_found_where_it_is(static_build, environment, tmp_path):
    run("cmake", "--install", static_build, "--prefix", tmp_path / "first")
    (tmp_path / "first").rename(tmp_path / "second")
    environment["PKG_CONFIG_PATH"] = next((tmp_path / "second").glob("lib*/**/pkgconfig"))
    flags = run("pkg-config", "--cflags", "brindle", env=environment).split()
    assert any((tmp_path / "second").samefile(flag[2:] + "/..") for flag in flags
               if flag.startswith("-I"))


def test_folder_can_be_added_to_a_project(song, environment, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text(
        "cmake_minimum_required(VERSION 3.16)\n"
        "project(Station LANGUAGES CXX)\n"
        f"add_subdirectory({ROOT} brindle)\n"
        f"add_subdirectory({TOUR} tour)\n")
    run("cmake", "-G", "Ninja", "-S", tmp_path, "-B", tmp_path / "build", env=environment)
    listed = run("ninja", "-C", tmp_path / "build", "-t", "targets", "all", env=environment)
    assert "brindle_program" not in listed, "only the library is built"
    run("cmake", "--build", tmp_path / "build", env=environment)
    check_tour(tmp_path / "build" / "tour" / "tour", song, environment)


def test_only_public_headers_are_installed(prefix):
    installed = sorted(path.relative_to(prefix / "include")
                       for path in (prefix / "include").rglob("*.*"))
    public = sorted(path.relative_to(ROOT / "include")
                    for path in (ROOT / "include").rglob("*.h"))
    assert installed == public
    assert len(public) >= 8


def test_shared_library_shows_only_what_the_headers_declare(shared_build):
    library = shared_build / "libbrindle.so"
    symbols = run("nm", "-DC", "--defined-only", library)
    names = set(re.findall(r"^\w+ \w (?:typeinfo for |typeinfo name for |vtable for )?brindle::(\w+)",
                           symbols, re.MULTILINE))
    assert names == {"cMPEGHeader", "Error", "KeyedCollection", "GenreName", "plan_save",
                     "plan_strip", "walk_frames", "to_utf8", "from_utf8", "fits_code_page",
                     "TagEdit", "EditPlan", "FileSession", "read_tag_facts", "compare_tag", "TagFacts",
                     "TagText", "write_content"}


def test_code_of_the_guide_is_that_of_the_tour():
    guide = (ROOT / "docs" / "cpp.md").read_text()
    tour = (TOUR / "tour.cpp").read_text()
    blocks = re.findall(r"```cpp\n(.*?)```", guide, re.DOTALL)
    assert len(blocks) >= 8
    for block in blocks:
        assert block in tour


@pytest.mark.slow
@pytest.mark.parametrize("compiler", ["g++-11", "clang++-16"])
def test_older_and_newer_compilers_build_it(compiler, song, environment, tmp_path):
    """g++ 12 and clang 14 are those of the other builds."""
    run("cmake", "--preset", "release", "-B", tmp_path, f"-DCMAKE_CXX_COMPILER={compiler}",
        "-DCMAKE_CXX_FLAGS_RELEASE=-O0", cwd=ROOT)
    run("cmake", "--build", tmp_path)
    printed = run(tmp_path / "host" / "brindle", "show", song, env=environment)
    assert "Good Morning" in printed
