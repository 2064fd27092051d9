#include "burnerscene.h"

#include <algorithm>
#include <limits>
#include <string>

namespace
{

constexpr const char *Formats[] = {
    "yuv420p",     "yuv422p",     "yuv444p",     "yuvj420p",    "yuvj422p",  "yuvj444p", "yuva420p",    "yuva422p",
    "yuva444p",    "nv12",        "nv21",        "nv16",        "yuyv422",   "uyvy422",  "yuv420p10le", "yuv422p10le",
    "yuv444p10le", "yuv420p12le", "yuv422p12le", "yuv444p12le", "p010le",    "gray",     "gray10le",    "gbrp",
    "gbrp10le",    "rgb24",       "bgr24",       "rgba",        "bgra",      "argb",     "abgr",        "rgb0",
    "bgr0",        "0rgb",        "0bgr",        "rgb48le",     "x2rgb10le",
};

constexpr int Members = 7; ///< number of members that PickMember() picks

template <std::size_t N>
bool IsAmong(int value, const int (&values)[N])
{
    return std::find(std::begin(values), std::end(values), value) != std::end(values);
}

} // namespace

Scene::Scene(FuzzedDataProvider &input, int width, int height) :
    m_format(static_cast<AVPixelFormat>(SubtitlePixelFormat(input.PickValueInArray(Formats)))),
    m_nShownWidth(width),
    m_nShownHeight(height)
{
    for (int member = 0; member < Members; ++member)
        PickMember(input, member);
    PickMemory(input);
    Complete(input);
}

void Scene::Change(FuzzedDataProvider &input)
{
    const int member = input.ConsumeIntegralInRange(0, Members + 1);
    if (member == Members)
        PickMemory(input);
    else
        PickMember(input, member);
    Complete(input);
}

/** Picks values within the ranges of the enumerations' types. */
void Scene::PickMember(FuzzedDataProvider &input, int member)
{
    constexpr int UsualMatrices[] = {AVCOL_SPC_UNSPECIFIED, AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT2020_NCL};
    switch (member) {
    case 0:
        m_usual.colorspace =
            input.ConsumeBool() ? input.PickValueInArray(UsualMatrices) : input.ConsumeIntegralInRange(0, 15);
        break;
    case 1:
        m_usual.color_range = input.ConsumeIntegralInRange(0, 2);
        break;
    case 2:
        m_usual.color_primaries = input.ConsumeBool() ? AVCOL_PRI_BT2020 : input.ConsumeIntegralInRange(0, 31);
        break;
    case 3:
        m_usual.color_trc = input.ConsumeIntegralInRange(0, 19);
        break;
    case 4:
        m_usual.chroma_location = input.ConsumeIntegralInRange(0, AVCHROMA_LOC_NB - 1);
        break;
    case 5:
        m_usual.interlaced = input.ConsumeIntegralInRange(0, 1);
        break;
    case 6:
        m_usual.orientation = input.ConsumeIntegralInRange(0, 7);
        break;
    default:
        break;
    }
}

void Scene::PickMemory(FuzzedDataProvider &input)
{
    constexpr int MostGuardBytes = 15;
    m_memory.nBefore = input.ConsumeIntegralInRange(0, MostGuardBytes);
    m_memory.nPadding = input.ConsumeIntegralInRange(0, MostGuardBytes);
    m_memory.nAfter = 0;
    m_memory.bBottomUp = input.ConsumeBool();
    m_nSeed = input.ConsumeIntegral<std::uint8_t>();
}

void Scene::Complete(FuzzedDataProvider &input)
{
    const bool isTransposed = m_usual.orientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    m_nWidth = isTransposed ? m_nShownHeight : m_nShownWidth;
    m_nHeight = isTransposed ? m_nShownWidth : m_nShownHeight;
    m_record = m_usual;
    m_record.width = m_nWidth;
    m_record.height = m_nHeight;
    m_record.format = m_format;
    m_flaw = Flaw::None;
    PickFlaw(input);
}

