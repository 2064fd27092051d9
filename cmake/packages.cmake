# Debian packages, which `cpack` makes in a build folder. scripts/make-packages.sh configures one and checks the
# packages.
set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME libsubtitle)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # otherwise put before the packages' own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/compressdocuments.cmake)

set(release 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${release})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "libsubtitle maintainers <maintainers@users.noreply.example>")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Adds a `shlibs` file to packages with a library.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# Packages that depend on the library's package need exactly the version that was built with them.
set(library libsubtitle${PROJECT_VERSION_MAJOR})
set(same_library "${library} (= ${PROJECT_VERSION}-${release})")
configure_file(cmake/debian/changelog.in debian/changelog.Debian @ONLY)

# Defines the package of a component, with the documents that Debian requires in each package. Other installations do
# not have these.
macro(subtitle_package name component section multi_arch)
  string(TOUPPER ${name} package)
  string(TOUPPER ${component} part)
  set(documents ${component}-documents)
  string(TOUPPER ${documents} texts)
  install(FILES ${PROJECT_BINARY_DIR}/debian/changelog.Debian cmake/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${documents} EXCLUDE_FROM_ALL)
  install(FILES CHANGELOG.md RENAME changelog
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${documents} EXCLUDE_FROM_ALL)
  install(FILES cmake/debian/overrides RENAME ${name}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${documents} EXCLUDE_FROM_ALL)
  list(APPEND CPACK_COMPONENTS_ALL ${component} ${documents})
  set(CPACK_COMPONENT_${part}_GROUP ${name})
  set(CPACK_COMPONENT_${texts}_GROUP ${name})
  set(CPACK_DEBIAN_${package}_PACKAGE_NAME ${name})
  # CPack 3.25 has no variable for Multi-Arch. It copies the section verbatim, so the field is appended there.
  set(CPACK_DEBIAN_${package}_PACKAGE_SECTION "${section}\nMulti-Arch: ${multi_arch}")
  file(STRINGS cmake/debian/${component}.description lines)
  list(JOIN lines "\n" CPACK_DEBIAN_${package}_DESCRIPTION)
endmacro()

# Debian packages use a trigger for ldconfig. CPack adds maintainer scripts that call it unless it is given scripts; it
# only warns that these paths do not exist.
set(no_ldconfig
  ${PROJECT_SOURCE_DIR}/cmake/debian/none/postinst
  ${PROJECT_SOURCE_DIR}/cmake/debian/none/postrm)
set(ldconfig_trigger ${PROJECT_SOURCE_DIR}/cmake/debian/triggers ${no_ldconfig})
# Where dpkg-shlibdeps finds the libraries that the other packages are linked with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

subtitle_package(${library} runtime libs same)
set(CPACK_DEBIAN_${package}_PACKAGE_RECOMMENDS fonts-dejavu-core)
set(CPACK_DEBIAN_${package}_PACKAGE_CONTROL_EXTRA ${ldconfig_trigger})

subtitle_package(libsubtitle-dev development libdevel same)
set(CPACK_DEBIAN_${package}_PACKAGE_DEPENDS "${same_library}")

set(frame_library libsubtitleframe${PROJECT_VERSION_MAJOR})
set(same_frame_library "${frame_library} (= ${PROJECT_VERSION}-${release})")
subtitle_package(${frame_library} frames libs same)
set(CPACK_DEBIAN_${package}_PACKAGE_DEPENDS "${same_library}")
set(CPACK_DEBIAN_${package}_PACKAGE_CONTROL_EXTRA ${ldconfig_trigger})

subtitle_package(libsubtitleframe-dev framesdevelopment libdevel same)
set(CPACK_DEBIAN_${package}_PACKAGE_DEPENDS "${same_frame_library}, \
libsubtitle-dev (= ${PROJECT_VERSION}-${release})")

# The program loads the libraries with dlopen(), so dpkg-shlibdeps does not find these dependencies.
if(SUBTITLE_TOOLS)
  subtitle_package(subburn subburn video foreign)
  set(CPACK_DEBIAN_${package}_PACKAGE_DEPENDS "${same_library}, ${frame_library} (= ${PROJECT_VERSION}-${release})")
  set(CPACK_DEBIAN_${package}_PACKAGE_RECOMMENDS fonts-dejavu-core)
endif()

# CPack warns that the plugin has no soname. That is right, since programs load it and do not link with it.
if(TARGET gstsubtitleburn)
  subtitle_package(gstreamer1.0-subtitle gstreamer libs same)
  set(CPACK_DEBIAN_${package}_PACKAGE_DEPENDS "${same_library}, ${frame_library} (= ${PROJECT_VERSION}-${release})")
  set(CPACK_DEBIAN_${package}_PACKAGE_RECOMMENDS fonts-dejavu-core)
endif()

# Not Multi-Arch: same, since the plugin's folder is the same on all architectures.
if(TARGET frei0rsubtitleburn)
  subtitle_package(frei0r-subtitle frei0r video no)
  set(CPACK_DEBIAN_${package}_PACKAGE_DEPENDS "${same_library}, ${same_frame_library}")
  set(CPACK_DEBIAN_${package}_PACKAGE_CONTROL_EXTRA ${no_ldconfig})
  set(CPACK_DEBIAN_${package}_PACKAGE_RECOMMENDS fonts-dejavu-core)
endif()

include(CPack)
