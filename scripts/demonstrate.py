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
TEXT = "how many keys does one press in a day? more than one thinks. " * 20


def demonstrate(executable, picture):
    desktop = Desktop(host="tray", time_zone=None)
    try:
        program = Program(desktop, "person", executable=executable)
        terminal = Terminal(desktop)
        program.start()
        program.sign_in(ADDRESS)
        terminal.focus()
        desktop.type(TEXT)
        accessible = program.accessible()
        # The Return that ended the sign-in may have been counted for the account, too.
        counts = {f"{len(TEXT) + more:,}" for more in (0, 1)}
        wait_until(lambda: counts.intersection(accessible.texts()), "the count in the window")
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
    print(
        f"A picture of its screen is {picture.relative_to(TOP) if picture.is_relative_to(TOP) else picture}"
    )


if __name__ == "__main__":
    main()
