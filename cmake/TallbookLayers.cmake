# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

# tallbook_add_layer(name folder): the object library tallbook_<name> of the folder, whose
# CMakeLists.txt lists its sources. A layer may use the layers added before it.
set(TALLBOOK_LAYERS "")

macro(tallbook_add_layer name folder)
  add_library(tallbook_${name} OBJECT)
  target_include_directories(
    tallbook_${name} PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(tallbook_${name} PRIVATE tallbook_warnings)
  # Nobody replaces the library's functions by others of the same name: calls within it may be
  # inlined.
  target_compile_options(tallbook_${name} PRIVATE -fno-semantic-interposition)
  list(APPEND TALLBOOK_LAYERS ${name})
  add_subdirectory(${folder})
endmacro()

# tallbook_layers_up_to(name result): the object libraries of the layer and of all below it.
function(tallbook_layers_up_to name result)
  set(targets "")
  foreach(layer IN LISTS TALLBOOK_LAYERS)
    list(APPEND targets tallbook_${layer})
    if(layer STREQUAL name)
      break()
    endif()
  endforeach()
  set(${result} ${targets} PARENT_SCOPE)
endfunction()
