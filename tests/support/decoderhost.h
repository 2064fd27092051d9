#pragma once

#include "support/blendoracle.h"
#include "support/childprocess.h"
#include "support/plaincanvas.h"
#include "support/vobsubpair.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/* Runs hosts as processes of their own that show a picture on 24 x 40 pixels, and computes what they must write. */

namespace decoderhost
{

using Bytes = std::vector<std::uint8_t>;

constexpr int Width = 24;
constexpr int Height = 40;

/** A unit that uses all four pixel codes. */
inline PictureUnit Unit()
{
    PictureUnit unit = PictureUnit::Filled(3, 4, 17, 9);
    for (std::size_t i = 0; i < unit.listPixels.size(); ++i)
        unit.listPixels[i] = i * i / 5 % 4;
    unit.nColours = 0x9A72;
    unit.nContrasts = 0xF5C0;
    return unit;
}

/** A black frame with the unit blended in. */
inline Bytes FramePlainly(const VobSubPair &pair)
{
    const Bytes image = PlainCanvas(Width, Height).Draw(Unit(), pair.palette).Image();
    Bytes frame(static_cast<std::size_t>(Width) * Height * 3);
    BlendPlainly(frame.data(), 3 * Width, {image.data(), 0, 0, Width, Height, Width, Height, 255, 0});
    return frame;
}

/** The host's standard output. It must exit with 0 and write nothing to standard error. */
inline Bytes Output(const char *pHost, std::vector<std::string> listArguments, const std::string &strInput = "",
                    const ChildProcess::Environment &environment = {})
{
    listArguments.insert(listArguments.begin(), pHost);
    const Outcome outcome = ChildProcess::Run(listArguments, strInput, environment);
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    return {outcome.strOut.begin(), outcome.strOut.end()};
}

} // namespace decoderhost
