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
            document = json.loads(text)
            self.assertEqual(document["plugin"]["name"], "failing")
            self.assertEqual((document["status"], document["exit_status"]), ("failed", 70))
            self.assertEqual(document["message"], f"plugin {PLUGIN} failed in {operation}: too late")

    def test_a_failure_to_unload_counts_more_than_a_failed_write(self):
        done = self.run_velhost("collect", "--format", "json", "KROSG_DCAPFile", "--plugin", PLUGIN, "--log", "/dev/full",
                                environment={"FAILING_OPERATION": "DeInit"})
        failed = f"plugin {PLUGIN} failed in DeInit: an exception of unknown type"
        self.assertEqual(done.returncode, 70)
        self.assertEqual(done.stderr.splitlines()[-1], "velhost: " + failed)
        self.assertEqual(json.loads(done.stdout)["message"], failed)


if __name__ == "__main__":
    unittest.main()
