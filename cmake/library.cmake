# The library itself. Its sources are compiled once: into libsubtitle.so, and into a static library through which the
# tests reach what the shared one hides.
add_library(subtitle_objects OBJECT
  api/libsubtitle.cpp
  parsers/assparser.cpp
  parsers/cueindex.cpp
  parsers/ffparser.cpp
  parsers/fieldreader.cpp
  parsers/inputformats.cpp
  parsers/iparser.cpp
  parsers/localfile.cpp
  parsers/overlapindex.cpp
  parsers/parsermanager.cpp
  parsers/srtparser.cpp
  render/blendkernel.cpp
  render/compositor.cpp
  render/coveragedisc.cpp
  render/coverageglyphs.cpp
  render/glyphoutline.cpp
  render/glyphpainter.cpp
  render/glyphshape.cpp
  render/idledispatcher.cpp
  render/messagesilencer.cpp
  render/naturalpicture.cpp
  render/naturaltext.cpp
  render/naturalview.cpp
  render/polygonfiller.cpp
  render/qtruntime.cpp
  render/qtuse.cpp
  render/recordedtext.cpp
  render/textbitmap.cpp
  render/textfitter.cpp
  render/textink.cpp
  render/textlayout.cpp
  render/textpainter.cpp
  render/vectorkernel.cpp
  render/videosubtitle.cpp
  textio/localecodec.cpp
  textio/regularfile.cpp
  textio/textreader.cpp
  vobsub/bitreader.cpp
  vobsub/decoderview.cpp
  vobsub/hostsymbol.cpp
  vobsub/psstream.cpp
  vobsub/rleoutput.cpp
  vobsub/rowscaler.cpp
  vobsub/saveddecoder.cpp
  vobsub/subfilereader.cpp
  vobsub/subparser.cpp
  vobsub/subtitledecoder.cpp
  vobsub/subtitlewrite.cpp
  vobsub/visiblepicture.cpp)
target_include_directories(subtitle_objects PUBLIC ${PROJECT_SOURCE_DIR})
target_compile_definitions(subtitle_objects PUBLIC QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
# Files may be longer than a 32-bit offset reaches.
target_compile_definitions(subtitle_objects PRIVATE _FILE_OFFSET_BITS=64)
target_link_libraries(subtitle_objects
  PUBLIC Qt${SUBTITLE_QT}::Core Qt${SUBTITLE_QT}::Gui PkgConfig::FFMPEG
  PRIVATE subtitle_qtprivate hwy::hwy)
subtitle_harden(subtitle_objects)

subtitle_shared_library(subtitle api/libsubtitle.map)
# Qt does not survive being unloaded, so a host's dlclose() must leave the library where it is.
target_link_options(subtitle PRIVATE LINKER:-z,nodelete)
