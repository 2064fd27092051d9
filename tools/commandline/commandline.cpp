#include "commandline/commandline.h"

#include "commandline/failure.h"
#include "commandline/printable.h"
#include "commandline/values.h"
#include "media/ffmpegptr.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <utility>

namespace
{

const char *const UsageText = R"(
Usage: subburn [--subtitles FILE] [OPTIONS] INPUT OUTPUT
       subburn [--subtitles FILE] [OPTIONS] --snapshot TIME INPUT OUTPUT.png
       subburn --subtitles FILE [OPTIONS] --pipe WxH@FPS
       subburn --list FILE
)";

const char *const Footer =
    R"(TIME is in seconds (12.5) or hours, minutes and seconds (1:02:03.5), in the input's own time.
COLOR is #rrggbb or a name such as yellow.

Examples:
  subburn --subtitles film.srt film.mp4 burnt.mp4
  subburn --subtitles film.srt --font "DejaVu Sans" --size 28 --color yellow --crf 18 film.mkv burnt.mkv
  subburn --list film.mkv
  subburn --track 1 film.mkv burnt.mkv
  subburn --subtitles film.idx --track 2 film.mkv burnt.mkv
  subburn --size 26 --subtitles en.srt --subtitles de.srt --color yellow --position 12 film.mkv burnt.mkv
  subburn --subtitles film.srt --snapshot 12.5 --snapshot 1:00:07 film.mkv look.png
  decoder | subburn --subtitles film.srt --pipe 1280x720@30000/1001 | encoder

Exit codes:
    0  done
    1  wrong usage
    2  an input cannot be read
    3  the output cannot be written
    4  the library cannot be loaded
  130  stopped by Ctrl-C or another signal)";

/** The whole layout of the help: CLI11's own differs from version to version. */
class HelpFormatter : public CLI::FormatterBase
{
public:
    std::string make_help(const CLI::App *pApp, std::string /*strName*/, CLI::AppFormatMode /*mode*/) const override
    {
        std::string strHelp = pApp->get_description() + "\n" + UsageText + "\nPositionals:\n";
        for (const CLI::Option *pOption : pApp->get_options(&CLI::Option::get_positional))
            strHelp += Line(pOption->get_name(true), pOption->get_description());
        for (const std::string &strGroup : pApp->get_groups()) {
            strHelp += "\n" + strGroup + ":\n";
            const auto IsListed = [&](const CLI::Option *pOption) {
                return pOption->nonpositional() && pOption->get_group() == strGroup;
            };
            for (const CLI::Option *pOption : pApp->get_options(IsListed)) {
                const std::string &strValue = pOption->get_option_text();
                strHelp += Line(pOption->get_name(false, true) + (strValue.empty() ? "" : " " + strValue),
                                pOption->get_description());
            }
        }
        return strHelp + "\n" + Footer + "\n";
    }

private:
    static std::string Line(const std::string &strName, const std::string &strDescription)
    {
        constexpr size_t Column = 32;
        const std::string strIndent = "\n" + std::string(Column, ' ');
        std::string strLine = "  " + strName;
        strLine += strLine.size() < Column ? std::string(Column - strLine.size(), ' ') : strIndent;
        for (const char c : strDescription)
            strLine += c == '\n' ? strIndent : std::string(1, c);
        return strLine + "\n";
    }
};

std::string VersionText()
{
    return std::string("subburn " SUBBURN_VERSION "\nFFmpeg ") + av_version_info();
}

bool EndsInPng(const std::string &strFile)
{
    return strcasecmp(std::filesystem::path(strFile).extension().c_str(), ".png") == 0;
}

} // namespace

