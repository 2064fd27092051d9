#include "media/transcoder.h"

#include "commandline/failure.h"
#include "commandline/interrupt.h"
#include "media/frameburner.h"
#include "media/frameconverter.h"

#include <thread>

namespace
{

// Two or three frames with audio packets between them. Longer queues only make the decoder use more memory.
const size_t QueueItems = 6;

} // namespace

Transcoder::Transcoder(const Options &options, const SubtitleLibrary &library, Console &console) :
    m_options(options),
    m_library(library),
    m_console(console),
    m_input(options.strInput),
    m_output(options),
    m_encoder(m_output.Container(), options.encoder, options.OutputName()),
    m_decoded(QueueItems),
    m_burnt(QueueItems),
    m_counts(options.listSubtitles)
{
}

VideoTraits Transcoder::TraitsOf(AVFrame &first, const Orientation &turn) const
{
    VideoTraits traits;
    traits.timeBase = m_input.Video().time_base;
    traits.frameRate = m_input.FrameRate();
    traits.sampleAspectRatio = turn.ShownAspect(m_input.SampleAspectRatio(&first));
    traits.fieldOrder = m_input.Video().codecpar->field_order;
    // Many files with fields are marked progressive; trust the frame.
    if (traits.fieldOrder <= AV_FIELD_PROGRESSIVE && FrameFieldOrder(first) != AV_FIELD_UNKNOWN)
        traits.fieldOrder = FrameFieldOrder(first);
    traits.turn = turn;
    traits.hdr = HdrMetadata::Of(m_input.Video(), first);
    if (turn.IsTransposed())
        traits.fieldOrder = AV_FIELD_PROGRESSIVE;
    return traits;
}

void Transcoder::Run()
{
    PendingFile::RefuseSame(m_options.strOutput, m_options.strInput);
    for (const Subtitle &subtitle : m_options.listSubtitles)
        PendingFile::RefuseSame(m_options.strOutput, subtitle.source.strFile);
    PendingFile::CheckReplacing(m_options.strOutput, m_options.replacing);
    const std::vector<bool> listCopied = m_output.ChooseStreams(m_input, m_options, m_console);
    for (unsigned n = 0; n < listCopied.size(); ++n) {
        if (!listCopied[n] && static_cast<int>(n) != m_input.Video().index)
            m_input.Ignore(static_cast<int>(n));
    }
    FrameFeeder feeder(m_input, m_options.range, listCopied, m_options.bKeepTimes || m_output.HasBroadcastClock());
    MediaItem first;
    if (!feeder.Next(first))
        throw Failure(ExitCode::Input, m_options.strInput,
                      m_options.range.nStart || m_options.range.nDuration ? "there is no picture in the wanted part"
                                                                          : "no picture could be decoded");
    AVFrame &frame = *first.pFrame;
    const Orientation orientation = Orientation::Of(m_input.Video(), frame);
    const Orientation turn = m_output.KeepsOrientation() ? Orientation(nullptr) : orientation;
    SubtitleStack subtitles(m_library, orientation.ShownWidth(frame.width, frame.height),
                            orientation.ShownHeight(frame.width, frame.height), m_options, m_console);
    subtitles.SetPixelAspect(orientation.ShownAspect(m_input.SampleAspectRatio(&frame)));
    m_encoder.Open(frame, TraitsOf(frame, turn));
    SayWhatChanges(frame, turn);
    m_output.AddChapters(m_input.Format(), feeder.Shift(), m_options.range.nDuration.value_or(0));
    m_output.Begin(m_input, listCopied, m_encoder, frame);
    FrameConverter converter(frame.width, frame.height, m_encoder.Format(), turn);
    FrameBurner burner(subtitles, turn.Alike() ? orientation : Orientation(nullptr));
    RunStages(std::move(first), feeder, converter, burner);
    m_output.Finish();
    Report();
}

void Transcoder::SayWhatChanges(const AVFrame &first, const Orientation &turn)
{
    if (!turn.Alike())
        m_console.Note(m_options.OutputName() +
                       ": the pictures are turned upright, which this container cannot have players do");
    WarnOfLostMatrix(m_console, m_options.OutputName(), turn);
    const auto format = static_cast<AVPixelFormat>(first.format);
    if (HasAlpha(format) && format != AV_PIX_FMT_PAL8 && !HasAlpha(m_encoder.Format()))
        m_console.Warn(m_options.OutputName(),
                       std::string("the transparency is lost, ") + m_encoder.Context().codec->name + " has none");
    if (!m_encoder.WritesHdr())
        WarnOfLostHdr(HdrMetadata::Of(m_input.Video(), first));
    if (m_options.encoder.strCodec.empty() && m_options.encoder.strPixelFormat.empty())
        WarnOfRareProfile();
}

