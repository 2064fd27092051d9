#pragma once

#include <ass/ass.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/** Whether the processor can run the functions of this header. */
inline bool CanBlend()
{
    return __builtin_cpu_supports("avx2");
}

/** Blends the images that libass lists, one by one, into a packed RGB frame. */
void BlendList(const ASS_Image *list, std::uint8_t *frame, int frameWidth);

/**
 * A list merged into one picture, of which only visible blocks are kept. Blends the same list faster the next times.
 */
class MergedList
{
public:
    /** @param frameWidth  width of the frames; images must be more than a block away from the right edge */
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
    std::vector<std::uint8_t> m_listRests;  ///< weight of the frame's own byte
};
