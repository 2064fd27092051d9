#include "commandline/subtitlearguments.h"

#include "commandline/failure.h"
#include "commandline/values.h"

#include <climits>

namespace
{

const char *const FileOption = "--subtitles";

std::optional<std::string> Find(const std::map<std::string, std::string> &values, const char *pOption)
{
    const auto found = values.find(pOption);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

class SubtitleArguments::Group
{
public:
    Group(SubtitleArguments &arguments, CLI::App &app, const char *pName) :
        m_arguments(arguments), m_app(app), m_pName(pName)
    {
    }

    void Add(const char *pOption, const char *pValue, const char *pText)
    {
        const auto Take = [&arguments = m_arguments, pOption](const std::string &strValue) {
            arguments.Take(pOption, strValue);
        };
        m_app.add_option_function<std::string>(pOption, Take, pText)
            ->trigger_on_parse()
            ->option_text(pValue)
            ->group(m_pName);
    }

    void AddFlag(const char *pOption, const char *pText)
    {
        const auto Take = [&arguments = m_arguments, pOption](int64_t nTimes) {
            // False takes back what was given for all.
            arguments.m_listGiven.back()[pOption] = nTimes > 0 ? "yes" : "";
        };
        m_app.add_flag_function(pOption, Take, pText)->trigger_on_parse()->group(m_pName);
    }

private:
    SubtitleArguments &m_arguments;
    CLI::App &m_app;
    const char *m_pName;
};

void SubtitleArguments::AddSource(CLI::App &app)
{
    Group group(*this, app, "Subtitles");
    group.Add(FileOption, "FILE",
              "Subtitle file, .idx of a VobSub pair, or any file with subtitle tracks;\n"
              "INPUT without this option. May be given several times: an option of this\n"
              "group or of Look then applies to the file before it, or to all if it comes\n"
              "before the first; what is due at once shows one above the other");
    group.Add("--track", "N", "Subtitle track of that file as --list numbers it, 0 without this option");
    group.Add("--encoding", "NAME",
              "Encoding of text without a byte-order mark as iconv names it, or auto to\n"
              "guess; the locale's, which is UTF-8 nearly everywhere, without this option");
    group.AddFlag("--raw", "Keep tags and drawings in the text");
    group.Add("--delay", "SECONDS", "Show subtitles so many seconds later; earlier with a minus");
    group.Add("--stretch", "FACTOR", "Multiply their times, by 1.001 or by 25/23.976");
}

void SubtitleArguments::AddLook(CLI::App &app)
{
    Group group(*this, app, "Look");
    group.Add("--font", "FAMILY", "Font family");
    group.Add("--size", "POINTS", "Size; 72 points are 96 pixels of the video");
    group.AddFlag("--bold", "Bold");
    group.AddFlag("--italic", "Italic");
    group.Add("--color", "COLOR", "Colour of the text, white without this option");
    group.Add("--outline-color", "COLOR", "Colour of the outline; with --exact pure black hides it, #010101\ndoes not");
    group.Add("--outline-width", "PIXELS", "Width of the outline at 720 rows, 2 without this option");
    group.Add("--opacity", "N", "From 0, invisible, to 255, opaque");
    group.Add("--position", "N", "Centre line in percent of the height, 85 without this option");
    group.AddFlag("--exact", "The library's own pixels: text without grey levels, an outline of 2\n"
                             "pixels at any size, pictures of DVDs in grey");
}

void SubtitleArguments::Take(const std::string &strOption, const std::string &strValue)
{
    if (strOption == FileOption)
        m_listGiven.emplace_back();
    if (!m_listGiven.back().emplace(strOption, strValue).second && m_strRepeated.empty())
        m_strRepeated = strOption;
}

std::vector<Subtitle> SubtitleArguments::Finish() const
{
    if (!m_strRepeated.empty())
        throw Failure(ExitCode::Usage,
                      m_strRepeated + ": given twice" + (m_listGiven.size() > 1 ? " for one --subtitles" : ""));
    std::vector<Subtitle> listSubtitles;
    for (size_t n = m_listGiven.size() > 1 ? 1 : 0; n < m_listGiven.size(); ++n) {
        Values values = m_listGiven[n];
        // Does not replace existing values.
        values.insert(m_listGiven.front().begin(), m_listGiven.front().end());
        listSubtitles.push_back(Parse(values));
    }
    return listSubtitles;
}

Subtitle SubtitleArguments::Parse(const Values &values)
{
    Subtitle subtitle;
    SubtitleSource &source = subtitle.source;
    source.strFile = Find(values, FileOption).value_or("");
    source.strEncoding = Find(values, "--encoding").value_or("");
    source.bRaw = !Find(values, "--raw").value_or("").empty();
    subtitle.style = ParseLook(values);
    if (const auto strTrack = Find(values, "--track"))
        source.nTrack = ParseWhole("--track", *strTrack, 0, INT_MAX);
    if (const auto strDelay = Find(values, "--delay"))
        source.nDelay = ParseDelay("--delay", *strDelay);
    if (const auto strStretch = Find(values, "--stretch"))
        source.dStretch = ParseFactor("--stretch", *strStretch);
    return subtitle;
}

Style SubtitleArguments::ParseLook(const Values &values)
{
    const auto ParseWith = [&](auto parse, const char *pOption, auto &value, auto... limits) {
        if (const auto strText = Find(values, pOption))
            value = parse(pOption, *strText, limits...);
    };
    const auto IsSet = [&](const char *pOption) { return !Find(values, pOption).value_or("").empty(); };
    Style style;
    style.strFont = Find(values, "--font");
    style.bBold = IsSet("--bold");
    style.bItalic = IsSet("--italic");
    style.bExact = IsSet("--exact");
    ParseWith(ParseWhole, "--size", style.nSize, 1, 4096);
    ParseWith(ParseColor, "--color", style.color);
    ParseWith(ParseColor, "--outline-color", style.outline);
    ParseWith(ParseWhole, "--opacity", style.nOpacity, 0, 255);
    ParseWith(ParseWhole, "--position", style.nPosition, 0, 100);
    ParseWith(ParseOutlineWidth, "--outline-width", style.dOutlineWidth);
    if (style.bExact && style.dOutlineWidth)
        throw Failure(ExitCode::Usage, "--exact excludes --outline-width");
    return style;
}
