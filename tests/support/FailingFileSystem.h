#pragma once

#include <cstddef>
#include <functional>
#include <limits>

#include "platform/FileSystem.h"

namespace tallbook {

/// Thrown where a process would have ended. Derives from nothing, so that no handler of ordinary
/// failures takes it.
struct Stopped {};

/// Another file system that fails or stops at its n-th changing operation, the first being 1.
/// Changing operations are all but `readFile`, `exists` and `isDirectory`; asking for a temporary
/// path counts, since a save can fail there.
class FailingFileSystem final : public FileSystem {
 public:
  explicit FailingFileSystem(FileSystem& inner) : _inner(inner) {}

  /// The n-th operation fails with `error` (a temporary path is nullopt) and does nothing; the
  /// others work.
  void failAt(std::size_t n, std::error_code error);
  /// The n-th operation ends the process: it throws `Stopped`, and so does everything after it,
  /// reading included. A file that was being written stays behind with half its bytes. What runs
  /// while `Stopped` unwinds the stack gets errors and changes nothing.
  void stopAt(std::size_t n);
  /// `what` is called when the n-th operation is asked for; then it is done like the others.
  void callAt(std::size_t n, std::function<void()> what);
  /// Forgets failures, stops, calls and the count.
  void heal();
  /// How many changing operations were asked for.
  std::size_t operations() const { return _operations; }

  std::string readFile(const std::string& path, std::error_code& error) const override;
  bool exists(const std::string& path) const override;
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
  static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

  /// Counts an operation: the error to fail with, none to go on; stops where it is time.
  std::error_code next();
  bool stopsNow() const { return !_stopped && _operations + 1 == _stopAt; }
  void checkAlive() const;

  FileSystem& _inner;
  std::size_t _operations = 0;
  std::size_t _failAt = kNever;
  std::size_t _stopAt = kNever;
  std::size_t _callAt = kNever;
  std::function<void()> _call;
  std::error_code _error;
  bool _stopped = false;
};

}  // namespace tallbook
