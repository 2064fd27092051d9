#include "cues.h"

#include "support/temporaryfolder.h"

#include <array>
#include <cstdio>
#include <filesystem>

namespace
{

std::string Word(int n)
{
    static const std::array<const char *, 16> words = {"light", "hills", "quiet", "dusk",  "river", "stone",
                                                       "never", "house", "again", "could", "green", "maybe",
                                                       "bread", "kings", "found", "jumps"};
    return words[n % words.size()];
}

std::string CueText(int cue, const char *lineBreak)
{
    return "The " + Word(cue) + ", a " + Word(cue / 16) + lineBreak + "may be " + Word(cue * 7) + ' ' +
           std::to_string(cue) + '.';
}

std::string Stamp(const char *format, long ms, long fraction)
{
    char text[32];
    (void)std::snprintf(text, sizeof(text), format, ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, fraction);
    return text;
}

std::string SrtStamp(long ms)
{
    return Stamp("%02ld:%02ld:%02ld,%03ld", ms, ms % 1000);
}

std::string AssStamp(long ms)
{
    return Stamp("%ld:%02ld:%02ld.%02ld", ms, ms % 1000 / 10);
}

std::string Srt(int count)
{
    std::string text;
    for (int i = 1; i <= count; ++i) {
        const long start = CueDistance * i;
        text += std::to_string(i) + '\n' + SrtStamp(start) + " --> " + SrtStamp(start + CueDuration) + '\n' +
                CueText(i, "\n") + "\n\n";
    }
    return text;
}

std::string Ass(int count, int width, int height)
{
    // A script's font size is that of a line; of DejaVu Sans that is 1.164 of the pixel size.
    const int size = height * 1164 / 14000;
    std::string text =
        "[Script Info]\nScriptType: v4.00+\nScaledBorderAndShadow: yes\nPlayResX: " + std::to_string(width) +
        "\nPlayResY: " + std::to_string(height) +
        "\n\n[V4+ Styles]\nFormat: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, "
        "OutlineColour, BackColour, Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, "
        "Angle, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, Encoding\n"
        "Style: Default,DejaVu Sans," +
        std::to_string(size) +
        ",&H00FFFFFF,&H000000FF,&H000A0A0A,&H00000000,0,0,0,0,100,100,0,0,1,2,0,5,0,0,0,1\n"
        "\n[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n";
    const std::string place = "{\\pos(" + std::to_string(width / 2) + ',' + std::to_string(height * 85 / 100) + ")}";
    for (int i = 1; i <= count; ++i) {
        const long start = CueDistance * i;
        text += "Dialogue: 0," + AssStamp(start) + ',' + AssStamp(start + CueDuration) + ",Default,,0,0,0,," + place +
                CueText(i, "\\N") + '\n';
    }
    return text;
}

const TemporaryFolder &Folder()
{
    static const TemporaryFolder folder;
    return folder;
}

template <typename Make>
std::string File(const std::string &name, Make make)
{
    const std::filesystem::path path = Folder().Path() / name;
    return std::filesystem::exists(path) ? path.string() : Folder().Write(name, make());
}

} // namespace

std::string SrtFile(int count)
{
    return File(std::to_string(count) + ".srt", [=] { return Srt(count); });
}

std::string AssFile(int count, int width, int height)
{
    return File(std::to_string(count) + '-' + std::to_string(height) + ".ass",
                [=] { return Ass(count, width, height); });
}
