#include "platform/Logs.h"

namespace tallbook {

std::string onOneLine(std::string_view text) {
  constexpr std::string_view kHexadecimal = "0123456789abcdef";
  std::string line;
  line.reserve(text.size());
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 || byte == 0x7f) {
      line += {'\\', 'x', kHexadecimal[byte >> 4], kHexadecimal[byte & 15]};
    } else {
      line += character;
    }
  }
  return line;
}

}  // namespace tallbook
