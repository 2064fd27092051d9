#include "commandline/printable.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cwchar>

extern "C" {
#include <libavutil/avstring.h>
}

namespace
{

const int32_t Invalid = -1;

bool IsControl(int32_t nCode)
{
    const bool bAsciiOrLatin = nCode < 0x20 || (nCode >= 0x7f && nCode < 0xa0);
    const bool bSeparator = nCode == 0x2028 || nCode == 0x2029;
    const bool bDirection = (nCode >= 0x202a && nCode <= 0x202e) || (nCode >= 0x2066 && nCode <= 0x2069);
    return bAsciiOrLatin || bSeparator || bDirection;
}

/** Calls a function with the code point and the bytes of each character; Invalid for bytes that are not UTF-8. */
template <typename Function>
void ForEachCharacter(const std::string &strText, const Function &function)
{
    const auto *pNext = reinterpret_cast<const uint8_t *>(strText.data());
    const uint8_t *pEnd = pNext + strText.size();
    while (pNext < pEnd) {
        const uint8_t *pCharacter = pNext;
        int32_t nCode = 0;
        const bool bValid = av_utf8_decode(&nCode, &pNext, pEnd, 0) >= 0;
        function(bValid ? nCode : Invalid, std::string(pCharacter, pNext));
    }
}

std::string EscapedBytes(const std::string &strBytes)
{
    std::string strText;
    for (char c : strBytes) {
        std::array<char, 8> listText{};
        (void)std::snprintf(listText.data(), listText.size(), "\\x%02x",
                            static_cast<unsigned>(static_cast<uint8_t>(c)));
        strText += listText.data();
    }
    return strText;
}

} // namespace

std::string Printable(const std::string &strText)
{
    std::string strPrintable;
    ForEachCharacter(strText, [&](int32_t nCode, const std::string &strCharacter) {
        if (nCode != Invalid && !IsControl(nCode))
            strPrintable += strCharacter;
    });
    return strPrintable;
}

std::string Escaped(const std::string &strText)
{
    std::string strEscaped;
    ForEachCharacter(strText, [&](int32_t nCode, const std::string &strCharacter) {
        strEscaped += nCode == Invalid || IsControl(nCode) ? EscapedBytes(strCharacter) : strCharacter;
    });
    return strEscaped;
}

bool IsUtf8(const std::string &strText)
{
    const auto *pNext = reinterpret_cast<const uint8_t *>(strText.data());
    const uint8_t *pEnd = pNext + strText.size();
    int32_t nCode = 0;
    while (pNext < pEnd) {
        if (av_utf8_decode(&nCode, &pNext, pEnd, 0) < 0)
            return false;
    }
    return true;
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
