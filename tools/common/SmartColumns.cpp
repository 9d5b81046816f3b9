#include "tools/common/SmartColumns.h"

#include <dlfcn.h>
#include <stdexcept>

namespace tallbook::tool {
namespace {

void requireFound(const void* found) {
  if (!found) throw std::runtime_error(std::string("no table can be printed: ") + ::dlerror());
}

template <class Function>
void find(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(::dlsym(library, name));
  requireFound(reinterpret_cast<const void*>(function));
}

SmartColumns loaded() {
  void* const library = ::dlopen("libsmartcols.so.1", RTLD_LAZY | RTLD_LOCAL);
  requireFound(library);
  SmartColumns columns;
  find(library, "scols_new_table", columns.new_table);
  find(library, "scols_unref_table", columns.unref_table);
  find(library, "scols_table_enable_colors", columns.table_enable_colors);
  find(library, "scols_table_new_column", columns.table_new_column);
  find(library, "scols_table_new_line", columns.table_new_line);
  find(library, "scols_line_set_data", columns.line_set_data);
  find(library, "scols_line_set_color", columns.line_set_color);
  find(library, "scols_table_get_termwidth", columns.table_get_termwidth);
  find(library, "scols_column_set_safechars", columns.column_set_safechars);
  find(library, "scols_column_set_wrapfunc", columns.column_set_wrapfunc);
  find(library, "scols_wrapnl_chunksize", columns.wrapnl_chunksize);
  find(library, "scols_wrapnl_nextchunk", columns.wrapnl_nextchunk);
  find(library, "scols_print_table", columns.print_table);
  return columns;
}

}  // namespace

const SmartColumns& SmartColumns::library() {
  static const SmartColumns library = loaded();
  return library;
}

}  // namespace tallbook::tool
