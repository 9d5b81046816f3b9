// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <cstddef>
#include <string>

namespace tallbook::bench {

/// A device tree in a folder of its own with an accounts file of `accountsFileTree`, installed as
/// the process's platform with nobody listening to the log. The folder goes at the end.
class BenchDevice {
 public:
  BenchDevice(std::size_t records, std::size_t childrenPerRecord);
  ~BenchDevice();
  BenchDevice(const BenchDevice&) = delete;
  BenchDevice& operator=(const BenchDevice&) = delete;

  /// The accounts file's bytes, as they were at the beginning.
  const std::string& bytes() const { return _bytes; }

 private:
  std::string _root;
  std::string _bytes;
};

/// The file's bytes. Throws std::runtime_error when it cannot be read.
std::string readBytes(const std::string& path);
/// Throws std::runtime_error when the file cannot be written whole.
void writeBytes(const std::string& path, const std::string& bytes);
/// `accountsFileTree` in the binary encoding.
std::string accountsFileBytes(std::size_t records, std::size_t childrenPerRecord);

}  // namespace tallbook::bench
