#include "commandline/values.h"

#include "commandline/failure.h"
#include "media/ffmpegptr.h"

extern "C" {
#include <libavutil/parseutils.h>
}

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

const int MaxSide = 16384;
const size_t MaxSideDigits = 5;
const double MaxBitrate = 1e12;
const double MaxQuality = 1000;
const double MaxOutlineWidth = 20;
const double MaxFactor = 100;
// The sum of two does not overflow, even in the finest time base.
const int64_t MaxTime = int64_t(100000) * 3600 * AV_TIME_BASE;

bool ConsistsOf(const std::string &strText, const char *pCharacters)
{
    return !strText.empty() && strText.find_first_not_of(pCharacters) == std::string::npos;
}

/** A number of pixels; 0 if the text is none or exceeds MaxSide. */
int ParseSide(const std::string &strText)
{
    if (!ConsistsOf(strText, "0123456789") || strText.size() > MaxSideDigits)
        return 0;
    const int nSide = std::stoi(strText);
    return nSide <= MaxSide ? nSide : 0;
}

[[noreturn]] void Refuse(const std::string &strOption, const std::string &strText, const std::string &strWanted)
{
    throw Failure(ExitCode::Usage, strOption + ": \"" + strText + "\" is not " + strWanted);
}

} // namespace

int ParseWhole(const std::string &strOption, const std::string &strText, int nLeast, int nMost)
{
    int nNumber = 0;
    const char *const pEnd = strText.data() + strText.size();
    const auto result = std::from_chars(strText.data(), pEnd, nNumber);
    if (result.ec != std::errc() || result.ptr != pEnd || nNumber < nLeast || nNumber > nMost)
        Refuse(strOption, strText, "a whole number from " + std::to_string(nLeast) + " to " + std::to_string(nMost));
    return nNumber;
}

double ParseQuality(const std::string &strOption, const std::string &strText)
{
    char *pEnd = nullptr;
    const double dQuality = std::strtod(strText.c_str(), &pEnd);
    if (!ConsistsOf(strText, "0123456789.-") || *pEnd != '\0' || std::abs(dQuality) > MaxQuality)
        Refuse(strOption, strText, "a quality such as 18 or 23.5");
    return dQuality;
}

double ParseOutlineWidth(const std::string &strOption, const std::string &strText)
{
    char *pEnd = nullptr;
    const double dWidth = std::strtod(strText.c_str(), &pEnd);
    if (!ConsistsOf(strText, "0123456789.") || *pEnd != '\0' || dWidth > MaxOutlineWidth)
        Refuse(strOption, strText, "a width of 0 to 20 pixels");
    return dWidth;
}

int64_t ParseTime(const std::string &strOption, const std::string &strText)
{
    int64_t nTime = 0;
    // FFmpeg takes .5 only with a leading zero.
    if (!ConsistsOf(strText, "0123456789:.") || strText.front() == ':' ||
        av_parse_time(&nTime, (strText.front() == '.' ? "0" + strText : strText).c_str(), 1) < 0)
        Refuse(strOption, strText, "a time such as 12.5 or 1:02:03.5");
    if (nTime > MaxTime)
        Refuse(strOption, strText, "a time of at most 100000 hours");
    return nTime;
}

Rgb ParseColor(const std::string &strOption, const std::string &strText)
{
    std::array<uint8_t, 4> listColor{};
    // FFmpeg would take a part after @ as opacity, which has its own option.
    if (strText.find('@') != std::string::npos || av_parse_color(listColor.data(), strText.c_str(), -1, nullptr) < 0)
        Refuse(strOption, strText, "a colour such as #ffcc00 or yellow");
    return {listColor[0], listColor[1], listColor[2]};
}

int64_t ParseBitrate(const std::string &strOption, const std::string &strText)
{
    double dUnit = 1;
    std::string strNumber = strText;
    if (!strText.empty() && std::strchr("kKmM", strText.back())) {
        dUnit = std::tolower(strText.back()) == 'k' ? 1e3 : 1e6;
        strNumber.pop_back();
    }
    char *pEnd = nullptr;
    const double dRate = std::strtod(strNumber.c_str(), &pEnd) * dUnit;
    if (!ConsistsOf(strNumber, "0123456789.") || *pEnd != '\0' || dRate < 1 || dRate > MaxBitrate)
        Refuse(strOption, strText, "a bit rate such as 800k or 4M");
    return std::llround(dRate);
}

int64_t ParseDelay(const std::string &strOption, const std::string &strText)
{
    const bool bMinus = !strText.empty() && strText.front() == '-';
    if (!ConsistsOf(strText.substr(bMinus ? 1 : 0), "0123456789:."))
        Refuse(strOption, strText, "a time such as 1.5 or -0:02.5");
    const int64_t nTime = av_rescale(ParseTime(strOption, strText.substr(bMinus ? 1 : 0)), 1000, AV_TIME_BASE);
    return bMinus ? -nTime : nTime;
}

double ParseFactor(const std::string &strOption, const std::string &strText)
{
    const auto Number = [](const std::string &strNumber) {
        char *pEnd = nullptr;
        const double dNumber = std::strtod(strNumber.c_str(), &pEnd);
        return ConsistsOf(strNumber, "0123456789.") && *pEnd == '\0' ? dNumber : 0;
    };
    const size_t nSlash = strText.find('/');
    const double dBelow = nSlash == std::string::npos ? 1 : Number(strText.substr(nSlash + 1));
    const double dFactor = dBelow > 0 ? Number(strText.substr(0, nSlash)) / dBelow : 0;
    if (dFactor < 1 / MaxFactor || dFactor > MaxFactor)
        Refuse(strOption, strText, "a factor such as 1.001 or 25/23.976");
    return dFactor;
}

PipeFormat ParsePipeFormat(const std::string &strOption, const std::string &strText)
{
    const size_t nCross = std::min(strText.find('x'), strText.size());
    const size_t nAt = std::min(strText.find('@', nCross), strText.size());
    const std::string strRate = strText.substr(std::min(nAt + 1, strText.size()));
    AVRational rate = {0, 1};
    PipeFormat format;
    format.nWidth = ParseSide(strText.substr(0, nCross));
    format.nHeight = ParseSide(strText.substr(std::min(nCross + 1, nAt), nAt - std::min(nCross + 1, nAt)));
    // FFmpeg would also take names such as pal.
    if (ConsistsOf(strRate, "0123456789./") && av_parse_video_rate(&rate, strRate.c_str()) >= 0) {
        format.nRate = rate.num;
        format.nScale = rate.den;
    }
    if (format.nWidth < 1 || format.nHeight < 1 || format.nRate < 1)
        Refuse(strOption, strText, "WxH@FPS such as 1280x720@25 or 1280x720@30000/1001");
    return format;
}

std::string TimeText(int64_t nMicroseconds)
{
    const int64_t nThousandths = std::abs(nMicroseconds / 1000);
    const int64_t nSeconds = nThousandths / 1000;
    std::array<char, 48> listText{};
    (void)std::snprintf(listText.data(), listText.size(), "%s%lld:%02d:%02d.%03d", nMicroseconds <= -1000 ? "-" : "",
                        static_cast<long long>(nSeconds / 3600), static_cast<int>(nSeconds / 60 % 60),
                        static_cast<int>(nSeconds % 60), static_cast<int>(nThousandths % 1000));
    return listText.data();
}
