# libsubtitleframe, which burns into frames in decoders' formats. Its sources are compiled once, as in library.cmake.
add_library(subtitleframe_objects OBJECT
  frames/avframereader.cpp
  frames/blendlists.cpp
  frames/chromasite.cpp
  frames/coverink.cpp
  frames/coverkernel.cpp
  frames/frameburner.cpp
  frames/framecolors.cpp
  frames/hdrcolor.cpp
  frames/inkrows.cpp
  frames/libsubtitleframe.cpp
  frames/meanbuilder.cpp
  frames/mixedink.cpp
  frames/mixkernel.cpp
  frames/mixnumbers.cpp
  frames/mixrows.cpp
  frames/naturalink.cpp
  frames/naturalmap.cpp
  frames/opaqueink.cpp
  frames/pixelformat.cpp
  frames/pixelmap.cpp
  frames/samplekernel.cpp
  frames/samplerows.cpp
  frames/vectorblend.cpp
  frames/vectorcover.cpp
  frames/vectormixkernel.cpp
  frames/vectorsamplekernel.cpp)
target_include_directories(subtitleframe_objects PUBLIC ${PROJECT_SOURCE_DIR})
target_compile_definitions(subtitleframe_objects PUBLIC QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
# The library includes Qt's headers but calls nothing of Qt. Version tagging would make it depend on Qt all the same.
target_compile_definitions(subtitleframe_objects PRIVATE QT_NO_VERSION_TAGGING)
target_link_libraries(subtitleframe_objects PUBLIC Qt${SUBTITLE_QT}::Core Qt${SUBTITLE_QT}::Gui PkgConfig::FFMPEG PRIVATE hwy::hwy)
subtitle_harden(subtitleframe_objects)

subtitle_shared_library(subtitleframe frames/libsubtitleframe.map)
target_link_libraries(subtitleframe PUBLIC subtitle)
