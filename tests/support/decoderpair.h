#pragma once

#include "support/plaindecoder.h"
#include "vobsub/decoderstate.h"
#include "vobsub/subtitledecoder.h"

#include <cstring>

/** The process's decoder and a PlainDecoder that get the same input. */
class DecoderPair
{
public:
    using Bytes = std::vector<std::uint8_t>;

    DecoderPair()
    {
        subtitle_release();
        std::memset(decoder.Rdbfr, 0, sizeof decoder.Rdbfr);
        // Setting up the decoder does not change these.
        m_plain.m_fStart = mediadata.start;
        m_plain.m_fStop = mediadata.stop;
        m_plain.m_nTop = mediadata.top;
        m_plain.m_nBottom = mediadata.bottom;
        for (unsigned k = 0; k < 16; ++k)
            m_palette[k] = (0xA0 + k) << 16 | (0x50 + k) << 8 | (16 * k + 1);
    }
    ~DecoderPair() { subtitle_release(); }
    DecoderPair(const DecoderPair &) = delete;
    DecoderPair &operator=(const DecoderPair &) = delete;

    /** Returns the result of the library's function, as Feed() does. */
    int Init(int nWidth, int nHeight)
    {
        m_plain.Init(m_palette, nWidth, nHeight);
        return subtitle_init(m_palette, nWidth, nHeight);
    }

    /** Feeds both from a buffer of the exact size, so that tools see a read past its end. */
    int Feed(const Bytes &bytes)
    {
        const Bytes exact(bytes.begin(), bytes.end());
        m_plain.Decode(exact.data(), static_cast<int>(exact.size()));
        return subtitle_decode(exact.data(), static_cast<int>(exact.size()));
    }

    void DropInput()
    {
        subtitle_drop_input();
        m_plain.DropInput();
    }

    void SetHostVariables(int nSubtColor, int nSubtOffset, int nChromaFormat, int nChromaWidth)
    {
        Subt_Color = m_plain.m_nSubtColor = nSubtColor;
        Subt_Offset = m_plain.m_nSubtOffset = nSubtOffset;
        chroma_format = m_plain.m_nChromaFormat = nChromaFormat;
        Chroma_Width = m_plain.m_nChromaWidth = nChromaWidth;
    }

    SubtitlePlanes WriteX()
    {
        m_plain.WriteX();
        SubtitlePlanes planes = {};
        subtitle_write_x(&planes);
        return planes;
    }

    static Bytes Held() { return {decoder.Rdbfr, decoder.Rdbfr + decoder.Rdlgth}; }

    /** Whether all state that both have is the same. */
    bool IsSame() const
    {
        bool bSame = Held() == m_plain.Held() && Coded_Picture_Width == m_plain.m_nCanvasWidth &&
                     Coded_Picture_Height == m_plain.m_nCanvasHeight && mediadata.top == m_plain.m_nTop &&
                     mediadata.bottom == m_plain.m_nBottom && mediadata.start == m_plain.m_fStart &&
                     mediadata.stop == m_plain.m_fStop;
        for (int n = 0; n < 4; ++n)
            bSame = bSame && IsPlane(mediadata.plane[n], m_plain.m_listPlanes[n]);
        for (int n = 0; n < 3; ++n)
            bSame = bSame && IsPlane(mediadata.out[n], m_plain.m_listOut[n]);
        return bSame;
    }

    /** Whether a plane has the expected bytes. Output planes are not compared until they are written. */
    static bool IsPlane(const std::uint8_t *pPlane, const Bytes &expected)
    {
        return expected.empty() || std::memcmp(pPlane, expected.data(), expected.size()) == 0;
    }

    PlainDecoder m_plain;
    unsigned m_palette[16] = {};
};
