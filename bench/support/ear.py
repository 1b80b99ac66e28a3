"""Hears what a player sends to its output, as it comes."""
import os
import select
import struct
import threading
import time


class Ear:
    """A pipe to give to the player as its output. Heard levels tell the tracks apart."""

    def __init__(self, folder):
        self.name = os.path.join(folder, "sound")
        os.mkfifo(self.name)
        # Open for writing too, so that it never ends between two items.
        self.pipe = os.open(self.name, os.O_RDWR | os.O_NONBLOCK)
        self.changed = threading.Condition()
        self.level = 0  # Of the last sample.
        self.heard = 0.0  # When it came.
        self.open = True
        self.thread = threading.Thread(target=self._listen, daemon=True)
        self.thread.start()

    def sink(self):
        return (f"audioconvert ! audio/x-raw,format=S16LE,channels=2,rate=44100,"
                f"layout=interleaved ! filesink buffer-mode=unbuffered sync=true "
                f"location={self.name}")

    def close(self):
        self.open = False
        self.thread.join()
        os.close(self.pipe)

    def _listen(self):
        while self.open:
            if not select.select([self.pipe], [], [], 0.2)[0]:
                continue
            data = os.read(self.pipe, 65536)
            now = time.monotonic()
            with self.changed:
                self.level = struct.unpack("<h", data[-2:])[0]
                self.heard = now
                self.changed.notify_all()

    def wait(self, hears, since, seconds=20.0):
        """Seconds from `since` until sound came of which hears(level) is true."""
        with self.changed:
            if not self.changed.wait_for(
                    lambda: self.heard > since and hears(self.level), seconds):
                raise TimeoutError("nothing was heard")
            return self.heard - since
