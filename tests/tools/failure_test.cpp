#include "subburntest.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

class FailureTest : public SubburnTest
{
protected:
    /** Expects this exit code, only this line on standard error, and no new file. */
    void ExpectFailure(const Arguments &listArguments, int nExit, const std::string &strLine)
    {
        const Arguments listBefore = Names();
        const Outcome outcome = Subburn(listArguments);
        EXPECT_EQ(outcome.nExit, nExit);
        EXPECT_EQ(outcome.strError, "subburn: " + strLine + "\n");
        EXPECT_EQ(outcome.strOut, "");
        EXPECT_EQ(Names(), listBefore);
    }
};

} // namespace

TEST_F(FailureTest, Inputs)
{
    const std::string strOut = File("out.mp4");
    ExpectFailure({File("none.mp4"), strOut}, 2, File("none.mp4") + ": No such file or directory");
    const std::string strText = m_folder.Write("text.mp4", "no video at all");
    ExpectFailure({strText, strOut}, 2, strText + ": Invalid data found when processing input");
    const std::string strSound = Clip("sound.wav", {"-f", "lavfi", "-i", "sine=d=1"});
    ExpectFailure({strSound, strOut}, 2, strSound + ": there is no video in it");
    const std::string strPicture = Clip("cover.png", {"-f", "lavfi", "-i", "testsrc2=s=64x64", "-frames:v", "1"});
    const std::string strAlbum = Clip("album.mp4", {"-i", strSound, "-i", strPicture, "-map", "0", "-map", "1", "-c:a",
                                                    "aac", "-c:v", "copy", "-disposition:v:0", "attached_pic"});
    ExpectFailure({strAlbum, strOut}, 2, strAlbum + ": there is no video in it");
}

TEST_F(FailureTest, Subtitles)
{
    const std::string strInput = UsualClip();
    m_strSubtitles = File("none.srt");
    ExpectFailure({strInput, File("out.mp4")}, 2, m_strSubtitles + ": No such file or directory");
    m_strSubtitles = m_folder.Path().string();
    ExpectFailure({strInput, File("out.mp4")}, 2, m_strSubtitles + ": Is a directory");
    m_strSubtitles = m_folder.Write("text.docx", "text");
    ExpectFailure({strInput, File("out.mp4")}, 2, m_strSubtitles + ": Invalid data found when processing input");
}

TEST_F(FailureTest, OnlyRegularFilesAreRead)
{
    const std::string strInput = UsualClip();
    const std::string strText = m_strSubtitles;
    m_folder.Write("a.idx", "size: 320x180\nid: en, index: 0\ntimestamp: 00:00:00:000, filepos: 000000000\n");
    const auto Failing = [&](const Arguments &listArguments, const std::string &strLine) {
        Arguments listCommand = {"timeout", "20", SUBBURN_PROGRAM};
        listCommand.insert(listCommand.end(), listArguments.begin(), listArguments.end());
        const Outcome outcome = ChildProcess::Run(listCommand);
        EXPECT_EQ(outcome.nExit, 2);
        EXPECT_EQ(outcome.strError, "subburn: " + strLine + "\n");
        EXPECT_EQ(outcome.strOut, "");
    };
    for (const auto &[nType, strKind] :
         {std::pair(S_IFIFO, std::string("pipe")), std::pair(S_IFSOCK, std::string("socket"))}) {
        const std::string strReason = ": is a " + strKind + " and not a regular file";
        for (const char *pName : {".srt", ".ASS", ".ssa", ".mkv", ".vtt", ".sub", ".idx"}) {
            const std::string strFile = File(strKind + pName);
            ASSERT_EQ(mknod(strFile.c_str(), nType | 0600, 0), 0);
            Failing({"--subtitles", strFile, strInput, File("out.mkv")}, strFile + strReason);
            Failing({"--list", strFile}, strFile + strReason);
            Failing({"--subtitles", strText, strFile, File("out.mkv")}, strFile + strReason);
            Failing({"--subtitles", strText, "--snapshot", "1", strFile, File("out.png")}, strFile + strReason);
        }
        std::filesystem::rename(File(strKind + ".sub"), File("a.sub"));
        Failing({"--subtitles", File("a.idx"), strInput, File("out.mkv")},
                File("a.sub") + strReason + " (it holds the pictures of " + File("a.idx") + ")");
    }
    for (const char *pDevice : {"/dev/null", "/dev/zero"}) {
        const std::string strLink = File(std::string(pDevice + 5) + ".srt");
        std::filesystem::create_symlink(pDevice, strLink);
        Failing({"--subtitles", strLink, strInput, File("out.mkv")}, strLink + ": is a device and not a regular file");
        Failing({"--list", pDevice}, std::string(pDevice) + ": is a device and not a regular file");
        Failing({pDevice, File("out.mkv")}, std::string(pDevice) + ": is a device and not a regular file");
    }
    Failing({"--list", "file:" + File("pipe.mkv")}, File("pipe.mkv") + ": is a pipe and not a regular file");
    Failing({"--list", "pipe:0"}, "pipe:0: is a pipe and not a regular file");
}

