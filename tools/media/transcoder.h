#pragma once

#include "commandline/console.h"
#include "commandline/options.h"
#include "commandline/report.h"
#include "media/boundedqueue.h"
#include "media/framefeeder.h"
#include "media/mediaoutput.h"
#include "subtitles/subtitlelibrary.h"

#include <exception>
#include <functional>

class FrameBurner;
class FrameConverter;

/** Burns a subtitle file into a video file: one thread decodes, one burns, the caller's thread encodes and writes. */
class Transcoder
{
public:
    Transcoder(const Options &options, const SubtitleLibrary &library, Console &console);

    void Run();

private:
    using Queue = BoundedQueue<MediaItem>;

    void RunStages(MediaItem &&first, FrameFeeder &feeder, FrameConverter &converter, FrameBurner &burner);
    void Guard(const std::function<void()> &stage);
    void Decode(FrameFeeder &feeder);
    void Burn(FrameConverter &converter, FrameBurner &burner);
    void Encode(const FrameFeeder &feeder);
    void WritePackets();
    bool Failed();
    void Report();
    VideoTraits TraitsOf(AVFrame &first, const Orientation &turn) const;
    void WarnOfRareProfile();
    void WarnOfLostHdr(const HdrMetadata &metadata);
    void SayWhatChanges(const AVFrame &first, const Orientation &turn);

    const Options &m_options;
    const SubtitleLibrary &m_library;
    Console &m_console;
    MediaInput m_input;
    MediaOutput m_output;
    VideoEncoder m_encoder;
    PacketPtr m_pPacket = NewPacket();
    Queue m_decoded;
    Queue m_burnt;
    std::mutex m_failureMutex;
    std::exception_ptr m_pFailure;
    BurnCounts m_counts; ///< of the frames that were burnt
};
