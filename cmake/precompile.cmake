# subtitle_precompile_tests(): with SUBTITLE_PRECOMPILE, compiles the headers that most tests include once for all tests of
# this folder and those below, which halves the time that compiling a test takes. Call it after all targets are there. Only
# a build without SUBTITLE_PRECOMPILE finds an #include that is missing.
function(subtitle_precompile_tests)
  if(NOT SUBTITLE_PRECOMPILE)
    return()
  endif()
  set(headers <algorithm> <array> <cmath> <fstream> <random> <set> <sstream> <thread> <vector> <gtest/gtest.h>)

  # One set for -fPIE, and one for -fPIC, which Qt asks for: neither can use that of the other. Tests that are compiled
  # with -pthread because of GStreamer would need a third.
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/precompile.cpp CONTENT "int main() {}\n")
  add_executable(precompiledheaders ${CMAKE_CURRENT_BINARY_DIR}/precompile.cpp)
  target_precompile_headers(precompiledheaders PRIVATE ${headers})
  target_link_libraries(precompiledheaders PRIVATE GTest::gtest)
  target_precompile_headers(subtitle_test_main PRIVATE ${headers} <QImage> <QPainter> <QString>)

  _subtitle_targets_below(${CMAKE_CURRENT_SOURCE_DIR} targets)
  foreach(target ${targets})
    get_target_property(type ${target} TYPE)
    get_target_property(libraries ${target} LINK_LIBRARIES)
    if(NOT type STREQUAL EXECUTABLE OR target STREQUAL precompiledheaders)
      continue()
    elseif(libraries MATCHES "subtitle_test_main")
      target_precompile_headers(${target} REUSE_FROM subtitle_test_main)
    elseif(libraries MATCHES "GTest::" AND NOT libraries MATCHES "Qt|GSTREAMER")
      target_precompile_headers(${target} REUSE_FROM precompiledheaders)
    endif()
  endforeach()
endfunction()

function(_subtitle_targets_below folder variable)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below ${folders})
    _subtitle_targets_below(${below} more)
    list(APPEND targets ${more})
  endforeach()
  set(${variable} ${targets} PARENT_SCOPE)
endfunction()
