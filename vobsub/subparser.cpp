#include "vobsub/subparser.h"

#include "parsers/exportedlist.h"
#include "parsers/framelimit.h"
#include "parsers/wrapint.h"
#include "textio/textreader.h"
#include "vobsub/decoderstate.h"
#include "vobsub/decoderview.h"
#include "vobsub/psstream.h"
#include "vobsub/subtitledecoder.h"
#include "vobsub/visiblepicture.h"

#include <QMutex>
#include <QStringList>

extern "C" {
#include <libavutil/mem.h>
#include <libswscale/swscale.h>
}

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

EXPORT_LIST(VobSubtitleItem);

namespace
{

constexpr int ScalingFlags = SWS_BICUBIC;
constexpr int ScalerPadding = 64;    // the scaler writes whole vectors
constexpr long LastEntryHold = 3000; // ms; the pictures' own stop times are not used
constexpr unsigned int LastEntryLength = 8192;

// The process has one decoder. The mutex guards it and its user, the parser whose state it currently has.
std::mutex decoderMutex;
SubParser *decoderUser;

const QLatin1String IdKey("id:");
const QLatin1String IndexKey("index:");
const QLatin1String SizeKey("size:");
const QLatin1String PaletteKey("palette:");
const QLatin1String TimestampKey("timestamp:");

QString Value(const QString &line, QLatin1String key)
{
    return line.mid(key.size()).trimmed();
}

void ReadSize(const QString &value, int &width, int &height)
{
    // Count before splitting, since a hostile line may have millions of parts.
    if (value.count(QLatin1Char('x')) != 1)
        return;
    const QStringList parts = value.split(QLatin1Char('x'));
    width = parts[0].toInt();
    height = parts[1].toInt();
}

void ReadPalette(const QString &value, unsigned int (&palette)[16])
{
    const QLatin1String separator(", ");
    if (value.count(separator) != 15)
        return;
    const QStringList parts = value.split(separator);
    for (int k = 0; k < 16; ++k)
        palette[k] = parts[k].toUInt(nullptr, 16);
}

bool IsWantedStream(const QString &line, int streamIndex)
{
    const int key = line.indexOf(IndexKey);
    if (key < 0)
        return false;
    bool isNumber = false;
    const int index = line.mid(key + IndexKey.size()).trimmed().toInt(&isNumber);
    return isNumber && index == streamIndex;
}

int ToWholeNumber(const QString &text)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    return isNumber ? TruncateToInt(value) : 0;
}

/** Reads hh:mm:ss:mmm as milliseconds; 0 if colons are missing. A field that is not a number counts as 0. */
int ReadTimestamp(const QString &stamp)
{
    const QStringList parts = stamp.split(QLatin1Char(':'));
    if (parts.size() <= 3)
        return 0;
    const int minutes = WrapAdd(parts[1].toInt(), WrapMultiply(parts[0].toInt(), 60));
    const int seconds = WrapAdd(ToWholeNumber(parts[2]), WrapMultiply(minutes, 60));
    return WrapAdd(ToWholeNumber(parts[3]), WrapMultiply(seconds, 1000));
}

/** The line has its fields at fixed columns: "timestamp: 00:00:01:000, filepos: 000000000". */
VobSubtitleItem ReadEntry(const QString &line)
{
    VobSubtitleItem item;
    item.nStart = ReadTimestamp(line.mid(11, 12));
    item.strFilePos = line.mid(34).trimmed();
    item.nFilePos = item.strFilePos.toULongLong(nullptr, 16);
    return item;
}

bool IsPossibleSide(int side)
{
    return side >= 1 && side <= SUBTITLE_MAX_SIDE;
}

} // namespace

SubParser::SubParser() = default;

SubParser::~SubParser()
{
    {
        const std::lock_guard<std::mutex> lock(decoderMutex);
        if (!decoderUser || decoderUser == this) {
            subtitle_release();
            decoderUser = nullptr;
        }
    }
    sws_freeContext(m_pSwsContext);
    av_freep(&m_pImageBuffer);
}

bool SubParser::IsTextSub()
{
    return false;
}

