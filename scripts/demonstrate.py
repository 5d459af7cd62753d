"""Shows Fernhollow at work where there is no display: on a virtual desktop with a home of its own.

Arguments: the program, and where the picture of the screen goes. Prints what was counted and where the
picture lies, one line each.
"""

import pathlib
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "Tests" / "EndToEnd"))

from harness.applications import Terminal  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.program import Program  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

ADDRESS = "you@example.org"
SENTENCE = "how many keys does one press in a day? more than one thinks. "


def demonstrate(executable, picture):
    desktop = Desktop(host="tray", time_zone=None)
    try:
        program = Program(desktop, "person", executable=executable)
        terminal = Terminal(desktop)
        program.start()
        program.sign_in(ADDRESS)
        terminal.focus()
        desktop.type(SENTENCE * 4, 20)
        wait_until(lambda: terminal.received() == len(SENTENCE) * 4, "the terminal receiving all keys")
        desktop.focus(program.open_window())
        accessible = program.accessible()
        wait_until(lambda: any(terminal.name in text for text in accessible.texts()), "the window's figures")
        desktop.screenshot(picture)
        program.quit()
        tables = program.tables(ADDRESS)
    finally:
        desktop.end()
    return sum(tables["daily"].values()), sum(tables["applications"].values()), terminal.name


def main():
    executable, picture = (pathlib.Path(argument).absolute() for argument in sys.argv[1:])
    picture.parent.mkdir(parents=True, exist_ok=True)
    try:
        total, attributed, name = demonstrate(executable, picture)
    except (AssertionError, OSError, subprocess.SubprocessError) as problem:
        sys.exit(f"fernhollow: the demonstration failed: {problem}")
    print(f"Fernhollow counted {total} key presses today, {attributed} of them in {name}.")
    print(f"The screen is in {picture.relative_to(TOP) if picture.is_relative_to(TOP) else picture}")


if __name__ == "__main__":
    main()
