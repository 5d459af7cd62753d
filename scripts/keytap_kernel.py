"""Boots a kernel with an image in QEMU, types where the image asks for it, and ends with its verdict."""

import re
import subprocess
import sys
import tempfile
import threading
import time

LIMIT = 240  # seconds; an idle machine needs 25


def qemu(kernel, image, monitor):
    return subprocess.Popen(
        ["qemu-system-x86_64", "-accel", "tcg", "-m", "256", "-nodefaults", "-display", "none", "-no-reboot",
         "-device", "piix3-usb-uhci", "-device", "usb-kbd", "-serial", "stdio",
         "-chardev", f"pipe,id=monitor,path={monitor}", "-mon", "chardev=monitor",
         "-kernel", kernel, "-initrd", image, "-append", "console=ttyS0 quiet panic=-1"],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
    )


def type_keys(monitor, count):
    """Presses keys of the top letter row; before each one Shift, which does not count."""
    with open(f"{monitor}.in", "w") as keys:
        for i in range(count):
            for key in ("shift", "qwertyuiop"[i % 10]):
                keys.write(f"sendkey {key} 20\n")
                keys.flush()
                time.sleep(0.06)


def main(kernel, image):
    folder = tempfile.TemporaryDirectory(prefix="fernhollow-kernel-")
    monitor = f"{folder.name}/monitor"
    subprocess.run(["mkfifo", f"{monitor}.in", f"{monitor}.out"], check=True)
    started = time.monotonic()
    machine = qemu(kernel, image, monitor)
    watchdog = threading.Timer(LIMIT, machine.kill)
    watchdog.start()
    failures = None
    for line in machine.stdout:
        print(f"{time.monotonic() - started:5.1f} {line.rstrip()}", flush=True)
        if match := re.match(r"TYPE (\d+)", line):
            type_keys(monitor, int(match[1]))
        if match := re.match(r"DONE (\d+)", line):
            failures = int(match[1])
    machine.wait()
    watchdog.cancel()
    folder.cleanup()
    sys.exit("the virtual machine ended early" if failures is None else failures)


if __name__ == "__main__":
    main(*sys.argv[1:])
