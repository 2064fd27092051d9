#include "parsers/ffparser.h"

#include "parsers/cuelookup.h"
#include "parsers/wrapint.h"

#include <memory>

extern "C" {
#include <libavformat/avformat.h>
}

// The list of cues belongs to the library's interface: these stay in it whatever the compiler inlines.
template void QList<FFSubtitleItem>::append(const FFSubtitleItem &);
template QList<FFSubtitleItem>::QList(const QList<FFSubtitleItem> &);
template QList<FFSubtitleItem>::~QList();

namespace
{

struct CloseInput {
    void operator()(AVFormatContext *input) const { avformat_close_input(&input); }
};
using InputPointer = std::unique_ptr<AVFormatContext, CloseInput>;

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
    AVFormatContext *opened = nullptr;
    if (avformat_open_input(&opened, path.toUtf8().constData(), nullptr, nullptr) < 0) {
        av_log(nullptr, AV_LOG_ERROR, "(%d): av_open_input_file x\n", 105);
        return 1;
    }
    const InputPointer input(opened);
    if (avformat_find_stream_info(input.get(), nullptr) < 0) {
        av_log(nullptr, AV_LOG_ERROR, "(%d): av_find_stream_info x\n", 101);
        return 1;
    }
    const int chosen = ChooseStream(*input, track);
    const PacketPointer packet(av_packet_alloc());
    while (packet && av_read_frame(input.get(), packet.get()) == 0) {
        if (packet->stream_index == chosen)
            m_listItems.append(ReadCue(*packet, input->streams[chosen]->time_base));
        av_packet_unref(packet.get());
    }
    // The end of the file is reported like a failure: this is meant.
    av_log(nullptr, AV_LOG_ERROR, "(%d): av_read_frame x\n", 90);
    return 1;
}

QString FFParser::GetSubtitle(long ms)
{
    return FindDueText(m_listItems, ms);
}
