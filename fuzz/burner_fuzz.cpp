// The input begins with a subtitle. From its end are taken the subtitle's kind, a handle's size, and what a host does
// with frames of any format. What is drawn is compared with an oracle that computes the definitions in doubles.
#include "burnerscene.h"
#include "fuzzsupport.h"
#include "support/frameoracle.h"
#include "support/interlaced.h"
#include "support/pictureunit.h"
#include "support/videosubtitlepeer.h"
#include "support/vobsubpair.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/frame.h>
}

#include <algorithm>
#include <cmath>
#include <optional>

namespace
{

/** Burns into an AVFrame with the members of the record. */
int BurnAsAVFrame(void *burner, const SubtitleFrame &record)
{
    AVFrame *frame = av_frame_alloc();
    for (int i = 0; i < 4; ++i) {
        frame->data[i] = record.data[i];
        frame->linesize[i] = record.linesize[i];
    }
    frame->width = record.width;
    frame->height = record.height;
    frame->format = record.format;
    frame->colorspace = static_cast<AVColorSpace>(record.colorspace);
    frame->color_range = static_cast<AVColorRange>(record.color_range);
    frame->color_primaries = static_cast<AVColorPrimaries>(record.color_primaries);
    frame->color_trc = static_cast<AVColorTransferCharacteristic>(record.color_trc);
    frame->chroma_location = static_cast<AVChromaLocation>(record.chroma_location);
    SetInterlaced(*frame, record.interlaced != 0);
    AVFrameSideData *data = av_frame_new_side_data(frame, AV_FRAME_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t));
    auto *matrix = reinterpret_cast<std::int32_t *>(data->data);
    const int column = record.orientation & SUBTITLE_ORIENTATION_MIRRORED ? -65536 : 65536;
    const int row = record.orientation & SUBTITLE_ORIENTATION_UPSIDE_DOWN ? -65536 : 65536;
    const bool isTransposed = record.orientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    const std::int32_t linear[] = {isTransposed ? 0 : column,
                                   isTransposed ? row : 0,
                                   0,
                                   isTransposed ? column : 0,
                                   isTransposed ? 0 : row,
                                   0,
                                   0,
                                   0,
                                   1 << 30};
    std::copy(std::begin(linear), std::end(linear), matrix);
    const int result = BurnSubtitleAVFrame(burner, frame);
    av_frame_free(&frame);
    return result;
}

/** A handle with a subtitle, and one burner for all frames. */
class Host
{
public:
    Host(int width, int height, const std::string &strFile) :
        m_nWidth(width),
        m_nHeight(height),
        m_pHandle(CreateVideoSubtitle(width, height)),
        m_pBurner(CreateSubtitleBurner(m_pHandle))
    {
        Require(m_pBurner, "there is a burner");
        const int result = SetSubtitleFile(m_pHandle, strFile.c_str(), 0);
        Require(result == 0 || result == -1, "a file is opened or refused");
    }
    ~Host()
    {
        DestroySubtitleBurner(m_pBurner);
        DestroyVideoSubtitle(m_pHandle);
    }
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    void Set(FuzzedDataProvider &input);
    void ShowFrame(FuzzedDataProvider &input);

private:
    PlainSubtitle Plain();
    void CompareBurners(const Scene &scene, const PlaneFrame &before, const PlaneFrame &expected);
    void CompareWithOracle(const Scene &scene, PlaneFrame before, PlaneFrame frame);

    int m_nWidth;
    int m_nHeight;
    double m_dWhite = 203;
    std::optional<Scene> m_scene; ///< of the latest frame
    void *m_pHandle;
    void *m_pBurner;
};

