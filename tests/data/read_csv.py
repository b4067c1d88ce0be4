#!/usr/bin/env python3
"""Reads an exported CSV with Python's csv module, a reader that shares nothing with the
writer, and prints its rows as JSON."""
import csv
import json
import sys

with open(sys.argv[1], newline="", encoding="utf-8") as f:
    json.dump(list(csv.reader(f, strict=True)), sys.stdout)
