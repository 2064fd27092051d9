#pragma once

#include "vobsub/subparser.h"

/** Gives tests read and write access to the members of a SubParser. */
class SubParserPeer
{
public:
    explicit SubParserPeer(SubParser &parser) : m_parser(parser) {}

    const QList<VobSubtitleItem> &Items() const { return m_parser.m_listItems; }
    void SetItems(const QList<VobSubtitleItem> &items) const
    {
        m_parser.m_listItems = items;
        m_parser.IndexStarts();
    }
    int VideoWidth() const { return m_parser.m_nVideoWidth; }
    int VideoHeight() const { return m_parser.m_nVideoHeight; }
    int SubWidth() const { return m_parser.m_nSubWidth; }
    int SubHeight() const { return m_parser.m_nSubHeight; }
    unsigned int Palette(int nIndex) const { return m_parser.m_palette[nIndex]; }
    QString &SubFile() const { return m_parser.m_strSubFile; }
    const SwsContext *Context() const { return m_parser.m_pSwsContext; }
    const unsigned char *ImageBuffer() const { return m_parser.m_pImageBuffer; }

private:
    SubParser &m_parser;
};
