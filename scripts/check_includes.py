"""Checks that every file includes only what its folder may, and that no headers include each other in a circle.

The folders are static libraries, and a static library can include what it does not link. So this script checks
the direction of the dependencies, include by include. It prints each wrong include and exits with 1 if there is
one.
"""

import pathlib
import re
import sys

SOURCES = pathlib.Path(__file__).resolve().parent.parent / "Sources"
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]', re.MULTILINE)

# What the files of a folder may include besides those of their own folder, as patterns of the path. A
# file belongs to the longest folder that fits. A folder that is not listed may include only itself.
MAY_INCLUDE = {
    "Support": [],
    "KeypressCore": ["Support/"],
    "Platform": ["Support/", "Platform/"],
    "Platform/Applications": ["Support/", r"Platform/Workspace\.h"],
    "Platform/StatusItem": ["Support/"],
    "Platform/Wayland": [
        "Support/",
        r"Platform/(EventTap|Workspace)\.h",
        "Platform/Applications/",
        r"Keytap/Protocol\.h",
    ],
    "Platform/X11": [
        "Support/",
        r"Platform/(EventTap|Workspace)\.h",
        "Platform/Applications/",
        "Platform/StatusItem/",
    ],
    "Updates": ["Support/", r"Platform/UserDefaults\.h"],
    "Model": ["Support/", "KeypressCore/", "Updates/", r"Platform/(HostName|UserDefaults)\.h"],
    "Presentation": ["Support/", "KeypressCore/", "Model/"],
    # Only the platform's public headers: App never sees which desktop it is.
    "App": [
        "Support/",
        "KeypressCore/",
        "Model/",
        "Presentation/",
        "Updates/",
        r"Platform/[A-Za-z]+\.h",
        r"Platform/StatusItem/Status(Item|Menu)\.h",
    ],
    "main.cpp": ["App/"],
}

# Libraries that only one folder may include.
BELONGS_TO = {"xcb/": "Platform/X11", "wayland-": "Platform/Wayland", "sqlite3": "KeypressCore", "sodium": "Updates"}


def name_of(file):
    """The file's name as includes write it."""
    return file.relative_to(SOURCES).as_posix().removeprefix("Fernhollow/")


def folder_of(name):
    fitting = [folder for folder in MAY_INCLUDE if name == folder or name.startswith(folder + "/")]
    return max(fitting, key=len, default=name.partition("/")[0])


def wrong_includes(name, includes):
    folder = folder_of(name)
    for quote, path in includes:
        if quote == '"':
            if "/" not in path:
                yield f'{name}: write the folder of "{path}", too'
            elif folder_of(path) != folder and not any(
                re.match(allowed, path) for allowed in MAY_INCLUDE.get(folder, [])
            ):
                yield f'{name}: {folder} may not include "{path}"'
        for library, owner in BELONGS_TO.items():
            if quote == "<" and path.startswith(library) and folder != owner:
                yield f"{name}: only {owner} may include <{path}>"


def circles(graph):
    """Each circle of includes once, as the path from a header back to itself."""
    done = set()

    def visit(name, path):
        if name in path:
            yield " -> ".join([*path[path.index(name) :], name])
        elif name not in done:
            for included in graph.get(name, []):
                yield from visit(included, [*path, name])
            done.add(name)

    for name in graph:
        yield from visit(name, [])


def main():
    files = [file for file in sorted(SOURCES.rglob("*")) if file.suffix in (".h", ".cpp")]
    includes = {name_of(file): INCLUDE.findall(file.read_text()) for file in files}
    wrong = [line for name, found in includes.items() for line in wrong_includes(name, found)]
    graph = {name: [path for quote, path in found if quote == '"'] for name, found in includes.items()}
    wrong += [f"a circle of includes: {circle}" for circle in circles(graph)]
    print("\n".join(wrong), end="\n" if wrong else "")
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
