# Headers that most files include are parsed once. Every file still includes what it uses, because
# scripts/lint reads the files without these (CMAKE_DISABLE_PRECOMPILE_HEADERS=ON).
#
# Three sets, each compiled once and shared: `core` for libraries without a window, `windows` for those with
# one, and `tests`.
set(standard_headers
    <algorithm>
    <array>
    <chrono>
    <cstdint>
    <filesystem>
    <functional>
    <map>
    <memory>
    <optional>
    <string>
    <string_view>
    <utility>
    <vector>)

function(fernhollow_define_headers set)
  cmake_parse_arguments(arg "" "" "HEADERS;LIBRARIES" ${ARGN})
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/precompiled/${set}.cpp CONTENT "")
  add_library(fernhollow_headers_${set} OBJECT ${PROJECT_BINARY_DIR}/precompiled/${set}.cpp)
  set_target_properties(fernhollow_headers_${set} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  target_link_libraries(fernhollow_headers_${set} PRIVATE fernhollow_flags ${arg_LIBRARIES})
  target_precompile_headers(fernhollow_headers_${set} PRIVATE ${standard_headers} ${arg_HEADERS})
endfunction()

fernhollow_define_headers(
  core
  HEADERS
  <QtCore/QtCore>
  <qcorotask.h>
  <nlohmann/json.hpp>
  LIBRARIES
  Qt6::Core
  QCoro6::Core
  nlohmann_json::nlohmann_json)
fernhollow_define_headers(
  windows
  HEADERS
  <QtWidgets/QtWidgets>
  <qcorotask.h>
  LIBRARIES
  Qt6::Widgets
  QCoro6::Core)

# fernhollow_precompile(SET TARGET...): compiles the targets with the set's headers.
function(fernhollow_precompile set)
  foreach(target ${ARGN})
    target_precompile_headers(${target} REUSE_FROM fernhollow_headers_${set})
  endforeach()
endfunction()
