#pragma once

#include <string>

namespace tallbook::tool {

/// Whether somebody at a terminal can be asked.
bool isSomebodyThere();
/// Asks a question on standard error; true for an answer that begins with a "y".
bool isAgreed(const std::string& question);

}  // namespace tallbook::tool
