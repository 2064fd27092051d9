// The input begins with a program stream. From its end are taken the canvas's size and the sizes of the buffers that
// the stream is split into.
#include "fuzzsupport.h"
#include "support/decoderpair.h"
#include "support/plainstream.h"
#include "vobsub/psstream.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace
{

/**
 * Walks a buffer of exactly its length, and compares with a plain decoder of the payloads that the plain walk finds.
 */
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
