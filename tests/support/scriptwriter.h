#pragma once

#include <random>
#include <string>
#include <vector>

/** Generates random scripts, well-formed and broken. The same seed and compiler give the same scripts. */
class ScriptWriter
{
public:
    explicit ScriptWriter(unsigned seed) : m_random(seed) {}

    unsigned Below(unsigned limit) { return m_random() % limit; }
    bool Chance(unsigned percent) { return Below(100) < percent; }

    /** The bytes of an ASS or SSA file. */
    std::string Ass()
    {
        std::vector<std::string> lines;
        m_bWild = Chance(60);
        for (unsigned count = Below(14); count > 0; --count)
            lines.push_back(Broken(AssLine()));
        return File(lines);
    }

    /** The bytes of an SRT file. */
    std::string Srt()
    {
        std::vector<std::string> lines;
        m_bWild = Chance(60);
        int index = 0;
        for (unsigned cues = Below(7); cues > 0; --cues) {
            if (Chance(85))
                lines.push_back(Chance(90) ? std::to_string(++index) : Integer());
            if (Chance(92))
                lines.push_back(Broken(SrtTimeLine()));
            for (unsigned count = Below(4); count > 0; --count)
                lines.push_back(Broken(Chance(8) ? Integer() : Text()));
            for (unsigned blank = Chance(80) ? 1 : Below(4); blank > 0; --blank)
                lines.push_back(Chance(85) ? "" : Pick({" ", "\t", "  \t "}));
        }
        return File(lines);
    }

    /** The text before or after the arrow in an SRT file. */
    std::string SrtTime()
    {
        if (!m_bWild || Chance(80)) {
            const std::string ms = std::to_string(1000 + Below(1000)).substr(1);
            return "00:00:0" + std::to_string(Below(10)) + Pick({",", ".", ","}) + ms;
        }
        std::string time;
        for (unsigned count = Below(5); count > 0; --count)
            time += (Chance(70) ? Integer() : Decimal()) + Pick({":", ":", ":", ",", ".", " "});
        return time + Decimal();
    }

    std::string Text()
    {
        std::string text;
        for (unsigned count = Below(9); count > 0; --count) {
            text += Pick({"{",
                          "}",
                          "<",
                          ">",
                          "{\\an8}",
                          "{\\i1}",
                          "<i>",
                          "</i>",
                          "<font color=\"red\">",
                          "\\N",
                          "\\n",
                          "\\h",
                          "\\",
                          "N",
                          ",",
                          "=",
                          ":",
                          ";",
                          "*",
                          " ",
                          "  ",
                          "\t",
                          "word",
                          "Two words",
                          "-->",
                          " --> ",
                          "\xC3\xA9",
                          "\xE6\x97\xA5\xE6\x9C\xAC",
                          "\xF0\x9F\x98\x80",
                          "\xC2\xA0"});
        }
        return text;
    }

private:
    std::string Pick(const std::vector<std::string> &choices)
    {
        return choices[Below(static_cast<unsigned>(choices.size()))];
    }

    std::string Integer()
    {
        if (!m_bWild || Chance(60))
            return std::to_string(Below(100));
        return Pick({"-1",         "-5",          "+3",         "007",  " 5",       "5 ",           "\t5",
                     "",           "x",           "1.5",        "1e3",  "0x10",     "2147483647",   "-2147483648",
                     "2147483648", "99999999999", "&H00FF8040", "&hff", "&HFF&",    "&H80FFFFFF",   "&H",
                     "&H7FFFFFFF", "& HFF",       "300",        "254",  "\xD9\xA3", "\xEF\xBC\x95", "1,000",
                     "596523"});
    }

    std::string Decimal()
    {
        if (!m_bWild || Chance(50))
            return std::to_string(Below(200)) + Pick({"", "", ".5", ".25", ".001"});
        return Pick({"-50", "-0.5", "-0", ".5", "5.", "1e3",   "1e400", "1e-400", "nan",   "inf",        "-inf",
                     "NAN", "x",    "",   " 7", "7 ", "1.5pt", "&H10",  "0x1p3",  "1.2.3", "4294967296", "\xD9\xA3"});
    }

    std::string Color()
    {
        return Chance(50) ? Pick({"&H00FFFFFF", "&H000000FF", "&H7F000000", "&HFF000000"}) : Integer();
    }

    std::string Space() { return m_bWild && Chance(15) ? Pick({" ", "  ", "\t", " \t "}) : ""; }

