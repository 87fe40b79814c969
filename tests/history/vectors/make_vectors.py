#!/usr/bin/env python3
"""Makes day-files.json beside it from docs/history-format.md: good day files, and damaged ones with one fault each.

Run it after a change of the format; its output never differs otherwise.
"""
import json, os
from cryptography.hazmat.primitives.ciphers.aead import AESGCM

KEY = bytes(range(32))
NONCE = bytes.fromhex('cafebabefacedbaddecaf888')
SCOPE = '4f1d3c5b7a99e8d6c4b2a1908f7e6d5c4b3a29180f1e2d3c4b5a69788796a5b4'
OTHER = '0' * 64
DAY = 20771  # 2026-11-14
vectors = []

def reading(time='2026-11-14T10:00:00.000Z', value=120, fetched='2026-11-14T10:00:11.250Z', **members):
    inner = {'mgdL': value, 'trendString': 'Flat', 'date': time, 'sampleDuration': 300, 'source': 'dexcom'} | members
    return {'reading': {key: part for key, part in inner.items() if part is not ...}, 'fetchedAt': fetched}

def day(*readings, **members):
    whole = {'schemaVersion': 1, 'source': 'cloud', 'accountScope': SCOPE, 'readings': list(readings)} | members
    return {key: part for key, part in whole.items() if part is not ...}

def text(document):
    return json.dumps(document, separators=(',', ':')).encode()

def add(name, document, expected=None, *, index=DAY, key=KEY, label=None, change=lambda sealed: sealed, **more):
    plain = document if isinstance(document, bytes) else text(document)
    label = label or b'glucose-history-v1/%d.history' % index
    sealed = change(NONCE + AESGCM(key).encrypt(NONCE, plain, label))
    vectors.append({'name': name, 'day': index, 'file': sealed.hex()} | more | {'readings': expected})

def row(time, value, trend='Flat', duration=300, source='dexcom', fetched='2026-11-14T10:00:11.250Z'):
    return [time, value, trend, duration, source, fetched]

one = [row('2026-11-14T10:00:00.000Z', 120)]

# Good ones. "exact": a program that writes these readings with this nonce writes these bytes.
add('no reading', day(), [], exact=True)
add('one reading', day(reading()), one, exact=True)
add('two readings of two services', day(
    reading(), reading('2026-11-14T10:00:59.999Z', 120.6, trendString='FortyFiveUp', sampleDuration=60,
                       source='libreLinkUp')),
    one + [row('2026-11-14T10:00:59.999Z', 120.6, 'FortyFiveUp', 60, 'libreLinkUp')], exact=True)
add('the first and the last millisecond of a day', day(
    reading('2026-11-14T00:00:00.000Z'), reading('2026-11-14T23:59:59.999Z')),
    [row('2026-11-14T00:00:00.000Z', 120), row('2026-11-14T23:59:59.999Z', 120)], exact=True)
add('a day before 1970', day(reading('1969-12-31T23:59:59.999Z')), [row('1969-12-31T23:59:59.999Z', 120)],
    index=-1, exact=True)
add('a trend word that needs escapes', json.dumps(day(reading(trendString='a"b\\c\n\u2197')), separators=(',', ':'),
    ensure_ascii=False).encode(), [row('2026-11-14T10:00:00.000Z', 120, 'a"b\\c\n\u2197')], exact=True)
add('readings in another order', day(reading('2026-11-14T10:05:00.000Z', 110), reading()),
    one + [row('2026-11-14T10:05:00.000Z', 110)])
add('members that nobody knows, in another order, with white space',
    json.dumps(dict(reversed(day(reading(colour='red') | {'weather': [1, {}]}, next={'a': None}).items())), indent=1).encode(), one)
add('no duration and no source', day(reading(sampleDuration=..., source=...)), one)
add('null counts as absent', day(reading(sampleDuration=None, source=None)), one)
add('a duration that is too long', day(reading(sampleDuration=3600)),
    [row('2026-11-14T10:00:00.000Z', 120, duration=900)])
add('a duration that cannot be', day(reading(sampleDuration=-1)),
    [row('2026-11-14T10:00:00.000Z', 120, duration=60)])
