"""Reads C++ files with clang-tidy, all cores at once, and remembers which passed.

Arguments: the folder of a configured build without precompiled headers, then patterns of files; without a
pattern all files are read. A file is read again only when something changed that its result depends on:
the file, a header of ours that it includes, its compiler flags, the checks, or the installed packages. What
passed is remembered outside the checkout ($XDG_CACHE_HOME/fernhollow/lint), so that a second checkout profits.
Prints what clang-tidy found and exits with 1 if it found anything.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
CLANG_TIDY = "clang-tidy-19"
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)
INCLUDE_FOLDER = re.compile(r"-I\s*(\S+)")
FORGOTTEN_AFTER = 60 * 86400  # seconds without use
STAMPS = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "fernhollow/lint"


def with_headers(source, folders):
    """The file and every header of ours that it includes, directly or indirectly."""
    found, waiting = {source}, [source]
    while waiting:
        file = waiting.pop()
        for name in INCLUDE.findall(file.read_text()):
            candidates = (folder / name for folder in (file.parent, *folders))
            header = next((path.resolve() for path in candidates if path.is_file()), None)
            if header and header.is_relative_to(TOP) and header not in found:
                found.add(header)
                waiting.append(header)
    return sorted(found)


def surroundings():
    """What the result depends on besides the code, as one text."""
    packages = subprocess.run(
        ["bash", "-c", ". scripts/common.sh; dpkg-query -W $(packages_of build test check) 2>/dev/null"],
        cwd=TOP,
        capture_output=True,
        text=True,
    ).stdout
    version = subprocess.run([CLANG_TIDY, "--version"], capture_output=True, text=True, check=True).stdout
    checks = sorted(TOP.glob("**/.clang-tidy"))
    ours = [file for file in checks if "build" not in file.relative_to(TOP).parts]
    return packages + version + "".join(file.read_text() for file in ours)


def stamp_of(entry, common):
    command = entry["command"].replace(str(TOP), "")
    folders = [pathlib.Path(folder) for folder in INCLUDE_FOLDER.findall(entry["command"])]
    key = hashlib.sha256((common + command).encode())
    for file in with_headers(pathlib.Path(entry["file"]), folders):
        key.update(str(file.relative_to(TOP)).encode() + b"\0" + file.read_bytes())
    return STAMPS / key.hexdigest()


def read(build, entry, stamp):
    """What clang-tidy reports about a file; empty if the file passed."""
    done = subprocess.run(
        [CLANG_TIDY, "-p", build, "--quiet", entry["file"]], capture_output=True, text=True
    )
    if done.returncode == 0:
        stamp.touch()
        return ""
    return done.stdout or done.stderr


def forget_unused():
    for stamp in STAMPS.iterdir():
        if time.time() - stamp.stat().st_mtime > FORGOTTEN_AFTER:
            stamp.unlink(missing_ok=True)


def main():
    build, patterns = sys.argv[1], sys.argv[2:] or [""]
    database = json.loads((pathlib.Path(build) / "compile_commands.json").read_text())
    ours = [
        entry
        for entry in database
        if f"{TOP}/build/" not in entry["file"] and any(re.search(p, entry["file"]) for p in patterns)
    ]
    STAMPS.mkdir(parents=True, exist_ok=True)
    common = surroundings()
    stamps = {entry["file"]: (entry, stamp_of(entry, common)) for entry in ours}
    due = [(entry, stamp) for entry, stamp in stamps.values() if not stamp.exists()]
    for _, stamp in stamps.values():
        if stamp.exists():
            stamp.touch()
    print(f"clang-tidy reads {len(due)} of {len(stamps)} files; the others passed as they are.", flush=True)
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for finding in pool.map(lambda job: read(build, *job), due):
            if finding:
                failed += 1
                print(finding, flush=True)
    forget_unused()
    if failed:
        sys.exit(f"clang-tidy found something in {failed} files")


if __name__ == "__main__":
    main()
