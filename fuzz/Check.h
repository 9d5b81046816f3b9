// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tallbook::fuzz {

/// Ends the process, so that the engine keeps the input, where what has to hold does not.
inline void check(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "not so: %s\n", what.c_str());
  std::abort();
}

}  // namespace tallbook::fuzz
