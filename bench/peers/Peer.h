// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <time.h>
#include <unistd.h>

// What the programs that store the same records in different ways share: the records, the sum by
// which it shows that all of them read the same, and the words of the command line. A peer that is
// written in C is to load no C++ library for our sake, so nothing here needs one.

namespace tallbook::peers {

enum class Kind { Text, List, Integer, Boolean, Date };

struct Key {
  const char* name;
  Kind kind;
};

/// The keys of every record, the identifier aside. The list has one member, the date is in seconds
/// since 2001.
inline constexpr Key kKeys[] = {{"Type", Kind::Text},          {"Class", Kind::Text},
                                {"DisplayName", Kind::Text},   {"Enabled Dataclasses", Kind::List},
                                {"Username", Kind::Text},      {"Hostname", Kind::Text},
                                {"PortNumber", Kind::Integer}, {"SSLEnabled", Kind::Boolean},
                                {"Created", Kind::Date}};
inline constexpr const char* kIdentifier = "Identifier";
inline constexpr const char* kPort = "PortNumber";

struct Record {
  char* identifier;
  char* values[std::size(kKeys)];  ///< as texts
};

struct Change {
  const char* identifier;  ///< of the record whose port changes
  unsigned number;         ///< the place of that record, from 0 on
  int port;
};

[[noreturn]] inline void fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

/// Grows by the bytes of a key times those of its value, so that a value under another key shows.
class Checksum {
 public:
  void add(std::string_view key, std::string_view text) { _sum += bytes(key) * bytes(text); }
  void add(std::string_view key, std::int64_t number) {
    _sum += bytes(key) * static_cast<std::uint64_t>(number);
  }
  std::uint64_t sum() const { return _sum; }

 private:
  static std::uint64_t bytes(std::string_view text) {
    std::uint64_t sum = 0;
    for (const char byte : text) sum += static_cast<unsigned char>(byte);
    return sum;
  }

  std::uint64_t _sum = 0;
};

/// Calls `work` with each record of standard input: a line each, the identifier and the values in
/// the order of the keys, tabs between them.
template <class Work>
void forEachRecord(Work work) {
  char* line = nullptr;
  std::size_t size = 0;
  while (getline(&line, &size, stdin) > 0) {
    char* rest = line;
    Record record{strsep(&rest, "\t"), {}};
    for (char*& value : record.values) value = strsep(&rest, "\t\n");
    work(record);
  }
  std::free(line);
}

/// What a peer can do, each with the folder of its files as the working directory.
struct Peer {
  const char* version;                   ///< of its library
  void (*make)();                        ///< stores the records of standard input
  void (*read)(Checksum&);               ///< adds every key of every record
  void (*change)(const Change& change);  ///< changes one value and saves
};

inline std::int64_t nanosecondsNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
}

/// The main program of a peer:
///
///   version
///   make FOLDER
///   read FOLDER                     prints "checksum SUM" and "program NANOSECONDS"
///   change FOLDER IDENTIFIER NUMBER PORT
///                                   prints "program NANOSECONDS"
///
/// Nobody pays for freeing what was read: the process just ends.
inline int run(const Peer& peer, int count, char** words) {
  const std::string_view work = count > 1 ? words[1] : "";
  if (work == "version") return std::puts(peer.version) < 0;
  if (count < 3 || chdir(words[2]) != 0) fail("no folder");
  const std::int64_t start = nanosecondsNow();
  Checksum checksum;
  if (work == "make") {
    peer.make();
  } else if (work == "read") {
    peer.read(checksum);
  } else if (work == "change" && count == 6) {
    peer.change({words[3], static_cast<unsigned>(std::atoi(words[4])), std::atoi(words[5])});
  } else {
    fail("usage: version | make FOLDER | read FOLDER | change FOLDER IDENTIFIER NUMBER PORT");
  }
  const std::int64_t taken = nanosecondsNow() - start;
  if (work == "read") std::printf("checksum %" PRIu64 "\n", checksum.sum());
  std::printf("program %" PRId64 "\n", taken);
  std::fflush(stdout);
  _exit(0);
}

}  // namespace tallbook::peers
