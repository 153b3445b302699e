"""Checks every program and library of the build tree and of an installation: run paths, hardening, and that a library
planted in the current directory is not loaded. Files built to fail show that the checks work."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import binaries

BUILD = Path(os.environ["BUILD"])
COMPILER = os.environ["COMPILER"]
HARDENED = os.environ["HARDENED"] == "yes"
FORTIFIED = os.environ["FORTIFIED"] == "yes"

HARDENING = ["-O2", "-fPIE", "-pie", "-fstack-protector-strong", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2",
             "-Wl,-z,relro,-z,now,-z,noexecstack"]
CHECKED = """
#include <stdio.h>
#include <string.h>
int main(int, char** words) { char text[8]; return puts(strcpy(text, words[0])); }
"""
EXPORTS = 'extern "C" __attribute__((visibility("default"))) int exported(int x) { return x + 1; }'
PLANTED = """
#include <stdlib.h>
#include <unistd.h>
__attribute__((constructor)) static void Run() { if (write(1, "planted\\n", 8) == 8) _exit(3); }
"""


def built_binaries():
    """The files of current targets: a build folder may also contain files of targets that no longer exist."""
    return [path for path in (BUILD / "binaries.txt").read_text().split() if os.path.exists(path)]


class Scratch(unittest.TestCase):
    def setUp(self):
        self.scratch = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def compile(self, source, name, *options):
        path = self.scratch / name
        path.parent.mkdir(exist_ok=True)
        subprocess.run([COMPILER, "-x", "c++", "-", *options, "-o", path], input=source, text=True, check=True,
                       stderr=subprocess.DEVNULL)
        return str(path)

    def install(self):
        subprocess.run(["cmake", "--install", BUILD, "--prefix", self.scratch / "installed"], check=True,
                       stdout=subprocess.DEVNULL)
        return self.scratch / "installed"


class AllBinaries(Scratch):
    def test_no_run_path_of_the_build_tree_has_an_empty_or_relative_entry(self):
        built = built_binaries()
        self.assertGreater(len(built), 30)
        self.assertEqual(binaries.findings(built), [])

    def test_what_is_installed_is_hardened_and_finds_its_libraries_from_its_own_place(self):
        installed = binaries.binaries_in(self.install())
        self.assertGreaterEqual(len(installed), 6)
        self.assertEqual(binaries.findings(installed, HARDENED, FORTIFIED, moved=True), [])


class CurrentDirectory(Scratch):
    """Someone else's folder, with a library for every name that one of our binaries depends on."""

    def setUp(self):
        super().setUp()
        fake = self.compile(PLANTED, "fake.so", "-shared", "-fPIC")
        self.planted = self.scratch / "planted"
        self.planted.mkdir()
        for name in {name for path in built_binaries() for name in binaries.Binary(path).bracketed("NEEDED")}:
            shutil.copy(fake, self.planted / name)

    def run_there(self, program, *arguments, **environment):
        environment = {**{name: os.environ[name] for name in os.environ if name != "LD_LIBRARY_PATH"}, **environment}
        return subprocess.run([program, *arguments], cwd=self.planted, env=environment, text=True, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def expect_own_libraries(self, program):
        for arguments in (["--version"], ["plugin"], ["collect", "--format", "jsonl"]):
            done = self.run_there(program, *arguments)
            self.assertEqual((done.returncode, "planted" in done.stdout), (0, False), done.stdout)

    def test_velhost_of_the_build_tree_loads_no_library_from_there(self):
        self.assertTrue((self.planted / "libfmt.so.9").exists())
        self.expect_own_libraries(BUILD / "bin/velhost")

    def test_velhost_as_installed_loads_no_library_from_there(self):
        self.expect_own_libraries(self.install() / "bin/velhost")

    def test_one_planted_library_is_enough_to_be_noticed(self):
        for file in self.planted.iterdir():
            if file.name != "libfmt.so.9":
                file.unlink()
        # An empty entry, as in a run path. The program may even end earlier if the planted library lacks
        # functions.
        done = self.run_there(BUILD / "bin/velhost", "--version", LD_LIBRARY_PATH=":")
        self.assertIn(done.returncode, (3, 127), done.stdout)


class Findings(Scratch):
    def of(self, *options, source=CHECKED, **checks):
        path = self.compile(source, "sample", *options)
        return [text.replace(path + ": ", "") for text in binaries.findings([path], **checks)]

    def hardened(self, *options, **others):
        return self.of(*HARDENING, *options, hardened=True, fortified=True, **others)

    def test_none_in_a_program_with_all_of_it(self):
        self.assertEqual(self.hardened("-Wl,-rpath,$ORIGIN/../lib/velhost", moved=True), [])

    def test_run_paths(self):
        for path, finding in {":": "an empty", "/usr/lib:": "an empty", ":/usr/lib": "an empty", "/a::/b": "an empty",
                              "lib": "a relative", "/usr/lib:.": "a relative", "$ORIGINAL/lib": "a relative"}.items():
            finding = "%s entry in the run path [%s]" % (finding, path)
            self.assertIn(finding, self.of("-Wl,-rpath,%s" % path), path)
        self.assertEqual(self.of("-Wl,--disable-new-dtags,-rpath,lib"), ["a relative entry in the run path [lib]"])
        self.assertEqual(self.of("-Wl,-rpath,/usr/lib"), [])
        self.assertEqual(self.of("-Wl,-rpath,/usr/lib", moved=True), ["an absolute entry in the run path [/usr/lib]"])

    def test_what_the_linker_does(self):
        for option, finding in {"-Wl,-z,lazy": "functions are bound at their first call",
                                "-Wl,-z,norelro": "relocated data stays writable",
                                "-Wl,-z,execstack": "an executable stack"}.items():
            self.assertEqual(self.hardened(option), [finding])
        self.assertEqual(self.hardened("-fno-pie", "-no-pie"), ["a program at a fixed address"])

    def test_what_the_compiler_does(self):
        self.assertEqual(self.hardened("-fno-stack-protector"), ["no stack protector"])
        self.assertEqual(self.hardened("-U_FORTIFY_SOURCE"), ["no call into the C library is a checked one"])

    @unittest.skipUnless(os.uname().machine == "x86_64", "an instruction of this processor family")
    def test_functions_that_an_indirect_branch_may_reach(self):
        library = ["-shared", "-fPIC", "-fvisibility=hidden"]
        source = EXPORTS + CHECKED.replace("int main", "extern \"C\" int other")
        self.assertEqual(self.hardened(*library, "-fcf-protection", source=source), [])
        self.assertEqual(self.hardened(*library, "-fcf-protection=none", source=source),
                         ["1 exported functions without endbr64: exported"])


if __name__ == "__main__":
    unittest.main()
