// The input begins with a sub-picture stream. From its end are taken the canvas's size, the sizes of the pieces that it
// is split into, and what a host does.
#include "fuzzsupport.h"
#include "support/decoderpair.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace
{

constexpr int UsualSide = 96;

int PickSide(FuzzedDataProvider &input)
{
    return input.ConsumeIntegralInRange(1, UsualSide);
}

void InitCanvas(DecoderPair &decoders, FuzzedDataProvider &input)
{
    const int nWidth = PickSide(input);
    const int nHeight = PickSide(input);
    int nInit = 0;
    switch (input.ConsumeIntegral<std::uint8_t>()) {
    case 1:
        nInit = decoders.Init(SUBTITLE_MAX_SIDE - nWidth + 2, nHeight % 8);
        break;
    case 2:
        nInit = decoders.Init(nWidth % 8, SUBTITLE_MAX_SIDE - nHeight + 2);
        break;
    case 3:
        nInit = decoders.Init(720, 576);
        break;
    default:
        nInit = decoders.Init(nWidth, nHeight);
        break;
    }
    Require(nInit == 1, "setting up is always 1");
}

void PlayHost(DecoderPair &decoders, FuzzedDataProvider &input)
{
    SubtitlePlanes planes = {};
    switch (input.ConsumeIntegralInRange(0, 7)) {
    case 1:
        decoders.SetHostVariables(input.ConsumeIntegralInRange(0, 1), input.ConsumeIntegralInRange(-120, 120),
                                  input.ConsumeBool() ? 1 : 3,
                                  input.ConsumeIntegralInRange(0, 2 * Coded_Picture_Width));
        break;
    case 2:
        planes = decoders.WriteX();
        Require(planes.top == mediadata.top && planes.bottom == mediadata.bottom, "the rows are those of the picture");
        break;
    case 3:
        subtitle_write(&planes);
        Require(planes.plane[3] == mediadata.plane[3], "the planes are the decoder's");
        break;
    case 4:
        decoders.DropInput();
        break;
    case 5:
        Require(Get_HalfByte() == decoders.m_plain.GetHalfByte(), "the same half byte is next");
        break;
    default:
        break;
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    FuzzedDataProvider input(pData, nSize);
    DecoderPair decoders;
    InitCanvas(decoders, input);
    // The canvases are compared after each piece, so large ones allow only a few pieces.
    const int nMostPieces = Canvas_Size() > UsualSide * UsualSide ? 5 : 300;
    for (int n = 0; n < nMostPieces && input.remaining_bytes() > 0; ++n) {
        // A size of 0 feeds all that is left, so that a plain unit is a valid input.
        const std::size_t nPiece = input.ConsumeIntegral<std::uint8_t>();
        Require(decoders.Feed(nPiece == 0 ? input.ConsumeRemainingBytes<std::uint8_t>()
                                          : input.ConsumeBytes<std::uint8_t>(nPiece - 1)) == 1,
                "decoding is always 1");
        Require(decoders.IsSame(), "the decoders agree");
        PlayHost(decoders, input);
    }
    decoders.WriteX();
    Require(decoders.IsSame(), "the decoders agree on the output planes");
    return 0;
}
