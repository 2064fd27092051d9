#include "printable.h"

#include <cstdint>
#include <cwchar>

extern "C" {
#include <libavutil/avstring.h>
}

namespace
{

bool IsControl(int32_t nCode)
{
    const bool bAsciiOrLatin = nCode < 0x20 || (nCode >= 0x7f && nCode < 0xa0);
    const bool bSeparator = nCode == 0x2028 || nCode == 0x2029;
    const bool bDirection = (nCode >= 0x202a && nCode <= 0x202e) || (nCode >= 0x2066 && nCode <= 0x2069);
    return bAsciiOrLatin || bSeparator || bDirection;
}

/** Calls a function with the code and the bytes of each valid character. */
template <typename Function>
void ForEachCharacter(const std::string &strText, const Function &function)
{
    const auto *pNext = reinterpret_cast<const uint8_t *>(strText.data());
    const uint8_t *pEnd = pNext + strText.size();
    while (pNext < pEnd) {
        const uint8_t *pCharacter = pNext;
        int32_t nCode = 0;
        if (av_utf8_decode(&nCode, &pNext, pEnd, 0) >= 0)
            function(nCode, std::string(pCharacter, pNext));
    }
}

} // namespace

std::string Printable(const std::string &strText)
{
    std::string strPrintable;
    ForEachCharacter(strText, [&](int32_t nCode, const std::string &strCharacter) {
        if (!IsControl(nCode))
            strPrintable += strCharacter;
    });
    return strPrintable;
}

int WidthOf(const std::string &strText)
{
    int nWidth = 0;
    ForEachCharacter(strText, [&](int32_t nCode, const std::string & /*strCharacter*/) {
        const int nColumns = wcwidth(static_cast<wchar_t>(nCode));
        nWidth += nColumns < 0 ? 1 : nColumns;
    });
    return nWidth;
}
