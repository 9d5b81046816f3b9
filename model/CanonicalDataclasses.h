// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "tallbook/Value.h"

/// What `BasicAccount` answers about the order of dataclasses, for the catalogue as well: it is
/// built before the class may be used.
namespace tallbook {

/// What every dataclass begins with; the rest of it is its short name.
inline constexpr std::string_view kDataclassPrefix = "com.orvane.Dataclass.";

/// The fourteen dataclasses in canonical order; one frozen list for the process.
const ArrayRef& canonicalDataclasses();

/// Where the dataclass stands in that list; nullopt for what is no dataclass.
std::optional<std::size_t> canonicalPositionOf(std::string_view dataclass);

/// Whether the list is of dataclasses only, each once and in canonical order; not for null.
bool isInCanonicalOrder(const ArrayRef& dataclasses);

/// The strings in canonical order, each dataclass once, then the rest as they came; empty for null.
std::vector<Value> inCanonicalOrder(const ArrayRef& dataclasses);

}  // namespace tallbook
