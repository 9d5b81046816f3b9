// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>

namespace tallbook::tool {

/// Standard output of a command that goes on until somebody stops it, by ctrl-C, by SIGTERM, or by
/// reading no more of what it prints. None of that ends the process by itself any more. A signal
/// that whoever started the command had it ignore, as nohup does, stays ignored.
class LiveOutput {
 public:
  /// Where nothing is going to be printed, nobody need read it either.
  explicit LiveOutput(bool isPrintedTo);
  ~LiveOutput();
  LiveOutput(const LiveOutput&) = delete;
  LiveOutput& operator=(const LiveOutput&) = delete;

  /// Waits until the descriptor is readable, or `milliseconds` are over; no limit where they are
  /// negative. False when the command is to end.
  bool waitFor(int descriptor, int milliseconds);
  /// Prints the line whole and at once. False when the command is to end. Throws Failure where it
  /// cannot be printed for another reason.
  bool print(const std::string& line);

 private:
  int _printedTo;  ///< -1 for none
  int _stop;       ///< readable when the command is to end
};

}  // namespace tallbook::tool
