// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/EditedText.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "tools/common/FileBytes.h"
#include "tools/common/Outcome.h"

namespace tallbook::tool {
namespace {

namespace fs = std::filesystem;

/// The user's editor, as a command of the shell.
std::string editor() {
  for (const char* variable : {"VISUAL", "EDITOR"}) {
    const char* const command = std::getenv(variable);
    if (command && *command != '\0') return command;
  }
  return "$(command -v sensible-editor || echo vi)";
}

std::string quotedForShell(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

[[noreturn]] void cannotBeMade(const std::string& path, const std::string& why) {
  throw Failure(ExitCode::NotSaved, path + " cannot be made: " + why +
                                        "; name another folder for temporary files in TMPDIR");
}

}  // namespace

EditedText::EditedText(const std::string& text) {
  std::error_code error;
  const fs::path temporary = fs::temp_directory_path(error);
  if (error) cannotBeMade("a folder for the text", error.message());
  std::string folder = (temporary / "tallbook-XXXXXX").string();
  if (!::mkdtemp(folder.data())) cannotBeMade(folder, std::generic_category().message(errno));
  _path = fs::path(folder) / "accounts.json";
  std::ofstream stream(_path);
  // Nobody else can look into the folder meanwhile.
  fs::permissions(_path, fs::perms::owner_read | fs::perms::owner_write, error);
  stream << text;
  if (stream.flush() && !error) return;
  remove();
  cannotBeMade(path(), "it cannot be written");
}

bool EditedText::edit() const {
  // The editor may be a command with arguments.
  return std::system((editor() + " " + quotedForShell(path())).c_str()) == 0;
}

std::string EditedText::text() const {
  std::error_code error;
  std::string text = bytesOfFile(path(), error);
  if (error) throw Failure(ExitCode::Unreadable, path() + " cannot be read: " + error.message());
  return text;
}

void EditedText::remove() const {
  std::error_code ignored;
  fs::remove_all(_path.parent_path(), ignored);
}

}  // namespace tallbook::tool
