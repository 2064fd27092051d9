#include "parsers/picturedecoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

namespace
{

constexpr AVRational Milliseconds = {1, 1000};
constexpr int Quiet = 100; ///< added to the level of messages, so that none of them is shown

// The canvas if neither the track nor the file has a size.
constexpr int DefaultWidth = 720;
constexpr int DefaultHeight = 576;

bool IsPossibleCanvas(int width, int height)
{
    return width >= 1 && height >= 1 && width <= MaxCanvasSide && height <= MaxCanvasSide;
}

/** Throws std::bad_alloc for AVERROR(ENOMEM) and null; returns all other values. */
int Checked(int result)
{
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    return result;
}

template <typename Pointer>
Pointer Checked(Pointer pointer)
{
    if (!pointer)
        throw std::bad_alloc();
    return pointer;
}

/** An AVSubtitle with a destructor. */
struct OwnedSubtitle {
    OwnedSubtitle() = default;
    ~OwnedSubtitle() { avsubtitle_free(&subtitle); }
    OwnedSubtitle(const OwnedSubtitle &) = delete;
    OwnedSubtitle &operator=(const OwnedSubtitle &) = delete;

    AVSubtitle subtitle = {};
};

/** Layout of the segments of a codec. The state of a composition is 0 if it builds on earlier ones. */
struct SegmentLayout {
    std::size_t nHeader;  ///< bytes of a segment before its body
    std::size_t nTypeAt;  ///< in the header
    std::size_t nSizeAt;  ///< in the header, of the body, 2 bytes
    std::uint8_t nType;   ///< type of a composition
    std::size_t nStateAt; ///< in the body
    std::uint8_t nStateBits;
};
constexpr SegmentLayout BluRay = {3, 0, 1, 0x16, 7, 0xC0};
constexpr SegmentLayout Broadcast = {6, 1, 4, 0x10, 1, 0x0C};

bool HasFirstComposition(const std::uint8_t *packet, std::size_t size, const SegmentLayout &layout)
{
    for (std::size_t at = 0; at + layout.nHeader <= size;) {
        const std::uint8_t *header = packet + at;
        const std::size_t length = header[layout.nSizeAt] << 8 | header[layout.nSizeAt + 1];
        const std::size_t body = at + layout.nHeader;
        if (header[layout.nTypeAt] == layout.nType && body + layout.nStateAt < size &&
            (packet[body + layout.nStateAt] & layout.nStateBits) != 0)
            return true;
        at = body + length;
    }
    return false;
}

/** The part of a rectangle that lies on the canvas, converted to colours. */
ColorPicture ToPicture(const AVSubtitleRect &rect, int canvasWidth, int canvasHeight)
{
    ColorPicture picture = {canvasWidth, canvasHeight, 0, 0, 0, 0, {}};
    if (rect.type != SUBTITLE_BITMAP || rect.w <= 0 || rect.h <= 0 || !rect.data[0] || !rect.data[1])
        return picture;
    const auto end = [](int first, int count, int canvas) {
        return static_cast<int>(std::min(std::int64_t{first} + count, std::int64_t{canvas}));
    };
    picture.nLeft = std::max(rect.x, 0);
    picture.nTop = std::max(rect.y, 0);
    const int columns = end(rect.x, rect.w, canvasWidth) - picture.nLeft;
    const int rows = end(rect.y, rect.h, canvasHeight) - picture.nTop;
    if (columns <= 0 || rows <= 0)
        return picture;
    picture.nColumns = columns;
    picture.nRows = rows;
    picture.listPixels.reserve(static_cast<std::size_t>(columns) * rows);
    std::uint32_t palette[AVPALETTE_COUNT];
    std::memcpy(palette, rect.data[1], sizeof palette);
    for (int row = 0; row < rows; ++row) {
        const std::uint8_t *codes = rect.data[0] +
                                    static_cast<std::ptrdiff_t>(picture.nTop - rect.y + row) * rect.linesize[0] +
                                    (picture.nLeft - rect.x);
        for (int column = 0; column < columns; ++column)
            picture.listPixels.push_back(palette[codes[column]]);
    }
    return picture;
}

} // namespace

