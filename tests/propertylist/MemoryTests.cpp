#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>

#include "tallbook/PropertyList.h"

namespace {

std::atomic<std::size_t> askedFor = 0;

}  // namespace

// This program's memory comes from here, so that a test can count it.
void* operator new(std::size_t size) {
  askedFor += size;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace tallbook {
namespace {

using namespace std::string_literals;

std::string number(std::uint64_t value) {
  std::string bytes;
  for (int shift = 56; shift >= 0; shift -= 8) bytes += char(value >> shift & 0xff);
  return bytes;
}

// Objects and the table of their offsets, of one byte each as all references are.
std::string file(const std::string& objects, const std::string& offsets) {
  return "bplist00" + objects + offsets + std::string(6, '\0') + "\x01\x01" +
         number(offsets.size()) + number(0) + number(8 + objects.size());
}

TEST(TheBinaryReader, AsksForMemoryInProportionToTheFile) {
  constexpr std::size_t kMany = 12'000'000;
  const std::string manySize = "\xaf\x13"s + number(kMany);
  const struct {
    const char* what;
    std::string bytes;
    bool isRead;
  } rows[] = {
      {"offsets of one object", file("\x08"s, std::string(kMany, '\x08')), false},
      {"offsets, and as much between", file(std::string(kMany, '\x08'), std::string(kMany, '\x08')),
       false},
      {"references", file("\x08"s + manySize + std::string(kMany, '\0'), "\x09\x08"s), false},
      {"data", file("\x4f\x13"s + number(kMany) + std::string(kMany, 'd'), "\x08"s), true},
  };
  for (const auto& [what, bytes, isRead] : rows) {
    const std::size_t before = askedFor;
    EXPECT_EQ(propertyListFromBytes(bytes).has_value(), isRead) << what;
    EXPECT_LT(askedFor - before, 4 * bytes.size()) << what;
  }
}

}  // namespace
}  // namespace tallbook
