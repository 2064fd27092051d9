#include "support/subtitlemuxer.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/codec_desc.h>
#include <libavformat/avformat.h>
}

namespace
{

struct FreeOutput {
    void operator()(AVFormatContext *output) const
    {
        avio_closep(&output->pb);
        avformat_free_context(output);
    }
};

void Check(int result)
{
    if (result < 0)
        throw std::runtime_error("cannot write the file");
}

void AddStream(AVFormatContext &output, const std::string &codec, int timeBaseDenominator, const std::string &header)
{
    const AVCodecDescriptor *descriptor = avcodec_descriptor_get_by_name(codec.c_str());
    AVStream *stream = avformat_new_stream(&output, nullptr);
    if (!descriptor || !stream)
        throw std::runtime_error("no stream of codec " + codec);
    stream->time_base = {1, timeBaseDenominator};
    stream->codecpar->codec_type = descriptor->type;
    stream->codecpar->codec_id = descriptor->id;
    if (!header.empty()) {
        stream->codecpar->extradata =
            static_cast<std::uint8_t *>(av_mallocz(header.size() + AV_INPUT_BUFFER_PADDING_SIZE));
        if (!stream->codecpar->extradata)
            throw std::bad_alloc();
        stream->codecpar->extradata_size = static_cast<int>(header.size());
        std::copy(header.begin(), header.end(), stream->codecpar->extradata);
    }
    if (descriptor->type == AVMEDIA_TYPE_VIDEO) {
        stream->codecpar->width = 16;
        stream->codecpar->height = 16;
    }
}

} // namespace

void MuxSubtitles(const std::string &path, const std::vector<std::string> &streams,
                  const std::vector<MuxedPacket> &packets, int timeBaseDenominator, const std::string &header)
{
    AVFormatContext *created = nullptr;
    Check(avformat_alloc_output_context2(&created, nullptr, nullptr, path.c_str()));
    const std::unique_ptr<AVFormatContext, FreeOutput> output(created);
    for (const std::string &codec : streams)
        AddStream(*output, codec, timeBaseDenominator, header);
    Check(avio_open(&output->pb, path.c_str(), AVIO_FLAG_WRITE));
    Check(avformat_write_header(output.get(), nullptr));
    for (const MuxedPacket &packet : packets) {
        AVPacket *written = av_packet_alloc();
        Check(av_new_packet(written, static_cast<int>(packet.strPayload.size())));
        std::copy(packet.strPayload.begin(), packet.strPayload.end(), written->data);
        written->stream_index = packet.nStream;
        written->pts = written->dts = packet.nTime;
        written->duration = packet.nDuration;
        written->flags |= AV_PKT_FLAG_KEY;
        av_packet_rescale_ts(written, {1, timeBaseDenominator}, output->streams[packet.nStream]->time_base);
        const int result = av_interleaved_write_frame(output.get(), written);
        av_packet_free(&written);
        Check(result);
    }
    Check(av_write_trailer(output.get()));
}
