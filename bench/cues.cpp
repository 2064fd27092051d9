#include "cues.h"

#include "support/temporaryfolder.h"

#include <array>
#include <cstdio>
#include <filesystem>

namespace
{

using Words = std::array<const char *, 16>;

constexpr Words LatinWords = {"light", "hills", "quiet", "dusk",  "river", "stone", "never", "house",
                              "again", "could", "green", "maybe", "bread", "kings", "found", "jumps"};
constexpr Words ArabicWords = {"النور", "التلال", "هادئ", "الغسق", "النهر", "حجر",  "أبدا", "المنزل",
                               "مرة",   "يمكن",   "أخضر", "ربما",  "الخبز", "ملوك", "وجدت", "يقفز"};
constexpr Words DevanagariWords = {"प्रकाश", "पहाड़ियाँ", "शान्त", "सन्ध्या", "नदी",  "पत्थर",  "कभी",  "घर",
                                   "फिर",   "क्षत्रिय",  "हरित", "सम्भव",  "रोटी", "राजाओं", "मिला", "कूदता"};

std::string Word(const Words &words, int n)
{
    return words[n % words.size()];
}

/** A line of @p count words, different for each number. */
std::string Line(const Words &words, int count, int number)
{
    std::string text;
    for (; count > 0; --count, number = number / 2 + 5 * number)
        text += Word(words, number) + ' ';
    return text;
}

/** The same with characters, chosen from 3,000 ideographs. */
std::string IdeographLine(int count, unsigned number)
{
    std::string text;
    for (unsigned random = number; count > 0; --count) {
        random = random * 1664525 + 1013904223;
        const unsigned character = 0x4E00 + (random >> 16) % 3000;
        text += static_cast<char>(0xE0 | character >> 12);
        text += static_cast<char>(0x80 | (character >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (character & 0x3F));
    }
    return text;
}

std::string CueText(int cue, const char *lineBreak, CueScript script)
{
    switch (script) {
    case CueScript::Cjk:
        return IdeographLine(20, 2 * cue) + lineBreak + IdeographLine(20, 2 * cue + 1);
    case CueScript::Arabic:
        return Line(ArabicWords, 7, cue) + lineBreak + Line(ArabicWords, 6, cue / 16) + std::to_string(cue);
    case CueScript::Devanagari:
        return Line(DevanagariWords, 6, cue) + lineBreak + Line(DevanagariWords, 5, cue / 16) + std::to_string(cue);
    default:
        return "The " + Word(LatinWords, cue) + ", a " + Word(LatinWords, cue / 16) + lineBreak + "may be " +
               Word(LatinWords, cue * 7) + ' ' + std::to_string(cue) + '.';
    }
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

std::string Srt(int count, CueScript script)
{
    std::string text;
    for (int i = 1; i <= count; ++i) {
        const long start = CueDistance * i;
        text += std::to_string(i) + '\n' + SrtStamp(start) + " --> " + SrtStamp(start + CueDuration) + '\n' +
                CueText(i, "\n", script) + "\n\n";
    }
    return text;
}

std::string Ass(int count, int width, int height, CueScript script)
{
    // The font size of a script is the line height, which in DejaVu Sans is 1.164 times the pixel size.
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
                CueText(i, "\\N", script) + '\n';
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

std::string SrtFile(int count, CueScript script)
{
    const std::string number = std::to_string(static_cast<int>(script));
    return File(std::to_string(count) + '-' + number + ".srt", [=] { return Srt(count, script); });
}

std::string AssFile(int count, int width, int height, CueScript script)
{
    const std::string number = std::to_string(static_cast<int>(script));
    return File(std::to_string(count) + '-' + std::to_string(height) + '-' + number + ".ass",
                [=] { return Ass(count, width, height, script); });
}
