#include "subburntest.h"

#include <cmath>
#include <sstream>

namespace
{

class SoundTest : public SubburnTest
{
protected:
    /** Two seconds of black pictures; on the left channel a tone begins after one second. */
    std::string ToneClip(const std::string &strName, const Arguments &listCodec) const
    {
        Arguments listArguments = {"-f", "lavfi", "-i", "color=s=64x64:r=25:d=2",
                                   "-f", "lavfi", "-i", "aevalsrc='if(gte(t,1),sin(3000*t)/2,0)|0':d=2:s=44100"};
        listArguments.insert(listArguments.end(), listCodec.begin(), listCodec.end());
        listArguments.insert(listArguments.end(), {"-preset", "ultrafast", "-metadata:s:a:0", "language=deu"});
        return Clip(strName, listArguments);
    }

    Outcome Converted(const std::string &strInput, const std::string &strOutput,
                      const Arguments &listOptions = {}) const
    {
        Arguments listArguments = {strInput, File(strOutput)};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        return Subburn(listArguments);
    }

    /** Expects two seconds of stereo with the tone only on the left channel, from one second on. */
    void ExpectTone(const std::string &strFile) const
    {
        const Outcome outcome =
            ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-i", strFile, "-map", "0:a:0", "-af",
                               "aresample=8000:async=1:first_pts=0", "-f", "s16le", "-ac", "2", "-"});
        const auto Loudest = [&](double dFrom, double dTo, size_t nChannel) {
            int nLoudest = 0;
            for (size_t n = dFrom * 8000; n < static_cast<size_t>(dTo * 8000) && n * 4 + 3 < outcome.strOut.size();
                 ++n) {
                const auto Byte = [&](size_t nByte) {
                    return static_cast<int>(static_cast<unsigned char>(outcome.strOut[n * 4 + nChannel * 2 + nByte]));
                };
                nLoudest = std::max(nLoudest, std::abs(static_cast<int16_t>(Byte(0) | Byte(1) << 8)));
            }
            return nLoudest;
        };
        EXPECT_NEAR(outcome.strOut.size() / 4.0 / 8000, 2, 0.06) << strFile;
        EXPECT_LT(Loudest(0, 0.96, 0), 1200) << strFile;
        EXPECT_NEAR(Loudest(1.04, 1.9, 0), 16384, 2500) << strFile;
        EXPECT_LT(Loudest(0, 1.9, 1), 1200) << strFile;
    }
};

} // namespace

TEST_F(SoundTest, WhatTheContainerCannotHoldIsEncoded)
{
    const std::string strInput = ToneClip("in.mkv", {"-c:a", "pcm_u8"});
    for (const auto &[strName, strCodec] :
         {std::pair<std::string, std::string>("out.mp4", "aac"), {"out.webm", "opus"}, {"out.ogv", "vorbis"}}) {
        const Outcome outcome = Converted(strInput, strName);
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_EQ(outcome.strOut, File(strName) + ": stream 1 is encoded as " + strCodec +
                                      ", as this container cannot hold pcm_u8\n" + File(strName) +
                                      ": 50 frames, 17 with a subtitle\n");
        EXPECT_EQ(Probe(File(strName), "stream=codec_name", "a", "csv=p=0").substr(0, strCodec.size()), strCodec);
        EXPECT_EQ(Probe(File(strName), "stream_tags=language", "a:0", "csv=p=0").substr(0, 3), "deu");
        ExpectTone(File(strName));
    }
    EXPECT_EQ(std::stod(Times(File("out.mp4"))), 0);
}

TEST_F(SoundTest, ChannelsWithoutNamesAreCopiedOrEncoded)
{
    // Whether MP4 can hold PCM depends on FFmpeg.
    const std::string strStereo = ToneClip("stereo.mkv", {"-c:a", "pcm_s16le"});
    const std::string strNine = Clip("nine.mkv", {"-f", "lavfi", "-i", "color=s=64x64:r=25:d=2", "-f", "lavfi", "-i",
                                                  "aevalsrc=0|0|0|0|0|0|0|0|0:d=2", "-c:a", "pcm_s16le"});
    for (const char *pName : {"stereo.mp4", "stereo.mov", "again.mkv"})
        ExpectTone(Burn(strStereo, pName, {}));
    EXPECT_EQ(Probe(Burn(strNine, "nine.mov", {}), "stream=codec_name,channels", "a", "csv=p=0"), "pcm_s16le,9\n");
    const Outcome outcome = Converted(strNine, "nine.mp4");
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.strError, "subburn: " + File("nine.mp4") +
                                    ": the encoder aac does not take the sound or these options: Invalid argument\n");
}

