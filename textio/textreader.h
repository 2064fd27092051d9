#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

/** What TextReader::DetectEncode() finds at the start of a file. */
enum TextEncode {
    EncodeLocal = 0, ///< no mark: the locale's 8-bit codec
    EncodeUtf8 = 1,  ///< EF BB BF
    EncodeU16Le = 2, ///< FF FE
    EncodeU16Be = 3  ///< FE FF
};

/**
 * The lines of a text file, without their line ends, decoded by the byte-order mark at its start.
 *
 * The whole file is held in memory. One object serves one thread at a time.
 */
class TextReader
{
public:
    TextReader();
    ~TextReader();
    TextReader(const TextReader &) = delete;
    TextReader &operator=(const TextReader &) = delete;

    /**
     * Reads a file's lines and appends them to those held already.
     * @param path  a file that is missing or cannot be read has no lines.
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
    QList<QString> m_listLines;
};

/**
 * Reads one line as raw bytes. LF ends a line; CR is dropped wherever it stands and ends none.
 * @param bytes  the line, without its LF; cleared first.
 * @return false when nothing was left to read.
 */
bool ReadLineA(QFile &file, QByteArray &bytes);

/** As ReadLineA(), decoded by the locale's 8-bit codec; @p line is left as it was when there is none. */
bool ReadLineLocal(QFile &file, QString &line);

/** As ReadLineA(), decoded as UTF-8; @p line is left as it was when there is none. */
bool ReadLineU8(QFile &file, QString &line);

/**
 * Reads one line of UTF-16. U+000A ends a line, U+000D is dropped.
 *
 * The first call in a process decides for good whether byte pairs are exchanged, from the host's byte order and
 * @p littleEndian; a later file of the other byte order is decoded like the first. Hosts depend on that.
 *
 * @return always true: at the end of the input every call delivers an empty line.
 */
bool ReadLineW(QFile &file, QString &line, bool littleEndian);

/** ReadLineW() for little-endian input. */
bool ReadLineU16Le(QFile &file, QString &line);

/** ReadLineW() for big-endian input. */
bool ReadLineU16Be(QFile &file, QString &line);
