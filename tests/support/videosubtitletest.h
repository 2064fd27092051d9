#pragma once

#include "support/blendoracle.h"
#include "support/guardedframe.h"
#include "support/paintoracle.h"
#include "support/temporaryfolder.h"
#include "support/videosubtitlepeer.h"

#include <gtest/gtest.h>

/** A renderer with a known font, whose frames are compared with the plain painter and the plain blend. */
class VideoSubtitleTest : public testing::Test
{
protected:
    static constexpr int Width = 333;
    static constexpr int Height = 187;

    VideoSubtitleTest()
    {
        m_renderer.CreateVideoSubtitle(Width, Height);
        m_renderer.SetFontParam("DejaVu Sans", 12, 0);
        m_peer.Dirty() = 0;
    }

    /** Opens a file of three cues: "one" from 1 s to 2 s, "two" from 3 s to 4 s, "one" from 5 s to 6 s. */
    int OpenCues()
    {
        return m_renderer.SetSubtitleFile(m_folder
                                              .Write("cues.srt", "00:00:01,000 --> 00:00:02,000\none\n\n"
                                                                 "00:00:03,000 --> 00:00:04,000\ntwo\n\n"
                                                                 "00:00:05,000 --> 00:00:06,000\none\n")
                                              .c_str(),
                                          0);
    }

    void Process(GuardedFrame &frame)
    {
        AVPicture picture = frame.Picture();
        EXPECT_EQ(m_renderer.ProcessFrame(&picture), 0);
    }

    /** Draws the expected frame for the current settings, by the plain painter and the plain blend. */
    void ProcessPlainly(GuardedFrame &frame, const QString &text) const
    {
        const PlainText plain = PaintTextPlainly(
            {*m_peer.Font(), m_peer.FontColor(), m_peer.OutlineColor(), m_peer.Outline()}, Width, Height, text);
        AVPicture picture = frame.Picture();
        BlendPlainly(picture.data[0], picture.linesize[0],
                     {plain.image.constBits(), plain.rcText.x(), plain.rcText.y(), plain.rcText.width(),
                      plain.rcText.height(), Width, Height, m_peer.Alpha(),
                      m_peer.LogoPos() * Height / 100 - plain.nTextHeight / 2});
    }

    /** @return whether anything is drawn: text may lie wholly outside the frame */
    bool ExpectFrameAsPlain(const QString &text, int padding)
    {
        GuardedFrame frame(Width, Height, padding);
        GuardedFrame expected(Width, Height, padding);
        Process(frame);
        ProcessPlainly(expected, text);
        EXPECT_TRUE(frame.Bytes() == expected.Bytes());
        return frame.Bytes() != GuardedFrame(Width, Height, padding).Bytes();
    }

    void ExpectFrameShows(const QString &text, int padding = 0) { EXPECT_TRUE(ExpectFrameAsPlain(text, padding)); }

    void ExpectFrameUntouched()
    {
        GuardedFrame frame(Width, Height, 3);
        Process(frame);
        EXPECT_TRUE(frame.Bytes() == GuardedFrame(Width, Height, 3).Bytes());
    }

    TemporaryFolder m_folder;
    VideoSubtitle m_renderer;
    VideoSubtitlePeer m_peer{m_renderer};
};
