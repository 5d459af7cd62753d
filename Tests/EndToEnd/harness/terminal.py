"""A terminal that a person types in, and the keys that it received."""

from .waiting import wait_until


class Terminal:
    """An xterm whose program writes down every byte that it receives, as an independent count."""

    identifier = "debian-xterm"
    name = "XTerm"

    def __init__(self, desktop):
        self._received = desktop.folder / "terminal-received"
        self._desktop = desktop
        reader = f"stty raw -echo; exec tee {self._received}"
        desktop.spawn(["xterm", "-geometry", "80x16+1040+40", "-T", "Terminal", "-e", "sh", "-c", reader])
        self.window = wait_until(lambda: desktop.windows("xterm"), "the terminal's window", 30)[0]
        wait_until(self._received.exists, "the terminal's program", 30)

    def focus(self):
        self._desktop.focus(self.window)

    def received(self):
        return self._received.stat().st_size
