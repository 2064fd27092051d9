#pragma once

#include <cstdint>
#include <string>
#include <vector>

/** A packet to be written, its times in the stream's time base. */
struct MuxedPacket {
    int nStream;
    std::int64_t nTime;
    std::int64_t nDuration;
    std::string strPayload;
};

/**
 * Writes a file with FFmpeg's muxers whose packets hold what a test wants them to.
 *
 * @param path     the extension tells the container.
 * @param streams  FFmpeg's short names of their codecs, such as "subrip".
 * @param timeBaseDenominator  the time base that is asked for, 1 / this; not every container takes it.
 */
void MuxSubtitles(const std::string &path, const std::vector<std::string> &streams,
                  const std::vector<MuxedPacket> &packets, int timeBaseDenominator = 1000);
