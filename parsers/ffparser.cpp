#include "parsers/ffparser.h"

#include "parsers/exportedlist.h"
#include "parsers/inputformats.h"
#include "parsers/localfile.h"
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

/** A file of its own, or, when the name is an address of another protocol, one that FFmpeg opens. */
class Input
{
public:
    /** @return false when it cannot be opened. */
    bool Open(const QByteArray &name)
    {
        if (LocalFile::IsNamedBy(name.constData()))
            m_file.emplace(name.constData());
        const std::string formats = ReadableFormats(m_file ? m_file->Size() : 0);
        AVFormatContext *input = avformat_alloc_context();
        AVDictionary *options = nullptr;
        bool isOpen = input && av_dict_set(&options, "format_whitelist", formats.c_str(), 0) >= 0;
        // A file is open already, and its demuxer is to open no other.
        if (m_file)
            isOpen = isOpen && av_dict_set(&options, "protocol_whitelist", "", 0) >= 0 && m_file->Attach(*input);
        if (!isOpen)
            avformat_free_context(input);
        else // which frees the context when it fails
            isOpen = avformat_open_input(&input, name.constData(), nullptr, &options) >= 0;
        av_dict_free(&options);
        m_pInput.reset(isOpen ? input : nullptr);
        return isOpen;
    }

    /** @return false when nothing is known about any stream. */
    bool FindStreams()
    {
        if (m_file)
            m_file->BeginStreams();
        return avformat_find_stream_info(m_pInput.get(), nullptr) >= 0;
    }

    /**
     * From now on the whole file is read. It is opened anew where the search for streams came to its limit, which demuxers
     * remember as the end of the file.
     * @return false when it cannot be opened any more.
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
    std::optional<LocalFile> m_file; ///< freed after its user
    InputPointer m_pInput;
};

struct FreePacket {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
using PacketPointer = std::unique_ptr<AVPacket, FreePacket>;

/** The index of the n-th subtitle stream, -1 where there is none; all others are discarded. */
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
    // The duration is not converted: it is right only where the time base is a millisecond. This is meant.
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
    // Without a track, what is left of the file changes nothing, and the end comes where the search for streams ends.
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
            held += packet->size;
        }
        av_packet_unref(packet.get());
    }
    m_index = IndexTimes(m_listItems);
    // The end of the file is reported like a failure: this is meant.
    av_log(nullptr, AV_LOG_ERROR, "(%d): av_read_frame x\n", 90);
    return 1;
}

QString FFParser::GetSubtitle(long ms)
{
    return DueText(m_listItems, m_index, ms);
}

QStringList FFParser::AllDueTexts(long ms)
{
    return m_dueTexts.At(m_listItems, ms, [](const auto &, const auto &) { return false; });
}
