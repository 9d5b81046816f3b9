#include "tools/tallbook-migrate/DeviceTree.h"

#include <cerrno>
#include <climits>
#include <deque>
// Only the system's own calls go from folder to folder.
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace tallbook::migrate {

// As many as the kernel follows.
constexpr int kMostLinks = 40;

Descriptor owned(int file) {
  if (file < 0) return nullptr;
  return Descriptor(new int(file), [](const int* number) {
    ::close(*number);
    delete number;
  });
}

Descriptor openBelow(const std::string& root, const std::string& path,
                     const std::function<void(const Stop&)>& visit) {
  // The folders from the root down to where the way has come, and their places.
  std::vector<std::pair<Descriptor, std::filesystem::path>> way;
  way.emplace_back(owned(::open(root.empty() ? "/" : root.c_str(), O_PATH | O_CLOEXEC)), "");
  if (!way.back().first) return nullptr;
  const std::filesystem::path below = path.substr(root.size());
  std::deque<std::string> parts(below.begin(), below.end());
  for (int links = 0; !parts.empty();) {
    const std::string name = std::move(parts.front());
    parts.pop_front();
    if (name == "/") way.resize(1);
    if (name == ".." && way.size() > 1) way.pop_back();
    if (name == "/" || name == ".." || name == "." || name.empty()) continue;
    const auto& [folder, place] = way.back();
    const Descriptor found =
        owned(::openat(*folder, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!found) return nullptr;
    Stop stop{*folder, name, *found, {}, place / name, {}};
    if (::fstat(*found, &stop.status) != 0) return nullptr;
    const bool isLink = S_ISLNK(stop.status.st_mode);
    if (isLink) {
      std::string text(PATH_MAX, '\0');
      const ssize_t length = ::readlinkat(*found, "", text.data(), text.size());
      stop.target = text.substr(0, length < 0 ? 0 : static_cast<std::size_t>(length));
      parts.insert(parts.begin(), stop.target.begin(), stop.target.end());
    }
    if (visit) visit(stop);
    if (!isLink) {
      way.emplace_back(found, stop.place);
    } else if (++links > kMostLinks) {
      errno = ELOOP;
      return nullptr;
    }
  }
  return way.back().first;
}

bool isFrozen(int folder, const std::string& name) {
  struct statx status {};
  return ::statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) == 0 &&
         (status.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0;
}

}  // namespace tallbook::migrate
