// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "platform/linux/LinuxLogs.h"

#include <array>
#include <string>
#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/Systemd.h"

namespace tallbook {
namespace {

// One system call a line, so that the lines of several processes do not mix.
void writeToStandardError(std::string line) {
  line += '\n';
  (void)writeAll(STDERR_FILENO, line);
}

class StandardErrorLog final : public SystemLog {
 public:
  bool hasListener() const override { return true; }
  void write(std::string_view, std::string_view, std::string_view line) override {
    writeToStandardError(std::string(line));
  }
};

/// The journal; standard error where there is none, and for what it does not take.
class JournalElseStandardErrorLog final : public SystemLog {
 public:
  bool hasListener() const override { return true; }
  void write(std::string_view subsystem, std::string_view category,
             std::string_view line) override {
    if (!isInJournal(subsystem, category, line)) writeToStandardError(std::string(line));
  }

 private:
  static bool isInJournal(std::string_view subsystem, std::string_view category,
                          std::string_view line) {
    // Found out with the first line: most programs that may write one never do.
    static const Systemd* const journal = isThere() ? Systemd::library() : nullptr;
    if (!journal) return false;
    std::array<std::string, 4> fields = {
        "MESSAGE=" + std::string(line), "PRIORITY=" + std::to_string(LOG_NOTICE),
        "SUBSYSTEM=" + std::string(subsystem), "CATEGORY=" + std::string(category)};
    std::array<iovec, fields.size()> parts{};
    for (std::size_t i = 0; i < fields.size(); ++i) parts[i] = {fields[i].data(), fields[i].size()};
    return journal->journal_sendv(parts.data(), parts.size()) >= 0;
  }

  // Without its socket the journal's library drops messages without a word.
  static bool isThere() { return ::access("/run/systemd/journal/socket", W_OK) == 0; }
};

class SilentLog final : public SystemLog {
 public:
  bool hasListener() const override { return false; }
  void write(std::string_view, std::string_view, std::string_view) override {}
};

}  // namespace

std::unique_ptr<SystemLog> makeSystemLog(LinuxPlatformOptions::LogSink sink) {
  using LogSink = LinuxPlatformOptions::LogSink;
  switch (sink) {
    case LogSink::Nowhere:
      return std::make_unique<SilentLog>();
    case LogSink::StandardError:
      return std::make_unique<StandardErrorLog>();
    case LogSink::JournalElseStandardError:
      break;
  }
  return std::make_unique<JournalElseStandardErrorLog>();
}

void StandardErrorConsoleLog::write(std::string_view line) {
  if (_isSilent) return;
  writeToStandardError(std::string(line));
}

}  // namespace tallbook
