// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxFileWatch.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallbook {
namespace {

// What a folder tells of the names in it. The first alone is what a save does under the file's name
// and under no other.
constexpr unsigned kReplacement = IN_MOVED_TO;
constexpr unsigned kAnything =
    kReplacement | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_ATTRIB | IN_CLOSE_WRITE;
// What happens to a watched thing itself.
constexpr unsigned kEnd = IN_DELETE_SELF | IN_MOVE_SELF;
// One whose name was removed has a link less, which its attributes tell, and is not deleted while
// it has other names, as a kept generation has.
constexpr unsigned kFile = kEnd | IN_ATTRIB | IN_CLOSE_WRITE;

std::error_code unlessAbsent(const std::error_code& error) {
  const bool isAbsent =
      error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
  return isAbsent ? std::error_code() : error;
}

}  // namespace

LinuxFileWatch::LinuxFileWatch(FileDescriptor notices, const std::string& path,
                               const DeviceRoot& root)
    : _notices(std::move(notices)), _path(path), _root(root) {
  watchFrom(_root.path().size());
}

// After new watches are made, what happened meanwhile is taken too: it may concern what was just
// looked at. Somebody who never stops touching the file ends that as well; what is left then makes
// the descriptor readable, and came after whatever woke the caller.
bool LinuxFileWatch::takeNotices() {
  constexpr int kMostRounds = 8;
  bool mayHaveChanged = false;
  for (int round = 0; round < kMostRounds; ++round) {
    const std::size_t end = drain();
    if (end == kNowhere) break;
    watchFrom(end);
    mayHaveChanged = true;
  }
  if (mayHaveChanged || !_problem) return mayHaveChanged;
  // What could not be watched may have come or changed without a notice.
  watchFrom(_root.path().size());
  return true;
}

std::size_t LinuxFileWatch::drain() {
  // More than the kernel's queue holds by default, in pieces.
  constexpr int kMostReads = 64;
  alignas(inotify_event) char buffer[std::size_t{1} << 15];
  std::size_t topmost = kNowhere;
  for (int read = 0; read < kMostReads; ++read) {
    const ssize_t length = ::read(_notices.get(), buffer, sizeof buffer);
    if (length <= 0) break;
    for (ssize_t at = 0; at < length;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(buffer + at);
      topmost =
          std::min(topmost, placeOf(event->wd, event->mask, event->len > 0 ? event->name : ""));
      at += static_cast<ssize_t>(sizeof *event + event->len);
    }
  }
  return topmost;
}

std::size_t LinuxFileWatch::placeOf(int number, unsigned mask, const char* name) const {
  // Where notices were lost, anything may have happened.
  if (mask & IN_Q_OVERFLOW) return _root.path().size();
  const bool isItself = (mask & (kEnd | IN_IGNORED | IN_UNMOUNT)) != 0;
  // One thing may be met twice, by way of a link; the upper place is the first.
  const auto found = std::ranges::find_if(_watched, [&](const Watched& watched) {
    return watched.number == number && (isItself || watched.name.empty() || watched.name == name);
  });
  if (found == _watched.end()) return kNowhere;
  return isItself || found->name.empty() ? found->end : found->end + 1 + found->name.size();
}

void LinuxFileWatch::watchFrom(std::size_t end) {
  const std::vector<Watched> before = _watched;
  const auto forgetFrom = [this](std::size_t start) {
    std::erase_if(_watched, [=](const Watched& watched) { return watched.end >= start; });
  };
  forgetFrom(end);
  // As every save leaves it: the folder is watched as it has to be beside a file that tells its own
  // end. Otherwise the file is watched with its folder. A problem may be anywhere.
  const bool isDone = end == _path.size() && !_problem && _tellsReplacementsOnly && watchFile();
  if (!isDone) {
    end = _problem ? _root.path().size() : std::min(end, _path.rfind('/'));
    forgetFrom(end);
    watchDownwardsFrom(end);
  }
  for (const Watched& old : before) {
    const bool isStill = std::ranges::any_of(
        _watched, [&](const Watched& watched) { return watched.number == old.number; });
    if (!isStill) ::inotify_rm_watch(_notices.get(), old.number);
  }
}

// Each is watched before the next one is looked for, so that whatever comes or goes in between is
// told.
void LinuxFileWatch::watchDownwardsFrom(std::size_t end) {
  _problem.clear();
  _tellsReplacementsOnly = false;
  for (std::size_t next; end < _path.size(); end = next) {
    next = std::min(_path.find('/', end + 1), _path.size());
    const bool isOwnFolder = next == _path.size();
    const std::string name = _path.substr(end + 1, next - end - 1);
    const std::string path = end == 0 ? "/" : _path.substr(0, end);
    std::error_code error;
    const FileDescriptor folder = _root.open(path, O_PATH | O_DIRECTORY, 0, error);
    if (!folder) {
      _problem = isLink(path) ? error : unlessAbsent(error);
      break;
    }
    error = add(folder, kAnything | kEnd, end, name);
    // A folder above may be entered though not read: then only what it is itself goes unnoticed.
    if (error && (isOwnFolder || error != std::errc::permission_denied)) _problem = error;
    if (isOwnFolder && watchFile() && !error) {
      _tellsReplacementsOnly = !add(folder, kReplacement | kEnd, end, name);
    }
  }
}

bool LinuxFileWatch::watchFile() {
  std::error_code error;
  struct stat status {};
  const FileDescriptor name = _root.open(_path, O_PATH | O_NOFOLLOW, 0, error);
  if (!name || ::fstat(name.get(), &status) != 0) return false;
  if (S_ISREG(status.st_mode)) return !add(name, kFile, _path.size(), "");
  const FileDescriptor target = _root.open(_path, O_PATH, 0, error);
  if (target) error = add(target, kFile, _path.size(), "");
  if (error) _problem = error;
  return false;
}

bool LinuxFileWatch::isLink(const std::string& path) const {
  std::error_code error;
  struct stat status {};
  const FileDescriptor name = _root.open(path, O_PATH | O_NOFOLLOW, 0, error);
  return name && ::fstat(name.get(), &status) == 0 && S_ISLNK(status.st_mode);
}

std::error_code LinuxFileWatch::add(const FileDescriptor& what, unsigned mask, std::size_t end,
                                    const std::string& name) {
  // By the opened thing, wherever its path leads by now.
  const std::string path = "/proc/self/fd/" + std::to_string(what.get());
  const int number = ::inotify_add_watch(_notices.get(), path.c_str(), mask);
  if (number < 0) return lastSystemError();
  _watched.push_back({number, end, name});
  return {};
}

std::unique_ptr<FileWatch> LinuxFileWatching::watch(const std::string& path,
                                                    std::error_code& error) {
  FileDescriptor notices(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  error = notices ? std::error_code() : lastSystemError();
  if (!notices) return nullptr;
  return std::make_unique<LinuxFileWatch>(std::move(notices), path, _root);
}

}  // namespace tallbook
