// A host in C++, built through CMake. usage: host SUBTITLES TEXT
#include "../burnt.h"

#include <array>
#include <libsubtitle.h>
#include <libsubtitle/psstream.h>
#include <libsubtitle/subtitledecoder.h>
#include <memory>
#include <vector>

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

using Renderer = std::unique_ptr<void, decltype(&DestroyVideoSubtitle)>;

bool BurnsText(const char *pFile, const char *pText)
{
    const Renderer pRenderer(CreateVideoSubtitle(WIDTH, HEIGHT), DestroyVideoSubtitle);
    const Renderer pReference(CreateVideoSubtitle(WIDTH, HEIGHT), DestroyVideoSubtitle);
    std::vector<uint8_t> listPixels(static_cast<size_t>(WIDTH) * HEIGHT * 3, BACKGROUND);
    AVPicture frame = {{listPixels.data()}, {WIDTH * 3}};
    AVPicture bitmap = {};
    std::array<int, 4> listRect{};
    if (SetSubtitleFile(pRenderer.get(), pFile, 0) != 0 || SetSubtitleTimeStamp(pRenderer.get(), 1500) != 0 ||
        ProcessSubtitleFrame(pRenderer.get(), &frame) != 0 ||
        TextToBmp(pReference.get(), pText, &bitmap, listRect.data()) != 0)
        return false;
    const int nWrong = WrongPixels(listPixels.data(), bitmap.data[0], listRect.data());
    av_freep(&bitmap.data[0]);
    av_freep(&bitmap.data[1]);
    return nWrong == 0;
}

/** Uses the functions and variables of the decoder that its two headers declare. */
bool SetsTheDecoderUp()
{
    const std::array<unsigned int, 16> listPalette{};
    std::array<unsigned char, 16> listNoPacket{};
    subtitle_init(listPalette.data(), 64, 32);
    DecodePSStream(listNoPacket.data(), static_cast<int>(listNoPacket.size()));
    const bool bCanvas = Coded_Picture_Width == 64 && Coded_Picture_Height == 32 && mediadata.plane[0] != nullptr;
    subtitle_release();
    return bCanvas;
}

} // namespace

int main(int nArguments, char **pArguments)
{
    if (nArguments != 3)
        return 2;
    return BurnsText(pArguments[1], pArguments[2]) && SetsTheDecoderUp() ? 0 : 1;
}
