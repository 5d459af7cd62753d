"""Child processes that never outlive the test that started them."""

import ctypes
import signal
import subprocess

_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)


def _die_with_parent():
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)


def start(command, environment, log, **options):
    """Starts a child whose output goes to the file `log`; it is killed when this process ends."""
    with open(log, "ab") as output:
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", output)
        return subprocess.Popen(
            [str(part) for part in command],
            env=environment,
            stderr=output,
            preexec_fn=_die_with_parent,
            **options,
        )


def run(command, environment, seconds):
    """Runs a command to its end and returns its result."""
    return subprocess.run(
        command, env=environment, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=seconds
    )


def end(child, seconds=5):
    """Asks a child to end, and kills it if it does not."""
    if child.poll() is None:
        child.terminate()
        child.send_signal(signal.SIGCONT)  # in case a test stopped it
        try:
            child.wait(seconds)
        except subprocess.TimeoutExpired:
            child.kill()
    child.wait()
    for pipe in (child.stdin, child.stdout):
        if pipe:
            pipe.close()
