// Hosts that are linked with the library and set the decoder's variables, each in a process of its own.
#include "support/decoderhost.h"
#include "support/plaindecoder.h"

using namespace decoderhost;

namespace
{

/** What a host with these settings must read. */
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

Bytes Planes(const char *pHost, int nSubtColor, int nSubtOffset, int nChromaFormat,
             const ChildProcess::Environment &environment = {})
{
    const Bytes unit = Unit().Encode();
    return Output(pHost,
                  {"planes", std::to_string(Width), std::to_string(Height), std::to_string(nSubtColor),
                   std::to_string(nSubtOffset), std::to_string(nChromaFormat)},
                  {unit.begin(), unit.end()}, environment);
}

Bytes Frame(const char *pHost, int nSubtColor, const std::string &strIndex,
            const ChildProcess::Environment &environment = {})
{
    return Output(
        pHost, {"frame", std::to_string(Width), std::to_string(Height), std::to_string(nSubtColor), strIndex, "1500"},
        "", environment);
}

// Hosts built as the compiler does by default, for a fixed address (with copy relocations of the library's variables),
// and as PIC (without any).
const char *const Probes[] = {DECODER_PROBE, DECODER_PROBE_FIXED, DECODER_PROBE_PIC};

} // namespace

TEST(DecoderHost, HaveCopiesOfVariablesOrNone)
{
    const auto hasCopy = [](const char *pHost) {
        return ChildProcess::Run({"readelf", "-rW", pHost}).strOut.find("_COPY") != std::string::npos;
    };
    EXPECT_TRUE(hasCopy(DECODER_PROBE_FIXED));
    EXPECT_FALSE(hasCopy(DECODER_PROBE_PIC));
}

TEST(DecoderHost, SettingsOfTheHostAreTheDecoders)
{
    const Bytes usual = PlanesPlainly(1, 0, 3);
    const int listSettings[][3] = {{0, 0, 3}, {1, 7, 3}, {1, 0, 1}, {0, 12, 1}};
    for (const char *pHost : Probes) {
        EXPECT_TRUE(Planes(pHost, 1, 0, 3) == usual) << pHost;
        for (const auto &[nSubtColor, nSubtOffset, nChromaFormat] : listSettings) {
            const Bytes expected = PlanesPlainly(nSubtColor, nSubtOffset, nChromaFormat);
            EXPECT_FALSE(expected == usual);
            EXPECT_TRUE(Planes(pHost, nSubtColor, nSubtOffset, nChromaFormat) == expected)
                << pHost << ' ' << nSubtColor << ' ' << nSubtOffset << ' ' << nChromaFormat;
        }
    }
}

TEST(DecoderHost, RendererUsesTheHostsSetting)
{
    const TemporaryFolder folder;
    VobSubPair pair(Width, Height, {{1000, Unit().Encode(), {}}});
    const std::string strIndex = pair.Write(folder);
    for (const char *pHost : Probes)
        EXPECT_TRUE(Frame(pHost, 1, strIndex) == FramePlainly(pair)) << pHost;
    pair.palette.fill(0xFF);
    pair.palette[0] = 0;
    for (const char *pHost : Probes)
        EXPECT_TRUE(Frame(pHost, 0, strIndex) == FramePlainly(pair)) << pHost;
}

TEST(DecoderHost, FunctionsOfTheHostAreNotTheDecoders)
{
    EXPECT_TRUE(Planes(DECODER_PROBE_OWN, 1, 0, 3) == PlanesPlainly(1, 0, 3));
    const TemporaryFolder folder;
    const VobSubPair pair(Width, Height, {{1000, Unit().Encode(), {}}});
    EXPECT_TRUE(Frame(DECODER_PROBE_OWN, 1, pair.Write(folder)) == FramePlainly(pair));
}

TEST(DecoderHost, PreloadedLibrariesDoNotComeBetween)
{
    const TemporaryFolder folder;
    const std::string strCopy = (folder.Path() / "libcopy.so").string();
    std::filesystem::copy_file(SUBTITLE_LIBRARY, strCopy);
    const std::string strOwnNames = (folder.Path() / "libownnames.so").string();
    std::filesystem::copy_file(OWN_NAMES_LIBRARY, strOwnNames);
    const VobSubPair pair(Width, Height, {{1000, Unit().Encode(), {}}});
    const std::string strIndex = pair.Write(folder);
    for (const char *pHost : Probes) {
        EXPECT_TRUE(Planes(pHost, 0, 7, 1, {{"LD_PRELOAD", strCopy}}) == PlanesPlainly(0, 7, 1)) << pHost;
        EXPECT_TRUE(Frame(pHost, 1, strIndex, {{"LD_PRELOAD", strCopy}}) == FramePlainly(pair)) << pHost;
    }
    // The dynamic linker warns that the preloaded variables have other sizes. (In a host without copies it would use
    // them in place of the library's.)
    const Outcome outcome = ChildProcess::Run(
        {DECODER_PROBE_FIXED, "frame", std::to_string(Width), std::to_string(Height), "1", strIndex, "1500"}, "",
        {{"LD_PRELOAD", strOwnNames}});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_NE(outcome.strError.find("Symbol `mediadata' has different size"), std::string::npos);
    EXPECT_TRUE(Bytes(outcome.strOut.begin(), outcome.strOut.end()) == FramePlainly(pair));
}
