// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

namespace tallbook::fuzz {

/// What a fuzz target does with an input; each target defines it. It returns where all that has to
/// hold did, whatever the input is.
void tryInput(std::string_view input);

}  // namespace tallbook::fuzz
