#include "parsers/inputformats.h"

#include <algorithm>
#include <array>

extern "C" {
#include <libavformat/avformat.h>
}

namespace
{

/**
 * Demuxers that open other files or URLs: a file naming itself recurses until the stack overflows, a live playlist
 * never ends, some open sockets, and opening the other file may block.
 */
constexpr std::array<std::string_view, 11> Followers = {"avisynth", "concat", "dash", "hls",         "imf",   "rtp",
                                                        "rtsp",     "sap",    "sdp",  "vapoursynth", "vobsub"};

/** Text formats that FFmpeg reads completely on opening, which takes fifteen times the file's size in memory. */
constexpr std::array<std::string_view, 19> ReadAtOnce = {
    "aqtitle", "ass", "jacosub", "lrc", "mcc",       "microdvd",   "mpl2",        "mpsub",   "pjs",   "realtext",
    "sami",    "scc", "srt",     "stl", "subviewer", "subviewer1", "tedcaptions", "vplayer", "webvtt"};

/** All other formats that may have subtitle streams. */
constexpr std::array<std::string_view, 16> Containers = {"avi",    "dvbsub",        "dvbtxt",
                                                         "flv",    "kux",           "live_flv",
                                                         "mpeg",   "matroska,webm", "mov,mp4,m4a,3gp,3g2,mj2",
                                                         "mpegts", "mxf",           "nut",
                                                         "ogg",    "sup",           "webm_dash_manifest",
                                                         "wtv"};

template <typename List>
bool IsIn(const List &list, std::string_view name)
{
    return std::find(list.begin(), list.end(), name) != list.end();
}

} // namespace

std::string ReadableFormats(std::int64_t size)
{
    std::string names;
    void *position = nullptr;
    while (const AVInputFormat *format = av_demuxer_iterate(&position)) {
        if (!IsIn(Followers, format->name) && (size <= MaxTextSize || !IsIn(ReadAtOnce, format->name)))
            names.append(names.empty() ? "" : ",").append(format->name);
    }
    return names;
}

bool MayHoldSubtitles(std::string_view format)
{
    return IsIn(ReadAtOnce, format) || IsIn(Containers, format);
}
