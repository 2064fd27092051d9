#include "frames/samplekernel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Highway includes this file once for each instruction set, with another namespace and vector size each time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frames/vectorsamplekernel.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace
{
namespace HWY_NAMESPACE
{

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const SampleKernel &Kernel()
{
    return PortableSampleKernel();
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::CappedTag<std::uint8_t, InkBytes>;
using WideTag = hn::CappedTag<std::uint16_t, MeanSamples>;

/**
 * Calls @p draw(block, bytes) for each block, with the address of its first byte in each plane. From there @p Size
 * bytes may be read and written; if the row ends before that, the address is that of a copy. The planes have the same
 * size.
 */
template <std::size_t Size, std::size_t Planes, typename Block, typename Offset, typename Draw>
inline void ForBlocks(const PlaneTarget *planes, const Block *blocks, std::size_t count, Offset offset, Draw draw)
{
    // Decoded frames are no longer in the caches, and rows are too far apart for the hardware prefetcher. Into the second
    // cache, as the first has only a few lines under way at a time: on an AMD EPYC, that takes a quarter of the time off.
    constexpr std::size_t Ahead = 48;
    for (std::size_t n = 0; n < count; ++n) {
        std::array<std::uint8_t *, Planes> bytes;
        for (std::size_t plane = 0; plane < Planes; ++plane) {
            if (n + Ahead < count)
                __builtin_prefetch(planes[plane].Row(blocks[n + Ahead].nRow) + offset(blocks[n + Ahead]), 1, 2);
            bytes[plane] = planes[plane].Row(blocks[n].nRow) + offset(blocks[n]);
        }
        const std::ptrdiff_t inRow = planes[0].nRowBytes - offset(blocks[n]);
        if (inRow >= static_cast<std::ptrdiff_t>(Size)) {
            draw(blocks[n], bytes);
            continue;
        }
        std::array<std::array<std::uint8_t, Size>, Planes> copies = {};
        std::array<std::uint8_t *, Planes> copied;
        for (std::size_t plane = 0; plane < Planes; ++plane) {
            copied[plane] = copies[plane].data();
            std::memcpy(copied[plane], bytes[plane], inRow);
        }
        draw(blocks[n], copied);
        for (std::size_t plane = 0; plane < Planes; ++plane)
            std::memcpy(bytes[plane], copied[plane], inRow);
    }
}

/** For each byte of a block, where in a mask the bit of its pixel is. */
struct BitPlaces {
    alignas(InkBytes) std::array<std::uint8_t, InkBytes> byteOf, bitOf;

    explicit BitPlaces(int pixelBytes)
    {
        for (std::size_t i = 0; i < InkBytes; ++i) {
            const std::size_t pixel = i / pixelBytes;
            byteOf[i] = static_cast<std::uint8_t>(pixel / 8);
            bitOf[i] = static_cast<std::uint8_t>(1U << pixel % 8);
        }
    }

    /** Selects, from byte @p i on, the bytes of pixels whose bit is set. */
    template <typename Tag>
    auto Mask(Tag tag, std::uint64_t bits, std::size_t i) const
    {
        const auto all = hn::BitCast(tag, hn::Set(hn::Repartition<std::uint64_t, Tag>(), bits));
        return hn::TestBit(hn::TableLookupBytes(all, hn::Load(tag, &byteOf[i])), hn::Load(tag, &bitOf[i]));
    }
};

void Fill(const PlaneTarget &plane, const InkSamples *blocks, std::size_t count, const InkPattern &pattern)
{
    const ByteTag tag;
    const BitPlaces places(pattern.nPixelBytes);
    const InkPattern colors = pattern;
    const auto offset = [&pattern](const InkSamples &block)
                            HWY_ATTR { return std::ptrdiff_t{block.nColumn} * pattern.nPixelBytes; };
    const auto draw = [&](const InkSamples &block, const std::array<std::uint8_t *, 1> &rows) HWY_ATTR {
        std::uint8_t *bytes = rows[0];
        for (std::size_t i = 0; i < InkBytes; i += hn::Lanes(tag)) {
            const auto color = hn::IfThenElse(places.Mask(tag, block.nText, i), hn::LoadU(tag, &colors.text[i]),
                                              hn::LoadU(tag, &colors.outline[i]));
            const auto drawn = hn::IfThenElseZero(places.Mask(tag, block.nShown, i), hn::LoadU(tag, &colors.bits[i]));
            const auto kept = hn::AndNot(drawn, hn::LoadU(tag, bytes + i));
            hn::StoreU(hn::Or(kept, hn::And(drawn, color)), tag, bytes + i);
        }
    };
    ForBlocks<InkBytes, 1>(&plane, blocks, count, offset, draw);
}

/** For a block's samples from number @p sample on, the sums of the weights of their bits that are set. */
inline auto SumWeights(const MeanBits &bits, const std::array<std::uint64_t, MeanRows> &rows, const BitPlaces &places,
                       std::size_t sample)
{
    // Each sample has two bytes: one sums the weights of its first and third bit, the other those of its second and
    // fourth.
    const WideTag tag;
    const hn::Repartition<std::uint8_t, WideTag> bytes;
    auto sums = hn::Zero(bytes);
    for (int row = 0; row < bits.nRows; ++row) {
        for (int pair = 0; pair < 2; ++pair) {
            const std::uint8_t *weights = &bits.weights[row][2 * pair];
            const auto word = static_cast<std::uint16_t>(weights[0] | weights[1] << 8);
            const auto isSet = places.Mask(bytes, rows[row] >> 2 * pair, 2 * sample);
            sums = hn::Add(sums, hn::IfThenElseZero(isSet, hn::BitCast(bytes, hn::Set(tag, word))));
        }
    }
    const auto words = hn::BitCast(tag, sums);
    const auto sum = hn::Add(hn::And(words, hn::Set(tag, 0xFF)), hn::ShiftRight<8>(words));
    return hn::DemoteTo(hn::Rebind<std::uint8_t, WideTag>(), hn::BitCast(hn::RebindToSigned<WideTag>(), sum));
}

void Weigh(const MeanBits &bits, InkMeans &block)
{
    static const BitPlaces places(1);
    const hn::Rebind<std::uint8_t, WideTag> tag;
    for (std::size_t i = 0; i < MeanSamples; i += hn::Lanes(tag)) {
        const auto text = SumWeights(bits, bits.text, places, i);
        const auto shown = SumWeights(bits, bits.shown, places, i);
        hn::StoreU(text, tag, &block.text[i]);
        hn::StoreU(hn::Sub(shown, text), tag, &block.outline[i]);
    }
}

/**
 * A block's weights for elements from number @p i on; each twice if samples of the two components alternate in a row.
 */
template <bool TakeTurns>
inline auto WeightsAt(const std::array<std::uint8_t, MeanSamples> &weights, std::size_t i)
{
    const WideTag tag;
    if constexpr (TakeTurns) {
        const hn::Repartition<std::uint32_t, WideTag> pairs;
        const auto weight =
            hn::PromoteTo(pairs, hn::LoadU(hn::Rebind<std::uint8_t, decltype(pairs)>(), &weights[i / 2]));
        return hn::BitCast(tag, hn::Or(weight, hn::ShiftLeft<16>(weight)));
    } else {
        return hn::PromoteTo(tag, hn::LoadU(hn::Rebind<std::uint8_t, WideTag>(), &weights[i]));
    }
}

/** The code values of two components that alternate in a row. */
inline auto Codes(std::uint32_t even, std::uint32_t odd)
{
    return hn::BitCast(WideTag(), hn::Set(hn::Repartition<std::uint32_t, WideTag>(), even | odd << 16));
}

/** Blends chroma. @p load(bytes) returns a vector of elements, @p store(bytes, elements) writes one. */
template <std::size_t Planes, std::size_t ElementBytes, typename Load, typename Store>
inline void DrawMeans(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern,
                      Load load, Store store)
{
    const WideTag tag;
    constexpr std::size_t Elements = MeanSamples * 2 / Planes;
    const MeanPattern values = pattern;
    const auto half = hn::Set(tag, MeanWhole / 2);
    const auto max = hn::Set(tag, pattern.nMax);
    const auto others = hn::Set(tag, pattern.nOthers);
    const int shift = pattern.nShift;
    const auto offset = [](const InkMeans &block)
                            HWY_ATTR { return block.nFirst * static_cast<std::ptrdiff_t>(2 / Planes * ElementBytes); };
    const auto draw = [&](const InkMeans &block, const std::array<std::uint8_t *, Planes> &rows) HWY_ATTR {
        for (std::size_t i = 0; i < Elements; i += hn::Lanes(tag)) {
            const auto text = WeightsAt<Planes == 1>(block.text, i);
            const auto outline = WeightsAt<Planes == 1>(block.outline, i);
            const auto isKept = hn::Eq(hn::Or(text, outline), hn::Zero(tag));
            for (std::size_t plane = 0; plane < Planes; ++plane) {
                const std::size_t last = Planes == 1 ? 1 : plane;
                const auto codesOfText = Codes(values.text[plane], values.text[last]);
                const auto codesOfOutline = Codes(values.outline[plane], values.outline[last]);
                const auto meanOf = [&](auto old) HWY_ATTR {
                    // Differences may be negative. As words wrap around, the sum is right all the same.
                    const auto fromText = hn::Mul(text, hn::Sub(codesOfText, old));
                    const auto fromOutline = hn::Mul(outline, hn::Sub(codesOfOutline, old));
                    const auto fromOld = hn::Add(hn::ShiftLeft<MeanShift>(old), half);
                    return hn::ShiftRight<MeanShift>(hn::Add(fromOld, hn::Add(fromText, fromOutline)));
                };
                std::uint8_t *bytes = rows[plane] + i * ElementBytes;
                const auto element = load(bytes);
                if constexpr (ElementBytes == 1) {
                    // The sample is the whole byte, and without ink the result is the old value.
                    store(bytes, meanOf(element));
                } else {
                    const auto old = hn::And(hn::ShiftRightSame(element, shift), max);
                    const auto drawn = hn::Or(hn::And(element, others), hn::ShiftLeftSame(meanOf(old), shift));
                    store(bytes, hn::IfThenElse(isKept, element, drawn));
                }
            }
        }
    };
    ForBlocks<Elements * ElementBytes, Planes>(planes, blocks, count, offset, draw);
}

void Mean8(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern)
{
    const hn::Rebind<std::uint8_t, WideTag> tag;
    const auto load = [=](const std::uint8_t *from) HWY_ATTR { return hn::PromoteTo(WideTag(), hn::LoadU(tag, from)); };
    const auto store = [=](std::uint8_t *to, hn::Vec<WideTag> elements) HWY_ATTR {
        hn::StoreU(hn::DemoteTo(tag, hn::BitCast(hn::RebindToSigned<WideTag>(), elements)), tag, to);
    };
    if (pattern.nPlanes == 1)
        DrawMeans<1, 1>(planes, blocks, count, pattern, load, store);
    else
        DrawMeans<2, 1>(planes, blocks, count, pattern, load, store);
}

void Mean16(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern)
{
    const hn::Repartition<std::uint8_t, WideTag> tag; // hosts' rows need not be aligned
    const auto load = [=](const std::uint8_t *from) HWY_ATTR { return hn::BitCast(WideTag(), hn::LoadU(tag, from)); };
    const auto store = [=](std::uint8_t *to, hn::Vec<WideTag> elements)
                           HWY_ATTR { hn::StoreU(hn::BitCast(tag, elements), tag, to); };
    if (pattern.nPlanes == 1)
        DrawMeans<1, 2>(planes, blocks, count, pattern, load, store);
    else
        DrawMeans<2, 2>(planes, blocks, count, pattern, load, store);
}

constexpr SampleKernel Vectors = {Fill, Weigh, Mean8, Mean16};

const SampleKernel &Kernel()
{
    return Vectors;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace
{
HWY_EXPORT(Kernel);
}

const SampleKernel &BestSampleKernel()
{
    return HWY_DYNAMIC_DISPATCH(Kernel)();
}

#endif
