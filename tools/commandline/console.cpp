#include "commandline/console.h"

#include "commandline/printable.h"
#include "commandline/values.h"

#include <array>
#include <unistd.h>

namespace
{

constexpr std::chrono::milliseconds Interval(250);
// A damaged file may claim a duration whose remaining time does not fit into int64_t.
constexpr double LongestLeft = 1e18;

std::string ShortTime(int64_t nMicroseconds)
{
    const std::string strTime = TimeText(nMicroseconds);
    return strTime.substr(0, strTime.find('.'));
}

} // namespace

Console::Console(bool bQuiet, std::FILE *pNotes) :
    m_bQuiet(bQuiet), m_bTerminal(isatty(STDERR_FILENO) == 1), m_pNotes(pNotes)
{
}

Console::~Console()
{
    ClearLine();
}

void Console::ClearLine()
{
    if (m_bLine)
        (void)std::fputs("\r\033[K", stderr);
    m_bLine = false;
}

void Console::Warn(const std::string &strFile, const std::string &strText)
{
    ClearLine();
    (void)std::fprintf(stderr, "subburn: warning: %s: %s\n", Escaped(strFile).c_str(), Escaped(strText).c_str());
}

void Console::Note(const std::string &strText)
{
    if (m_bQuiet)
        return;
    ClearLine();
    (void)std::fprintf(m_pNotes, "%s\n", Escaped(strText).c_str());
}

void Console::Progress(int64_t nFrames, int64_t nDone, int64_t nTotal)
{
    const Clock::time_point now = Clock::now();
    if (m_bQuiet || !m_bTerminal || now < m_next)
        return;
    m_next = now + Interval;
    const double dElapsed = std::chrono::duration<double>(now - m_begin).count();
    const double dSpeed = dElapsed > 0 ? static_cast<double>(nDone) / 1e6 / dElapsed : 0;
    std::string strLine = std::to_string(nFrames) + (nFrames == 1 ? " frame, " : " frames, ") + ShortTime(nDone);
    if (nTotal > 0)
        strLine += " of " + ShortTime(nTotal);
    std::array<char, 32> listSpeed{};
    (void)std::snprintf(listSpeed.data(), listSpeed.size(), ", %.2fx", dSpeed);
    strLine += listSpeed.data();
    const double dLeft = dSpeed > 0 ? static_cast<double>(nTotal - nDone) / dSpeed : 0;
    if (dLeft > 0 && dLeft < LongestLeft)
        strLine += ", done in " + ShortTime(static_cast<int64_t>(dLeft));
    ClearLine();
    (void)std::fputs(strLine.c_str(), stderr);
    m_bLine = true;
}
