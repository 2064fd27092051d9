#include "parsers/localfile.h"

#include "parsers/inputformats.h"
#include "textio/regularfile.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavformat/avformat.h>
}

namespace
{

constexpr int BufferSize = 32768;
/** Most bytes read of a file whose size is not known. */
constexpr std::int64_t MaxUnknownSize = MaxTextSize;

/** Most bytes read in search of streams: the header with attached fonts or sample tables, and the first packets. */
constexpr std::int64_t MaxSearch = std::int64_t{512} << 20;
/** Most of these after the header, a larger read counting as one buffer. FFmpeg examines about 5 MB of packets. */
constexpr std::int64_t MaxPieces = std::int64_t{16} << 20;
/** Most bytes read in search of streams if the format cannot hold subtitles. */
constexpr std::int64_t MaxOther = std::int64_t{8} << 20;

} // namespace

bool LocalFile::IsNamedBy(const char *name)
{
    const char *const protocol = avio_find_protocol_name(name);
    return protocol && std::string_view(protocol) == "file";
}

LocalFile::LocalFile(const char *name)
{
    constexpr std::string_view Prefix = "file:";
    if (std::string_view(name).substr(0, Prefix.size()) == Prefix)
        name += Prefix.size();
    m_nDescriptor = OpenRegularFile(name);
    struct stat status = {};
    if (m_nDescriptor >= 0 && fstat(m_nDescriptor, &status) == 0)
        m_nSize = status.st_size;
}

LocalFile::~LocalFile()
{
    if (m_pContext)
        av_freep(&m_pContext->buffer);
    avio_context_free(&m_pContext);
    if (m_nDescriptor >= 0)
        close(m_nDescriptor);
}

std::int64_t LocalFile::Size() const
{
    return m_nSize;
}

bool LocalFile::Attach(AVFormatContext &input)
{
    if (m_nDescriptor < 0)
        return false;
    auto *buffer = static_cast<unsigned char *>(av_malloc(BufferSize));
    m_pContext = buffer ? avio_alloc_context(buffer, BufferSize, 0, this, &Read, nullptr, &Seek) : nullptr;
    if (!m_pContext) {
        av_free(buffer);
        return false;
    }
    input.pb = m_pContext;
    m_pInput = &input;
    return true;
}

void LocalFile::BeginStreams()
{
    m_phase = Phase::Streams;
    m_nPieces = 0;
}

void LocalFile::BeginPackets(int chosen)
{
    m_phase = Phase::Packets;
    m_nStreams = m_pInput->nb_streams;
    m_nChosen = chosen;
}

std::int64_t LocalFile::Allowance() const
{
    const std::int64_t left = ReadableSize(m_nSize, MaxUnknownSize) - m_nPosition;
    if (m_phase == Phase::Packets)
        return left;
    // There is no format yet while FFmpeg probes for it.
    if (m_pInput->iformat && !MayHoldSubtitles(m_pInput->iformat->name))
        return std::min(left, MaxOther - m_nRead);
    if (m_phase == Phase::Streams && m_nPieces >= MaxPieces)
        return 0;
    return std::min(left, MaxSearch - m_nRead);
}

/** Discards streams that appear late: their packets are not used, but FFmpeg's parsers could buffer all of them. */
void LocalFile::LeaveOutNewStreams()
{
    for (; m_nStreams < m_pInput->nb_streams; ++m_nStreams) {
        if (static_cast<int>(m_nStreams) != m_nChosen)
            m_pInput->streams[m_nStreams]->discard = AVDISCARD_ALL;
    }
}

int LocalFile::Read(void *file, std::uint8_t *bytes, int count) noexcept
{
    auto &self = *static_cast<LocalFile *>(file);
    if (self.m_phase == Phase::Packets)
        self.LeaveOutNewStreams();
    const std::int64_t allowed = std::min<std::int64_t>(count, self.Allowance());
    if (allowed <= 0) {
        self.m_bCut |= self.m_phase != Phase::Packets;
        return AVERROR_EOF;
    }
    const std::int64_t got = ReadSome(self.m_nDescriptor, bytes, static_cast<std::size_t>(allowed));
    // On EAGAIN FFmpeg would try again forever.
    if (got < 0)
        return errno == EAGAIN ? AVERROR(EIO) : AVERROR(errno);
    if (got == 0)
        return AVERROR_EOF;
    self.m_nPosition += got;
    self.m_nRead += got;
    self.m_nPieces += std::min<std::int64_t>(got, BufferSize);
    return static_cast<int>(got);
}

std::int64_t LocalFile::Seek(void *file, std::int64_t offset, int whence) noexcept
{
    auto &self = *static_cast<LocalFile *>(file);
    if ((whence & AVSEEK_SIZE) != 0)
        return self.m_nSize;
    const off_t position = lseek(self.m_nDescriptor, static_cast<off_t>(offset), whence & ~AVSEEK_FORCE);
    if (position < 0)
        return AVERROR(errno);
    self.m_nPosition = position;
    return position;
}
