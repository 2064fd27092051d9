// The input is an SSA or ASS script.
#include "support/plainass.h"
#include "textfile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    const std::string bytes = ToString(pData, nSize);
    const std::string strFile = FuzzHost::Get().Write("input.ass", bytes);
    PlainAss plain;
    plain.Read(FileLines(bytes));
    OpenAsPlain(strFile, plain.m_listItems);
    return 0;
}
