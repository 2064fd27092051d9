// The input's front is a program stream; from its end come a canvas and the sizes of the buffers that hold the stream.
#include "fuzzsupport.h"
#include "support/decoderpair.h"
#include "support/plainstream.h"
#include "vobsub/psstream.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace
{

/** Walks bytes, in memory that is no longer than they are, and the plain walk's payloads beside them. */
void Walk(DecoderPair &decoders, const DecoderPair::Bytes &bytes)
{
    DecoderPair::Bytes exact(bytes);
    DecodePSStream(exact.data(), static_cast<int>(exact.size()));
    Require(exact == bytes, "the stream is only read");
    for (const auto &payload : PlainPayloads(bytes))
        decoders.m_plain.Decode(payload.data(), static_cast<int>(payload.size()));
    Require(decoders.IsSame(), "the decoders agree");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    constexpr int MostSide = 64;
    constexpr int MostBuffers = 8;
    constexpr std::size_t MostBytes = 4096;
    FuzzedDataProvider input(pData, nSize);
    DecoderPair decoders;
    const int nWidth = input.ConsumeIntegralInRange(0, MostSide);
    Require(decoders.Init(nWidth, input.ConsumeIntegralInRange(0, MostSide)) == 1, "setting up is always 1");
    const int nBuffers = input.ConsumeIntegralInRange(0, MostBuffers);
    for (int n = 0; n < nBuffers; ++n)
        Walk(decoders, input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, MostBytes)));
    Walk(decoders, input.ConsumeRemainingBytes<std::uint8_t>());
    return 0;
}
