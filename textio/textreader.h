#pragma once

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

/** One file's text without line ends, and where its lines begin in it; the last entry is the end. */
struct TextLines {
    int nEncode;
    std::shared_ptr<const LocaleCodec> pCodec; ///< of lines without a mark
    QByteArray bytes;
    std::vector<int> listStarts;
};

/**
 * The lines of a text file, without their line ends, decoded by the byte-order mark at its start.
 *
 * The whole file is held in memory as it is stored; a line is decoded when it is asked for. No real subtitle file comes
 * near the limits, and a file made to exhaust the memory gets no further. One object serves one thread at a time.
 */
class TextReader
{
public:
    TextReader();
    ~TextReader();
    TextReader(const TextReader &) = delete;
    TextReader &operator=(const TextReader &) = delete;

    /** Bytes of the largest file that is read. */
    static constexpr qint64 MaxFileSize = qint64{128} * 1024 * 1024;
    /** Lines read of a file; what follows them is not. */
    static constexpr std::size_t MaxLines = std::size_t{16} * 1024 * 1024;

    /**
     * Reads a file's lines and appends them to those held already. A read error ends the lines as the end of the file
     * does, and a file that grows meanwhile has those that were there when it was opened.
     * @param path  a file that is missing, cannot be opened or is larger than MaxFileSize has no lines, and neither has
     *              anything but a regular file. Opening and reading never wait.
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
    std::vector<TextLines> m_listTexts; ///< in the order of Open()
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
