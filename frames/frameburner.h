#pragma once

#include "frames/coverink.h"
#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/inkrows.h"
#include "frames/libsubtitleframe.h"
#include "frames/mixedink.h"
#include "frames/naturalink.h"
#include "frames/naturalmap.h"
#include "frames/opaqueink.h"
#include "frames/pixelmap.h"
#include "render/naturalsubtitle.h"
#include "render/shownsubtitle.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

class VideoSubtitle;

/** Level of white on PQ and HLG frames in cd/m2: ITU-R BT.2408, reference white. */
constexpr double ReferenceWhite = 203;

/**
 * The burner of libsubtitleframe.h. It keeps the subtitle in the format of the last frame. Operations may throw
 * std::bad_alloc, with the frame untouched.
 */
class FrameBurner
{
public:
    /** Gives a frame planes that may be written; false, with the frame as it was, when there are none to be had. */
    class Preparer
    {
    public:
        virtual bool Prepare(SubtitleFrame &frame) = 0;

    protected:
        ~Preparer() = default;
    };

    explicit FrameBurner(VideoSubtitle &renderer) : m_renderer(renderer) {}

    /** @param preparer  called before anything is drawn; may be null. */
    int Burn(const SubtitleFrame &frame, Preparer *preparer);
    int SetWhite(double level);
    int SetLook(int look);
    int SetOutline(double width);
    int SetSafeArea(double percent);
    int SetPixelAspect(int width, int height);
    int SetTakenRows(const SubtitleRows *rows, int count);
    /** 1 when Burn() would draw, 0 when not, -1 when the image cannot be built. */
    int IsDue();
    /** The same, with the rows that it would draw to, of the picture as it is shown; 0 of them when not. */
    int FindRows(SubtitleRows &rows);

private:
    class Visitor;
    class LookVisitor;
    /** What is due, with nVersion and the frame's size as in ShownSubtitle. */
    template <typename Shown>
    int BurnShown(const Shown &shown, SubtitleFrame frame, Preparer *preparer);
    NaturalSettings Settings() const;
    /** Has a visitor called with what shows in the look that is set. */
    int Visit(LookVisitor &visitor);
    void Draw(const FramePlanes &planes) const;
    bool Describe(const SubtitleFrame &frame);
    bool DescribeAnew(const SubtitleFrame &frame, double white);
    void Rebuild(const ShownSubtitle &shown);
    void Rebuild(const NaturalSubtitle &shown);
    void RebuildText(const InkRows &ink, const ShownSubtitle &shown);
    void RebuildPicture(const ShownSubtitle &shown, const Orientation &orientation);

    VideoSubtitle &m_renderer;
    std::atomic<double> m_dWhite = ReferenceWhite;
    std::atomic<int> m_nLook = SUBTITLE_LOOK_EXACT;
    std::atomic<double> m_dOutline = NaturalSettings().dOutline;
    std::atomic<double> m_dSafeArea = NaturalSettings().dSafeArea;
    std::atomic<double> m_dPixelAspect = NaturalSettings().dPixelAspect;
    mutable std::mutex m_takenMutex; ///< for m_taken, held to copy it only
    TakenRows m_taken;

    // Only touched with the renderer's lock held.
    SubtitleFrame m_description = {}; ///< that the rest is for; without planes
    double m_dDescribedWhite = 0;
    bool m_bDescribed = false;
    FrameLayout m_layout = {};
    FrameColors m_colors;
    std::uint64_t m_nVersion = 0; ///< of what is kept; 0 when nothing is
    bool m_bNatural = false;      ///< what is kept is in the natural look
    bool m_bCover = false;        ///< in the natural look: text alone
    bool m_bOpaque = false;
    PixelMap m_map;
    std::vector<FrameColor> m_listColors;
    OpaqueInk m_opaqueInk;
    MixedInk m_mixedInk;
    NaturalMap m_naturalMap;
    CoverInk m_coverInk;
    NaturalInk m_naturalInk;
};
