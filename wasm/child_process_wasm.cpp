// child_process_wasm.cpp: a statement that would run in a child process runs in the process itself.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// WebAssembly has no processes. An assertion report ends the test program with an error there, so it cannot look like
// success. The tests of the report itself are run on other platforms.

#include "support/child_process.h"

namespace nuv_tests {

TChildEnd RunInChild(const std::function<void()>& a_Statement)
{
    a_Statement();
    TChildEnd End;
    End.iExitCode = CameBack;
    return End;
}

} // namespace nuv_tests
