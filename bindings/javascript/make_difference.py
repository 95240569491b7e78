#!/usr/bin/env python3
"""make_difference.py BASE TARGET DIFFERENCE: writes what turns the file BASE into the file TARGET.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

The modules with and without vectors have most functions in common, but the numbers of the functions that these call
differ. So a difference is a list of steps. Each step inserts bytes, and then copies a part of the base with a byte added
to each of its bytes; nearly all of the added bytes are 0, which gzip makes small (C. Percival, Naive differences of
executable code, 2003).

The file has, with numbers as LEB128:
    the size of the target, the size of the steps, the number of inserted bytes
    the steps: bytes to insert, bytes to copy, and where in the base they begin: relative to the end of the part before,
        n >= 0 as 2n and n < 0 as -2n - 1
    the inserted bytes, and the bytes to be added
difference.mjs reads it.
"""

import collections
import pathlib
import sys

SEED = 8 # equal bytes where a part begins
PATIENCE = 8 # a part ends where so many more bytes differ than agree

Part = collections.namedtuple("Part", "target base length gain")


def number(value):
    """LEB128."""
    digits = bytearray()
    while value > 127:
        digits.append(value & 127 | 128)
        value >>= 7
    return bytes(digits) + bytes([value])


def extended(base, target, at_base, at_target):
    """The part that begins at two places: as long as agreeing bytes outnumber the others."""
    gain = length = score = 0
    for i, (one, other) in enumerate(zip(base[at_base:], target[at_target:])):
        score += 1 if one == other else -1
        if score > gain:
            gain, length = score, i + 1
        elif score < gain - PATIENCE:
            break
    return Part(at_target, at_base, length, gain)


def parts_of(base, target):
    """The parts of the target that are copied from the base, in order."""
    places = collections.defaultdict(list)
    for place in range(len(base) - SEED + 1):
        places[base[place:place + SEED]].append(place)
    position = 0
    while position < len(target):
        found = [extended(base, target, place, position) for place in places.get(target[position:position + SEED], [])]
        if found:
            part = max(found, key=lambda part: part.gain)
            yield part
            position += part.length
        else:
            position += 1
    yield Part(len(target), 0, 0, 0)


def difference(base, target):
    """The contents of the file."""
    steps, inserted, added = bytearray(), bytearray(), bytearray()
    done = place = 0
    for part in parts_of(base, target):
        move = part.base - place
        steps += number(part.target - done) + number(part.length) + number(2 * move if move >= 0 else -2 * move - 1)
        inserted += target[done:part.target]
        done, place = part.target + part.length, part.base + part.length
        added += bytes((new - old) % 256 for new, old in zip(target[part.target:done], base[part.base:place]))
    return number(len(target)) + number(len(steps)) + number(len(inserted)) + steps + inserted + added


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    BASE, TARGET, DIFFERENCE = map(pathlib.Path, sys.argv[1:])
    DIFFERENCE.write_bytes(difference(BASE.read_bytes(), TARGET.read_bytes()))
