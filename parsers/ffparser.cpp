#include "parsers/ffparser.h"

#include "parsers/wrapint.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>

extern "C" {
#include <libavformat/avformat.h>
}

// The list of cues belongs to the library's interface: these stay in it whatever the compiler inlines.
template void QList<FFSubtitleItem>::append(const FFSubtitleItem &);
template QList<FFSubtitleItem>::QList(const QList<FFSubtitleItem> &);
template QList<FFSubtitleItem>::~QList();

namespace
{

/** Bytes of text after which no more is read of a file. */
constexpr qint64 MaxTextSize = qint64{128} * 1024 * 1024;

struct CloseInput {
    void operator()(AVFormatContext *input) const { avformat_close_input(&input); }
};
using InputPointer = std::unique_ptr<AVFormatContext, CloseInput>;

/**
 * Formats that are not read. They follow what the file names, which may be itself, until the stack has ended, or a part that
 * is still to come, without end; and they open sockets.
 */
constexpr std::array<std::string_view, 10> Followers = {"avisynth", "concat", "dash", "hls", "imf",
                                                        "rtp",      "rtsp",   "sap",  "sdp", "vapoursynth"};

/** Formats that FFmpeg reads whole when it opens them, into fifteen times their size. */
constexpr std::array<std::string_view, 19> ReadAtOnce = {
    "aqtitle", "ass", "jacosub", "lrc", "mcc",       "microdvd",   "mpl2",        "mpsub",   "pjs",   "realtext",
    "sami",    "scc", "srt",     "stl", "subviewer", "subviewer1", "tedcaptions", "vplayer", "webvtt"};

/** The names of all other formats. */
std::string ReadableFormats(qint64 size)
{
    std::string names;
    void *position = nullptr;
    while (const AVInputFormat *format = av_demuxer_iterate(&position)) {
        const auto isIn = [&](const auto &list) {
            return std::find(list.begin(), list.end(), format->name) != list.end();
        };
        if (!isIn(Followers) && (size <= MaxTextSize || !isIn(ReadAtOnce)))
            names.append(names.empty() ? "" : ",").append(format->name);
    }
    return names;
}

/** Null when the file cannot be opened. */
InputPointer OpenInput(const QString &path)
{
    // What is no file may be an address that FFmpeg knows.
    const QFileInfo file(path);
    if (file.exists() && !file.isFile())
        return nullptr;
    AVDictionary *options = nullptr;
    av_dict_set(&options, "format_whitelist", ReadableFormats(file.size()).c_str(), 0);
    AVFormatContext *input = nullptr;
    if (avformat_open_input(&input, path.toUtf8().constData(), nullptr, &options) < 0)
        input = nullptr;
    av_dict_free(&options);
    return InputPointer(input);
}

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
    const InputPointer input = OpenInput(path);
    if (!input) {
        av_log(nullptr, AV_LOG_ERROR, "(%d): av_open_input_file x\n", 105);
        return 1;
    }
    if (avformat_find_stream_info(input.get(), nullptr) < 0) {
        av_log(nullptr, AV_LOG_ERROR, "(%d): av_find_stream_info x\n", 101);
        return 1;
    }
    const int chosen = ChooseStream(*input, track);
    const PacketPointer packet(av_packet_alloc());
    qint64 held = 0;
    while (packet && m_listItems.size() < MaxCues && held < MaxTextSize &&
           av_read_frame(input.get(), packet.get()) == 0) {
        if (packet->stream_index == chosen) {
            m_listItems.append(ReadCue(*packet, input->streams[chosen]->time_base));
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
