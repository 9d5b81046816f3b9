#pragma once

#include <deque>
#include <string>
#include <vector>

#include "tools/common/FittedText.h"
#include "tools/common/Output.h"

struct libscols_line;

namespace tallbook::tool {

/// A table on standard output, as wide as its content; only in the last column are very long texts
/// whole. Where a terminal is narrower, its columns give way in the order of `Fit`. Characters that
/// would command a terminal are shown, not sent.
class Table {
 public:
  enum class Shape { Flat, Tree };
  struct Column {
    const char* title;
    Fit fit = Fit::Whole;
  };
  struct Line {
    std::vector<std::string> cells;
    Line* parent;
    Style style;
    std::size_t depth;
    libscols_line* printed = nullptr;
  };
  /// Names a row as a parent of later ones; valid as long as the table.
  using Row = Line*;

  /// In a tree the first column shows which row stands below which.
  explicit Table(std::vector<Column> columns, Shape shape = Shape::Flat)
      : _columns(std::move(columns)), _shape(shape) {}

  /// Appends a row with one text a column.
  Row add(std::vector<std::string> cells, Row parent = nullptr, Style style = Style::Plain);
  void print();

 private:
  /// Changes the texts where they are together wider than `width`; whether they were.
  bool fit(std::size_t width);

  std::vector<Column> _columns;
  Shape _shape;
  std::deque<Line> _lines;
};

}  // namespace tallbook::tool
