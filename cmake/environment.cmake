# Sets up the environment of tests, fuzzers, benchmarks and pictures, which is the same on every machine.
# environment/run in the build folder runs a program in it. The fonts in it are links to the machine's.
set(SUBTITLE_RUN ${PROJECT_BINARY_DIR}/environment/run)
set(fonts
  DejaVuSans.ttf DejaVuSans-Bold.ttf DejaVuSansMono.ttf DejaVuSansMono-Bold.ttf DejaVuSerif.ttf DejaVuSerif-Bold.ttf
  NotoSansCJK-Regular.ttc NotoSansCJK-Bold.ttc NotoSerifCJK-Regular.ttc NotoSerifCJK-Bold.ttc
  NotoColorEmoji.ttf Lohit-Devanagari.ttf)

file(MAKE_DIRECTORY
  ${PROJECT_BINARY_DIR}/environment/cache ${PROJECT_BINARY_DIR}/environment/fonts ${PROJECT_BINARY_DIR}/environment/home)
configure_file(cmake/environment/run environment/run COPYONLY)
# An absolute path, since fontconfig leaks memory for each relative one.
set(fonts_folder ${PROJECT_BINARY_DIR}/environment/fonts)
string(REPLACE "&" "&amp;" fonts_folder "${fonts_folder}")
string(REPLACE "<" "&lt;" fonts_folder "${fonts_folder}")
configure_file(cmake/environment/fonts.conf environment/fonts.conf @ONLY)
set(patterns)
foreach(prefix ${CMAKE_SYSTEM_PREFIX_PATH})
  list(APPEND patterns ${prefix}/share/fonts/*.ttf ${prefix}/share/fonts/*.ttc)
endforeach()
file(GLOB_RECURSE installed ${patterns})
foreach(font ${fonts})
  set(link ${PROJECT_BINARY_DIR}/environment/fonts/${font})
  if(NOT EXISTS ${link}) # missing, or a link to a font that was removed
    string(REPLACE . "\\." pattern "/${font}$")
    set(found ${installed})
    list(FILTER found INCLUDE REGEX ${pattern})
    if(found)
      list(GET found 0 file)
      file(CREATE_LINK ${file} ${link} SYMBOLIC)
    else()
      list(APPEND missing ${font})
    endif()
  endif()
endforeach()
if(missing AND (SUBTITLE_TESTS OR SUBTITLE_BENCH))
  list(JOIN missing " " missing)
  message(FATAL_ERROR "Fonts that tests and benchmarks need are not in share/fonts of any prefix of the system: ${missing}\n"
    "Debian has them in fonts-dejavu-core, fonts-noto-cjk, fonts-noto-color-emoji and fonts-lohit-deva. "
    "Without them: -DSUBTITLE_TESTS=OFF -DSUBTITLE_BENCH=OFF")
endif()
