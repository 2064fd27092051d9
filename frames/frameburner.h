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

/** Luminance of the subtitle's white on PQ and HLG frames in cd/m2: reference white of ITU-R BT.2408. */
constexpr double ReferenceWhite = 203;

/**
 * A burner of libsubtitleframe.h. Caches the subtitle in the last frame's format. Calls may throw std::bad_alloc, which
 * leaves the frame unchanged.
 */
class FrameBurner
{
public:
    /** Makes a frame's planes writable just before something is drawn. */
    class Preparer
    {
    public:
        /** @return false if that failed; the frame is unchanged then. */
        virtual bool Prepare(SubtitleFrame &frame) = 0;

    protected:
        ~Preparer() = default;
    };

    explicit FrameBurner(VideoSubtitle &renderer) : m_renderer(renderer) {}

    /** @param preparer  may be null if the planes are writable. */
    int Burn(const SubtitleFrame &frame, Preparer *preparer);
    int SetWhite(double level);
    int SetLook(int look);
    int SetOutline(double width);
    int SetSafeArea(double percent);
    int SetPixelAspect(int width, int height);
    int SetTakenRows(const SubtitleRows *rows, int count);
    /** @return 1 if Burn() would draw, 0 if not, -1 if the subtitle's image cannot be built. */
    int IsDue();
    /** As IsDue(). @param rows  rows of the displayed picture that Burn() would change; none if it would not draw. */
    int FindRows(SubtitleRows &rows);

private:
    class Visitor;
    class LookVisitor;
    /** @param shown  a ShownSubtitle or a NaturalSubtitle. */
    template <typename Shown>
    int BurnShown(const Shown &shown, SubtitleFrame frame, Preparer *preparer);
    NaturalSettings Settings() const;
    /** Calls a visitor with the subtitle that is due, in the look that is set. */
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
    mutable std::mutex m_takenMutex; ///< guards the next two members
    TakenRows m_taken;
    std::vector<SubtitleRows> m_listGivenRows; ///< what m_taken was made of, so that the same rows cost nothing again

    // Guarded by the renderer's lock.
    SubtitleFrame m_description = {}; ///< format that the members below are for; its planes are not used
    double m_dDescribedWhite = 0;
    bool m_bDescribed = false;
    FrameLayout m_layout = {};
    FrameColors m_colors;
    std::uint64_t m_nVersion = 0; ///< of the cached subtitle; 0 if none is cached
    bool m_bNatural = false;      ///< the cached subtitle is in the natural look
    bool m_bCover = false;        ///< in the natural look: text only, drawn by m_coverInk
    bool m_bOpaque = false;
    PixelMap m_map;
    std::vector<FrameColor> m_listColors;
    OpaqueInk m_opaqueInk;
    MixedInk m_mixedInk;
    NaturalMap m_naturalMap;
    CoverInk m_coverInk;
    NaturalInk m_naturalInk;
};
