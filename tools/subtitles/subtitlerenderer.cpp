#include "subtitles/subtitlerenderer.h"

#include "commandline/failure.h"
#include "commandline/readable.h"

#include <cmath>
#include <new>

namespace
{

std::unique_ptr<SubtitleFile> Prepared(const Subtitle &subtitle, Console &console)
{
    CheckDescriptors(subtitle.source.strFile);
    return std::make_unique<SubtitleFile>(subtitle, console);
}

} // namespace

SubtitleRenderer::SubtitleRenderer(const SubtitleLibrary &library, int nWidth, int nHeight, const Subtitle &subtitle,
                                   Console &console) :
    m_library(library),
    m_dStretch(subtitle.source.dStretch),
    m_nDelay(subtitle.source.nDelay),
    m_pFile(Prepared(subtitle, console)),
    m_nOrigin(m_pFile->Origin()),
    m_pHandle(Checked(library.m_pCreate(nWidth, nHeight)), library.m_pDestroy),
    m_pBurner(MakeBurner(subtitle.style.bExact ? SUBTITLE_LOOK_EXACT : SUBTITLE_LOOK_NATURAL)),
    m_pNaturalBurner(nullptr, library.m_pDestroyBurner),
    m_nWidth(nWidth),
    m_nHeight(nHeight)
{
    Apply(subtitle.style);
    if (subtitle.style.bExact && m_pFile->HasPictures())
        m_pNaturalBurner = MakeBurner(SUBTITLE_LOOK_NATURAL);
    Open(subtitle.source);
}

SubtitleRenderer::Burner SubtitleRenderer::MakeBurner(int nLook) const
{
    Burner pBurner(Checked(m_library.m_pCreateBurner(m_pHandle.get())), m_library.m_pDestroyBurner);
    m_library.m_pSetLook(pBurner.get(), nLook);
    return pBurner;
}

void SubtitleRenderer::Apply(const Style &style)
{
    void *pHandle = m_pHandle.get();
    if (style.strFont || style.nSize || style.bBold || style.bItalic) {
        const int nStyle = (style.bBold ? SUBTITLE_STYLE_BOLD : 0) | (style.bItalic ? SUBTITLE_STYLE_ITALIC : 0);
        m_library.m_pSetFont(pHandle, style.strFont ? style.strFont->c_str() : nullptr, style.nSize.value_or(0),
                             nStyle);
    }
    if (style.color)
        m_library.m_pSetColor(pHandle, style.color->nRed, style.color->nGreen, style.color->nBlue);
    if (style.outline)
        m_library.m_pSetOutlineColor(pHandle, style.outline->nRed, style.outline->nGreen, style.outline->nBlue);
    if (style.nOpacity)
        m_library.m_pSetOpacity(pHandle, *style.nOpacity);
    if (style.nPosition)
        m_library.m_pSetPosition(pHandle, *style.nPosition);
    if (style.dOutlineWidth)
        m_library.m_pSetOutlineWidth(m_pBurner.get(), *style.dOutlineWidth);
}

void SubtitleRenderer::Open(const SubtitleSource &source)
{
    if (m_library.m_pSetFile(m_pHandle.get(), m_pFile->Path().c_str(), source.nTrack) != 0)
        throw Failure(ExitCode::Input, source.strFile, m_pFile->ReasonAgainst(source.nTrack));
    if (!m_pFile->HasPictures())
        m_pFile.reset();
}

void SubtitleRenderer::SetPixelAspect(AVRational aspect) const
{
    if (m_library.m_pSetPixelAspect(m_pBurner.get(), aspect.num, aspect.den) != 0)
        m_library.m_pSetPixelAspect(m_pBurner.get(), 1, 1);
}

void SubtitleRenderer::KeepClearOf(const std::vector<SubtitleRows> &listRows) const
{
    if (m_library.m_pSetTakenRows(m_pBurner.get(), listRows.data(), static_cast<int>(listRows.size())) != 0)
        throw std::bad_alloc();
}

SubtitleRows SubtitleRenderer::Rows() const
{
    SubtitleRows rows = {};
    m_library.m_pFindRows(m_pBurner.get(), &rows);
    return rows;
}

Due SubtitleRenderer::Seek(long nMilliseconds) const
{
    const long nOwn = std::lround(static_cast<double>(nMilliseconds - m_nDelay) / m_dStretch);
    if (m_library.m_pSetTimeStamp(m_pHandle.get(), nOwn + m_nOrigin) != 0)
        return Due::Nothing;
    if (Draws(m_pBurner))
        return Due::Shown;
    return m_pNaturalBurner && Draws(m_pNaturalBurner) ? Due::Unseen : Due::Nothing;
}

bool SubtitleRenderer::Draws(const Burner &pBurner) const
{
    return m_library.m_pIsDue(pBurner.get()) > 0;
}

bool SubtitleRenderer::Draw(AVFrame &frame) const
{
    return m_library.m_pBurn(m_pBurner.get(), &frame) == 0;
}

std::vector<AVPixelFormat> SubtitleRenderer::Formats() const
{
    std::vector<AVPixelFormat> listFormats;
    for (const AVPixFmtDescriptor *p = av_pix_fmt_desc_next(nullptr); p; p = av_pix_fmt_desc_next(p)) {
        if (m_library.m_pPixelFormat(p->name) >= 0)
            listFormats.push_back(av_pix_fmt_desc_get_id(p));
    }
    return listFormats;
}
