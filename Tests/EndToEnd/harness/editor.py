"""An editor that a person types in, and the text that it received."""

from .accessibility import AccessibleProgram
from .waiting import wait_until


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
