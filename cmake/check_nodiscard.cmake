# SPDX-License-Identifier: MIT
# The nodiscard check, run by ctest as
#   cmake -DCOMPILER=<c++> -DINCLUDE_DIR=<dir> -DSOURCE=<nodiscard_check.cpp> -P check_nodiscard.cmake
# Compiles the source twice with -Werror: once using what trimmed() gives, which must compile (so
# that the compiler, flags and include path are right), and once dropping it, which must fail
# with an unused-result diagnostic. A copying helper that lost its [[nodiscard]] fails the check.
foreach(l_var COMPILER INCLUDE_DIR SOURCE)
  if(NOT DEFINED ${l_var})
    message(FATAL_ERROR "nodiscard: ${l_var} not given")
  endif()
endforeach()
set(l_flags -std=c++17 -fsyntax-only -Wall -Wextra -Werror "-I${INCLUDE_DIR}")

execute_process(COMMAND ${COMPILER} ${l_flags} -DORDWEL_USE_RESULT "${SOURCE}"
  RESULT_VARIABLE l_result OUTPUT_VARIABLE l_output ERROR_VARIABLE l_output)
if(NOT l_result EQUAL 0)
  message(FATAL_ERROR "nodiscard: the source that uses the result does not compile:\n${l_output}")
endif()

execute_process(COMMAND ${COMPILER} ${l_flags} "${SOURCE}"
  RESULT_VARIABLE l_result OUTPUT_VARIABLE l_output ERROR_VARIABLE l_output)
if(l_result EQUAL 0)
  message(FATAL_ERROR "nodiscard: discarding the result of trimmed() compiles without a warning")
endif()
if(NOT l_output MATCHES "unused-result")
  message(FATAL_ERROR "nodiscard: discarding the result of trimmed() fails, but not for the unused result:\n${l_output}")
endif()
message(STATUS "nodiscard: discarding the result of trimmed() is refused")
