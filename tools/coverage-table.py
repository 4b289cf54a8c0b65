#!/usr/bin/env python3
"""Prints gcovr's JSON summary as a table per folder (lines, branches) with
the total, and the thinnest files of each folder below it (tools/coverage.sh)."""
import json
import sys
from collections import defaultdict

FOLDERS = ["platform", "text", "settings", "framework", "app"]


def percent(covered, total):
    return f"{100.0 * covered / total:5.1f}%" if total else "    -"


def main(path, thinnest=3):
    files = json.load(open(path))["files"]
    sums = defaultdict(lambda: [0, 0, 0, 0])
    for entry in files:
        folder = entry["filename"].split("/")[0]
        s = sums[folder]
        s[0] += entry["line_covered"]
        s[1] += entry["line_total"]
        s[2] += entry["branch_covered"]
        s[3] += entry["branch_total"]
    print(f"{'folder':<12}{'lines':>16}{'':>8}{'branches':>16}{'':>8}")
    total = [0, 0, 0, 0]
    for folder in FOLDERS + sorted(set(sums) - set(FOLDERS)):
        if folder not in sums:
            continue
        s = sums[folder]
        total = [a + b for a, b in zip(total, s)]
        print(f"{folder + '/':<12}{s[0]:>7} / {s[1]:<6}{percent(s[0], s[1]):>8}"
              f"{s[2]:>7} / {s[3]:<6}{percent(s[2], s[3]):>8}")
    print(f"{'all':<12}{total[0]:>7} / {total[1]:<6}{percent(total[0], total[1]):>8}"
          f"{total[2]:>7} / {total[3]:<6}{percent(total[2], total[3]):>8}")
    print("\nthinnest files (lines, branches):")
    for folder in FOLDERS:
        mine = [e for e in files if e["filename"].startswith(folder + "/") and e["line_total"] >= 20]
        mine.sort(key=lambda e: e["line_covered"] / e["line_total"])
        for e in mine[:thinnest]:
            print(f"  {e['filename']:<44}{percent(e['line_covered'], e['line_total'])}"
                  f"  {percent(e['branch_covered'], e['branch_total'])}")


if __name__ == "__main__":
    main(sys.argv[1])