TEST_F(FailureTest, SubtitlesOfASubstitutedProcess)
{
    const std::string strInput = UsualClip();
    const Outcome outcome = ChildProcess::Run({"bash", "-c",
                                               "exec '" SUBBURN_PROGRAM "' --subtitles <(cat '" + m_strSubtitles +
                                                   "') '" + strInput + "' '" + File("out.mkv") + "'"});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.strError, "subburn: /dev/fd/63: is a pipe and not a regular file\n");
}

TEST_F(FailureTest, SubtitlesThatTheLibraryWouldPassOver)
{
    const std::string strInput = UsualClip();
    m_strSubtitles = File("error.srt");
    std::filesystem::create_symlink("/proc/self/mem", m_strSubtitles);
    ExpectFailure({strInput, File("out.mkv")}, 2, m_strSubtitles + ": Input/output error");
    m_strSubtitles = m_folder.Write("large.srt", "1\n00:00:00,400 --> 00:00:00,800\nHello\n\n");
    const std::uintmax_t nMost = std::uintmax_t(128) << 20;
    std::filesystem::resize_file(m_strSubtitles, nMost + 1);
    ExpectFailure({strInput, File("out.mkv")}, 2,
                  m_strSubtitles + ": has more than 128 MiB of subtitles, which the library does not read");
    std::filesystem::resize_file(m_strSubtitles, nMost);
    const Outcome outcome = Subburn({"--snapshot", "0.5", strInput, File("out.png")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strOut, File("out.png") + ": the picture at 0:00:00.480, with a subtitle\n");
}

#ifndef SANITIZED // sanitizers need descriptors themselves
TEST_F(FailureTest, WithFewDescriptorsAllIsBurntOrNothing)
{
    const std::string strInput = Clip("in.mkv", {"-f", "lavfi", "-i", "color=s=64x36:r=5:d=1", "-i", m_strSubtitles,
                                                 "-c:v", "ffv1", "-c:s", "subrip"});
    bool bBurnt = false;
    bool bRefused = false;
    for (const std::string &strSubtitles : {"--subtitles '" + m_strSubtitles + "' ", std::string()}) {
        for (int nDescriptors = 3; nDescriptors < 30; ++nDescriptors) {
            const Outcome outcome = ChildProcess::Run({"sh", "-c",
                                                       "ulimit -n " + std::to_string(nDescriptors) +
                                                           "; exec '" SUBBURN_PROGRAM "' --codec ffv1 " + strSubtitles +
                                                           "'" + strInput + "' '" + File("out.mkv") + "'"});
            if (outcome.nExit == 0)
                EXPECT_EQ(outcome.strOut, File("out.mkv") + ": 5 frames, 3 with a subtitle\n") << nDescriptors;
            else
                EXPECT_EQ(outcome.strOut, "");
            bBurnt = bBurnt || outcome.nExit == 0;
            bRefused = bRefused ||
                       (outcome.nExit == 2 && outcome.strError.find(": Too many open files\n") != std::string::npos);
        }
    }
    EXPECT_TRUE(bBurnt);
    EXPECT_TRUE(bRefused);
}
#endif

TEST_F(FailureTest, Outputs)
{
    const std::string strInput = UsualClip();
    ExpectFailure({strInput, File("none/out.mp4")}, 3, File("none/out.mp4") + ": No such file or directory");
    ExpectFailure({strInput, File("out.unknown")}, 3,
                  File("out.unknown") + ": its extension does not select a container format");
    ExpectFailure({strInput, File("out.png")}, 3, File("out.png") + ": this is not the name of a video file");
    ExpectFailure({"--codec", "prores_ks", strInput, File("out.webm")}, 3,
                  File("out.webm") + ": the container cannot hold prores video");
    ExpectFailure({strInput, "/dev/null.mp4/a.mp4"}, 3, "/dev/null.mp4/a.mp4: No such file or directory");
    std::filesystem::create_directory(File("folder.mp4"));
    ExpectFailure({strInput, File("folder.mp4")}, 3, File("folder.mp4") + ": exists and is not a regular file");
}

TEST_F(FailureTest, AnInputIsNeverOverwritten)
{
    const std::string strInput = UsualClip();
    ASSERT_EQ(symlink(strInput.c_str(), File("link.mkv").c_str()), 0);
    ExpectFailure({strInput, strInput}, 1, strInput + ": would overwrite an input");
    ExpectFailure({strInput, File("link.mkv")}, 1, File("link.mkv") + ": would overwrite an input");
    std::filesystem::create_hard_link(m_strSubtitles, File("text.mkv"));
    ExpectFailure({strInput, File("text.mkv")}, 1, File("text.mkv") + ": would overwrite an input");
    EXPECT_EQ(Frames(strInput, "gray").size(), 50U);
}

TEST_F(FailureTest, AnExistingOutputIsReplacedOnlyOnSuccess)
{
    const std::string strInput = UsualClip();
    const std::string strOutput = m_folder.Write("out.mkv", "precious");
    ASSERT_EQ(chmod(strOutput.c_str(), 0640), 0);
    const std::string strSubtitles = m_strSubtitles;
    m_strSubtitles = File("none.srt");
    ExpectFailure({strInput, strOutput}, 2, m_strSubtitles + ": No such file or directory");
    std::string strContent;
    std::ifstream(strOutput) >> strContent;
    EXPECT_EQ(strContent, "precious");
    m_strSubtitles = strSubtitles;
    EXPECT_EQ(Frames(Burn(strInput, "out.mkv", {"--preset", "ultrafast"}), "gray").size(), 50U);
    struct stat status = {};
    ASSERT_EQ(stat(strOutput.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(FailureTest, AFullDiskIsAnError)
{
    const std::string strInput = UsualClip();
    const Outcome outcome = ChildProcess::Run({"sh", "-c", "ulimit -f 16; exec \"$0\" \"$@\"", SUBBURN_PROGRAM,
                                               "--subtitles", m_strSubtitles, "--crf", "0", strInput, File("out.mkv")});
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.strError, "subburn: " + File("out.mkv") + ": File too large\n");
    EXPECT_EQ(Names(), (Arguments{"in.mkv", "text.srt"}));
}

TEST_F(FailureTest, DamagedFramesAreCounted)
{
    const std::string strInput = Clip("in.avi", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2", "-c:v", "mjpeg"});
    std::fstream file(strInput, std::ios::in | std::ios::out | std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    // Overwrite the start of an image, so that it cannot be decoded.
    size_t nImage = 0;
    for (int n = 0; n < 30; ++n)
        nImage = content.str().find("\xff\xd8\xff", nImage + 1);
    ASSERT_NE(nImage, std::string::npos);
    file.seekp(static_cast<std::streamoff>(nImage));
    const std::string strZeros(300, '\0');
    file.write(strZeros.data(), static_cast<std::streamsize>(strZeros.size()));
    file.close();
    const Outcome outcome = Subburn({strInput, File("out.mkv"), "--preset", "ultrafast"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError,
              "subburn: warning: " + strInput + ": 1 frame could not be decoded, or not without damage\n");
}

TEST_F(FailureTest, SignalsThatEndAProcessLeaveNothing)
{
    const std::string strInput = Clip(
        "in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=640x360:r=25:d=20", "-c:v", "libx264", "-preset", "ultrafast"});
    for (int nSignal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGVTALRM, SIGPROF, SIGUSR1, SIGUSR2, SIGXCPU, SIGIO,
                        SIGPWR, SIGSTKFLT, SIGRTMIN, SIGRTMAX}) {
        ChildProcess process(
            {SUBBURN_PROGRAM, "--subtitles", m_strSubtitles, "--preset", "veryslow", strInput, File("out.mp4")});
        for (int n = 0; n < 500 && Names().size() < 3; ++n)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(Names().size(), 3U);
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        process.Signal(nSignal);
        const Outcome outcome = process.Wait();
        EXPECT_EQ(outcome.nExit, 130);
        EXPECT_EQ(outcome.strError, "subburn: stopped\n");
        EXPECT_EQ(Names(), (Arguments{"in.mkv", "text.srt"}));
    }
}

TEST_F(FailureTest, IgnoredSignalsStayIgnored)
{
    const std::string strInput = UsualClip();
    ChildProcess process({"env", "--ignore-signal=HUP", SUBBURN_PROGRAM, "--subtitles", m_strSubtitles, "--preset",
                          "veryslow", strInput, File("out.mp4")});
    for (int n = 0; n < 500 && Names().size() < 3; ++n)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    process.Signal(SIGHUP);
    const Outcome outcome = process.Wait();
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strOut, File("out.mp4") + ": 50 frames, 17 with a subtitle\n");
}

TEST_F(FailureTest, WithoutTheLibrary)
{
    std::filesystem::create_directories(File("alone/bin"));
    std::filesystem::copy_file(SUBBURN_PROGRAM, File("alone/bin/subburn"));
    const std::string strInput = UsualClip();
    const Arguments listCommand = {File("alone/bin/subburn"), "--subtitles", m_strSubtitles, strInput, File("out.mkv")};
    Outcome outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 4);
    EXPECT_EQ(outcome.strError,
              "subburn: libsubtitle.so." SUBTITLE_SOVERSION ": the library is neither beside subburn nor installed\n");
    std::filesystem::create_directories(File("alone/lib"));
    m_folder.Write("alone/lib/libsubtitle.so." SUBTITLE_SOVERSION, "not a library");
    outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 4);
    EXPECT_EQ(outcome.strError.find("subburn: " + File("alone/lib/libsubtitle.so." SUBTITLE_SOVERSION) + ": "), 0U);
    const auto Install = [this](const std::string &strLibrary) {
        std::filesystem::copy_file(std::filesystem::path(SUBBURN_PROGRAM).parent_path() / strLibrary,
                                   File("alone/lib/" + strLibrary), std::filesystem::copy_options::overwrite_existing);
    };
    Install("libsubtitle.so." SUBTITLE_SOVERSION);
    outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 4);
    EXPECT_EQ(outcome.strError, "subburn: libsubtitleframe.so." SUBTITLE_SOVERSION
                                ": the library is neither beside subburn nor installed\n");
    Install("libsubtitleframe.so." SUBTITLE_SOVERSION);
    EXPECT_EQ(ChildProcess::Run(listCommand).nExit, 0);
}
