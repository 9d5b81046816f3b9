#include "tools/common/Table.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <new>
#include <numeric>
#include <utility>

#include "tools/common/Program.h"
#include "tools/common/SmartColumns.h"

namespace tallbook::tool {
namespace {

// What a row of a tree is moved to the right by, below its parent.
constexpr std::size_t kStep = 2;

// What is left of a text, however far to the right its row is.
constexpr std::size_t kLeastText = 8;
// How columns give way, and the least that they are narrowed to.
constexpr std::pair<Fit, std::size_t> kNarrowing[] = {
    {Fit::Middle, 13}, {Fit::Break, 16}, {Fit::Cut, kLeastText}};

template <class Made>
Made* required(Made* made) {
  if (!made) throw std::bad_alloc();
  return made;
}

}  // namespace

Table::Row Table::add(std::vector<std::string> cells, Row parent, Style style) {
  // Every row is as wide as the widest one, up to the last column.
  for (std::size_t column = 0; column + 1 < cells.size(); ++column) {
    cells[column] = shortened(cells[column]);
  }
  return &_lines.emplace_back(
      Line{std::move(cells), parent, style, parent ? parent->depth + 1 : 0});
}

bool Table::fit(std::size_t width) {
  std::vector<std::size_t> widths;
  widths.reserve(_columns.size());
  for (const Column& column : _columns) widths.push_back(widthOf(column.title));
  const std::vector<std::size_t> ofTitles = widths;
  const auto indent = [](const Line& line, std::size_t column) {
    return column == 0 ? kStep * line.depth : 0;
  };
  for (const Line& line : _lines) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      widths[column] = std::max(widths[column], indent(line, column) + widthOf(line.cells[column]));
    }
  }
  std::size_t total = std::accumulate(widths.begin(), widths.end(), widths.size() - 1);
  if (total <= width) return false;
  for (const auto& [fit, leastOfFit] : kNarrowing) {
    while (total > width) {
      std::size_t* widest = nullptr;
      for (std::size_t column = 0; column < widths.size(); ++column) {
        const std::size_t least = std::max(ofTitles[column], leastOfFit);
        if (_columns[column].fit != fit || widths[column] <= least) continue;
        if (!widest || widths[column] > *widest) widest = &widths[column];
      }
      if (!widest) break;
      --*widest;
      --total;
    }
  }
  for (Line& line : _lines) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      std::string& cell = line.cells[column];
      const std::size_t moved = indent(line, column);
      cell =
          fitted(cell, _columns[column].fit, std::max(widths[column], moved + kLeastText) - moved);
    }
  }
  return true;
}

void Table::print() {
  const SmartColumns& library = SmartColumns::library();
  useUTF8();
  const std::unique_ptr<libscols_table, decltype(library.unref_table)> table(
      required(library.new_table()), library.unref_table);
  library.table_enable_colors(table.get(), isColourTerminal());
  const bool isFitted = isTerminal() && fit(library.table_get_termwidth(table.get()));
  for (std::size_t index = 0; index < _columns.size(); ++index) {
    const bool isBroken = isFitted && _columns[index].fit == Fit::Break;
    const int flags =
        (index == 0 && _shape == Shape::Tree ? SCOLS_FL_TREE : 0) | (isBroken ? SCOLS_FL_WRAP : 0);
    libscols_column* const column =
        required(library.table_new_column(table.get(), _columns[index].title, 0, flags));
    if (!isBroken) continue;
    library.column_set_safechars(column, "\n");
    library.column_set_wrapfunc(column, library.wrapnl_chunksize, library.wrapnl_nextchunk,
                                nullptr);
  }
  for (Line& line : _lines) {
    libscols_line* const parent = line.parent ? line.parent->printed : nullptr;
    line.printed = required(library.table_new_line(table.get(), parent));
    for (std::size_t column = 0; column < line.cells.size(); ++column) {
      if (library.line_set_data(line.printed, column, line.cells[column].c_str()) != 0) {
        throw std::bad_alloc();
      }
    }
    if (line.style != Style::Plain) library.line_set_color(line.printed, colourOf(line.style));
  }
  // The table writes through C's streams.
  std::cout.flush();
  library.print_table(table.get());
  std::fflush(stdout);
}

}  // namespace tallbook::tool
