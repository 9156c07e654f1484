#!/usr/bin/env python3
"""Checks the exported set of libnxl.so both ways: against the export lists
and against the declarations of the public headers.

usage: check_exports.py LIBRARY EXPORTS_TXT INCLUDE_DIR
"""
import re
import subprocess
import sys


def dynamic_symbols(lib):
    out = subprocess.run(["nm", "-D", "--defined-only", lib], check=True,
                         capture_output=True, text=True).stdout
    syms = set()
    for line in out.splitlines():
        parts = line.split()
        if len(parts) >= 3 and parts[1] in "TtWiDdBbVvRr":
            syms.add(parts[2].split("@")[0])
    # Symbols the toolchain adds to every shared object.
    return {s for s in syms if not s.startswith("_") or s.endswith("_") and not s.startswith("__")}


def header_functions(include_dir):
    pre = subprocess.run(["clang", "-E", "-P", "-x", "c", "-I", include_dir,
                          include_dir + "/nxl.h"], check=True, capture_output=True,
                         text=True).stdout
    # Only the declarations of our own headers: drop everything the system
    # headers brought in by keeping what follows the first nxl typedef.
    start = pre.find("typedef long long int nxl_int")
    pre = pre[start:] if start >= 0 else pre
    # Attributes and extensions are not declarations of their own.
    while True:
        at = pre.find("__attribute__")
        if at < 0:
            break
        i = pre.index("(", at)
        depth = 0
        while True:
            depth += {"(": 1, ")": -1}.get(pre[i], 0)
            i += 1
            if depth == 0:
                break
        pre = pre[:at] + " " + pre[i:]
    pre = re.sub(r"__(?:extension|inline|restrict)__", " ", pre)
    names = set()
    for stmt in re.split(r"[;{}]", pre):
        s = " ".join(stmt.split())
        if not s or s.startswith(("typedef", "struct", "enum", "union")) or "(" not in s:
            continue
        head = s[: s.index("(")]
        m = re.search(r"([A-Za-z_][A-Za-z0-9_]*)\s*$", head)
        if m and not re.search(r"\(\s*\*", s[: s.index(")") + 1] if ")" in s else s):
            names.add(m.group(1))
    return names


def main():
    lib, exports_txt, include_dir = sys.argv[1:4]
    listed = {l.strip() for l in open(exports_txt) if l.strip()}
    exported = dynamic_symbols(lib)
    declared = header_functions(include_dir)
    problems = []
    for name in sorted(listed - exported):
        problems.append(f"listed but not exported: {name}")
    for name in sorted(exported - listed):
        problems.append(f"exported but not listed: {name}")
    for name in sorted(listed - declared):
        problems.append(f"listed but not declared in include/: {name}")
    for name in sorted(declared - listed):
        problems.append(f"declared in include/ but not exported: {name}")
    for p in problems:
        print(p)
    print(f"{len(listed)} listed, {len(exported)} exported, {len(declared)} declared, "
          f"{len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
