// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/tallbook/PartialCommandLine.h"

#include <algorithm>
#include <cstddef>

namespace tallbook::tool {
namespace {

class Reader {
 public:
  explicit Reader(const CLI::App& app) : _app(app) {}

  void take(const std::string& word) {
    if (_awaitsValue) {
      give(_awaitsValue, word);
    } else if (!_isPositionalFromHereOn && word == "--") {
      _isPositionalFromHereOn = true;
    } else if (looksLikeOption(word)) {
      const std::size_t end = word.find('=');
      const CLI::Option* const option = optionNamed(word.substr(0, end));
      if (!option || option->get_items_expected_max() == 0) return;
      _awaitsValue = option;
      if (end != word.npos) give(option, word.substr(end + 1));
    } else if (!_line.command) {
      _line.command = commandNamed(word);
      _isLost = !_line.command;
    } else {
      if (const CLI::Option* const argument = nextPositional()) give(argument, word);
      ++_positionals;
    }
  }

  PartialCommandLine takeUnfinished(const std::string& word) {
    _line.word = word;
    if (_isLost) return std::move(_line);
    if (_awaitsValue) {
      _line.argument = _awaitsValue;
    } else if (looksLikeOption(word) && word.find('=') != word.npos) {
      const std::size_t value = word.find('=') + 1;
      _line.argument = optionNamed(word.substr(0, value - 1));
      _line.before = word.substr(0, value);
      _line.word = word.substr(value);
    } else if (looksLikeOption(word) || (word == "-" && !_isPositionalFromHereOn)) {
      _line.isOption = true;
    } else if (!_line.command) {
      _line.isCommand = true;
    } else {
      _line.argument = nextPositional();
    }
    return std::move(_line);
  }

 private:
  /// A dash alone and a negative number are values.
  bool looksLikeOption(const std::string& word) const {
    return !_isPositionalFromHereOn && word.size() > 1 && word[0] == '-' &&
           (word[1] < '0' || word[1] > '9');
  }
  const CLI::Option* optionNamed(const std::string& name) const {
    const CLI::Option* const own =
        _line.command ? _line.command->get_option_no_throw(name) : nullptr;
    return own ? own : _app.get_option_no_throw(name);
  }
  const CLI::App* commandNamed(const std::string& name) const {
    const auto isNamed = [&](const CLI::App* each) { return each->get_name() == name; };
    const auto found = _app.get_subcommands(isNamed);
    return found.empty() ? nullptr : found.front();
  }
  const CLI::Option* nextPositional() const {
    const auto isPositional = [](const CLI::Option* each) { return each->get_positional(); };
    const auto all = _line.command->get_options(isPositional);
    return _positionals < all.size() ? all[_positionals] : nullptr;
  }
  void give(const CLI::Option* argument, const std::string& value) {
    _line.given.emplace_back(argument, value);
    _awaitsValue = nullptr;
  }

  const CLI::App& _app;
  PartialCommandLine _line;
  const CLI::Option* _awaitsValue = nullptr;
  bool _isPositionalFromHereOn = false;
  bool _isLost = false;  ///< where a command should stand is something else
  std::size_t _positionals = 0;
};

}  // namespace

std::string PartialCommandLine::valueOf(std::string_view name) const {
  const auto isNamed = [&](const auto& each) { return each.first->get_name() == name; };
  const auto found = std::ranges::find_if(given, isNamed);
  return found == given.end() ? "" : found->second;
}

PartialCommandLine readPartially(const CLI::App& app, const std::vector<std::string>& words) {
  Reader reader(app);
  for (std::size_t at = 1; at + 1 < words.size(); ++at) reader.take(words[at]);
  return reader.takeUnfinished(words.size() > 1 ? words.back() : "");
}

std::string nameOfValue(const CLI::Option& argument) {
  if (argument.get_positional()) return argument.get_name();
  // What the value is checked by comes behind a colon.
  const std::string type = argument.get_type_name();
  return type.substr(0, type.find(':'));
}

}  // namespace tallbook::tool
