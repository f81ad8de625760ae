# SPDX-License-Identifier: BSD-3-Clause
#
# Warnings are an interface target so that the library, the tool and the tests share one list.
add_library(qvr_warnings INTERFACE)
target_compile_options(qvr_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

if(QVR_SANITIZE)
  add_compile_options(-fsanitize=${QVR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${QVR_SANITIZE})
endif()

if(QVR_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
