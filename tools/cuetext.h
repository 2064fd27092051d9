#pragma once

#include "ffmpegptr.h"

#include <string_view>

/** Whether CueText() can tell what a codec's packets say. */
bool HoldsText(AVCodecID id);

/** What a packet shows as plain text, lines separated by line feeds, without markup and blank lines around. */
std::string CueText(AVCodecID id, const AVPacket &packet);

/** The same of an event of a script: its fields, as Matroska stores them, and the text. */
std::string AssEventText(std::string_view strEvent);

/** Lines of SubRip without markup and blank lines around. */
std::string PlainText(const std::string &strText);

/** Lines as they are, without blank lines around. */
std::string PlainLines(const std::string &strText);

/** The text of an event of a script without overrides, escapes and drawings. */
std::string PlainScriptText(const std::string &strText);

/** The same without blocks in braces alone. */
std::string WithoutBlocks(const std::string &strText);

/** Whether a packet shows anything; those that only end an earlier one do not. */
bool ShowsAnything(AVCodecID id, const AVPacket &packet);
