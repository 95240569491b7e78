"""build_native.py: what cffi compiles into the extension nuv1math._native: all of the C interface, read from its header.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re

import cffi

INTERFACE = pathlib.Path(__file__).resolve().parents[1] / "c"


def declarations():
    """The declarations of nuv1math_c.h as cffi reads them: without comments, conditions and attributes."""
    text = (INTERFACE / "nuv1math_c.h").read_text(encoding="utf-8")
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
    text = re.search(r'extern "C" \{\n#endif\n(.*?)#ifdef __cplusplus', text, re.DOTALL).group(1)
    text = re.sub(r"^#define (\w+) \(?(-?\d+)\)?$", r"#define \1 \2", text, flags=re.MULTILINE)
    text = re.sub(r"^#define (\w+) \d*\.\d+$", r"static const double \1;", text, flags=re.MULTILINE)
    return text.replace("NUV1MATH_C_API ", "")


# The archive's functions are the extension's own: none is exported, so that no other copy of the library in the process
# takes their place.
BUILDER = cffi.FFI()
BUILDER.cdef(declarations())
BUILDER.set_source("nuv1math._native", "#include <nuv1math_c.h>", include_dirs=[str(INTERFACE)],
                   extra_link_args=["-Wl,--exclude-libs,ALL", "-Wl,--as-needed", "-s"], libraries=["m"])
