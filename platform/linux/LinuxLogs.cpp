#include "platform/linux/LinuxLogs.h"

// The journal would otherwise be told this file's lines as the origin of every message.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <array>
#include <string>
#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.h"

namespace tallbook {
namespace {

constexpr const char* kJournalSocket = "/run/systemd/journal/socket";

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

class JournalLog final : public SystemLog {
 public:
  bool hasListener() const override { return true; }
  void write(std::string_view subsystem, std::string_view category,
             std::string_view line) override {
    std::array<std::string, 4> fields = {
        "MESSAGE=" + std::string(line), "PRIORITY=" + std::to_string(LOG_NOTICE),
        "SUBSYSTEM=" + std::string(subsystem), "CATEGORY=" + std::string(category)};
    std::array<iovec, fields.size()> parts{};
    for (std::size_t i = 0; i < fields.size(); ++i) parts[i] = {fields[i].data(), fields[i].size()};
    if (sd_journal_sendv(parts.data(), parts.size()) < 0) writeToStandardError(std::string(line));
  }
};

class SilentLog final : public SystemLog {
 public:
  bool hasListener() const override { return false; }
  void write(std::string_view, std::string_view, std::string_view) override {}
};

}  // namespace

std::unique_ptr<SystemLog> makeSystemLog(LinuxPlatformOptions::LogSink sink) {
  using LogSink = LinuxPlatformOptions::LogSink;
  if (sink == LogSink::Nowhere) return std::make_unique<SilentLog>();
  // Without its socket the journal's library drops messages without a word.
  const bool journal =
      sink == LogSink::JournalElseStandardError && ::access(kJournalSocket, W_OK) == 0;
  if (journal) return std::make_unique<JournalLog>();
  return std::make_unique<StandardErrorLog>();
}

void StandardErrorConsoleLog::write(std::string_view line) {
  writeToStandardError(std::string(line));
}

}  // namespace tallbook
