// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/DeviceServices.h"

namespace tallbook {

/// Random UUIDs (version 4) of the kernel's random numbers.
class LinuxUUIDs final : public UUIDSource {
 public:
  String newUUID() override;
};

}  // namespace tallbook
