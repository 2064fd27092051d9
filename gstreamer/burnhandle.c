#include "burnhandle.h"

#include "hosts/handlegate.h"

#include <libsubtitle.h>

static void DestroyAlone(BurnHandle *pHandle)
{
    DestroySubtitleBurner(pHandle->pBurner);
    DestroyVideoSubtitle(pHandle->pSubtitle);
    *pHandle = (BurnHandle){0};
}

gboolean BurnHandleMake(BurnHandle *pHandle, gint nWidth, gint nHeight)
{
    HandleGateEnterAlone();
    /* Before the old one is destroyed: with the last handle the library shuts Qt down and would have to restart it. */
    void *pSubtitle = CreateVideoSubtitle(nWidth, nHeight);
    void *pBurner = CreateSubtitleBurner(pSubtitle);
    DestroyAlone(pHandle);
    *pHandle = (BurnHandle){pSubtitle, pBurner, nWidth, nHeight, 1, 1};
    if (!pBurner)
        DestroyAlone(pHandle);
    HandleGateLeaveAlone();
    return pBurner != NULL;
}

void BurnHandleDestroy(BurnHandle *pHandle)
{
    if (!pHandle->pSubtitle)
        return;
    HandleGateEnterAlone();
    DestroyAlone(pHandle);
    HandleGateLeaveAlone();
}

void BurnHandleSetPixelAspect(BurnHandle *pHandle, gint nPixelWidth, gint nPixelHeight)
{
    if (!pHandle->pBurner || (nPixelWidth == pHandle->nPixelWidth && nPixelHeight == pHandle->nPixelHeight))
        return;
    HandleGateEnter();
    if (SetSubtitleBurnerPixelAspect(pHandle->pBurner, nPixelWidth, nPixelHeight) != 0)
        SetSubtitleBurnerPixelAspect(pHandle->pBurner, 1, 1);
    HandleGateLeave();
    pHandle->nPixelWidth = nPixelWidth;
    pHandle->nPixelHeight = nPixelHeight;
}

static int Byte(guint nColor, int nPlace)
{
    return (int)(nColor >> 8 * nPlace & 0xFF);
}

static void SetFont(void *pSubtitle, const BurnSettings *pSettings)
{
    const gchar *pFamily = pSettings->pFamily ? pSettings->pFamily : "";
    /* If the locale's encoding lacks some characters, it most likely is ASCII. The library takes UTF-8 then. */
    gchar *pLocal = g_locale_from_utf8(pFamily, -1, NULL, NULL, NULL);
    const int nStyle = (pSettings->bBold ? SUBTITLE_STYLE_BOLD : 0) | (pSettings->bItalic ? SUBTITLE_STYLE_ITALIC : 0);
    SetSubtitleFontParam(pSubtitle, pLocal ? pLocal : pFamily, pSettings->nPoints, nStyle);
    g_free(pLocal);
}

gboolean BurnHandleApply(const BurnHandle *pHandle, const BurnSettings *pSettings, gboolean bOpen)
{
    void *pSubtitle = pHandle->pSubtitle;
    const guint nChanged = pSettings->nChanged;
    HandleGateEnter();
    if (nChanged & ChangedAlpha)
        SetSubtitleAlpah(pSubtitle, pSettings->nAlpha);
    if (nChanged & ChangedPos)
        SetSubtitlePos(pSubtitle, pSettings->nPos);
    if (nChanged & ChangedFont)
        SetFont(pSubtitle, pSettings);
    if (nChanged & ChangedFontColor)
        SetSubtitleFontColor(pSubtitle, Byte(pSettings->nFontColor, 2), Byte(pSettings->nFontColor, 1),
                             Byte(pSettings->nFontColor, 0));
    if (nChanged & ChangedOutlineColor)
        SetSubtitleOutlineColor(pSubtitle, Byte(pSettings->nOutlineColor, 2), Byte(pSettings->nOutlineColor, 1),
                                Byte(pSettings->nOutlineColor, 0));
    if (nChanged & ChangedWhite)
        SetSubtitleBurnerWhite(pHandle->pBurner, pSettings->dWhite);
    if (nChanged & ChangedLook) {
        SetSubtitleBurnerLook(pHandle->pBurner, pSettings->nLook);
        SetSubtitleBurnerOutline(pHandle->pBurner, pSettings->dOutlineWidth);
    }
    const gboolean bDone = !bOpen || (SetSubtitleFile(pSubtitle, pSettings->pFile, pSettings->nTrack) == 0 &&
                                      HasSubtitleTrack(pSubtitle) == 1);
    HandleGateLeave();
    return bDone;
}

gint BurnHandleSeek(const BurnHandle *pHandle, glong nMilliseconds)
{
    HandleGateEnter();
    const gint nDue =
        SetSubtitleTimeStamp(pHandle->pSubtitle, nMilliseconds) == 0 ? IsSubtitleDue(pHandle->pBurner) : -1;
    HandleGateLeave();
    return nDue;
}

gboolean BurnHandleDraw(const BurnHandle *pHandle, const SubtitleFrame *pFrame)
{
    HandleGateEnter();
    const gboolean bDrawn = BurnSubtitle(pHandle->pBurner, pFrame) == 0;
    HandleGateLeave();
    return bDrawn;
}
