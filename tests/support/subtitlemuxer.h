#pragma once

#include <cstdint>
#include <string>
#include <vector>

/** A packet to write. Times are in units of 1 / timeBaseDenominator seconds. */
struct MuxedPacket {
    int nStream;
    std::int64_t nTime;
    std::int64_t nDuration;
    std::string strPayload;
};

/**
 * Writes a file with given packets by FFmpeg's muxers.
 *
 * @param path     its extension selects the container.
 * @param streams  FFmpeg's name of each stream's codec, such as "subrip".
 * @param timeBaseDenominator  requests the time base 1 / this; some containers use another one.
 * @param header   codec data of each stream, such as a palette.
 */
void MuxSubtitles(const std::string &path, const std::vector<std::string> &streams,
                  const std::vector<MuxedPacket> &packets, int timeBaseDenominator = 1000,
                  const std::string &header = {});
