#include "frei0r/subtitleburner.h"

#include "hosts/handlegate.h"
#include "libsubtitle.h"
#include "libsubtitleframe.h"

#include <algorithm>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

class Alone
{
public:
    Alone() { HandleGateEnterAlone(); }
    ~Alone() { HandleGateLeaveAlone(); }
    Alone(const Alone &) = delete;
    Alone &operator=(const Alone &) = delete;
};

class Among
{
public:
    Among() { HandleGateEnter(); }
    ~Among() { HandleGateLeave(); }
    Among(const Among &) = delete;
    Among &operator=(const Among &) = delete;
};

/** Checked here because the library might take the name of a missing file for a URL. */
bool IsReadable(const std::string &strFile)
{
    struct stat status = {};
    return stat(strFile.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(strFile.c_str(), R_OK) == 0;
}

} // namespace

SubtitleBurner::~SubtitleBurner()
{
    if (!m_pSubtitle)
        return;
    const Alone alone;
    DestroySubtitleBurner(m_pBurner);
    DestroyVideoSubtitle(m_pSubtitle);
}

bool SubtitleBurner::MakeHandle()
{
    m_bGiven = false;
    const Alone alone;
    // Before the old one is destroyed: with the last handle the library shuts Qt down and would have to restart it.
    void *pSubtitle = CreateVideoSubtitle(m_nWidth, m_nHeight);
    DestroySubtitleBurner(m_pBurner);
    DestroyVideoSubtitle(m_pSubtitle);
    m_pSubtitle = pSubtitle;
    m_pBurner = CreateSubtitleBurner(m_pSubtitle);
    return m_pBurner != nullptr;
}

void SubtitleBurner::SetFont()
{
    const int nPoints = m_parameters.Points(m_nHeight);
    const std::string &strFamily = m_parameters.Family();
    const int nStyle = m_parameters.Style();
    if (!m_bGiven || nPoints != m_given.Points(m_nHeight) || strFamily != m_given.Family() || nStyle != m_given.Style())
        SetSubtitleFontParam(m_pSubtitle, strFamily.c_str(), nPoints, nStyle);
}

void SubtitleBurner::SetStyle()
{
    if (!m_bGiven || m_parameters.Alpha() != m_given.Alpha())
        SetSubtitleAlpah(m_pSubtitle, m_parameters.Alpha());
    if (!m_bGiven || m_parameters.Percent() != m_given.Percent())
        SetSubtitlePos(m_pSubtitle, m_parameters.Percent());
    if (!m_bGiven || m_parameters.Look() != m_given.Look())
        SetSubtitleBurnerLook(m_pBurner, m_parameters.Look());
    const BurnColor font = m_parameters.FontColor();
    if (!m_bGiven || !(font == m_given.FontColor()))
        SetSubtitleFontColor(m_pSubtitle, font.nRed, font.nGreen, font.nBlue);
    const BurnColor outline = m_parameters.OutlineColor();
    if (!m_bGiven || !(outline == m_given.OutlineColor()))
        SetSubtitleOutlineColor(m_pSubtitle, outline.nRed, outline.nGreen, outline.nBlue);
}

void SubtitleBurner::SetFile()
{
    const std::string &strFile = m_parameters.File();
    const std::optional<int> track = m_parameters.Track();
    if (!m_bGiven || strFile != m_given.File() || track != m_given.Track())
        m_bOpen = track && IsReadable(strFile) && SetSubtitleFile(m_pSubtitle, strFile.c_str(), *track) == 0;
}

/** Passes changed parameters to the handle. Returns false if there is no file to draw from. */
bool SubtitleBurner::Prepare()
{
    // Some hosts create instances only to ask for their parameters, so the handle, and with it Qt, waits for a file.
    if (!m_pSubtitle && m_parameters.File().empty())
        return false;
    // No setter returns to the default size.
    const bool bToDefaultSize = m_parameters.Points(m_nHeight) == 0 && m_given.Points(m_nHeight) != 0;
    if ((!m_pBurner || bToDefaultSize) && !MakeHandle())
        return false;
    {
        const Among among;
        SetFont();
        SetStyle();
        SetFile();
    }
    try {
        m_given = m_parameters;
    } catch (const std::bad_alloc &) {
        m_bGiven = false; // m_given may be half copied
        throw;
    }
    m_bGiven = true;
    return m_bOpen;
}

void SubtitleBurner::Update(double fTime, const std::uint32_t *pIn, std::uint32_t *pOut)
{
    if (pIn != pOut)
        std::copy_n(pIn, static_cast<std::size_t>(m_nWidth) * m_nHeight, pOut);
    const std::optional<long> time = m_parameters.FileTime(fTime);
    if (!time || !Prepare())
        return;
    SubtitleFrame frame = {};
    frame.data[0] = reinterpret_cast<std::uint8_t *>(pOut);
    frame.linesize[0] = 4 * m_nWidth;
    frame.width = m_nWidth;
    frame.height = m_nHeight;
    const Among among;
    frame.format = SubtitlePixelFormat("rgba");
    // Without memory the frame passes without subtitles.
    if (SetSubtitleTimeStamp(m_pSubtitle, *time) == 0)
        BurnSubtitle(m_pBurner, &frame);
}
