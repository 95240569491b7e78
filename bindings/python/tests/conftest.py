"""conftest.py: settings of all tests. The cases of hypothesis are the same in every run, and no time is a failure.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import hypothesis

hypothesis.settings.register_profile("fixed", derandomize=True, database=None, deadline=None,
                                     suppress_health_check=[hypothesis.HealthCheck.too_slow])
hypothesis.settings.load_profile("fixed")
