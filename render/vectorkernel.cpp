#include "render/blendkernel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Highway includes this file once for each instruction set, with another namespace and vector size each time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "render/vectorkernel.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace
{
namespace HWY_NAMESPACE
{

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const BlendKernel &Kernel()
{
    return PortableKernel();
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// A block is two halves of five pixels. A half takes 16 bytes of a vector, the last of which is not drawn.
constexpr std::size_t HalfPixels = BlockPixels / 2;
constexpr std::size_t HalfBytes = BlockBytes / 2;
constexpr std::size_t HalfSize = 16;

#undef SUBTITLE_BOTH_HALVES
#define SUBTITLE_BOTH_HALVES (HWY_ARCH_X86 && HWY_MAX_BYTES >= 32)
constexpr std::size_t VectorSize = SUBTITLE_BOTH_HALVES ? 2 * HalfSize : HalfSize;

using HalfTag = hn::FixedTag<std::uint8_t, HalfSize>;
using Tag = hn::FixedTag<std::uint8_t, VectorSize>;
using WideTag = hn::Repartition<std::uint16_t, Tag>;
using Vector = hn::Vec<Tag>;
using WideVector = hn::Vec<WideTag>;

/** One value for each byte of a block. */
struct Table {
    alignas(VectorSize) std::array<std::uint8_t, 2 * HalfSize> bytes;

    /** @param half  the half of the block, 0 or 1, that the vector begins with */
    Vector At(std::size_t half) const { return hn::Load(Tag(), bytes.data() + half * HalfSize); }
};

/**
 * @param value  value(pixel, byte of the pixel) returns that of a byte. @param last  value of the last byte of each
 *               half
 */
template <typename Value>
constexpr Table MakeTable(Value value, std::uint8_t last)
{
    Table table = {};
    for (std::size_t half = 0; half < 2; ++half) {
        for (std::size_t i = 0; i < HalfBytes; ++i)
            table.bytes[half * HalfSize + i] = static_cast<std::uint8_t>(value(half * HalfPixels + i / 3, i % 3));
        table.bytes[half * HalfSize + HalfBytes] = last;
    }
    return table;
}

constexpr Table PixelOf = MakeTable([](std::size_t pixel, std::size_t) { return pixel; }, BlockPixels);
constexpr Table OtherEndOf =
    MakeTable([](std::size_t pixel, std::size_t byte) { return pixel % HalfPixels * 3 + 2 - byte; }, HalfBytes);
// Byte and bit of each pixel in a 16-bit mask. The last byte of each half has a bit that is never set.
constexpr Table MaskByteOf = MakeTable([](std::size_t pixel, std::size_t) { return pixel / 8; }, 1);
constexpr Table MaskBitOf = MakeTable([](std::size_t pixel, std::size_t) { return 1U << pixel % 8; }, 0x80);

inline Vector LoadHalves(const std::uint8_t *block, [[maybe_unused]] std::size_t half)
{
#if SUBTITLE_BOTH_HALVES
    return hn::Combine(Tag(), hn::LoadU(HalfTag(), block + HalfBytes), hn::LoadU(HalfTag(), block));
#else
    return hn::LoadU(Tag(), block + half * HalfBytes);
#endif
}

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SSE2 // SSE2 lacks the first instruction

// Highway 1.0 does not offer these two instructions. The fastest of four ways to mix without them took 10 % longer for
// ink and 6 % longer for pictures (Intel Xeon, AVX2, frame in the cache).

/** values[0] * weights[0] + values[1] * weights[1] for each pair of bytes. A pair's weights must add up to 255. */
inline WideVector SumPairs(Vector values, Vector weights)
{
    // The instruction takes the values as signed bytes: subtract 128 from each here, and add 128 * 255 to the sum.
    const Vector lowered = hn::Xor(values, hn::Set(Tag(), 128));
#if SUBTITLE_BOTH_HALVES
    const WideVector sum{_mm256_maddubs_epi16(weights.raw, lowered.raw)};
#else
    const WideVector sum{_mm_maddubs_epi16(weights.raw, lowered.raw)};
#endif
    return hn::Add(sum, hn::Set(WideTag(), 128 * 255));
}

/** Narrows numbers up to 255 to bytes: the reverse of interleaving with zeros. */
inline Vector Pack(WideVector lower, WideVector upper)
{
#if SUBTITLE_BOTH_HALVES
    return Vector{_mm256_packus_epi16(lower.raw, upper.raw)};
#else
    return Vector{_mm_packus_epi16(lower.raw, upper.raw)};
#endif
}

#else

inline WideVector SumPairs(Vector values, Vector weights)
{
    const auto first = [](Vector v) HWY_ATTR { return hn::And(hn::BitCast(WideTag(), v), hn::Set(WideTag(), 255)); };
    const auto second = [](Vector v) HWY_ATTR { return hn::ShiftRight<8>(hn::BitCast(WideTag(), v)); };
    return hn::Add(hn::Mul(first(values), first(weights)), hn::Mul(second(values), second(weights)));
}

inline Vector Pack(WideVector lower, WideVector upper)
{
    const hn::Half<Tag> half;
    const hn::RebindToSigned<WideTag> from;
    return hn::Combine(Tag(), hn::DemoteTo(half, hn::BitCast(from, upper)),
                       hn::DemoteTo(half, hn::BitCast(from, lower)));
}

#endif

/** x / 255, truncated, for x < 65,535. */
inline WideVector DivideBy255(WideVector x)
{
    return hn::MulHigh(hn::Add(x, hn::Set(WideTag(), 1)), hn::Set(WideTag(), 257));
}

inline Vector MixBytes(Vector pixels, Vector colors, Vector weights, std::size_t half)
{
    const Vector old = hn::TableLookupBytes(pixels, OtherEndOf.At(half));
    const Vector rest = hn::Not(weights);
    const WideVector lower =
        SumPairs(hn::InterleaveLower(Tag(), old, colors), hn::InterleaveLower(Tag(), rest, weights));
    const WideVector upper =
        SumPairs(hn::InterleaveUpper(Tag(), old, colors), hn::InterleaveUpper(Tag(), rest, weights));
    return Pack(DivideBy255(lower), DivideBy255(upper));
}

/** Selects the bytes of the pixels whose bits are set. */
inline auto InMask(std::uint16_t mask, std::size_t half)
{
    const Vector bits = hn::BitCast(Tag(), hn::Set(WideTag(), mask));
    return hn::TestBit(hn::TableLookupBytes(bits, MaskByteOf.At(half)), MaskBitOf.At(half));
}

struct InkTables {
    Table text;
    Table outline;

    explicit InkTables(const InkColors &colors) : text(TableOf(colors.text)), outline(TableOf(colors.outline)) {}

    static Table TableOf(const std::array<std::uint8_t, 3> &color)
    {
        return MakeTable([&color](std::size_t, std::size_t byte) { return color[byte]; }, 0);
    }

    Vector Colors(const InkBlock &block, std::size_t half) const
    {
        return hn::IfThenElse(InMask(block.nText, half), text.At(half), outline.At(half));
    }
};

struct WriteInk {
    InkTables ink;

    Vector Draw(Vector pixels, const InkBlock &block, std::size_t half) const
    {
        return hn::IfThenElse(InMask(block.nShown, half), ink.Colors(block, half), pixels);
    }
};

struct MixInk {
    InkTables ink;
    std::uint8_t weight;

    Vector Draw(Vector pixels, const InkBlock &block, std::size_t half) const
    {
        const Vector mixed = MixBytes(pixels, ink.Colors(block, half), hn::Set(Tag(), weight), half);
        return hn::IfThenElse(InMask(block.nShown, half), mixed, pixels);
    }
};

struct MixColors {
    std::uint8_t untouched;

    Vector Draw(Vector pixels, const PictureBlock &block, std::size_t half) const
    {
        const Vector weights = hn::TableLookupBytes(hn::LoadDup128(Tag(), block.weights.data()), PixelOf.At(half));
        const Vector mixed = MixBytes(pixels, LoadHalves(block.colors.data(), half), weights, half);
        return hn::IfThenElse(hn::Eq(weights, hn::Set(Tag(), untouched)), pixels, mixed);
    }
};

template <typename Drawing, typename Block>
inline void DrawBlock(std::uint8_t *pixels, const Drawing &drawing, const Block &block)
{
#if SUBTITLE_BOTH_HALVES
    const Vector drawn = drawing.Draw(LoadHalves(pixels, 0), block, 0);
    const auto left = hn::LowerHalf(HalfTag(), drawn);
    const auto right = hn::UpperHalf(HalfTag(), drawn);
#else
    const auto left = drawing.Draw(LoadHalves(pixels, 0), block, 0);
    const auto right = drawing.Draw(LoadHalves(pixels, 1), block, 1);
#endif
    hn::StoreU(left, HalfTag(), pixels);
    // Two stores of 8 bytes: one of 16 would overlap the next block, and its load would have to wait for the store.
    const hn::Half<HalfTag> partTag;
    hn::StoreU(hn::LowerHalf(partTag, right), partTag, pixels + HalfBytes);
    const auto rest = hn::ShiftRightBytes<HalfBytes - 8>(HalfTag(), right);
    hn::StoreU(hn::LowerHalf(partTag, rest), partTag, pixels + BlockBytes - 8);
}

template <typename Block, typename Drawing>
inline void DrawBlocks(BlendTarget target, const Block *blocks, std::size_t count, const Drawing &drawing)
{
    // Decoded frames are no longer in the caches, and their rows are too far apart for the processor's own prefetching.
    constexpr std::size_t Ahead = 64;
    for (std::size_t n = 0; n < count; ++n) {
        if (n + Ahead < count)
            __builtin_prefetch(target.At(blocks[n + Ahead].nRow, blocks[n + Ahead].nColumn), 1);
        std::uint8_t *pixels = target.At(blocks[n].nRow, blocks[n].nColumn);
        if (target.nWidth - blocks[n].nColumn > BlockPixels) {
            DrawBlock(pixels, drawing, blocks[n]);
        } else {
            std::array<std::uint8_t, BlockBytes + 1> copy = {};
            const std::size_t bytes = 3 * static_cast<std::size_t>(target.nWidth - blocks[n].nColumn);
            std::memcpy(copy.data(), pixels, bytes);
            DrawBlock(copy.data(), drawing, blocks[n]);
            std::memcpy(pixels, copy.data(), bytes);
        }
    }
}

void Write(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors)
{
    DrawBlocks(target, blocks, count, WriteInk{InkTables(colors)});
}

void Mix(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors, int weight)
{
    DrawBlocks(target, blocks, count, MixInk{InkTables(colors), static_cast<std::uint8_t>(weight)});
}

void MixPicture(const BlendTarget &target, const PictureBlock *blocks, std::size_t count, int untouched)
{
    DrawBlocks(target, blocks, count, MixColors{static_cast<std::uint8_t>(untouched)});
}

constexpr BlendKernel Vectors = {Write, Mix, MixPicture};

const BlendKernel &Kernel()
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

const BlendKernel &BestKernel()
{
    return HWY_DYNAMIC_DISPATCH(Kernel)();
}

#endif
