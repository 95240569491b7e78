"""nuv1math: planar coordinate transformations and the numerical analysis that they need, over arrays of numpy.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""
