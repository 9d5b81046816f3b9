// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Property lists in the binary encoding, as damaged and as strange as bytes can make them.

#include <cstring>

#include "fuzz/Mutation.h"
#include "fuzz/ObjectTable.h"
#include "fuzz/PropertyListChecks.h"
#include "fuzz/Target.h"

namespace tallbook::fuzz {
namespace {

/// Changes one object, or which objects there are.
void mutate(ObjectTable& table, Random& random, std::size_t most) {
  std::vector<std::string>& objects = table.objects;
  if (objects.empty()) objects.emplace_back(1, '\0');
  const std::size_t changed = below(random, objects.size());
  const std::string& other = objects[below(random, objects.size())];
  switch (below(random, 8)) {
    case 0:
      objects.push_back(other);
      break;
    case 1:
      objects[changed] = other;
      break;
    case 2:
      std::swap(objects[changed], objects.back());
      break;
    case 3:
      table.top = changed;
      break;
    default:
      objects[changed] = mutated(objects[changed], std::min(most, objects[changed].size() + 16));
  }
}

}  // namespace

void tryInput(std::string_view input) {
  checkPropertyList(input);
}

}  // namespace tallbook::fuzz

/// Most changes of a file leave its trailer wrong, and it is refused before anything else is looked
/// at. So most of the time its objects are changed, and the trailer with them.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  using namespace tallbook::fuzz;
  Random random(seed);
  auto table = ObjectTable::of({reinterpret_cast<const char*>(data), size});
  if (!table || below(random, 8) == 0) return LLVMFuzzerMutate(data, size, most);
  mutate(*table, random, most);
  const std::string file = table->file();
  if (file.size() > most) return LLVMFuzzerMutate(data, size, most);
  std::memcpy(data, file.data(), file.size());
  return file.size();
}
