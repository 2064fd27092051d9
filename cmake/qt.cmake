# Finds Qt 5 or 6. The target subtitle_qtprivate has its private headers, as system headers, since they cause some of
# the warnings that are enabled here.
find_package(Qt5 5.15 QUIET COMPONENTS Core Gui FontDatabaseSupport)
set(qt_default 6)
if(Qt5_FOUND)
  set(qt_default 5)
endif()
set(SUBTITLE_QT ${qt_default} CACHE STRING "Generation of Qt to build with, 5 or 6; 5 where it is present")
set_property(CACHE SUBTITLE_QT PROPERTY STRINGS 5 6)

# Another soname with Qt 6: the C++ classes use Qt's types, and a handle of one library must not be passed to the other.
set(SUBTITLE_SONAME_SUFFIX "")
if(SUBTITLE_QT EQUAL 6)
  set(SUBTITLE_SONAME_SUFFIX -qt6)
endif()

find_package(Freetype REQUIRED)
add_library(subtitle_qtprivate INTERFACE)
target_link_libraries(subtitle_qtprivate INTERFACE Freetype::Freetype)
if(SUBTITLE_QT EQUAL 5)
  find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui FontDatabaseSupport)
  target_include_directories(subtitle_qtprivate SYSTEM INTERFACE ${Qt5Gui_PRIVATE_INCLUDE_DIRS})
  target_link_libraries(subtitle_qtprivate INTERFACE Qt5::FontDatabaseSupportPrivate)
elseif(SUBTITLE_QT EQUAL 6)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui)
  if(NOT TARGET Qt6::GuiPrivate) # part of Core and Gui before 6.10
    find_package(Qt6 REQUIRED COMPONENTS CorePrivate GuiPrivate)
  endif()
  target_link_libraries(subtitle_qtprivate INTERFACE Qt6::CorePrivate Qt6::GuiPrivate)
else()
  message(FATAL_ERROR "SUBTITLE_QT is 5 or 6, and not ${SUBTITLE_QT}")
endif()
