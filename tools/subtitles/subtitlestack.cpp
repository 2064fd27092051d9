#include "subtitles/subtitlestack.h"

#include "subtitles/fonts.h"

#include <algorithm>
#include <new>
#include <set>

SubtitleStack::SubtitleStack(const SubtitleLibrary &library, int nWidth, int nHeight, const Options &options,
                             Console &console) :
    m_listDues(options.listSubtitles.size(), Due::Nothing)
{
    std::set<std::string> setFonts;
    for (const Subtitle &subtitle : options.listSubtitles) {
        m_listRenderers.push_back(std::make_unique<SubtitleRenderer>(library, nWidth, nHeight, subtitle, console));
        const std::string strFont = subtitle.style.strFont.value_or("");
        const bool bNew = !m_listRenderers.back()->HasPictures() && setFonts.insert(strFont).second;
        const std::string strSubstitute = subtitle.style.strFont && bNew ? SubstituteFor(strFont) : "";
        if (!strSubstitute.empty())
            console.Warn(strFont, "there is no such font, " + strSubstitute + " is used instead");
    }
}

void SubtitleStack::SetPixelAspect(AVRational aspect) const
{
    for (const auto &pRenderer : m_listRenderers)
        pRenderer->SetPixelAspect(aspect);
}

Due SubtitleStack::Seek(long nMilliseconds)
{
    m_listTaken.clear();
    for (size_t n = 0; n < m_listRenderers.size(); ++n) {
        const SubtitleRenderer &renderer = *m_listRenderers[n];
        renderer.KeepClearOf(m_listTaken);
        m_listDues[n] = renderer.Seek(nMilliseconds);
        if (m_listDues[n] == Due::Shown && n + 1 < m_listRenderers.size())
            m_listTaken.push_back(renderer.Rows());
    }
    return *std::max_element(m_listDues.begin(), m_listDues.end());
}

bool SubtitleStack::Draw(AVFrame &frame) const
{
    bool bDrawn = false;
    for (size_t n = 0; n < m_listRenderers.size(); ++n) {
        if (m_listDues[n] != Due::Shown)
            continue;
        // All support the same formats, so only the first one can refuse a frame.
        if (!m_listRenderers[n]->Draw(frame)) {
            if (bDrawn)
                throw std::bad_alloc();
            return false;
        }
        bDrawn = true;
    }
    return true;
}