TEST_F(SoundTest, LosslessSoundAndSeveralChannelsAreEncoded)
{
    const std::string strInput = Clip("in.mkv", {"-f",
                                                 "lavfi",
                                                 "-i",
                                                 "color=s=64x64:r=25:d=1",
                                                 "-f",
                                                 "lavfi",
                                                 "-i",
                                                 "sine=d=1:sample_rate=96000",
                                                 "-filter_complex",
                                                 "[1:a]pan=5.1(side)|FL=c0|FR=c0|FC=c0|LFE=c0|SL=c0|SR=c0[surround]",
                                                 "-map",
                                                 "0:v",
                                                 "-map",
                                                 "[surround]",
                                                 "-c:a",
                                                 "truehd",
                                                 "-strict",
                                                 "-2",
                                                 "-preset",
                                                 "ultrafast"});
    for (const auto &[strName, strCodec, strRate] :
         {std::tuple<std::string, std::string, std::string>("out.mp4", "aac", "96000"),
          {"out.webm", "opus", "48000"}}) {
        const Outcome outcome = Converted(strInput, strName);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        EXPECT_EQ(Probe(File(strName), "stream=codec_name,sample_rate,channels,channel_layout", "a", "csv=p=0"),
                  strCodec + "," + strRate + ",6,5.1\n");
    }
}

TEST_F(SoundTest, TheCodecCanBeChosen)
{
    const std::string strInput = ToneClip("in.mp4", {"-c:a", "aac"});
    EXPECT_EQ(Converted(strInput, "flac.mkv", {"--audio-codec", "flac"}).nExit, 0);
    EXPECT_EQ(Probe(File("flac.mkv"), "stream=codec_name", "a", "csv=p=0"), "flac\n");
    ExpectTone(File("flac.mkv"));
    EXPECT_EQ(Converted(strInput, "low.mp4", {"--audio-codec", "libmp3lame", "--audio-bitrate", "64k"}).nExit, 0);
    EXPECT_EQ(Probe(File("low.mp4"), "stream=codec_name,bit_rate", "a", "csv=p=0").substr(0, 6), "mp3,64");
    const Outcome none = Converted(strInput, "none.mp4", {"--audio-codec", "none"});
    EXPECT_EQ(none.nExit, 0);
    EXPECT_EQ(none.strError, "");
    EXPECT_EQ(Probe(File("none.mp4"), "stream=codec_type", "", "csv=p=0"), "video\n");
    const Outcome unknown = Converted(strInput, "out.mp4", {"--audio-codec", "nonsense"});
    EXPECT_EQ(unknown.nExit, 1);
    EXPECT_EQ(unknown.strError, "subburn: --audio-codec: there is no audio encoder named \"nonsense\"\n");
    const Outcome unfit = Converted(strInput, "out.webm", {"--audio-codec", "aac"});
    EXPECT_EQ(unfit.nExit, 3);
    EXPECT_EQ(unfit.strError, "subburn: " + File("out.webm") + ": the container cannot hold aac sound\n");
}

TEST_F(SoundTest, NothingIsWrittenWhereNoSoundWouldBeLeft)
{
    const std::string strInput = ToneClip("in.mkv", {"-c:a", "pcm_u8"});
    const Outcome outcome = Converted(strInput, "out.mp4", {"--audio-codec", "copy"});
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.strError, "subburn: warning: " + File("out.mp4") +
                                    ": left out stream 1 (audio, pcm_u8), which this container cannot hold\nsubburn: " +
                                    File("out.mp4") + ": no sound would be left (--audio-codec none leaves it out)\n");
    EXPECT_EQ(Names(), (Arguments{"in.mkv", "text.srt"}));
}
