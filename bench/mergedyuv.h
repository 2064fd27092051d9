#pragma once

#include <ass/ass.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/** 4:2:0 formats that lists of libass are blended into, in limited range and BT.709. */
enum class YuvFormat { Yuv420p, Nv12, P010 };

/** The planes of a frame; nv12 and p010 use the first two. */
struct YuvPlanes {
    std::array<std::uint8_t *, 3> data;
    std::array<std::ptrdiff_t, 3> linesize; ///< in bytes
};

/**
 * A list merged into one picture in the frame's format, as a good player does it once per change: luma with the weight
 * of each pixel, chroma with the mean weight of its four pixels, both premultiplied. Only visible blocks are kept.
 * Needs AVX2.
 */
class MergedYuv
{
public:
    /** @param width  of the frames, a multiple of 64. @param height  even */
    MergedYuv(YuvFormat format, int width, int height);

    void Merge(const ASS_Image *list);
    void Blend(const YuvPlanes &frame) const;

private:
    static constexpr std::size_t Block = 32; ///< bytes

    struct Run {
        std::size_t nRow;
        std::size_t nPlace; ///< first byte in the row
        std::size_t nFirst; ///< in listOwn and listRests
        std::size_t nBytes;
        bool bOpaque;
    };
    /**
     * What is drawn into a plane. 16-bit samples are kept with 15 bits, so that one instruction multiplies and rounds.
     */
    struct Layer {
        std::vector<Run> listRuns;
        std::vector<std::uint8_t> listOwn;   ///< premultiplied
        std::vector<std::uint8_t> listRests; ///< weight of the frame's own sample, of 255 or 32767
    };
    /** A row that is being merged, with 15 bits per sample. */
    struct Row {
        std::vector<std::int16_t> listOwn;
        std::vector<std::int16_t> listRests;
        void Clear(int from, int to);
    };
    struct Color;

    void MergeRows(const ASS_Image *list, int row);
    void CoverRows(const ASS_Image &image, int row);
    /** Appends the visible blocks of a plane's row. With @p second, samples of the two rows alternate. */
    void AppendRow(Layer &layer, int row, const Row &first, const Row *second);
    void KeepBlocks(Layer &layer, int row, std::size_t place, std::size_t bytes);

    YuvFormat m_format;
    int m_nWidth;
    int m_nHeight;
    int m_nLeft = 0; ///< columns that the list covers, extended to whole blocks of each plane
    int m_nRight = 0;
    std::array<Layer, 3> m_listLayers; ///< by plane
    std::array<std::vector<std::uint8_t>, 2> m_listMasks;
    std::array<Row, 2> m_listLuma;
    std::array<Row, 2> m_listChroma; ///< U and V, with the same rests
    std::vector<std::uint8_t> m_listOwn;
    std::vector<std::uint8_t> m_listRests;
};
