# require.sh: the old name of parts/build.sh, for the commands that still use it.
# SPDX-License-Identifier: MIT
. "$(dirname "${BASH_SOURCE[0]}")/parts/build.sh"
read -r -d '' -a build_packages <<<"${packages[fit]}" || true
read -r -d '' -a test_packages <<<"${packages[default]}" || true
