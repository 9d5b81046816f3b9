#include "tools/common/Program.h"

#include <clocale>
#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "tools/common/Output.h"

namespace tallbook::tool {

int runProgram(const std::function<int()>& answer, int failed) {
  std::setlocale(LC_ALL, "");
  // Numbers as files have them.
  std::setlocale(LC_NUMERIC, "C");
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    const int code = answer();
    if (std::cout.flush()) return code;
    note("the result could not be printed");
  } catch (const std::bad_alloc&) {
    // Without note, which may need memory itself.
    std::cerr << kProgram << ": there is not enough memory; run it again where there is more\n";
  } catch (const std::exception& error) {
    note(std::string("ended early: ") + error.what());
  }
  return failed;
}

}  // namespace tallbook::tool