CommandLine::CommandLine() : m_app("Burns subtitles into a video.", "subburn")
{
    m_app.formatter(std::make_shared<HelpFormatter>());
    m_app.option_defaults()->group("Options");
    m_app.set_help_flag("-h,--help", "Print this text and exit");
    m_app.set_version_flag("--version", VersionText(), "Print the versions of subburn and FFmpeg and exit");
    m_app.add_flag("--quiet", m_options.bQuiet, "Print nothing but warnings and errors");
    AddFiles();
    m_subtitles.AddLook(m_app);
    AddEncoding();
    AddSound();
    AddOutput();
    AddParts();
}

void CommandLine::AddFiles()
{
    m_app
        .add_option("INPUT", m_options.strInput,
                    "Video file; its first video stream gets the subtitles. - is standard input")
        ->type_name("");
    m_app
        .add_option("OUTPUT", m_options.strOutput,
                    "File to write; its extension selects the container. - is standard output")
        ->type_name("");
    m_app.add_option("-i,--input", m_strInput, "Another way to name INPUT")->option_text("FILE");
    m_subtitles.AddSource(m_app);
    m_app
        .add_flag("--keep-track", m_options.bKeepTrack,
                  "Keep the burnt track too, but not as one that players show by default")
        ->group("Subtitles");
    m_app.add_option("--list", m_strList, "Print the subtitle tracks of FILE and when their cues begin and end")
        ->option_text("FILE")
        ->group("Subtitles");
}

void CommandLine::AddEncoding()
{
    const char *const Group = "Encoding";
    EncoderChoice &choice = m_options.encoder;
    m_app.add_option("--codec", choice.strCodec, "FFmpeg's name of the video encoder; H.264 without this option")
        ->option_text("NAME")
        ->group(Group);
    auto *pCrf = m_app.add_option("--crf", m_strCrf, "Constant quality as the encoder counts it; lower is better")
                     ->option_text("N")
                     ->group(Group);
    m_app.add_option("--bitrate", m_strBitrate, "Bits per second, also as 800k or 4M")
        ->option_text("N")
        ->excludes(pCrf)
        ->group(Group);
    m_app.add_option("--preset", choice.strPreset, "The encoder's preset, such as fast or slow")
        ->option_text("NAME")
        ->group(Group);
    m_app.add_option("--encoder-options", choice.strOptions, "Options of the encoder as FFmpeg names them")
        ->option_text("KEY=VALUE:...")
        ->group(Group);
    m_app
        .add_option("--pix-fmt", choice.strPixelFormat,
                    "FFmpeg's name of the pixel format to encode; without this option\n"
                    "INPUT's, or the nearest that the encoder takes")
        ->option_text("NAME")
        ->group(Group);
    m_app
        .add_flag("--compatible", choice.bCompatible,
                  "For players with few formats: 8-bit 4:2:0, and hvc1 for HEVC in MP4")
        ->group(Group);
    m_app
        .add_option("--hwaccel", choice.strHardware,
                    "Encode on a device, such as vaapi, nvenc or qsv; the pictures are uploaded\n"
                    "to it. The encoder is h264_NAME unless --codec names another")
        ->option_text("NAME")
        ->group(Group);
}

void CommandLine::AddSound()
{
    const char *const Group = "Encoding";
    m_app
        .add_option("--audio-codec", m_strAudioCodec,
                    "FFmpeg's name of the encoder for all sound, copy or none; without this\n"
                    "option sound is copied, or encoded where OUTPUT cannot hold it")
        ->option_text("NAME")
        ->group(Group);
    m_app.add_option("--audio-bitrate", m_strAudioBitrate, "Bits per second of sound that is encoded")
        ->option_text("N")
        ->group(Group);
}

void CommandLine::AddOutput()
{
    const char *const Group = "Output";
    m_app.add_option("--format", m_options.strFormat, "FFmpeg's name of the container; OUTPUT - needs it")
        ->option_text("NAME")
        ->group(Group);
    m_app
        .add_flag("-y,--overwrite", m_bOverwrite, "Replace OUTPUT if it exists; without this option, ask on a terminal")
        ->group(Group);
    m_app.add_flag("-n,--no-overwrite", m_bNoOverwrite, "Never replace OUTPUT")->group(Group);
}

