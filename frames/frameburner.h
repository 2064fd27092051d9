#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/inkrows.h"
#include "frames/libsubtitleframe.h"
#include "frames/mixedink.h"
#include "frames/opaqueink.h"
#include "frames/pixelmap.h"
#include "render/shownsubtitle.h"

#include <atomic>
#include <cstdint>
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
    /** 1 when Burn() would draw, 0 when not, -1 when the image cannot be built. */
    int IsDue();

private:
    class Visitor;
    int BurnShown(const ShownSubtitle &shown, SubtitleFrame frame, Preparer *preparer);
    bool Describe(const SubtitleFrame &frame);
    bool DescribeAnew(const SubtitleFrame &frame, double white);
    void Rebuild(const ShownSubtitle &shown);
    void RebuildText(const InkRows &ink, const ShownSubtitle &shown);
    void RebuildPicture(const ShownSubtitle &shown, const Orientation &orientation);

    VideoSubtitle &m_renderer;
    std::atomic<double> m_dWhite = ReferenceWhite;

    // Only touched with the renderer's lock held.
    SubtitleFrame m_description = {}; ///< that the rest is for; without planes
    double m_dDescribedWhite = 0;
    bool m_bDescribed = false;
    FrameLayout m_layout = {};
    FrameColors m_colors;
    std::uint64_t m_nVersion = 0; ///< of what is kept; 0 when nothing is
    bool m_bOpaque = false;
    PixelMap m_map;
    std::vector<FrameColor> m_listColors;
    OpaqueInk m_opaqueInk;
    MixedInk m_mixedInk;
};
