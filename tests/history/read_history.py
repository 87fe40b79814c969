#!/usr/bin/env python3
"""Prints the readings of one scope of saved history, written from docs/history-format.md alone.

    secret-tool lookup service Tidewell.history account encryption-key-v2-SCOPE | read_history.py FOLDER

FOLDER is .../Tidewell/SavedHistory/accounts/SCOPE. The key comes by standard input, in base64. Prints a JSON list for each
reading: time, mg/dL, trend, seconds, source and time of fetching. Exit 1: a file is unreadable.
"""
import base64, json, math, os, re, sys
from datetime import datetime, timedelta, timezone
from cryptography.exceptions import InvalidTag
from cryptography.hazmat.primitives.ciphers.aead import AESGCM

def need(good):
    if not good: raise ValueError('not as the format has it')
    return True
def text(value): return need(type(value) is str) and value.encode().decode()
def number(value): return need(type(value) in (int, float) and math.isfinite(value)) and value
def listing(value): return need(type(value) is list) and value
def date(value):
    need(re.fullmatch(r'[0-9]{4}(-[0-9]{2}){2}T[0-9]{2}(:[0-9]{2}){2}([.][0-9]+)?(Z|[+-][0-9]{2}:[0-9]{2})', text(value)))
    time = datetime.strptime(value[:19] + value[19:].lstrip('.0123456789'), '%Y-%m-%dT%H:%M:%S%z')
    fraction = re.search(r'[.][0-9]+', value)
    since = (time - datetime.fromtimestamp(0, timezone.utc)) // timedelta(milliseconds=1)
    return since + round(float(fraction[0]) * 1000 if fraction else 0)  # Milliseconds.
def iso(time): return (datetime.fromtimestamp(0, timezone.utc) + timedelta(milliseconds=time)).isoformat('T', 'milliseconds')[:23] + 'Z'

def members(pairs, **known):  # Objects come as tuples of pairs, so that a key that stands twice is seen.
    need(type(pairs) is tuple)
    found = [pair for pair in pairs if pair[0] in known]
    need(len(dict(found)) == len(found))
    return (kind(dict(found).get(key)) for key, kind in known.items())
def optional(kind, default): return lambda value: default if value is None else kind(value)

def readings(key, scope, name, sealed):
    """The rows of one day file, by time; an exception where it cannot be read."""
    plain = AESGCM(key).decrypt(sealed[:12], sealed[12:], b'glucose-history-v1/' + name.encode())
    document = json.loads(plain.decode(), object_pairs_hook=tuple, parse_constant=lambda _: need(False))
    version, _, owner, stored = members(document, schemaVersion=number, source=text, accountScope=text, readings=listing)
    need(type(version) is int and version == 1 and owner == scope)
    rows = []
    for entry in stored:
        reading, fetched = members(entry, reading=lambda value: value, fetchedAt=date)
        value, trend, time, length, source = members(reading, mgdL=number, trendString=text, date=date,
            sampleDuration=optional(number, 300), source=optional(text, 'dexcom'))
        need(time // 86400000 == int(name.split('.')[0]) and source in ('dexcom', 'libreLinkUp'))
        rows.append((time, fetched, [iso(time), value, trend, min(length, 900) if length > 0 else 60, source, iso(fetched)]))
    return [row for _, _, row in sorted(rows, key=lambda row: row[:2])]

if __name__ == '__main__':
    folder, key, failed = os.path.abspath(sys.argv[1]), base64.b64decode(sys.stdin.read(), validate=True), False
    names = [name for name in os.listdir(folder) if re.fullmatch(r'(0|-?[1-9][0-9]*)[.]history', name)]
    for name in sorted(names, key=lambda name: int(name.split('.')[0])):
        try:
            with open(os.open(os.path.join(folder, name), os.O_RDONLY | os.O_NOFOLLOW), 'rb') as file:
                sealed = file.read(64 * 1024 * 1024 + 1)
            need(len(sealed) <= 64 * 1024 * 1024)
            for row in readings(key, os.path.basename(folder), name, sealed): print(json.dumps(row))
        except (InvalidTag, ValueError, TypeError, OverflowError, RecursionError, OSError) as problem:
            print(f'{name}: unreadable ({type(problem).__name__})', file=sys.stderr)
            failed = True
    sys.exit(failed)
