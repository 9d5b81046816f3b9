// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// The floor of a save that survives a loss of power: as many bytes as the accounts file has, in
// memory before the clock starts, and then nothing but putting them in place of a file.
//
//   peer-replace-file change FOLDER ...    prints "program NANOSECONDS"

#include "bench/peers/WholeFile.h"

int main(int count, char** words) {
  using namespace tallbook::peers;
  if (count < 3 || chdir(words[2]) != 0) fail("no folder");
  const std::string_view bytes = readFile("../records.plist");
  const std::int64_t start = nanosecondsNow();
  if (!replaceFile(".", "replaced", bytes)) fail("cannot replace the file");
  std::printf("program %" PRId64 "\n", nanosecondsNow() - start);
}
