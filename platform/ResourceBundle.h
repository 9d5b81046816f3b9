// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallbook {

/// The files that ship with the library.
class ResourceBundle {
 public:
  virtual ~ResourceBundle() = default;

  /// Path of the resource `name`.`type`; nullopt when there is none.
  virtual std::optional<std::string> pathForResource(std::string_view name,
                                                     std::string_view type) const = 0;
  /// The paths of all resources of that name, the device's own before the shipped one.
  virtual std::vector<std::string> pathsForResource(std::string_view name,
                                                    std::string_view type) const = 0;
  /// The device's folder for files that add to the resource, `name`.d; it need not be there.
  virtual std::string dropInFolder(std::string_view name) const = 0;
  /// The text of `key` in the string table `table`, in the user's language, else in English. A key
  /// that no table has: `defaultText`, or the key itself where that is empty.
  virtual std::string localizedString(std::string_view key, std::string_view table,
                                      std::string_view defaultText) const = 0;
};

}  // namespace tallbook
