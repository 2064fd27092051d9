#pragma once

#include <ass/ass.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/** Whether the processor can run what follows. */
inline bool CanBlend()
{
    return __builtin_cpu_supports("avx2");
}

/** Blends the images that libass lists, one by one, into a packed RGB frame. */
void BlendList(const ASS_Image *list, std::uint8_t *frame, int frameWidth);

/** A list made into one picture, of which only the visible blocks are kept: the same, faster, for a list that stays. */
class MergedList
{
public:
    /** @param frameWidth  of the frames, where the pictures lie further from the right edge than a block is long. */
    void Merge(const ASS_Image *list, int frameWidth, int frameHeight);
    void Blend(std::uint8_t *frame) const;

private:
    struct Run {
        std::size_t nPlace; ///< in the frame
        std::size_t nFirst; ///< in m_listColors and m_listRests
        std::size_t nBytes;
        bool bOpaque;
    };
    std::vector<Run> m_listRuns;
    std::vector<std::uint8_t> m_listColors; ///< premultiplied
    std::vector<std::uint8_t> m_listRests;  ///< how much of the frame shows
};
