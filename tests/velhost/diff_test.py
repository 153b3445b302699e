"""velhost diff: which inputs it takes, and its exit statuses."""

import json
import os
import pathlib
import subprocess
import threading
import unittest

from velhostcase import VELHOST, VelhostCase

SERVER = """machine_type = "4411"
[[bmc_node]]
[[bmc_node.register]]
address = 0x0F0000
value = "{value} 00 00 00 00 00 00 00"
[[bmc_node.register]]
address = 0x0F0008
value = "00 00 00 00 00 00 00 00"
{fault}
"""
CLASS = "KROSG_T4_MEMCTL_StatisticData"
FAULT = '[[fault]]\non = "register"\nnth = 2\ncompletion_code = 0xC3\n'


class Diff(VelhostCase):
    def collected(self, name, value="01", fault="", *options):
        server = self.folder / f"{name}.toml"
        server.write_text(SERVER.format(value=value, fault=fault))
        path = self.folder / f"{name}.json"
        subprocess.run([VELHOST, "collect", "--sp", f"sim:{server}", CLASS, "--format", "json", "-o", path, *options],
                       check=False, capture_output=True, timeout=60)
        return str(path)

    def diff(self, *arguments, status):
        done = subprocess.run([VELHOST, "diff", *arguments], check=False, capture_output=True, timeout=60,
                              cwd=self.folder, env={**os.environ, "COLUMNS": "80"})
        self.assertEqual(done.returncode, status, done.stderr.decode())
        return done.stdout.decode(), done.stderr.decode()

    def test_the_status_says_whether_something_changed(self):
        one, same, other = self.collected("one"), self.collected("same"), self.collected("other", "02")
        self.diff(one, same, status=0)
        text, _ = self.diff(one, other, status=1)
        self.assertIn("ChipIdentification: 0x00000001 -> 0x00000002", text)

    def test_what_was_not_read_cannot_be_compared(self):
        text, _ = self.diff(self.collected("one"), self.collected("failed", "01", FAULT), status=3)
        self.assertIn("GlobalErrorStatus; after: was not read", " ".join(text.split()))
        document = json.loads(self.diff(self.collected("one"), self.collected("failed", "02", FAULT), "--format", "json",
                                        status=1)[0])
        self.assertEqual(document["uncompared"],
                         [{"class": CLASS, "key": f"{CLASS}/node0/instance0", "property": "GlobalErrorStatus",
                           "after": "unread"}])

    def test_a_recording_is_replayed(self):
        recording = str(self.folder / "run.jsonl")
        one = self.collected("one", "01", "", "--record", recording)
        self.diff(one, recording, status=0)
        self.diff(recording, self.collected("other", "02"), status=1)

    def test_a_pipe_is_read_like_a_file(self):
        one = self.collected("one")
        recording = str(self.folder / "run.jsonl")
        self.collected("again", "01", "", "--record", recording)
        for source in (one, recording):
            pipe = str(self.folder / "pipe")
            os.mkfifo(pipe)
            with open(source, "rb") as file:
                text = file.read()
            writer = threading.Thread(target=pathlib.Path(pipe).write_bytes, args=(text,))
            writer.start()
            self.diff(one, pipe, status=0)
            writer.join()
            os.remove(pipe)

    def test_what_is_not_a_whole_result_of_version_2_is_refused(self):
        one = self.collected("one")
        old = self.folder / "old.json"
        old.write_text('{"kind":"instancecollection","machine_type":"4411","instances":[]}')
        _, message = self.diff(one, str(old), status=65)
        self.assertIn("old.json:1:1: error: found a result of version 1, expected version 2; if the run was recorded, its "
                      "recording can be read instead", message)
        filtered = self.collected("filtered", "01", "", "--only-findings")
        _, message = self.diff(filtered, one, status=65)
        self.assertIn("filtered.json has only findings and what belongs to them", message)
        _, message = self.diff(one, str(self.folder / "one.toml"), status=65)
        self.assertIn("one.toml is a server file, not a result", message)
        self.diff(one, "missing.json", status=66)
        self.diff(one, status=64)
        self.diff(one, one, one, status=64)

    def test_a_cut_result_is_compared_up_to_the_cut(self):
        one = self.collected("one")
        cut = self.folder / "cut.json"
        with open(one, encoding="utf-8") as file:
            text = file.read()
        cut.write_text(text[:text.index('"status"')])
        out, message = self.diff(one, str(cut), status=3)
        self.assertIn("warning: the result was cut here", message)
        self.assertIn("what follows the cut, and the findings; after: was cut", " ".join(out.split()))


if __name__ == "__main__":
    unittest.main()