void Host::Set(FuzzedDataProvider &input)
{
    const auto pickByte = [&input] { return static_cast<int>(input.ConsumeIntegral<std::uint8_t>()); };
    switch (input.ConsumeIntegralInRange(0, 5)) {
    case 0:
        SetSubtitleAlpah(m_pHandle, pickByte());
        break;
    case 1:
        SetSubtitlePos(m_pHandle, input.ConsumeIntegralInRange(0, 100));
        break;
    case 2: {
        const char *const families[] = {"DejaVu Sans", "DejaVu Serif", "Noto Color Emoji"};
        const char *const family = input.PickValueInArray(families);
        const int points = input.ConsumeIntegralInRange(4, 40);
        Require(SetSubtitleFontParam(m_pHandle, family, points, input.ConsumeIntegralInRange(0, 3)) == 0,
                "a font is set");
        break;
    }
    case 3:
        SetSubtitleFontColor(m_pHandle, pickByte(), pickByte(), pickByte());
        break;
    case 4:
        SetSubtitleOutlineColor(m_pHandle, pickByte(), pickByte(), pickByte());
        break;
    default: {
        const double white = input.ConsumeBool() ? input.ConsumeFloatingPointInRange<double>(1, 10000)
                                                 : input.ConsumeFloatingPoint<double>();
        const bool isPossible = white >= 1 && white <= 10000;
        Require(SetSubtitleBurnerWhite(m_pBurner, white) == (isPossible ? 0 : -1), "levels of light are taken");
        m_dWhite = isPossible ? white : m_dWhite;
        break;
    }
    }
}

void Host::ShowFrame(FuzzedDataProvider &input)
{
    constexpr long Step = 500; // ms
    SetSubtitleTimeStamp(m_pHandle, input.ConsumeIntegralInRange<long>(0, 15) * Step);
    // A burner keeps what it built for the previous frame, so two of three frames are that frame with a change.
    if (m_scene && input.ConsumeIntegralInRange(0, 2) > 0)
        m_scene->Change(input);
    else
        m_scene.emplace(input, m_nWidth, m_nHeight);
    const Scene &scene = *m_scene;
    const PlaneFrame before = scene.Planes();
    PlaneFrame frame = before;
    const SubtitleFrame record = scene.Record(frame);
    const int result = BurnSubtitle(m_pBurner, &record);
    if (scene.IsWrong(m_nWidth, m_nHeight))
        Require(result == -1, "a wrong frame is refused");
    else
        Require(result == 0 || (result == -1 && scene.IsOpen()), "a right frame is not refused");
    if (result == -1)
        Require(frame.Bytes() == before.Bytes(), "a frame that is refused is not touched");
    CompareBurners(scene, before, frame);
    if (result == 0)
        CompareWithOracle(scene, before, frame);
}

/** Requires the same bytes from the same burner once more, from a new one, and from an AVFrame. */
void Host::CompareBurners(const Scene &scene, const PlaneFrame &before, const PlaneFrame &expected)
{
    void *fresh = CreateSubtitleBurner(m_pHandle);
    Require(SetSubtitleBurnerWhite(fresh, m_dWhite) == 0, "a level of light is taken");
    for (void *burner : {m_pBurner, fresh}) {
        PlaneFrame frame = before;
        const SubtitleFrame record = scene.Record(frame);
        BurnSubtitle(burner, &record);
        Require(frame.Bytes() == expected.Bytes(), "the same frame becomes the same");
    }
    if (scene.IsForAVFrame()) {
        PlaneFrame frame = before;
        BurnAsAVFrame(fresh, scene.Record(frame));
        Require(frame.Bytes() == expected.Bytes(), "a frame of FFmpeg's becomes the same");
    }
    DestroySubtitleBurner(fresh);
}

/** The subtitle that is due, read from inside the handle. */
PlainSubtitle Host::Plain()
{
    const VideoSubtitlePeer peer(*static_cast<VideoSubtitle *>(m_pHandle));
    std::vector<std::uint8_t> pixels(std::size_t{3} * m_nWidth * m_nHeight);
    AVPicture picture = {};
    picture.data[0] = pixels.data();
    picture.linesize[0] = 3 * m_nWidth;
    Require(ProcessSubtitleFrame(m_pHandle, &picture) == 0, "frames of RGB are not refused");
    QImage image;
    if (!peer.Subtitle().isEmpty())
        image = peer.Image()->isNull() ? peer.Text() : *peer.Image();
    if (image.isNull())
        return PlainSubtitle({std::vector<std::uint8_t>(4).data(), 0, 0, 0, 0, m_nWidth, m_nHeight, 0, 0});
    Require(image.size() == QSize(m_nWidth, m_nHeight), "an image has the frame's size");
    const QRect rect = peer.Rect();
    return PlainSubtitle({image.constBits(), rect.x(), rect.y(), rect.width(), rect.height(), m_nWidth, m_nHeight,
                          peer.Alpha(), peer.LogoPos() * m_nHeight / 100 - peer.AnchorOffset()});
}

