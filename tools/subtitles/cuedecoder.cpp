#include "subtitles/cuedecoder.h"

#include "subtitles/cuetext.h"

bool CueDecoder::Knows(AVCodecID id)
{
    const AVCodecDescriptor *pDescriptor = avcodec_descriptor_get(id);
    // The two broadcast codecs spread a cue over many packets.
    return pDescriptor && (pDescriptor->props & AV_CODEC_PROP_TEXT_SUB) != 0 && id != AV_CODEC_ID_EIA_608 &&
           id != AV_CODEC_ID_DVB_TELETEXT && avcodec_find_decoder(id) != nullptr;
}

CueDecoder::CueDecoder(const AVStream &stream)
{
    const AVCodec *pCodec = avcodec_find_decoder(stream.codecpar->codec_id);
    m_pContext = Checked(CodecPtr(avcodec_alloc_context3(pCodec)));
    if (avcodec_parameters_to_context(m_pContext.get(), stream.codecpar) < 0)
        throw std::bad_alloc();
    m_pContext->pkt_timebase = stream.time_base;
    // Do not refuse text that is not UTF-8: wrong characters are better than none.
    m_pContext->sub_charenc_mode = FF_SUB_CHARENC_MODE_IGNORE;
    if (avcodec_open2(m_pContext.get(), pCodec, nullptr) < 0)
        m_pContext.reset();
}

std::string CueDecoder::Text(const AVPacket &packet)
{
    AVSubtitle subtitle = {};
    int nDecoded = 0;
    const PacketPtr pPacket = Checked(PacketPtr(av_packet_clone(&packet)));
    if (!m_pContext || avcodec_decode_subtitle2(m_pContext.get(), &subtitle, &nDecoded, pPacket.get()) < 0)
        return "";
    std::string strText;
    for (unsigned n = 0; n < subtitle.num_rects; ++n) {
        if (const char *pEvent = subtitle.rects[n]->ass)
            strText += (strText.empty() ? "" : "\n") + AssEventText(pEvent);
    }
    avsubtitle_free(&subtitle);
    return strText;
}
