#include "frames/frameburner.h"

#include "parsers/framelimit.h"
#include "render/defaultfloats.h"
#include "render/videosubtitle.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <algorithm>
#include <cstdlib>
#include <type_traits>
#include <utility>

namespace
{

/** @return false if the location is unknown. */
bool FindSites(int location, bool isJpeg, ChromaAxis::Site &column, ChromaAxis::Site &row)
{
    using Site = ChromaAxis::Site;
    if (location == AVCHROMA_LOC_UNSPECIFIED)
        location = isJpeg ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_LEFT;
    switch (location) {
    case AVCHROMA_LOC_LEFT:
        column = Site::First;
        row = Site::Between;
        return true;
    case AVCHROMA_LOC_CENTER:
        column = row = Site::Between;
        return true;
    case AVCHROMA_LOC_TOPLEFT:
        column = row = Site::First;
        return true;
    case AVCHROMA_LOC_TOP:
        column = Site::Between;
        row = Site::First;
        return true;
    case AVCHROMA_LOC_BOTTOMLEFT:
        column = Site::First;
        row = Site::Second;
        return true;
    case AVCHROMA_LOC_BOTTOM:
        column = Site::Between;
        row = Site::Second;
        return true;
    default:
        return false;
    }
}

bool IsSameDescription(const SubtitleFrame &a, const SubtitleFrame &b)
{
    return a.width == b.width && a.height == b.height && a.format == b.format && a.colorspace == b.colorspace &&
           a.color_range == b.color_range && a.color_primaries == b.color_primaries && a.color_trc == b.color_trc &&
           a.chroma_location == b.chroma_location && (a.interlaced != 0) == (b.interlaced != 0) &&
           a.orientation == b.orientation;
}

bool HasPlanes(const SubtitleFrame &frame, const FrameLayout &layout)
{
    for (int i = 0; i < layout.format.nPlanes; ++i) {
        const std::ptrdiff_t linesize = frame.linesize[i];
        if (!frame.data[i] || std::abs(linesize) < layout.listRowBytes[i])
            return false;
    }
    return true;
}

bool IsSizeOf(const SubtitleFrame &frame, int width, int height)
{
    const bool isTransposed = frame.orientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    return frame.width == (isTransposed ? height : width) && frame.height == (isTransposed ? width : height);
}

/** The rows that drawing changes. */
RowSpan RowsOf(const ShownSubtitle &shown)
{
    RowSpan rows = {shown.ink.nTop, shown.ink.nTop + shown.ink.nRows};
    if (shown.nPictureCount > 0)
        rows.Add({shown.pPicture[0].nRow, shown.pPicture[shown.nPictureCount - 1].nRow + 1});
    return {rows.nTop + shown.nOffset, rows.nEnd + shown.nOffset};
}

} // namespace

/** Visitor for both looks. */
class FrameBurner::LookVisitor : public ShownVisitor, public NaturalVisitor
{
};

class FrameBurner::Visitor : public LookVisitor
{
public:
    Visitor(FrameBurner &burner, const SubtitleFrame &frame, Preparer *preparer) :
        m_burner(burner), m_frame(frame), m_pPreparer(preparer)
    {
    }
    void Visit(const ShownSubtitle &shown) override { m_nResult = m_burner.BurnShown(shown, m_frame, m_pPreparer); }
    void Visit(const NaturalSubtitle &shown) override { m_nResult = m_burner.BurnShown(shown, m_frame, m_pPreparer); }
    int Result() const { return m_nResult; }

private:
    FrameBurner &m_burner;
    const SubtitleFrame &m_frame;
    Preparer *m_pPreparer;
    int m_nResult = -1;
};

int FrameBurner::SetWhite(double level)
{
    if (!(level >= 1 && level <= 10000))
        return -1;
    m_dWhite = level;
    return 0;
}

int FrameBurner::SetLook(int look)
{
    if (look != SUBTITLE_LOOK_EXACT && look != SUBTITLE_LOOK_NATURAL)
        return -1;
    m_nLook = look;
    return 0;
}