void CommandLine::AddParts()
{
    const char *const Group = "Parts and other ways";
    m_app.add_option("--start", m_strStart, "Begin at TIME; the output's time begins at 0")
        ->option_text("TIME")
        ->group(Group);
    m_app
        .add_flag(
            "--keep-times", m_options.bKeepTimes,
            "Keep the clock of a broadcast; without this option times begin at 0\nwhere OUTPUT is no transport stream")
        ->group(Group);
    m_app.add_option("--duration", m_strDuration, "End after TIME")->option_text("TIME")->group(Group);
    m_app
        .add_option("--snapshot", m_listSnapshots,
                    "Write the picture on display at TIME as a PNG file;\n"
                    "given several times, OUTPUT a.png becomes a-1.png, a-2.png and so on")
        ->option_text("TIME")
        ->allow_extra_args(false)
        ->group(Group);
    m_app.add_option("--pipe", m_strPipe, "Read raw RGB24 frames from standard input, write them to standard output")
        ->option_text("WxH@FPS")
        ->group(Group);
}

void CommandLine::Finish()
{
    if (m_strList) {
        FinishList();
        return;
    }
    m_options.listSubtitles = m_subtitles.Finish();
    FinishEncoding();
    if (m_strStart)
        m_options.range.nStart = ParseTime("--start", *m_strStart);
    if (m_strDuration)
        m_options.range.nDuration = ParseTime("--duration", *m_strDuration);
    for (const std::string &strTime : m_listSnapshots)
        m_options.listSnapshots.push_back(ParseTime("--snapshot", strTime));
    FinishFiles();
    ChooseMode();
    CheckModes();
    if (m_options.range.nDuration == 0)
        throw Failure(ExitCode::Usage, "--duration: must be more than 0");
    for (Subtitle &subtitle : m_options.listSubtitles) {
        if (subtitle.source.strFile.empty())
            subtitle.source.strFile = m_options.strInput;
    }
}

void CommandLine::FinishFiles()
{
    if (!m_strInput.empty()) {
        if (!m_options.strOutput.empty())
            throw Failure(ExitCode::Usage,
                          "INPUT is named twice, as \"" + m_strInput + "\" and as \"" + m_options.strInput + "\"");
        m_options.strOutput = std::exchange(m_options.strInput, m_strInput);
    }
    if (m_options.ReadsStandardInput() && LacksFile())
        throw Failure(ExitCode::Usage, "standard input is read only once, so that --subtitles has to name a file");
    if (m_options.ReadsStandardInput() && m_listSnapshots.size() > 1)
        throw Failure(ExitCode::Usage, "standard input is read only once, so that there can be only one --snapshot");
    if (m_options.WritesStandardOutput() && m_options.strFormat.empty())
        throw Failure(ExitCode::Usage, "standard output has no extension, so that --format has to name a container");
    if (m_bOverwrite && m_bNoOverwrite)
        throw Failure(ExitCode::Usage, "--overwrite excludes --no-overwrite");
    m_options.replacing = m_bOverwrite ? Replacing::Yes : m_bNoOverwrite ? Replacing::No : Replacing::Ask;
}

void CommandLine::FinishEncoding()
{
    EncoderChoice &choice = m_options.encoder;
    if (choice.bCompatible && !choice.strPixelFormat.empty())
        throw Failure(ExitCode::Usage, "--compatible excludes --pix-fmt");
    if (m_strCrf)
        choice.dCrf = ParseQuality("--crf", *m_strCrf);
    if (m_strBitrate)
        choice.nBitrate = ParseBitrate("--bitrate", *m_strBitrate);
    if (m_strAudioBitrate)
        m_options.sound.nBitrate = ParseBitrate("--audio-bitrate", *m_strAudioBitrate);
    m_options.sound.bCopyOnly = m_strAudioCodec == "copy";
    m_options.sound.bNone = m_strAudioCodec == "none";
    if (!m_options.sound.bCopyOnly && !m_options.sound.bNone)
        m_options.sound.strCodec = m_strAudioCodec.value_or("");
    // Encoders print unknown names unescaped.
    if (Escaped(choice.strPreset) != choice.strPreset)
        throw Failure(ExitCode::Usage, "--preset: there is no preset named \"" + choice.strPreset + "\"");
}

