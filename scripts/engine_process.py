"""An engine under measurement, for the scripts beside this file."""

import subprocess
import tempfile
import threading


class EngineProcess:
    """A program in an empty folder, so without settings and opening book; ended with the `with` block.

    It is killed after `patience` seconds, which also ends every wait for its lines.
    """

    def __init__(self, command, patience):
        self.home = tempfile.TemporaryDirectory(prefix="valku-measure-")
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, text=True, bufsize=1, cwd=self.home.name)
        self.watchdog = threading.Timer(patience, self.process.kill)
        self.watchdog.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.watchdog.cancel()
        try:
            self.send("quit")
            self.process.wait(5)
        except (OSError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()
        self.home.cleanup()

    def send(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
