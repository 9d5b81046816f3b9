// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxPreferences.h"

#include "platform/linux/FactFile.h"

namespace tallbook {

Value LinuxPreferences::valueForKey(std::string_view key, std::string_view domain) {
  // A domain is a file's name, never a way to another folder.
  if (domain.find('/') != std::string_view::npos) return {};
  const DictionaryRef stored = dictionaryInFile(
      _root, _directories.mobileHome() + "/Library/Preferences/" + std::string(domain) + ".plist");
  return stored ? (*stored)[key] : Value();
}

void LinuxPreferences::postChangedNotice(std::string_view applicationIdentifier,
                                         std::string_view key) {
  _bus.emit({"/com/orvane/Preferences", "com.orvane.Preferences", "Changed"},
            {{std::string(applicationIdentifier), std::string(key)}});
}

}  // namespace tallbook
