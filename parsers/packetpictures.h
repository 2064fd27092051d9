#pragma once

#include "parsers/overlapindex.h"
#include "parsers/picturedecoder.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

struct AVFormatContext;

/** Limit of pictures of a container's track that are shown at once. */
constexpr std::size_t MaxDuePictures = 64;
/** Limit of pixels that are decoded for one change of what is due. A picture with an error counts as its canvas. */
constexpr std::int64_t MaxDuePixels = std::int64_t{4} * MaxCanvasSide * MaxCanvasSide;

/**
 * The packets of a picture track, and which of their pictures are due when. A picture begins at the time of its packet.
 * It ends after the duration of the packet or, if the container has none, when the next packet begins; earlier if the
 * codec says so. The end itself does not count, so that of two consecutive pictures one is due.
 */
class PacketPictures
{
public:
    /** Starts a track. Without a decoder for its codec it has no pictures. */
    void Begin(const AVFormatContext &input, int track);
    bool HasTrack() const { return m_decoder.has_value(); }
    /** Adds a packet of the track; does nothing without a track. */
    void Add(const AVPacket &packet, const AVRational &timeBase);
    /** To be called after the last packet. */
    void End();

    /**
     * The key of the pictures that are due at a time in milliseconds; empty if there are none. Decodes pictures that
     * become due. While the same ones are due, nothing is searched, decoded or allocated.
     */
    QString DueAt(std::int64_t ms);
    /** The due pictures, each laid over those of earlier packets. @param key  the last result of DueAt(). */
    ColorPicture Picture(const QString &key) const;

private:
    struct Packet {
        std::size_t nAt;
        int nSize;
        bool bStart;         ///< can be decoded without earlier packets
        std::int64_t nStart; ///< in milliseconds; NoTime if unknown
        std::int64_t nEnd;
    };
    struct Due {
        int nPlace;
        DecodedPicture decoded;
    };
    void DecodeFound();
    DecodedPicture Decode(int place, std::int64_t &rest);
    std::int64_t StartOf(const Due &due) const;
    std::int64_t EndOf(const Due &due) const;

    std::optional<PictureDecoder> m_decoder;
    std::vector<std::uint8_t> m_listBytes;
    std::vector<Packet> m_listPackets;
    OverlapIndex m_index;
    int m_nNext = 0; ///< the packet that the decoder's state is ready for

    std::vector<int> m_listFound;
    std::vector<Due> m_listDue; ///< decoded ones of m_listFound
    QString m_strKey;
    std::vector<const ColorPicture *> m_listShown; ///< point into m_listDue
    CueIndex::Span m_steady = {0, -1};             ///< when the members above stay the same
};
