#!/usr/bin/env python3
"""Checks that the documents name nothing that does not exist, and runs the commands in them.

usage: check.py links                what they link to and name is there
       check.py commands BUILD       their commands work; BUILD holds bin/subburn
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")])

# Commands not run here, since they change the machine or have a test of their own.
ELSEWHERE = {
    "sudo apt install ./packages/*.deb",
    "cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DSUBTITLE_TESTS=OFF -DSUBTITLE_BENCH=OFF",
    "cmake --build build",
    "sudo cmake --install build && sudo ldconfig",
    "cc host.c $(pkg-config --cflags --libs libsubtitle)",
    "cc host.c $(pkg-config --static --cflags --libs libsubtitle)",
}
MADE = ("build", "demo", "packages")
FOLDERS = {path.name for path in ROOT.iterdir() if path.is_dir() and not path.name.startswith(MADE)}


def without_fences(text):
    return re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)


def anchors(document):
    """The anchors that the usual repository hosts derive from headings."""
    headings = re.findall(r"^#+ (.*)", without_fences(document.read_text()), re.M)
    return {re.sub(r"[^\w\- ]", "", heading).strip().lower().replace(" ", "-") for heading in headings}


def broken_links(document):
    text = without_fences(document.read_text())
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        if re.match(r"[a-z]+:", target):
            continue
        name, _, anchor = target.partition("#")
        path = (document.parent / name).resolve() if name else document
        if not path.exists():
            yield target
        elif anchor and anchor not in anchors(path):
            yield target


def missing_files(document):
    for name in re.findall(r"`([\w.]+/[\w./-]*)[^`]*`", document.read_text()):
        is_pattern = re.search("[A-Z]{3}", name)
        if name.split("/")[0] in FOLDERS and not is_pattern and not (ROOT / name).exists():
            yield name


def commands(document):
    """The commands in indented blocks, one per line; a line that ends in a pipe continues."""
    lines = re.findall(r"^\n((?:    .*\n)+)", without_fences(document.read_text()), re.M)
    for block in lines:
        for command in re.sub(r"\|\n +", "| ", block).splitlines():
            yield re.sub(r"\s+#.*", "", command).strip()


def check_links():
    failures = []
    for document in DOCUMENTS:
        failures += [f"{document.name}: {name}" for name in [*broken_links(document), *missing_files(document)]]
        for command in commands(document):
            program = ROOT / command.split()[0]
            if command.startswith(("scripts/", ".ci/")) and not os.access(program, os.X_OK):
                failures.append(f"{document.name}: {command}")
    pictures = {path.name for path in (ROOT / "docs").rglob("*") if path.suffix in (".png", ".jpg")}
    shown = set(re.findall(r"[\w-]+\.(?:png|jpg)", "".join(d.read_text() for d in DOCUMENTS)))
    failures += [f"no document shows {name}" for name in sorted(pictures - shown)]
    return failures


def run(command, folder):
    return subprocess.run(["bash", "-o", "pipefail", "-ec", command], cwd=folder, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False)


def must(command, folder):
    result = run(command, folder)
    if result.returncode != 0:
        sys.exit(f"{command}\n{result.stderr}")


def make_films(folder):
    """Makes the files that the commands in the documents name."""
    data = ROOT / "tests" / "data"
    index = (data / "sintel.idx").read_text()
    header, language = index[: index.index("id: en")], index[index.index("id: en") :]
    header = header.replace("langidx", "size: 720x576\nlangidx")
    folder.joinpath("movie.idx").write_text(header + language.replace("index: 0", "index: 2"))
    folder.joinpath("film.idx").write_text(header + language + language.replace("en, index: 0", "de, index: 1"))
    for name in ("movie.sub", "film.sub"):
        shutil.copy(data / "sintel.sub", folder / name)
    folder.joinpath("movie.srt").write_text("1\n00:00:01,000 --> 00:01:03,000\nA line\n")
    must("ffmpeg -v error -f lavfi -i color=gray:s=1280x720:r=1:d=64 -i movie.srt -c:v libx264 -preset ultrafast"
         " -c:s mov_text movie.mp4", folder)
    must("mkvmerge -q -o movie.mkv -S movie.mp4 movie.srt movie.srt movie.idx", folder)


def check_commands(build):
    failures = []
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        make_films(folder)
        for document in DOCUMENTS:
            for command in commands(document):
                if command in ELSEWHERE or command.startswith(("scripts/", ".ci/")):
                    continue
                command = re.sub(r"\bffmpeg ", "ffmpeg -v error -y ", command)
                # Several commands write the same file.
                if not re.search("--list|--pipe", command):
                    command = command.replace("bin/subburn ", "bin/subburn --overwrite ")
                result = run(command.replace("build/bin/", shlex.quote(build) + "/bin/"), folder)
                print(f"{document.name}: {command}")
                if result.returncode != 0:
                    failures.append(f"{document.name}: {command}\n{result.stdout}{result.stderr}")
    return failures


def main():
    if sys.argv[1:] == ["links"]:
        failures = check_links()
    elif len(sys.argv) == 3 and sys.argv[1] == "commands":
        failures = check_commands(sys.argv[2])
    else:
        sys.exit(__doc__)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
