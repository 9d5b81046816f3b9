// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 The Tallbook authors

#pragma once

#include <string>
#include <vector>

#include "tools/common/FittedText.h"
#include "tools/common/Output.h"

namespace tallbook::tool {

/// A table on standard output, as wide as its content; only in the last column are very long texts
/// whole. Where a terminal is narrower, its columns give way in the order of `Fit`. Characters that
/// would command a terminal are spelled out.
class Table {
 public:
  struct Column {
    std::string title;
    Fit fit = Fit::Whole;
  };

  explicit Table(const std::vector<Column>& columns);

  /// Appends a row with one text a column. In a tree, a row is deeper than the one that it stands
  /// below, and the first column shows that.
  void add(std::vector<std::string> cells, std::size_t depth = 0, Style style = Style::Plain);
  /// Prints nothing where there is no row.
  void print();

 private:
  struct Line {
    std::vector<std::string> cells;
    std::size_t depth = 0;
    Style style = Style::Plain;
    std::string below = {};  ///< what the tree shows where the line goes on
  };

  void drawTree();
  std::vector<std::size_t> widths() const;
  void fit(std::vector<std::size_t>& widths, std::size_t available);
  static void print(const Line& line, const std::vector<std::size_t>& widths);

  std::vector<Fit> _fits;
  std::vector<Line> _lines;  ///< the titles first
};

}  // namespace tallbook::tool
