"""Other people's programs that a person types in, and what they say they received."""

from .accessibility import AccessibleProgram
from .waiting import wait_until


class Terminal:
    """An xterm whose program writes down every byte it is given: the second opinion on our counts."""

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


class Editor:
    """A mousepad; its text is read through accessibility."""

    identifier = "org.xfce.mousepad"
    name = "Mousepad"

    def __init__(self, desktop):
        self._desktop = desktop
        process = desktop.spawn(["mousepad", "--disable-server"])
        self.window = wait_until(lambda: desktop.windows("mousepad"), "the editor's window", 30)[0]
        self._accessible = AccessibleProgram(desktop, process.pid)
        self._text = wait_until(lambda: self._accessible.shown("text"), "the editor's text", 30)[0]
        desktop.run("xdotool", "windowsize", self.window, 500, 300)
        desktop.run("xdotool", "windowmove", self.window, 1040, 420)

    def focus(self):
        self._desktop.focus(self.window)

    def received(self):
        return len(self._accessible.content(self._text))
