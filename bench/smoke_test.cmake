# SPDX-License-Identifier: BSD-3-Clause
#
# Runs a case of each group, small and quick, and reads back what is written. No time is looked at.
#   cmake -DBENCH=... -DFILTER=... -DJSON=... -P smoke_test.cmake
execute_process(
  COMMAND ${BENCH} --quick --size 64x48 --filter ${FILTER} --json ${JSON}
  OUTPUT_VARIABLE printed ERROR_VARIABLE complaints RESULT_VARIABLE status)
if(NOT status EQUAL 0 OR NOT complaints STREQUAL "")
  message(FATAL_ERROR "status ${status}: ${complaints}")
endif()
file(READ ${JSON} json)
string(JSON count LENGTH "${json}" results)
if(count EQUAL 0)
  message(FATAL_ERROR "no case is named ${FILTER}")
endif()
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
  string(JSON name GET "${json}" results ${i} name)
  string(JSON measure GET "${json}" results ${i} measure)
  string(JSON median GET "${json}" results ${i} median)
  if(name STREQUAL "" OR measure STREQUAL "" OR NOT median MATCHES "^[0-9]")
    message(FATAL_ERROR "result ${i} is '${name}' '${measure}' '${median}'")
  endif()
endforeach()
string(JSON goals LENGTH "${json}" goals)
if(goals EQUAL 0)
  message(FATAL_ERROR "the table of goals is empty")
endif()
