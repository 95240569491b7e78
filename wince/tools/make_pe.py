#!/usr/bin/env python3
"""make_pe.py: turns a linked ELF file into a Windows CE dynamic library.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

usage: make_pe.py ELF EXPORTS OUTPUT
ELF is linked with image.ld and keeps its relocations. EXPORTS has one line per function: its name in ELF and a second
name. Both names are exported. The same input gives the same bytes. The layout is that of Microsoft's document "PE
Format".
"""

import collections
import pathlib
import struct
import sys

import elf32

IMAGE_BASE = 0x10000000
PAGE, FILE_ALIGNMENT = 0x1000, 0x200
LIBRARY = "nuv1math.dll"
ENTRY = "DllMain"

MACHINE_ARM = 0x1C0
EXECUTABLE, MACHINE_32BIT, IS_DLL = 0x0002, 0x0100, 0x2000
SUBSYSTEM_WINDOWS_CE = 9
SYSTEM_VERSION = (4, 20)
PE_HEADER, OPTIONAL_HEADER_SIZE, SECTION_HEADER_SIZE = 0x40, 224, 40
CODE, INITIALISED, DISCARDABLE = 0x20, 0x40, 0x02000000
EXECUTE, READ, WRITE = 0x20000000, 0x40000000, 0x80000000
ELF_SECTIONS = {".idata": INITIALISED | READ | WRITE, ".text": CODE | EXECUTE | READ,
                ".rdata": INITIALISED | READ, ".data": INITIALISED | READ | WRITE}
HIGHLOW = 3

# Kinds of relocations in the ELF file. Only absolute addresses change when the image moves. The others are relative to
# their own place, except V4BX, which marks an instruction.
R_PC24, R_ABS32, R_REL32, R_CALL, R_JUMP24, R_V4BX = 1, 2, 3, 28, 29, 40
RELATIVE = {R_PC24, R_REL32, R_CALL, R_JUMP24, R_V4BX}

PeSection = collections.namedtuple("PeSection", "name rva size data flags")


