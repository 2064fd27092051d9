#include "subtitlerenderer.h"

#include "failure.h"
#include "ffmpegptr.h"
#include "readable.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace
{

const int PixelBytes = 3;

std::unique_ptr<SubtitleFile> Prepared(const SubtitleSource &source)
{
    CheckDescriptors(source.strFile);
    return std::make_unique<SubtitleFile>(source);
}

} // namespace

SubtitleRenderer::SubtitleRenderer(const SubtitleLibrary &library, int nWidth, int nHeight, const Options &options) :
    m_library(library),
    m_pFile(Prepared(options.subtitles)),
    m_pHandle(Checked(library.m_pCreate(nWidth, nHeight)), library.m_pDestroy),
    m_nWidth(nWidth),
    m_nHeight(nHeight),
    m_listMask(static_cast<size_t>(nWidth) * nHeight)
{
    Apply(options.style);
    Open(options.subtitles);
    ChooseBlank(options.style);
    m_listBlankRow.resize(static_cast<size_t>(nWidth) * PixelBytes);
    for (size_t n = 0; n < m_listBlankRow.size(); ++n)
        m_listBlankRow[n] = m_listBlank[n % PixelBytes];
    m_listScratch.reserve(m_listBlankRow.size() * nHeight);
    for (int y = 0; y < nHeight; ++y)
        m_listScratch.insert(m_listScratch.end(), m_listBlankRow.begin(), m_listBlankRow.end());
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
}

/** Three different bytes, so that bytes which change places show, and each far from the subtitle's colours. */
void SubtitleRenderer::ChooseBlank(const Style &style)
{
    const Rgb text = style.color.value_or(Rgb{255, 255, 255});
    const Rgb outline = style.outline.value_or(Rgb{10, 10, 10});
    std::vector<int> listTaken = {text.nRed, text.nGreen, text.nBlue, outline.nRed, outline.nGreen, outline.nBlue};
    for (uint8_t &nBlank : m_listBlank) {
        int nFarthest = -1;
        for (int nCandidate = 0; nCandidate < 256; ++nCandidate) {
            int nNear = 256;
            for (int nTaken : listTaken)
                nNear = std::min(nNear, std::abs(nTaken - nCandidate));
            if (nNear > nFarthest) {
                nFarthest = nNear;
                nBlank = static_cast<uint8_t>(nCandidate);
            }
        }
        listTaken.push_back(nBlank);
    }
}

void SubtitleRenderer::Open(const SubtitleSource &source)
{
    if (m_library.m_pSetFile(m_pHandle.get(), m_pFile->Path().c_str(), source.nTrack) != 0)
        throw Failure(ExitCode::Input, source.strFile, m_pFile->ReasonAgainst(source.nTrack));
    if (!m_pFile->HasPictures())
        m_pFile.reset();
}

void SubtitleRenderer::Draw(uint8_t *pPixels, int nStride) const
{
    AVPicture picture = {};
    picture.data[0] = pPixels;
    picture.linesize[0] = nStride;
    m_library.m_pProcessFrame(m_pHandle.get(), &picture);
}

bool SubtitleRenderer::Seek(long nMilliseconds)
{
    m_covered = Box();
    if (m_library.m_pSetTimeStamp(m_pHandle.get(), nMilliseconds) != 0)
        return false;
    Draw(m_listScratch.data(), static_cast<int>(m_listBlankRow.size()));
    FindCovered();
    if (m_covered.Empty())
        return false;
    FillMask();
    return true;
}

void SubtitleRenderer::FindCovered()
{
    const size_t nStride = m_listBlankRow.size();
    Box box = {m_nWidth, m_nHeight, 0, 0};
    for (int y = 0; y < m_nHeight; ++y) {
        const uint8_t *pRow = m_listScratch.data() + y * nStride;
        if (std::memcmp(pRow, m_listBlankRow.data(), nStride) == 0)
            continue;
        const auto first = std::mismatch(pRow, pRow + nStride, m_listBlankRow.begin());
        const auto last = std::mismatch(std::make_reverse_iterator(pRow + nStride), std::make_reverse_iterator(pRow),
                                        m_listBlankRow.rbegin());
        box.nTop = std::min(box.nTop, y);
        box.nBottom = y + 1;
        box.nLeft = std::min(box.nLeft, static_cast<int>(first.first - pRow) / PixelBytes);
        box.nRight = std::max(box.nRight, static_cast<int>(last.first.base() - 1 - pRow) / PixelBytes + 1);
    }
    m_covered = box;
}

/** Reads the mask off the scratch picture and leaves that blank again. */
void SubtitleRenderer::FillMask()
{
    const size_t nStride = m_listBlankRow.size();
    for (int y = m_covered.nTop; y < m_covered.nBottom; ++y) {
        uint8_t *pRow = m_listScratch.data() + y * nStride;
        uint8_t *pMask = m_listMask.data() + static_cast<size_t>(y) * m_nWidth;
        for (int x = m_covered.nLeft; x < m_covered.nRight; ++x)
            pMask[x] =
                std::memcmp(pRow + static_cast<ptrdiff_t>(x) * PixelBytes, m_listBlank.data(), PixelBytes) != 0 ? 1 : 0;
        std::memcpy(pRow, m_listBlankRow.data(), nStride);
    }
}
