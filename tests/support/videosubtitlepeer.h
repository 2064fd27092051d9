#pragma once

#include "render/videosubtitle.h"

/** Gives tests read and write access to the members of a VideoSubtitle. */
class VideoSubtitlePeer
{
public:
    explicit VideoSubtitlePeer(VideoSubtitle &renderer) : m_renderer(renderer) {}

    QString &Subtitle() const { return m_renderer.m_strSubtitle; }
    std::atomic<int> &Dirty() const { return m_renderer.m_bDirty; }
    quint32 FontColor() const { return m_renderer.m_nFontColor; }
    quint32 OutlineColor() const { return m_renderer.m_nOutlineColor; }
    bool Outline() const { return m_renderer.m_bOutline != 0; }
    quint8 Alpha() const { return m_renderer.m_nAlpha; }
    QSize VideoSize() const { return {m_renderer.m_nVideoWidth, m_renderer.m_nVideoHeight}; }
    int LogoPos() const { return m_renderer.m_nLogoPos; }
    int &AnchorOffset() const { return m_renderer.m_nAnchorOffset; }
    QRect Rect() const
    {
        return {m_renderer.m_nSubX, m_renderer.m_nSubY, m_renderer.m_nSubWidth, m_renderer.m_nSubHeight};
    }
    void SetRect(const QRect &rect) const
    {
        m_renderer.m_nSubX = rect.x();
        m_renderer.m_nSubY = rect.y();
        m_renderer.m_nSubWidth = rect.width();
        m_renderer.m_nSubHeight = rect.height();
    }
    QFont *Font() const { return m_renderer.m_pFont; }
    QImage *Image() const { return m_renderer.m_pImage; }
    /** An address that changes with every text painted. */
    const std::uint64_t *Ink() const { return m_renderer.m_painted.ink->text.listWords.data(); }
    /** The current text, as an image of the frame's size. */
    QImage Text() const
    {
        return MakeImage(m_renderer.m_painted, m_renderer.Style(), m_renderer.m_nVideoWidth, m_renderer.m_nVideoHeight);
    }

private:
    VideoSubtitle &m_renderer;
};
