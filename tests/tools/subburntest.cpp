#include "subburntest.h"

#include <algorithm>
#include <sstream>

void Bounds::Add(int x, int y)
{
    nLeft = std::min(nLeft, x);
    nTop = std::min(nTop, y);
    nRight = std::max(nRight, x + 1);
    nBottom = std::max(nBottom, y + 1);
}

SubburnTest::SubburnTest() :
    m_strSubtitles(m_folder.Write("text.srt", "1\n00:00:00,400 --> 00:00:00,800\nHello\n\n"
                                              "2\n00:00:01,200 --> 00:00:01,400\nTwo\nlines\n\n"))
{
}

std::string SubburnTest::Clip(const std::string &strName, const Arguments &listArguments) const
{
    Arguments listCommand = {"ffmpeg", "-nostdin", "-v", "error", "-y"};
    listCommand.insert(listCommand.end(), listArguments.begin(), listArguments.end());
    listCommand.push_back(File(strName));
    const Outcome outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    return File(strName);
}

std::string SubburnTest::UsualClip(const std::string &strName) const
{
    return Clip(strName, {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2", "-c:v", "libx264", "-preset", "ultrafast",
                          "-pix_fmt", "yuv420p"});
}

std::string SubburnTest::PictureSubtitles()
{
    const auto Segment = [](int nMilliseconds, char cType, const std::string &strContent) {
        std::string strSegment = "PG";
        for (const int nNumber : {nMilliseconds * 90, 0}) {
            for (const int nShift : {24, 16, 8, 0})
                strSegment += static_cast<char>(nNumber >> nShift & 0xff);
        }
        return strSegment + cType + '\0' + static_cast<char>(strContent.size()) + strContent;
    };
    const auto Bytes = [](std::initializer_list<int> listBytes) {
        return std::string(listBytes.begin(), listBytes.end());
    };
    // A page of 320x180 with one object at 8,8; a window of 8x8 there; a palette; the object, of one colour.
    const std::string strPage = Bytes({1, 64, 0, 180, 16, 0, 1, 128, 0, 0, 1, 0, 0, 0, 0, 0, 8, 0, 8});
    const std::string strWindow = Bytes({1, 0, 0, 8, 0, 8, 0, 8, 0, 8});
    const std::string strPalette = Bytes({0, 0, 1, 235, 128, 128, 255});
    std::string strObject = Bytes({0, 0, 0, 192, 0, 0, 44, 0, 8, 0, 8});
    for (int y = 0; y < 8; ++y)
        strObject += Bytes({0, 136, 1, 0, 0});
    const std::string strEmptyPage = Bytes({1, 64, 0, 180, 16, 0, 2, 0, 0, 0, 0});
    return Segment(400, '\x16', strPage) + Segment(400, '\x17', strWindow) + Segment(400, '\x14', strPalette) +
           Segment(400, '\x15', strObject) + Segment(400, '\x80', "") + Segment(800, '\x16', strEmptyPage) +
           Segment(800, '\x17', strWindow) + Segment(800, '\x80', "");
}

Outcome SubburnTest::Subburn(const Arguments &listArguments, const std::string &strInput,
                             const ChildProcess::Environment &listExtra) const
{
    Arguments listCommand = {SUBBURN_PROGRAM};
    if (!m_strSubtitles.empty())
        listCommand.insert(listCommand.end(), {"--subtitles", m_strSubtitles});
    const auto Has = [&](const char *pOption) {
        return std::find(listArguments.begin(), listArguments.end(), pOption) != listArguments.end();
    };
    // A test may write the same output several times.
    if (!Has("--list") && !Has("--pipe") && !Has("--no-overwrite"))
        listCommand.emplace_back("--overwrite");
    listCommand.insert(listCommand.end(), listArguments.begin(), listArguments.end());
    return ChildProcess::Run(listCommand, strInput, listExtra);
}

