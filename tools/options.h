#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct Rgb {
    int nRed;
    int nGreen;
    int nBlue;
};

/** How the subtitles look; what is not set stays as the library has it. */
struct Style {
    std::optional<std::string> strFont;
    std::optional<int> nSize;
    bool bBold = false;
    bool bItalic = false;
    std::optional<Rgb> color;
    std::optional<Rgb> outline;
    std::optional<int> nOpacity;
    std::optional<int> nPosition;
    bool bExact = false; ///< the library's own pixels, not the natural look
    std::optional<double> dOutlineWidth;
};

struct SubtitleSource {
    std::string strFile;
    int nTrack = 0;
    // Of text without a byte-order mark; "auto" guesses, empty is the locale's.
    std::string strEncoding;
    // Text is handed over with its markup.
    bool bRaw = false;
    // The file's times are multiplied by the one, then the other is added, in milliseconds.
    double dStretch = 1;
    int64_t nDelay = 0;
};

struct EncoderChoice {
    std::string strCodec;
    std::string strPreset;
    std::optional<double> dCrf;
    int64_t nBitrate = 0;
    std::string strPixelFormat;
    std::string strOptions;
    std::string strHardware;
    // For players that know little: 8 bits, 4:2:0.
    bool bCompatible = false;
};

/** How sound is encoded that has to be, or where the user names a codec. */
struct SoundChoice {
    std::string strCodec;
    int64_t nBitrate = 0;
    bool bCopyOnly = false;
    bool bNone = false;
};

/** Part of the input, in microseconds of its own time. */
struct TimeRange {
    std::optional<int64_t> nStart;
    std::optional<int64_t> nDuration;
};

struct PipeFormat {
    int nWidth = 0;
    int nHeight = 0;
    int nRate = 0;
    int nScale = 1;
};

enum class Replacing { Ask, Yes, No };

enum class Mode { Transcode, Snapshot, Pipe, List };

struct Options {
    Mode mode = Mode::Transcode;
    std::string strInput;
    std::string strOutput;
    // Of the container, where the name of the output does not tell.
    std::string strFormat;
    Replacing replacing = Replacing::Ask;
    SubtitleSource subtitles;
    Style style;
    EncoderChoice encoder;
    SoundChoice sound;
    TimeRange range;
    std::vector<int64_t> listSnapshots;
    PipeFormat pipe;
    bool bQuiet = false;

    bool ReadsStandardInput() const { return strInput == "-"; }
    bool WritesStandardOutput() const { return strOutput == "-"; }

    /** As messages name it. */
    std::string OutputName() const { return WritesStandardOutput() ? "standard output" : strOutput; }

    bool bKeepTimes = false;
    bool bKeepTrack = false;
};
