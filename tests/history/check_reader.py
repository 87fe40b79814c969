#!/usr/bin/env python3
"""Tries read_history.py on the published day files: reads the good ones as they say, and refuses the others. Exit 0: it does."""
import json, os, sys
from cryptography.exceptions import InvalidTag
from read_history import readings

folder = os.path.dirname(os.path.abspath(__file__))
with open(os.path.join(folder, 'vectors', 'day-files.json')) as file:
    vectors = json.load(file)
wrong = 0
for vector in vectors['files']:
    expected = None if 'singleKey' in vector else vector['readings']  # That layout is none of the reader's.
    try:
        found = readings(bytes.fromhex(vectors['key']), vectors['scope'], f"{vector['day']}.history", bytes.fromhex(vector['file']))
    except (InvalidTag, ValueError):
        found = None
    if found != expected:
        print(f"{vector['name']}: {found} instead of {expected}")
        wrong += 1
print(len(vectors['files']), 'files,', wrong, 'wrong')
sys.exit(wrong > 0)
