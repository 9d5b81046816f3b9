#include "tools/common/Table.h"

#include <cstdio>
#include <iostream>
#include <new>

#include "tools/common/SmartColumns.h"

namespace tallbook::tool {
namespace {

const char* colourOf(Style style) {
  switch (style) {
    case Style::Added:
      return "green";
    case Style::Removed:
      return "red";
    case Style::Changed:
      return "yellow";
    case Style::Plain:
      break;
  }
  return nullptr;
}

const SmartColumns& library() {
  return SmartColumns::library();
}

}  // namespace

void Table::Release::operator()(libscols_table* table) const noexcept {
  library().unref_table(table);
}

Table::Table(const std::vector<std::string>& columns, Shape shape) : _table(library().new_table()) {
  if (!_table) throw std::bad_alloc();
  library().table_enable_colors(_table.get(), isColourTerminal());
  for (std::size_t index = 0; index < columns.size(); ++index) {
    int flags = 0;
    if (index == 0 && shape == Shape::Tree) flags |= SCOLS_FL_TREE;
    if (index + 1 == columns.size()) flags |= SCOLS_FL_WRAP;
    if (!library().table_new_column(_table.get(), columns[index].c_str(), 0, flags)) {
      throw std::bad_alloc();
    }
  }
}

Table::Row Table::add(const std::vector<std::string>& cells, Row parent, Style style) {
  const Row row = library().table_new_line(_table.get(), parent);
  if (!row) throw std::bad_alloc();
  for (std::size_t column = 0; column < cells.size(); ++column) {
    // Every row is as wide as the widest one, up to the last column.
    const bool isLast = column + 1 == cells.size();
    const std::string cell = isLast ? cells[column] : shortened(cells[column]);
    if (library().line_set_data(row, column, cell.c_str()) != 0) throw std::bad_alloc();
  }
  if (const char* colour = colourOf(style)) library().line_set_color(row, colour);
  return row;
}

void Table::print() const {
  // The table writes through C's streams.
  std::cout.flush();
  library().print_table(_table.get());
  std::fflush(stdout);
}

}  // namespace tallbook::tool
