// The input is a file whose name tells no format, so that FFmpeg looks at what is in it.
#include "api/libsubtitle.h"
#include "fuzzsupport.h"
#include "parsers/parsermanager.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    const std::string strFile = FuzzHost::Get().Write("input", ToString(pData, nSize));
    ParserManager manager;
    Require(manager.Open(QString::fromStdString(strFile), 0) == 1, "any container opens");
    Require(manager.IsTextSub(), "a container has text");
    for (const long ms : {0L, 1L, 500L, 1500L, 60000L, 0x7FFFFFFFL})
        manager.GetSubtitle(ms);

    void *const pHandle = CreateVideoSubtitle(8, 8);
    Require(SetSubtitleFile(pHandle, strFile.c_str(), 1) == 0, "any container opens");
    Require(SetSubtitleTimeStamp(pHandle, 1500) == 0, "a time is taken");
    DestroyVideoSubtitle(pHandle);
    return 0;
}
