// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tallbook/String.h"

#include <ostream>

namespace tallbook {

std::ostream& operator<<(std::ostream& out, const String& string) {
  return out << string.view();
}

}  // namespace tallbook
