// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include "platform/DeviceServices.h"
#include "platform/MessageBus.h"

namespace tallbook {

/// A signal on the device's message bus.
class LinuxBookmarksLibrary final : public BookmarksLibrary {
 public:
  explicit LinuxBookmarksLibrary(MessageBus& bus) : _bus(bus) {}
  void cloudTabsWereSwitchedOn() override;

 private:
  MessageBus& _bus;
};

}  // namespace tallbook
