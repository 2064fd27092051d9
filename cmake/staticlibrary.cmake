# The static libraries libsubtitle.a and libsubtitleframe.a, of the same objects as the shared ones. SUBTITLE_STATIC
# installs them, too; the tests install them from their own build, as component `static`.

# What static linking needs, for find_package(subtitle COMPONENTS static).
set(static_qt_components Core Gui)
if(SUBTITLE_QT EQUAL 5)
  list(APPEND static_qt_components FontDatabaseSupport)
endif()
list(JOIN static_qt_components " " static_qt_components_text)
list(JOIN ffmpeg_modules " " ffmpeg_modules_text)
list(TRANSFORM static_qt_components PREPEND Qt${SUBTITLE_QT}:: OUTPUT_VARIABLE static_qt_targets)
# The same for pkg-config. These are names of shared libraries: with Requires.private, pkg-config --static would ask for
# everything that FFmpeg and Qt are made of as well, and --cflags for Qt even where hosts link with the shared library.
list(TRANSFORM static_qt_components PREPEND -lQt${SUBTITLE_QT} OUTPUT_VARIABLE static_qt_flags)
list(REVERSE static_qt_flags) # archives before what they need
if(SUBTITLE_QT EQUAL 5)
  list(APPEND static_qt_flags -lfontconfig)
endif()
list(APPEND static_qt_flags -lfreetype)
list(JOIN static_qt_flags " " static_qt_flags)
list(JOIN FFMPEG_LDFLAGS " " static_ffmpeg_flags)

if(NOT SUBTITLE_STATIC AND NOT SUBTITLE_TESTS)
  return()
endif()
set(static_everywhere EXCLUDE_FROM_ALL)
if(SUBTITLE_STATIC)
  set(static_everywhere)
endif()

# Under the name that the installed package gives to it in a host's project.
pkg_check_modules(SUBTITLE_FFMPEG REQUIRED IMPORTED_TARGET ${ffmpeg_modules})

# subtitle_static_library(NAME LIBRARY...): NAME.a, whose hosts link with each LIBRARY, and the package's part for it.
function(subtitle_static_library name)
  add_library(${name}_archive STATIC $<TARGET_OBJECTS:${name}_objects>)
  add_library(subtitle::${name}_static ALIAS ${name}_archive)
  target_link_libraries(${name}_archive PRIVATE ${ARGN})
  target_include_directories(${name}_archive INTERFACE
    $<BUILD_INTERFACE:$<TARGET_PROPERTY:${name},INTERFACE_INCLUDE_DIRECTORIES>>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(${name}_archive PROPERTIES
    OUTPUT_NAME ${name}
    EXPORT_NAME ${name}_static
    LINKER_LANGUAGE CXX
    ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/static)
  install(TARGETS ${name}_archive EXPORT ${name}StaticTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT static ${static_everywhere})
  install(EXPORT ${name}StaticTargets NAMESPACE subtitle::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/${name} COMPONENT static ${static_everywhere})
endfunction()

subtitle_static_library(subtitle ${static_qt_targets} Freetype::Freetype PkgConfig::SUBTITLE_FFMPEG hwy::hwy ${CMAKE_DL_LIBS})
subtitle_static_library(subtitleframe PkgConfig::SUBTITLE_FFMPEG hwy::hwy)
target_link_libraries(subtitleframe_archive PUBLIC subtitle_archive)
