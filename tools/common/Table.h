#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/common/Output.h"

struct libscols_line;
struct libscols_table;

namespace tallbook::tool {

/// A table on standard output, as wide as its content; only in the last column are very long texts
/// whole. Characters that would command a terminal are shown, not sent.
class Table {
 public:
  enum class Shape { Flat, Tree };
  /// Names a row as a parent of later ones; valid as long as the table.
  using Row = libscols_line*;

  /// In a tree the first column shows which row stands below which.
  explicit Table(const std::vector<std::string>& columns, Shape shape = Shape::Flat);

  /// Appends a row with one text a column.
  Row add(const std::vector<std::string>& cells, Row parent = nullptr, Style style = Style::Plain);
  void print() const;

 private:
  struct Release {
    void operator()(libscols_table* table) const noexcept;
  };

  std::unique_ptr<libscols_table, Release> _table;
};

}  // namespace tallbook::tool
