# What `cmake --install` installs, by component: runtime, the library; development, what hosts are built with; frames
# and framesdevelopment, the same for libsubtitleframe; subburn, gstreamer and frei0r, the program, the element and the
# plugin, if they are built; static, see staticlibrary.cmake; documents, which Debian packages have in a form of their own.
include(CMakePackageConfigHelpers)

install(TARGETS subtitle EXPORT subtitleTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES api/libsubtitle.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(TARGETS subtitleframe EXPORT subtitleframeTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT frames NAMELINK_COMPONENT framesdevelopment
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES frames/libsubtitleframe.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT framesdevelopment)

# The decoder's headers have common names, so they are installed in a folder of their own. The build folder has the same
# layout, for projects that include the library with add_subdirectory().
set(decoder_headers vobsub/subtitledecoder.h vobsub/psstream.h)
foreach(header ${decoder_headers})
  cmake_path(GET header FILENAME name)
  configure_file(${header} include/libsubtitle/${name} COPYONLY)
endforeach()
target_include_directories(subtitle INTERFACE $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>)
install(FILES ${decoder_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/libsubtitle COMPONENT development)

# find_package(subtitle) and find_package(subtitleframe)
foreach(package subtitle subtitleframe)
  set(component development)
  if(package STREQUAL subtitleframe)
    set(component framesdevelopment)
  endif()
  set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
  configure_package_config_file(cmake/${package}Config.cmake.in cmake/${package}Config.cmake
    INSTALL_DESTINATION ${config_dir} NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/${package}ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/cmake/${package}Config.cmake ${PROJECT_BINARY_DIR}/cmake/${package}ConfigVersion.cmake
    DESTINATION ${config_dir} COMPONENT ${component})
  install(EXPORT ${package}Targets NAMESPACE subtitle:: DESTINATION ${config_dir} COMPONENT ${component})
endforeach()

# pkg-config: the prefix is relative to the .pc file, so that an installed tree may be moved. That is not possible if
# CMAKE_INSTALL_LIBDIR is an absolute path.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(pkgconfig_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  string(REGEX REPLACE "/$" "" up ${up})
  set(pkgconfig_prefix "\${pcfiledir}/${up}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  set(path "\${prefix}")
  cmake_path(APPEND path ${CMAKE_INSTALL_${dir}}) # an absolute path replaces the prefix
  set(pkgconfig_${dir} ${path})
endforeach()
configure_file(cmake/libsubtitle.pc.in libsubtitle.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libsubtitle.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
configure_file(cmake/libsubtitleframe.pc.in libsubtitleframe.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libsubtitleframe.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT framesdevelopment)

if(SUBTITLE_TOOLS)
  # Debian reserves /usr/share/zsh/site-functions for functions that are not in packages.
  set(zsh_functions site-functions)
  if(CMAKE_INSTALL_PREFIX STREQUAL /usr AND EXISTS /etc/debian_version)
    set(zsh_functions vendor-completions)
  endif()
  install(TARGETS subburn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT subburn)
  install(FILES man/subburn.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT subburn)
  install(FILES completions/subburn
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT subburn)
  install(FILES completions/_subburn DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_functions} COMPONENT subburn)
endif()

if(TARGET gstsubtitleburn)
  install(TARGETS gstsubtitleburn LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0 COMPONENT gstreamer)
endif()

# Hosts of frei0r look in /usr/lib and /usr/local/lib, and not in the architecture's folder there.
if(TARGET frei0rsubtitleburn)
  set(SUBTITLE_FREI0R_DIR lib/frei0r-1 CACHE STRING "Where the frei0r plugin is installed, below the prefix or in full")
  install(TARGETS frei0rsubtitleburn LIBRARY DESTINATION ${SUBTITLE_FREI0R_DIR} COMPONENT frei0r)
endif()

# In the same folders as in the sources, since the documents link to each other.
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
install(FILES CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
