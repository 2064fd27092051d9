#include "decodedfilm.h"

#include "examplestest.h"
#include "libsubtitle.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

DecodedFilm::DecodedFilm(const std::string &strVideo, const std::string &strFormat, const SubtitleFrame &description) :
    m_strFormat(strFormat), m_description(description)
{
    m_description.format = SubtitlePixelFormat(strFormat.c_str());
    const int nBytes = av_image_get_buffer_size(static_cast<AVPixelFormat>(m_description.format), m_description.width,
                                                m_description.height, 1);
    const Outcome outcome = ChildProcess::Run({"ffmpeg", "-nostdin", "-v", "error", "-noautorotate", "-i", strVideo,
                                               "-fps_mode", "passthrough", "-f", "rawvideo", "-"});
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    EXPECT_EQ(outcome.strOut.size() % nBytes, 0U);
    for (std::size_t n = 0; n + nBytes <= outcome.strOut.size(); n += nBytes)
        m_listFrames.push_back(outcome.strOut.substr(n, nBytes));
}

std::string DecodedFilm::Burnt(std::size_t nFrame, long nMilliseconds, const std::string &strSubtitles) const
{
    std::string strFrame = m_listFrames[nFrame];
    SubtitleFrame frame = m_description;
    av_image_fill_arrays(frame.data, frame.linesize, reinterpret_cast<std::uint8_t *>(strFrame.data()),
                         static_cast<AVPixelFormat>(frame.format), frame.width, frame.height, 1);
    const bool bTransposed = frame.orientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    void *pSubtitle =
        CreateVideoSubtitle(bTransposed ? frame.height : frame.width, bTransposed ? frame.width : frame.height);
    void *pBurner = CreateSubtitleBurner(pSubtitle);
    EXPECT_EQ(SetSubtitleFile(pSubtitle, strSubtitles.c_str(), 0), 0);
    EXPECT_EQ(SetSubtitleTimeStamp(pSubtitle, nMilliseconds), 0);
    EXPECT_EQ(BurnSubtitle(pBurner, &frame), 0);
    DestroySubtitleBurner(pBurner);
    DestroyVideoSubtitle(pSubtitle);
    return strFrame;
}

void DecodedFilm::ExpectFrame(std::size_t nFrame, const std::string &strFrame, long nMilliseconds,
                              const std::string &strSubtitles, const std::set<int> &setValues) const
{
    SCOPED_TRACE(m_strFormat + " frame " + std::to_string(nFrame) + " at " + std::to_string(nMilliseconds) + " ms");
    ASSERT_LT(nFrame, m_listFrames.size());
    const std::string &strInput = m_listFrames[nFrame];
    ASSERT_EQ(strFrame.size(), strInput.size());
    if (!Film::IsDue(nMilliseconds)) {
        EXPECT_TRUE(strFrame == strInput);
        return;
    }
    EXPECT_TRUE(strFrame == Burnt(nFrame, nMilliseconds, strSubtitles));
    const auto &component = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(m_description.format))->comp[0];
    const std::size_t nSamples = static_cast<std::size_t>(m_description.width) * m_description.height;
    const auto sample = [&](const std::string &strBytes, std::size_t n) {
        const auto byte = [&](std::size_t nByte) { return static_cast<unsigned char>(strBytes[nByte]); };
        return component.depth > 8 ? byte(2 * n) | byte(2 * n + 1) << 8 : byte(component.step * n);
    };
    std::set<int> setChanged;
    for (std::size_t n = 0; n < nSamples; ++n) {
        if (sample(strFrame, n) != sample(strInput, n))
            setChanged.insert(sample(strFrame, n));
    }
    EXPECT_EQ(setChanged, setValues);
}
