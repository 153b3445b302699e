"""Common parts of the robustness scripts: runs velhost as a program in a temporary folder."""

import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "velhost"))
from velhostcase import BRIDGE, SCHEMA, SOURCE, VELHOST  # noqa: E402, F401  # pylint: disable=wrong-import-position


class Folder:
    """A temporary folder in which velhost runs."""

    def __init__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="velhost-robustness-")
        self.path = pathlib.Path(self._folder.name)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._folder.cleanup()

    def write(self, name, text):
        (self.path / name).write_text(text)
        return str(self.path / name)

    def schema(self, registers, count):
        """A schema with the capture class and one R8 class with that many registers and instances."""
        lines = [f"[Offset({0x1000 + 8 * i}), MaxLen(8)] uint8 Register{i}[];" for i in range(registers)]
        text = SCHEMA.replace("@COUNT@", str(count)).replace("@REGISTERS@", "\n  ".join(lines))
        return self.write("schema.mof", text)

    def run(self, *arguments, velhost=VELHOST, **variables):
        return subprocess.run([velhost, *arguments], capture_output=True, timeout=300, cwd=self.path, check=False,
                              env=dict(os.environ, **variables))


class Tally:
    """Counts checks and failures, and prints the first failures."""

    def __init__(self):
        self.failures = 0

    def expect(self, holds, failure):
        if holds:
            return
        self.failures += 1
        if self.failures <= 20:
            print(f"FAILED: {failure}", file=sys.stderr)

    def end(self):
        print(f"{self.failures} failures")
        sys.exit(1 if self.failures else 0)
