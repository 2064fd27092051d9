#pragma once

#include <cstdint>

struct AVFormatContext;
struct AVIOContext;

/**
 * A local file for FFmpeg's demuxers. We open it ourselves to accept regular files only and never to block.
 *
 * Limits how much is read while FFmpeg looks for streams: its parsers buffer everything until they find a frame, which
 * may be the whole file, and some demuxers look for headers up to the end of the file. One object serves one input.
 */
class LocalFile
{
public:
    /** @param name  as FFmpeg takes it, with or without "file:". */
    explicit LocalFile(const char *name);
    ~LocalFile();
    LocalFile(const LocalFile &) = delete;
    LocalFile &operator=(const LocalFile &) = delete;

    /** Whether FFmpeg would take the name for a local file. */
    static bool IsNamedBy(const char *name);

    /** The file's size in bytes; 0 if it could not be opened. */
    std::int64_t Size() const;

    /** Makes @p input read this file. @return false if it could not be opened or memory runs out. */
    [[nodiscard]] bool Attach(AVFormatContext &input);

    /** Call this after the header was read and before FFmpeg examines the streams. */
    void BeginStreams();

    /**
     * Lifts the limits once a stream is chosen, since its packets may be anywhere in the file. Streams that appear from
     * now on are discarded.
     */
    void BeginPackets(int chosen);

    /** Whether the demuxer hit a limit, which it may remember as the end of the file. */
    bool IsCut() const { return m_bCut; }

private:
    enum class Phase { Header, Streams, Packets };

    // FFmpeg, which is C, calls these.
    static int Read(void *file, std::uint8_t *bytes, int count) noexcept;
    static std::int64_t Seek(void *file, std::int64_t offset, int whence) noexcept;

    std::int64_t Allowance() const;
    void LeaveOutNewStreams();

    int m_nDescriptor = -1;
    std::int64_t m_nSize = 0;
    std::int64_t m_nPosition = 0;
    std::int64_t m_nRead = 0;   ///< bytes read so far
    std::int64_t m_nPieces = 0; ///< bytes read since the header, each read counting as one buffer at most
    Phase m_phase = Phase::Header;
    AVFormatContext *m_pInput = nullptr;
    AVIOContext *m_pContext = nullptr;
    unsigned int m_nStreams = 0; ///< streams that BeginPackets() or LeaveOutNewStreams() has seen
    int m_nChosen = -1;
    bool m_bCut = false;
};
