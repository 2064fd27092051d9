// The same work done with FFmpeg: its filters for drawing, on one thread and in place, and its reader of text files.
#include "cues.h"
#include "filterhost.h"
#include "host.h"
#include "pictures.h"

#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace
{

/** Does not measure the first frame, which the overlay filter copies. */
void MeasureFilter(benchmark::State &state, FilterHost &host, std::int64_t ms, std::int64_t step)
{
    host.Process(ms);
    for ([[maybe_unused]] auto _ : state) {
        ms += step;
        if (!host.Process(ms)) {
            state.SkipWithError("the filter copied the frame");
            break;
        }
    }
}

void FilterSteadyText(benchmark::State &state)
{
    const int height = Argument(state, 1);
    FilterHost host(Argument(state, 0), height,
                    "[main]subtitles=" + AssFile(FilmCues, Argument(state, 0), height) + "[out]");
    MeasureFilter(state, host, CueDistance, 0);
}

/** The overlay filter, with only the rectangle that the picture covers. */
void FilterSteadyPicture(benchmark::State &state)
{
    const int width = Argument(state, 0);
    Host host(width, Argument(state, 1), PictureFile());
    const Rectangle box = host.InkBox(PictureDistance + 1);
    const std::vector<std::uint8_t> drawn = host.Draw(PictureDistance + 1);
    std::vector<std::uint8_t> picture;
    for (int row = 0; row < box.nHeight; ++row) {
        for (int column = 0; column < box.nWidth; ++column) {
            const std::size_t place = static_cast<std::size_t>(box.nTop + row) * width + box.nLeft + column;
            const std::uint8_t *pixel = drawn.data() + place * 3;
            const bool isVisible = pixel[0] != FrameRing::Background;
            picture.insert(picture.end(), {pixel[0], pixel[1], pixel[2], std::uint8_t(isVisible ? 255 : 0)});
        }
    }

    FilterHost filter(width, Argument(state, 1),
                      "buffer@picture=width=" + std::to_string(box.nWidth) + ":height=" + std::to_string(box.nHeight) +
                          ":pix_fmt=rgba:time_base=1/1000:sar=1/1[picture];[main][picture]overlay=x=" +
                          std::to_string(box.nLeft) + ":y=" + std::to_string(box.nTop) + ":format=rgb[out]");
    filter.SetPicture(picture.data());
    MeasureFilter(state, filter, 0, 1);
}

/** Demuxes a file and decodes all of its packets. Returns the number of subtitles. */
int ReadAll(const std::string &file)
{
    AVFormatContext *format = nullptr;
    int count = 0;
    if (avformat_open_input(&format, file.c_str(), nullptr, nullptr) < 0)
        return count;
    const AVCodecParameters *parameters = format->streams[0]->codecpar;
    const AVCodec *codec = avcodec_find_decoder(parameters->codec_id);
    AVCodecContext *decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(decoder, parameters);
    decoder->pkt_timebase = format->streams[0]->time_base;
    avcodec_open2(decoder, codec, nullptr);
    AVPacket *packet = av_packet_alloc();
    while (av_read_frame(format, packet) >= 0) {
        AVSubtitle subtitle = {};
        int got = 0;
        if (avcodec_decode_subtitle2(decoder, &subtitle, &got, packet) >= 0 && got != 0) {
            ++count;
            avsubtitle_free(&subtitle);
        }
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    avformat_close_input(&format);
    return count;
}

void FfmpegOpenSrt(benchmark::State &state)
{
    const std::string file = SrtFile(Argument(state, 0));
    for ([[maybe_unused]] auto _ : state) {
        if (ReadAll(file) != Argument(state, 0)) {
            state.SkipWithError("cues are missing");
            break;
        }
    }
}

BENCHMARK(FilterSteadyText)->Apply(Sizes);
BENCHMARK(FilterSteadyPicture)->Apply(Sizes);
BENCHMARK(FfmpegOpenSrt)->Arg(FilmCues)->Arg(ManyCues)->Unit(benchmark::kMicrosecond);

} // namespace
