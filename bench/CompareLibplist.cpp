// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// libplist's decode and encode of a property-list file, in a process of their own: prints
// "decode NANOSECONDS" or "encode NANOSECONDS" of the first call.
//
//   compare-libplist decode|encode FILE

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <plist/plist.h>
#include <string>
#include <string_view>

#include "bench/Stopwatch.h"

namespace {

plist_t decoded(const std::string& bytes) {
  plist_t tree = nullptr;
  plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &tree);
  return tree;
}

}  // namespace

int main(int count, char** words) {
  const std::string_view work = count == 3 ? words[1] : "";
  if (work != "decode" && work != "encode") {
    std::fprintf(stderr, "usage: compare-libplist decode|encode FILE\n");
    return 2;
  }
  std::ifstream file(words[2], std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  plist_t tree = nullptr;
  double taken = tallbook::bench::nanoseconds([&] { return tree = decoded(bytes); });
  bool done = tree != nullptr;
  if (done && work == "encode") {
    // Left as it is where it does not start out null.
    char* encoded = nullptr;
    std::uint32_t size = 0;
    taken = tallbook::bench::nanoseconds([&] {
      plist_to_bin(tree, &encoded, &size);
      return size;
    });
    done = encoded && size > 0;
    plist_to_bin_free(encoded);
  }
  plist_free(tree);
  if (!done) {
    std::fprintf(stderr, "compare-libplist: could not %s %s\n", words[1], words[2]);
    return 1;
  }
  std::printf("%s %.0f\n", words[1], taken);
}