    std::string AnyCase(std::string text)
    {
        if (!Chance(20))
            return text;
        for (char &character : text) {
            if ((character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z'))
                character = static_cast<char>(character ^ (Chance(50) ? 0x20 : 0));
        }
        return text;
    }

    std::string Key(const std::string &key)
    {
        return Space() + AnyCase(key) + (m_bWild && Chance(5) ? " :" : ":") + (Chance(80) ? " " : "") + Space();
    }

    std::string AssTime()
    {
        if (!m_bWild || Chance(80))
            return "0:00:0" + std::to_string(Below(10)) + "." + std::to_string(100 + Below(100)).substr(1);
        return Integer() + Pick({":", ":", "."}) + Integer() + Pick({":", ":", ""}) + Integer() +
               Pick({".", ".", ":", ""}) + Integer();
    }

    std::string Joined(const std::vector<std::string> &fields)
    {
        std::size_t count = fields.size();
        if (m_bWild && Chance(15))
            count = Below(static_cast<unsigned>(count)) + 1;
        std::string line;
        for (std::size_t i = 0; i < count; ++i)
            line += (i > 0 ? "," : "") + Space() + fields[i] + Space();
        return line;
    }

    std::string Style()
    {
        const unsigned version = 3 + Below(3);
        std::vector<std::string> fields = {Pick({"Default", "*Sign", ""}),
                                           Pick({"Arial", "DejaVu Sans ", ""}),
                                           Decimal(),
                                           Color(),
                                           Color(),
                                           Color(),
                                           Color(),
                                           Integer(),
                                           Integer()};
        if (version == 5)
            fields.insert(fields.end(), {Integer(), Integer(), Decimal(), Decimal(), Decimal(), Decimal()});
        if (version >= 4)
            fields.push_back(Pick({"1", "3", "0", "2", Integer()}));
        fields.insert(fields.end(), {Decimal(), Decimal(), Chance(80) ? std::to_string(Below(12)) : Integer(),
                                     Integer(), Integer(), Integer()});
        if (version <= 4)
            fields.push_back(Integer());
        fields.push_back(Integer());
        return Key("Style") + Joined(fields);
    }

    std::string Dialogue()
    {
        const std::string first = Chance(50) ? "Marked=" + Integer() : Integer();
        return Key("Dialogue") +
               Joined({first, AssTime(), AssTime(),
                       Pick({"Default", "*Default", "dEFAULT", "**", "Sign", "", "Default "}), Pick({"", "Bob", "A=b"}),
                       Integer(), Integer(), Integer(), Pick({"", "", "Scroll up", "w", "{", "word"}),
                       Chance(90) ? Text() : Text() + "," + Text()});
    }

    std::string AssLine()
    {
        switch (Below(12)) {
        case 0:
            return Space() + AnyCase(Pick({"[Script Info]", "[V4 Styles]", "[V4+ Styles]", "[V4+ Styles]", "[Events]",
                                           "[V4 Styles]: x", "[V4+  Styles]"}));
        case 1:
            return Key("ScriptType") + Pick({"v4.00", "v4.00+", "v4.00+", "V4", "4.00", "v4.00++", "v4.00 +", "", "4.0",
                                             "x: 4.00+", "v4.00, "});
        case 2:
            return Key(Pick({"PlayResX", "PlayResY", "PlayRes"})) + Integer() + Pick({"", ",5", " ", ":1"});
        case 3:
            return Key("Collisions") + Pick({"Reverse", "Normal", "reversed", "normal, reverse", "", "REVERSE ,"});
        case 4:
        case 5:
            return Style();
        case 6:
            return Pick({"", " ", "\t", ";Dialogue: 0", " ; x", "Comment: 0,0:00:01.00,0:00:02.00,S,,0,0,0,,x",
                         "Format: Layer, Start, End", "WrapStyle: 0", "ScaledBorderAndShadow: yes", "Dialogue", "Style",
                         "Collisions", "PlayResX", "ScriptType", Text()});
        default:
            return Dialogue();
        }
    }

    std::string SrtTimeLine()
    {
        return Space() + SrtTime() + Space() + (Chance(90) ? " --> " : Pick({"-->", "->", "--> -->", " -- > "})) +
               SrtTime() + (Chance(8) ? " X1:100 X2:200" : "") + Space();
    }

    /** Sometimes removes, adds or changes bytes of the line. */
    std::string Broken(std::string line)
    {
        if (!m_bWild || line.empty() || !Chance(15))
            return line;
        for (unsigned count = 1 + Below(3); count > 0 && !line.empty(); --count) {
            const unsigned position = Below(static_cast<unsigned>(line.size()));
            const std::string by = Pick({"", "", ",", ":", ".", "=", "{", "}", "<", ">", " ", "\t", "\r", "-", "9",
                                         std::string(1, '\0'), "\xFF", "\xE2\x80"});
            line.replace(position, Below(2), by);
        }
        return line;
    }

    std::string File(const std::vector<std::string> &lines)
    {
        const unsigned ends = Below(4);
        std::string text;
        for (const std::string &line : lines)
            text += line + (ends == 0 ? "\r\n" : ends == 1 ? Pick({"\n", "\r\n", "\r\r\n", "\n\r", "\r"}) : "\n");
        if (Chance(30) && !text.empty())
            text.pop_back();
        switch (Below(5)) {
        case 0:
            return text;
        case 1:
            return Utf16(text);
        default:
            return "\xEF\xBB\xBF" + text;
        }
    }

    /** Turns each byte into a 16-bit unit, without decoding UTF-8 sequences. */
    std::string Utf16(const std::string &text)
    {
        std::string bytes = "\xFF\xFE";
        for (const char byte : text)
            bytes += {byte, static_cast<char>((byte & 0x80) != 0 && Chance(50) ? Below(256) : 0)};
        if (Chance(10))
            bytes += 'x';
        return bytes;
    }

    std::mt19937 m_random;
    bool m_bWild = false;
};
