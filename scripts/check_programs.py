"""Checks that scripts/packages.txt lists what our scripts and tests call.

Every program that a script, the harness or a test starts, and every Python module that they import, has to come
from a package in the groups that the command installs, from a dependency of such a package (or a dependency's
dependency), or from a minimal Debian. A machine that has run the tests has them all, so only this check and
scripts/prove_front_door notice a package that is missing elsewhere.
"""

import ast
import importlib.util
import pathlib
import re
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
HARNESS = TOP / "Tests/EndToEnd"
PROGRAM_FOLDERS = ("/usr/bin/", "/usr/sbin/", "/bin/", "/sbin/")
NAME = re.compile(r"[A-Za-z][\w.+-]*")
STARTED_IN_CPP = re.compile(r'\b(?:start|startDetached|execute|popen|setProgram)\(\s*(?:QStringLiteral\()?"([\w.+-]+)')
QUOTED = re.compile(r"'[^']*'|\"[^\"$]*\"")
# After these words a command follows.
STARTERS = {"if", "then", "elif", "else", "while", "do", "exec", "setsid", "xargs", "--"}

# These need not be installed: pg_config is called only where Debian's own folders are missing, node by one
# test that is skipped without it, kwin_wayland likewise, haproxy by a test that only .ci/run runs.
ELSEWHERE = {"pg_config", "node", "kwin_wayland", "haproxy"}

RUN = ("build", "run", "backend")
# The groups that each command installs, and the files that it runs. Patterns are relative to the top folder.
CALLERS = {
    RUN: ["run", "scripts/common.sh", "scripts/packages.sh", "scripts/backend.sh", "Backend/local/*", "Backend/migrate"],
    (*RUN, "demo"): ["scripts/demonstrate.py"],
    (*RUN, "test"): ["test", "Tests/**/*", "Backend/tests/run", "scripts/screenshots*", "Packaging/*"],
    (*RUN, "test", "benchmark"): ["scripts/benchmark", "Benchmarks/**/*.py"],
    (*RUN, "test", "check"): [
        *(".ci/run", "scripts/check_package", "scripts/fuzz", "scripts/keytap_kernel*", "scripts/lint"),
        *("scripts/tidy.py", "scripts/format"),
    ],
}


def installed():
    """The installed packages: whether a minimal Debian has them, and their dependencies."""
    fields = "${Package}\t${Essential}\t${Priority}\t${Pre-Depends}, ${Depends}\n"
    listing = subprocess.run(["dpkg-query", "-W", "-f", fields], capture_output=True, text=True, check=True)
    packages = {}
    for line in listing.stdout.splitlines():
        name, essential, priority, depends = line.split("\t")
        is_minimal = essential == "yes" or priority == "required" or name == "apt"
        packages[name] = (is_minimal, set(re.findall(r"(?:^|[,|] *)([a-z0-9][a-z0-9.+-]*)", depends)))
    return packages


def owners():
    """Which package each installed file belongs to."""
    found = {}
    for listing in pathlib.Path("/var/lib/dpkg/info").glob("*.list"):
        for path in listing.read_text().splitlines():
            found[path] = listing.name.removesuffix(".list").split(":")[0]
    return found


def python_words(text):
    """Names in the places where a command is written: first of a list, or of the arguments of a call."""
    for node in ast.walk(ast.parse(text)):
        parts = node.elts if isinstance(node, (ast.List, ast.Tuple)) else []
        parts = node.args if isinstance(node, ast.Call) else parts
        if parts and isinstance(parts[0], ast.Constant) and isinstance(parts[0].value, str):
            if not parts[0].value.isupper():  # GET and POST are programs too, of a package that lintian brings
                yield parts[0].value


def python_imports(text):
    for node in ast.walk(ast.parse(text)):
        if isinstance(node, ast.Import):
            yield from (name.name for name in node.names)
        elif isinstance(node, ast.ImportFrom) and not node.level:
            yield node.module
        elif isinstance(node, ast.ImportFrom) and not node.module:
            yield from (f".{name.name}" for name in node.names)
        elif isinstance(node, ast.ImportFrom):
            yield f".{node.module}"


