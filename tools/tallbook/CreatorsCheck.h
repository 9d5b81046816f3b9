// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tallbook/Findings.h"

namespace tallbook::tool {

/// What the classes of all modules offer and lack, "broken", or "fit" for one that does what its
/// role is there for. Each module is loaded in a process of its own, so that the rest are looked at
/// whatever its code does.
std::vector<Finding> findingsOfModules();
/// What to do about a failure in the library's own words: it is the device's creators, or the
/// installation.
std::string adviceOnFailure();

}  // namespace tallbook::tool
