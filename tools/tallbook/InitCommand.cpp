// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
// Only the system tells who the caller is.
#include <unistd.h>

#include "tools/common/Program.h"
#include "tools/tallbook/Commands.h"

namespace tallbook::tool {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream stream(path);
  stream << text;
  if (!stream.flush()) {
    throw Failure(ExitCode::NotSaved,
                  path.string() + " cannot be written: " + std::generic_category().message(errno) +
                      "; choose another folder");
  }
}

void makeTree(const fs::path& root) {
  for (const char* folder : {"tmp", "usr/share/tallbook", "var/mobile/Library/Preferences",
                             "var/mobile/Library/Mail", "var/mobile/Library/Logs/Dorvix"}) {
    fs::create_directories(root / folder);
  }
  fs::permissions(root / "tmp", fs::perms::all | fs::perms::sticky_bit);
  // The caller is "mobile" there.
  const std::string user = std::to_string(::geteuid());
  const std::string group = std::to_string(::getegid());
  write(root / "etc/passwd", "mobile:x:" + user + ":" + group + ":Mobile:/var/mobile:/bin/sh\n");
  write(root / "etc/group", "mobile:x:" + group + ":\n");
}

}  // namespace

ExitCode init(const Options& options) {
  const std::string& folder = options.folder;
  try {
    if (fs::exists(folder) && (!fs::is_directory(folder) || !fs::is_empty(folder))) {
      throw Failure(ExitCode::Usage,
                    folder + " is not empty; give the name of a new or an empty folder");
    }
    makeTree(folder);
  } catch (const fs::filesystem_error& error) {
    throw Failure(ExitCode::NotSaved, folder + " cannot be made a device tree: " +
                                          error.code().message() + "; choose another folder");
  }
  failFromHereOnWith(static_cast<int>(ExitCode::NotPrinted));
  std::cout << "An empty device. Use it with: tallbook --root " << folder << " list\n";
  return ExitCode::Done;
}

}  // namespace tallbook::tool
