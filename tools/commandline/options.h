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

/** How the subtitles look; what is not set keeps the library's default. */
struct Style {
    std::optional<std::string> strFont;
    std::optional<int> nSize;
    bool bBold = false;
    bool bItalic = false;
    std::optional<Rgb> color;
    std::optional<Rgb> outline;
    std::optional<int> nOpacity;
    std::optional<int> nPosition;
    bool bExact = false; ///< the library's exact look, not the natural one
    std::optional<double> dOutlineWidth;
};

struct SubtitleSource {
    std::string strFile;
    int nTrack = 0;
    // The encoding of text without a byte-order mark; "auto" to guess, empty for the usual one.
    std::string strEncoding;
    // Pass the text to the library with its markup.
    bool bRaw = false;
    // The file's times are multiplied by dStretch, then nDelay (milliseconds) is added.
    double dStretch = 1;
    int64_t nDelay = 0;
};

struct Subtitle {
    SubtitleSource source;
    Style style;
};

struct EncoderChoice {
    std::string strCodec;
    std::string strPreset;
    std::optional<double> dCrf;
    int64_t nBitrate = 0;
    std::string strPixelFormat;
    std::string strOptions;
    std::string strHardware;
    // For players with few formats: 8 bits, 4:2:0.
    bool bCompatible = false;
};

/** How audio is encoded if the container cannot hold it or the user names a codec. */
struct SoundChoice {
    std::string strCodec;
    int64_t nBitrate = 0;
    bool bCopyOnly = false;
    bool bNone = false;
};

/** A part of the input, in microseconds of its time. */
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
    // Name of the container format; empty: chosen by the output's file name.
    std::string strFormat;
    Replacing replacing = Replacing::Ask;
    // At least one; the first is drawn first.
    std::vector<Subtitle> listSubtitles;
    EncoderChoice encoder;
    SoundChoice sound;
    TimeRange range;
    std::vector<int64_t> listSnapshots;
    PipeFormat pipe;
    bool bQuiet = false;

    bool ReadsStandardInput() const { return strInput == "-"; }
    bool WritesStandardOutput() const { return strOutput == "-"; }

    /** The output's name for messages. */
    std::string OutputName() const { return WritesStandardOutput() ? "standard output" : strOutput; }

    bool bKeepTimes = false;
    bool bKeepTrack = false;
};
