// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#include "tools/common/Table.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <utility>
// Only the system tells how wide a terminal is.
#include <sys/ioctl.h>
#include <unistd.h>

#include "tools/common/Program.h"

namespace tallbook::tool {
namespace {

// How columns give way, and the least that they are narrowed to.
constexpr std::pair<Fit, std::size_t> kNarrowing[] = {
    {Fit::Middle, 13}, {Fit::Break, 16}, {Fit::Cut, 8}};

std::size_t widthOfTerminal() {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace

Table::Table(const std::vector<Column>& columns) {
  Line& titles = _lines.emplace_back();
  for (const auto& [title, fit] : columns) {
    titles.cells.push_back(title);
    _fits.push_back(fit);
  }
}

void Table::add(std::vector<std::string> cells, std::size_t depth, Style style) {
  // Every row is as wide as the widest one, up to the last column.
  for (std::string& cell : cells) cell = printable(&cell == &cells.back() ? cell : shortened(cell));
  _lines.push_back({std::move(cells), depth, style});
}

void Table::drawTree() {
  std::vector<bool> isFollowed;  // for each depth, by a row below the same parent
  std::for_each(_lines.rbegin(), _lines.rend(), [&](Line& line) {
    isFollowed.resize(line.depth + 1);
    if (line.depth > 0) {
      for (std::size_t depth = 1; depth < line.depth; ++depth) {
        line.below += isFollowed[depth] ? "│ " : "  ";
      }
      line.cells[0].insert(0, line.below + (isFollowed[line.depth] ? "├─" : "└─"));
      line.below += isFollowed[line.depth] ? "│ " : "  ";
    }
    isFollowed[line.depth] = true;
  });
}

std::vector<std::size_t> Table::widths() const {
  std::vector<std::size_t> widths(_fits.size());
  for (const Line& line : _lines) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      widths[column] = std::max(widths[column], widthOf(line.cells[column]));
    }
  }
  return widths;
}

void Table::fit(std::vector<std::size_t>& widths, std::size_t available) {
  std::size_t total = std::accumulate(widths.begin(), widths.end(), widths.size() - 1);
  for (const auto& [fit, leastOfFit] : kNarrowing) {
    while (total > available) {
      std::size_t* widest = nullptr;
      for (std::size_t column = 0; column < widths.size(); ++column) {
        const std::size_t least = std::max(widthOf(_lines.front().cells[column]), leastOfFit);
        if (_fits[column] != fit || widths[column] <= least) continue;
        if (!widest || widths[column] > *widest) widest = &widths[column];
      }
      if (!widest) break;
      --*widest;
      --total;
    }
  }
  for (Line& line : _lines) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      line.cells[column] = fitted(line.cells[column], _fits[column], widths[column]);
    }
  }
}

void Table::print() {
  if (_lines.size() == 1) return;
  useUTF8();
  drawTree();
  std::vector<std::size_t> present = widths();
  if (isTerminal()) fit(present, widthOfTerminal());
  for (const Line& line : _lines) print(line, present);
}

void Table::print(const Line& line, const std::vector<std::size_t>& widths) {
  std::vector<std::string_view> left(line.cells.begin(), line.cells.end());
  for (bool isMore = true; isMore;) {
    isMore = false;
    std::string text;
    for (std::size_t column = 0; column < left.size(); ++column) {
      const std::string_view piece = left[column].substr(0, left[column].find('\n'));
      left[column].remove_prefix(std::min(left[column].size(), piece.size() + 1));
      if (!left[column].empty()) isMore = true;
      text += piece;
      if (column + 1 < left.size()) text.append(widths[column] + 1 - widthOf(piece), ' ');
    }
    std::cout << styled(line.style, text) << '\n';
    if (left[0].empty()) left[0] = line.below;
  }
}

}  // namespace tallbook::tool
