#pragma once

#include "parsers/cueindex.h"
#include "parsers/iparser.h"
#include "vobsub/rowscaler.h"
#include "vobsub/subfilereader.h"

#include <QList>

#include <cstddef>
#include <cstdint>
#include <memory>

class TextReader;
class saved_decoder;
struct SwsContext;

/** One entry of an index. */
struct VobSubtitleItem {
    int nStart = 0;             ///< in milliseconds
    QString strFilePos;         ///< where its packets begin in the .sub file, as the index writes it
    std::uint64_t nFilePos = 0; ///< the same as a number
};

/**
 * DVD bitmap subtitles: an .idx index, and beside it a .sub program stream with the pictures.
 *
 * Parsers share the process's one decoder under a lock: they may be used on several threads, each parser on one at a time.
 * Each finds the decoder as it left it.
 */
class SubParser : public IParser
{
public:
    SubParser();
    ~SubParser() override;
    SubParser(const SubParser &) = delete;
    SubParser &operator=(const SubParser &) = delete;

    bool IsTextSub() override;

    /**
     * Reads the index; the .sub file is opened for each picture only.
     * @param streamIndex  the number behind "index:" on the "id:" line of the wanted language.
     * @return 0 when there is no such language and when the canvas is empty or has a side above 4096 pixels.
     */
    int Open(const QString &path, int streamIndex) override;
    bool HasTrack() override { return !m_strSubFile.isEmpty(); }

    /**
     * An entry is due from its start up to and including the next one's; the last is held for 3 seconds. Entries are
     * taken to be in the order of time.
     * @return the due entry's position in the list.
     */
    QString GetSubtitle(long ms) override;

    void SetVideoSize(int width, int height) override;

    /**
     * The entry's picture, scaled to the size of the frames: grey by the decoder's luma, opaque by its alpha. An entry that
     * brings no whole picture gives that of the last one that did.
     */
    QImage TextToImage(const QString &key, QRect &rect) override;

    RowRange VisibleRows() override;

    /** The entry's picture on the canvas, in the palette's colours; a contrast of 15 is opaque. */
    ColorPicture ToColorPicture(const QString &key) override;

private:
    friend class SubParserPeer; // through which tests look inside

    int FindStream(const TextReader &reader, int streamIndex);
    void IndexStarts();
    /** The bytes of an entry; false when there are none. */
    bool FetchEntry(const QString &key, QByteArray &bytes);
    /** The caller holds the decoder's lock. */
    void Decode(QByteArray &bytes);
    bool DecodeAndScale(QByteArray &bytes);
    void BecomeDecoderUser();
    void TakeDecoder();
    bool MakeScaler();
    bool ScaleCanvas();
    bool ClearImage();
    QImage MakeImage();

    QList<VobSubtitleItem> m_listItems; ///< in file order
    int m_nVideoWidth = 0;
    int m_nVideoHeight = 0;
    int m_nSubWidth = 0; ///< of the canvas
    int m_nSubHeight = 0;
    unsigned int m_palette[16] = {}; ///< 0x00RRGGBB as a rule
    QString m_strSubFile;
    SwsContext *m_pSwsContext = nullptr;
    unsigned char *m_pImageBuffer = nullptr; ///< two scaled planes, luma and alpha
    std::size_t m_nImageBuffer = 0;          ///< its size in bytes
    RowRange m_rowsLuma;                     ///< of the scaled planes those that are scaled; the others are 0
    RowRange m_rowsAlpha;                    ///< never beyond those of luma
    QImage m_image;                          ///< the last picture
    RowRange m_rowsImage;                    ///< outside them it is transparent black
    CueIndex m_index;
    SubFileReader m_reader;
    std::unique_ptr<saved_decoder> m_pDecoder; ///< while another parser uses the decoder
};
