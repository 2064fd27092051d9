#pragma once

#include "parsers/assparser.h"

/** Gives tests read and write access to the members of an AssParser. */
class AssParserPeer
{
public:
    explicit AssParserPeer(AssParser &parser) : m_parser(parser) {}

    const QList<AssSubtitleItem> &Items() const { return m_parser.m_listItems; }
    QString &Reserved() const { return m_parser.m_strReserved; }
    QString &Collisions() const { return m_parser.m_strCollisions; }
    int &PlayResX() const { return m_parser.m_nPlayResX; }
    int &PlayResY() const { return m_parser.m_nPlayResY; }
    QRect &Margin() const { return m_parser.m_rcMargin; }
    std::array<int, 4> &Colors() const { return m_parser.m_nColors; }
    std::array<quint8, 4> &Alpha() const { return m_parser.m_byAlpha; }
    QString &FontName() const { return m_parser.m_strFontName; }
    int &Charset() const { return m_parser.m_nCharset; }
    int &Bold() const { return m_parser.m_nBold; }
    int &Alignment() const { return m_parser.m_nAlignment; }
    int &BorderStyle() const { return m_parser.m_nBorderStyle; }
    double &FontSize() const { return m_parser.m_dFontSize; }
    double &ScaleX() const { return m_parser.m_dScaleX; }
    double &ScaleY() const { return m_parser.m_dScaleY; }
    double &Spacing() const { return m_parser.m_dSpacing; }
    double &AngleZ() const { return m_parser.m_dAngleZ; }
    double &AngleX() const { return m_parser.m_dAngleX; }
    double &AngleY() const { return m_parser.m_dAngleY; }
    double &Outline() const { return m_parser.m_dOutline; }
    double &Shadow() const { return m_parser.m_dShadow; }
    int &Italic() const { return m_parser.m_bItalic; }
    int &Underline() const { return m_parser.m_bUnderline; }
    int &StrikeOut() const { return m_parser.m_bStrikeOut; }

private:
    AssParser &m_parser;
};