void Transcoder::WarnOfLostHdr(const HdrMetadata &metadata)
{
    const bool bDisplay = metadata.HasDisplay() && !m_output.KeepsMasteringDisplay();
    const bool bLight = metadata.HasLight() && !m_output.KeepsLightLevels();
    if (!bDisplay && !bLight)
        return;
    const std::string strLost = bDisplay && bLight ? "mastering display and light levels"
                                : bDisplay         ? "mastering display"
                                                   : "light levels";
    m_console.Warn(m_options.OutputName(), "the HDR metadata (" + strLost + ") is lost, neither this container nor " +
                                               m_encoder.Context().codec->name + " can hold it");
}

void Transcoder::WarnOfRareProfile()
{
    const AVPixFmtDescriptor &format = *av_pix_fmt_desc_get(m_encoder.Format());
    const bool bSubsampled = format.log2_chroma_w == 1 && format.log2_chroma_h == 1;
    if (m_encoder.Context().codec_id != AV_CODEC_ID_H264 || format.nb_components < 3 ||
        (bSubsampled && format.comp[0].depth == 8))
        return;
    const char *pProfile = bSubsampled ? "10" : format.log2_chroma_w == 1 ? "4:2:2" : "4:4:4";
    m_console.Warn(m_options.OutputName(), std::string("the video is of the H.264 profile High ") + pProfile +
                                               ", which many players do not show; --compatible makes 8-bit 4:2:0");
}

void Transcoder::RunStages(MediaItem &&first, FrameFeeder &feeder, FrameConverter &converter, FrameBurner &burner)
{
    m_decoded.Push(std::move(first));
    std::thread decoding([&] { Guard([&] { Decode(feeder); }); });
    std::thread burning([&] { Guard([&] { Burn(converter, burner); }); });
    Guard([&] { Encode(feeder); });
    decoding.join();
    burning.join();
    if (m_pFailure)
        std::rethrow_exception(m_pFailure);
}

/** Runs a stage. Its failure stops all stages; the first one is kept for RunStages(). */
void Transcoder::Guard(const std::function<void()> &stage)
{
    try {
        stage();
        return;
    } catch (...) {
        const std::lock_guard<std::mutex> lock(m_failureMutex);
        if (!m_pFailure)
            m_pFailure = std::current_exception();
    }
    m_decoded.Close();
    m_burnt.Close();
}

bool Transcoder::Failed()
{
    const std::lock_guard<std::mutex> lock(m_failureMutex);
    return m_pFailure != nullptr;
}

void Transcoder::Decode(FrameFeeder &feeder)
{
    MediaItem item;
    while (feeder.Next(item) && m_decoded.Push(std::move(item)))
        Interrupt::Check();
    m_decoded.Close();
}

void Transcoder::Burn(FrameConverter &converter, FrameBurner &burner)
{
    while (std::optional<MediaItem> item = m_decoded.Pop()) {
        Interrupt::Check();
        if (item->pFrame) {
            converter.Convert(item->pFrame);
            burner.Burn(item->pFrame, item->nMilliseconds);
            m_counts.Add(burner.Dues());
        }
        if (!m_burnt.Push(std::move(*item)))
            break;
    }
    m_burnt.Close();
}

void Transcoder::Encode(const FrameFeeder &feeder)
{
    const int64_t nTotal = feeder.Expected();
    int64_t nBegin = AV_NOPTS_VALUE;
    int64_t nFrames = 0;
    while (std::optional<MediaItem> item = m_burnt.Pop()) {
        Interrupt::Check();
        if (item->pPacket) {
            m_output.WriteOther(*item->pPacket);
            continue;
        }
        const int64_t nTime = av_rescale_q(item->pFrame->pts, m_input.Video().time_base, Microseconds);
        nBegin = nBegin == AV_NOPTS_VALUE ? nTime : nBegin;
        m_encoder.Send(std::move(item->pFrame));
        WritePackets();
        m_console.Progress(++nFrames, nTime - nBegin, nTotal);
    }
    // The output is discarded after a failure of another stage, so do not flush the encoder.
    if (Failed())
        return;
    m_encoder.Send(nullptr);
    WritePackets();
}

void Transcoder::WritePackets()
{
    while (m_encoder.Receive(*m_pPacket)) {
        Interrupt::Check();
        m_output.WriteVideo(*m_pPacket, m_encoder.TimeBase());
    }
}

void Transcoder::Report()
{
    WarnOfDamage(m_console, m_options.strInput, m_input.Damaged());
    WarnOfEarlyEnd(m_console, m_options.strInput, m_input.End(), m_input.MissingTime());
    ReportFrames(m_console, m_options.OutputName(), m_counts);
}
