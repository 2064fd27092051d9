#pragma once

#include "boundedqueue.h"
#include "console.h"
#include "framefeeder.h"
#include "mediaoutput.h"
#include "options.h"
#include "report.h"
#include "subtitlelibrary.h"

#include <exception>
#include <functional>

class FrameBurner;
class FrameConverter;

/** Burns a subtitle file into a video file: one thread reads and decodes, one burns, one encodes and writes. */
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
    FrameCounts m_counts; ///< of the frames that were burnt
};