int FrameBurner::SetOutline(double width)
{
    if (!(width >= 0 && width <= 20))
        return -1;
    m_dOutline = width;
    return 0;
}

int FrameBurner::SetSafeArea(double percent)
{
    if (!(percent >= 0 && percent <= 25))
        return -1;
    m_dSafeArea = percent;
    return 0;
}

int FrameBurner::SetPixelAspect(int width, int height)
{
    constexpr std::int64_t Most = 10;
    if (width < 1 || height < 1 || width > Most * height || height > Most * width)
        return -1;
    m_dPixelAspect = static_cast<double>(width) / height;
    return 0;
}

int FrameBurner::SetTakenRows(const SubtitleRows *rows, int count)
{
    if (count < 0 || (count > 0 && !rows))
        return -1;
    const std::lock_guard<std::mutex> lock(m_takenMutex);
    const auto isSame = [](const SubtitleRows &a, const SubtitleRows &b) {
        return a.top == b.top && a.count == b.count;
    };
    if (std::equal(rows, rows + count, m_listGivenRows.begin(), m_listGivenRows.end(), isSame))
        return 0;
    std::vector<RowSpan> spans;
    spans.reserve(count);
    for (const SubtitleRows *span = rows; span < rows + count; ++span) {
        if (span->top < 0 || span->count < 0)
            return -1;
        const int top = std::min(span->top, MaxFrameSide);
        spans.push_back({top, top + std::min(span->count, MaxFrameSide)});
    }
    std::vector<SubtitleRows> given(rows, rows + count);
    m_taken = TakenRows(std::move(spans));
    m_listGivenRows = std::move(given);
    return 0;
}

NaturalSettings FrameBurner::Settings() const
{
    const std::lock_guard<std::mutex> lock(m_takenMutex);
    return {m_dOutline, m_dSafeArea, m_dPixelAspect, m_taken};
}

int FrameBurner::Visit(LookVisitor &visitor)
{
    return m_nLook == SUBTITLE_LOOK_NATURAL ? m_renderer.VisitNatural(Settings(), visitor)
                                            : m_renderer.VisitShown(visitor);
}

int FrameBurner::IsDue()
{
    SubtitleRows rows = {};
    return FindRows(rows);
}

int FrameBurner::FindRows(SubtitleRows &rows)
{
    class RowsVisitor : public LookVisitor
    {
    public:
        void Visit(const ShownSubtitle &shown) override { Take(shown.nVersion, RowsOf(shown)); }
        void Visit(const NaturalSubtitle &shown) override { Take(shown.nVersion, shown.rows); }
        bool m_bDue = false;
        RowSpan m_rows;

    private:
        void Take(std::uint64_t version, const RowSpan &rows)
        {
            m_bDue = version != 0;
            if (m_bDue)
                m_rows = rows;
        }
    } visitor;
    if (Visit(visitor) != 0)
        return -1;
    rows = {visitor.m_rows.nTop, visitor.m_rows.Count()};
    return visitor.m_bDue;
}

int FrameBurner::Burn(const SubtitleFrame &frame, Preparer *preparer)
{
    Visitor visitor(*this, frame, preparer);
    return Visit(visitor) == 0 ? visitor.Result() : -1;
}

template <typename Shown>
int FrameBurner::BurnShown(const Shown &shown, SubtitleFrame frame, Preparer *preparer)
{
    constexpr bool IsNatural = std::is_same_v<Shown, NaturalSubtitle>;
    if (frame.width < 1 || frame.height < 1 || !IsSizeOf(frame, shown.nFrameWidth, shown.nFrameHeight) ||
        !Describe(frame) || !HasPlanes(frame, m_layout))
        return -1;
    if (shown.nVersion == 0)
        return 0;
    if (shown.nVersion != m_nVersion || m_bNatural != IsNatural) {
        const DefaultFloats floats;
        m_nVersion = 0;
        Rebuild(shown);
        m_bNatural = IsNatural;
        m_nVersion = shown.nVersion;
    }
    if constexpr (IsNatural)
        m_naturalMap.Renew(shown);
    if (preparer && !preparer->Prepare(frame))
        return -1;
    FramePlanes planes = {};
    for (std::size_t i = 0; i < planes.size(); ++i)
        planes[i] = {frame.data[i], frame.linesize[i], m_layout.listRowBytes[i]};
    Draw(planes);
    return 0;
}

