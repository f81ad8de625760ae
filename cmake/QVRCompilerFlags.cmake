# SPDX-License-Identifier: BSD-3-Clause
#
# Warnings are an interface target so that the library, the tool and the tests share one list. They are errors in the
# presets and checks alone: whoever builds with another compiler may meet a warning that nobody has seen yet.
add_library(qvr_warnings INTERFACE)
target_compile_options(qvr_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(QVR_WERROR)
  target_compile_options(qvr_warnings INTERFACE -Werror)
endif()

if(QVR_SANITIZE)
  add_compile_options(-fsanitize=${QVR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${QVR_SANITIZE})
endif()

if(QVR_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
