#!/usr/bin/env python3
"""Prints the readings of one scope of saved history, written from docs/history-format.md alone.

    secret-tool lookup service Tidewell.history account encryption-key-v2-SCOPE | read_history.py FOLDER

FOLDER is .../Tidewell/SavedHistory/accounts/SCOPE. The key comes by standard input, in base64.
Prints time, mg/dL, trend, seconds, source and time of fetching, separated by tabs. Exit 1: a file is unreadable.
"""
import base64, json, os, re, sys
from datetime import datetime, timezone
from cryptography.exceptions import InvalidTag
from cryptography.hazmat.primitives.ciphers.aead import AESGCM

folder = os.path.abspath(sys.argv[1])
aead = AESGCM(base64.b64decode(sys.stdin.read()))
names = [name for name in os.listdir(folder) if re.fullmatch(r'(0|-?[1-9][0-9]*)\.history', name)]
failed = False
for name in sorted(names, key=lambda name: int(name.split('.')[0])):
    try:
        sealed = open(os.path.join(folder, name), 'rb').read()
        day = json.loads(aead.decrypt(sealed[:12], sealed[12:], b'glucose-history-v1/' + name.encode()))
        if day['schemaVersion'] != 1 or day['accountScope'] != os.path.basename(folder):
            raise ValueError('another version or scope')
        for stored in day['readings']:
            reading = stored['reading']
            time = datetime.strptime(reading['date'], '%Y-%m-%dT%H:%M:%S.%f%z')
            if (time - datetime.fromtimestamp(0, timezone.utc)).days != int(name.split('.')[0]):
                raise ValueError('a reading of another day')
            print(reading['date'], reading['mgdL'], reading['trendString'], reading['sampleDuration'],
                  reading['source'], stored['fetchedAt'], sep='\t')
    except (InvalidTag, ValueError, KeyError, TypeError) as problem:
        print(f'{name}: unreadable ({type(problem).__name__})', file=sys.stderr)
        failed = True
sys.exit(failed)
