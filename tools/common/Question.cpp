#include "tools/common/Question.h"

#include <iostream>
// Only the system tells what standard input is.
#include <unistd.h>

#include "tools/common/Output.h"

namespace tallbook::tool {

bool isSomebodyThere() {
  return ::isatty(STDIN_FILENO) == 1;
}

bool isAgreed(const std::string& question) {
  std::cerr << kProgram << ": " << printable(question) << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer.starts_with('y') || answer.starts_with('Y');
}

}  // namespace tallbook::tool