def shell_words(text):
    """Names in the places where the shell expects a command."""
    for line in text.splitlines():
        line = re.sub(r"(^|\s)#.*", "", QUOTED.sub(" _ ", line))
        is_command = True
        for token in re.findall(r"\$\(|[|&;(){}!]+|[^\s|&;(){}!]+", line):
            if is_command and NAME.fullmatch(token):
                yield token
            is_command = token in STARTERS or bool(re.fullmatch(r"\$\(|[|&;({!]+|\w+=\S*", token))


def words_and_imports(file):
    text = file.read_text(errors="replace")
    first = text.partition("\n")[0] if text.startswith("#!") else ""
    if file.suffix == ".py" or "python" in first:
        return set(python_words(text)), set(python_imports(text))
    if file.suffix in (".cpp", ".h"):
        return set(STARTED_IN_CPP.findall(text)), set()
    if file.suffix == ".sh" or "bash" in first:
        return set(shell_words(text)), set()
    return set(), set()


def own_modules(file, imports):
    """The files of ours that a Python file imports."""
    for name in imports:
        for base in [file.parent] if name.startswith(".") else [file.parent, HARNESS]:
            path = base / (name.lstrip(".").replace(".", "/") + ".py")
            if path.is_file():
                yield path


def files_of(patterns):
    """The files that match the patterns, and those that they import, directly or indirectly."""
    waiting = [path for pattern in patterns for path in sorted(TOP.glob(pattern)) if path.is_file()]
    seen = set()
    while waiting:
        file = waiting.pop()
        if file not in seen and file.suffix not in (".pyc", ".png"):
            seen.add(file)
            waiting.extend(own_modules(file, words_and_imports(file)[1]))
    return sorted(seen)


class Checker:
    def __init__(self):
        self.packages = installed()
        self.owners = owners()
        python = subprocess.run(["git", "ls-files", "*.py"], cwd=TOP, capture_output=True, text=True, check=True)
        self.own_modules = {part.removesuffix(".py") for path in python.stdout.split() for part in path.split("/")}
        self.problems = []

    def owner_of_program(self, word):
        return next((self.owners[f + word] for f in PROGRAM_FOLDERS if f + word in self.owners), None)

    def owner_of_module(self, name):
        top = name.partition(".")[0]
        if not top or top in sys.stdlib_module_names or top in self.own_modules:
            return None
        spec = importlib.util.find_spec(top)
        return self.owners.get(str(spec.origin)) if spec else f"a package that has the module {top}"

    def with_dependencies(self, names):
        return names.union(*(self.packages[name][1] for name in names if name in self.packages))

    def check(self, groups, patterns):
        listed = subprocess.run(
            ["bash", "-c", '. scripts/common.sh; packages_of "$@"', "bash", *groups],
            cwd=TOP, capture_output=True, text=True, check=True,
        ).stdout.split()
        allowed = self.with_dependencies(self.with_dependencies(set(listed)))
        for file in files_of(patterns):
            words, imports = words_and_imports(file)
            needed = {word: self.owner_of_program(word) for word in words - ELSEWHERE if NAME.fullmatch(word)}
            needed |= {name: self.owner_of_module(name) for name in imports}
            for what, package in sorted(needed.items()):
                is_minimal = package in self.packages and self.packages[package][0]
                if package and not is_minimal and package not in allowed:
                    self.problems.append(
                        f"{file.relative_to(TOP)} needs {what} of {package}, which none of the groups"
                        f" {', '.join(groups)} has in scripts/packages.txt"
                    )


def main():
    checker = Checker()
    for groups, patterns in CALLERS.items():
        checker.check(groups, patterns)
    print(*checker.problems, sep="\n")
    sys.exit(1 if checker.problems else 0)


if __name__ == "__main__":
    main()
