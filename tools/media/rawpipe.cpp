#include "media/rawpipe.h"

#include "commandline/failure.h"
#include "commandline/interrupt.h"
#include "commandline/report.h"
#include "subtitles/subtitlestack.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace
{

const int RgbBytes = 3;
const char *const InputName = "standard input";
const char *const OutputName = "standard output";

} // namespace

RawPipe::RawPipe(const Options &options, const SubtitleLibrary &library, Console &console) :
    m_options(options),
    m_library(library),
    m_console(console),
    m_listPixels(static_cast<size_t>(options.pipe.nWidth) * options.pipe.nHeight * RgbBytes)
{
    m_pFrame->data[0] = m_listPixels.data();
    m_pFrame->linesize[0] = options.pipe.nWidth * RgbBytes;
    m_pFrame->width = options.pipe.nWidth;
    m_pFrame->height = options.pipe.nHeight;
    m_pFrame->format = AV_PIX_FMT_RGB24;
}

void RawPipe::Run()
{
    const PipeFormat &format = m_options.pipe;
    SubtitleStack subtitles(m_library, format.nWidth, format.nHeight, m_options, m_console);
    const AVRational frameTime = {format.nScale, format.nRate};
    BurnCounts counts(m_options.listSubtitles);
    while (ReadFrame()) {
        const int64_t nFrame = counts.OfAny().All();
        if (subtitles.Seek(av_rescale_q(nFrame, frameTime, Milliseconds)) == Due::Shown)
            subtitles.Draw(*m_pFrame);
        counts.Add(subtitles.Dues());
        WriteFrame();
        m_console.Progress(nFrame + 1, av_rescale_q(nFrame, frameTime, Microseconds), 0);
    }
    ReportFrames(m_console, OutputName, counts);
}

/** @return false at the end of the input. */
bool RawPipe::ReadFrame()
{
    size_t nHave = 0;
    while (nHave < m_listPixels.size()) {
        Interrupt::Check();
        const ssize_t nRead = read(STDIN_FILENO, m_listPixels.data() + nHave, m_listPixels.size() - nHave);
        if (nRead < 0 && errno == EINTR)
            continue;
        if (nRead < 0)
            throw Failure(ExitCode::Input, InputName, std::generic_category().message(errno));
        if (nRead == 0 && nHave > 0)
            throw Failure(ExitCode::Input, InputName,
                          "ends within a frame, " + std::to_string(m_listPixels.size() - nHave) + " bytes short");
        if (nRead == 0)
            return false;
        nHave += nRead;
    }
    return true;
}

void RawPipe::WriteFrame() const
{
    size_t nDone = 0;
    while (nDone < m_listPixels.size()) {
        Interrupt::Check();
        const ssize_t nWritten = write(STDOUT_FILENO, m_listPixels.data() + nDone, m_listPixels.size() - nDone);
        if (nWritten < 0 && errno == EINTR)
            continue;
        if (nWritten < 0)
            throw Failure(ExitCode::Output, OutputName, std::generic_category().message(errno));
        nDone += nWritten;
    }
}
