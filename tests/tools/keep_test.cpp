#include "subburntest.h"

#include <cstdlib>
#include <sstream>

namespace
{

class KeepTest : public SubburnTest
{
protected:
    /** Expects the same answer from ffprobe about both files. */
    void ExpectSame(const std::string &strA, const std::string &strB, const std::string &strEntries,
                    const std::string &strStreams = "") const
    {
        const std::string strAnswer = Probe(strA, strEntries, strStreams, "csv");
        EXPECT_NE(strAnswer, "") << strEntries;
        EXPECT_EQ(strAnswer, Probe(strB, strEntries, strStreams, "csv")) << strEntries;
    }

    std::string PacketSums(const std::string &strFile, const std::string &strStream) const
    {
        const Outcome outcome = ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-copyts", "-i", strFile,
                                                   "-map", "0:" + strStream, "-c", "copy", "-f", "framemd5", "-"});
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        return outcome.strOut;
    }

    /** A video stream between two audio streams, with subtitles, an attachment, tags and chapters. */
    std::string ClipOfManyStreams() const
    {
        const std::string strFont = m_folder.Write("extra.ttf", "not really a font");
        const std::string strTags = m_folder.Write(
            "tags.txt", ";FFMETADATA1\ntitle=A title\ncomment=Two words\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=900\n"
                        "title=One\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=900\nEND=2000\ntitle=Two\n");
        return Clip("in.mkv", {"-f",
                               "lavfi",
                               "-i",
                               "testsrc2=s=320x180:r=25:d=2",
                               "-f",
                               "lavfi",
                               "-i",
                               "sine=d=2",
                               "-f",
                               "lavfi",
                               "-i",
                               "sine=f=880:d=2",
                               "-i",
                               m_strSubtitles,
                               "-i",
                               strTags,
                               "-map",
                               "1:a",
                               "-map",
                               "0:v",
                               "-map",
                               "2:a",
                               "-map",
                               "3:s",
                               "-map_metadata",
                               "4",
                               "-map_chapters",
                               "4",
                               "-c:a:0",
                               "aac",
                               "-c:a:1",
                               "libmp3lame",
                               "-c:s",
                               "subrip",
                               "-metadata:s:v:0",
                               "title=Picture",
                               "-metadata:s:a:0",
                               "language=deu",
                               "-metadata:s:a:1",
                               "language=eng",
                               "-disposition:a:0",
                               "0",
                               "-disposition:a:1",
                               "default+comment",
                               "-attach",
                               strFont,
                               "-metadata:s:t",
                               "mimetype=application/x-truetype-font",
                               "-preset",
                               "ultrafast"});
    }
};

/** A source of frames at uneven times. */
const char *const Uneven = "testsrc2=s=320x180:r=25:d=2,select='not(eq(mod(n,7),3))*not(between(n,22,27))'";

} // namespace

TEST_F(KeepTest, TimesOfUnevenFrames)
{
    for (const char *pExtension : {"mkv", "mp4", "mov"}) {
        const std::string strInput =
            Clip(std::string("in.") + pExtension, {"-f", "lavfi", "-i", Uneven, "-fps_mode", "vfr", "-bf", "2"});
        const std::string strOutput = Burn(strInput, std::string("out.") + pExtension, {"--preset", "ultrafast"});
        ExpectSame(strInput, strOutput, "frame=pts,pkt_pts_time", "v");
        ExpectSame(strInput, strOutput, "stream=time_base", "v");
        EXPECT_EQ(Times(strInput), Times(strOutput));
    }
}

TEST_F(KeepTest, TimesOfReorderedFrames)
{
    const std::string strInput = UsualClip("in.mp4");
    const std::string strOutput = Burn(strInput, "out.mp4", {"--preset", "medium"});
    EXPECT_EQ(Times(strInput), Times(strOutput));
    EXPECT_NE(Probe(strOutput, "frame=pict_type", "v", "csv=p=0").find('B'), std::string::npos);
    ExpectSame(strInput, strOutput, "format=duration");
    ExpectSame(strInput, strOutput, "stream=avg_frame_rate,nb_frames", "v");
}

