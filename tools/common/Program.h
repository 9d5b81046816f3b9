// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <functional>

namespace tallbook::tool {

/// Runs a program in the user's language and characters and gives its exit code: that of `answer`,
/// or `failed`, after a message, where memory runs out, the result cannot be printed, or anything
/// else that nobody foresaw is thrown. A file that grows past the process's limit is an error of
/// the write like any other, and not a signal.
int runProgram(const std::function<int()>& answer, int failed);

/// Makes the process's characters UTF-8 where the locale's are others: the accounts file's texts
/// are, and so is all that is printed.
void useUTF8();

/// Changes what `runProgram` gives for a failure from here on: what the program was to do is done,
/// and can only not be told.
void failFromHereOnWith(int code);

}  // namespace tallbook::tool
