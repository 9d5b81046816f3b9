#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace tallbook::migrate {

/// An open file, closed with the last who holds it; null where it could not be opened.
using Descriptor = std::shared_ptr<const int>;
Descriptor owned(int file);

/// Something that lies on a way through a device tree.
struct Stop {
  int folder;  ///< the open folder that holds it
  std::string name;
  int file;  ///< itself, open for looking at it (O_PATH)
  struct stat status;
  std::filesystem::path place;   ///< from the root, without links
  std::filesystem::path target;  ///< of a link
};

/// Opens (O_PATH) what `path`, which begins with that of the tree's root, leads to. The root is "/"
/// to every link and "..": none leads out of the tree. Without an answer `errno` says why. `visit`
/// is told of everything on the way.
Descriptor openBelow(const std::string& root, const std::string& path,
                     const std::function<void(const Stop&)>& visit = {});

/// Whether an attribute of its own, immutable or append-only, keeps even the superuser from it.
bool isFrozen(int folder, const std::string& name);

}  // namespace tallbook::migrate
