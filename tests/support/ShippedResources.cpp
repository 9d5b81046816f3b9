// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tests/support/ShippedResources.h"

namespace tallbook {

std::string shippedResources() {
  return TALLBOOK_SHIPPED_RESOURCES;
}

}  // namespace tallbook
