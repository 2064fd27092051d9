// The input begins with a subtitle file. From its end are taken the file's kind, sizes of handles, and what a host does
// with these.
#include "api/libsubtitle.h"
#include "fuzzsupport.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

/** A frame in memory of exactly its size, with padding between the rows. */
class Frame
{
public:
    Frame(int nWidth, int nHeight, int nPadding, bool bBottomUp) :
        m_nWidth(nWidth),
        m_nHeight(nHeight),
        m_nStride(3 * nWidth + nPadding),
        m_bBottomUp(bBottomUp),
        m_bytes(static_cast<std::size_t>(m_nStride) * (nHeight - 1) + std::size_t{3} * nWidth, Before)
    {
    }

    AVPicture Picture()
    {
        AVPicture picture = {};
        picture.data[0] = m_bytes.data() + (m_bBottomUp ? static_cast<std::ptrdiff_t>(m_nStride) * (m_nHeight - 1) : 0);
        picture.linesize[0] = m_bBottomUp ? -m_nStride : m_nStride;
        return picture;
    }

    bool IsPaddingKept() const
    {
        for (std::size_t n = 0; n < m_bytes.size(); ++n) {
            if (static_cast<int>(n % m_nStride) >= 3 * m_nWidth && m_bytes[n] != Before)
                return false;
        }
        return true;
    }

private:
    static constexpr std::uint8_t Before = 0x5A;

    int m_nWidth;
    int m_nHeight;
    int m_nStride;
    bool m_bBottomUp;
    std::vector<std::uint8_t> m_bytes;
};

/** One renderer as a host uses it. */
class Host
{
public:
    Host(int nWidth, int nHeight) :
        m_nWidth(nWidth), m_nHeight(nHeight), m_pHandle(CreateVideoSubtitle(nWidth, nHeight))
    {
        Require(m_pHandle, "there is a handle");
    }
    ~Host()
    {
        DestroyVideoSubtitle(m_pHandle);
        av_freep(&m_bitmap.data[0]);
        av_freep(&m_bitmap.data[1]);
    }
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    void OpenFile(const std::string &strFile, int nTrack)
    {
        const int nResult = SetSubtitleFile(m_pHandle, strFile.c_str(), nTrack);
        Require(nResult == 0 || nResult == -1, "a file is opened or refused");
    }

    void ShowFrame(FuzzedDataProvider &input)
    {
        const long ms = PickTime(input);
        Require(SetSubtitleTimeStamp(m_pHandle, ms) == (ms < 0 ? -1 : 0), "times below 0 are refused");
        if (m_nWidth < 1 || m_nHeight < 1) {
            AVPicture none = {};
            Require(ProcessSubtitleFrame(m_pHandle, &none) == 0, "nothing is done to no frame");
            return;
        }
        Frame frame(m_nWidth, m_nHeight, input.ConsumeIntegralInRange(0, 9), input.ConsumeBool());
        AVPicture picture = frame.Picture();
        Require(ProcessSubtitleFrame(m_pHandle, &picture) == 0, "frames are never refused");
        Require(frame.IsPaddingKept(), "the padding is kept");
    }

    void Set(FuzzedDataProvider &input)
    {
        switch (input.ConsumeIntegralInRange(0, 4)) {
        case 0:
            Require(SetSubtitleAlpah(m_pHandle, input.ConsumeIntegralInRange(-1, 256)) == 0, "any opacity is taken");
            break;
        case 1:
            SetSubtitlePos(m_pHandle, input.ConsumeIntegralInRange(-10, 110));
            break;
        case 2:
            SetFont(input);
            break;
        case 3:
            SetSubtitleFontColor(m_pHandle, PickColour(input), PickColour(input), PickColour(input));
            break;
        default:
            Require(SetSubtitleOutlineColor(m_pHandle, PickColour(input), PickColour(input), PickColour(input)) == 0,
                    "any colour is taken");
            break;
        }
    }

