#include "media/hdrmetadata.h"

#include "media/codecs.h"
#include "media/streamdata.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace
{

const int64_t Decimals = 100000;

/** How the parameters of an encoder's library are named. */
struct Library {
    const char *pOption;
    const char *pDisplay;
    const char *pLight;
    bool bDecimal; ///< coordinates and cd/m2 as they are, and not in the units of SEI messages
};

const std::array<Library, 3> Libraries = {{{"x264-params", "mastering-display", "cll", false},
                                           {"x265-params", "master-display", "max-cll", false},
                                           {"svtav1-params", "mastering-display", "content-light", true}}};

/** A value that is out of range stands for one that is not known, as 0 does. */
int64_t InUnits(AVRational value, int nUnits, int64_t nMost)
{
    const double dUnits = value.den != 0 ? std::round(av_q2d(value) * nUnits) : 0;
    return dUnits > 0 && dUnits <= static_cast<double>(nMost) ? static_cast<int64_t>(dUnits) : 0;
}

std::string Number(int64_t nValue, int nUnits, bool bDecimal)
{
    if (!bDecimal)
        return std::to_string(nValue);
    const int64_t nDecimals = nValue * (Decimals / nUnits);
    return std::to_string(nDecimals / Decimals) + "." + std::to_string(Decimals + nDecimals % Decimals).substr(1);
}

std::string Point(const AVRational *pPoint, bool bDecimal)
{
    const auto Coordinate = [&](AVRational value) {
        return Number(InUnits(value, CoordinateUnits, std::numeric_limits<uint16_t>::max()), CoordinateUnits, bDecimal);
    };
    return "(" + Coordinate(pPoint[0]) + "," + Coordinate(pPoint[1]) + ")";
}

/** As the libraries read it, green first. */
std::string DisplayText(const AVMasteringDisplayMetadata &display, bool bDecimal)
{
    const int64_t nMost = std::numeric_limits<int32_t>::max();
    int64_t nBrightest = display.has_luminance ? InUnits(display.max_luminance, LuminanceUnits, nMost) : 0;
    int64_t nDarkest = display.has_luminance ? InUnits(display.min_luminance, LuminanceUnits, nMost) : 0;
    // x264 refuses some displays whose white is no brighter than their black.
    if (nDarkest >= nBrightest) {
        nBrightest = 0;
        nDarkest = 0;
    }
    const std::array<AVRational, 2> unknown = {};
    const auto Primary = [&](const AVRational *pPoint) {
        return Point(display.has_primaries ? pPoint : unknown.data(), bDecimal);
    };
    return "G" + Primary(display.display_primaries[1]) + "B" + Primary(display.display_primaries[2]) + "R" +
           Primary(display.display_primaries[0]) + "WP" + Primary(display.white_point) + "L(" +
           Number(nBrightest, LuminanceUnits, bDecimal) + "," + Number(nDarkest, LuminanceUnits, bDecimal) + ")";
}

std::string LightText(const AVContentLightMetadata &light)
{
    const unsigned nMost = std::numeric_limits<uint16_t>::max();
    return std::to_string(std::min(light.MaxCLL, nMost)) + "," + std::to_string(std::min(light.MaxFALL, nMost));
}

} // namespace

HdrMetadata HdrMetadata::Of(const AVStream &stream, const AVFrame &first)
{
    HdrMetadata metadata;
    if (const auto *pDisplay = reinterpret_cast<const AVMasteringDisplayMetadata *>(
            FindPictureSideData(stream, first, AV_PKT_DATA_MASTERING_DISPLAY_METADATA)))
        metadata.m_display = *pDisplay;
    const auto *pLight = reinterpret_cast<const AVContentLightMetadata *>(
        FindPictureSideData(stream, first, AV_PKT_DATA_CONTENT_LIGHT_LEVEL));
    // Zeros say that the levels are not known. x265 writes them after each mastering display.
    if (pLight && (pLight->MaxCLL != 0 || pLight->MaxFALL != 0))
        metadata.m_light = *pLight;
    return metadata;
}

bool HdrMetadata::AddTo(const AVCodecContext &context, AVDictionary **ppOptions) const
{
    const auto *const pLibrary = std::find_if(Libraries.begin(), Libraries.end(), [&](const Library &library) {
        return HasOption(context, library.pOption);
    });
    if (pLibrary == Libraries.end())
        return false;
    std::string strParameters;
    if (m_display)
        strParameters += std::string(":") + pLibrary->pDisplay + "=" + DisplayText(*m_display, pLibrary->bDecimal);
    if (m_light)
        strParameters += std::string(":") + pLibrary->pLight + "=" + LightText(*m_light);
    // The later one of two parameters of a name counts.
    const AVDictionaryEntry *pGiven = av_dict_get(*ppOptions, pLibrary->pOption, nullptr, 0);
    strParameters += pGiven && *pGiven->value != '\0' ? std::string(":") + pGiven->value : "";
    if (!strParameters.empty() && av_dict_set(ppOptions, pLibrary->pOption, strParameters.c_str() + 1, 0) < 0)
        throw std::bad_alloc();
    return true;
}