add('a date in another zone and without milliseconds', day(reading('2026-11-14T12:00:00+02:00')), one)
add('the single-key layout, without a scope', day(reading(), accountScope=...), one, singleKey=True)
add('the single-key layout, with an empty scope', day(reading(), accountScope=''), one, singleKey=True)

# One fault each; the rest of the file is good.
good = day(reading())
add('empty', good, change=lambda sealed: b'')
add('shorter than nonce and tag', good, change=lambda sealed: sealed[:27])
add('the last byte is missing', good, change=lambda sealed: sealed[:-1])
add('one byte more', good, change=lambda sealed: sealed + b'\0')
for place, at in {'nonce': 0, 'ciphertext': 12, 'tag': -1}.items():
    add(f'one bit of the {place}', good, change=lambda sealed, at=at: bytes(
        byte ^ (i == at % len(sealed)) for i, byte in enumerate(sealed)))
add('all zeros', good, change=lambda sealed: bytes(len(sealed)))
add('another key', good, key=bytes(32))
add('the name of another day', good, label=b'glucose-history-v1/20772.history')
add('the name with its folder', good, label=b'glucose-history-v1/accounts/20771.history')
add('no associated data', good, label=b'\0')
for name, plain in {
    'nothing': b'', 'only NUL': bytes(64), 'a byte order mark': b'\xef\xbb\xbf' + text(good), 'cut JSON': text(good)[:-1],
    'text after the JSON': text(good) + b'{}', 'bytes that are no UTF-8': text(good).replace(b'Flat', b'Fl\xe9t'),
    'a list': b'[' + text(good) + b']', 'a key twice': text(good).replace(b'{"schema', b'{"source":"cloud","schema'),
    'a key twice in a reading': text(good).replace(b'"mgdL":120', b'"mgdL":120,"mgdL":121'),
    'a number beyond a double': text(good).replace(b'120', b'1e400'), 'a number that is none': text(good).replace(b'120', b'NaN'),
}.items():
    add('plain text: ' + name, plain)
for name, members in {
    'another schema version': {'schemaVersion': 2}, 'a schema version as text': {'schemaVersion': '1'},
    'no schema version': {'schemaVersion': ...}, 'no source': {'source': ...}, 'a source that is no text': {'source': 1},
    'no scope': {'accountScope': ...}, 'an empty scope': {'accountScope': ''}, 'another scope': {'accountScope': OTHER},
    'a scope in capitals': {'accountScope': SCOPE.upper()}, 'no readings': {'readings': ...}, 'readings null': {'readings': None},
    'readings that are no list': {'readings': {}}, 'a reading that is null': {'readings': [None]},
    'a stored reading without a reading': {'readings': [{'fetchedAt': '2026-11-14T10:00:11.250Z'}]},
    'a reading that is bare': {'readings': [reading()['reading']]},
}.items():
    add(name, good | members if ... not in members.values() else day(reading(), **members))
for name, members in {
    'no value': {'mgdL': ...}, 'a value as text': {'mgdL': '120'}, 'no trend': {'trendString': ...},
    'a trend that is no text': {'trendString': 4}, 'no date': {'date': ...}, 'a date as number': {'date': 1794650400},
    'a date without a zone': {'date': '2026-11-14T10:00:00.000'}, 'a date that does not exist': {'date': '2026-11-31T10:00:00.000Z'},
    'the first moment of the next day': {'date': '2026-11-15T00:00:00.000Z'},
    'the last moment of the day before': {'date': '2026-11-13T23:59:59.999Z'},
    'a duration as text': {'sampleDuration': '300'}, 'a service that nobody knows': {'source': 'cloud'},
    'a service that is no text': {'source': True},
}.items():
    add('reading: ' + name, day(reading(**members)))
for name, fetched in {'missing': None, 'no date': '10:00', 'a number': 0}.items():
    add('time of fetching: ' + name, day(reading(fetched=fetched)))
add('the single-key layout, of another scope', day(reading(), accountScope=OTHER), singleKey=True)

with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), 'day-files.json'), 'w') as out:
    head = {'key': KEY.hex(), 'nonce': NONCE.hex(), 'scope': SCOPE}
    out.write('{' + ''.join(f'"{key}": {json.dumps(value)},\n' for key, value in head.items()) + '"files": [\n')
    out.write(',\n'.join(json.dumps(vector) for vector in vectors) + '\n]}\n')
