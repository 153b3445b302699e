#!/usr/bin/env python3
"""The include check finds planted violations: check_includes_test.py SOURCE_FOLDER."""

import pathlib
import shutil
import sys
import tempfile
import unittest

import check_includes

SOURCE = pathlib.Path(sys.argv.pop(1) if len(sys.argv) > 1 else ".")


class Planted(unittest.TestCase):
    """A copy of the tree to which one include line is added."""

    def setUp(self):
        self.root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        for top in ("wire", "host", "bmcsim", *check_includes.COLLECTOR):
            shutil.copytree(SOURCE / top, self.root / top)

    def problems_after(self, file, include):
        with open(self.root / file, "a", encoding="utf-8") as stream:
            stream.write(f"#include {include}\n")
        return check_includes.problems_of(self.root)

    def test_the_tree_keeps_to_the_table(self):
        self.assertEqual(check_includes.problems_of(self.root), [])

    def test_each_upward_include_is_named(self):
        for file, include, reason in [
            ("wire/storagearea.h", '"host/base/utf8.h"', "wire may not include host/base"),
            ("r8/r8errordata.cpp", '"host/base/utf8.h"', "r8 may not include host/base"),
            ("host/sdk/nkrovel20/splibrary.h", '"host/base/api.h"', "host/sdk may not include host/base"),
            ("host/base/utf8.h", '"nkrovel20/tcimvalue.h"', "host/base may not include host/sdk"),
            ("host/model/cimclass.cpp", "<host/schema/moftext.h>", "host/model may not include host/schema"),
            ("host/bmc/record/replay.cpp", '"host/output/writers.h"', "host/bmc/record may not include host/output"),
            ("host/bmc/sim/serverfile.cpp", '"host/bmc/lan/lanspec.h"', "host/bmc/sim may not include host/bmc/lan"),
            ("host/output/writers.cpp", '"host/velhost/verbs.h"', "host/output may not include host/velhost"),
            ("host/velhost/main.cpp", '"r8/r8errordata.h"', "host/velhost may not include r8"),
            ("bmcsim/bmcsim.cpp", '"host/velhost/messages.h"', "bmcsim may not include host/velhost"),
        ]:
            with self.subTest(file=file):
                before = (self.root / file).read_text(encoding="utf-8")
                name = include.strip('"<>')
                self.assertEqual(self.problems_after(file, include), [f"{file} includes {name}: {reason}"])
                (self.root / file).write_text(before, encoding="utf-8")

    def test_a_cycle_within_a_layer_is_named(self):
        self.assertEqual(self.problems_after("host/model/cimclass.h", '"host/model/ciminstance.h"'),
                         ["a cycle: host/model/cimclass.h -> host/model/ciminstance.h -> host/model/cimclass.h"])

    def test_tests_are_no_layer_to_include(self):
        self.assertEqual(self.problems_after("host/model/cimclass.cpp", '"tests/support/require.h"'),
                         ["host/model/cimclass.cpp includes tests/support/require.h, which no layer may include"])

    def test_a_way_around_the_table_is_refused(self):
        self.assertEqual(self.problems_after("host/model/cimclass.cpp", '"../schema/moftext.h"'), [
            "host/model/cimclass.cpp includes ../schema/moftext.h, which is not named from the top of the tree"])

    def test_a_folder_without_a_line_in_the_table_is_refused(self):
        (self.root / "host/newroom").mkdir()
        (self.root / "host/newroom/thing.h").write_text("#pragma once\n", encoding="utf-8")
        self.assertEqual(check_includes.problems_of(self.root),
                         ["host/newroom/thing.h is in a folder that the table does not have"])

    def test_another_folder_is_not_taken_for_the_tree(self):
        shutil.rmtree(self.root / "host")
        self.assertIn(f"too few includes were found: is {self.root} the source folder?",
                      check_includes.problems_of(self.root))


class Table(unittest.TestCase):
    def test_no_layer_reaches_itself(self):
        def reached(layer):
            seen, left = set(), [layer]
            while left:
                for below in check_includes.MAY_INCLUDE[left.pop()]:
                    if below not in seen:
                        seen.add(below)
                        left.append(below)
            return seen

        for layer in check_includes.MAY_INCLUDE:
            if layer not in check_includes.COLLECTOR:
                self.assertNotIn(layer, reached(layer))


if __name__ == "__main__":
    unittest.main()
