#pragma once

#include <cstdint>

struct AVFormatContext;
struct AVIOContext;

/**
 * A local file that FFmpeg's demuxers read, opened by us so that it is a regular file and nothing waits for it.
 *
 * What is read in search of the streams is limited: FFmpeg's parsers hold all that comes until they find a frame, which may
 * be the whole file, and some headers are read to the file's end. One object serves one input.
 */
class LocalFile
{
public:
    /** @param name  as FFmpeg takes it, with or without "file:". */
    explicit LocalFile(const char *name);
    ~LocalFile();
    LocalFile(const LocalFile &) = delete;
    LocalFile &operator=(const LocalFile &) = delete;

    /** Whether FFmpeg would open the name itself as a local file. */
    static bool IsNamedBy(const char *name);

    /** The file's size, 0 when it could not be opened. */
    std::int64_t Size() const;

    /** Makes @p input read this file. @return false when it could not be opened, or there is no memory. */
    bool Attach(AVFormatContext &input);

    /** The header was read; what follows is read to find out about the streams. */
    void BeginStreams();

    /** A stream was chosen: its packets may be anywhere in the file, and other streams that turn up now are left out. */
    void BeginPackets(int chosen);

    /** Whether the demuxer came to a limit, which it may remember as the end of the file. */
    bool IsCut() const { return m_bCut; }

private:
    enum class Phase { Header, Streams, Packets };

    static int Read(void *file, std::uint8_t *bytes, int count);
    static std::int64_t Seek(void *file, std::int64_t offset, int whence);

    std::int64_t Allowance() const;
    void LeaveOutNewStreams();

    int m_nDescriptor = -1;
    std::int64_t m_nSize = 0;
    std::int64_t m_nPosition = 0;
    std::int64_t m_nRead = 0;   ///< bytes, before the packets
    std::int64_t m_nPieces = 0; ///< of them since the header, a large read counting as a small one
    Phase m_phase = Phase::Header;
    AVFormatContext *m_pInput = nullptr;
    AVIOContext *m_pContext = nullptr;
    unsigned int m_nStreams = 0; ///< when the packets began
    int m_nChosen = -1;
    bool m_bCut = false;
};
