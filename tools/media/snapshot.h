#pragma once

#include "commandline/console.h"
#include "commandline/options.h"
#include "commandline/pendingfile.h"
#include "media/mediainput.h"
#include "subtitles/subtitlelibrary.h"

/** Writes single pictures of a video, upright and with their subtitles, as PNG files. */
class Snapshot
{
public:
    Snapshot(const Options &options, const SubtitleLibrary &library, Console &console);

    void Run();

private:
    FramePtr FrameAt(int64_t nTime);
    /** @param strName  the file's final name, for errors. */
    static void Save(const AVFrame &picture, const PendingFile &file, const std::string &strName);
    std::string FileName(size_t nIndex) const;

    const Options &m_options;
    const SubtitleLibrary &m_library;
    Console &m_console;
    MediaInput m_input;
};
