// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

namespace tallbook {

/// The folder of the resources that are shipped. What is built of these sources defines it: tests
/// run where they were built, others elsewhere.
std::string shippedResources();

}  // namespace tallbook
