"""elf32.py: reads sections, symbols and relocations of a 32-bit little-endian ELF file.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import collections
import pathlib
import struct

Section = collections.namedtuple("Section", "name type flags address offset size link info alignment entry_size")
Symbol = collections.namedtuple("Symbol", "name value size binding type visibility section")
Relocation = collections.namedtuple("Relocation", "address type symbol")

SYMBOL_TABLE, NO_BITS, RELOCATIONS = 2, 8, 9
ALLOCATED = 2
GLOBAL, DEFAULT_VISIBILITY, FUNCTION = 1, 0, 2
UNDEFINED = 0


class ElfFile:
    def __init__(self, path):
        self.data = pathlib.Path(path).read_bytes()
        if self.data[:6] != b"\x7fELF\x01\x01":
            raise SystemExit(f"{path}: no 32-bit little-endian ELF file")
        table, = struct.unpack_from("<I", self.data, 32)
        entry_size, count, names = struct.unpack_from("<HHH", self.data, 46)
        raw = [struct.unpack_from("<10I", self.data, table + i * entry_size) for i in range(count)]
        self.sections = [Section(self._text(raw[names][4], fields[0]), *fields[1:]) for fields in raw]
        self.symbols = self._read_symbols()

    def section(self, name):
        return next(section for section in self.sections if section.name == name)

    def contents(self, section):
        if section.type == NO_BITS:
            return bytes(section.size)
        return self.data[section.offset:section.offset + section.size]

    def relocations(self):
        """The relocations of allocated sections, each with its section."""
        for table in self.sections:
            if table.type == RELOCATIONS and self.sections[table.info].flags & ALLOCATED:
                for address, info in struct.iter_unpack("<II", self.contents(table)):
                    yield self.sections[table.info], Relocation(address, info & 0xff, self.symbols[info >> 8])

    def _text(self, table_offset, offset):
        start = table_offset + offset
        return self.data[start:self.data.index(b"\0", start)].decode()

    def _read_symbols(self):
        table = next(section for section in self.sections if section.type == SYMBOL_TABLE)
        texts = self.sections[table.link].offset
        return [Symbol(self._text(texts, name), value, size, info >> 4, info & 15, other & 3, section)
                for name, value, size, info, other, section in struct.iter_unpack("<IIIBBH", self.contents(table))]
