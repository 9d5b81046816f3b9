// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/Program.h"

#include <clocale>
#include <csignal>
#include <exception>
#include <iostream>
// Only the system tells which characters a locale has.
#include <langinfo.h>
#include <new>
#include <string>
#include <string_view>

#include "tools/common/Output.h"

namespace tallbook::tool {
namespace {

// A process is one program.
int codeOfFailure = 0;

}  // namespace

void useUTF8() {
  if (std::string_view(::nl_langinfo(CODESET)) != "UTF-8") std::setlocale(LC_CTYPE, "C.UTF-8");
}

void failFromHereOnWith(int code) {
  codeOfFailure = code;
}

int runProgram(const std::function<int()>& answer, int failed) {
  codeOfFailure = failed;
  // Nothing else of the locale: numbers are as files have them, and every category takes time.
  std::setlocale(LC_CTYPE, "");
  const char* const language = std::setlocale(LC_MESSAGES, "");
  // The system says its errors in the process's characters, which for English ones any are.
  if (language && std::string_view(language) != "C") useUTF8();
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    const int code = answer();
    if (std::cout.flush()) return code;
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
