// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

// Writes a property list in the binary encoding, which a program decodes ten times as quickly as
// the XML that people edit.
//
//   compile-resource SOURCE COMPILED

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "tallbook/PropertyList.h"

namespace {

std::string compiled(const std::string& source) {
  std::string problem;
  if (const auto tree = tallbook::propertyListFromBytes(source, &problem)) {
    if (auto bytes = tallbook::binaryPropertyList(*tree, &problem)) return *std::move(bytes);
  }
  throw std::runtime_error(problem);
}

void compile(const char* source, const char* target) {
  std::ifstream in(source, std::ios::binary);
  in.exceptions(std::ios::badbit);
  const std::string bytes = compiled(std::string(std::istreambuf_iterator<char>(in), {}));
  std::ofstream out(target, std::ios::binary);
  if (!(out << bytes).flush()) throw std::runtime_error(std::string("cannot write ") + target);
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) {
    std::fprintf(stderr, "usage: compile-resource SOURCE COMPILED\n");
    return 2;
  }
  try {
    compile(words[1], words[2]);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s: %s\n", words[1], problem.what());
    return 1;
  }
}
