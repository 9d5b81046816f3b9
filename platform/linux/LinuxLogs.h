// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <memory>

#include "platform/Logs.h"
#include "platform/linux/LinuxPlatform.h"

namespace tallbook {

/// The library log's way out: the journal, standard error, or nowhere.
std::unique_ptr<SystemLog> makeSystemLog(LinuxPlatformOptions::LogSink sink);

/// Lines on the process's standard error, each written at once; nothing where it is silent.
class StandardErrorConsoleLog final : public ConsoleLog {
 public:
  explicit StandardErrorConsoleLog(bool isSilent) : _isSilent(isSilent) {}

  void write(std::string_view line) override;

 private:
  bool _isSilent;
};

}  // namespace tallbook
