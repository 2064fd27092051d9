#include "render/textbitmap.h"

#include <cstring>

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

constexpr std::size_t PaletteSize = 1024; ///< 256 words of 32 bits

/** Palette indexes; 0 is transparent. */
constexpr uint8_t TextIndex = 1;
constexpr uint8_t OutlineIndex = 2;

constexpr quint32 OpaqueBlack = 0xFF000000;

void WriteIndexes(uint8_t *indexes, const QImage &image, const QRect &rcText, quint32 fontColor)
{
    const auto *pixels = reinterpret_cast<const quint32 *>(image.constBits());
    const qint64 count = static_cast<qint64>(image.width()) * image.height();
    for (int row = 0; row < rcText.height(); ++row) {
        const qint64 first = static_cast<qint64>(row) * image.width() + rcText.left();
        for (qint64 place = first; place < first + rcText.width(); ++place, ++indexes) {
            const quint32 pixel = place >= 0 && place < count ? pixels[place] : 0;
            // Intentional: the transparent background also gets the outline's index, as it is not opaque black.
            if (pixel == fontColor)
                *indexes = TextIndex;
            else if (pixel != OpaqueBlack)
                *indexes = OutlineIndex;
        }
    }
}

/**
 * Writes a palette entry: alpha << 24 | Y << 16 | U << 8 | V on a little-endian host, by the 8-bit integer form of
 * ITU-R BT.601 with limited range. Intentional: blue and red are exchanged, since the bytes are taken in memory order,
 * blue first.
 */
void WritePaletteEntry(uint8_t *entry, quint32 color, quint8 alpha)
{
    std::memcpy(entry, &color, sizeof(color));
    const int b0 = entry[0];
    const int b1 = entry[1];
    const int b2 = entry[2];
    entry[2] = static_cast<uint8_t>(((66 * b0 + 129 * b1 + 25 * b2 + 128) >> 8) + 16);
    // Flipping the top bit of the low byte adds the offset of 128.
    entry[1] = static_cast<uint8_t>(((-38 * b0 - 74 * b1 + 112 * b2 + 128) >> 8) ^ 0x80);
    entry[0] = static_cast<uint8_t>(((112 * b0 - 94 * b1 - 18 * b2 + 128) >> 8) ^ 0x80);
    entry[3] = alpha;
}

} // namespace

void FreeTextBitmap(AVPicture &out)
{
    av_freep(&out.data[0]);
    av_freep(&out.data[1]);
}

bool CreateTextBitmap(AVPicture &out, const QImage &image, const QRect &rcText, const BitmapColors &colors)
{
    FreeTextBitmap(out);
    out.data[0] = static_cast<uint8_t *>(
        av_calloc(static_cast<std::size_t>(rcText.width()), static_cast<std::size_t>(rcText.height())));
    out.data[1] = static_cast<uint8_t *>(av_mallocz(PaletteSize));
    if (!out.data[0] || !out.data[1]) {
        FreeTextBitmap(out);
        return false;
    }
    out.linesize[0] = rcText.width();
    WriteIndexes(out.data[0], image, rcText, colors.nFontColor);
    WritePaletteEntry(out.data[1] + TextIndex * sizeof(quint32), colors.nFontColor, colors.nAlpha);
    WritePaletteEntry(out.data[1] + OutlineIndex * sizeof(quint32), colors.nOutlineColor, colors.nAlpha);
    return true;
}
