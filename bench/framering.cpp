#include "framering.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr std::size_t BandTop = 74; ///< in percent of the height; subtitles are inside the band
constexpr std::size_t BandBottom = 96;
constexpr std::size_t InkShare = 20; ///< a subtitle's rectangle is about 1/20 of a frame
constexpr std::size_t LeastFrames = 16;

std::size_t CacheBytes()
{
    const long bytes = sysconf(_SC_LEVEL3_CACHE_SIZE);
    return bytes > 0 ? static_cast<std::size_t>(bytes) : std::size_t{32} << 20;
}

/** Memory that is available without swapping. */
std::size_t FreeBytes()
{
    std::ifstream information("/proc/meminfo");
    std::string word;
    std::size_t kilobytes = 0;
    while (information >> word && word != "MemAvailable:") {
    }
    information >> kilobytes;
    return kilobytes << 10;
}

} // namespace

FrameRing &FrameRing::Of(int width, int height)
{
    static std::map<std::pair<int, int>, std::unique_ptr<FrameRing>> rings;
    std::unique_ptr<FrameRing> &ring = rings[{width, height}];
    if (!ring)
        ring.reset(new FrameRing(width, height));
    return *ring;
}

FrameRing::FrameRing(int width, int height) : m_nFrameBytes(static_cast<std::size_t>(width) * height * 3)
{
    const std::size_t row = static_cast<std::size_t>(width) * 3;
    const std::size_t top = height * BandTop / 100;
    const std::size_t band = (height * BandBottom / 100 - top) * row;
    const std::size_t wanted = CacheBytes() / (m_nFrameBytes / InkShare) + 1;
    const std::size_t affordable = FreeBytes() / 6 / band;
    m_nFrames = std::max(LeastFrames, std::min(wanted, affordable));

    void *memory =
        mmap(nullptr, m_nFrames * m_nFrameBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
             -1, 0); // cppcheck-suppress invalidFunctionArg; no file
    if (memory == MAP_FAILED)
        throw std::runtime_error("no memory for frames");
    // Huge pages would also allocate memory for parts that are never touched.
    madvise(memory, m_nFrames * m_nFrameBytes, MADV_NOHUGEPAGE);
    m_pFrames = static_cast<std::uint8_t *>(memory);
    for (std::size_t n = 0; n < m_nFrames; ++n)
        std::memset(m_pFrames + n * m_nFrameBytes + top * row, Background, band);
}
