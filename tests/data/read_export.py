#!/usr/bin/env python3
"""Reads an exported readings file with readers that share nothing with the writer, and prints
its rows as JSON: CSV through the csv module, XLSX through the sheet's own XML, each cell as
["s", text] or ["n", number]."""
import csv
import json
import re
import sys
import xml.etree.ElementTree as ET
import zipfile

NS = {"m": "http://schemas.openxmlformats.org/spreadsheetml/2006/main"}


def unescape(text):
    # OOXML writes control characters such as CR as _xHHHH_.
    return re.sub(r"_x([0-9A-Fa-f]{4})_", lambda m: chr(int(m.group(1), 16)), text)


def column_of(ref):
    n = 0
    for ch in ref:
        if not ch.isalpha():
            break
        n = n * 26 + ord(ch) - 64
    return n - 1


def read_xlsx(path):
    with zipfile.ZipFile(path) as z:
        shared = []
        if "xl/sharedStrings.xml" in z.namelist():
            root = ET.fromstring(z.read("xl/sharedStrings.xml"))
            shared = ["".join(t.text or "" for t in si.iter("{%s}t" % NS["m"]))
                      for si in root.findall("m:si", NS)]
        root = ET.fromstring(z.read("xl/worksheets/sheet1.xml"))
    rows = []
    for row in root.iter("{%s}row" % NS["m"]):
        cells = {}
        for c in row.findall("m:c", NS):
            kind = c.get("t")
            if kind == "inlineStr":
                value = ["s", unescape("".join(t.text or "" for t in c.iter("{%s}t" % NS["m"])))]
            elif kind == "s":
                value = ["s", unescape(shared[int(c.find("m:v", NS).text)])]
            else:
                value = ["n", float(c.find("m:v", NS).text)]
            cells[column_of(c.get("r"))] = value
        width = max(cells) + 1 if cells else 0
        rows.append([cells.get(i, ["s", ""]) for i in range(max(width, 7))])
    return rows


def main():
    path = sys.argv[1]
    if path.endswith(".xlsx"):
        rows = read_xlsx(path)
    else:
        with open(path, newline="", encoding="utf-8") as f:
            rows = list(csv.reader(f, strict=True))
    json.dump(rows, sys.stdout)


main()
