#pragma once

#include "subtitles/subtitlerenderer.h"

/** All subtitles that the options name. What is due of several at once shows one above the other, the first lowest. */
class SubtitleStack
{
public:
    /** As SubtitleRenderer's. */
    SubtitleStack(const SubtitleLibrary &library, int nWidth, int nHeight, const Options &options, Console &console);

    void SetPixelAspect(AVRational aspect) const;

    /** Goes to a time of the pictures; the best of what is due there. */
    Due Seek(long nMilliseconds);

    /** What is due of each at that time. */
    const std::vector<Due> &Dues() const { return m_listDues; }

    /** As SubtitleRenderer::Draw(), with all that are due. */
    bool Draw(AVFrame &frame) const;

    std::vector<AVPixelFormat> Formats() const { return m_listRenderers.front()->Formats(); }
    int Width() const { return m_listRenderers.front()->Width(); }
    int Height() const { return m_listRenderers.front()->Height(); }

private:
    std::vector<std::unique_ptr<SubtitleRenderer>> m_listRenderers;
    std::vector<Due> m_listDues;
    std::vector<SubtitleRows> m_listTaken; ///< by those before the one that is looked at
};
