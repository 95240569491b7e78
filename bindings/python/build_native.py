"""build_native.py: what cffi compiles into the extension nuv1math._native: the C interface, read from its header.

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


# The loop over an array of points, which would take a hundred times as long in Python. Where there is no result, it
# writes NaN.
MAP_POINTS = """
static void map_points(int a_bInverse, const nuv_TOmographicParams* a_Coefs, const nuv_TOrigins* a_Origins,
                       size_t a_iCount, const nuv_TVector* a_vFrom, nuv_TVector* a_vTo)
{
    size_t i;
    for (i = 0; i < a_iCount; ++i)
    {
        const nuv_enumReason Reason = a_bInverse ? nuv_InversePoint(a_Coefs, a_Origins, a_vFrom + i, a_vTo + i)
                                                 : nuv_TransformPoint(a_Coefs, a_Origins, a_vFrom + i, a_vTo + i);
        if (Reason != NUV_REASON_NONE)
        {
            a_vTo[i].dX = NAN;
            a_vTo[i].dY = NAN;
        }
    }
}
"""

# The archive's functions are the extension's own: none is exported, so that no other copy of the library in the process
# takes their place.
BUILDER = cffi.FFI()
BUILDER.cdef(declarations())
BUILDER.cdef("void map_points(int, const nuv_TOmographicParams*, const nuv_TOrigins*, size_t, const nuv_TVector*,"
             "                nuv_TVector*);")
BUILDER.set_source("nuv1math._native", "#include <math.h>\n#include <nuv1math_c.h>\n" + MAP_POINTS,
                   include_dirs=[str(INTERFACE)],
                   extra_link_args=["-Wl,--exclude-libs,ALL", "-Wl,--as-needed", "-Wl,-z,now", "-s"], libraries=["m"])
