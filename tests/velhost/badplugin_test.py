"""A plugin that throws where plugins must not throw."""

import json
import os
import unittest

from velhostcase import VelhostCase

PLUGIN = os.environ["FAILING_PLUGIN"]


class BadPlugin(VelhostCase):
    def run_failing(self, operation, *arguments, text=None):
        environment = {"FAILING_OPERATION": operation}
        if text:
            environment["FAILING_TEXT"] = text
        done = self.run_velhost(*arguments, "--plugin", PLUGIN, environment=environment)
        self.assertEqual(done.returncode, 70, done.stderr)
        self.assertEqual(done.stderr, f"velhost: plugin {PLUGIN} failed in {operation}: "
                         f"{text or 'an exception of unknown type'}\n")
        return done.stdout

    def test_the_operation_is_named(self):
        for operation in ("GetName", "Init"):
            self.run_failing(operation, "collect", "KROSG_DCAPFile")
            self.run_failing(operation, "collect", "KROSG_DCAPFile", text="no luck")

    def test_identity(self):
        for operation in ("GetName", "PrepareForUnload"):
            self.assertEqual(self.run_failing(operation, "plugin"), "")

    def test_what_was_collected_outlives_a_failure_to_unload(self):
        for operation in ("DeInit", "PrepareForUnload"):
            text = self.run_failing(operation, "collect", "--format", "json", "KROSG_DCAPFile", text="too late")
            self.assertEqual(json.loads(text)["plugin"]["name"], "failing")


if __name__ == "__main__":
    unittest.main()
