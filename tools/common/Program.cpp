#include "tools/common/Program.h"

#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "tools/common/Output.h"

namespace tallbook::tool {
namespace {

// A process is one program.
int codeOfFailure = 0;

}  // namespace

void failFromHereOnWith(int code) {
  codeOfFailure = code;
}

int runProgram(const std::function<int()>& answer, int failed) {
  codeOfFailure = failed;
  // Nothing else of the locale: numbers are as files have them, and every category takes time.
  std::setlocale(LC_CTYPE, "");
  std::setlocale(LC_MESSAGES, "");
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    const int code = answer();
    // Tables are printed through C's stream, which remembers a failure.
    if (std::cout.flush() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
    fail("the result could not be printed", codeOfFailure);
  } catch (const std::bad_alloc&) {
    // Without note, which may need memory itself.
    std::cerr << kProgram << ": there is not enough memory; run it again where there is more\n";
  } catch (const std::exception& error) {
    fail(std::string("ended early: ") + error.what(), codeOfFailure);
  }
  return codeOfFailure;
}

}  // namespace tallbook::tool
