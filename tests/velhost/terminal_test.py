"""What a user at a terminal sees: the progress line next to the data, and messages."""

import unittest

from velhostcase import BRIDGE, VELHOST, VelhostCase

SERVER = """
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "00 00 00 01"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "00 01 02 03"
[[fault]]
on = "ipmi"
delay_ms = 10
"""


class Screen:
    """The lines that a terminal shows after carriage returns and newlines have been applied."""

    def __init__(self):
        self.lines = [""]
        self.column = 0

    def feed(self, text):
        for character in text:
            if character == "\r":
                self.column = 0
            elif character == "\n":
                self.lines.append("")
            else:
                line = self.lines[-1].ljust(self.column)
                self.lines[-1] = line[:self.column] + character + line[self.column + 1:]
                self.column += 1
        return self


class Terminal(VelhostCase):
    def setUp(self):
        super().setUp()
        registers = {f"Register{i}": (0x1000 + 8 * i, 8) for i in range(12)}
        self.arguments = ["collect", "--schema", self.schema(registers, count=3), "--sp",
                          "sim:" + self.write("slow.toml", SERVER)]

    def on_terminal(self, command):
        """Returns everything that a command writes to a terminal of its own."""
        return self.run_on_terminal(command, {"NO_COLOR": "1", "PAGER": "cat"})[0]

    def check_screen(self, shown):
        self.assertRegex(shown, r"\[1/\d\] .*\d exchange", "the progress line was never drawn")
        lines = Screen().feed(shown).lines
        for line in lines:
            self.assertNotRegex(line, r"\[\d/\d\]|/s, ")
        return [line.rstrip() for line in lines]

    def test_table_and_progress_line_do_not_mix(self):
        shown = self.on_terminal([VELHOST, *self.arguments, BRIDGE, "KROSG_DCAPFile"])
        self.assertIn("[1/2]", shown)
        lines = self.check_screen(shown)
        self.assertRegex(lines[0], "^SIMULATED: sim:.*/slow.toml, not a real service processor$")
        self.assertEqual([line for line in lines if line.startswith(BRIDGE)],
                         [f"{BRIDGE}  node0/instance{number}" for number in range(3)])
        self.assertEqual(lines[-1], "")
        self.assertEqual(shown[-1], "\n", "nothing is erased behind the table")

    def test_json_and_progress_line_do_not_mix(self):
        for form in ("json", "jsonl"):
            lines = self.check_screen(self.on_terminal([VELHOST, *self.arguments, "--format", form, BRIDGE]))
            self.assertEqual(lines[0][0], "{", form)

    def test_behind_a_pipe_the_line_does_not_come_back(self):
        command = f'"$0" "$@" --format jsonl {BRIDGE} | cat'
        lines = self.check_screen(self.on_terminal(["bash", "-c", command, VELHOST, *self.arguments]))
        self.assertEqual([line[:1] for line in lines], ["{", "{", "{", "{", ""])

    def test_an_interrupt_ends_the_line_of_its_echo(self):
        for progress in ("always", "never"):
            slow = self.write("slower.toml", SERVER.replace("delay_ms = 10", "nth = 9\ndelay_ms = 3600000"))
            recording = self.folder / "run.jsonl"
            recording.unlink(missing_ok=True)
            process, terminal = self.start_on_terminal(
                [VELHOST, *self.arguments[:-1], "sim:" + slow, "--progress", progress, "--record", str(recording), "-o",
                 "out.json", BRIDGE], {})
            self.wait_for_exchanges(process, "run.jsonl", 5)
            terminal.write(b"\x03")
            lines = [line.rstrip() for line in Screen().feed(terminal.read()).lines]
            self.assertEqual(process.wait(timeout=60), 3)
            self.assertTrue(lines[0].endswith("^C"), lines)
            self.assertEqual(lines[1].split("; ")[0], f"velhost: partial: {BRIDGE}: interrupted")
            self.assertEqual(lines[2:], [""])

    def test_messages_and_progress_line_do_not_mix(self):
        shown = self.on_terminal([VELHOST, *self.arguments, "--progress", "always", "-vv", "-o", "out.json", BRIDGE])
        for line in self.check_screen(shown):
            self.assertRegex(line, r"^(velhost: |debug |status |  |$)")


if __name__ == "__main__":
    unittest.main()
