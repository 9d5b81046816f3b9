// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

#include "tallbook/Value.h"

#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// The dictionary in a property-list file of the device, read afresh; null where there is none. A
/// file that is there and holds none sets `problem`, where given, to a one-line reason.
DictionaryRef dictionaryInFile(const DeviceRoot& root, const std::string& path,
                               std::string* problem = nullptr);

}  // namespace tallbook
