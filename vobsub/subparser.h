#pragma once

#include "parsers/cueindex.h"
#include "parsers/iparser.h"
#include "textio/exported.h"
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
struct SUBTITLE_EXPORT VobSubtitleItem {
    int nStart = 0;             ///< in milliseconds
    QString strFilePos;         ///< where its packets begin in the .sub file, as written in the index
    std::uint64_t nFilePos = 0; ///< the same as a number
};

/**
 * DVD bitmap subtitles: an .idx index and, next to it, a .sub program stream with the pictures.
 *
 * All parsers share the process's only decoder under a lock, so different parsers may be used on different threads,
 * each on one at a time. The decoder's state is saved and restored when another parser uses it.
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
     * Reads the index. The .sub file is opened only while a picture is read.
     * @param streamIndex  the number after "index:" on the "id:" line of the wanted language.
     * @return 0 if there is no such language, or if the canvas is empty or has a side above 4096 pixels.
     */
    int Open(const QString &path, int streamIndex) override;
    bool HasTrack() override { return !m_strSubFile.isEmpty(); }

    /**
     * An entry is due from its start up to and including the start of the next one; the last one for 3 seconds. Entries
     * are assumed to be in order of time.
     * @return the due entry's position in the list, as a decimal number; empty if none is due.
     */
    QString GetSubtitle(long ms) override;

    void SetVideoSize(int width, int height) override;

    /**
     * The entry's picture, scaled to the size of the frames: grey from the decoder's luma, alpha from its alpha. An
     * entry without a complete picture shows the last complete one.
     */
    QImage TextToImage(const QString &key, QRect &rect) override;

    RowRange VisibleRows() override;

    /** The entry's picture on the canvas, in the palette's colours; contrast 15 is opaque. */
    ColorPicture ToColorPicture(const QString &key) override;

private:
    friend class SubParserPeer; // gives tests access to the members

    int FindStream(const TextReader &reader, int streamIndex);
    void IndexStarts();
    /** Reads the bytes of an entry; false if there is no such entry or the file cannot be read. */
    [[nodiscard]] bool FetchEntry(const QString &key, QByteArray &bytes);
    /** The caller must hold the decoder's lock. */
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
    unsigned int m_palette[16] = {}; ///< usually 0x00RRGGBB
    QString m_strSubFile;
    SwsContext *m_pSwsContext = nullptr;
    unsigned char *m_pImageBuffer = nullptr; ///< two scaled planes, luma and alpha
    std::size_t m_nImageBuffer = 0;          ///< its size in bytes
    RowRange m_rowsLuma;                     ///< rows of the luma plane that are scaled; the others count as 0
    RowRange m_rowsAlpha;                    ///< the same for alpha; always within m_rowsLuma
    QImage m_image;                          ///< the last picture
    RowRange m_rowsImage;                    ///< rows of m_image that may differ from transparent black
    CueIndex m_index;
    SubFileReader m_reader;
    std::unique_ptr<saved_decoder> m_pDecoder; ///< our decoder's state while another parser uses the decoder, else null
};