std::string SubburnTest::Burn(const std::string &strInput, const std::string &strOutput,
                              const Arguments &listOptions) const
{
    Arguments listArguments = {"--font", "DejaVu Sans"};
    listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
    listArguments.push_back(strInput);
    listArguments.push_back(File(strOutput));
    const Outcome outcome = Subburn(listArguments);
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    EXPECT_EQ(outcome.strError, "");
    return File(strOutput);
}

std::vector<std::string> SubburnTest::Decode(const std::string &strFile, const std::string &strFormat,
                                             const Arguments &listOptions) const
{
    Arguments listCommand = {"ffmpeg", "-nostdin", "-v", "error"};
    listCommand.insert(listCommand.end(), listOptions.begin(), listOptions.end());
    for (const char *pArgument : {"-i", strFile.c_str(), "-map", "0:v:0", "-fps_mode", "passthrough", "-f", "rawvideo",
                                  "-pix_fmt", strFormat.c_str(), "-"})
        listCommand.emplace_back(pArgument);
    const Outcome outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    const std::string strTimes = Times(strFile);
    const size_t nFrames = std::count(strTimes.begin(), strTimes.end(), '\n');
    std::vector<std::string> listFrames;
    EXPECT_GT(nFrames, 0U);
    EXPECT_EQ(outcome.strOut.size() % std::max<size_t>(nFrames, 1), 0U);
    const size_t nBytes = outcome.strOut.size() / std::max<size_t>(nFrames, 1);
    for (size_t n = 0; n < nFrames; ++n)
        listFrames.push_back(outcome.strOut.substr(n * nBytes, nBytes));
    return listFrames;
}

std::string SubburnTest::Content(const std::string &strFile)
{
    std::ostringstream content;
    content << std::ifstream(strFile, std::ios::binary).rdbuf();
    return content.str();
}

std::vector<std::string> SubburnTest::Frames(const std::string &strFile, const std::string &strFormat) const
{
    return Decode(strFile, strFormat, {"-noautorotate"});
}

std::vector<std::string> SubburnTest::ShownFrames(const std::string &strFile, const std::string &strFormat) const
{
    return Decode(strFile, strFormat, {});
}

std::string SubburnTest::Probe(const std::string &strFile, const std::string &strEntries, const std::string &strStreams,
                               const std::string &strFormat) const
{
    Arguments listCommand = {"ffprobe", "-v", "error", "-show_entries", strEntries, "-of", strFormat};
    if (!strStreams.empty())
        listCommand.insert(listCommand.end(), {"-select_streams", strStreams});
    listCommand.push_back(strFile);
    const Outcome outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    return outcome.strOut;
}

std::string SubburnTest::Times(const std::string &strFile) const
{
    // Only up to the first comma: newer ffprobe versions append side data to the line.
    std::istringstream lines(Probe(strFile, "frame=pts_time", "v:0", "csv=p=0"));
    std::string strTimes;
    std::string strLine;
    while (std::getline(lines, strLine)) {
        const std::string strTime = strLine.substr(0, strLine.find(','));
        if (!strTime.empty())
            strTimes += strTime + "\n";
    }
    return strTimes;
}

std::vector<std::string> SubburnTest::Names() const
{
    std::vector<std::string> listNames;
    for (const auto &entry : std::filesystem::directory_iterator(m_folder.Path()))
        listNames.push_back(entry.path().filename().string());
    std::sort(listNames.begin(), listNames.end());
    return listNames;
}

Bounds SubburnTest::Difference(const std::string &strA, const std::string &strB, int nWidth, int nBytes)
{
    Bounds bounds;
    EXPECT_EQ(strA.size(), strB.size());
    for (size_t n = 0; n < std::min(strA.size(), strB.size()); ++n) {
        const int nPixel = static_cast<int>(n) / nBytes;
        if (strA[n] != strB[n])
            bounds.Add(nPixel % nWidth, nPixel / nWidth);
    }
    return bounds;
}
