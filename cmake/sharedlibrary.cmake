# subtitle_shared_library(NAME MAP): adds the shared library NAME and the static library NAME_static, both from the
# objects NAME_objects. MAP lists the exports of the shared one; with the static one, tests reach everything else.
function(subtitle_shared_library name map)
  # The sources mark what is exported. Calls of everything else are direct.
  set_target_properties(${name}_objects PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  add_library(${name} SHARED)
  target_link_libraries(${name} PRIVATE ${name}_objects)
  add_library(subtitle::${name} ALIAS ${name})
  cmake_path(GET map PARENT_PATH folder)
  target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/${folder}>)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION}${SUBTITLE_SONAME_SUFFIX}
    SOVERSION ${PROJECT_VERSION_MAJOR}${SUBTITLE_SONAME_SUFFIX}
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/${map})
  # Bsymbolic: a host may have a function or variable of the same name, which the library must not use. A host with
  # copies of the library's variables (copy relocations) still shares them with the library, see vobsub/hostsymbol.h.
  target_link_options(${name} PRIVATE
    LINKER:--version-script=${PROJECT_SOURCE_DIR}/${map} LINKER:-Bsymbolic LINKER:--as-needed)
  subtitle_harden(${name})
  if(NOT SUBTITLE_SANITIZE)
    target_link_options(${name} PRIVATE LINKER:--no-undefined)
  endif()

  add_library(${name}_static STATIC)
  target_link_libraries(${name}_static PUBLIC ${name}_objects)
endfunction()
