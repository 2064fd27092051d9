#pragma once

#include "textio/exported.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>
#include <vector>

/** What TextReader::DetectEncode() finds at the start of a file. */
enum TextEncode {
    EncodeLocal = 0, ///< no mark: the locale's 8-bit codec
    EncodeUtf8 = 1,  ///< EF BB BF
    EncodeU16Le = 2, ///< FF FE
    EncodeU16Be = 3  ///< FE FF
};

class LocaleCodec;

/** The text of one file without line ends, and the offsets of its lines; the last offset is the end. */
struct TextLines {
    int nEncode;
    std::shared_ptr<const LocaleCodec> pCodec; ///< for files without a mark
    QByteArray bytes;
    std::vector<int> listStarts;
};

/**
 * The lines of a text file, without their line ends, decoded by the byte-order mark at its start.
 *
 * The file is held in memory without conversion; GetLine() decodes a line. The limits are far above any real subtitle
 * file and stop files that are made to exhaust the memory. Use an object from one thread at a time.
 */
class SUBTITLE_EXPORT TextReader
{
public:
    TextReader();
    ~TextReader();
    TextReader(const TextReader &) = delete;
    TextReader &operator=(const TextReader &) = delete;

    /** Size of the largest file that is read, in bytes. */
    static constexpr qint64 MaxFileSize = qint64{128} * 1024 * 1024;
    /** Most lines read of one file; the rest is ignored. */
    static constexpr std::size_t MaxLines = std::size_t{16} * 1024 * 1024;

    /**
     * Reads a file's lines and appends them to those already held. A read error counts as the end of the file; bytes
     * that are added after the file was opened are not read. Never blocks.
     * @param path  adds no lines if the file is missing, cannot be opened, is larger than MaxFileSize or is not a
     *              regular file.
     */
    void Open(const QString &path);

    int GetLineCount() const;

    /** @param index  0 to GetLineCount() - 1; not checked. */
    QString GetLine(int index) const;

    /**
     * Looks for a byte-order mark; nothing else of the content is examined.
     * @param file  open for reading and at its start; left at the first byte of the text.
     * @return a TextEncode.
     */
    static int DetectEncode(QFile &file);

private:
    std::vector<TextLines> m_listLines; ///< in the order of Open()
};

/**
 * Reads one line as raw bytes. LF ends a line; CR is dropped wherever it stands and ends none.
 * @param bytes  the line, without its LF; cleared first.
 * @return false if nothing is left to read.
 */
SUBTITLE_EXPORT bool ReadLineA(QFile &file, QByteArray &bytes);

/** As ReadLineA(), decoded by the locale's 8-bit codec; @p line is unchanged if nothing is left. */
SUBTITLE_EXPORT bool ReadLineLocal(QFile &file, QString &line);

/** As ReadLineA(), decoded as UTF-8; @p line is unchanged if nothing is left. */
SUBTITLE_EXPORT bool ReadLineU8(QFile &file, QString &line);

/**
 * Reads one line of UTF-16. U+000A ends a line, U+000D is dropped.
 *
 * The first call in a process decides for all later ones whether byte pairs are swapped, from the host's byte order and
 * @p littleEndian; a later file of the other byte order is decoded like the first. Hosts depend on that.
 *
 * @return always true: at the end of the input every call reads an empty line.
 */
SUBTITLE_EXPORT bool ReadLineW(QFile &file, QString &line, bool littleEndian);

/** ReadLineW() for little-endian input. */
SUBTITLE_EXPORT bool ReadLineU16Le(QFile &file, QString &line);

/** ReadLineW() for big-endian input. */
SUBTITLE_EXPORT bool ReadLineU16Be(QFile &file, QString &line);
