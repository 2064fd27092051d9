#include "textio/textreader.h"

#include "textio/localecodec.h"
#include "textio/regularfile.h"

#include <QBuffer>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace
{

/** Put before every UTF-16 line: QString::fromUtf16() takes it for a byte-order mark in host order and drops it. */
constexpr char16_t StrayUnit = 0xFEFF;

constexpr char LineFeed = '\n';

/** Appends bytes without their CRs. Intentional: a CR never ends a line, not even in a file without LF. */
void AppendLine(QByteArray &to, const char *bytes, int count)
{
    const char *const end = bytes + count;
    while (bytes < end) {
        const auto *found = static_cast<const char *>(std::memchr(bytes, '\r', end - bytes));
        const char *const part = found ? found : end;
        to.append(bytes, static_cast<int>(part - bytes));
        bytes = part + 1;
    }
}

bool IsAscii(const char *bytes, int count)
{
    unsigned char any = 0;
    for (int i = 0; i < count; ++i)
        any |= static_cast<unsigned char>(bytes[i]);
    return any < 0x80;
}

struct Utf16Line {
    QString strText;
    bool bTerminated; ///< ended by a line feed, not by the end of the input
};

Utf16Line ReadUtf16Line(QIODevice &device, bool littleEndian)
{
    // Intentional: decided once per process, whatever byte order a later file has.
    static const bool swapByte = (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) != littleEndian;

    QByteArray units(reinterpret_cast<const char *>(&StrayUnit), sizeof(StrayUnit));
    bool terminated = false;
    std::array<char, 2> pair;
    while (!terminated && device.read(pair.data(), 2) == 2) {
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

/** Splits bytes into the lines that ReadLineA() would read. */
void SplitBytes(const QByteArray &bytes, TextLines &text)
{
    text.bytes.reserve(bytes.size());
    const char *from = bytes.constData();
    const char *const end = from + bytes.size();
    while (from < end && text.listStarts.size() <= TextReader::MaxLines) {
        const auto *found = static_cast<const char *>(std::memchr(from, LineFeed, end - from));
        const char *const to = found ? found : end;
        AppendLine(text.bytes, from, static_cast<int>(to - from));
        if (found || text.bytes.size() > text.listStarts.back())
            text.listStarts.push_back(text.bytes.size());
        from = to + 1;
    }
}

/** Splits bytes into the lines that ReadLineW() would read, but stops at the end, which ReadLineW() never reports. */
void SplitUtf16(QByteArray &bytes, TextLines &text)
{
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    text.bytes.reserve(bytes.size());
    while (text.listStarts.size() <= TextReader::MaxLines) {
        const Utf16Line line = ReadUtf16Line(device, text.nEncode == EncodeU16Le);
        if (!line.bTerminated && line.strText.isEmpty())
            return;
        text.bytes.append(reinterpret_cast<const char *>(line.strText.constData()),
                          line.strText.size() * static_cast<int>(sizeof(QChar)));
        text.listStarts.push_back(text.bytes.size());
        if (!line.bTerminated)
            return;
    }
}

/**
 * Reads the rest of the file, up to its end or the first error.
 * @return nothing if the file is larger than MaxFileSize, even if that shows only while reading.
 */
QByteArray ReadRest(QFile &file)
{
    const qint64 size = file.size();
    if (size > TextReader::MaxFileSize)
        return {};
    std::array<char, 16384> part;
    // If the size is unknown, read one part past the limit to see whether the file ends there.
    const qint64 end = ReadableSize(size, TextReader::MaxFileSize + qint64{part.size()});
    QByteArray bytes;
    bytes.reserve(static_cast<int>(size));
    qint64 count = 0;
    do {
        count = file.read(part.data(), std::min<qint64>(part.size(), end - file.pos()));
        bytes.append(part.data(), static_cast<int>(std::max<qint64>(count, 0)));
    } while (count > 0 && file.error() == QFileDevice::NoError);
    return file.pos() > TextReader::MaxFileSize ? QByteArray() : bytes;
}

} // namespace

bool ReadLineA(QFile &file, QByteArray &bytes)
{
    bytes.clear();
    std::array<char, 4096> part;
    bool terminated = false;
    while (!terminated) {
        const auto count = static_cast<int>(file.readLine(part.data(), part.size()));
        if (count <= 0)
            break;
        terminated = part[count - 1] == LineFeed;
        AppendLine(bytes, part.data(), count - static_cast<int>(terminated));
    }
    return terminated || !bytes.isEmpty();
}

bool ReadLineLocal(QFile &file, QString &line)
{
    QByteArray bytes;
    if (!ReadLineA(file, bytes))
        return false;
    line = LocaleCodec::Current()->Decode(bytes.constData(), bytes.size());
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
    QFile file;
    if (!OpenRegularFile(path, file))
        return;
    TextLines text = {DetectEncode(file), LocaleCodec::Current(), {}, {0}};
    // After an error the encoding is unknown, and no text has been read yet.
    if (file.error() != QFileDevice::NoError)
        return;
    QByteArray bytes = ReadRest(file);
    if (text.nEncode == EncodeU16Le || text.nEncode == EncodeU16Be)
        SplitUtf16(bytes, text);
    else
        SplitBytes(bytes, text);
    m_listLines.push_back(std::move(text));
}

int TextReader::GetLineCount() const
{
    int count = 0;
    for (const TextLines &text : m_listLines)
        count += static_cast<int>(text.listStarts.size()) - 1;
    return count;
}

QString TextReader::GetLine(int index) const
{
    auto text = m_listLines.begin();
    for (; index >= static_cast<int>(text->listStarts.size()) - 1; ++text)
        index -= static_cast<int>(text->listStarts.size()) - 1;
    const char *line = text->bytes.constData() + text->listStarts[index];
    const int size = text->listStarts[index + 1] - text->listStarts[index];
    switch (text->nEncode) {
    case EncodeLocal:
        // Most lines are ASCII, and codecs are slow.
        if (text->pCodec->IsUtf8() && IsAscii(line, size))
            return QString::fromLatin1(line, size);
        return text->pCodec->Decode(line, size);
    case EncodeUtf8:
        return QString::fromUtf8(line, size);
    default:
        return QString(reinterpret_cast<const QChar *>(line), size / static_cast<int>(sizeof(QChar)));
    }
}

int TextReader::DetectEncode(QFile &file)
{
    // Stays zero if the file is shorter, so that such a file counts as one without a mark.
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
