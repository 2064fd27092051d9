// The input is a file whose name has no extension, so that FFmpeg probes its content.
#include "api/libsubtitle.h"
#include "fuzzsupport.h"
#include "parsers/parsermanager.h"

namespace
{

bool IsOnItsCanvas(const ColorPicture &picture)
{
    return picture.nLeft >= 0 && picture.nTop >= 0 && picture.nLeft + picture.nColumns <= picture.nCanvasWidth &&
           picture.nTop + picture.nRows <= picture.nCanvasHeight &&
           picture.listPixels.size() == static_cast<std::size_t>(picture.nColumns) * picture.nRows;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize)
{
    const std::string strFile = FuzzHost::Get().Write("input", ToString(pData, nSize));
    ParserManager manager;
    Require(manager.Open(QString::fromStdString(strFile), 0) == 1, "any container opens");
    Require(manager.IsTextSub(), "a container has text");
    for (const long ms : {0L, 1L, 500L, 1500L, 60000L, 0x7FFFFFFFL}) {
        manager.GetSubtitle(ms);
        const QString key = manager.AllDuePictures(ms);
        const ColorPicture picture = manager.ToColorPicture(key);
        Require((picture.nColumns > 0) == !key.isEmpty(), "what is due has pixels");
        Require(key.isEmpty() || manager.AllDueTexts(ms).isEmpty(), "a track has texts or pictures");
        Require(key.isEmpty() || IsOnItsCanvas(picture), "a picture lies on its canvas");
        Require(manager.AllDuePictures(ms) == key, "the same is due");
    }

    void *const pHandle = CreateVideoSubtitle(8, 8);
    Require(SetSubtitleFile(pHandle, strFile.c_str(), 1) == 0, "any container opens");
    Require(SetSubtitleTimeStamp(pHandle, 1500) == 0, "a time is taken");
    DestroyVideoSubtitle(pHandle);
    return 0;
}
