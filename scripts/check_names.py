#!/usr/bin/env python3
"""usage: check_names.py [ROOT]

Every operation of docs/operation-names.tsv (family, tab, operation; a third column says what keeps it from the shell)
heads a doc comment under quorvel/: the `///` block
begins with the operation's name in backticks, alone or in a list of such names.
"""
import pathlib
import re
import sys

HEAD = re.compile(r"(?:`[^`]+`(?:\s*(?:,|;|/|and|or)\s*|\s+)?)+")


def doc_heads(text):
    """The names at the head of each block of /// lines."""
    block = []
    for line in text.splitlines() + [""]:
        stripped = line.strip()
        if stripped.startswith("///"):
            block.append(stripped[3:].strip())
            continue
        head = HEAD.match(" ".join(block))
        yield from re.findall(r"`([^`]+)`", head[0]) if head else ()
        block = []


def bare_name(operation):
    """The name without what tells apart operations of one name: `x of a table`, `x (instance form)`, `table x`."""
    operation = re.sub(r" of a .*$| \(instance form\)$", "", operation)
    return re.sub(r"^(?:table|collection) ", "", operation)


def main(root):
    heads = set()
    for header in (root / "quorvel").rglob("*.h"):
        for name in doc_heads(header.read_text(encoding="utf-8")):
            heads.add(name)
            heads.update(name.split())
    listed = root / "docs/operation-names.tsv"
    missing = 0
    for number, line in enumerate(listed.read_text(encoding="utf-8").splitlines(), 1):
        family, operation = line.split("\t")[:2]
        if bare_name(operation) not in heads:
            print(f"docs/operation-names.tsv:{number}: no doc comment under quorvel/ begins with `{operation}` ({family})")
            missing += 1
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")))
