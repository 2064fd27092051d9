// Hosts that are linked with the library and set the decoder's variables, each in a process of its own.
#include "support/blendoracle.h"
#include "support/childprocess.h"
#include "support/plaincanvas.h"
#include "support/plaindecoder.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include <gtest/gtest.h>

namespace
{

using Bytes = std::vector<std::uint8_t>;

constexpr int Width = 24;
constexpr int Height = 40;

/** Of all four pixel codes. */
PictureUnit Unit()
{
    PictureUnit unit = PictureUnit::Filled(3, 4, 17, 9);
    for (std::size_t i = 0; i < unit.listPixels.size(); ++i)
        unit.listPixels[i] = i * i / 5 % 4;
    unit.nColours = 0x9A72;
    unit.nContrasts = 0xF5C0;
    return unit;
}

/** What a host of these settings must read. */
Bytes PlanesPlainly(int nSubtColor, int nSubtOffset, int nChromaFormat)
{
    unsigned palette[16];
    for (unsigned k = 0; k < 16; ++k)
        palette[k] = (0xA0 + k) << 16 | (0x50 + k) << 8 | (16 * k + 1);
    PlainDecoder decoder;
    decoder.Init(palette, Width, Height);
    decoder.m_nSubtColor = nSubtColor;
    decoder.m_nSubtOffset = nSubtOffset;
    decoder.m_nChromaFormat = nChromaFormat;
    const Bytes unit = Unit().Encode();
    decoder.Decode(unit.data(), static_cast<int>(unit.size()));
    Bytes planes;
    const auto add = [&](const Bytes &plane) { planes.insert(planes.end(), plane.begin(), plane.end()); };
    for (const Bytes &plane : decoder.m_listPlanes)
        add(plane);
    decoder.WriteX();
    for (int n = 0; n < 3; ++n)
        add(decoder.m_listPlanes[n]);
    for (const Bytes &plane : decoder.m_listOut)
        add(plane);
    return planes;
}

/** The black frame with the unit. */
Bytes FramePlainly(const VobSubPair &pair)
{
    const Bytes image = PlainCanvas(Width, Height).Draw(Unit(), pair.palette).Image();
    Bytes frame(static_cast<std::size_t>(Width) * Height * 3);
    BlendPlainly(frame.data(), 3 * Width, {image.data(), 0, 0, Width, Height, Width, Height, 255, 0});
    return frame;
}

/** What the host writes; it must end well and say nothing else. */
Bytes Output(const char *pHost, std::vector<std::string> listArguments, const std::string &strInput = "")
{
    listArguments.insert(listArguments.begin(), pHost);
    const Outcome outcome = ChildProcess::Run(listArguments, strInput);
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    return {outcome.strOut.begin(), outcome.strOut.end()};
}

Bytes Planes(const char *pHost, int nSubtColor, int nSubtOffset, int nChromaFormat)
{
    const Bytes unit = Unit().Encode();
    return Output(pHost,
                  {"planes", std::to_string(Width), std::to_string(Height), std::to_string(nSubtColor),
                   std::to_string(nSubtOffset), std::to_string(nChromaFormat)},
                  {unit.begin(), unit.end()});
}

Bytes Frame(const char *pHost, int nSubtColor, const std::string &strIndex)
{
    return Output(
        pHost, {"frame", std::to_string(Width), std::to_string(Height), std::to_string(nSubtColor), strIndex, "1500"});
}

} // namespace

TEST(DecoderHost, SettingsOfTheHostAreTheDecoders)
{
    const Bytes usual = PlanesPlainly(1, 0, 3);
    EXPECT_TRUE(Planes(DECODER_PROBE, 1, 0, 3) == usual);
    const int listSettings[][3] = {{0, 0, 3}, {1, 7, 3}, {1, 0, 1}, {0, 12, 1}};
    for (const auto &[nSubtColor, nSubtOffset, nChromaFormat] : listSettings) {
        const Bytes expected = PlanesPlainly(nSubtColor, nSubtOffset, nChromaFormat);
        EXPECT_FALSE(expected == usual);
        EXPECT_TRUE(Planes(DECODER_PROBE, nSubtColor, nSubtOffset, nChromaFormat) == expected)
            << nSubtColor << ' ' << nSubtOffset << ' ' << nChromaFormat;
    }
}

TEST(DecoderHost, RendererGoesByTheHostsSetting)
{
    const TemporaryFolder folder;
    VobSubPair pair(Width, Height, {{1000, Unit().Encode(), {}}});
    const std::string strIndex = pair.Write(folder);
    EXPECT_TRUE(Frame(DECODER_PROBE, 1, strIndex) == FramePlainly(pair));
    pair.palette.fill(0xFF);
    pair.palette[0] = 0;
    EXPECT_TRUE(Frame(DECODER_PROBE, 0, strIndex) == FramePlainly(pair));
}

TEST(DecoderHost, FunctionsOfTheHostAreNotTheDecoders)
{
    EXPECT_TRUE(Planes(DECODER_PROBE_OWN, 1, 0, 3) == PlanesPlainly(1, 0, 3));
    const TemporaryFolder folder;
    const VobSubPair pair(Width, Height, {{1000, Unit().Encode(), {}}});
    EXPECT_TRUE(Frame(DECODER_PROBE_OWN, 1, pair.Write(folder)) == FramePlainly(pair));
}
