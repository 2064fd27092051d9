#pragma once

#include "support/pictureunit.h"
#include "support/plaincanvas.h"
#include "support/subparserpeer.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include <gtest/gtest.h>

/** A SubParser whose pictures are compared with a canvas drawn pixel by pixel. */
class SubParserTest : public testing::Test
{
protected:
    using Bytes = std::vector<std::uint8_t>;

    /** Opens a pair for a video of the canvas's size. */
    void Open(const VobSubPair &pair, int nStream = 0)
    {
        ASSERT_EQ(m_parser.Open(QString::fromStdString(pair.Write(m_folder)), nStream), 1);
        m_parser.SetVideoSize(pair.nWidth, pair.nHeight);
    }

    /** The bytes of an entry's picture; empty for a null image, which must not change the rectangle. */
    Bytes Picture(const QString &key)
    {
        const QRect untouched(1, 2, 3, 4);
        QRect rect = untouched;
        const QImage image = m_parser.TextToImage(key, rect);
        if (image.isNull()) {
            EXPECT_EQ(rect, untouched);
            return {};
        }
        EXPECT_EQ(rect, image.rect());
        EXPECT_EQ(image.size(), QSize(m_peer.VideoWidth(), m_peer.VideoHeight()));
        EXPECT_EQ(image.format(), QImage::Format_RGB32);
        EXPECT_EQ(image.bytesPerLine(), 4 * image.width());
        return {image.constBits(), image.constBits() + image.sizeInBytes()};
    }
    Bytes Picture(int nEntry) { return Picture(QString::number(nEntry)); }

    /** The expected picture after these units. */
    static Bytes Shown(const VobSubPair &pair, const std::vector<PictureUnit> &listUnits)
    {
        PlainCanvas canvas(pair.nWidth, pair.nHeight);
        for (const PictureUnit &unit : listUnits)
            canvas.Draw(unit, pair.palette);
        return canvas.Image();
    }

    TemporaryFolder m_folder;
    SubParser m_parser;
    SubParserPeer m_peer{m_parser};
};
