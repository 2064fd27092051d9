# libsubtitle. Its sources are compiled once, for libsubtitle.so and for a static library, with which the tests reach
# what the shared one does not export.
add_library(subtitle_objects OBJECT
  api/libsubtitle.cpp
  parsers/assparser.cpp
  parsers/colorpicture.cpp
  parsers/cueindex.cpp
  parsers/ffparser.cpp
  parsers/fieldreader.cpp
  parsers/inputformats.cpp
  parsers/iparser.cpp
  parsers/localfile.cpp
  parsers/overlapindex.cpp
  parsers/packetpictures.cpp
  parsers/parsermanager.cpp
  parsers/picturedecoder.cpp
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
  render/takenrows.cpp
  render/textbitmap.cpp
  render/textfitter.cpp
  render/textfont.cpp
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
# For files of 2 GiB and more on 32-bit machines.
target_compile_definitions(subtitle_objects PRIVATE _FILE_OFFSET_BITS=64)
target_link_libraries(subtitle_objects
  PUBLIC Qt${SUBTITLE_QT}::Core Qt${SUBTITLE_QT}::Gui PkgConfig::FFMPEG
  PRIVATE subtitle_qtprivate hwy::hwy)
subtitle_harden(subtitle_objects)

subtitle_shared_library(subtitle api/libsubtitle.map)
# Qt does not survive being unloaded, so a host's dlclose() must not unload the library.
target_link_options(subtitle PRIVATE LINKER:-z,nodelete)
