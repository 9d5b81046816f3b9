// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "fuzz/ObjectTable.h"

#include <algorithm>

#include "platform/propertylist/BinaryFormat.h"

namespace tallbook::fuzz {

using namespace binaryformat;

namespace {

std::uint64_t numberAt(std::string_view bytes, std::size_t at, std::size_t size) {
  std::uint64_t number = 0;
  for (const char byte : bytes.substr(at, size)) number = number << 8 | std::uint8_t(byte);
  return number;
}

}  // namespace

std::optional<ObjectTable> ObjectTable::of(std::string_view file) {
  if (file.size() < kMagic.size() + kTrailerSize) return std::nullopt;
  const std::size_t end = file.size() - kTrailerSize;
  const std::string_view trailer = file.substr(end);
  const std::size_t offsetSize = numberAt(trailer, kOffsetSizeAt, 1);
  const std::uint64_t begin = numberAt(trailer, kOffsetTableAt, 8);
  if (offsetSize == 0 || offsetSize > 8 || begin >= end) return std::nullopt;

  ObjectTable table;
  table.referenceSize = std::clamp<std::size_t>(numberAt(trailer, kReferenceSizeAt, 1), 1, 8);
  table.top = numberAt(trailer, kTopObjectAt, 8);
  std::vector<std::uint64_t> offsets;
  for (std::size_t at = begin; at + offsetSize <= end; at += offsetSize) {
    offsets.push_back(std::min(numberAt(file, at, offsetSize), begin));
  }
  std::vector<std::uint64_t> sorted = offsets;
  sorted.push_back(begin);
  std::ranges::sort(sorted);
  table.objects.reserve(offsets.size());
  for (const std::uint64_t offset : offsets) {
    const auto next = std::ranges::upper_bound(sorted, offset);
    table.objects.emplace_back(
        file.substr(offset, (next == sorted.end() ? begin : *next) - offset));
  }
  return table;
}

std::string ObjectTable::file(std::size_t offsetSize) const {
  std::string file(kMagic);
  std::vector<std::uint64_t> offsets;
  offsets.reserve(objects.size());
  for (const std::string& object : objects) {
    offsets.push_back(file.size());
    file += object;
  }
  const std::uint64_t begin = file.size();
  while (offsetSize < 8 && begin >> 8 * offsetSize != 0) ++offsetSize;
  for (const std::uint64_t offset : offsets) appendNumber(file, offset, offsetSize);
  file.append(kOffsetSizeAt, '\0');
  appendNumber(file, offsetSize, 1);
  appendNumber(file, referenceSize, 1);
  appendNumber(file, objects.size(), 8);
  appendNumber(file, top, 8);
  appendNumber(file, begin, 8);
  return file;
}

void appendNumber(std::string& to, std::uint64_t number, std::size_t size) {
  for (std::size_t left = size; left > 0; --left) to += char(number >> 8 * (left - 1));
}

}  // namespace tallbook::fuzz