TEST_F(KeepTest, TimesFinerThanMpeg4Counts)
{
    const std::string strInput =
        Clip("in.mp4", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=24000/1001:d=2", "-video_track_timescale", "90000"});
    const std::string strOutput = Burn(strInput, "out.mp4", {"--codec", "mpeg4"});
    EXPECT_EQ(Probe(strOutput, "stream=codec_name", "v"), "codec_name=mpeg4\n");
    EXPECT_EQ(Times(strInput), Times(strOutput));
}

TEST_F(KeepTest, TimesInContainersOfEvenFrames)
{
    const std::string strInput = UsualClip("in.mp4");
    const std::string strOutput = Burn(strInput, "out.avi", {"--codec", "mpeg4"});
    EXPECT_EQ(Frames(strOutput, "gray").size(), 50U);
    EXPECT_EQ(Probe(strOutput, "stream=r_frame_rate", "v"), "r_frame_rate=25/1\n");
}

TEST_F(KeepTest, ShapeAndColoursOfThePicture)
{
    const std::string strInput =
        Clip("in.mp4", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=1,setsar=16/11", "-pix_fmt", "yuv420p",
                        "-color_range", "pc", "-color_primaries", "bt470bg", "-color_trc", "gamma28", "-colorspace",
                        "bt470bg", "-chroma_sample_location", "topleft"});
    for (const char *pName : {"out.mp4", "out.mkv"})
        ExpectSame(strInput, Burn(strInput, pName, {"--preset", "ultrafast"}),
                   "stream=sample_aspect_ratio,color_range,color_space,color_transfer,color_primaries,chroma_location,"
                   "pix_fmt,width,height",
                   "v");
}

TEST_F(KeepTest, FieldOrder)
{
    const std::string strInput = Clip("in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=320x192:r=50:d=2,interlace", "-flags",
                                                 "+ildct+ilme", "-x264opts", "tff=1"});
    const std::string strOutput = Burn(strInput, "out.mkv", {"--preset", "ultrafast"});
    ExpectSame(strInput, strOutput, "frame=interlaced_frame,top_field_first", "v");
}

TEST_F(KeepTest, SoundAndOtherStreams)
{
    const std::string strInput = ClipOfManyStreams();
    const std::string strOutput = Burn(strInput, "out.mkv", {"--preset", "ultrafast"});
    for (const char *pStream : {"a:0", "a:1", "s:0"})
        EXPECT_EQ(PacketSums(strInput, pStream), PacketSums(strOutput, pStream)) << pStream;
    ExpectSame(strInput, strOutput, "stream=codec_type,codec_name:stream_tags=title,language,filename,mimetype");
    ExpectSame(strInput, strOutput, "stream_disposition=default,comment");
    ExpectSame(strInput, strOutput, "chapter=start_time,end_time:chapter_tags=title");
    ExpectSame(strInput, strOutput, "format_tags=title,comment");
    EXPECT_EQ(ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-dump_attachment:t:0", File("dump"), "-i",
                                 strOutput, "-f", "null", "-t", "0.1", "-"})
                  .nExit,
              0);
    std::stringstream dump;
    dump << std::ifstream(File("dump")).rdbuf();
    EXPECT_EQ(dump.str(), "not really a font");
}

TEST_F(KeepTest, AttachedPicture)
{
    const std::string strPicture = Clip("cover.png", {"-f", "lavfi", "-i", "testsrc2=s=64x64", "-frames:v", "1"});
    const std::string strInput = Clip("in.mp4", {"-i", strPicture, "-i", UsualClip(), "-map", "0", "-map", "1", "-c",
                                                 "copy", "-disposition:v:0", "attached_pic"});
    const std::string strOutput = Burn(strInput, "out.mp4", {"--preset", "ultrafast"});
    ExpectSame(strInput, strOutput, "stream=codec_name,width:stream_disposition=attached_pic");
    EXPECT_EQ(Probe(strOutput, "stream=codec_name", "v").find("codec_name=h264"), 0U);
    EXPECT_NE(Probe(strOutput, "stream=codec_name", "v").find("codec_name=png"), std::string::npos);
}

