#include "subtitles/cuetimes.h"

#include "subtitles/number.h"

#include <algorithm>
#include <cmath>

namespace
{

/** Removes the text up to a separator, and the separator, from the beginning. */
std::string_view Take(std::string_view &strText, char cSeparator)
{
    const size_t nEnd = std::min(strText.find(cSeparator), strText.size());
    const std::string_view strTaken = strText.substr(0, nEnd);
    strText.remove_prefix(std::min(nEnd + 1, strText.size()));
    return strTaken;
}

} // namespace

CueTime SubRipTime(const std::string &strText)
{
    if (std::count(strText.begin(), strText.end(), ':') < 2)
        return {};
    std::string strPoint = strText;
    std::replace(strPoint.begin(), strPoint.end(), ',', '.');
    std::string_view strRest = strPoint;
    const std::optional<int> hours = Number<int>(Take(strRest, ':'));
    const std::optional<int> minutes = Number<int>(Take(strRest, ':'));
    // What follows a third colon is not read.
    const std::optional<double> seconds = Number<double>(Take(strRest, ':'));
    const double dSeconds = (hours.value_or(0) * 60.0 + minutes.value_or(0)) * 60.0 + seconds.value_or(0);
    // Beyond 32 bits, the library takes the smallest number.
    const bool bFits = std::abs(dSeconds) < INT32_MAX / 1000.0;
    return {bFits ? std::llround(dSeconds * 1000) : INT32_MIN, hours && minutes && seconds && bFits};
}

CueTime ScriptTime(const std::string &strText)
{
    if (std::count(strText.begin(), strText.end(), ':') != 2 || strText.find('.') == std::string::npos)
        return {-1, false};
    CueTime time = {0, true};
    std::string_view strRest = strText;
    const struct {
        char cSeparator;
        int nFactor;
        int nUnit;
    } fields[] = {{':', 60, 1}, {':', 60, 1}, {'.', 1000, 1}, {',', 1, 10}};
    for (const auto &field : fields) {
        const std::optional<int> number = Number<int>(Take(strRest, field.cSeparator));
        time.bWhole = time.bWhole && number;
        time.nMilliseconds = (time.nMilliseconds + int64_t(number.value_or(-1)) * field.nUnit) * field.nFactor;
    }
    return time;
}