def align(value, to):
    return -(-value // to) * to


def elf_sections(elf):
    found = [section for section in elf.sections if section.flags & elf32.ALLOCATED and section.size]
    unknown = [section.name for section in found if section.name not in ELF_SECTIONS]
    if unknown:
        raise SystemExit(f"sections that an image does not have: {' '.join(unknown)}")
    # The file does not store zeros at the end of a section: the loader clears the rest of its pages.
    return [PeSection(section.name, section.address - IMAGE_BASE, section.size,
                      elf.contents(section).rstrip(b"\0"), ELF_SECTIONS[section.name]) for section in found]


def absolute_places(elf):
    places = []
    for section, relocation in elf.relocations():
        if relocation.type == R_ABS32:
            places.append(relocation.address - IMAGE_BASE)
        elif relocation.type not in RELATIVE:
            raise SystemExit(f"{section.name}: relocation of kind {relocation.type}, which an image cannot have")
    return sorted(places)


def relocation_data(places):
    pages = collections.defaultdict(list)
    for place in places:
        pages[place // PAGE * PAGE].append(HIGHLOW << 12 | place % PAGE)
    data = b""
    for page, entries in sorted(pages.items()):
        entries += [0] * (len(entries) % 2)  # pads the block to a multiple of 4 bytes
        data += struct.pack(f"<II{len(entries)}H", page, 8 + 2 * len(entries), *entries)
    return data


def exported_functions(elf, path):
    """Sorted names with their addresses. The listed functions must be exactly those that ELF exports."""
    visible = {symbol.name: symbol.value - IMAGE_BASE for symbol in elf.symbols
               if symbol.binding == elf32.GLOBAL and symbol.visibility == elf32.DEFAULT_VISIBILITY
               and symbol.type == elf32.FUNCTION and symbol.section != elf32.UNDEFINED}
    listed = [line.split() for line in pathlib.Path(path).read_text().splitlines()]
    if visible.keys() != {names[0] for names in listed}:
        raise SystemExit(f"listed or visible, not both: {visible.keys() ^ {names[0] for names in listed}}")
    return sorted((name.encode(), visible[names[0]]) for names in listed for name in names)


def export_data(functions, rva):
    """Each name gets an ordinal of its own, because some readers show only one name per ordinal."""
    count = len(functions)
    addresses_at = 40
    names_at = addresses_at + 4 * count
    ordinals_at = names_at + 4 * count
    texts_at = ordinals_at + 2 * count
    texts = LIBRARY.encode() + b"\0"
    pointers = []
    for name, _ in functions:
        pointers.append(rva + texts_at + len(texts))
        texts += name + b"\0"
    directory = struct.pack("<IIHHIIIIIII", 0, 0, 0, 0, rva + texts_at, 1, count, count,
                            rva + addresses_at, rva + names_at, rva + ordinals_at)
    return (directory + struct.pack(f"<{count}I", *(address for _, address in functions))
            + struct.pack(f"<{count}I", *pointers) + struct.pack(f"<{count}H", *range(count)) + texts)


def append(sections, name, make_data, flags):
    """Appends a section. make_data gets its address and returns its contents."""
    rva = align(sections[-1].rva + sections[-1].size, PAGE)
    data = make_data(rva)
    sections.append(PeSection(name, rva, len(data), data, flags))


def sum_of_sizes(sections, flag):
    return sum(align(len(section.data), FILE_ALIGNMENT) for section in sections if section.flags & flag)


def optional_header(sections, entry, slots, header_size):
    by_name = {section.name: section for section in sections}
    directories = [(0, 0)] * 16
    for index, name in ((0, ".edata"), (1, ".idata"), (5, ".reloc")):
        directories[index] = by_name[name].rva, by_name[name].size
    directories[12] = slots
    image_size = align(sections[-1].rva + sections[-1].size, PAGE)
    header = struct.pack("<HBBIIIIII", 0x10B, 0, 0, sum_of_sizes(sections, CODE), sum_of_sizes(sections, INITIALISED),
                         0, entry, by_name[".text"].rva, by_name[".rdata"].rva)
    header += struct.pack("<III6HIIIIHH", IMAGE_BASE, PAGE, FILE_ALIGNMENT, *SYSTEM_VERSION, 0, 0, *SYSTEM_VERSION,
                          0, image_size, header_size, 0, SUBSYSTEM_WINDOWS_CE, 0)
    header += struct.pack("<6I", 0x100000, 0x1000, 0x100000, 0x1000, 0, len(directories))
    return header + b"".join(struct.pack("<II", *directory) for directory in directories)


def image_file(sections, entry, slots):
    header_size = align(PE_HEADER + 24 + OPTIONAL_HEADER_SIZE + SECTION_HEADER_SIZE * len(sections), FILE_ALIGNMENT)
    header = struct.pack("<2s58xI", b"MZ", PE_HEADER)
    header += struct.pack("<4sHHIIIHH", b"PE", MACHINE_ARM, len(sections), 0, 0, 0, OPTIONAL_HEADER_SIZE,
                          EXECUTABLE | MACHINE_32BIT | IS_DLL)
    header += optional_header(sections, entry, slots, header_size)
    body = b""
    for section in sections:
        size = align(len(section.data), FILE_ALIGNMENT)
        offset = header_size + len(body) if size else 0
        header += struct.pack("<8sIIIIIIHHI", section.name.encode(), section.size, section.rva, size, offset,
                              0, 0, 0, 0, section.flags)
        body += section.data.ljust(size, b"\0")
    return header.ljust(header_size, b"\0") + body


def address_of(elf, name):
    return next(symbol.value for symbol in elf.symbols if symbol.name == name) - IMAGE_BASE


def main():
    _, linked, exports, output = sys.argv
    elf = elf32.ElfFile(linked)
    sections = elf_sections(elf)
    functions = exported_functions(elf, exports)
    append(sections, ".edata", lambda rva: export_data(functions, rva), INITIALISED | READ)
    append(sections, ".reloc", lambda _: relocation_data(absolute_places(elf)), INITIALISED | DISCARDABLE | READ)
    slots = address_of(elf, "slots")
    pathlib.Path(output).write_bytes(
        image_file(sections, address_of(elf, ENTRY), (slots, address_of(elf, "slots_end") - slots)))


if __name__ == "__main__":
    main()
