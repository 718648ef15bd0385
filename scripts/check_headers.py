#!/usr/bin/env python3
"""usage: check_headers.py [ROOT]

Every header compiles alone, and twice in one file.
"""
import concurrent.futures
import pathlib
import subprocess
import sys

COMPILE = ["g++", "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-x", "c++", "-"]


def complaint(root, header):
    source = f"#include <{header}>\n#include <{header}>\n"
    run = subprocess.run([*COMPILE, "-I", str(root)], input=source, capture_output=True, text=True, check=False)
    return f"{header}:1: does not compile alone and twice\n{run.stderr}" if run.returncode else ""


def main(root):
    headers = [file.relative_to(root).as_posix() for folder in ("quorvel", "apps") for file in (root / folder).rglob("*.h")]
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        complaints = [text for text in pool.map(lambda header: complaint(root, header), sorted(headers)) if text]
    print("".join(complaints), end="")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")))
