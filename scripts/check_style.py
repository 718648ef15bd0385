#!/usr/bin/env python3
"""usage: check_style.py FILE...

What the formatter does not see: white space at line ends, tabs in sources, a missing last line end, headers that name an
author or a date, and multiversioned functions that ThreadSanitizer builds could not start with.
"""
import pathlib
import re
import sys

SOURCES = {".h", ".cpp", ".py", ".sh", ".cmake"}
TAB_FREE = SOURCES | {".md", ".json", ".txt", ".in"}
CREDIT = re.compile(r"\s*(?://+|#+|/?\*+)\s*(?:@?author\b|created (?:by|on)\b|copyright\b|date\s*:|last modified\b)", re.I)
CREDIT_LINES = 12
# An indirect function is resolved before the sanitizer's run-time has started, and the program dies.
MULTIVERSION = re.compile(r"\btarget_clones\b|\bifunc\b")


def faults_of(path, text):
    suffix = path.suffix
    for number, line in enumerate(text.split("\n"), 1):
        if line != line.rstrip(" \t\r"):
            yield number, "white space at the end of the line"
        if "\t" in line and suffix in TAB_FREE:
            yield number, "tab"
        if suffix in SOURCES and number <= CREDIT_LINES and CREDIT.match(line):
            yield number, "a source names no author and no date"
        if suffix in (".h", ".cpp") and MULTIVERSION.search(line) and "__SANITIZE_THREAD__" not in text:
            yield number, "multiversioning without a way out under __SANITIZE_THREAD__"
    if text and not text.endswith("\n"):
        yield text.count("\n") + 1, "no line end at the end of the file"


def main(paths):
    failed = False
    for path in map(pathlib.Path, paths):
        if "tests/data/" in path.as_posix() or path.match("examples/*.txt"):  # bytes that tests want exactly so
            continue
        data = path.read_bytes()
        if b"\0" in data:
            continue
        for number, fault in faults_of(path, data.decode("utf-8")):
            print(f"{path.as_posix()}:{number}: {fault}")
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
