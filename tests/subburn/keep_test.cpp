#include "subburntest.h"

#include <sstream>

namespace
{

class KeepTest : public SubburnTest
{
protected:
    /** Expects the same answer of ffprobe about both files. */
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

    /** Pictures between two sounds; text, an attachment, tags and chapters. */
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

/** Frames at uneven times. */
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
                       "libx264", "-preset", "ultrafast", "-bf", "0", "-output_ts_offset", "100", "-c:a", "mp2"});
    const std::string strOutput = Burn(strInput, "out.mkv", {"--codec", "ffv1"});
    const auto listBefore = Frames(strInput, "yuv420p");
    const auto listAfter = Frames(strOutput, "yuv420p");
    ASSERT_EQ(listBefore.size(), listAfter.size());
    const double dFirst = std::stod(Times(strInput));
    EXPECT_GT(dFirst, 100);
    EXPECT_NEAR(std::stod(Times(strOutput)), dFirst, 0.001);
    const double dStart = std::stod(Probe(strInput, "format=start_time", "", "csv=p=0"));
    std::istringstream times(Times(strInput));
    std::string strTime;
    for (size_t n = 0; n < listBefore.size() && std::getline(times, strTime); ++n) {
        const double dTime = std::stod(strTime) - dStart;
        const bool bDue = (dTime > 0.3995 && dTime < 0.8005) || (dTime > 1.1995 && dTime < 1.4005);
        EXPECT_EQ(listBefore[n] != listAfter[n], bDue) << "frame " << n << " at " << dTime;
    }
}
