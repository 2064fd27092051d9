#pragma once

#include "support/subparserpeer.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

/** A SubParser, and functions to let it read indexes. */
class SubIndexTest : public testing::Test
{
protected:
    int OpenText(const std::string &text, int nStream = 0)
    {
        return m_parser.Open(QString::fromStdString(m_folder.Write("a.idx", text)), nStream);
    }

    /** Opens an index with one language that has these lines. */
    void OpenEntries(const std::string &lines) { EXPECT_EQ(OpenText("size: 720x576\nid: en, index: 0\n" + lines), 1); }

    std::vector<int> Starts() const
    {
        std::vector<int> listStarts;
        for (const VobSubtitleItem &item : m_peer.Items())
            listStarts.push_back(item.nStart);
        return listStarts;
    }

    TemporaryFolder m_folder;
    SubParser m_parser;
    SubParserPeer m_peer{m_parser};
};