void FrameBurner::Draw(const FramePlanes &planes) const
{
    if (m_bNatural && m_bCover)
        m_coverInk.Draw(m_naturalMap, planes);
    else if (m_bNatural)
        m_naturalInk.Draw(planes);
    else if (m_bOpaque)
        m_opaqueInk.Draw(planes);
    else
        m_mixedInk.Draw(planes);
}

bool FrameBurner::Describe(const SubtitleFrame &frame)
{
    const double white = m_dWhite;
    if (m_bDescribed && white == m_dDescribedWhite && IsSameDescription(frame, m_description))
        return true;
    m_nVersion = 0;
    m_bDescribed = DescribeAnew(frame, white);
    return m_bDescribed;
}

bool FrameBurner::DescribeAnew(const SubtitleFrame &frame, double white)
{
    const DefaultFloats floats;
    FrameLayout layout = {};
    layout.nWidth = frame.width;
    layout.nHeight = frame.height;
    ChromaAxis::Site column = {};
    ChromaAxis::Site row = {};
    if (frame.orientation < 0 || frame.orientation > 7 || !FindPixelFormat(frame.format, layout.format) ||
        !FindSites(frame.chroma_location, layout.format.bJpeg, column, row) ||
        !m_colors.Set(layout.format, {frame.colorspace, frame.color_range, frame.color_primaries, frame.color_trc},
                      frame.width, frame.height, white))
        return false;
    const Component &chroma = layout.format.components[1];
    layout.columns = ChromaAxis(frame.width, chroma.nColumnsLog2, column, false);
    layout.rows = ChromaAxis(frame.height, chroma.nRowsLog2, row, frame.interlaced != 0);
    for (int i = 0; i < 4; ++i)
        layout.listRowBytes[i] = layout.format.RowBytes(i, frame.width);
    m_layout = layout;
    m_description = frame;
    m_dDescribedWhite = white;
    return true;
}

void FrameBurner::Rebuild(const ShownSubtitle &shown)
{
    const Orientation orientation(m_description.orientation, shown.nFrameWidth, shown.nFrameHeight);
    m_bOpaque = shown.nPictureCount == 0 && shown.nInkWeight == 255;
    if (shown.nPictureCount > 0)
        RebuildPicture(shown, orientation);
    else
        RebuildText(InkRows(shown, orientation), shown);
}

void FrameBurner::Rebuild(const NaturalSubtitle &shown)
{
    const Orientation orientation(m_description.orientation, shown.nFrameWidth, shown.nFrameHeight);
    m_naturalMap.Build(shown, orientation, m_colors);
    m_bCover = !m_naturalMap.HasPicture();
    if (m_bCover)
        m_coverInk.Build(m_naturalMap, m_layout, m_colors, shown.colors);
    else
        m_naturalInk.Build(m_naturalMap, m_layout, m_colors, shown.colors);
}

void FrameBurner::RebuildText(const InkRows &ink, const ShownSubtitle &shown)
{
    const InkFrameColors colors = {m_colors.Convert(shown.inkColors.text), m_colors.Convert(shown.inkColors.outline)};
    if (m_bOpaque)
        m_opaqueInk.Build(ink, m_layout, colors);
    else
        m_mixedInk.BuildText(ink, m_layout, m_colors, colors, shown.nInkWeight);
}

void FrameBurner::RebuildPicture(const ShownSubtitle &shown, const Orientation &orientation)
{
    m_map.Build(shown, orientation);
    m_listColors.clear();
    for (const auto &rgb : m_map.Colors()) {
        m_listColors.push_back(m_colors.Convert(rgb));
        // Text that the frame's edge cuts off arrives as a picture. Where all pixels are opaque, chroma is the mean of
        // rounded code values, as it is for other opaque text.
        if (m_map.IsOpaque())
            m_listColors.back().Round();
    }
    m_mixedInk.BuildPicture(m_map, m_layout, m_colors, m_listColors);
}
