#include "support/turnedfilm.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace
{

std::uint32_t Word(const std::string &strBytes, std::size_t nPosition)
{
    std::uint32_t nWord = 0;
    for (const char c : strBytes.substr(nPosition, 4))
        nWord = nWord << 8 | static_cast<unsigned char>(c);
    return nWord;
}

std::string BytesOf(const std::string &strFile)
{
    std::ifstream input(strFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), {}};
}

/** The position of the first track's matrix. In a header of version 0, width and height follow it. */
std::size_t MatrixIn(const std::string &strBytes)
{
    const std::size_t nHeader = strBytes.find("tkhd");
    if (nHeader == std::string::npos)
        throw std::runtime_error("the film has no track");
    return nHeader + 44;
}

} // namespace

void SetFilmMatrix(const std::string &strFile, const FilmMatrix &listMatrix)
{
    std::string strBytes = BytesOf(strFile);
    const std::size_t nMatrix = MatrixIn(strBytes);
    for (std::size_t n = 0; n < 4 * listMatrix.size(); ++n)
        strBytes[nMatrix + n] = static_cast<char>(listMatrix[n / 4] >> (24 - 8 * (n % 4)) & 0xff);
    std::ofstream(strFile, std::ios::binary) << strBytes;
}

void TurnFilm(const std::string &strFile, int nDegrees)
{
    // Numbers are in 16.16, those of the last column in 2.30.
    const std::string strBytes = BytesOf(strFile);
    const std::size_t nMatrix = MatrixIn(strBytes);
    const std::uint32_t nWidth = Word(strBytes, nMatrix + 36);
    const std::uint32_t nHeight = Word(strBytes, nMatrix + 40);
    constexpr std::uint32_t One = 0x10000;
    constexpr std::uint32_t MinusOne = 0xFFFF0000;
    constexpr std::uint32_t Diagonal = 0xB505;
    constexpr std::uint32_t MinusDiagonal = 0xFFFF4AFB;
    FilmMatrix listMatrix = {0, One, 0, MinusOne, 0, 0, nHeight, 0, 0x40000000};
    if (nDegrees == 45)
        listMatrix = {Diagonal, Diagonal, 0, MinusDiagonal, Diagonal, 0, 0, 0, 0x40000000};
    else if (nDegrees == 180)
        listMatrix = {MinusOne, 0, 0, 0, MinusOne, 0, nWidth, nHeight, 0x40000000};
    else if (nDegrees == 270)
        listMatrix = {0, MinusOne, 0, One, 0, 0, 0, nWidth, 0x40000000};
    SetFilmMatrix(strFile, listMatrix);
}
