#include "platform/propertylist/KeyedHash.h"

#include <bit>
#include <cstring>
#include <random>

namespace tallbook {
namespace {

struct Key {
  std::uint64_t low;
  std::uint64_t high;
};

std::uint64_t randomWord(std::random_device& random) {
  return std::uint64_t{random()} << 32 | random();
}

const Key& processKey() {
  static const Key key = [] {
    std::random_device random;
    return Key{randomWord(random), randomWord(random)};
  }();
  return key;
}

class SipState {
 public:
  explicit SipState(const Key& key) noexcept
      : _a(key.low ^ 0x736f6d6570736575),
        _b(key.high ^ 0x646f72616e646f6d),
        _c(key.low ^ 0x6c7967656e657261),
        _d(key.high ^ 0x7465646279746573) {}

  void add(std::uint64_t word) noexcept {
    _d ^= word;
    round();
    _a ^= word;
  }
  std::uint64_t finish() noexcept {
    _c ^= 0xff;
    round();
    round();
    round();
    return _a ^ _b ^ _c ^ _d;
  }

 private:
  void round() noexcept {
    _a += _b;
    _b = std::rotl(_b, 13) ^ _a;
    _a = std::rotl(_a, 32);
    _c += _d;
    _d = std::rotl(_d, 16) ^ _c;
    _a += _d;
    _d = std::rotl(_d, 21) ^ _a;
    _c += _b;
    _b = std::rotl(_b, 17) ^ _c;
    _c = std::rotl(_c, 32);
  }

  std::uint64_t _a, _b, _c, _d;
};

}  // namespace

std::uint64_t keyedHash(std::string_view bytes) noexcept {
  SipState state(processKey());
  std::uint64_t word = 0;
  std::size_t at = 0;
  for (; at + sizeof word <= bytes.size(); at += sizeof word) {
    std::memcpy(&word, bytes.data() + at, sizeof word);
    state.add(word);
  }
  word = 0;
  if (at < bytes.size()) std::memcpy(&word, bytes.data() + at, bytes.size() - at);
  state.add(word ^ std::uint64_t{bytes.size()} << 56);
  return state.finish();
}

std::uint64_t keyedHash(std::uint64_t bits, std::uint64_t kind) noexcept {
  SipState state(processKey());
  state.add(bits);
  state.add(kind);
  return state.finish();
}

}  // namespace tallbook
