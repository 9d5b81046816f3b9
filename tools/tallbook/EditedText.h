// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <filesystem>
#include <string>

namespace tallbook::tool {

/// A text in a file and a folder of its own, which only the caller can read, for an editor to
/// change. It stays there until it is removed, so that nothing that was typed is lost.
class EditedText {
 public:
  /// Throws Failure where no file can be made.
  explicit EditedText(const std::string& text);

  std::string path() const { return _path.string(); }
  /// Runs the user's editor on the text; whether that succeeded.
  bool edit() const;
  /// The text as it is now. Throws Failure where it cannot be read.
  std::string text() const;
  void remove() const;

 private:
  std::filesystem::path _path;
};

}  // namespace tallbook::tool
