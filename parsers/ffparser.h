#pragma once

#include "parsers/cueindex.h"
#include "parsers/duetexts.h"
#include "parsers/iparser.h"
#include "parsers/packetpictures.h"
#include "textio/exported.h"

#include <QList>

/** One packet of a subtitle stream; times in milliseconds. */
struct SUBTITLE_EXPORT FFSubtitleItem {
    int nStart = 0;
    int nEnd = 0;
    QString strText;
};

/**
 * A subtitle stream of any file that FFmpeg's demuxers open. The payload of a packet is shown as text whatever the
 * codec, including markup, event fields and length prefixes. The pictures of a stream are there as well.
 */
class FFParser : public IParser
{
public:
    /**
     * Reads all packets of one subtitle stream. Never fails: a file that cannot be opened has no cues.
     * @param track  number of the stream among the file's subtitle streams, from 0.
     */
    int Open(const QString &path, int track) override;
    bool HasTrack() override { return m_bTrack; }
    QString GetSubtitle(long ms) override;
    /** None of a track of pictures, whose payload is no text. */
    QStringList AllDueTexts(long ms) override;
    QString AllDuePictures(long ms) override;
    ColorPicture ToColorPicture(const QString &key) override;

private:
    QList<FFSubtitleItem> m_listItems; ///< in the order of the packets
    CueIndex m_index;
    DueTexts m_dueTexts;
    PacketPictures m_pictures;
    bool m_bTrack = false;
};
