# SPDX-License-Identifier: BSD-3-Clause
#
# Warnings are an interface target so that the library, the tool and the tests share one list. Inside
# another project, which may use another compiler, they are no errors.
add_library(qvr_warnings INTERFACE)
target_compile_options(qvr_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(qvr_warnings INTERFACE -Werror)
endif()

if(QVR_SANITIZE)
  add_compile_options(-fsanitize=${QVR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${QVR_SANITIZE})
endif()

if(QVR_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
