"""A virtual X server of one's own."""

import os
import subprocess


class Screen:
    """Sets DISPLAY for everything that is started within the `with` block."""

    def __enter__(self):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1024x768x24", "-nolisten", "tcp"],
                                       pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as numbers:
            os.environ["DISPLAY"] = ":" + numbers.readline().strip()
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        if self.server.poll() is None:
            self.server.terminate()
            self.server.wait()
