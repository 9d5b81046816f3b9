// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "tallbook/PropertyList.h"

namespace tallbook {

/// Throws MalformedPropertyList, with the place, for what XML cannot carry.
XMLPropertyList xmlText(const Value& root);

}  // namespace tallbook
