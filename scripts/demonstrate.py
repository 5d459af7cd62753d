"""Shows Fernhollow at work where there is no display: on a virtual desktop with a home of its own.

Arguments: the program, the file for a picture of the screen and, if there is a backend, its address and its key.
Prints what was counted, what the backend has of it and where the picture is, one line each.
"""

import datetime
import json
import pathlib
import signal
import subprocess
import sys
import time
import urllib.request

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "Tests" / "EndToEnd"))

from harness.terminal import Terminal  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.program import Program  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

# A new account each time, because the backend keeps what earlier demonstrations sent.
ADDRESS = f"you+{time.strftime('%H%M%S')}@example.org"
TEXT = "how many keys does one press in a day? more than one thinks. " * 20


class Server:
    """The backend, asked as its clients ask."""

    def __init__(self, url, key):
        self._url = url
        self._key = key
        self._seen = None

    def total(self):
        """The account's total of today over all its devices."""
        arguments = {"p_email": ADDRESS, "p_day": datetime.date.today().isoformat()}
        request = urllib.request.Request(
            f"{self._url}/rest/v1/rpc/get_account_today_total",
            json.dumps(arguments).encode(),
            {
                "Content-Type": "application/json",
                "apikey": self._key,
                "Authorization": f"Bearer {self._key}",
            },
        )
        with urllib.request.urlopen(request, timeout=5) as answer:
            return json.load(answer)

    def wait_for(self, count, seconds=15):
        """One sentence on what the backend has, once that is `count` or `seconds` have passed."""
        try:
            wait_until(lambda: self._look() >= count, "the account's total", seconds, 0.2)
        except AssertionError:
            return f"Its server has {self._seen} of them for {ADDRESS}; all were expected within {seconds} s."
        except (OSError, ValueError) as problem:
            return f"Its server cannot say what it has of them: {problem}."
        return f"Its server has {self._seen} of them for {ADDRESS}."

    def _look(self):
        self._seen = self.total()
        return self._seen


def demonstrate(executable, picture, server):
    desktop = Desktop(host="tray", time_zone=None)
    try:
        program = Program(desktop, "person", executable=executable)
        terminal = Terminal(desktop)
        program.start()
        program.sign_in(ADDRESS)
        terminal.focus()
        desktop.type(TEXT)
        accessible = program.accessible()
        # The Return key that ended the sign-in may count for the account, too.
        counts = {f"{len(TEXT) + more:,}": len(TEXT) + more for more in (0, 1)}
        shown = wait_until(lambda: counts.keys() & accessible.texts(), "the count in the window")
        uploaded = server and server.wait_for(counts[shown.pop()])
        desktop.screenshot(picture)
        program.quit()
        tables = program.tables(ADDRESS)
    finally:
        desktop.end()
    total, attributed = sum(tables["daily"].values()), sum(tables["applications"].values())
    counted = f"Fernhollow counted {total} key presses today, {attributed} of them in {terminal.name}."
    return [counted] + ([uploaded] if uploaded else [])


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # the desktop ends with us
    executable, picture = (pathlib.Path(argument).absolute() for argument in sys.argv[1:3])
    server = Server(*sys.argv[3:5]) if len(sys.argv) > 3 else None
    picture.parent.mkdir(parents=True, exist_ok=True)
    try:
        sentences = demonstrate(executable, picture, server)
    except (AssertionError, OSError, subprocess.SubprocessError) as problem:
        sys.exit(f"fernhollow: the demonstration failed: {problem}")
    print(*sentences, sep="\n")
    print(
        f"A picture of its screen is {picture.relative_to(TOP) if picture.is_relative_to(TOP) else picture}"
    )


if __name__ == "__main__":
    main()
