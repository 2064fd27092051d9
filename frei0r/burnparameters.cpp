#include "frei0r/burnparameters.h"

#include "libsubtitle.h"
#include "libsubtitleframe.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace
{

constexpr std::array<f0r_param_info_t, static_cast<std::size_t>(Parameter::Count)> Infos = {{
    {"location", F0R_PARAM_STRING, "Subtitle file; none shows no subtitles"},
    {"milliseconds", F0R_PARAM_BOOL, "The host counts time in milliseconds, as FFmpeg 7 does, and not in seconds"},
    {"subtitle-track", F0R_PARAM_STRING,
     "Subtitle track: of a container counted from 0, of an .idx file the number after \"index:\""},
    {"alpha", F0R_PARAM_DOUBLE, "Opacity; counts twice, so that 0.5 covers a frame by a quarter"},
    {"pos", F0R_PARAM_DOUBLE, "Centre line of the subtitle, from the top of the frame, as a part of its height"},
    {"font-family", F0R_PARAM_STRING, "Font of text, none for the default font"},
    {"font-size", F0R_PARAM_DOUBLE, "Size of text as a part of the frame's height, 0 for a 14th"},
    {"bold", F0R_PARAM_BOOL, "Bold text"},
    {"italic", F0R_PARAM_BOOL, "Italic text"},
    {"font-color", F0R_PARAM_COLOR, "Colour of text"},
    {"outline-color", F0R_PARAM_COLOR, "Colour of the outline of text; black is no outline"},
    {"offset", F0R_PARAM_STRING, "Time in the subtitle file, in seconds, at which the host's time is 0"},
    {"natural", F0R_PARAM_BOOL, "Smooth text, all texts that are due, DVD pictures in their colours"},
}};

template <typename T>
const T &As(const void *pValue)
{
    return *static_cast<const T *>(pValue);
}

void SetText(std::string &strText, const void *pValue)
{
    const char *pText = As<const char *>(pValue);
    strText.assign(pText ? pText : "");
}

/** frei0r passes a pointer to char that is not const, but hosts may not write through it. */
void GetText(const std::string &strText, void *pValue)
{
    *static_cast<const char **>(pValue) = strText.c_str();
}

bool Flag(const void *pValue)
{
    return As<f0r_param_bool>(pValue) >= 0.5;
}

/** The number that a text consists of, independent of the locale. */
template <typename T>
std::optional<T> Number(const std::string &strText)
{
    T number = 0;
    const char *pEnd = strText.data() + strText.size();
    const auto result = std::from_chars(strText.data(), pEnd, number);
    if (result.ec != std::errc() || result.ptr != pEnd)
        return std::nullopt;
    return number;
}

} // namespace

f0r_param_info_t BurnParameters::Info(int nParameter)
{
    const auto n = static_cast<std::size_t>(nParameter);
    return n < Infos.size() ? Infos[n] : f0r_param_info_t{};
}

void BurnParameters::Set(int nParameter, const void *pValue)
{
    switch (static_cast<Parameter>(nParameter)) {
    case Parameter::Location:
        SetText(m_strLocation, pValue);
        break;
    case Parameter::Milliseconds:
        m_bMilliseconds = Flag(pValue);
        break;
    case Parameter::SubtitleTrack:
        SetText(m_strTrack, pValue);
        break;
    case Parameter::Alpha:
        m_fAlpha = As<f0r_param_double>(pValue);
        break;
    case Parameter::Pos:
        m_fPos = As<f0r_param_double>(pValue);
        break;
    case Parameter::FontFamily:
        SetText(m_strFamily, pValue);
        break;
    case Parameter::FontSize:
        m_fFontSize = As<f0r_param_double>(pValue);
        break;
    case Parameter::Bold:
        m_bBold = Flag(pValue);
        break;
    case Parameter::Italic:
        m_bItalic = Flag(pValue);
        break;
    case Parameter::FontColor:
        m_fontColor = As<f0r_param_color_t>(pValue);
        break;
    case Parameter::OutlineColor:
        m_outlineColor = As<f0r_param_color_t>(pValue);
        break;
    case Parameter::Offset:
        SetText(m_strOffset, pValue);
        break;
    case Parameter::Natural:
        m_bNatural = Flag(pValue);
        break;
    case Parameter::Count:
        break;
    }
}

