#pragma once

#include "parsers/srtparser.h"

/** Gives tests access to the members of an SrtParser. */
class SrtParserPeer
{
public:
    explicit SrtParserPeer(const SrtParser &parser) : m_parser(parser) {}

    const QList<SrtSubtitleItem> &Items() const { return m_parser.m_listItems; }

private:
    const SrtParser &m_parser;
};
