#pragma once

#include "support/assparserpeer.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>
#include <vector>

/** A parser, and Open() to let it read a script. */
class AssParserTest : public testing::Test
{
protected:
    void Open(const std::string &content)
    {
        EXPECT_EQ(m_parser.Open(QString::fromStdString(m_folder.Write("file.ass", content)), 0), 1);
    }

    std::string At(long ms) { return m_parser.GetSubtitle(ms).toStdString(); }

    TemporaryFolder m_folder;
    AssParser m_parser;
    AssParserPeer m_peer{m_parser};
};
