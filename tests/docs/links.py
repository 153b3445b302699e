#!/usr/bin/env python3
"""Checks that everything the documents refer to exists.

Checks relative links in Markdown files, including anchors (installed files may link only to each other); documents and
sections named in source comments; files and folders named in backquotes; and that docs/dependencies.md lists every
package that ./run and ./check install.
"""

import re
import sys
from pathlib import Path

LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#{1,6} (.+)$", re.MULTILINE)
FENCE = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)
CITATION = re.compile(r'((?:docs|man)/[\w.-]+\.\w+)(, "([^"]+)"(?: and "([^"]+)")?)?')
NAMED_PATH = re.compile(r"`((?:plugin|ffdc|r8|jfr|host|schema|servers|bmcsim|tests|fuzz|bench|docs|man|completions|"
                        r"packaging|cmake|tools)/[\w./-]*)`")
INSTALLED = re.compile(r"(README|CONTRIBUTING|docs/[\w-]+|packaging/README)\.md")  # cmake/InstallDocs.cmake
PACKAGE_LIST = re.compile(r'^packages_\w+="([^"]*)"', re.MULTILINE)
TABLE_ROW = re.compile(r"^\| ([^|]+?) \|", re.MULTILINE)
SOURCES = ("*.h", "*.cpp", "*.py", "*.sh", "*.cmake", "CMakeLists.txt")


def anchors_of(text):
    """Anchors as GitHub builds them: lower case, hyphens for spaces, only letters, digits, _ and - are kept."""
    headings = HEADING.findall(FENCE.sub("", text))
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def listed(tree, *patterns):
    """The files of the tree that match these patterns, except in build folders and hidden ones."""
    return sorted(file for pattern in patterns for file in tree.rglob(pattern)
                  if not re.search(r"^(build|out$|\.)|/\.", file.relative_to(tree).as_posix()))


def is_installed(tree, file):
    return INSTALLED.fullmatch(file.relative_to(tree).as_posix()) is not None


def check_links(tree, document, text, problems):
    for target in LINK.findall(FENCE.sub("", text)):
        if "://" in target or target.startswith("mailto:"):
            continue
        path, _, anchor = target.partition("#")
        file = (document.parent / path).resolve() if path else document
        if not file.exists():
            problems.append("%s: no file %s" % (document.relative_to(tree), target))
        elif is_installed(tree, document) and not is_installed(tree, file):
            problems.append("%s: %s is not installed with it" % (document.relative_to(tree), target))
        elif anchor and anchor not in anchors_of(file.read_text(encoding="utf-8")):
            problems.append("%s: no section %s" % (document.relative_to(tree), target))
    for path in NAMED_PATH.findall(text):
        if not list(tree.glob(path)) and not list(tree.glob(path + ".*")):
            problems.append("%s: no %s" % (document.relative_to(tree), path))


def check_citations(tree, source, text, problems):
    for path, _, *sections in CITATION.findall(text):
        file = tree / path
        if not file.exists():
            problems.append("%s: no file %s" % (source.relative_to(tree), path))
            continue
        headings = HEADING.findall(file.read_text(encoding="utf-8"))
        problems.extend('%s: %s has no section "%s"' % (source.relative_to(tree), path, section)
                        for section in sections if section and section not in headings)


def check_packages(tree, problems):
    """Each package that ./run and ./check install must be in the first column of a table."""
    text = (tree / "docs/dependencies.md").read_text(encoding="utf-8")
    explained = {name for row in TABLE_ROW.findall(text) for name in row.split(", ")}
    lists = PACKAGE_LIST.findall((tree / "tools/build.sh").read_text(encoding="utf-8"))
    if not lists:
        problems.append("tools/build.sh: no list of packages")
    problems.extend("docs/dependencies.md: no package " + name
                    for names in lists for name in names.split() if name not in explained)


def main():
    tree = Path(sys.argv[1]).resolve()
    problems = []
    documents = listed(tree, "*.md")
    for document in documents:
        check_links(tree, document, document.read_text(encoding="utf-8"), problems)
    sources = [s for s in listed(tree, *SOURCES) if tree / "tests/docs" not in s.parents]
    for source in sources:
        check_citations(tree, source, source.read_text(encoding="utf-8"), problems)
    check_packages(tree, problems)
    print("\n".join(problems))
    print("%d documents and %d sources read, %d problems" % (len(documents), len(sources), len(problems)))
    return 1 if problems or len(documents) < 5 or len(sources) < 50 else 0


if __name__ == "__main__":
    sys.exit(main())
