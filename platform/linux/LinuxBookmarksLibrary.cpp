// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxBookmarksLibrary.h"

namespace tallbook {

void LinuxBookmarksLibrary::cloudTabsWereSwitchedOn() {
  _bus.emit({"/com/orvane/Bookmarks", "com.orvane.Bookmarks", "CloudTabsSwitchedOn"},
            {MessageBus::Arguments()});
}

}  // namespace tallbook