TEST_F(KeepTest, WhatTheContainerCannotHoldIsNamed)
{
    const std::string strInput =
        Clip("in.mkv", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=1", "-i", m_strSubtitles, "-map", "0", "-map",
                        "1", "-c:s", "subrip", "-preset", "ultrafast"});
    const Outcome outcome = Subburn({strInput, File("out.mp4")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "subburn: warning: " + File("out.mp4") +
                                    ": left out stream 1 (subtitle, subrip), which this container cannot hold\n");
    EXPECT_EQ(Probe(File("out.mp4"), "stream=codec_name"), "codec_name=h264\n");
}

TEST_F(KeepTest, Transparency)
{
    for (const auto &[strPixels, strExpected] : {std::pair<std::string, std::string>("yuva444p10le", "yuva444p10le"),
                                                 {"rgba", "bgra"},
                                                 {"gbrap12le", "gbrap12le"}}) {
        const std::string strInput =
            Clip("in.mkv", {"-f", "lavfi", "-i", "color=red@0.5:s=320x180:r=5:d=1,format=" + strPixels, "-c:v",
                            strPixels == "rgba" ? "png" : "ffv1"});
        const std::string strOutput = Burn(strInput, "out.mkv", {"--codec", "ffv1"});
        EXPECT_EQ(Probe(strOutput, "stream=pix_fmt", "v", "csv=p=0"), strExpected + "\n");
        const auto listFrames = Frames(strOutput, "rgba");
        const auto Alphas = [&](size_t nFrame) {
            std::array<int, 256> listCounts{};
            for (size_t n = 3; n < listFrames[nFrame].size(); n += 4)
                ++listCounts[static_cast<unsigned char>(listFrames[nFrame][n])];
            return listCounts;
        };
        EXPECT_EQ(Alphas(0)[127] + Alphas(0)[128], 320 * 180) << strPixels;
        // The text is opaque.
        EXPECT_GT(Alphas(3)[255], 50) << strPixels;
    }
    const Outcome outcome = Subburn({"--codec", "libx264", "--preset", "ultrafast", File("in.mkv"), File("out.mkv")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError,
              "subburn: warning: " + File("out.mkv") + ": the transparency is lost, libx264 has none\n");
}

TEST_F(KeepTest, WhatOnlyTheBitStreamSaysOfHdr)
{
    const std::string strInput =
        Clip("in.ts", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=5:d=1,format=yuv420p10le", "-c:v", "libx265",
                       "-preset", "ultrafast", "-x265-params",
                       "log-level=none:hdr10=1:master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L("
                       "10000000,1):max-cll=1000,400"});
    const Outcome outcome = Subburn({"--codec", "libx265", "--preset", "ultrafast", strInput, File("out.mkv")});
    EXPECT_EQ(outcome.nExit, 0);
    // libx265 itself writes to standard error, which subburn suppresses.
    EXPECT_EQ(outcome.strError, "");
    const std::string strData = Probe(File("out.mkv"), "stream_side_data");
    for (const char *pLine : {"red_x=17/25", "max_luminance=1000/1", "max_content=1000", "max_average=400"})
        EXPECT_NE(strData.find(pLine), std::string::npos) << pLine << "\n" << strData;
}

