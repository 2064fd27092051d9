#pragma once

#include "media/ffmpegptr.h"

#include <string_view>

/** Whether CueText() can read a codec's packets. */
bool HoldsText(AVCodecID id);

/** A packet's plain text: lines separated by line feeds, without markup or blank lines at the beginning and end. */
std::string CueText(AVCodecID id, const AVPacket &packet);

/** The same for an ASS event as Matroska stores it: its fields, then the text. */
std::string AssEventText(std::string_view strEvent);

/** SubRip text without markup and without blank lines at the beginning and end. */
std::string PlainText(const std::string &strText);

/** Text with its markup, without blank lines at the beginning and end. */
std::string PlainLines(const std::string &strText);

/** The text of an ASS event without override blocks and drawings, its escapes replaced. */
std::string PlainScriptText(const std::string &strText);

/** The text of an ASS event without the blocks in braces; escapes and drawings stay. */
std::string WithoutBlocks(const std::string &strText);

/** Whether a packet shows anything; one without content only ends the cue before. */
bool ShowsAnything(AVCodecID id, const AVPacket &packet);
