#!/usr/bin/env python3
"""Fuzz corpora: seed files are read as they describe, seeds have names, each target has at most one archive, and repacking it gives the same bytes."""
import hashlib
import importlib.util
import pathlib
import re
import shutil
import subprocess
import tarfile
import tempfile
import unittest

FUZZ = pathlib.Path(__file__).resolve().parent
CORPUS = FUZZ / "corpus"
TARGETS = sorted(source.name.removesuffix("_fuzz.cpp") for source in FUZZ.glob("*_fuzz.cpp"))
ARCHIVES = sorted(CORPUS.glob("*.tar.gz"))
SEEDS = {path.stem: path for path in CORPUS.glob("*.seeds")}
HASH = re.compile(r"[0-9a-f]{40}")

spec = importlib.util.spec_from_file_location("seeds", FUZZ / "seeds.py")
seeds = importlib.util.module_from_spec(spec)
spec.loader.exec_module(seeds)


def seeds_of(target):
    return seeds.parse(SEEDS[target].read_text("utf-8"))


class SeedFiles(unittest.TestCase):
    def test_a_seed_ends_before_the_line_of_the_next(self):
        self.assertEqual(seeds.parse("# two\n== one\na\n\n== two\n\n"), {"one": b"a\n", "two": b""})

    def test_any_byte_can_be_written_in_a_text(self):
        self.assertEqual(seeds.parse("== odd\n<00>\u00e9<ff><FF><3C>41>\n"), {"odd": b"\x00\xc3\xa9<ff>\xff<41>"})

    def test_bytes_may_be_repeated_and_commented(self):
        self.assertEqual(seeds.parse('== block: bytes\n0a*2 "A b"  # name\n# rest\n00*0 ff\n'),
                         {"block": b"\x0a\x0aA b\xff"})

    def test_what_is_malformed_is_refused(self):
        for content in ("text\n", "== a\n== a\n", "== a: bytes\n0\n", "== a: bytes\n0a0b\n", "== a: bytes\n0A\n"):
            with self.subTest(content), self.assertRaises(ValueError):
                seeds.parse(content)

    def test_an_added_input_is_read_back(self):
        inputs = (b"", b"\n", b"text\n", b"no end", b"== a\n== b\n", b"a\n== b \n", b"<41>\r\n", b"\xff\xfe" * 40,
                  b"\x00" * 5000 + b"MAGIC 1", bytes(range(256)), "\u00e9\t".encode(), b'"quoted" # text\x01\x02\x03\x04')
        with tempfile.TemporaryDirectory() as folder:
            found, target = pathlib.Path(folder) / "found", pathlib.Path(folder) / "target.seeds"
            for data in inputs:
                found.write_bytes(data)
                target.write_text("# comment\n== first\nx\n", "utf-8")
                seeds.add(target, "again", [found, found])
                self.assertEqual(seeds.parse(target.read_text("utf-8")), {"first": b"x", "again": data, "again2": data})


class Corpora(unittest.TestCase):
    def test_each_target_has_seeds_and_at_most_one_archive(self):
        self.assertEqual(sorted(SEEDS), TARGETS)
        self.assertEqual([target for target in TARGETS if not seeds_of(target)], [])
        self.assertLessEqual({entry.name for entry in CORPUS.iterdir() if entry.suffix != ".seeds"},
                             {target + ".tar.gz" for target in TARGETS})

    def test_seeds_have_names(self):
        self.assertEqual([name for target in TARGETS for name in seeds_of(target) if HASH.fullmatch(name)], [])

    def test_archives_hold_only_files_named_by_their_bytes(self):
        for path in ARCHIVES:
            target = path.name.removesuffix(".tar.gz")
            with self.subTest(target), tarfile.open(path) as archive:
                named = {hashlib.sha1(data).hexdigest() for data in seeds_of(target).values()}
                for member in archive:
                    self.assertTrue(member.isreg(), member.name)
                    name = hashlib.sha1(archive.extractfile(member).read()).hexdigest()
                    self.assertEqual(member.name, name)
                    self.assertNotIn(name, named)

    def test_packing_again_gives_the_same_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            copy = pathlib.Path(folder) / "fuzz"
            shutil.copytree(CORPUS, copy / "corpus")
            for name in ("run", "seeds.py"):
                shutil.copy(FUZZ / name, copy)
            targets = [path.name.removesuffix(".tar.gz") for path in ARCHIVES]
            subprocess.run([copy / "run", "--pack", *targets], check=True, stdout=subprocess.DEVNULL)
            for path in ARCHIVES:
                self.assertEqual((copy / "corpus" / path.name).read_bytes(), path.read_bytes(), path.name)


if __name__ == "__main__":
    unittest.main()