TEST_F(KeepTest, AnInputThatIsCutOffIsWarnedOf)
{
    const std::string strWhole = UsualClip("whole.mkv");
    const std::string strInput = File("in.mkv");
    std::filesystem::copy(strWhole, strInput);
    std::filesystem::resize_file(strInput, std::filesystem::file_size(strWhole) / 4);
    const Outcome outcome = Subburn({"--preset", "ultrafast", strInput, File("out.mkv")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_NE(outcome.strError.find("subburn: warning: " + strInput + ": the pictures end at 0:00:00."),
              std::string::npos)
        << outcome.strError;
    EXPECT_NE(outcome.strError.find(", but it names 0:00:02.000 as their end; it may be cut off\n"), std::string::npos)
        << outcome.strError;
}

TEST_F(KeepTest, TheLastPictureOfASlideShowIsNoMissingEnd)
{
    // Only the DURATION tag in Matroska includes the four seconds of the last picture.
    const std::string strInput =
        Clip("in.mkv",
             {"-f", "lavfi", "-i", "color=s=64x64:r=1:d=4,setpts='if(eq(N,3),6,N)/TB'", "-fps_mode", "vfr",
              "-enc_time_base", "1:1000", "-c:v", "mpeg4", "-bsf:v", "setts=duration='if(eq(N,3),4000,DURATION)'"});
    m_strSubtitles = m_folder.Write("slides.srt", "1\n00:00:00,900 --> 00:00:02,500\nHello\n\n");
    EXPECT_EQ(Probe(strInput, "stream_tags=DURATION", "v", "csv=p=0").substr(0, 11), "00:00:10.00");
    Burn(strInput, "out.mkv", {"--preset", "ultrafast"});
}

TEST_F(KeepTest, ContainersGetACodecTheyHold)
{
    const std::string strInput = Clip("in.mp4", {"-f", "lavfi", "-i", "testsrc2=s=96x64:r=25:d=0.6"});
    EXPECT_EQ(Probe(Burn(strInput, "out.webm", {}), "stream=codec_name"), "codec_name=vp9\n");
    EXPECT_EQ(Probe(Burn(strInput, "out.ts", {}), "stream=codec_name", "v").substr(0, 16), "codec_name=h264\n");
    EXPECT_EQ(Probe(Burn(strInput, "out.ogv", {}), "stream=codec_name"), "codec_name=theora\n");
    EXPECT_EQ(Frames(File("out.ogv"), "gray").size(), 15U);
}

TEST_F(KeepTest, TheClockOfTransportStreams)
{
    const std::string strInput =
        Clip("in.ts", {"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2", "-f", "lavfi", "-i", "sine=d=2", "-c:v",
                       "libx264", "-preset", "ultrafast", "-bf", "0", "-output_ts_offset", "90000", "-c:a", "mp2"});
    const auto listBefore = Frames(strInput, "yuv420p");
    const double dFirst = std::stod(Times(strInput));
    const double dStart = std::stod(Probe(strInput, "format=start_time", "", "csv=p=0"));
    EXPECT_GT(dStart, 90000);
    const auto ExpectTimes = [&](const std::string &strName, const Arguments &listOptions, double dExpected) {
        const std::string strOutput = Burn(strInput, strName, listOptions);
        for (const char *pStream : {"v", "a"}) {
            const std::string strTimes = Probe(strOutput, "frame=best_effort_timestamp_time", pStream, "csv=p=0");
            EXPECT_NEAR(std::strtod(strTimes.c_str(), nullptr), dExpected, 0.1) << strName << pStream;
        }
        return strOutput;
    };
    const auto listAfter = Frames(ExpectTimes("out.mkv", {"--codec", "ffv1"}, dFirst - dStart), "yuv420p");
    ExpectTimes("out.mp4", {"--preset", "ultrafast"}, dFirst - dStart);
    ExpectTimes("out.avi", {"--preset", "ultrafast"}, dFirst - dStart);
    ExpectTimes("kept.mkv", {"--keep-times", "--preset", "ultrafast"}, dFirst);
    ExpectTimes("out.ts", {"--preset", "ultrafast"}, dFirst);
    ASSERT_EQ(listBefore.size(), listAfter.size());
    std::istringstream times(Times(strInput));
    std::string strTime;
    for (size_t n = 0; n < listBefore.size() && std::getline(times, strTime); ++n) {
        const double dTime = std::stod(strTime) - dStart;
        const bool bDue = (dTime > 0.3995 && dTime < 0.8005) || (dTime > 1.1995 && dTime < 1.4005);
        EXPECT_EQ(listBefore[n] != listAfter[n], bDue) << "frame " << n << " at " << dTime;
    }
}
