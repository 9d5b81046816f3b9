// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tallbook/Export.h"
#include "tallbook/Value.h"

namespace tallbook {

/// The property list that `bytes` hold in the binary (format version 1.0) or XML encoding, as a
/// frozen tree; nullopt when they hold none. `problem`, where given, then receives a one-line
/// reason.
///
/// Refused as no property list: cycles, containers nested past `kMaximumNesting`, references or
/// offsets outside the bytes, more objects than the bytes have places for, strings that are no
/// Unicode text, XML that declares entities or is longer than 1 GiB; and a tree that would unfold
/// past 10 million values, or past 100,000 where there are more values than bytes, as only a file
/// can that refers to its containers again and again. What is read can be written, and what is
/// written can be read.
///
/// Throws std::system_error where the bytes are not in the binary encoding and the system's XML
/// parser cannot be loaded: what they hold is then unknown.
[[nodiscard]] TALLBOOK_EXPORT std::optional<Value> propertyListFromBytes(
    std::string_view bytes, std::string* problem = nullptr);

/// `root` in the binary encoding; nullopt, with `errorDescription` set where given, when the tree
/// cannot be written: a string that is not UTF-8, containers nested past `kMaximumNesting` (a
/// cycle is), or more than 10 million values. Equal content in equal order gives equal bytes.
[[nodiscard]] TALLBOOK_EXPORT std::optional<std::string> binaryPropertyList(
    const Value& root, std::string* errorDescription = nullptr);

/// A property list in the XML encoding.
struct XMLPropertyList {
  std::string text;  ///< a whole document, in UTF-8
  /// Whether a date lost its fraction of a second, which the encoding has no place for.
  bool hasShortenedDates = false;
};

/// `root` in the XML encoding, for people to read; nullopt, with `errorDescription` set where given
/// to the place and the reason, when XML cannot carry it: what `binaryPropertyList` refuses,
/// control characters in a text, null, a UID, a date outside the years 1 to 9999.
[[nodiscard]] TALLBOOK_EXPORT std::optional<XMLPropertyList> xmlPropertyList(
    const Value& root, std::string* errorDescription = nullptr);

}  // namespace tallbook