void BurnParameters::Get(int nParameter, void *pValue) const
{
    switch (static_cast<Parameter>(nParameter)) {
    case Parameter::Location:
        return GetText(m_strLocation, pValue);
    case Parameter::Milliseconds:
        *static_cast<f0r_param_bool *>(pValue) = m_bMilliseconds ? 1 : 0;
        break;
    case Parameter::SubtitleTrack:
        return GetText(m_strTrack, pValue);
    case Parameter::Alpha:
        *static_cast<f0r_param_double *>(pValue) = m_fAlpha;
        break;
    case Parameter::Pos:
        *static_cast<f0r_param_double *>(pValue) = m_fPos;
        break;
    case Parameter::FontFamily:
        return GetText(m_strFamily, pValue);
    case Parameter::FontSize:
        *static_cast<f0r_param_double *>(pValue) = m_fFontSize;
        break;
    case Parameter::Bold:
        *static_cast<f0r_param_bool *>(pValue) = m_bBold ? 1 : 0;
        break;
    case Parameter::Italic:
        *static_cast<f0r_param_bool *>(pValue) = m_bItalic ? 1 : 0;
        break;
    case Parameter::FontColor:
        *static_cast<f0r_param_color_t *>(pValue) = m_fontColor;
        break;
    case Parameter::OutlineColor:
        *static_cast<f0r_param_color_t *>(pValue) = m_outlineColor;
        break;
    case Parameter::Offset:
        return GetText(m_strOffset, pValue);
    case Parameter::Natural:
        *static_cast<f0r_param_bool *>(pValue) = m_bNatural ? 1 : 0;
        break;
    case Parameter::Count:
        break;
    }
}

std::optional<int> BurnParameters::Track() const
{
    const std::optional<int> track = Number<int>(m_strTrack);
    return track && *track >= 0 ? track : std::nullopt;
}

int BurnParameters::Points(int nHeight) const
{
    if (!(m_fFontSize > 0))
        return 0;
    // A point is 4/3 pixels. The library's largest size is 4096 points.
    return std::max(1, static_cast<int>(std::lround(std::min(m_fFontSize * nHeight * 0.75, 4096.0))));
}

int BurnParameters::Look() const
{
    return m_bNatural ? SUBTITLE_LOOK_NATURAL : SUBTITLE_LOOK_EXACT;
}

int BurnParameters::Style() const
{
    return (m_bBold ? SUBTITLE_STYLE_BOLD : 0) | (m_bItalic ? SUBTITLE_STYLE_ITALIC : 0);
}

std::optional<long> BurnParameters::FileTime(double fTime) const
{
    const std::optional<double> offset = Number<double>(m_strOffset);
    if (!offset)
        return std::nullopt;
    const double fMilliseconds = std::floor((m_bMilliseconds ? fTime : fTime * 1000) + *offset * 1000 + 0.5);
    // Converted to double, the largest long may be rounded up, hence < and not <=. NaN fails both comparisons.
    if (!(fMilliseconds >= 0 && fMilliseconds < static_cast<double>(std::numeric_limits<long>::max())))
        return std::nullopt;
    return static_cast<long>(fMilliseconds);
}

int BurnParameters::ToRange(double fValue, int nMaximum)
{
    return fValue > 0 ? static_cast<int>(std::lround(std::min(fValue, 1.0) * nMaximum)) : 0;
}

BurnColor BurnParameters::ToBytes(const f0r_param_color_t &color)
{
    return {ToRange(color.r, 255), ToRange(color.g, 255), ToRange(color.b, 255)};
}
