#include "platform/linux/AccountDatabase.h"

#include <cerrno>
#include <charconv>
#include <grp.h>
#include <pwd.h>
#include <string_view>
#include <vector>

namespace tallbook {
namespace {

using Fields = std::vector<std::string_view>;

// Columns of etc/passwd and etc/group.
constexpr std::size_t kIdentifier = 2;
constexpr std::size_t kHome = 5;

std::string_view cutAt(std::string_view& rest, char separator) {
  const auto end = rest.find(separator);
  const auto head = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return head;
}

// The columns of the line of a database file that begins with `name`; none when there is no such
// line.
Fields lineOf(std::string_view database, std::string_view name) {
  while (!database.empty()) {
    std::string_view line = cutAt(database, '\n');
    Fields fields;
    while (!line.empty()) fields.push_back(cutAt(line, ':'));
    if (!fields.empty() && fields.front() == name) return fields;
  }
  return {};
}

std::optional<unsigned> identifierIn(const DeviceRoot& root, const char* path,
                                     const std::string& name) {
  std::error_code error;
  const std::string database = root.readFile(root.path() + path, error);
  const Fields fields = lineOf(database, name);
  if (fields.size() <= kIdentifier) return std::nullopt;
  const std::string_view text = fields[kIdentifier];
  unsigned number = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

// The answer of one of the system's re-entrant look-ups, with a buffer as large as it asks for.
template <class Entry, class LookUp, class Read>
auto systemEntry(const std::string& name, LookUp lookUp, Read read)
    -> std::optional<decltype(read(Entry()))> {
  for (std::size_t size = 1024; size <= std::size_t{1} << 20; size *= 2) {
    std::vector<char> buffer(size);
    Entry entry{};
    Entry* found = nullptr;
    const int result = lookUp(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
    if (result == ERANGE) continue;
    if (result == EINTR) {
      size /= 2;
      continue;
    }
    if (!found) return std::nullopt;
    return read(*found);
  }
  return std::nullopt;
}

}  // namespace

std::optional<uid_t> AccountDatabase::userNamed(const std::string& name) const {
  if (!_root.path().empty()) return identifierIn(_root, "/etc/passwd", name);
  return systemEntry<passwd>(name, ::getpwnam_r, [](const passwd& entry) { return entry.pw_uid; });
}

std::optional<gid_t> AccountDatabase::groupNamed(const std::string& name) const {
  if (!_root.path().empty()) return identifierIn(_root, "/etc/group", name);
  return systemEntry<group>(name, ::getgrnam_r, [](const group& entry) { return entry.gr_gid; });
}

std::optional<std::string> AccountDatabase::homeOf(const std::string& name) const {
  if (_root.path().empty()) {
    return systemEntry<passwd>(name, ::getpwnam_r,
                               [](const passwd& entry) { return std::string(entry.pw_dir); });
  }
  std::error_code error;
  const std::string database = _root.readFile(_root.path() + "/etc/passwd", error);
  const Fields fields = lineOf(database, name);
  if (fields.size() <= kHome) return std::nullopt;
  return std::string(fields[kHome]);
}

}  // namespace tallbook
