#!/usr/bin/env python3
"""Fuzz corpora: seeds have names, each target has at most one archive, and repacking it gives the same bytes."""
import hashlib
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
HASH = re.compile(r"[0-9a-f]{40}")


class Corpora(unittest.TestCase):
    def test_each_target_has_seeds_and_at_most_one_archive(self):
        self.assertEqual(sorted(entry.name for entry in CORPUS.iterdir() if entry.is_dir()), TARGETS)
        self.assertEqual([target for target in TARGETS if not any((CORPUS / target).iterdir())], [])
        self.assertLessEqual({entry.name for entry in CORPUS.iterdir() if not entry.is_dir()},
                             {target + ".tar.gz" for target in TARGETS})

    def test_seeds_have_names(self):
        self.assertEqual([seed for seed in CORPUS.glob("*/*") if HASH.fullmatch(seed.name)], [])

    def test_archives_hold_only_files_named_by_their_bytes(self):
        for path in ARCHIVES:
            target = path.name.removesuffix(".tar.gz")
            with self.subTest(target), tarfile.open(path) as archive:
                seeds = {hashlib.sha1(seed.read_bytes()).hexdigest() for seed in (CORPUS / target).iterdir()}
                for member in archive:
                    self.assertTrue(member.isreg(), member.name)
                    name = hashlib.sha1(archive.extractfile(member).read()).hexdigest()
                    self.assertEqual(member.name, name)
                    self.assertNotIn(name, seeds)

    def test_packing_again_gives_the_same_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            copy = pathlib.Path(folder) / "fuzz"
            shutil.copytree(CORPUS, copy / "corpus")
            shutil.copy(FUZZ / "run", copy)
            targets = [path.name.removesuffix(".tar.gz") for path in ARCHIVES]
            subprocess.run([copy / "run", "--pack", *targets], check=True, stdout=subprocess.DEVNULL)
            for path in ARCHIVES:
                self.assertEqual((copy / "corpus" / path.name).read_bytes(), path.read_bytes(), path.name)


if __name__ == "__main__":
    unittest.main()