bool PictureDecoder::Knows(AVCodecID codec)
{
    switch (codec) {
    case AV_CODEC_ID_DVD_SUBTITLE:
    case AV_CODEC_ID_DVB_SUBTITLE:
    case AV_CODEC_ID_HDMV_PGS_SUBTITLE:
        return avcodec_find_decoder(codec) != nullptr;
    default:
        return false;
    }
}

PictureDecoder::PictureDecoder(const AVCodecParameters &track, int width, int height) :
    m_pTrack(Checked(avcodec_parameters_alloc())),
    m_pPacket(Checked(av_packet_alloc())),
    m_nWidth(width),
    m_nHeight(height)
{
    if (avcodec_parameters_copy(m_pTrack.get(), &track) < 0)
        throw std::bad_alloc();
}

bool PictureDecoder::IsStart(const std::uint8_t *packet, std::size_t size) const
{
    switch (m_pTrack->codec_id) {
    case AV_CODEC_ID_HDMV_PGS_SUBTITLE:
        return HasFirstComposition(packet, size, BluRay);
    case AV_CODEC_ID_DVB_SUBTITLE:
        return HasFirstComposition(packet, size, Broadcast);
    default:
        return true;
    }
}

void PictureDecoder::Restart()
{
    // avcodec_flush_buffers() would keep pages and their versions.
    m_pContext.reset();
}

DecodedPicture PictureDecoder::Decode(const std::uint8_t *packet, std::size_t size, std::int64_t time)
{
    if (!m_pContext) {
        const AVCodec *codec = avcodec_find_decoder(m_pTrack->codec_id);
        std::unique_ptr<AVCodecContext, FreeContext> context(Checked(avcodec_alloc_context3(codec)));
        Checked(avcodec_parameters_to_context(context.get(), m_pTrack.get()));
        context->pkt_timebase = Milliseconds;
        context->max_pixels = std::int64_t{MaxCanvasSide} * MaxCanvasSide;
        context->log_level_offset = Quiet;
        if (Checked(avcodec_open2(context.get(), codec, nullptr)) < 0)
            return {};
        m_pContext = std::move(context);
    }
    // Decoders may read padding after the data, which a copy has.
    Checked(av_new_packet(m_pPacket.get(), static_cast<int>(size)));
    std::copy(packet, packet + size, m_pPacket->data);
    m_pPacket->pts = time;
    OwnedSubtitle decoded;
    int isComplete = 0;
    const int result = avcodec_decode_subtitle2(m_pContext.get(), &decoded.subtitle, &isComplete, m_pPacket.get());
    av_packet_unref(m_pPacket.get());
    if (Checked(result) < 0) {
        DecodedPicture none;
        none.nCost = std::int64_t{std::max(m_pContext->width, 1)} * std::max(m_pContext->height, 1);
        return none;
    }
    return isComplete ? Take(decoded.subtitle) : DecodedPicture();
}

DecodedPicture PictureDecoder::Take(const AVSubtitle &subtitle) const
{
    int width = m_pContext->width;
    int height = m_pContext->height;
    if (!IsPossibleCanvas(width, height)) {
        const bool isKnown = IsPossibleCanvas(m_nWidth, m_nHeight);
        width = isKnown ? m_nWidth : DefaultWidth;
        height = isKnown ? m_nHeight : DefaultHeight;
    }
    std::vector<ColorPicture> parts;
    std::vector<const ColorPicture *> pointers;
    parts.reserve(subtitle.num_rects);
    DecodedPicture decoded;
    for (unsigned i = 0; i < subtitle.num_rects; ++i) {
        const AVSubtitleRect &rect = *subtitle.rects[i];
        // A rectangle that could not be decoded has no size.
        decoded.nCost += rect.w > 0 && rect.h > 0 ? std::int64_t{rect.w} * rect.h : std::int64_t{width} * height;
        parts.push_back(ToPicture(rect, width, height));
        pointers.push_back(&parts.back());
    }
    decoded.picture = LaidTogether(pointers);
    decoded.nStart = subtitle.start_display_time;
    if (subtitle.end_display_time > subtitle.start_display_time &&
        subtitle.end_display_time != std::numeric_limits<std::uint32_t>::max())
        decoded.nEnd = subtitle.end_display_time;
    return decoded;
}
