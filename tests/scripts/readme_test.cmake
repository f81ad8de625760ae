# SPDX-License-Identifier: BSD-3-Clause
#
# The program in the README is the one that is built and run.
file(READ "${README}" readme)
file(READ "${PROGRAM}" program)
string(FIND "${readme}" "```cpp\n${program}```" found)
if(found EQUAL -1)
  message(FATAL_ERROR "README.md does not show ${PROGRAM} as it is")
endif()
