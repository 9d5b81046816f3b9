// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <optional>
#include <string>
#include <system_error>

#include "platform/FileSystem.h"

namespace tallbook {

/// How an attempt to give a file a second name ended.
enum class SecondName {
  Given,
  AnotherVersion,  ///< of the file lies there by now; nothing was changed
  Refused          ///< by the system, "file exists" where something has the name already
};

/// Keeps the version `version` of the file `name` under a second name in the folder `to`, whatever
/// is put in its place afterwards: by a hard link, where that is not possible by a copy that
/// belongs to "mobile". What a link leads to is copied, since it is the link that gets replaced.
SecondName giveSecondName(Folder& folder, const std::string& name, const FileVersion& version,
                          Folder& to, const std::string& second, std::error_code& error);

/// Compares a version of the file `name` with what is kept under other names. Reads it at most
/// once.
class VersionToKeep {
 public:
  VersionToKeep(const Folder& folder, const std::string& name, const FileVersion& version)
      : _folder(folder), _name(name), _version(version) {}

  /// Whether the folder `to` has it, or its bytes, under the second name. What cannot be compared
  /// is not the same.
  bool isKeptAs(const Folder& to, const std::string& second);

 private:
  const Folder& _folder;
  std::string _name;
  FileVersion _version;
  std::optional<FileContent> _content;
};

}  // namespace tallbook
