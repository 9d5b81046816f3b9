#pragma once

#include <libsmartcols/libsmartcols.h>

namespace tallbook::tool {

/// What is called of libsmartcols, under the names that it has there. It is loaded with the first
/// table: to print a single value, loading it would be an eighth of the work.
struct SmartColumns {
  decltype(&::scols_new_table) new_table = nullptr;
  decltype(&::scols_unref_table) unref_table = nullptr;
  decltype(&::scols_table_enable_colors) table_enable_colors = nullptr;
  decltype(&::scols_table_new_column) table_new_column = nullptr;
  decltype(&::scols_table_new_line) table_new_line = nullptr;
  decltype(&::scols_line_set_data) line_set_data = nullptr;
  decltype(&::scols_line_set_color) line_set_color = nullptr;
  decltype(&::scols_table_get_termwidth) table_get_termwidth = nullptr;
  decltype(&::scols_column_set_safechars) column_set_safechars = nullptr;
  decltype(&::scols_column_set_wrapfunc) column_set_wrapfunc = nullptr;
  decltype(&::scols_wrapnl_chunksize) wrapnl_chunksize = nullptr;
  decltype(&::scols_wrapnl_nextchunk) wrapnl_nextchunk = nullptr;
  decltype(&::scols_print_table) print_table = nullptr;

  /// Throws std::runtime_error where the library is not installed.
  static const SmartColumns& library();
};

}  // namespace tallbook::tool
