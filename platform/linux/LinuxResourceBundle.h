// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "tallbook/Value.h"

#include "platform/ResourceBundle.h"
#include "platform/linux/DeviceRoot.h"

namespace tallbook {

/// Resources in folders, those below the device's root confined to it, the first folder that has
/// one counting. A string table is a property-list dictionary of texts at
/// <folder>/<language>/<table>.strings. Tables are kept once read; the language is asked anew for
/// every text. Thread-safe.
class LinuxResourceBundle final : public ResourceBundle {
 public:
  LinuxResourceBundle(const DeviceRoot& root, std::vector<std::string> folders)
      : _root(root), _folders(std::move(folders)) {}

  /// The folder of the resources that were installed, or built, with this library.
  static std::string folderOfThisLibrary();

  std::optional<std::string> pathForResource(std::string_view name,
                                             std::string_view type) const override;
  std::vector<std::string> pathsForResource(std::string_view name,
                                            std::string_view type) const override;
  std::string dropInFolder(std::string_view name) const override;
  std::string localizedString(std::string_view key, std::string_view table,
                              std::string_view defaultText) const override;

 private:
  using LanguageAndTable = std::pair<std::string, std::string>;

  String textIn(const std::string& language, std::string_view table, std::string_view key) const;
  DictionaryRef tableOf(const LanguageAndTable& which) const;

  std::optional<std::string> fileNamed(const std::string& name) const;

  const DeviceRoot& _root;
  std::vector<std::string> _folders;
  mutable std::mutex _reading;
  mutable std::map<LanguageAndTable, DictionaryRef> _tables;
};

}  // namespace tallbook