    void MakeBitmap(const std::string &strText)
    {
        std::array<int, 4> rect = {};
        const int nResult = TextToBmp(m_pHandle, strText.c_str(), &m_bitmap, rect.data());
        const bool bFont = m_nWidth >= 1 && m_nHeight >= 1;
        Require(nResult == (bFont ? 0 : -1), "all but a handle without font makes bitmaps");
        if (!bFont)
            return;
        Require(m_bitmap.linesize[0] == rect[2], "a bitmap's rows are as long as its place");
        const std::uint8_t *const pixels = m_bitmap.data[0];
        Require(std::all_of(pixels, pixels + static_cast<std::ptrdiff_t>(rect[2]) * rect[3],
                            [](std::uint8_t pixel) { return pixel <= 2; }),
                "pixels are 0, 1 or 2");
    }

private:
    static long PickTime(FuzzedDataProvider &input)
    {
        constexpr long Step = 250; // ms
        const long nTime = input.ConsumeIntegralInRange<long>(-1, 254);
        return nTime == 254 ? input.ConsumeIntegral<long>() : nTime * Step;
    }

    static int PickColour(FuzzedDataProvider &input) { return input.ConsumeIntegral<std::uint8_t>(); }

    void SetFont(FuzzedDataProvider &input)
    {
        constexpr int MostPoints = 60;
        const std::array<const char *, 6> listFamilies = {
            nullptr, "", "DejaVu Sans", "Noto Sans CJK JP", "Noto Color Emoji", "\xFF no such font"};
        const char *const pszFamily = input.PickValueInArray(listFamilies);
        const int nPoints = input.ConsumeIntegralInRange(-1, MostPoints);
        const int nResult = SetSubtitleFontParam(m_pHandle, pszFamily, nPoints, input.ConsumeIntegralInRange(0, 4));
        Require(nResult == (m_nWidth >= 1 && m_nHeight >= 1 ? 0 : -1), "all but a handle without font takes one");
    }

    int m_nWidth;
    int m_nHeight;
    void *m_pHandle;
    AVPicture m_bitmap = {};
};

void MakeHost(std::optional<Host> &host, FuzzedDataProvider &input)
{
    constexpr int MostWidth = 128;
    constexpr int MostHeight = 96;
    const int nWidth = input.ConsumeIntegralInRange(0, MostWidth);
    host.emplace(nWidth, input.ConsumeIntegralInRange(0, MostHeight));
}

/** Writes the input's file, and a .sub file from the first start code on, as in idx_fuzz. */
std::string WriteFile(const char *pszName, const std::string &bytes)
{
    const FuzzHost &host = FuzzHost::Get();
    const std::size_t nSub = bytes.find(std::string("\0\0\1\xBA", 4));
    if (nSub == std::string::npos)
        host.Remove("input.sub");
    else
        host.Write("input.sub", bytes.substr(nSub));
    return host.Write(pszName, bytes);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    constexpr int MostActions = 40;
    FuzzedDataProvider input(pData, nSize);
    const std::array<const char *, 5> listNames = {"input.srt", "input.ass", "input.SSA", "input.idx", "input"};
    const char *const pszName = input.PickValueInArray(listNames);
    const auto nBytes = input.ConsumeIntegral<std::uint16_t>();
    const std::string bytes = input.ConsumeBytesAsString(nBytes);
    const std::string strFile = WriteFile(pszName, bytes);
    std::array<std::optional<Host>, 3> listHosts;
    MakeHost(listHosts[0], input);
    listHosts[0]->OpenFile(strFile, input.ConsumeIntegralInRange(-1, 2));
    for (int n = 0; n < MostActions && input.remaining_bytes() > 0; ++n) {
        auto &host = listHosts[input.ConsumeIntegralInRange<std::size_t>(0, listHosts.size() - 1)];
        const int nAction = input.ConsumeIntegralInRange(0, 9);
        if (!host)
            MakeHost(host, input);
        if (nAction < 5)
            host->ShowFrame(input);
        else if (nAction < 7)
            host->Set(input);
        else if (nAction == 7)
            host->MakeBitmap(input.ConsumeBool() ? bytes : input.ConsumeRandomLengthString(40));
        else if (nAction == 8)
            host->OpenFile(strFile, input.ConsumeIntegralInRange(-1, 2));
        else
            host.reset();
    }
    return 0;
}
