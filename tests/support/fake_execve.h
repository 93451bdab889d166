// The program starter for tests: it starts the program with execve, unless the environment
// variable TESSERA_TEST_EXECVE_FAIL is set to an errno value, in which case it fails with that
// error. The variable crosses fork, so a test sets it before the library forks its child.
#pragma once

namespace tessera::test {

inline constexpr const char kExecveFailVariable[] = "TESSERA_TEST_EXECVE_FAIL";

}  // namespace tessera::test
