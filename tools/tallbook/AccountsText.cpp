// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/AccountsText.h"

#include "tallbook/PropertyList.h"

#include "tools/common/FileBytes.h"
#include "tools/tallbook/JSONValue.h"

namespace tallbook::tool {
namespace {

using Kind = AccountsFileState::Kind;

bool looksLikeJSON(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string::npos && (text[first] == '{' || text[first] == '[');
}

}  // namespace

AccountsFile accountsFromText(const std::string& text, const std::string& name) {
  if (!looksLikeJSON(text)) return {accountsFileFromBytes(text), name};
  AccountsFile file{{}, name};
  file.state.kind = Kind::Malformed;
  try {
    // By way of the form on disk, so that it is held to what an accounts file is held to.
    const auto bytes = binaryPropertyList(valueFromJSON(jsonFromText(text)), &file.state.reason);
    if (bytes) return {accountsFileFromBytes(*bytes), name};
  } catch (const Failure& failure) {
    file.state.reason = failure.what();
  }
  return file;
}

AccountsFile readAccountsText(const std::string& path) {
  std::error_code error;
  const bool isGiven = path == "-";
  const std::string text = isGiven ? bytesOfStandardInput(error) : bytesOfFile(path, error);
  const std::string name = isGiven ? "standard input" : path;
  if (!error) return accountsFromText(text, name);
  AccountsFile file{{}, name};
  if (error != std::errc::no_such_file_or_directory) {
    file.state = {Kind::Unreadable, 0, error.message(), error};
  }
  return file;
}

}  // namespace tallbook::tool