void CommandLine::FinishList()
{
    for (const CLI::Option *pOption : m_app.get_options()) {
        const bool bOfText = pOption->check_lname("encoding") || pOption->check_lname("raw");
        if (pOption->count() > 0 && !pOption->check_lname("list") && !bOfText)
            throw Failure(ExitCode::Usage,
                          "--list takes no INPUT, no OUTPUT and no options other than --encoding and --raw");
    }
    m_options.mode = Mode::List;
    m_options.listSubtitles = m_subtitles.Finish();
    m_options.listSubtitles.front().source.strFile = *m_strList;
}

void CommandLine::ChooseMode()
{
    if (m_strPipe) {
        m_options.mode = Mode::Pipe;
        m_options.pipe = ParsePipeFormat("--pipe", *m_strPipe);
    } else if (!m_listSnapshots.empty()) {
        m_options.mode = Mode::Snapshot;
    }
}

/** Whether options were given for a subtitle without a file. */
bool CommandLine::LacksFile() const
{
    return std::any_of(m_options.listSubtitles.begin(), m_options.listSubtitles.end(),
                       [](const Subtitle &subtitle) { return subtitle.source.strFile.empty(); });
}

/** Throws a Failure for options that exclude each other. */
void CommandLine::CheckModes() const
{
    const bool bEncoding = !m_options.encoder.strCodec.empty() || !m_options.encoder.strPreset.empty() ||
                           m_options.encoder.dCrf || m_strBitrate || m_strAudioCodec || m_strAudioBitrate ||
                           !m_options.encoder.strOptions.empty() || !m_options.encoder.strPixelFormat.empty() ||
                           !m_options.encoder.strHardware.empty() || m_options.encoder.bCompatible ||
                           (!m_options.strFormat.empty());
    const bool bRange = m_options.range.nStart || m_options.range.nDuration;
    if (m_options.mode != Mode::Transcode && (bEncoding || bRange))
        throw Failure(ExitCode::Usage, std::string(m_options.mode == Mode::Pipe ? "--pipe" : "--snapshot") +
                                           " excludes encoding options, --start and --duration");
    if (m_options.mode == Mode::Pipe && (!m_options.strInput.empty() || !m_listSnapshots.empty()))
        throw Failure(ExitCode::Usage, "--pipe takes no INPUT, no OUTPUT and no --snapshot");
    if (m_options.mode == Mode::Pipe && LacksFile())
        throw Failure(ExitCode::Usage, "--pipe needs --subtitles");
    if (m_options.mode != Mode::Pipe && m_options.strOutput.empty())
        throw Failure(ExitCode::Usage,
                      m_options.strInput.empty() ? "INPUT and OUTPUT are missing" : "OUTPUT is missing");
    if (m_options.mode == Mode::Snapshot && !EndsInPng(m_options.strOutput))
        throw Failure(ExitCode::Usage, m_options.strOutput, "--snapshot writes PNG files, whose names end in .png");
}

std::optional<Options> CommandLine::Parse(int nArguments, const char *const *pArguments)
{
    try {
        m_app.parse(nArguments, pArguments);
    } catch (const CLI::CallForHelp &) {
        std::cout << m_app.help();
        return std::nullopt;
    } catch (const CLI::CallForVersion &version) {
        std::cout << version.what() << '\n';
        return std::nullopt;
    } catch (const CLI::ParseError &error) {
        throw Failure(ExitCode::Usage, std::string(error.what()) + " (see subburn --help)");
    }
    Finish();
    return m_options;
}
