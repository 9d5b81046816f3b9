// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Property lists in the XML encoding.

#include <cstring>
#include <vector>

#include "fuzz/Mutation.h"
#include "fuzz/PropertyListChecks.h"
#include "fuzz/Target.h"

namespace tallbook::fuzz {
namespace {

/// Where the tags begin, and where the text ends that follows the last one.
std::vector<std::size_t> tagsOf(const std::string& text) {
  std::vector<std::size_t> tags;
  for (std::size_t at = text.find('<'); at != text.npos; at = text.find('<', at + 1)) {
    tags.push_back(at);
  }
  tags.push_back(text.size());
  return tags;
}

/// Moves, copies, removes and nests stretches from tag to tag, and changes the text between two.
std::string withOtherTags(const std::string& text, Random& random, std::size_t most) {
  const std::vector<std::size_t> tags = tagsOf(text);
  const auto anyTag = [&] { return below(random, tags.size()); };
  const std::size_t first = anyTag();
  // An element and what it holds are few tags, or nearly all.
  const std::size_t last = std::min(first + below(random, 9), tags.size() - 1);
  const std::size_t begin = tags[first];
  const std::size_t end = tags[last];
  const std::string stretch = text.substr(begin, end - begin);
  switch (below(random, 6)) {
    case 0:
      return text.substr(0, begin) + text.substr(end);
    case 1:
      return text.substr(0, begin) + stretch + text.substr(begin);
    case 2: {
      const std::size_t to = tags[anyTag()];
      return text.substr(0, to) + stretch + text.substr(to);
    }
    case 3: {
      std::string opened, closed;
      for (std::size_t depth = below(random, 520); depth > 0; --depth) {
        opened += "<array>";
        closed += "</array>";
      }
      return text.substr(0, begin) + opened + stretch + closed + text.substr(end);
    }
    default: {
      const std::size_t content = text.find('>', begin);
      if (content == text.npos || content >= end) return mutated(text, most);
      const std::size_t stop = text.find('<', content);
      const std::size_t textEnd = stop == text.npos ? text.size() : stop;
      const std::string old = text.substr(content + 1, textEnd - content - 1);
      return text.substr(0, content + 1) + mutated(old, std::min(most, old.size() + 16)) +
             text.substr(textEnd);
    }
  }
}

}  // namespace

void tryInput(std::string_view input) {
  checkPropertyList(input);
}

}  // namespace tallbook::fuzz

/// Changes elements as wholes most of the time, so that the text stays well-formed.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  using namespace tallbook::fuzz;
  Random random(seed);
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (below(random, 8) == 0) return LLVMFuzzerMutate(data, size, most);
  const std::string changed = withOtherTags(text, random, most);
  if (changed.size() > most) return LLVMFuzzerMutate(data, size, most);
  std::memcpy(data, changed.data(), changed.size());
  return changed.size();
}