int SubParser::Open(const QString &path, int streamIndex)
{
    m_listItems.clear();
    m_index = {};
    TextReader reader;
    reader.Open(path);

    const int first = FindStream(reader, streamIndex);
    if (first >= reader.GetLineCount() || !IsPossibleSide(m_nSubWidth) || !IsPossibleSide(m_nSubHeight))
        return 0;
    for (int i = first; i < reader.GetLineCount() && m_listItems.size() < MaxCues; ++i) {
        const QString line = reader.GetLine(i);
        if (line.startsWith(IdKey))
            break;
        if (line.startsWith(TimestampKey))
            m_listItems.append(ReadEntry(line));
    }
    IndexStarts();
    m_strSubFile = path.left(path.size() - 3) + QLatin1String("sub");

    const std::lock_guard<std::mutex> lock(decoderMutex);
    BecomeDecoderUser();
    subtitle_init(m_palette, m_nSubWidth, m_nSubHeight);
    return 1;
}

int SubParser::FindStream(const TextReader &reader, int streamIndex)
{
    bool isHeaderDone = false;
    for (int i = 0; i < reader.GetLineCount(); ++i) {
        const QString line = reader.GetLine(i);
        if (line.startsWith(IdKey)) {
            if (IsWantedStream(line, streamIndex))
                return i + 1;
            isHeaderDone = true;
        } else if (isHeaderDone) {
            continue;
        } else if (line.startsWith(SizeKey)) {
            ReadSize(Value(line, SizeKey), m_nSubWidth, m_nSubHeight);
        } else if (line.startsWith(PaletteKey)) {
            ReadPalette(Value(line, PaletteKey), m_palette);
        }
    }
    return reader.GetLineCount();
}

void SubParser::IndexStarts()
{
    CueIndex::Builder builder;
    for (int i = 0; i < m_listItems.size(); ++i) {
        const std::int64_t start = m_listItems[i].nStart;
        builder.Add({start, i + 1 < m_listItems.size() ? m_listItems[i + 1].nStart : start + LastEntryHold});
    }
    m_index = CueIndex(std::move(builder));
}

QString SubParser::GetSubtitle(long ms)
{
    const int due = ms > 0 ? m_index.Find(ms) : -1;
    return due < 0 ? QString() : QString::number(due);
}

void SubParser::SetVideoSize(int width, int height)
{
    m_nVideoWidth = width;
    m_nVideoHeight = height;
}

bool SubParser::FetchEntry(const QString &key, QByteArray &bytes)
{
    const int entry = key.toInt();
    if (entry < 0 || entry >= m_listItems.size())
        return false;
    // Positions wrap around at 32 bits, and so does the length if the next entry lies before this one.
    const auto start = static_cast<std::uint32_t>(m_listItems[entry].nFilePos);
    const bool isLast = entry == m_listItems.size() - 1;
    const std::uint32_t length =
        isLast ? LastEntryLength : static_cast<std::uint32_t>(m_listItems[entry + 1].nFilePos) - start;
    return m_reader.Fetch(m_strSubFile, start, length, bytes);
}

QImage SubParser::TextToImage(const QString &key, QRect &rect)
{
    QByteArray bytes;
    if (!FetchEntry(key, bytes) || !DecodeAndScale(bytes))
        return QImage();
    QImage image = MakeImage();
    if (!image.isNull())
        rect = image.rect();
    return image;
}

ColorPicture SubParser::ToColorPicture(const QString &key)
{
    QByteArray bytes;
    if (!FetchEntry(key, bytes))
        return {};
    const std::lock_guard<std::mutex> lock(decoderMutex);
    Decode(bytes);
    return VisiblePicture();
}

void SubParser::Decode(QByteArray &bytes)
{
    try {
        TakeDecoder();
    } catch (...) {
        m_reader.Forget();
        throw;
    }
    // An entry may begin with the end of a unit from the entry directly before it. Drop the bytes of any other unit.
    if (!m_reader.IsContinued())
        subtitle_drop_input();
    DecodePSStream(reinterpret_cast<unsigned char *>(bytes.data()), bytes.size());
}

bool SubParser::DecodeAndScale(QByteArray &bytes)
{
    const std::lock_guard<std::mutex> lock(decoderMutex);
    Decode(bytes);
    return MakeScaler() && ScaleCanvas();
}

/** Saves the decoder's state for its last user and restores this parser's, if it has one. */
void SubParser::BecomeDecoderUser()
{
    if (decoderUser == this)
        return;
    if (decoderUser)
        decoderUser->m_pDecoder = std::make_unique<saved_decoder>();
    decoderUser = this;
    if (m_pDecoder)
        m_pDecoder->Restore();
    m_pDecoder.reset();
}

