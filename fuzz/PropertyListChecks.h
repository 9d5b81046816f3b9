// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string_view>

namespace tallbook::fuzz {

/// Reads the bytes as a property list. What is read has to be written, in both encodings where XML
/// can carry it, and read again as the same; described, copied and compared in bounds.
void checkPropertyList(std::string_view bytes);

}  // namespace tallbook::fuzz
