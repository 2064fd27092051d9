// The input is an index, followed by its .sub file. This begins at the first start code of a pack header, 00 00 01 BA;
// without one there is no .sub file.
#include "fuzzsupport.h"
#include "parsers/parsermanager.h"

#include <array>
#include <climits>
#include <numeric>
#include <random>

namespace
{

/** Opens the input's file with one of its languages and asks for pictures at any times. */
class Player
{
public:
    Player(const std::string &strFile, int nTrack) :
        m_bOpen(m_manager.Open(QString::fromStdString(strFile), nTrack) != 0)
    {
    }

    void Show(std::mt19937 &random)
    {
        constexpr int MostWidth = 80;
        constexpr int MostHeight = 50;
        if (random() % 4 == 0) {
            m_nWidth = static_cast<int>(random() % MostWidth);
            m_nHeight = static_cast<int>(random() % MostHeight);
            m_manager.SetVideoSize(m_nWidth, m_nHeight);
        }
        Show(m_manager.GetSubtitle(Time(random)));
    }

    /** @param nEntry  any number, even one that GetSubtitle() never returns */
    void ShowEntry(int nEntry) { Show(QString::number(nEntry)); }

private:
    static long Time(std::mt19937 &random)
    {
        const std::array<long, 6> listScales = {3000, 20000, 100000, 4000000, 0x7FFFFFFF, LONG_MAX};
        return static_cast<long>(random()) % listScales[random() % listScales.size()];
    }

    void Show(const QString &strKey)
    {
        QRect rect;
        const QImage image = m_manager.TextToImage(strKey, rect);
        if (image.isNull()) {
            Require(rect.isNull(), "no picture has no place");
            return;
        }
        Require(m_bOpen && image.size() == QSize(m_nWidth, m_nHeight), "a picture is as large as the frame");
        Require(rect == image.rect(), "a picture's place is all of it");
    }

    ParserManager m_manager;
    bool m_bOpen;
    int m_nWidth = 0;
    int m_nHeight = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    constexpr int Rounds = 12;
    const std::string bytes = ToString(pData, nSize);
    const std::size_t nSub = bytes.find(std::string("\0\0\1\xBA", 4));
    const FuzzHost &host = FuzzHost::Get();
    const std::string strFile = host.Write("input.idx", bytes.substr(0, nSub));
    if (nSub == std::string::npos)
        host.Remove("input.sub");
    else
        host.Write("input.sub", bytes.substr(nSub));

    std::mt19937 random(std::accumulate(pData, pData + nSize, 0U));
    Player first(strFile, 0);
    Player second(strFile, 1); // shares the decoder with the first
    for (int n = 0; n < Rounds; ++n) {
        first.Show(random);
        second.Show(random);
        first.ShowEntry(n / 2 - 1);
    }
    return 0;
}
