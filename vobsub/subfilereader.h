#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

/**
 * Fetches pieces of a .sub file, which is open during a fetch only. It may be away, cut short or replaced between two.
 */
class SubFileReader
{
public:
    /** The most that one fetch brings, all of which is decoded; what lies between two entries is far shorter. */
    static constexpr std::uint32_t MaxLength = 4 * 1024 * 1024;

    /**
     * @param length  the bytes wanted; fewer come where the file ends and beyond MaxLength.
     * @return false when the file cannot be opened or read.
     */
    bool Fetch(const QString &path, std::uint32_t start, std::uint32_t length, QByteArray &bytes);

    /** Whether the last fetch went on where the one before it ended, in the same unchanged file. */
    bool IsContinued() const;

    /** What was fetched last was not used. */
    void Forget();

private:
    /** What tells one state of a file from another. */
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
