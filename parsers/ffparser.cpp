#include "parsers/ffparser.h"

#include "parsers/exportedlist.h"
#include "parsers/inputformats.h"
#include "parsers/localfile.h"
#include "parsers/packetpointer.h"
#include "parsers/wrapint.h"

#include <memory>
#include <optional>
#include <string>

extern "C" {
#include <libavformat/avformat.h>
}

EXPORT_LIST(FFSubtitleItem);

namespace
{

struct CloseInput {
    void operator()(AVFormatContext *input) const { avformat_close_input(&input); }
};
using InputPointer = std::unique_ptr<AVFormatContext, CloseInput>;

/** An open FFmpeg input. Local files are opened by us (see LocalFile), URLs of other protocols by FFmpeg. */
class Input
{
public:
    /** @return false if it cannot be opened. */
    bool Open(const QByteArray &name)
    {
        if (LocalFile::IsNamedBy(name.constData()))
            m_file.emplace(name.constData());
        const std::string formats = ReadableFormats(m_file ? m_file->Size() : 0);
        AVFormatContext *input = avformat_alloc_context();
        AVDictionary *options = nullptr;
        bool isOpen = input && av_dict_set(&options, "format_whitelist", formats.c_str(), 0) >= 0;
        // Our file is already open, and its demuxer must not open others.
        if (m_file)
            isOpen = isOpen && av_dict_set(&options, "protocol_whitelist", "", 0) >= 0 && m_file->Attach(*input);
        if (!isOpen)
            avformat_free_context(input);
        else // frees the context if it fails
            isOpen = avformat_open_input(&input, name.constData(), nullptr, &options) >= 0;
        av_dict_free(&options);
        m_pInput.reset(isOpen ? input : nullptr);
        return isOpen;
    }

    /** @return false if FFmpeg finds no information about the streams. */
    bool FindStreams()
    {
        if (m_file)
            m_file->BeginStreams();
        return avformat_find_stream_info(m_pInput.get(), nullptr) >= 0;
    }

    /**
     * Lifts the read limits of a local file. If the search for streams hit one, the file is reopened, because demuxers
     * remember the limit as the end of the file.
     * @return false if it cannot be reopened.
     */
    bool BeginPackets(const QByteArray &name, int chosen)
    {
        if (!m_file)
            return true;
        if (m_file->IsCut()) {
            m_pInput.reset();
            if (!Open(name))
                return false;
            for (unsigned i = 0; i < m_pInput->nb_streams; ++i)
                m_pInput->streams[i]->discard = static_cast<int>(i) == chosen ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        }
        m_file->BeginPackets(chosen);
        return true;
    }

    AVFormatContext &Context() { return *m_pInput; }

private:
    std::optional<LocalFile> m_file; ///< declared first: m_pInput reads it and must be destroyed before it
    InputPointer m_pInput;
};

/** The index of subtitle stream number @p track, -1 if there is none. Makes FFmpeg discard all other streams. */
int ChooseStream(const AVFormatContext &input, int track)
{
    int chosen = -1;
    int subtitle = -1;
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        AVStream &stream = *input.streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE && ++subtitle == track)
            chosen = static_cast<int>(i);
        else
            stream.discard = AVDISCARD_ALL;
    }
    return chosen;
}

FFSubtitleItem ReadCue(const AVPacket &packet, const AVRational &timeBase)
{
    FFSubtitleItem item;
    const double unit = static_cast<double>(timeBase.num) / static_cast<double>(timeBase.den);
    item.nStart = TruncateToInt(unit * static_cast<double>(packet.pts) * 1000.0);
    // Intentional: the duration is not converted, so it is right only if the time base is a millisecond.
    item.nEnd = WrapAdd(item.nStart, static_cast<int>(static_cast<quint64>(packet.duration) & 0xFFFFFFFF));
    item.strText = QString::fromUtf8(reinterpret_cast<const char *>(packet.data), packet.size);
    return item;
}

} // namespace

int FFParser::Open(const QString &path, int track)
{
    m_listItems.clear();
    m_index = {};
    m_dueTexts.Clear();
    m_pictures = {};
    m_bTrack = false;
    const QByteArray name = path.toUtf8();
    Input input;
    if (!input.Open(name)) {
        av_log(nullptr, AV_LOG_ERROR, "(%d): av_open_input_file x\n", 105);
        return 1;
    }
    if (!input.FindStreams()) {
        av_log(nullptr, AV_LOG_ERROR, "(%d): av_find_stream_info x\n", 101);
        return 1;
    }
    const int chosen = ChooseStream(input.Context(), track);
    m_bTrack = chosen >= 0;
    // Before the packets, for which the file is opened anew without knowledge of its streams.
    if (m_bTrack)
        m_pictures.Begin(input.Context(), chosen);
    // Without the track no packet matters. The read limits stay, so the loop below ends where the stream search had to.
    if (chosen >= 0 && !input.BeginPackets(name, chosen)) {
        av_log(nullptr, AV_LOG_ERROR, "(%d): av_open_input_file x\n", 105);
        return 1;
    }
    AVFormatContext &context = input.Context();
    const PacketPointer packet(av_packet_alloc());
    qint64 held = 0;
    while (packet && m_listItems.size() < MaxCues && held < MaxTextSize && av_read_frame(&context, packet.get()) == 0) {
        if (packet->stream_index == chosen) {
            m_listItems.append(ReadCue(*packet, context.streams[chosen]->time_base));
            m_pictures.Add(*packet, context.streams[chosen]->time_base);
            held += packet->size;
        }
        av_packet_unref(packet.get());
    }
    m_index = IndexTimes(m_listItems);
    m_pictures.End();
    // Intentional: the end of the file is logged like a failure.
    av_log(nullptr, AV_LOG_ERROR, "(%d): av_read_frame x\n", 90);
    return 1;
}

QString FFParser::GetSubtitle(long ms)
{
    return DueText(m_listItems, m_index, ms);
}

QStringList FFParser::AllDueTexts(long ms)
{
    if (m_pictures.HasTrack())
        return {};
    return m_dueTexts.At(m_listItems, ms, [](const auto &, const auto &) { return false; });
}

QString FFParser::AllDuePictures(long ms)
{
    return m_pictures.DueAt(ms);
}

ColorPicture FFParser::ToColorPicture(const QString &key)
{
    return m_pictures.Picture(key);
}