/**
 * Whether a sample is right: opaque text and 8-bit RGB exactly, others to within 0.04 of an 8-bit step plus rounding.
 */
bool IsSample(double expected, int sample, const PlaneFrame &frame, int component, bool isOpaque)
{
    const AVPixFmtDescriptor &format = frame.Description();
    const int depth = format.comp[component].depth;
    if (isOpaque)
        return sample == static_cast<int>(std::floor(expected + 0.5));
    if ((format.flags & AV_PIX_FMT_FLAG_RGB) && depth == 8 && !frame.IsAlpha(component))
        return sample == static_cast<int>(std::floor(expected + 1e-6));
    return std::abs(expected - sample) <= 0.5 + 0.04 * (1 << (depth - 8));
}

void Host::CompareWithOracle(const Scene &scene, PlaneFrame before, PlaneFrame frame)
{
    const PlainSubtitle subtitle = Plain();
    const FrameOracle oracle(before, scene.Literal(before), subtitle);
    for (int i = 0; i < frame.Description().nb_components; ++i) {
        for (int y = 0; y < frame.Height(i); ++y) {
            for (int x = 0; x < frame.Width(i); ++x) {
                const PlainSample sample = subtitle.Shows() ? oracle.Sample(i, x, y) : PlainSample{};
                if (!sample.bTouched)
                    continue;
                // The oracle does not implement HDR.
                if (!scene.IsHdr() || frame.IsAlpha(i))
                    Require(IsSample(sample.value, frame.Get(i, x, y), frame, i, subtitle.IsOpaque()),
                            "a sample is as it is defined");
                frame.Set(i, x, y, before.Get(i, x, y));
            }
        }
    }
    Require(frame.Bytes() == before.Bytes(), "what the subtitle does not cover is not touched");
}

/** Writes a subtitle of one of the kinds, and returns the file's name. */
std::string WriteSubtitle(FuzzedDataProvider &input)
{
    const FuzzHost &host = FuzzHost::Get();
    const int kind = input.ConsumeIntegralInRange(0, 3);
    const auto size = input.ConsumeIntegralInRange<std::size_t>(0, 1023);
    if (kind == 0)
        return host.Write("cues.srt", input.ConsumeBytesAsString(size));
    if (kind == 1)
        return host.Write("cue.srt", "00:00:00,000 --> 00:00:09,000\n" + input.ConsumeBytesAsString(size));
    VobSubPair pair(input.ConsumeIntegralInRange(1, 90), input.ConsumeIntegralInRange(1, 60), {});
    std::vector<std::uint8_t> unit = input.ConsumeBytes<std::uint8_t>(size);
    if (kind == 2) {
        PictureUnit picture;
        picture.nWidth = input.ConsumeIntegralInRange(1, pair.nWidth);
        picture.nHeight = input.ConsumeIntegralInRange(1, pair.nHeight);
        picture.nX = input.ConsumeIntegralInRange(0, pair.nWidth - picture.nWidth);
        picture.nY = input.ConsumeIntegralInRange(0, pair.nHeight - picture.nHeight);
        picture.nColours = input.ConsumeIntegral<std::uint16_t>();
        picture.nContrasts = input.ConsumeIntegral<std::uint16_t>();
        const std::size_t pixels = static_cast<std::size_t>(picture.nWidth) * picture.nHeight;
        for (std::size_t n = 0; n < pixels; ++n)
            picture.listPixels.push_back(unit.empty() ? 1 : unit[n / 4 % unit.size()] >> n % 4 * 2 & 3);
        unit = picture.Encode();
    }
    pair.listLanguages[0].push_back({0, unit, {}});
    host.Write("picture.sub", pair.Stream());
    return host.Write("picture.idx", pair.Index());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    constexpr int MostWidth = 70;
    constexpr int MostHeight = 50;
    constexpr int MostActions = 16;
    FuzzedDataProvider input(pData, nSize);
    const std::string strFile = WriteSubtitle(input);
    const int width = input.ConsumeIntegralInRange(1, MostWidth);
    Host host(width, input.ConsumeIntegralInRange(1, MostHeight), strFile);
    for (int n = 0; n < MostActions && input.remaining_bytes() > 0; ++n) {
        if (input.ConsumeIntegralInRange(0, 4) < 2)
            host.Set(input);
        else
            host.ShowFrame(input);
    }
    return 0;
}
