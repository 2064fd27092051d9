// The input is a SubRip file.
#include "support/plainsrt.h"
#include "textfile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    const std::string bytes = ToString(pData, nSize);
    const std::string strFile = FuzzHost::Get().Write("input.srt", bytes);
    OpenAsPlain(strFile, ReadSrtPlainly(FileLines(bytes)));
    return 0;
}
