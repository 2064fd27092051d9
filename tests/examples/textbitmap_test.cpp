#include "examplestest.h"

#include "libsubtitle.h"

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

/** The expected PBM picture, built from TextToBmp(). */
std::string ShapeOf(const char *pText)
{
    void *pSubtitle = CreateVideoSubtitle(640, 360);
    AVPicture bitmap = {};
    int rect[4] = {};
    EXPECT_EQ(TextToBmp(pSubtitle, pText, &bitmap, rect), 0);
    const int nWidth = rect[2];
    const int nHeight = rect[3];
    std::string strPicture = "P4\n" + std::to_string(nWidth) + " " + std::to_string(nHeight) + "\n";
    const std::size_t nHeader = strPicture.size();
    const int nRowBytes = (nWidth + 7) / 8;
    strPicture.append(static_cast<std::size_t>(nRowBytes) * nHeight, '\0');
    int nInk = 0;
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            if (bitmap.data[0][y * nWidth + x] != 1)
                continue;
            ++nInk;
            strPicture[nHeader + y * nRowBytes + x / 8] |= static_cast<char>(128 >> (x % 8));
        }
    }
    EXPECT_GT(nInk, 0);
    av_freep(&bitmap.data[0]);
    av_freep(&bitmap.data[1]);
    DestroyVideoSubtitle(pSubtitle);
    return strPicture;
}

} // namespace

TEST(TextBitmap, WritesTheShapeOfAText)
{
    for (const char *pText : {"Hello", "Two\nlines", "Ещё", "."}) {
        const Outcome outcome = ChildProcess::Run({TEXTBITMAP, pText});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_EQ(outcome.strOut, ShapeOf(pText));
    }
}

TEST(TextBitmap, NeedsAText)
{
    const Outcome outcome = ChildProcess::Run({TEXTBITMAP});
    EXPECT_EQ(outcome.nExit, 1);
    EXPECT_EQ(outcome.strError, "usage: textbitmap TEXT\n");
}