void Scene::PickFlaw(FuzzedDataProvider &input)
{
    constexpr int SubtitleFrame::*AnyMembers[] = {&SubtitleFrame::width,           &SubtitleFrame::height,
                                                  &SubtitleFrame::colorspace,      &SubtitleFrame::color_range,
                                                  &SubtitleFrame::color_trc,       &SubtitleFrame::chroma_location,
                                                  &SubtitleFrame::color_primaries, &SubtitleFrame::interlaced};
    switch (input.ConsumeIntegralInRange(0, 31)) {
    case 1:
        m_flaw = Flaw::Plane;
        m_nFlawed = input.ConsumeIntegralInRange(0, av_pix_fmt_count_planes(m_format) - 1);
        break;
    case 2:
        m_flaw = Flaw::Row;
        m_nFlawed = input.ConsumeIntegralInRange(0, av_pix_fmt_count_planes(m_format) - 1);
        break;
    case 3:
        m_flaw = Flaw::Size;
        m_record.width = m_nWidth = m_nWidth + input.ConsumeIntegralInRange(0, 1);
        m_record.height = m_nHeight = m_nHeight + input.ConsumeIntegralInRange(0, 1);
        break;
    case 4: {
        const int format = input.ConsumeIntegralInRange(-2, AV_PIX_FMT_NB + 1);
        if (SubtitlePixelFormat(av_get_pix_fmt_name(static_cast<AVPixelFormat>(format))) == -1) {
            m_flaw = Flaw::Format;
            m_record.format = format;
        }
        break;
    }
    case 5:
        m_flaw = Flaw::Member;
        m_record.*input.PickValueInArray(AnyMembers) = input.ConsumeIntegral<int>();
        break;
    case 6:
        m_flaw = Flaw::Member;
        // Not one of the eight orientations. The planes keep the size that was computed for the picked one.
        m_record.orientation = input.ConsumeBool() ? input.ConsumeIntegralInRange(8, std::numeric_limits<int>::max())
                                                   : input.ConsumeIntegralInRange(std::numeric_limits<int>::min(), -1);
        break;
    default:
        break;
    }
}

SubtitleFrame Scene::Record(PlaneFrame &planes) const
{
    SubtitleFrame frame = m_record;
    const SubtitleFrame from = planes.Frame();
    for (int i = 0; i < 4; ++i) {
        frame.data[i] = m_flaw == Flaw::Plane && i == m_nFlawed ? nullptr : from.data[i];
        frame.linesize[i] = from.linesize[i];
        if (m_flaw == Flaw::Row && i == m_nFlawed)
            frame.linesize[i] = (planes.RowBytes(i) - 1) * (m_memory.bBottomUp ? -1 : 1);
    }
    return frame;
}

SubtitleFrame Scene::Literal(PlaneFrame &planes) const
{
    SubtitleFrame frame = Record(planes);
    // No frame here is large enough for BT.709 to be the default.
    if (frame.colorspace == AVCOL_SPC_RGB || frame.colorspace == AVCOL_SPC_UNSPECIFIED)
        frame.colorspace = AVCOL_SPC_SMPTE170M;
    const bool isGrey = planes.Description().nb_components < 3;
    if (frame.color_range == AVCOL_RANGE_UNSPECIFIED)
        frame.color_range = isGrey ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    if (IsJpeg())
        frame.color_range = AVCOL_RANGE_JPEG;
    if (frame.chroma_location == AVCHROMA_LOC_UNSPECIFIED)
        frame.chroma_location = IsJpeg() ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_LEFT;
    return frame;
}

bool Scene::IsHdr() const
{
    return m_record.color_trc == AVCOL_TRC_SMPTE2084 || m_record.color_trc == AVCOL_TRC_ARIB_STD_B67;
}

bool Scene::IsWrong(int width, int height) const
{
    if (m_flaw == Flaw::Plane || m_flaw == Flaw::Row || m_flaw == Flaw::Format)
        return true;
    const bool isTransposed = m_record.orientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    return m_record.orientation < 0 || m_record.orientation > 7 || (!IsRgb() && !IsMatrixKnown()) ||
           m_record.width != (isTransposed ? height : width) || m_record.height != (isTransposed ? width : height);
}

bool Scene::IsOpen() const
{
    const bool isRangeKnown = m_record.color_range >= 0 && m_record.color_range <= AVCOL_RANGE_JPEG;
    const bool isLocationKnown = m_record.chroma_location >= 0 && m_record.chroma_location < AVCHROMA_LOC_NB;
    return !isRangeKnown || !isLocationKnown || (IsHdr() && !ArePrimariesKnown());
}

bool Scene::IsRgb() const
{
    return av_pix_fmt_desc_get(m_format)->flags & AV_PIX_FMT_FLAG_RGB;
}

bool Scene::IsJpeg() const
{
    return std::string(av_get_pix_fmt_name(m_format)).rfind("yuvj", 0) == 0;
}

bool Scene::IsMatrixKnown() const
{
    return IsAmong(m_record.colorspace,
                   {AVCOL_SPC_RGB, AVCOL_SPC_UNSPECIFIED, AVCOL_SPC_FCC, AVCOL_SPC_BT470BG, AVCOL_SPC_SMPTE170M,
                    AVCOL_SPC_SMPTE240M, AVCOL_SPC_BT709, AVCOL_SPC_BT2020_NCL});
}

bool Scene::ArePrimariesKnown() const
{
    return IsAmong(m_record.color_primaries,
                   {AVCOL_PRI_RESERVED0, AVCOL_PRI_UNSPECIFIED, AVCOL_PRI_BT709, AVCOL_PRI_BT470BG, AVCOL_PRI_SMPTE170M,
                    AVCOL_PRI_SMPTE240M, AVCOL_PRI_BT2020, AVCOL_PRI_SMPTE432, AVCOL_PRI_EBU3213});
}
