# SPDX-License-Identifier: MIT
from typing import Any

ffi: Any
lib: Any
