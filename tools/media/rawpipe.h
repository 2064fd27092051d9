#pragma once

#include "commandline/console.h"
#include "commandline/options.h"
#include "media/ffmpegptr.h"
#include "subtitles/subtitlelibrary.h"

#include <vector>

/** Burns subtitles into raw RGB24 frames on their way from standard input to standard output. */
class RawPipe
{
public:
    RawPipe(const Options &options, const SubtitleLibrary &library, Console &console);

    void Run();

private:
    bool ReadFrame();
    void WriteFrame() const;

    const Options &m_options;
    const SubtitleLibrary &m_library;
    Console &m_console;
    std::vector<uint8_t> m_listPixels;
    FramePtr m_pFrame = NewFrame(); // refers to m_listPixels
};
