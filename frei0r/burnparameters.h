#pragma once

#include <optional>
#include <string>

extern "C" {
#include <frei0r.h>
}

/** The parameters of the plugin, as frei0r numbers them. */
enum class Parameter {
    Location,
    Milliseconds,
    SubtitleTrack,
    Alpha,
    Pos,
    FontFamily,
    FontSize,
    Bold,
    Italic,
    FontColor,
    OutlineColor,
    Offset,
    Natural,
    Count
};

/** A colour with 8 bits a component. */
struct BurnColor {
    int nRed;
    int nGreen;
    int nBlue;

    bool operator==(const BurnColor &other) const
    {
        return nRed == other.nRed && nGreen == other.nGreen && nBlue == other.nBlue;
    }
};

/** The values of the parameters, in frei0r's units and in the library's. */
class BurnParameters
{
public:
    /** Name, type and explanation of a parameter; all zero for an unknown number. */
    static f0r_param_info_t Info(int nParameter);

    /** As f0r_set_param_value() and f0r_get_param_value(). Unknown numbers do nothing. May throw std::bad_alloc. */
    void Set(int nParameter, const void *pValue);
    void Get(int nParameter, void *pValue) const;

    const std::string &File() const { return m_strLocation; }
    /** nullopt if the parameter is not a whole number of 0 or more. */
    std::optional<int> Track() const;
    int Alpha() const { return ToRange(m_fAlpha, 255); }
    int Percent() const { return ToRange(m_fPos, 100); }
    const std::string &Family() const { return m_strFamily; }
    /** Size of text in frames of a height; 0 for the library's default. */
    int Points(int nHeight) const;
    /** SUBTITLE_LOOK_... */
    int Look() const;
    /** SUBTITLE_STYLE_... */
    int Style() const;
    BurnColor FontColor() const { return ToBytes(m_fontColor); }
    BurnColor OutlineColor() const { return ToBytes(m_outlineColor); }

    /**
     * Converts the host's time to the time in the subtitle file, in milliseconds, rounded to nearest with halves
     * upwards.
     *
     * @return nullopt before the file's start, beyond the range of the library, and if the offset is not a number.
     */
    std::optional<long> FileTime(double fTime) const;

private:
    static int ToRange(double fValue, int nMaximum);
    static BurnColor ToBytes(const f0r_param_color_t &color);

    std::string m_strLocation;
    bool m_bMilliseconds = false;
    std::string m_strTrack = "0";
    double m_fAlpha = 1;
    double m_fPos = 0.85;
    std::string m_strFamily;
    double m_fFontSize = 0;
    bool m_bBold = false;
    bool m_bItalic = false;
    f0r_param_color_t m_fontColor = {1, 1, 1};
    f0r_param_color_t m_outlineColor = {10 / 255.0F, 10 / 255.0F, 10 / 255.0F};
    std::string m_strOffset = "0";
    bool m_bNatural = false;
};