/** Makes this parser the decoder's user, and sets the decoder up again if a host released it or changed its size. */
void SubParser::TakeDecoder()
{
    BecomeDecoderUser();
    if (subtitle_is_set_up() && decoder.width == m_nSubWidth && decoder.height == m_nSubHeight)
        return;
    const int32_t colour = Read_Settings().color; // which the host may have set
    subtitle_init(m_palette, m_nSubWidth, m_nSubHeight);
    Set_Colour(colour);
}

/** Makes or keeps the scaler and its buffer; false if the frame size is impossible or memory runs out. */
bool SubParser::MakeScaler()
{
    if (!IsPossibleFrame(m_nVideoWidth, m_nVideoHeight))
        return false;
    m_pSwsContext = sws_getCachedContext(m_pSwsContext, m_nSubWidth, m_nSubHeight, AV_PIX_FMT_GRAY8, m_nVideoWidth,
                                         m_nVideoHeight, AV_PIX_FMT_GRAY8, ScalingFlags, nullptr, nullptr, nullptr);
    if (!m_pSwsContext)
        return false;
    const std::size_t size = 2 * static_cast<std::size_t>(m_nVideoWidth) * m_nVideoHeight;
    if (m_pImageBuffer && size == m_nImageBuffer)
        return true;
    av_freep(&m_pImageBuffer);
    m_pImageBuffer = static_cast<unsigned char *>(av_mallocz(size + ScalerPadding));
    m_nImageBuffer = size;
    return m_pImageBuffer;
}

/** Scales luma and alpha; chroma is not used. Skips rows not written since subtitle_init(): they are 0, also scaled. */
bool SubParser::ScaleCanvas()
{
    SubtitlePlanes planes = {};
    subtitle_write(&planes);
    if (!planes.plane[0])
        return false;
    m_rowsLuma = ScaledRows(Touched_Rows(), m_nSubHeight, m_nVideoHeight);
    m_rowsAlpha = ScaledRows(Visible_Rows(), m_nSubHeight, m_nVideoHeight);
    const auto scale = [&](unsigned char *from, unsigned char *to, const RowRange &rows) {
        return ScaleRows(m_pSwsContext, {from, m_nSubWidth, m_nSubHeight}, {to, m_nVideoWidth, m_nVideoHeight}, rows);
    };
    return scale(planes.plane[0], m_pImageBuffer, m_rowsLuma) &&
           scale(planes.plane[3], m_pImageBuffer + m_nImageBuffer / 2, m_rowsAlpha);
}

/** Makes the image transparent black except in the rows with luma, which may have any pixels; false without memory. */
bool SubParser::ClearImage()
{
    const std::size_t width = m_nVideoWidth;
    if (m_image.isDetached() && m_image.size() == QSize(m_nVideoWidth, m_nVideoHeight)) {
        // Nobody else uses the image, so it can be changed in place.
        for (int row = m_rowsImage.nFirst; row < m_rowsImage.End(); ++row) {
            if (!m_rowsLuma.Contains(row))
                std::memset(m_image.scanLine(row), 0, width * 4);
        }
        return true;
    }
    void *bytes = std::calloc(width * m_nVideoHeight, 4);
    if (!bytes)
        return false;
    m_image =
        QImage(static_cast<uchar *>(bytes), m_nVideoWidth, m_nVideoHeight, QImage::Format_RGB32, std::free, bytes);
    if (m_image.isNull())
        std::free(bytes);
    return !m_image.isNull();
}

QImage SubParser::MakeImage()
{
    if (!ClearImage())
        return QImage();
    m_rowsImage = m_rowsLuma;
    const int width = m_nVideoWidth; // a copy, since the compiler must assume that writing pixels changes members
    for (int row = m_rowsLuma.nFirst; row < m_rowsLuma.End(); ++row) {
        auto *pixels = reinterpret_cast<std::uint32_t *>(m_image.scanLine(row));
        const unsigned char *luma = m_pImageBuffer + static_cast<std::size_t>(row) * width;
        const unsigned char *alpha = luma + m_nImageBuffer / 2;
        const std::uint32_t alphaMask = m_rowsAlpha.Contains(row) ? 0xFF000000 : 0;
        for (int i = 0; i < width; ++i) {
            const std::uint32_t grey = luma[i];
            pixels[i] = grey | grey << 8 | grey << 16 | (std::uint32_t{alpha[i]} << 24 & alphaMask);
        }
    }
    return m_image;
}

RowRange SubParser::VisibleRows()
{
    return m_rowsAlpha;
}
