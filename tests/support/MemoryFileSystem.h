#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace tallbook {

/// Files in memory, with a journal of what was done to them. The root folder "/" is there from the
/// beginning. Every account and group name is known, except "nobody-has-this-name".
class MemoryFileSystem final : public FileSystem {
 public:
  /// Each read and each change that succeeded, in order: "readFile PATH",
  /// "remove PATH", "copyFile FROM -> TO", "createDirectories PATH",
  /// "createFile PATH", "setOwner PATH OWNER:GROUP", "rename FROM -> TO", "flushDirectory PATH".
  const std::vector<std::string>& journal() const { return _journal; }
  void clearJournal() { _journal.clear(); }
  /// Name and group of the file's owner, as "owner:group"; empty when it was never set.
  std::string ownerOf(const std::string& path) const;

  std::string readFile(const std::string& path, std::error_code& error) const override;
  bool exists(const std::string& path) const override { return find(path) != nullptr; }
  bool isDirectory(const std::string& path) const override;
  std::error_code remove(const std::string& path) override;
  std::error_code copyFile(const std::string& from, const std::string& to) override;
  std::error_code createDirectories(const std::string& path, unsigned mode) override;
  std::optional<std::string> temporaryPathIn(const std::string& directory) override;
  std::error_code createFile(const std::string& path, std::string_view bytes) override;
  std::error_code setOwner(const std::string& path, const std::string& owner,
                           const std::string& group) override;
  std::error_code rename(const std::string& from, const std::string& to) override;
  std::error_code flushDirectory(const std::string& path) override;

 private:
  struct Node {
    bool directory = false;
    std::string bytes;
    std::string owner;
  };

  const Node* find(const std::string& path) const;
  /// The error of making something at `path`; none when it can be made.
  std::error_code obstacleAt(const std::string& path) const;
  std::error_code add(const std::string& path, std::string_view bytes);
  /// The error of using `path` as a file; none for a file.
  std::error_code notAFile(const std::string& path) const;
  std::error_code done(std::string entry) const;

  std::map<std::string, Node> _nodes{{"/", {true, {}, {}}}};
  mutable std::vector<std::string> _journal;
  unsigned _temporaryNames = 0;
};

}  // namespace tallbook
