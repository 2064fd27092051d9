#include "textio/textreader.h"

#include <QtEndian>
#include <array>
#include <utility>

namespace
{

/** Starts every UTF-16 line; QString::fromUtf16() takes it for a byte-order mark in host order and drops it. */
constexpr char16_t StrayUnit = 0xFEFF;

struct Utf16Line {
    QString strText;
    bool bTerminated; ///< ended by a line feed, not by the end of the input
};

Utf16Line ReadUtf16Line(QFile &file, bool littleEndian)
{
    // Decided once and kept for the life of the process, whatever byte order a later file has: this is meant.
    static const bool swapByte = (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) != littleEndian;

    QByteArray units(reinterpret_cast<const char *>(&StrayUnit), sizeof(StrayUnit));
    bool terminated = false;
    std::array<char, 2> pair;
    while (!terminated && file.read(pair.data(), 2) == 2) {
        if (swapByte)
            std::swap(pair[0], pair[1]);
        const auto unit = qFromUnaligned<char16_t>(pair.data());
        if (unit == u'\n')
            terminated = true;
        else if (unit != u'\r')
            units.append(pair.data(), 2);
    }
    const auto *text = reinterpret_cast<const char16_t *>(units.constData());
    return {QString::fromUtf16(text, units.size() / 2), terminated};
}

} // namespace

bool ReadLineA(QFile &file, QByteArray &bytes)
{
    bytes.clear();
    char byte;
    while (file.getChar(&byte)) {
        if (byte == '\n')
            return true;
        // A CR never ends a line, not even in a file that has no LF: this is meant.
        if (byte != '\r')
            bytes.append(byte);
    }
    return !bytes.isEmpty();
}

bool ReadLineLocal(QFile &file, QString &line)
{
    QByteArray bytes;
    if (!ReadLineA(file, bytes))
        return false;
    line = QString::fromLocal8Bit(bytes.constData(), bytes.size());
    return true;
}

bool ReadLineU8(QFile &file, QString &line)
{
    QByteArray bytes;
    if (!ReadLineA(file, bytes))
        return false;
    line = QString::fromUtf8(bytes.constData(), bytes.size());
    return true;
}

bool ReadLineW(QFile &file, QString &line, bool littleEndian)
{
    line = ReadUtf16Line(file, littleEndian).strText;
    return true;
}

bool ReadLineU16Le(QFile &file, QString &line)
{
    return ReadLineW(file, line, true);
}

bool ReadLineU16Be(QFile &file, QString &line)
{
    return ReadLineW(file, line, false);
}

TextReader::TextReader() = default;

TextReader::~TextReader() = default;

void TextReader::Open(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const int encode = DetectEncode(file);

    if (encode == EncodeU16Le || encode == EncodeU16Be) {
        // ReadLineW() never reports the end, which would fill the memory here; stop where the UTF-8 readers do.
        for (;;) {
            const Utf16Line line = ReadUtf16Line(file, encode == EncodeU16Le);
            if (!line.bTerminated && line.strText.isEmpty())
                return;
            m_listLines.append(line.strText);
        }
    }
    const auto readLine = encode == EncodeUtf8 ? ReadLineU8 : ReadLineLocal;
    QString line;
    while (readLine(file, line))
        m_listLines.append(line);
}

int TextReader::GetLineCount() const
{
    return m_listLines.size();
}

QString TextReader::GetLine(int index) const
{
    return m_listLines.at(index);
}

int TextReader::DetectEncode(QFile &file)
{
    // Zero where the file is shorter, so that such a file counts as one without a mark.
    std::array<unsigned char, 3> probe = {};
    file.read(reinterpret_cast<char *>(probe.data()), 2);
    if (probe[0] == 0xFF && probe[1] == 0xFE)
        return EncodeU16Le;
    if (probe[0] == 0xFE && probe[1] == 0xFF)
        return EncodeU16Be;
    file.read(reinterpret_cast<char *>(&probe[2]), 1);
    if (probe[0] == 0xEF && probe[1] == 0xBB && probe[2] == 0xBF)
        return EncodeUtf8;
    file.seek(0);
    return EncodeLocal;
}
