# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

# For our own code only.
add_library(tallbook_warnings INTERFACE)
target_compile_options(
  tallbook_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
                              $<$<BOOL:${TALLBOOK_WERROR}>:-Werror>)
# GCC 12 sees overlapping copies in optimised std::string concatenations that have none.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(tallbook_warnings INTERFACE -Wno-restrict)
endif()
