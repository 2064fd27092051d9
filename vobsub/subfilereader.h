#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

/**
 * Reads pieces of a .sub file. The file is open during a fetch only, so it may be removed, truncated or replaced in
 * between.
 */
class SubFileReader
{
public:
    /** Most bytes that one fetch returns, as all of them get decoded. Real entries are far closer to each other. */
    static constexpr std::uint32_t MaxLength = 4 * 1024 * 1024;

    /**
     * @param length  bytes to read; fewer are read at the end of the file, and never more than MaxLength.
     * @return false if the file cannot be opened or read.
     */
    [[nodiscard]] bool Fetch(const QString &path, std::uint32_t start, std::uint32_t length, QByteArray &bytes);

    /** Whether the last fetch began where the one before it ended, in the same unchanged file. */
    bool IsContinued() const;

    /** Call this if the bytes of the last fetch were not used; the next fetch then does not continue it. */
    void Forget();

private:
    /** Identifies a file and its version. */
    struct FileState {
        std::uint64_t nDevice = 0;
        std::uint64_t nInode = 0;
        std::int64_t nSize = 0;
        std::int64_t nChangedSeconds = 0;
        long nChangedNanoseconds = 0;

        bool operator==(const FileState &other) const;
    };
    static bool ReadState(int descriptor, FileState &state);

    FileState m_state;
    std::uint64_t m_nEnd = 0; ///< where the last fetch ended
    bool m_bFetched = false;
    bool m_bContinued = false;
};
