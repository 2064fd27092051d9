#include "media/demuxer.h"

#include "commandline/failure.h"
#include "commandline/interrupt.h"
#include "commandline/readable.h"

#include <cstring>
#include <filesystem>
#include <string_view>

namespace
{

constexpr std::string_view FileScheme = "file:";

/** The URL of a file, or the name if there is no such file. Throws a Failure for pipes and devices. */
std::string UrlOf(const std::string &strFile)
{
    if (strFile == "-")
        return "pipe:0";
    std::error_code error;
    if (std::filesystem::exists(strFile, error)) {
        CheckReadable(strFile);
        // Without the prefix FFmpeg takes the part of a name before a colon for a protocol.
        return std::string(FileScheme) + strFile;
    }
    if (PathOf(strFile) != strFile)
        CheckReadable(PathOf(strFile));
    const char *pProtocol = avio_find_protocol_name(strFile.c_str());
    if (pProtocol && std::strcmp(pProtocol, "pipe") == 0)
        throw Failure(ExitCode::Input, strFile, "is a pipe and not a regular file");
    return strFile;
}

void CheckRead(int nResult, const std::string &strFile)
{
    Interrupt::Check();
    if (nResult < 0)
        throw Failure(ExitCode::Input, strFile == "-" ? "standard input" : strFile, AvReason(nResult));
}

} // namespace

DemuxerPtr OpenDemuxer(const std::string &strFile)
{
    const std::string strUrl = UrlOf(strFile);
    AVFormatContext *pFormat = Checked(avformat_alloc_context());
    pFormat->interrupt_callback = Interrupt::Callback();
    // Frees the context on failure.
    CheckRead(avformat_open_input(&pFormat, strUrl.c_str(), nullptr, nullptr), strFile);
    DemuxerPtr pOpened(pFormat);
    CheckRead(avformat_find_stream_info(pFormat, nullptr), strFile);
    return pOpened;
}

bool ReadPacket(AVFormatContext &format, const std::string &strFile, AVPacket &packet)
{
    av_packet_unref(&packet);
    int nResult = AVERROR(EAGAIN);
    while (nResult == AVERROR(EAGAIN)) {
        Interrupt::Check();
        nResult = av_read_frame(&format, &packet);
    }
    if (nResult == AVERROR_EOF)
        return false;
    CheckRead(nResult, strFile);
    return true;
}

std::string PathOf(const std::string &strFile)
{
    std::error_code error;
    const bool bScheme = strFile.compare(0, FileScheme.size(), FileScheme) == 0;
    return bScheme && !std::filesystem::exists(strFile, error) ? strFile.substr(FileScheme.size()) : strFile;
}

int64_t OriginOf(const AVFormatContext &format)
{
    // In transport and program streams the clock starts anywhere. In other formats a late start is an intended gap.
    if ((format.iformat->flags & AVFMT_TS_DISCONT) == 0 || format.start_time == AV_NOPTS_VALUE)
        return 0;
    return format.start_time;
}
